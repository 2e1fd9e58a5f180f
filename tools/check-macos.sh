#!/usr/bin/env bash
# Cross-compiles the macOS build on Debian with clang and lld, for Intel and Apple processors. CMake chooses sources and
# flags as on macOS; warnings are errors. Then inspects the library. Nothing is run. The results stay in build/macos.
# usage: tools/check-macos.sh SDK [QT...]
#   SDK: a directory with the macOS SDK's headers and stubs, in include/, lib/ and Frameworks/
#   QT:  5 or 6 (default: both)
#
# The frameworks and libobjc are linked through the SDK's own stubs. tools/macos/stubs.py generates the stubs of the
# other libraries from sources independent of this project: a call to a function that no library exports does not link.
set -euo pipefail
start=$PWD
cd "$(dirname "$0")/.."

fail() {
    echo "$1" >&2
    exit 2
}

usage="usage: tools/check-macos.sh SDK [QT...]"
[ $# -ge 1 ] || fail "$usage"
sdk=$(cd "$start" && realpath "$1")
qts=("${@:2}")
[ ${#qts[@]} -gt 0 ] || qts=(5 6)
for qt in "${qts[@]}"; do
    [[ $qt == [56] ]] || fail "$usage"
done
for folder in include lib Frameworks; do
    [ -d "$sdk/$folder" ] || fail "$sdk has no $folder/"
done
tools/bootstrap.sh macos qt6
library() { # NAME: prints the path of this machine's library
    local file
    file=$(clang++ -print-file-name="$1")
    [ -f "$file" ] || fail "$1 is missing"
    echo "$file"
}

work=$PWD/build/macos # a fixed path, so that ccache finds earlier results
rm -rf "$work"
mkdir -p "$work"/{bin,include,lib,sysroot/usr/lib,sysroot/System/Library}
ln -s "$sdk/include" "$work/sysroot/usr/include"
ln -s "$sdk"/lib/*.tbd "$work/sysroot/usr/lib"
cp -rs "$sdk/Frameworks" "$work/sysroot/System/Library"
for stub in "$sdk"/Frameworks/{CoreFoundation,Foundation,Security}.framework/*.tbd; do
    # Frameworks refer to each other by their installed paths.
    place=$work/sysroot$(sed -n "s/^install-name: *'\(.*\)'$/\1/p; T; q" "$stub").tbd
    mkdir -p "$(dirname "$place")"
    ln -sf "$stub" "$place"
done
# CMake runs it to get the system version; without a version it does not use @rpath.
printf '#!/bin/sh\necho 12.0\n' >"$work/bin/sw_vers"
chmod +x "$work/bin/sw_vers"
# Links, because their directory also has this machine's C library headers, which must not be found.
ln -s /usr/include/{cryptopp,easylogging++.h,gtest,gmock} "$work/include"

for qt in 5 6; do # for find_package()
    ln -s "$PWD/tools/macos/QtConfig.cmake" "$work/lib/Qt${qt}Config.cmake"
    ln -s "$PWD/tools/macos/QtConfigVersion.cmake" "$work/lib/Qt${qt}ConfigVersion.cmake"
done

# Headers of the C standard, POSIX and BSD, which declare the functions of the C library
c_headers=(
    sys/acl aio arpa/inet assert complex copyfile ctype dirent dlfcn err errno execinfo fcntl fenv float fnmatch ftw
    getopt glob grp iconv ifaddrs inttypes langinfo libgen limits locale mach/mach mach/mach_time malloc/malloc math
    monetary net/if netdb netinet/in nl_types poll pthread pwd regex sched search semaphore setjmp signal spawn stdarg
    stddef stdint stdio stdlib string strings sys/attr sys/file sys/ioctl sys/mman sys/mount sys/param sys/random
    sys/resource sys/select sys/socket sys/stat sys/statvfs sys/sysctl sys/time sys/times sys/types sys/uio sys/un
    sys/utsname sys/wait sys/xattr syslog termios time ulimit unistd unwind utime utmpx wchar wctype wordexp xlocale
)

stub() { # FILE INSTALL_NAME SOURCES...
    tools/macos/stubs.py "$target" "$work/$1" "$2" "${@:3}"
}

syntax_tree() { # HEADERS... without .h
    printf '#include <%s.h>\n' "$@" >"$work/headers.c"
    clang -target "$target" -isysroot "$work/sysroot" -fsyntax-only -Xclang -ast-dump=json "$work/headers.c"
}

# Called twice: before CMake tests the compiler, and with --objects once the objects exist.
standard_stubs() { # [--objects FOLDER]
    stub sysroot/usr/lib/libSystem.tbd /usr/lib/libSystem.B.dylib "$work/libc.json" tools/macos/libsystem.txt
    stub sysroot/usr/lib/libc++.tbd /usr/lib/libc++.1.dylib "$@" "$(library libc++.so.1)" "$(library libc++abi.so.1)"
}

package_stubs() { # [--objects FOLDER]
    stub sysroot/usr/lib/libxar.tbd /usr/lib/libxar.1.dylib --prefix _xar_ "$work/xar.json"
    stub lib/QtCore.tbd "@rpath/QtCore.framework/Versions/$([ "$qt" = 5 ] && echo 5 || echo A)/QtCore" "$@" \
        "$(library "libQt${qt}Core.so")" "tools/macos/qtcore-foundation-$qt.txt"
    stub lib/libcryptopp.tbd @rpath/libcryptopp.dylib "$@" "$(library libcryptopp.so)"
    stub lib/gtest.tbd @rpath/libgtest.dylib "$@" \
        "$(library libgtest.a)" "$(library libgmock.a)" "$(library libgtest_main.a)"
}

qt_path() { # VARIABLE of its pkg-config file
    pkg-config --variable="$1" "Qt${qt}Core"
}

configure() {
    local programs=host_bins choice=()
    if [ "$qt" = 6 ]; then # by default, CMake prefers 5 on macOS
        programs=libexecdir choice=(-DORV_QT_MAJOR=6)
    fi
    PATH=$work/bin:$PATH cmake -S . -B "$build" -G Ninja --toolchain tools/macos/toolchain.cmake "${choice[@]}" \
        -DORV_MAC_PROCESSOR="${target%%-*}" -DORV_MAC_WORK="$work" -DORV_QT_INCLUDE="$(qt_path includedir)" \
        -DORV_QT_PROGRAMS="$(qt_path $programs)" -DORV_QT_CMAKE="$(qt_path libdir)/cmake" \
        -DORV_WERROR=ON -DCMAKE_BUILD_TYPE=Release >"$work/configure.log" || { cat "$work/configure.log"; return 1; }
}

compile() {
    local objects
    # Except the single-header checks, which the Linux build does
    mapfile -t objects < <(ninja -C "$build" -t targets all | sed -n '/verify_interface/d; s/\.o: .*/.o/p')
    ninja -C "$build" -k 0 "${objects[@]}" >"$work/compile.log" || { cat "$work/compile.log"; return 1; }
    echo "${#objects[@]} sources compile for $target, with Qt $qt"
}

# Links the library, the sample client, the snippets and the tests.
link() {
    ninja -C "$build" -k 0 >"$work/link.log" || {
        grep -Ev '^(\[|: &&)' "$work/link.log"
        return 1
    }
}

inspect() {
    local name=liborvCore header library
    [ "$qt" = 5 ] || name+=$qt
    library=$build/orvCore/$name.dylib
    header=$(llvm-objdump --macho --private-headers "$library")
    expect() { # PATTERN WHAT
        grep -Eq "$1" <<<"$header" || { echo "$library: no $2" >&2; return 1; }
    }
    expect "^ +name @rpath/$name\.[0-9]+\.dylib " "install name @rpath/$name.N.dylib"
    expect '^ +minos 12\.0$' "minimum macOS 12.0"
    tests/symbols.sh "$library" tests/symbols.txt
    echo "$name links for $target"
}

for target in x86_64-apple-macos12 arm64-apple-macos12; do
    syntax_tree "${c_headers[@]}" >"$work/libc.json"
    syntax_tree xar/xar >"$work/xar.json"
    for qt in "${qts[@]}"; do
        build=$work/${target%%-*}-qt$qt
        standard_stubs
        package_stubs
        configure
        compile
        standard_stubs --objects "$build"
        package_stubs --objects "$build"
        link
        inspect
    done
done
