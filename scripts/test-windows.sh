#!/bin/sh
# Builds the Windows port, runs all its tests under Wine, and compares the output and the files of the two ports.
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
