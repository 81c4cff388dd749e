#!/bin/sh
# Runs the command line of both ports side by side, under a locale with a decimal point and one with a comma: their
# output and the catalogs that they write must be equal byte for byte, and each must read what the other wrote.
#
# It needs the programs of the presets release and windows. Real tables are included if ../shared/data has them.
set -eu
cd "$(dirname "$0")/.."
native=$PWD/build/release/bin/quillet
windows=$PWD/build/windows/bin/quillet.exe
wine=$PWD/scripts/wine.sh
work=$PWD/build/compared-ports
rm -rf "$work"
mkdir -p "$work/input" "$work/native" "$work/windows"
LOCPATH=$(scripts/make-locales.sh)
export LOCPATH
# The tests' own list of drivers, not the user's.
ODBCSYSINI=$PWD/build/release/tests/odbc/all
export ODBCSYSINI

# Every available catalog and table, and numbers of every size.
cp examples/catalogs/*.xml "$work/input/"
for file in ../shared/data/steel/*.csv ../shared/data/*.mdb; do
    [ -f "$file" ] && cp "$file" "$work/input/"
done
chmod u+w "$work"/input/*
awk 'BEGIN {
    srand(7)
    print "name,number,float,whole"
    for (i = 0; i < 5000; ++i) {
        digits = 1 + int(rand() * 15)
        printf "row %d,%.*ge%d,%.*g,%d\n", i, digits, rand() * 10, int(rand() * 40) - 20, 1 + i % 7, rand() * 1000,
            int((rand() - 0.5) * 4294967295)
    }
}' >"$work/input/numbers.csv"

# $1 is native or windows, $2 the locale, the rest the arguments. The two work in separate folders, with the same
# relative names.
run() {
    port=$1
    locale=$2
    shift 2
    (
        cd "$work/$port"
        LC_ALL=$locale
        export LC_ALL
        if [ "$port" = native ]; then
            "$native" "$@"
        else
            "$wine" "$windows" "$@"
        fi
    )
}

count=0
differ() {
    echo "compare-ports.sh: the ports differ in '$1'; see $work" >&2
    exit 1
}

# Runs one with the arguments; its output is in two files then. Under load Wine may end a process with status 1 before its
# program begins. The program itself never fails without a line that says why, so it is started once more then.
attempt() {
    status=0
    run "$@" >"$work/$1.out" 2>"$work/$1.log" || status=$?
}

# Runs both with the arguments and compares their output, except for the times in a log.
both() {
    locale=$1
    shift
    for port in native windows; do
        attempt "$port" "$locale" "$@"
        if [ "$status" -eq 1 ] && [ ! -s "$work/$port.out" ] && [ ! -s "$work/$port.log" ]; then
            echo "compare-ports.sh: '$*' did not start under $port, once more" >&2
            attempt "$port" "$locale" "$@"
        fi
        echo "status $status" >>"$work/$port.out"
        sed 's/ [0-9.,]* \[s\]$/ time [s]/' "$work/$port.log" >"$work/$port.err"
    done
    cmp "$work/native.out" "$work/windows.out" >&2 || differ "$*"
    cmp "$work/native.err" "$work/windows.err" >&2 || differ "$*"
    count=$((count + 1))
}

# Compares a file written by both.
same() {
    cmp "$work/native/$1" "$work/windows/$1" >&2 || differ "$1"
    count=$((count + 1))
}

for locale in C.UTF-8 de_DE.UTF-8; do
    for catalog in "$work"/input/*.xml; do
        name=$(basename "$catalog")
        both "$locale" info "../input/$name"
        both "$locale" check "../input/$name"
        both "$locale" info "../input/$name" --sequential --format json
        for port in native windows; do
            cp "$catalog" "$work/$port/$locale-$name"
        done
        # A change, so that everything is read and written.
        both "$locale" set "$locale-$name" properties material=Stahl
        same "$locale-$name"
        run native C info "../input/$name" --format json |
            sed -n 's/.*"section": "table", "name": "\([^"]*\)".*/\1/p' >"$work/tables"
        [ -s "$work/tables" ] || differ "the table names of $name"
        while IFS= read -r table; do
            both "$locale" fields "../input/$name" "$table" </dev/null
            both "$locale" show "../input/$name" "$table" </dev/null
            both "$locale" export "$locale-$name" "$table" out.csv --replace </dev/null
            same out.csv
            both "$locale" export "$locale-$name" "$table" out.json --replace </dev/null
            same out.json
        done <"$work/tables"
    done
    while IFS= read -r query; do
        both "$locale" query ../input/european-steel.xml "$query" --log </dev/null
        both "$locale" query ../input/european-steel.xml "$query" --explain </dev/null
    done <<'QUERIES'
HEB
select * from [SHS]
select name, h, G from heb where h >= 300 and G < 200,5
select top 5 name from IPE where not ( h < 200 or name = 'ipe 300' ) order by name desc
select distinct t from shs order by b, t
select * from HEA where 'HEA 300' <= name order by A desc
select name from upe where h = tf or b > 80.5
select Name, höhe from heb where h > 1
select name from [keine Träger] where name = 'ß'
select name from heb where h > or ( b =
select name from heb where ) h > 300 (
select from where order by
QUERIES
    both "$locale" find ../input/european-steel.xml heb "h >= 300 and G < 200,5" --log
    both "$locale" find ../input/european-steel.xml IPE "name < 'ipe 300'" --all --backward --format json
    both "$locale" find ../input/european-steel.xml IPE "(h > 1"
    both "$locale" new "$locale-new.xml" --header "title=Größen, Maße & <Zeichen>"
    for table in "$work"/input/*.csv; do
        name=$(basename "$table" .csv)
        both "$locale" import "$locale-new.xml" "$name" "../input/$name.csv"
        both "$locale" show "$locale-new.xml" "$name"
    done
    same "$locale-new.xml"
    # The driver gives both the same.
    for file in "$work"/input/*.mdb; do
        [ -f "$file" ] || continue
        name=$(basename "$file" .mdb)
        both "$locale" info "../input/$name.mdb"
        both "$locale" convert --lossy "../input/$name.mdb" "$locale-$name.xml"
        same "$locale-$name.xml"
    done
    # Each reads what the other wrote.
    cp "$work/native/$locale-new.xml" "$work/native.xml"
    cp "$work/windows/$locale-new.xml" "$work/native/$locale-new.xml"
    cp "$work/native.xml" "$work/windows/$locale-new.xml"
    both "$locale" check "$locale-new.xml"
    both "$locale" show "$locale-new.xml" numbers
done
echo "compare-ports.sh: $count outputs and files of the two ports are equal"
