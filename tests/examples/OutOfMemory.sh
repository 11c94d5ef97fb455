#!/usr/bin/env bash
# An executable with a million sections, which a program with little memory is asked for: OutOfMemory.sh PROGRAM FILE
# It says so, and ends as if the file could not be read.
set -u
program=$1 file=$2
put() { printf "$2" | dd of="$file" bs=1 seek="$1" conv=notrunc 2>/dev/null; }
rm -f "$file"
truncate -s $((64 + 64 * 1000000)) "$file"
put 0 '\177ELF\002\001'    # of 64 bits
put 40 '\100'              # the place of the sections
put 58 '\100'              # the size of one
put 96 '\100\102\017'      # how many there are
said=$(ulimit -v 120000 && "$program" "$file" 2>&1)
status=$?
rm -f "$file"
echo "$said"
[ "$status" = 2 ] && [ "$said" = std::bad_alloc ]
