#!/bin/sh
# Runs queries of random bytes on a small catalog, under the address and undefined behaviour sanitizers.
#
#   scripts/fuzz.sh [seconds]
#
# It starts with the texts in tests/fuzz/corpus and those of earlier runs, and goes on for 30 seconds without an
# argument. A text that crashes, hangs or is answered wrongly is left in build/fuzz/found, and the exit status is not 0;
# to reproduce it, pass the file to build/fuzz/bin/query_fuzz.
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-30}

scripts/bootstrap.sh build fuzz
cmake --preset fuzz
cmake --build --preset fuzz
mkdir -p build/fuzz/corpus build/fuzz/found
# Numbers with decimal points, as in the corpus.
LC_ALL=C.UTF-8 build/fuzz/bin/query_fuzz -max_total_time="$seconds" -timeout=10 -max_len=400 -len_control=0 \
    -dict=tests/fuzz/query.dict -artifact_prefix=build/fuzz/found/ -print_final_stats=1 \
    build/fuzz/corpus tests/fuzz/corpus
