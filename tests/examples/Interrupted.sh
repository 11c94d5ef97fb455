#!/usr/bin/env bash
# A program that is interrupted while it writes: Interrupted.sh PROGRAM INPUT FOLDER SIGNAL STATUS FILES [--beside]
# INPUT is what takes long. What was there stays, and FILES files are in the folder in the end, with --beside also
# INPUT.
set -um # with job control, without which a program in the background ignores Ctrl-C
program=$1 input=$2 folder=$3 signal=$4 status=$5 files=$6 way=${7:-}
rm -rf "$folder"
mkdir -p "$folder"
printf old >"$folder/part.wrl"
if [ "$way" = --beside ]; then
    cp "$input" "$folder/part.wrl.imp"
    files=$((files + 1))
    set -- --beside "$folder/part.wrl.imp"
else
    set -- --out "$folder/part.wrl" "$input"
fi
before=$(ls "$folder" | wc -l)
"$program" "$@" >"$folder.log" 2>&1 &
child=$!
while [ "$(ls "$folder" | wc -l)" = "$before" ] && kill -0 "$child" 2>/dev/null; do sleep 0.01; done
kill -"$signal" "$child" || exit 1
wait "$child"
got=$?
ls -l "$folder"
cat "$folder.log"
echo "status $got"
[ "$got" = "$status" ] && [ "$(cat "$folder/part.wrl")" = old ] && [ "$(ls "$folder" | wc -l)" = "$files" ]
