#!/bin/sh
# Runs a Windows program with Wine, in a prefix of the project's own and without a display.
#
#   scripts/wine.sh program.exe [arguments]
#
# QUILLET_WINE_PREFIX names another folder for the prefix than build/wine. Programs that run at one time in one prefix
# share the locale. No window waits for a person: there is no display, and crashes end the program without a dialog.
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

WINEPREFIX=${QUILLET_WINE_PREFIX:-$here/build/wine}
WINEARCH=win64
WINEDEBUG=${WINEDEBUG:--all}
# Neither the crash dialog, nor offers to install a browser or a run-time, nor entries in the user's desktop menus.
WINEDLLOVERRIDES="winedbg.exe=d;mshtml=d;mscoree=d;winemenubuilder.exe=d"
export WINEPREFIX WINEARCH WINEDEBUG WINEDLLOVERRIDES
unset DISPLAY WAYLAND_DISPLAY
if [ ! -f "$WINEPREFIX/system.reg" ]; then
    # Made once, before the first program; what that prints belongs to no test.
    mkdir -p "$WINEPREFIX"
    if ! "$wine" wineboot --init >/dev/null 2>&1; then
        echo "wine.sh: Wine can't make the prefix $WINEPREFIX" >&2
        rm -f "$WINEPREFIX/system.reg"
        exit 1
    fi
fi
exec "$wine" "$@"
