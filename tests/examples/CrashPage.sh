#!/usr/bin/env bash
# Looks at a page of crash_view with a browser: CrashPage.sh PROGRAM FOLDER
set -euo pipefail
program=$1 folder=$2
browser=$(command -v chromium || command -v chromium-browser || command -v google-chrome) || {
    echo "The machine lacks chromium"
    exit 0
}
rm -rf "$folder"
mkdir -p "$folder"

fail() {
    echo "$1"
    echo "$dom"
    exit 1
}

# dom [FILTER]: the elements of the page as they are after its script has run.
dom() {
    HOME=$folder timeout 60 "$browser" --headless --no-sandbox --disable-gpu --user-data-dir="$folder/profile" --dump-dom \
        "file://$folder/report.html${1:+#filter=$1}" 2>"$folder/browser.log" || {
        cat "$folder/browser.log"
        exit 1
    }
}

# What would run if a name became an element, or part of one.
hostile='"&gt;&lt;/script&gt;&lt;script&gt;document.title="owned"&lt;/script&gt;&lt;img src=x onerror=document.title="owned"&gt;'
raw='"></td></script><script>document.title="owned"</script><img src=x onerror=document.title="owned">'
variable() { printf '<Variable>\n<Symbol>%s</Symbol>\n<Flags>0x80</Flags><Tag>16</Tag><BaseType>6</BaseType><Value>%s</Value>\n</Variable>\n' "$1" "$2"; }
frame() {
    printf '<StackEntry>\n<Address>0x1</Address>\n<Frame>0x2</Frame>\n<Symbol>%s</Symbol>\n<Displacement>0x3</Displacement>\n' "$1"
    printf '<LocalVariables>\n%s\n%s\n</LocalVariables>\n</StackEntry>\n' "$(variable "$2" 1)" "$(variable "$3" 2)"
}
{
    printf '<ExceptionReport>\n<ExceptionCode>c0000005</ExceptionCode>\n<ExceptionDescription>ACCESS_VIOLATION</ExceptionDescription>\n'
    printf '<FaultAddress>1</FaultAddress>\n<FaultingModule>/opt/%s/mill</FaultingModule>\n' "$hostile"
    printf '<ProcessInformation>\n<Path>/opt/%s</Path>\n<Modules>\n' "$raw"
    printf '<ModuleEntry>\n<Path>/lib/%s</Path>\n<BaseAddress>1</BaseAddress>\n<Size>2</Size>\n</ModuleEntry>\n' "$raw" libfirst.so
    printf '</Modules>\n</ProcessInformation>\n<CallStack>\n'
    frame Feed spindle coolant
    frame Turn "$hostile" spindleSpeed
    frame start one two
    printf '</CallStack>\n</ExceptionReport>\n'
} >"$folder/report.xml"
printf '%s\n' "$raw" 'spindle is hot' 'all is well' >"$folder/report.log.txt"
"$program" --html "$folder/report.html" "$folder/report.xml"

dom=$(dom)
grep -q '<title>mill: ACCESS_VIOLATION</title>' <<<"$dom" || fail "A name of the report ran"
! grep -q 'hidden=""' <<<"$dom" || fail "Something is hidden without a filter"
grep -q 'document.title="owned"' <<<"$dom" || fail "The names are not shown"

# Two frames with a variable of that name, each open and with no other variable, and a line of the log.
dom=$(dom SPINDLE)
grep -q '>3 matches<' <<<"$dom" || fail "The filter does not find three"
[ "$(grep -c '<details class="frame" open="">' <<<"$dom")" = 2 ] || fail "Not two frames are open"
[ "$(grep -c '<details class="frame" hidden="">' <<<"$dom")" = 1 ] || fail "Not one frame is hidden"
[ "$(grep -o '<tr hidden="">' <<<"$dom" | wc -l)" = 6 ] || fail "Not two variables, the two of the hidden frame and the modules are hidden"
[ "$(grep -o '<span class="" hidden="">\|<span hidden="">' <<<"$dom" | wc -l)" = 2 ] || fail "Not two lines of the log are hidden"

# By a function's name the frame keeps all of its variables; and a module is found in the list that was closed.
dom=$(dom start)
grep -q '>1 match<' <<<"$dom" || fail "The filter does not find one"
[ "$(grep -c '<details class="frame" hidden="">\|<details class="frame" open="" hidden="">' <<<"$dom")" = 2 ] || fail "Not two frames are hidden"
dom=$(dom libfirst)
grep -q '<details class="plain" open="">' <<<"$dom" || fail "The list of modules is not open"
dom=$(dom '%3Cscript')
grep -q 'match' <<<"$dom" || fail "An encoded filter does not work"
echo good
