#!/bin/sh
# Runs random inputs under the address and undefined behaviour sanitizers: query texts on a small catalog, or Access
# files with random changes.
#
#   scripts/fuzz.sh [seconds [queries|files]]
#
# It starts with the inputs of earlier runs, and queries with the texts in tests/fuzz/corpus, and goes on for 30 seconds
# without an argument. An input that crashes, hangs or is answered wrongly is left in build/fuzz/found, and the exit
# status is not 0; to reproduce it, pass the file to build/fuzz/bin/query_fuzz or build/fuzz/bin/access_fuzz.
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-30}
inputs=${2:-queries}

fuzz() { # target, corpus of earlier runs, arguments
    target=$1
    corpus=$2
    shift 2
    mkdir -p "$corpus" build/fuzz/found
    # Numbers with decimal points, as in the texts of queries.
    LC_ALL=C.UTF-8 build/fuzz/bin/"$target" -max_total_time="$seconds" -timeout=10 -len_control=0 \
        -artifact_prefix=build/fuzz/found/ -print_final_stats=1 "$corpus" "$@"
}

scripts/bootstrap.sh build fuzz
cmake --preset fuzz
cmake --build --preset fuzz
case $inputs in
    queries) fuzz query_fuzz build/fuzz/corpus tests/fuzz/corpus -max_len=400 -dict=tests/fuzz/query.dict ;;
    files) fuzz access_fuzz build/fuzz/access-corpus -max_len=200 -malloc_limit_mb=64 ;;
    *)
        echo "fuzz.sh: unknown inputs '$inputs': queries or files" >&2
        exit 2
        ;;
esac
