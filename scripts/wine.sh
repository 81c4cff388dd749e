#!/bin/sh
# Runs a Windows program with Wine, in the project's own prefix and without a display.
#
#   scripts/wine.sh program.exe [arguments]
#   scripts/wine.sh --stop prefix
#
# The second form ends what runs in a prefix, and returns when it has ended.
#
# QUILLET_WINE_PREFIX names another folder for the prefixes than build/wine. There is one for each locale: all programs
# of a prefix share the locale, and Wine's own services, which start late and stay a while, would bring theirs along. No
# window waits for a user: there is no display, and crashes end the program without a dialog.
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)

first_of() { # the first of the commands that is there; nothing if none is
    for candidate in "$@"; do
        if command -v "$candidate" >/dev/null 2>&1; then
            echo "$candidate"
            return
        fi
    done
}

wine=$(first_of wine64 /usr/lib/wine/wine64 wine)
server=$(first_of wineserver64 /usr/lib/wine/wineserver64 wineserver)
if [ -z "$wine" ]; then
    echo "wine.sh: no Wine here; scripts/bootstrap.sh windows installs it" >&2
    exit 127
fi

if [ "${1:-}" = --stop ]; then
    WINEPREFIX=$(cd "$2" && pwd)
    export WINEPREFIX
    "$server" -k || true
    "$server" -w || true
    exit 0
fi

WINEPREFIX=${QUILLET_WINE_PREFIX:-$here/build/wine}/${LC_ALL:-${LANG:-C}}
WINEARCH=win64
WINEDEBUG=${WINEDEBUG:--all}
# No crash dialog, no offers to install a browser or a run-time, no entries in the user's desktop menus.
WINEDLLOVERRIDES="winedbg.exe=d;mshtml=d;mscoree=d;winemenubuilder.exe=d"
export WINEPREFIX WINEARCH WINEDEBUG WINEDLLOVERRIDES
unset DISPLAY WAYLAND_DISPLAY
# Created once, by the first program, while the others wait; its output is not part of any test.
mkdir -p "$WINEPREFIX"
exec 9>"$WINEPREFIX/making.lock"
flock 9
if [ ! -f "$WINEPREFIX/system.reg" ] && ! "$wine" wineboot --init >/dev/null 2>&1 9>&-; then
    echo "wine.sh: Wine can't make the prefix $WINEPREFIX" >&2
    rm -f "$WINEPREFIX/system.reg"
    exit 1
fi
# Wine's server ends a few seconds after its last program, and a program that starts in that moment fails. So it stays
# for ten seconds; if one is already running, a second has no effect.
if [ -n "$server" ]; then
    "$server" -p10 </dev/null >/dev/null 2>&1 9>&- || true
fi
exec 9>&-

# A program that crashes can exit with status 0. A GoogleTest program creates this file when it starts and removes it
# when it ends.
unfinished=${TEST_PREMATURE_EXIT_FILE:-}
if [ -z "$unfinished" ]; then
    exec "$wine" "$@"
fi
rm -f "$unfinished"
status=0
"$wine" "$@" || status=$?
if [ "$status" -eq 0 ] && [ -e "$unfinished" ]; then
    echo "wine.sh: the program died" >&2
    status=1
fi
exit "$status"
