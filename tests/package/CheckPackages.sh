#!/usr/bin/env bash
# Holds the packages of the library against what belongs in them:
#   CheckPackages.sh debian HEADERS FOLDER VERSION SOVERSION (FOLDER has both packages)
#   CheckPackages.sh zip HEADERS FOLDER PATH... (FOLDER is where it is unpacked; a PATH is of the machine that made it)
# HEADERS is a folder of the installed headers. What is not as it has to be is said in a line each.
set -euo pipefail
mode=$1 headers=$2 folder=$3
shift 3
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
# same WHAT, and what was expected as standard input: compares them with the file `found`.
same() {
    diff "$work/found" - >"$work/differences" || { status=1 && echo "$1 (< found, > expected):" && cat "$work/differences"; }
}
# The pages that were written and made are not listed here.
pages='share/doc/[^/]*/(docs|html)/'
# each FORMAT WORD...: a line for each word.
# shellcheck disable=SC2059
each() { printf -- "$1\n" "${@:2}"; }
languages=(CHS CHT DEU ENG ESN FRA ITA JPN KOR PTB TRK)

check_zip() {
    local path file
    (cd "$folder" && find . -type f -printf '%P\n') | grep -vE "$pages" | sort >"$work/found"
    same "files of the zip" < <(
        {
            each 'bin/UtilityRes%s.dll' "${languages[@]}"
            each 'bin/%s.dll' Utility libgcc_s_seh-1 libstdc++-6 libwinpthread-1 zlib1
            each 'lib/cmake/Utility/%s' Utility{Config,ConfigVersion,Targets,Targets-relwithdebinfo,VersionRecord}.cmake VersionRecord.{cpp,rc}.in
            each 'lib/%s' libUtility.dll.a pkgconfig/utility.pc
            each 'share/doc/Utility/%s' CHANGELOG.md LICENSE README.md
            each 'share/doc/Utility/%s/copyright' gcc-mingw-w64-x86-64-posix-runtime libz-mingw-w64 mingw-w64-x86-64-dev
            cd "$headers" && find . -type f -printf 'include/%P\n'
        } | sort
    )
    for path in "$@"; do
        grep -rlF -e "$path" "$folder" >"$work/found" || true
        same "files that name $path" </dev/null
    done
    for file in "$folder"/bin/*.dll; do
        x86_64-w64-mingw32-objdump --section-headers "$file" | grep -o ' \.debug_.*' >"$work/found" || true
        same "sections of ${file##*/} that are not stripped" </dev/null
    done
}

# The functions of the packages' files are named after them. A library is not executable in Debian.
libutility_files() {
    sed "s/FULL/$version/; s/SOVERSION/$so_version/; s|LIB|./usr/lib/x86_64-linux-gnu|" <<'END'
-rw-r--r-- root/root ./usr/share/doc/libutility/changelog.Debian.gz
-rw-r--r-- root/root ./usr/share/doc/libutility/changelog.gz
-rw-r--r-- root/root ./usr/share/doc/libutility/copyright
-rw-r--r-- root/root LIB/libUtility.so.FULL
-rwxr-xr-x root/root LIB/UtilityCrashReport
-rwxr-xr-x root/root LIB/UtilityJobSupervisor
lrwxrwxrwx root/root LIB/libUtility.so.SOVERSION -> libUtility.so.FULL
END
    each '-rw-r--r-- root/root ./usr/lib/x86_64-linux-gnu/UtilityRes%s.dll' "${languages[@]}"
}
libutility_dev_files() {
    sed "s/SOVERSION/$so_version/; s|LIB|./usr/lib/x86_64-linux-gnu|" <<'END'
-rw-r--r-- root/root ./usr/share/doc/libutility-dev/README.md
-rw-r--r-- root/root ./usr/share/doc/libutility-dev/changelog.Debian.gz
-rw-r--r-- root/root ./usr/share/doc/libutility-dev/changelog.gz
-rw-r--r-- root/root ./usr/share/doc/libutility-dev/copyright
-rw-r--r-- root/root LIB/cmake/Utility/UtilityConfig.cmake
-rw-r--r-- root/root LIB/cmake/Utility/UtilityConfigVersion.cmake
-rw-r--r-- root/root LIB/cmake/Utility/UtilityTargets-relwithdebinfo.cmake
-rw-r--r-- root/root LIB/cmake/Utility/UtilityTargets.cmake
-rw-r--r-- root/root LIB/cmake/Utility/UtilityVersionRecord.cmake
-rw-r--r-- root/root LIB/cmake/Utility/VersionRecord.cpp.in
-rw-r--r-- root/root LIB/cmake/Utility/VersionRecord.rc.in
-rw-r--r-- root/root LIB/pkgconfig/utility.pc
lrwxrwxrwx root/root LIB/libUtility.so -> libUtility.so.SOVERSION
END
    (cd "$headers" && find . -type f -printf '-rw-r--r-- root/root ./usr/include/%P\n')
}

