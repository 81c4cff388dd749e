#!/bin/sh
# Runs a Windows program with Wine, in a prefix of the project's own and without a display.
#
#   scripts/wine.sh program.exe [arguments]
#
# QUILLET_WINE_PREFIX names another folder for the prefixes than build/wine. There is one for each locale: what runs in
# one prefix shares the locale, and Wine's own services, which start late and stay a while, would bring theirs along. No
# window waits for a person: there is no display, and crashes end the program without a dialog.
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)

wine=
for candidate in wine64 /usr/lib/wine/wine64 wine; do
    if command -v "$candidate" >/dev/null 2>&1; then
        wine=$candidate
        break
    fi
done
if [ -z "$wine" ]; then
    echo "wine.sh: no Wine here; scripts/bootstrap.sh windows installs it" >&2
    exit 127
fi

WINEPREFIX=${QUILLET_WINE_PREFIX:-$here/build/wine}/${LC_ALL:-${LANG:-C}}
WINEARCH=win64
WINEDEBUG=${WINEDEBUG:--all}
# Neither the crash dialog, nor offers to install a browser or a run-time, nor entries in the user's desktop menus.
WINEDLLOVERRIDES="winedbg.exe=d;mshtml=d;mscoree=d;winemenubuilder.exe=d"
export WINEPREFIX WINEARCH WINEDEBUG WINEDLLOVERRIDES
unset DISPLAY WAYLAND_DISPLAY
# Made once, by whichever program comes first while the others wait; what that prints belongs to no test.
mkdir -p "$WINEPREFIX"
exec 9>"$WINEPREFIX/making.lock"
flock 9
if [ ! -f "$WINEPREFIX/system.reg" ] && ! "$wine" wineboot --init >/dev/null 2>&1 9>&-; then
    echo "wine.sh: Wine can't make the prefix $WINEPREFIX" >&2
    rm -f "$WINEPREFIX/system.reg"
    exit 1
fi
# Wine's server goes a few seconds after its last program, and a program that begins in that moment fails. So it stays for
# ten seconds; where one runs already, a second has no effect.
for candidate in wineserver64 /usr/lib/wine/wineserver64 wineserver; do
    if command -v "$candidate" >/dev/null 2>&1; then
        "$candidate" -p10 </dev/null >/dev/null 2>&1 9>&- || true
        break
    fi
done
exec 9>&-

# A program that dies can leave status 0. One of GoogleTest makes the file of this name when it begins and removes it at
# its end.
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
