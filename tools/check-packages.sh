#!/usr/bin/env bash
# Builds the Debian packages with Qt 5 and with Qt 6 and checks that the library is hardened and that lintian reports
# nothing. Then tests them in a bare Debian 12 in a temporary directory: they install, all linked libraries are found,
# an outside project builds against them and runs, and removing them leaves no files. Needs root, a Debian mirror and
# some minutes.
# usage: tools/check-packages.sh [MIRROR]    default: debootstrap's mirror
set -euo pipefail
cd "$(dirname "$0")/.."

[ "$(id -u)" -eq 0 ] || { echo "debootstrap needs root" >&2; exit 2; }
tools/bootstrap.sh packages qt6

work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT
root=$work/root

# Functions called by step() run without "set -e": they have to chain their commands with && or return.
step() { # TEXT COMMAND...
    echo "$1"
    "${@:2}" >"$work/log" 2>&1 || { cat "$work/log" >&2; echo "failed: $1" >&2; exit 1; }
}
inside() { # COMMAND...: runs it in the bare system; its mounts disappear with it
    unshare --mount --pid --fork --mount-proc="$root/proc" chroot "$root" \
        /usr/bin/env -i DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"
}
needs() { # PACKAGE: prints its dependencies except our own packages
    dpkg-deb -f "$1" Depends | sed 's/liborvcore[^,]*, //'
}
paths() {
    (cd "$root" && find . \( -path ./proc -o -path ./tmp \) -prune -o -print | LC_ALL=C sort)
}
install() { # PACKAGE...: their dependencies must be installed already
    paths >"$work/before" && cp "$@" "$root/tmp" && inside dpkg --install "${@/#*\//\/tmp\/}"
}
remove() { # NAME...
    inside dpkg --purge "$@" && paths >"$work/after" && diff "$work/before" "$work/after"
}
libraries_found() {
    inside sh -c 'ldd /usr/lib/*/liborvCore*.so.*' >"$work/libraries" && ! grep 'not found' "$work/libraries"
}

# hardening-check looks for traces in the library, two of which may be missing for good reasons. A trace is not required
# only if its reason is verified here; the reason is printed.
hardened() { # PRESET
    local library build=build/$1 options=()
    library=$(cd "$build" && echo orvCore/liborvCore*.so.*.*)
    no_call_to_fortify "$build" "$library" && options+=(--nofortify)
    only_the_system_is_unprotected "$build" "$library" && options+=(--nocfprotection)
    hardening-check "${options[@]}" "$build/$library"
}
no_call_to_fortify() { # BUILD LIBRARY: the flags have an effect, but no call of the library needs it
    local flags
    if nm -D --undefined-only "$1/$2" | grep -q '_chk@'; then return 1; fi
    while read -r flags; do
        printf '#include <cstring>\nchar b[8]; int main(int, char** a) { strcpy(b, *a); }' >"$work/probe.cpp"
        sh -c "c++ $flags -c '$work/probe.cpp' -o '$work/probe.o'"
        nm "$work/probe.o" | grep -q '__strcpy_chk$' || { echo "no fortification by $flags"; return 1; }
    done < <(sed -n 's/^  FLAGS = //p' "$1/build.ninja" | sort -u)
    echo "No _FORTIFY_SOURCE traces: the compiler knows of no buffer that a call might not fit into"
}
only_the_system_is_unprotected() { # BUILD LIBRARY: the linker reports files without control-flow protection
    local link unprotected
    link=$(ninja -C "$1" -t commands "$2" | tail -n 1)
    unprotected=$(cd "$1" && sh -c "${link/ -o / -Wl,-z,cet-report=warning -o }" 2>&1 |
        sed -n 's/.*ld: \(.*\): warning: missing IBT.*/\1/p')
    [ -n "$unprotected" ] || return 1
    if grep -v '^/usr/lib/' <<<"$unprotected"; then return 1; fi
    echo "No control-flow note: of what is linked, the system's own files have none:"
    echo "$unprotected"
}
without_fault() { # PACKAGE... The suppressed tag is only for uploads to Debian.
    lintian --allow-root --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs "$@"
}

step "a bare system" unshare --mount debootstrap --variant=minbase bookworm "$root" "${@:1:1}"

try() { # PRESET NAME: the name of the CMake package and of the pkg-config file
    local preset=$1 name=$2 library development
    step "$name: build" cmake --preset "$preset"
    step "$name: build" cmake --build --preset "$preset"
    rm -f "build/$preset"/*.deb
    step "$name: packages" cpack --preset "$preset"
    development=$(echo "build/$preset"/*-dev_*.deb)
    library=$(find "build/$preset" -maxdepth 1 -name '*.deb' ! -name '*-dev_*')
    step "$name: hardened" hardened "$preset"
    sed 's/^/    /' "$work/log"
    step "$name: lintian" without_fault "$library" "$development"

    step "$name: what the library needs" inside apt-get satisfy -y --no-install-recommends "$(needs "$library")"
    step "$name: the library alone: install" install "$library"
    step "$name: the library alone: its libraries" libraries_found
    step "$name: the library alone: remove" remove "$(dpkg-deb -f "$library" Package)"

    step "$name: what building needs" inside apt-get satisfy -y --no-install-recommends \
        "$(needs "$development"), g++, cmake, make, pkg-config"
    step "$name: both: install" install "$library" "$development"
    rm -rf "$root"/tmp/{package,build,outside}
    cp -r tests/package "$root/tmp/package"
    step "$name: an outside project: CMake" inside sh -c \
        "cmake -S /tmp/package -B /tmp/build -DORV_NAME=$name && cmake --build /tmp/build"
    step "$name: an outside project: run" inside /tmp/build/outside
    step "$name: an outside project: pkg-config" inside sh -c \
        "g++ -std=c++17 -fPIC /tmp/package/main.cpp \$(pkg-config --cflags --libs $name) -o /tmp/outside"
    step "$name: an outside project: run" inside /tmp/outside
    step "$name: both: remove" remove "$(dpkg-deb -f "$development" Package)" "$(dpkg-deb -f "$library" Package)"
    echo "good: $library $development"
}
try packages orvCore
try packages-qt6 orvCore6
