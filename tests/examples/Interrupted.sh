#!/usr/bin/env bash
# A program that is interrupted while it writes: Interrupted.sh PROGRAM INPUT FOLDER SIGNAL STATUS FILES [--beside]
# INPUT is what takes long. What was there stays, and FILES files are in the folder in the end, with --beside also
# INPUT.
set -um # with job control, without which a program in the background ignores Ctrl-C
program=$1 input=$2 folder=$3 signal=$4 status=$5 files=$6 way=${7:-}
if [ "$way" = --beside ]; then
    files=$((files + 1))
    set -- --beside "$folder/part.wrl.imp"
else
    set -- --out "$folder/part.wrl" "$input"
fi

count() {
    local found=("$folder"/*)
    echo ${#found[@]}
}

# A busy machine may give all of its time to the program, which then has ended ahead of the signal: once more.
for ((tries = 0, got = 0; got == 0 && tries < 20; ++tries)); do
    rm -rf "$folder"
    mkdir -p "$folder"
    printf old >"$folder/part.wrl"
    [ "$way" != --beside ] || cp "$input" "$folder/part.wrl.imp"
    before=$(count)
    "$program" "$@" >"$folder.log" 2>&1 &
    child=$!
    while [ "$(count)" = "$before" ] && kill -0 "$child" 2>/dev/null; do sleep 0.01; done
    kill -"$signal" "$child" 2>/dev/null
    wait "$child"
    got=$?
done
ls -l "$folder"
cat "$folder.log"
echo "status $got"
[ "$got" = "$status" ] && [ "$(cat "$folder/part.wrl")" = old ] && [ "$(count)" = "$files" ]
