#!/usr/bin/env bash
# What each public header costs a source file that includes nothing else: CompileCost.sh REPOSITORY [RUNS]
# A line for each: its lines after preprocessing, and the processor's seconds with GCC and with Clang, of so many runs
# the fastest.
set -euo pipefail
cd "$1"
runs=${2:-5}

# seconds COMPILER HEADER
seconds() {
    local TIMEFORMAT='%U %S'
    for ((run = 0; run < runs; ++run)); do
        { time "$1" -std=c++20 -I. -fsyntax-only -x c++ - <<<"#include \"$2\""; } 2>&1
    done | awk '{ took = $1 + $2; if (NR == 1 || took < least) least = took } END { printf "%.2f", least }'
}

{ echo utility/Utility.h && sed -n 's|^#include "\(.*\)"$|\1|p' utility/Utility.h; } | while read -r header; do
    lines=$(g++ -std=c++20 -I. -E -x c++ - <<<"#include \"$header\"" | wc -l)
    printf '%s\t%d\t%s\t%s\n' "${header#utility/}" "$lines" "$(seconds g++ "$header")" "$(seconds clang++-14 "$header")"
done | LC_ALL=C sort -t '	' -k 2,2nr
