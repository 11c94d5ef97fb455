#!/usr/bin/env bash
# Runs a Windows program under Wine, with no display, in the prefix that scripts/bootstrap makes: wine.sh PROGRAM
# ARGUMENT...
WINEPREFIX=$(CDPATH='' cd "$(dirname "$0")/.." && pwd)/build/wine
# Without a locale, as on a bare machine, Wine takes names beyond ASCII for invalid.
export WINEPREFIX WINEDEBUG=-all LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY

# detached COMMAND...: runs it with none of our files open, the lock among them.
detached() (
    for file in /proc/self/fd/*; do
        eval "exec ${file##*/}>&-"
    done
    exec "$@" </dev/null >/dev/null 2>&1
)

# A server that stays makes a start cost 0.04 s instead of 2.4 s. With one there already this fails at once. Who comes
# while it starts waits: what Wine starts with it would keep that one's output open, and who reads the output would wait
# for ever.
exec 9>"$WINEPREFIX.lock"
flock 9
if detached wineserver -p; then
    detached wine wineboot
fi
exec 9>&-
exec wine "$@"
