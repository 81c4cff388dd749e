#!/bin/sh
# Builds the Windows port, runs every test of it under Wine, and compares what the two ports print and write.
set -eu
cd "$(dirname "$0")/.."

scripts/bootstrap.sh build test windows
scripts/windows-packages.sh
cmake --preset windows
cmake --build --preset windows
ctest --preset windows

cmake --preset release
cmake --build --preset release --target quillet
scripts/compare-ports.sh
