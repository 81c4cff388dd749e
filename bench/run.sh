#!/bin/sh
# Runs the benchmarks and prints one table: what each costs in comparison with its peer, the bound, and whether it is
# kept.
#
#   bench/run.sh [SECTION]...
#
# Sections: catalogs, queries, cursors, commands, rows, growth, access. Without an argument: all of them, for which the
# machine needs about 10 minutes, 4 GB of memory and 3 GB of disk. run.py says how the figures are made.
set -eu
cd "$(dirname "$0")/.."

scripts/bootstrap.sh build test bench
cmake --preset release -DQUILLET_BUILD_BENCH=ON >/dev/null
cmake --build --preset release --target quillet catalog_bench query_bench query_growth_bench model_growth_bench \
    cursor_bench access_bench >/dev/null
mkdir -p build/bench
QUILLET_BENCH_DIR=$PWD/build/bench
QUILLET_BENCH_ACCESS_FILE=$PWD/../shared/data/aisc.mdb
export QUILLET_BENCH_DIR QUILLET_BENCH_ACCESS_FILE
exec python3 bench/run.py "$@"
