#!/bin/sh
# Lists the public headers that show an example which is not run: CheckExamples.sh SOURCE-FOLDER
set -eu
cd "$1"
here=tests/headers
sed -n 's|^#include "utility/\(.*\)\.h"$|\1|p' utility/Utility.h | {
    examples=0
    status=0
    while read -r name; do
        [ -n "$(awk -f $here/Example.awk "utility/$name.h")" ] || continue
        examples=$((examples + 1))
        grep -qxF "#include \"$name.example\"" $here/ExamplesTest.cpp || {
            echo "utility/$name.h: $here/ExamplesTest.cpp does not run its example"
            status=1
        }
    done
    [ "$examples" -gt 30 ] || {
        echo "there are only $examples examples"
        status=1
    }
    exit "$status"
}
