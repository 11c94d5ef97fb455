#!/bin/sh
# Runs a Windows program under Wine, with no display, in the prefix that scripts/bootstrap makes: wine.sh PROGRAM ARGUMENT...
WINEPREFIX=$(CDPATH='' cd "$(dirname "$0")/.." && pwd)/build/wine
# Without a locale, as on a bare machine, Wine takes names beyond ASCII for invalid.
export WINEPREFIX WINEDEBUG=-all LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY

# A server that stays makes a start cost 0.04 s instead of 2.4 s. With one there already this fails at once. Who comes while it
# starts waits: what Wine starts with it would keep that one's output open, and who reads the output would wait for ever.
(
    flock 9
    if wineserver -p </dev/null >/dev/null 2>&1 9>&-; then
        wine wineboot </dev/null >/dev/null 2>&1 9>&-
    fi
) 9>"$WINEPREFIX.lock"
exec wine "$@"
