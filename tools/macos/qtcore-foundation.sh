#!/usr/bin/env bash
# usage: tools/macos/qtcore-foundation.sh SDK
# Makes tools/macos/qtcore-foundation.txt anew: what QtCore exports on macOS beyond what it exports on Linux, which is
# what Qt's own qcore_foundation.mm exports when it is compiled for a Mac. Debian's Qt source package has that file. It is
# downloaded by package sources that are this machine's own, with source packages, in a temporary directory.
set -euo pipefail
sdk=$(realpath "${1:?usage: tools/macos/qtcore-foundation.sh SDK}")
cd "$(dirname "$0")/../.."
tools/bootstrap.sh macos

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work" # apt reads it as a user of its own
mkdir -p "$work"/{sources.list.d,lists/partial,source,private}
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
    [ -f "$list" ] || continue
    sed 's/^deb /deb-src /; s/^Types:.*/Types: deb-src/' "$list" >"$work/sources.list.d/$(basename "$list")"
done
source_apt() {
    apt-get -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$work/sources.list.d" \
        -o Dir::State::lists="$work/lists" "$@"
}
source_apt update -qq
(cd "$work" && source_apt source -qq --download-only qtbase-opensource-src && apt-get download -qq qtbase5-private-dev)
tar -xJf "$work"/*.orig.tar.xz -C "$work/source" --strip-components=1 --wildcards '*/qcore_foundation.mm'
dpkg -x "$work"/qtbase5-private-dev_*.deb "$work/private"
private=$(echo "$work"/private/usr/include/*/qt5/QtCore/*)
# A Mac has no ICU.
grep -rl 'QT_FEATURE_icu ' "$private" | xargs sed -i 's/QT_FEATURE_icu .*/QT_FEATURE_icu -1/'

include=$(pkg-config --variable=includedir Qt5Core)
libcxx=$(dirname "$(dirname "$(readlink -f "$(command -v clang++)")")")/include/c++/v1
names() { # TARGET
    # The last macro is one that the SDK's headers expect of a newer compiler.
    clang++ -target "$1" -c -std=c++17 -fPIC -fvisibility=hidden -w -nostdinc++ -nostdlibinc \
        -isystem "$libcxx" -isystem "$sdk/include" -iframework "$sdk/Frameworks" \
        -isystem "$private" -isystem "$private/QtCore" -isystem "$include" -isystem "$include/QtCore" \
        -DQT_BUILD_CORE_LIB -DQT_SHARED -D__ENVIRONMENT_OS_VERSION_MIN_REQUIRED__=120000 \
        "$work/source/src/corelib/kernel/qcore_foundation.mm" -o "$work/qcore_foundation.o"
    llvm-nm -gm --defined-only "$work/qcore_foundation.o" | grep -v 'private\|weak' | awk '{print $NF}' | LC_ALL=C sort
}
names x86_64-apple-macos12 >"$work/x86_64.txt"
names arm64-apple-macos12 >"$work/arm64.txt"
cmp "$work/x86_64.txt" "$work/arm64.txt"
{
    echo "# Made by tools/macos/qtcore-foundation.sh: what QtCore exports on macOS beyond what it exports on Linux."
    cat "$work/x86_64.txt"
} >tools/macos/qtcore-foundation.txt
