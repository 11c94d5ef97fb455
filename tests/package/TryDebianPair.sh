#!/usr/bin/env bash
# Tries the Debian packages of the library where nothing else is, as root of a machine that is thrown away:
#   scripts/package && scripts/fresh-machine --with build/packages tests/package/TryDebianPair.sh
# libutility finds all that it needs by its own dependencies; with libutility-dev programs are built, by find_package
# and by pkg-config, and run, with what the library has beside it; and nothing is left when both are purged.
set -euo pipefail
. "$(dirname "$0")/../../scripts/common.sh"
packages=$root/build/packages
work=$(mktemp -d)
export DEBIAN_FRONTEND=noninteractive HOME=$work/home
mkdir "$HOME"

say() { printf 'Debian pair: %s\n' "$*"; }
fail() { say "$*" && exit 1; }
apt() { quietly apt apt-get -q -y -o Dpkg::Use-Pty=0 --no-install-recommends "$@"; }
field() { dpkg-deb --field "$1" "$2"; }

# Every file with its owner, mode, size and target, but for what apt and dpkg keep for themselves.
files() {
    find / -xdev \( -path "$work" -o -path "$root" -o -path /var/lib/dpkg -o -path /var/lib/apt -o -path /var/cache -o -path /var/log \) \
        -prune -o -type f -printf '%M %u:%g %p %s\n' -o -printf '%M %u:%g %p %l\n' | LC_ALL=C sort
}

library=$(echo "$packages"/libutility_*.deb) development=$(echo "$packages"/libutility-dev_*.deb)
quietly apt apt-get -q update
version=$(field "$library" Version) version=${version%-*}
say "libutility alone"
apt install "$library"
for file in /usr/lib/*/libUtility.so.? /usr/lib/*/Utility{CrashReport,JobSupervisor}; do
    ldd "$file" >"$work/needed"
    ! grep 'not found' "$work/needed" || fail "$file lacks a library"
done
ldconfig -p | grep 'libUtility\.so\.' >"$work/known" || fail "the linker of programs does not know the library"
quietly purge dpkg --purge libutility

say "the tools, and what the packages need"
apt satisfy "$(field "$library" Depends), $(field "$library" Recommends)" \
    "$(field "$development" Depends | sed 's/libutility ([^)]*), //')" "g++, cmake, ninja-build, pkgconf, unzip"
files >"$work/before"
quietly install dpkg --install "$library" "$development"

# The second as where the root's own folders come first, which are links into /usr.
for way in find_package pkg-config; do
    for path in "$PATH" "/bin:/sbin:$PATH"; do
        say "a program by $way"
        rm -rf "$work/user"
        PATH=$path quietly user cmake -G Ninja -S "$root/tests/package/user" -B "$work/user" "-DWAY=$way" "-DUTILITY_VERSION=$version"
        quietly user cmake --build "$work/user"
        quietly user "$work/user/user"
    done
done

say "programs that need what is beside the library"
cp -r "$root/examples" "$work"
cd "$work"
read -ra flags <<<"$(pkg-config --cflags utility)"
read -ra libraries <<<"$(pkg-config --libs utility)"
compile() { quietly "$1" g++ -std=c++20 -g -I. "${flags[@]}" "${@:2}" -o "$1" "${libraries[@]}"; }
compile display_language examples/display_language.cpp &
compile run_job examples/run_job.cpp examples/Console.cpp &
wait
compile zip_files examples/zip_files.cpp examples/Console.cpp &
# The arguments of main are not to be seen by the report.
g++ -std=c++20 -g0 -I. "${flags[@]}" -c examples/crash_demo.cpp -o crash_demo.o
compile crash_demo crash_demo.o examples/Console.cpp examples/crash/Causes.cpp &
wait
./display_language 0407 >/dev/null
./display_language | grep '^\* German' >language.txt || fail "the satellites are not found"
status=0
./run_job sh -c 'exit 7' || status=$?
[ "$status" = 7 ] || fail "a job ended by $status"
./zip_files packed.zip examples/Console.cpp || fail "an archive was not written"
unzip -qq -t packed.zip
./crash_demo null >crash.txt || fail "a crash was not reported"
grep -q FeedPerTooth "$(sed -n 's/^Its report is //p' crash.txt)" || fail "the report does not tell the calls"

say "purged"
cd /
quietly purge dpkg --purge libutility-dev libutility
files >"$work/after"
diff "$work/before" "$work/after" || fail "something is left behind"
! dpkg-query -W 'libutility*' 2>/dev/null || fail "dpkg still knows the packages"
rm -rf "$work"
