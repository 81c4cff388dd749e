#!/bin/sh
# Runs random inputs under the address and undefined behaviour sanitizers.
#
#   scripts/fuzz.sh [NAME [SECONDS]]
#
#   query   texts of queries, asked of a small catalog
#   rows    rows of catalogs, read straight from their bytes and by the document
#   access  Access files with random changes
#
# Without a name: all of them, one after another; 30 seconds each without a number. Each starts with the inputs in
# tests/fuzz/corpus and those of earlier runs. An input that crashes, hangs or is answered wrongly is left in
# build/fuzz/found, and the exit status is not 0; to reproduce it, pass the file to build/fuzz/bin/NAME_fuzz.
set -eu
cd "$(dirname "$0")/.."
seconds=${2:-30}

fuzz() { # name, further arguments
    name=$1
    shift
    given=
    if [ -d "tests/fuzz/corpus/$name" ]; then
        given="tests/fuzz/corpus/$name -dict=tests/fuzz/corpus/$name.dict"
    fi
    mkdir -p "build/fuzz/corpus/$name" build/fuzz/found
    # Numbers with decimal points, as in the inputs. $given is several arguments.
    LC_ALL=C.UTF-8 build/fuzz/bin/"${name}_fuzz" -max_total_time="$seconds" -timeout=10 -len_control=0 \
        -artifact_prefix=build/fuzz/found/ -print_final_stats=1 "$@" "build/fuzz/corpus/$name" $given
}

run() { # name
    case $1 in
        query) fuzz query -max_len=400 ;;
        rows) fuzz rows -max_len=400 ;;
        access) fuzz access -max_len=200 -malloc_limit_mb=64 ;;
        *)
            echo "fuzz.sh: no inputs '$1': query, rows or access" >&2
            exit 2
            ;;
    esac
}

scripts/bootstrap.sh build fuzz
cmake --preset fuzz
cmake --build --preset fuzz
for name in ${1:-query rows access}; do
    run "$name"
done
