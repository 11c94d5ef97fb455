#!/bin/sh
# What run_job leaves behind, and what it says without a supervisor:
# RunJob.sh PROGRAM end|interrupt|kill|terminal|alone FOLDER
set -eu
program=$1 case=$2 folder=$3
rm -rf "$folder"
mkdir -p "$folder"
export folder

gone() {
    tries=0
    while kill -0 "$1" 2>/dev/null; do
        tries=$((tries + 1))
        if [ "$tries" -gt 2000 ]; then
            echo "process $1 is still there"
            exit 1
        fi
        sleep 0.05
    done
}

# A daemon that ignores signals, and a command that ends or goes on.
daemon='trap "" INT TERM HUP; setsid sh -c "trap \"\" INT TERM HUP; echo \$\$ > \"$folder/daemon\"; sleep 600; sleep 600" > /dev/null 2>&1 &
while ! [ -s "$folder/daemon" ]; do sleep 0.02; done'
if [ "$case" = end ]; then
    status=0
    said=$("$program" sh -c "$daemon; echo said \"\$1\"; exit 7" sh 'one "two" \ ') || status=$?
    [ "$status" = 7 ] && [ "$said" = 'said one "two" \ ' ] || {
        echo "status $status, and it said: $said"
        exit 1
    }
    # It is gone when run_job is.
    ! kill -0 "$(cat "$folder/daemon")" 2>/dev/null
    exit
fi
if [ "$case" = alone ]; then
    cp "$program" "$folder"
    for each in "${program%/*}"/../utility/libUtility.so*; do
        ! [ -e "$each" ] || cp -P "$each" "$folder"
    done
    for supervisor in none forbidden; do
        [ "$supervisor" = none ] || : >"$folder/UtilityJobSupervisor"
        status=0
        said=$(LD_LIBRARY_PATH=$folder "$folder/${program##*/}" touch "$folder/touched" 2>&1) || status=$?
        [ "$status" = 125 ] && [ "$said" = 'run_job: there can be no job' ] && ! [ -e "$folder/touched" ] || {
            echo "status $status, and it said: $said"
            exit 1
        }
    done
    exit
fi
command="$daemon; echo \$\$ > \"\$folder/command\"; sleep 600; sleep 600"
if [ "$case" = terminal ]; then
    # Ctrl-C is typed as soon as the command is there. The terminal stays until the end.
    export program command
    status=0
    (
        while ! [ -s "$folder/command" ]; do sleep 0.02; done
        printf '\003'
        gone "$(cat "$folder/command")"
    ) | script -qec '"$program" sh -c "$command"' /dev/null || status=$?
    [ "$status" = 130 ] || {
        echo "status $status"
        exit 1
    }
    gone "$(cat "$folder/daemon")"
    gone "$(cat "$folder/command")"
    exit
fi
"$program" sh -c "$command" &
while ! [ -s "$folder/command" ]; do sleep 0.02; done
case $case in
interrupt) kill -TERM $! ;;
kill) kill -KILL $! ;;
esac
gone "$(cat "$folder/daemon")"
gone "$(cat "$folder/command")"
