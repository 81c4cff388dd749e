#!/bin/sh
# Checks the formatting of every source file, the direction of includes, and the library and the command line with
# clang-tidy: as the preset release compiles them, and the Windows port's own files and the automation server as the
# preset windows compiles them.
#
#   scripts/lint.sh [format|tidy]
#
# With "format", only the checks that need no build, formatting and includes; with "tidy", only the others.
set -eu
cd "$(dirname "$0")/.."

if [ "${1:-}" != tidy ]; then
    git ls-files '*.h' '*.cpp' '*.c' | xargs clang-format-14 --dry-run --Werror
    scripts/check-includes.py
fi
if [ "${1:-}" = format ]; then
    exit 0
fi

# One process for each file: clang-tidy 14 loses what it knows of va_list from one file to the next, and then reports
# errors there.
git ls-files 'Db/*.cpp' 'tools/*.cpp' | grep -v -e '^Db/Quillet/platform/windows/' -e '^Db/Quillet/automation/' |
    xargs -P "$(nproc)" -n 1 clang-tidy-14 -p build/release --quiet 2>/dev/null

# clang accepts the headers of mingw-w64, but does not know one of the compiler's options.
mkdir -p build/windows/clang
sed 's/-fno-keep-inline-dllexport//' build/windows/compile_commands.json >build/windows/clang/compile_commands.json
headers=$(x86_64-w64-mingw32-g++-posix -print-file-name=include)
git ls-files 'Db/Quillet/platform/windows/*.cpp' 'Db/Quillet/automation/*.cpp' |
    xargs -P "$(nproc)" -n 1 clang-tidy-14 -p build/windows/clang --quiet --extra-arg=--target=x86_64-w64-mingw32 \
        --extra-arg="-isystem$headers/c++" --extra-arg="-isystem$headers/c++/x86_64-w64-mingw32" \
        --extra-arg=-isystem/usr/x86_64-w64-mingw32/include --extra-arg=-Wgnu 2>/dev/null
