#!/bin/sh
# The long forms of what .ci/run does in short.
#
#   scripts/long.sh random [seeds]     the tests of classes, platform and command line under the sanitizers in random
#                                      order, with other random numbers for each of the seeds 1, 2, 3, ...; 20 of them
#                                      without an argument
#   scripts/long.sh numbers [count]    random numbers of each kind as text; 10,000,000 without an argument
#   scripts/long.sh queries [seconds]  query texts of random bytes; 1800 seconds without an argument
#   scripts/long.sh rows [seconds]     rows of random bytes; 1800 seconds without an argument
#   scripts/long.sh files [seconds]    2,236 changes to whole Access files, and such files with random changes; 1800
#                                      seconds without an argument
#   scripts/long.sh wine [times]       the Windows tests, each time from an empty prefix; 10 times without an argument
#
# Says how long each run took and how it ended; the status is that of the first run that failed, and 0 where none did.
set -eu
cd "$(dirname "$0")/.."

failed=0
run() { # what, command
    name=$1
    shift
    start=$(date +%s)
    status=0
    "$@" || status=$?
    echo "== $name: status $status, $(($(date +%s) - start)) s"
    if [ "$failed" -eq 0 ]; then
        failed=$status
    fi
}

shuffled() { # seed
    GTEST_SHUFFLE=1 GTEST_RANDOM_SEED=$1 ctest --preset asan -R "class_tests|access_tests|platform_tests|tool_tests" --output-on-failure
}

from_empty_prefix() {
    # A server that still runs would serve the new prefix from the deleted one.
    for prefix in build/wine/* build/wine-automation/*; do
        if [ -d "$prefix" ]; then
            scripts/wine.sh --stop "$prefix"
        fi
    done
    rm -rf build/wine build/wine-automation
    ctest --preset windows --output-on-failure
}

part=${1:-}
case $part in
    random)
        scripts/bootstrap.sh build test
        cmake --preset asan
        cmake --build --preset asan
        seed=1
        while [ "$seed" -le "${2:-20}" ]; do
            run "seed $seed" shuffled "$seed"
            seed=$((seed + 1))
        done
        ;;
    numbers)
        scripts/bootstrap.sh build test
        cmake --preset release
        cmake --build --preset release --target class_tests
        run "numbers" env LC_ALL=C.UTF-8 QUILLET_TEST_NUMBERS="${2:-10000000}" \
            build/release/bin/class_tests --gtest_filter='NumberWriter*'
        ;;
    queries)
        run "query texts" scripts/fuzz.sh query "${2:-1800}"
        ;;
    rows)
        run "rows" scripts/fuzz.sh rows "${2:-1800}"
        ;;
    files)
        scripts/bootstrap.sh build test
        cmake --preset asan
        cmake --build --preset asan --target access_tests
        run "changes to whole files" env QUILLET_MUTATIONS=52 build/asan/bin/access_tests --gtest_filter='*Damaged*'
        run "files with random changes" scripts/fuzz.sh access "${2:-1800}"
        ;;
    wine)
        scripts/bootstrap.sh build test windows
        scripts/windows-packages.sh
        cmake --preset windows
        cmake --build --preset windows
        round=1
        while [ "$round" -le "${2:-10}" ]; do
            run "round $round" from_empty_prefix
            round=$((round + 1))
        done
        ;;
    *)
        sed -n 's/^# \{0,1\}//p' "$0" | sed 1d
        exit 2
        ;;
esac
exit "$failed"
