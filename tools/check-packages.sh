#!/usr/bin/env bash
# Makes the Debian packages and tries them where nothing else is, in a bare Debian 12 below a temporary folder: they
# install, the library finds all it is linked to, an outside project builds against them and runs, and they go without
# a trace. Needs root and some minutes, and a mirror of Debian.
# usage: tools/check-packages.sh [MIRROR]    debootstrap's own mirror, if none is given
set -euo pipefail
cd "$(dirname "$0")/.."

[ "$(id -u)" -eq 0 ] || { echo "debootstrap needs root" >&2; exit 2; }
tools/bootstrap.sh packages
cmake --preset packages >/dev/null
cmake --build --preset packages >/dev/null
rm -f build/packages/*.deb
cpack --preset packages >/dev/null
library=$(echo build/packages/liborvcore[0-9]*.deb)
development=$(echo build/packages/liborvcore-dev_*.deb)

work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT
root=$work/root

# A function that is called here ends at its first failure only where it says so.
step() { # TEXT COMMAND...
    echo "$1"
    "${@:2}" >"$work/log" 2>&1 || { cat "$work/log" >&2; echo "failed: $1" >&2; exit 1; }
}
inside() { # COMMAND... what it mounts goes with it
    unshare --mount --pid --fork --mount-proc="$root/proc" chroot "$root" \
        /usr/bin/env -i DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"
}
needs() { # what a package depends on, but for ours
    dpkg-deb -f "$1" Depends | sed 's/liborvcore[^,]*, //'
}
paths() {
    (cd "$root" && find . \( -path ./proc -o -path ./tmp \) -prune -o -print | LC_ALL=C sort)
}
install() { # PACKAGE... everything they need is there
    paths >"$work/before" && cp "$@" "$root/tmp" && inside dpkg --install "${@/#build\/packages//tmp}"
}
remove() { # NAME...
    inside dpkg --purge "$@" && paths >"$work/after" && diff "$work/before" "$work/after"
}
libraries_found() {
    inside sh -c 'ldd /usr/lib/*/liborvCore.so.*' >"$work/libraries" && ! grep 'not found' "$work/libraries"
}

step "a bare system" unshare --mount debootstrap --variant=minbase bookworm "$root" "${@:1:1}"
step "what the library needs" inside apt-get satisfy -y --no-install-recommends "$(needs "$library")"
step "the library alone: install" install "$library"
step "the library alone: its libraries" libraries_found
step "the library alone: remove" remove "$(dpkg-deb -f "$library" Package)"

step "what building needs" inside apt-get satisfy -y --no-install-recommends \
    "$(needs "$development"), g++, cmake, make, pkg-config"
step "both: install" install "$library" "$development"
cp -r tests/package "$root/tmp/package"
step "an outside project: CMake" inside sh -c 'cmake -S /tmp/package -B /tmp/build && cmake --build /tmp/build'
step "an outside project: run" inside /tmp/build/outside
# shellcheck disable=SC2016 # the inner shell expands it
step "an outside project: pkg-config" inside sh -c \
    'g++ -std=c++17 -fPIC /tmp/package/main.cpp $(pkg-config --cflags --libs orvCore) -o /tmp/outside'
step "an outside project: run" inside /tmp/outside
step "both: remove" remove "$(dpkg-deb -f "$development" Package)" "$(dpkg-deb -f "$library" Package)"
echo "good: $library $development"
