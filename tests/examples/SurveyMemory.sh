#!/usr/bin/env bash
# A survey of far more bad fields than there is memory for what is wrong with each: SurveyMemory.sh PROGRAM FILE
# It counts them all.
set -u
program=$1 file=$2
awk 'BEGIN {
  printf "%-72sS      1\n%-72sG      1\n", "x", "1H,,1H;,,,,,32,38,6,308,15,,1.,2,2HMM;"
  for (i = 1; i <= 60000; ++i)
    printf "%-64s%8dP%7d\n", "116,x,y,z,q,q,q,q,q,q,q,q,q,q,q,q,q,q,q,q,q,q,q,q;", 1 + 2 * (i % 2), i
  printf "%-72sT      1\n", "x"
}' >"$file"
said=$(ulimit -v 450000 && "$program" --jobs 8 "$file" 2>&1)
status=$?
rm -f "$file"
echo "$said" | tail -n 5
[ "$status" = 1 ] && grep -q 'and 1379980 more: Field # is bad' <<<"$said"
