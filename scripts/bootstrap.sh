#!/bin/sh
# Installs the missing Debian packages that the project needs.
#
#   scripts/bootstrap.sh [build] [test] [lint] [bench] [fuzz] [windows]
#
# Without an argument: build. Each word names a use of the machine. With test, the driver for Access files is registered
# for the current user.
set -eu

packages_for() {
    case $1 in
        build) echo "g++ cmake ninja-build libpugixml-dev libicu-dev unixodbc-dev libcli11-dev nlohmann-json3-dev libcsv-dev" ;;
        test) echo "googletest pkg-config odbcinst odbc-mdbtools libsqliteodbc" ;;
        lint) echo "clang-format-14 clang-tidy-14 git" ;;
        bench) echo "libbenchmark-dev libsqlite3-dev" ;;
        fuzz) echo "clang-14 libclang-rt-14-dev" ;;
        windows) echo "g++-mingw-w64-x86-64-posix wine64 wine64-tools libwine-dev dpkg-dev locales" ;;
        *)
            echo "bootstrap.sh: unknown purpose '$1': build, test, lint, bench, fuzz or windows" >&2
            exit 2
            ;;
    esac
}

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

missing=
for purpose in "${@:-build}"; do
    wanted=$(packages_for "$purpose")
    for package in $wanted; do
        is_installed "$package" || missing="$missing $package"
    done
done

register_drivers() {
    case " $* " in
        *" test "*)
            # The tests use their own list.
            "$(dirname "$0")/odbc-drivers.sh" ||
                echo "bootstrap.sh: no driver for Access files is registered for this user" >&2
            ;;
    esac
}

if [ -z "$missing" ]; then
    register_drivers "$@"
    exit 0
fi
if ! command -v apt-get >/dev/null 2>&1; then
    echo "bootstrap.sh: no apt-get here; install by hand:$missing" >&2
    exit 1
fi
as_root=
if [ "$(id -u)" -ne 0 ]; then
    as_root=sudo
fi
echo "bootstrap.sh: installing$missing"
$as_root apt-get update -qq
# shellcheck disable=SC2086 # a list of words
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null </dev/null
register_drivers "$@"
