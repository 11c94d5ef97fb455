#!/bin/sh
# Holds the names that the shared library exports against the list of them, and the program that is to refer to each
# against it:
#   CheckNames.sh exports linux|windows LIST NM LIBRARY (on Windows its import library)
#   CheckNames.sh referred linux|windows LIST NM OBJECT (of the program)
# LIST has a name in a line; then, after a tab, `linux` or `windows` if it is of one system only, and `private` if no
# user can refer to it. Names are written as on Linux, where an int has 32 bits and a long 64.
set -eu
mode=$1 system=$2 list=$3 nm=$4 file=$5
export LC_ALL=C

case $mode-$system in
# One that is unique to the process, `u`, would keep the library loaded for ever, and is told as another name.
exports-linux)
    "$nm" -D --defined-only --with-symbol-versions "$file" |
        sed -E 's/^[0-9a-f]+ u /&unique in the process: /; s/^[0-9a-f]+ . //; s/@@UTILITY_[0-9]+$//'
    ;;
exports-windows) "$nm" "$file" | sed -n 's/.* I __imp_//p' ;;
referred-*) "$nm" "$file" | sed 's/.* //; s/^__imp_//' ;;
esac | c++filt | {
    if [ "$system" = windows ]; then
        sed -E 's/\<long long\>/@/g; s/\<unsigned long\>/unsigned int/g; s/\<long\>/int/g; s/@/long/g; s/\<_FILETIME\>/FILETIME/g; s/([0-9])ull\>/\1ul/g'
    else
        cat
    fi
} | sed -E 's/\[abi:cxx11\]//g
    s/std::__cxx11::basic_string<(w?)char(_t)?, std::char_traits<w?char(_t)?>, std::allocator<w?char(_t)?> >/std::\1string/g
    s/std::basic_string_view<(w?)char(_t)?, std::char_traits<w?char(_t)?> >/std::\1string_view/g
    s/std::basic_ostream<wchar_t, std::char_traits<wchar_t> >/std::wostream/g
    s/ >/>/g
    s/std::set<([^,<>]*), std::less<\1>, std::allocator<\1>>/std::set<\1>/g' | sort -u | awk -F'\t' -v mode="$mode" -v on="$system" '
    function say(what, name) {
        print what ": " name
        bad = 1
    }
    FILENAME == "-" {
        found[$1]
        next
    }
    /^#/ || (on == "linux" ? $2 ~ /windows/ : $2 ~ /linux/) { next }
    mode == "exports" {
        if (!($1 in found))
            say("listed, but not exported", $1)
        delete found[$1]
    }
    mode == "referred" && !/^(typeinfo|typeinfo name|vtable|construction vtable|VTT) for |^virtual thunk to / {
        if ($2 !~ /private/ && !($1 in found))
            say("exported, but not referred to", $1)
        else if ($2 ~ /private/ && $1 in found)
            say("marked as private, but referred to", $1)
    }
    END {
        if (mode == "exports")
            for (name in found)
                say("exported, but not listed", name)
        exit bad
    }' - "$list"
