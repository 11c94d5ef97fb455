#!/usr/bin/env bash
# Holds the Debian packages of the library against what belongs in them:
#   CheckDebianPair.sh FOLDER VERSION SOVERSION HEADERS
# FOLDER has the packages, HEADERS the installed headers. What is not as it has to be is said in a line each.
set -euo pipefail
folder=$1 version=$2 so_version=$3 headers=$4
package_version=$version-1
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
# same WHAT, and what was expected as standard input: compares them with the file `found`.
same() {
    diff "$work/found" - >"$work/differences" || { status=1 && echo "$1 (< found, > expected):" && cat "$work/differences"; }
}

# A library is not executable in Debian.
satellites() { printf -- '-rw-r--r-- root/root ./usr/lib/x86_64-linux-gnu/UtilityRes%s.dll\n' CHS CHT DEU ENG ESN FRA ITA JPN KOR PTB TRK; }
# The functions of the packages' files are named after them.
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
    satellites
}
libutility_dev_files() {
    sed "s/SOVERSION/$so_version/; s|LIB|./usr/lib/x86_64-linux-gnu|" <<'END'
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

for package in libutility libutility-dev; do
    file=$folder/${package}_${package_version}_amd64.deb
    # Without the sizes, the times, and the pages, of which some are there if they were made.
    dpkg-deb --contents "$file" | awk '{ print $1, $2, $6 ($7 != "" ? " " $7 " " $8 : "") }' >"$work/contents"
    grep -v '^d' "$work/contents" | grep -vE ' ./usr/share/doc/libutility-dev/(README.md|docs|html)' | sort >"$work/found" || true
    same "files of $package" < <("${package//-/_}_files" | sort)
    grep '^d' "$work/contents" | grep -v '^drwxr-xr-x root/root ' >"$work/found" || true
    same "folders of $package that are not everybody's" </dev/null

    dpkg-deb --raw-extract "$file" "$work/$package"
    (cd "$work/$package" && md5sum --quiet --check DEBIAN/md5sums && find usr -type f | sort) >"$work/found" 2>&1 || true
    same "files of $package with a checksum" < <(sed 's/^[0-9a-f]*  //' "$work/$package/DEBIAN/md5sums" | sort)
done

# What libraries it takes, and of what version, is the building machine's matter.
dpkg-deb --field "$folder/libutility_${package_version}_amd64.deb" Package Version Architecture Section Priority Recommends >"$work/found"
same "fields of libutility" <<END
Package: libutility
Version: $package_version
Architecture: amd64
Section: libs
Priority: optional
Recommends: libdw1, libminizip1, libsystemd0
END
dpkg-deb --field "$folder/libutility_${package_version}_amd64.deb" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//' | sort >"$work/found"
same "what libutility depends on" <<'END'
libboost-filesystem1.74.0
libc6
libgcc-s1
libsqlite3-0
libstdc++6
zlib1g
END
dpkg-deb --field "$folder/libutility-dev_${package_version}_amd64.deb" Package Version Architecture Section Priority Depends Recommends >"$work/found"
same "fields of libutility-dev" <<END
Package: libutility-dev
Version: $package_version
Architecture: amd64
Section: libdevel
Priority: optional
Depends: libutility (= $package_version), libboost-dev (>= 1.74), libboost-filesystem-dev (>= 1.74)
Recommends: g++ (>= 4:12) | clang (>= 1:14)
END
(cd "$work/libutility/DEBIAN" && ls && cat shlibs triggers) >"$work/found"
same "control files of libutility" <<END
control
md5sums
shlibs
triggers
libUtility $so_version libutility (>= $version)
activate-noawait ldconfig
END

library=$work/libutility/usr/lib/x86_64-linux-gnu/libUtility.so.$version
for file in "$library" "${library%/*}"/Utility{CrashReport,JobSupervisor}; do
    readelf --sections --wide "$file" | grep -E ' \.(debug_|symtab)' >"$work/found" || true
    same "sections of ${file##*/} that are not stripped" </dev/null
done
size=$(stat -c %s "$library")
[ "$size" -lt 1500000 ] || { status=1 && echo "the library has grown to $size bytes"; }
exit "$status"
