#!/bin/sh
# Windows has most text operations twice: one ending in A, in the machine's code page, one ending in W. Only W is
# called, by that name, but for the report of an assertion: its texts are narrow, and it is to work when little else
# does. Lists calls of the others: CheckWideCalls.sh SYSTEM-HEADERS SOURCES (folders)
set -eu
headers=$1
sources=$2

# The operations that come in two forms are those which the system's headers give a third name, without a letter.
names=$(grep -hoE '^#define[[:blank:]]+[A-Za-z0-9_]+[[:blank:]]+__MINGW_NAME_(AW|UL)' "$headers"/*.h | awk '{print $2}' | sort -u)
[ "$(printf '%s\n' "$names" | wc -l)" -gt 1000 ] || {
    echo "$headers: the names of the operations are not there"
    exit 2
}

# shellcheck disable=SC2046
printf '%s\n' "$names" | awk '
    BEGIN { narrow["OutputDebugStringA"]; narrow["GetModuleFileNameA"]; narrow["MessageBoxA"] }
    FNR == NR { two_forms[$1] = 1; next }
    {
        line = $0
        sub(/\/\/.*/, "", line)
        while (match(line, /[A-Za-z_][A-Za-z0-9_]*[[:blank:]]*\(/)) {
            name = substr(line, RSTART, RLENGTH)
            line = substr(line, RSTART + RLENGTH)
            sub(/[[:blank:]]*\($/, "", name)
            plain = name
            sub(/A$/, "", plain)
            if (name in two_forms || (plain != name && plain in two_forms && !(name in narrow))) {
                print FILENAME ":" FNR ": " name
                found = 1
            }
        }
    }
    END { exit found }' - $(find "$sources" -name '*.h' -o -name '*.cpp')
