#!/usr/bin/env bash
# A survey that is interrupted while it writes: Interrupted.sh PROGRAM PART FOLDER SIGNAL STATUS FILES
# PART is one that takes long to draw. What was there stays, and FILES files are in the folder in the end.
set -um # with job control, without which a program in the background ignores Ctrl-C
program=$1 part=$2 folder=$3 signal=$4 status=$5 files=$6
rm -rf "$folder"
mkdir -p "$folder"
printf old >"$folder/part.wrl"
"$program" --out "$folder/part.wrl" "$part" >"$folder.log" 2>&1 &
child=$!
while [ "$(ls "$folder" | wc -l)" = 1 ] && kill -0 "$child" 2>/dev/null; do sleep 0.01; done
kill -"$signal" "$child" || exit 1
wait "$child"
got=$?
ls -l "$folder"
cat "$folder.log"
echo "status $got"
[ "$got" = "$status" ] && [ "$(cat "$folder/part.wrl")" = old ] && [ "$(ls "$folder" | wc -l)" = "$files" ]
