# What the scripts share; read by them, not run. Sets `root`, the repository's folder.
# shellcheck shell=bash
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
logs=$root/build/logs
mkdir -p "$logs"

# quietly NAME COMMAND...: what the command prints goes to build/logs/NAME.log, and is shown only if it fails.
quietly() {
    local log=$logs/$1.log
    shift
    if ! "$@" </dev/null >"$log" 2>&1; then
        printf 'failed: %s\n' "$*" >&2
        tail -n 60 "$log" >&2
        printf 'all of it: %s\n' "$log" >&2
        return 1
    fi
}

# build PRESET [CACHE-ENTRY...]: configures and builds. The environment's UTILITY_WERROR and UTILITY_TEST_DATA are taken
# over.
build() {
    local preset=$1
    shift
    [ -z "${UTILITY_WERROR:-}" ] || set -- "$@" -D "UTILITY_WERROR=$UTILITY_WERROR"
    [ -z "${UTILITY_TEST_DATA:-}" ] || set -- "$@" -D "UTILITY_TEST_DATA=$UTILITY_TEST_DATA"
    quietly "$preset-configure" cmake -S "$root" --preset "$preset" "$@" &&
        (cd "$root" && quietly "$preset-build" cmake --build --preset "$preset")
}

passed=0
failed=0
skipped=0

# result WHAT STATE: one thing that was tried, in a line.
result() { printf '%-12s %s\n' "$1" "$2"; }

# build_or_count PRESET: a build that fails counts as one failed test.
build_or_count() {
    local start=$SECONDS
    result "$1" "building"
    if build "$@"; then
        result "$1" "built in $((SECONDS - start)) s"
    else
        result "$1" "DOES NOT BUILD"
        failed=$((failed + 1))
        return 1
    fi
}

# compare_with_expected PRESET: what did not run as tests/expected.txt has it counts as failed, each; the first are
# shown.
compare_with_expected() {
    local preset=$1 data count differences=$logs/$1-differences.txt
    data=$(sed -n 's/^UTILITY_TEST_DATA:PATH=//p' "$root/build/$preset/CMakeCache.txt")
    awk -v "preset=$preset" -v "data=$data" -v "ci=${CI:-}" -f "$root/tests/Expected.awk" \
        "$root/tests/expected.txt" "$logs/$preset-tests.tsv" >"$differences"
    count=$(wc -l <"$differences")
    while read -r line; do
        result "$preset" "$line"
    done < <(head -n 20 "$differences")
    [ "$count" -le 20 ] || result "$preset" "and $((count - 20)) more: $differences"
    failed=$((failed + count))
}

# beside NAME COMMAND...: begins a command that counts, to run beside what comes next. finish waits for it and adds its
# counts.
begun=()
beside() {
    local name=$1
    shift
    rm -f "$logs/$name-count"
    (
        passed=0 failed=0 skipped=0
        "$@" || true
        echo "$passed $failed $skipped" >"$logs/$name-count"
    ) &
    begun+=("$name")
}

# build_and_test PRESET [CACHE-ENTRY...]: builds, and begins the tests.
build_and_test() {
    build_or_count "$@" || return 0
    result "$1" "testing"
    beside "$1" run_tests "$1"
}

# run_tests PRESET: runs the preset's tests, shows those that fail, and counts. build/logs/PRESET-tests.tsv gets the
# state (passed, failed, skipped, or lacking: not run since the processor lacks the instructions, the user the rights,
# the machine a program, or the build an allocator) and the name of each. A part of the tests that runs in one process
# counts by its results.
run_tests() {
    local preset=$1 start=$SECONDS junit=$logs/$1-tests.xml table=$logs/$1-tests.tsv log=$logs/$1-tests.log
    local results=$root/build/$1/tests/results status=0 good bad out
    rm -f "$junit" "$results"/*.xml
    # What Wine starts with its first program keeps that one's output open: that must not be a test's.
    [ "$preset" != windows ] || "$root/cmake/wine.sh" cmd /c exit </dev/null >/dev/null 2>&1
    (cd "$root" && ctest --preset "$preset" --output-junit "$junit") </dev/null >"$log" 2>&1 || status=$?
    [ -e "$junit" ] || : >"$junit"
    local file files=("$junit")
    for file in "$results"/*.xml; do
        [ ! -e "$file" ] || files+=("$file")
    done
    # A test that should have run and did not, because what it needs failed, has failed.
    awk '
        function attribute(key) {
            match($0, key "=\"[^\"]*")
            return substr($0, RSTART + length(key) + 2, RLENGTH - length(key) - 2)
        }
        function flush() {
            if (name != "" && !(name ~ /^UtilityTests\.Part/ && state == "passed"))
                print state "\t" name
            name = ""
        }
        /<testcase / {
            flush()
            name = attribute(" name")
            if (/ result="/)
                name = attribute("classname") "." name
            sub(/ +# GetParam\(\).*/, "", name)
            gsub(/&lt;/, "<", name)
            gsub(/&gt;/, ">", name)
            gsub(/&quot;/, "\"", name)
            gsub(/&apos;/, "\047", name)
            gsub(/&amp;/, "\\&", name)
            # What ctest calls Suite.Name<0> is Suite/0.Name to its program.
            if (match(name, /<[0-9]+>$/)) {
                instance = "/" substr(name, RSTART + 1, RLENGTH - 2) "."
                name = substr(name, 1, RSTART - 1)
                sub(/\./, instance, name)
            }
            state = / result="skipped"/ ? "skipped" : / status="run"/ ? "passed" : "failed"
        }
        /<failure / { state = "failed" }
        /<skipped message="SKIP_/ { state = "skipped" }
        /The (build|machine|processor|user) lacks/ && state == "skipped" { state = "lacking" }
        END { flush() }' "${files[@]}" >"$table"
    good=$(grep -c '^passed' "$table" || true)
    bad=$(grep -c '^failed' "$table" || true)
    out=$(grep -c '^skipped' "$table" || true)
    if [ "$status" != 0 ] && [ "$bad" = 0 ]; then
        bad=1
    fi
    if [ "$bad" != 0 ]; then
        grep -vE '^ +Start +[0-9]+:|   Passed +[0-9.]+ sec$|^\[( RUN |  +OK |-+)|^$' "$log" | tail -n 300 || true
    fi
    passed=$((passed + good))
    failed=$((failed + bad))
    skipped=$((skipped + out))
    result "$preset" "$good passed, $bad failed, $out skipped in $((SECONDS - start)) s"
    sed -n "s/^lacking\t/not run: /p" "$table" | while read -r line; do
        result "$preset" "$line"
    done
    compare_with_expected "$preset"
}

# finish: the totals, and an exit status that says whether all is well. A run without a test is not.
finish() {
    local name good bad out
    wait
    for name in ${begun[@]+"${begun[@]}"}; do
        # Without counts it did not come to its end.
        read -r good bad out 2>/dev/null <"$logs/$name-count" || good=0 bad=1 out=0
        passed=$((passed + good))
        failed=$((failed + bad))
        skipped=$((skipped + out))
    done
    if [ "$passed" = 0 ] && [ "$failed" = 0 ]; then
        echo "no test ran"
        failed=1
    fi
    result "all of it" "$SECONDS s"
    if [ "$skipped" = 0 ]; then
        printf '%d passed, %d failed\n' "$passed" "$failed"
    else
        printf '%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
    fi
    [ "$failed" = 0 ]
}
