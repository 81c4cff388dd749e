#!/bin/sh
# Builds the project and runs every native test.
#
#   scripts/test.sh [preset]
#
# The preset is release, debug or asan; release without an argument.
set -eu
cd "$(dirname "$0")/.."
preset=${1:-release}

scripts/bootstrap.sh build test
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