check_debian() {
    local version=$1 so_version=$2
    local package_version=$version-1
    local runtime=$folder/libutility_${package_version}_amd64.deb development=$folder/libutility-dev_${package_version}_amd64.deb
    local package file
    for file in "$runtime" "$development"; do
        package=${file##*/} package=${package%%_*}
        # Without the sizes and the times.
        dpkg-deb --contents "$file" | awk '{ print $1, $2, $6 ($7 != "" ? " " $7 " " $8 : "") }' | grep -vE "$pages" >"$work/contents"
        grep -v '^d' "$work/contents" | sort >"$work/found" || true
        same "files of $package" < <("${package//-/_}_files" | sort)
        grep '^d' "$work/contents" | grep -v '^drwxr-xr-x root/root ' >"$work/found" || true
        same "folders of $package that are not everybody's" </dev/null

        dpkg-deb --raw-extract "$file" "$work/$package"
        (cd "$work/$package" && md5sum --quiet --check DEBIAN/md5sums && find usr -type f | sort) >"$work/found" 2>&1 || true
        same "files of $package with a checksum" < <(sed 's/^[0-9a-f]*  //' "$work/$package/DEBIAN/md5sums" | sort)
    done

    # What it takes: a link is no second library.
    for file in "$runtime" "$development"; do
        package=${file##*/} package=${package%%_*}
        dpkg-deb --field "$file" Installed-Size >"$work/found"
        same "installed size of $package" < <(
            cd "$work/$package" && find . -path ./DEBIAN -prune -o -type f -printf '%s\n' -o -printf '1\n' |
                awk '{ total += int(($1 + 1023) / 1024) } END { print total }'
        )
    done

    dpkg-deb --field "$runtime" Package Version Architecture Section Priority Recommends >"$work/found"
    same "fields of libutility" <<END
Package: libutility
Version: $package_version
Architecture: amd64
Section: libs
Priority: optional
Recommends: libdw1, libminizip1, libsystemd0
END
    # Of what version they are is the building machine's matter.
    dpkg-deb --field "$runtime" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//' | sort >"$work/found"
    same "what libutility depends on" < <(each %s libboost-filesystem1.74.0 libc6 libgcc-s1 libsqlite3-0 libstdc++6 zlib1g)
    dpkg-deb --field "$development" Package Version Architecture Section Priority Depends Recommends >"$work/found"
    same "fields of libutility-dev" <<END
Package: libutility-dev
Version: $package_version
Architecture: amd64
Section: libdevel
Priority: optional
Depends: libutility (= $package_version), libboost-dev (>= 1.74), libboost-filesystem-dev (>= 1.74)
Recommends: g++ (>= 4:12) | clang (>= 1:14)
END
    (cd "$work/libutility/DEBIAN" && find . -type f -printf '%M %f\n' | sort && cat shlibs triggers) >"$work/found"
    same "control files of libutility" <<END
-rw-r--r-- control
-rw-r--r-- md5sums
-rw-r--r-- shlibs
-rw-r--r-- triggers
libUtility $so_version libutility (>= $version)
activate-noawait ldconfig
END

    local library=$work/libutility/usr/lib/x86_64-linux-gnu/libUtility.so.$version size
    for file in "$library" "${library%/*}"/Utility{CrashReport,JobSupervisor}; do
        readelf --sections --wide "$file" | grep -E ' \.(debug_|symtab)' >"$work/found" || true
        same "sections of ${file##*/} that are not stripped" </dev/null
    done
    size=$(stat -c %s "$library")
    [ "$size" -lt 1000000 ] || { status=1 && echo "the library has grown to $size bytes"; }
}

case $mode in
debian) check_debian "$@" ;;
zip) check_zip "$@" ;;
esac
exit "$status"
