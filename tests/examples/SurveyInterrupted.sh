#!/usr/bin/env bash
# A survey on several threads that is interrupted while it prints ends soon, and what it printed are whole records:
# SurveyInterrupted.sh PROGRAM INPUT FOLDER
set -um # with job control, without which a program in the background ignores Ctrl-C
program=$1 input=$2 folder=$3
rm -rf "$folder"
mkdir -p "$folder"
mkfifo "$folder/pipe"
"$program" --jobs 8 --dump "$input" >"$folder/pipe" 2>"$folder/errors" &
child=$!
exec 3<"$folder/pipe"
# It has begun to print, and goes on when there is room in the pipe.
read -r first <&3
kill -INT "$child" || exit 1
cat <&3 >"$folder/rest"
wait "$child"
status=$?
whole=$("$program" --dump "$input" 2>"$folder/whole-errors" | tee "$folder/whole" | wc -l)
printed=$(($(wc -l <"$folder/rest") + 1))
echo "status $status, $printed of $whole records, first $first, errors: $(cat "$folder/errors")"
[ "$status" = 130 ] && [ "$(cat "$folder/errors")" = interrupted ] && [ "$printed" -lt "$whole" ] &&
    { printf '%s\n' "$first" && cat "$folder/rest"; } | cmp - <(head -n "$printed" "$folder/whole")
