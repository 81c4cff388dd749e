#!/bin/sh
# Runs the benchmarks and prints the ratio of each to its peer, with the limit: those of catalogs in a separate process
# each, those of queries and their peers all in one.
#
#   bench/run.sh
#
# A benchmark does a warm-up and five timed runs, of which the best counts, because on some machines the first access to
# memory costs more than the work. The catalogs, about 500 MB, are created in build/bench. Queries use a table of a
# million rows that was read from a file, once without an object for any row and once with one for each; each is
# answered anew, and the previous answer is dropped untimed. Cursors go through a table in memory. An Access file is
# read if ../shared/data has one.
set -eu
cd "$(dirname "$0")/.."

scripts/bootstrap.sh build test bench
cmake --preset release -DQUILLET_BUILD_BENCH=ON >/dev/null
cmake --build --preset release --target catalog_bench query_bench query_growth_bench model_growth_bench cursor_bench access_bench
mkdir -p build/bench
QUILLET_BENCH_DIR=$PWD/build/bench
export QUILLET_BENCH_DIR

csv() {
    build/release/bin/"$program" --benchmark_filter="^$1/" --benchmark_format=csv 2>/dev/null |
        grep "^\"$1/[^_]*manual_time\"" || { echo "run.sh: $1 failed" >&2; exit 1; }
}
best() { # the shortest time in milliseconds
    csv "$1" | cut -d, -f3 | sort -g | head -n 1
}
last() { # a counter: the last column
    csv "$1" | head -n 1 | awk -F, '{ print $NF }'
}
line() { # what, figure, unit, allowed
    printf '%-46s %10.2f %-10s allowed %s\n' "$1" "$2" "$3" "$4"
}
ratio() {
    awk -v a="$1" -v b="$2" 'BEGIN { print a / b }'
}

program=catalog_bench
parse=$(best PugixmlParse)
open=$(best OpenWholeAndParse)
save_peer=$(best PugixmlSave)
save=$(best Save)
destroy=$(best Destroy)
printf 'pugixml parses the catalog in %.0f ms and saves it in %.0f ms\n' "$parse" "$save_peer"
line "open whole, all rows parsed / pugixml parse" "$(ratio "$open" "$parse")" times 8
line "search for a missing path / pugixml parse" "$(ratio "$(best SearchMissingPath)" "$parse")" times 0.5
line "reach the last table's rows / pugixml parse" "$(ratio "$(best ReachLastTable)" "$parse")" times 2
line "first table, long file / short file" "$(ratio "$(best FirstTableLongTail)" "$(best FirstTableShortTail)")" \
    times "1 (no dependence)"
line "first table's heap, long file / short file" \
    "$(ratio "$(last FirstTableLongTail)" "$(last FirstTableShortTail)")" times "1 (no dependence)"
line "numeric cell" "$(last NumericCell)" bytes 112
line "destroy / open whole" "$(ratio "$destroy" "$open")" times 0.25
line "save / pugixml save" "$(ratio "$save" "$save_peer")" times 4

program=query_bench
build/release/bin/query_bench --benchmark_filter='^Agreement/' >/dev/null 2>&1 ||
    { echo "run.sh: the answers to the queries are not SQLite's" >&2; exit 1; }
build/release/bin/query_bench --benchmark_filter='(Sqlite|Quillet|Made)/' --benchmark_format=csv \
    >build/bench/queries.csv 2>/dev/null ||
    { echo "run.sh: the queries failed" >&2; exit 1; }
best_query() {
    grep "^\"$1/[^_]*manual_time\"" build/bench/queries.csv | cut -d, -f3 | sort -g | head -n 1
}
query() { # what, benchmark
    ours=$(best_query "$2Quillet")
    made=$(best_query "$2Made")
    peer=$(best_query "$2Sqlite")
    printf '%-34s %8.0f ms, SQLite %6.0f ms %8.2f times, %8.2f with row objects      allowed 3\n' "$1" "$ours" "$peer" \
        "$(ratio "$ours" "$peer")" "$(ratio "$made" "$peer")"
}
query "a number is large, half the rows" NumberIs
query "a number is small, 1 row of 100" NumberIsRarely
line "the same, the first after a change / SQLite" \
    "$(ratio "$(best NumberIsRarelyAfterAChange)" "$(best_query NumberIsRarelySqlite)")" times "any: the cells of row objects are looked at"
query "a text is another" TextIs
query "a text stands behind another" TextIsBehind
query "a number and a text" NumberAndTextAre
query "a number, rows of the table" AllFields
query "order by a number" OrderByNumber
query "order by a number, ten rows alike" OrderByNumberWithTies
query "order by a text" OrderByText
query "distinct of 6 numbers" DistinctOf6Numbers
query "distinct of 20,000 numbers" DistinctOf20000Numbers
query "distinct of 1,000,000 numbers" DistinctOfAllNumbers
query "distinct of 6 texts" DistinctOf6Texts
query "distinct of 20,000 texts" DistinctOf20000Texts
query "distinct of 1,000,000 texts" DistinctOfAllTexts
query "distinct of 60,000 pairs of texts" DistinctOfPairs
line "rows of the table as an answer, each" "$(last AllFieldsHeap)" bytes "8, beside about 1,000 for the answer itself"

program=query_growth_bench
growth() { # what, benchmark
    line "eight times as many $1" "$(ratio "$(best "$2Many")" "$(best "$2Few")")" "times" "24 (8 is linear, 64 quadratic)"
}
growth "queries over each other" QueriesOverQueries
growth "different queries" DifferentTexts
growth "conditions" Conditions
growth "brackets" Brackets
growth "selected fields" SelectedFields
growth "tables" FromTables
growth "order names" OrderNames

program=model_growth_bench
growth "tables opened whole" TablesOpenedWhole
growth "tables opened sequentially" TablesOpenedSequentially
growth "answers destroyed" AnswersDestroyed
growth "answers dropped" AnswersDropped
growth "answers deleted with their table" AnswersDeletedWithTheirTable
growth "fields created" FieldsCreated

program=cursor_bench
build/release/bin/cursor_bench --benchmark_filter='^CursorAgreement/' >/dev/null 2>&1 ||
    { echo "run.sh: the order of an index is not SQLite's" >&2; exit 1; }
cursor() { # what, benchmark
    line "$1 / SQLite" "$(ratio "$(best "$2Quillet")" "$(best "$2Sqlite")")" times 3
}
cursor "current index over a number" IndexByDouble
cursor "current index over a text" IndexByText
cursor "find that compares all rows' numbers" FindNumber
cursor "find that compares all rows' texts" FindText

program=access_bench
QUILLET_BENCH_ACCESS_FILE=$PWD/../shared/data/aisc.mdb
export QUILLET_BENCH_ACCESS_FILE
if [ -f "$QUILLET_BENCH_ACCESS_FILE" ]; then
    build/release/bin/access_bench --benchmark_filter='^AccessAgreement/' >/dev/null 2>&1 ||
        { echo "run.sh: the reading of an Access file is not that of bare calls" >&2; exit 1; }
    line "reading an Access file / bare calls to its driver" "$(ratio "$(best AccessQuillet)" "$(best AccessBare)")" times 1.5
else
    echo "run.sh: no $QUILLET_BENCH_ACCESS_FILE: no reading of an Access file is measured"
fi
