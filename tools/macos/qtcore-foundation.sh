#!/usr/bin/env bash
# usage: tools/macos/qtcore-foundation.sh SDK
# Writes tools/macos/qtcore-foundation-5.txt and -6.txt: what QtCore exports on macOS beyond what it exports on Linux,
# which is what Qt's own qcore_foundation.mm exports when it is compiled for a Mac. Debian's Qt source packages have that
# file. They are downloaded to a temporary directory, from this machine's own package sources.
set -euo pipefail
sdk=$(realpath "${1:?usage: tools/macos/qtcore-foundation.sh SDK}")
cd "$(dirname "$0")/../.."
tools/bootstrap.sh macos qt6

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work" # apt reads it as a user of its own
mkdir -p "$work"/{sources.list.d,lists/partial}
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
    [ -f "$list" ] || continue
    sed 's/^deb /deb-src /; s/^Types:.*/Types: deb-src/' "$list" >"$work/sources.list.d/$(basename "$list")"
done
source_apt() {
    apt-get -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$work/sources.list.d" \
        -o Dir::State::lists="$work/lists" "$@"
}
source_apt update -qq
libcxx=$(dirname "$(dirname "$(readlink -f "$(command -v clang++)")")")/include/c++/v1

names() { # FOLDER QT_INCLUDE TARGET
    local private
    private=$(echo "$1"/private/usr/include/*/qt*/QtCore/*)
    # The last macro is one that the SDK's headers expect of a newer compiler.
    clang++ -target "$3" -c -std=c++17 -fPIC -fvisibility=hidden -w -nostdinc++ -nostdlibinc \
        -isystem "$libcxx" -isystem "$sdk/include" -iframework "$sdk/Frameworks" \
        -isystem "$private" -isystem "$private/QtCore" -isystem "$2" -isystem "$2/QtCore" \
        -DQT_BUILD_CORE_LIB -DQT_SHARED -D__ENVIRONMENT_OS_VERSION_MIN_REQUIRED__=120000 \
        "$1/source/src/corelib/kernel/qcore_foundation.mm" -o "$1/qcore_foundation.o"
    llvm-nm -gm --defined-only "$1/qcore_foundation.o" | grep -v 'private\|weak' | awk '{print $NF}' | LC_ALL=C sort
}

list() { # QT_MAJOR SOURCE_PACKAGE PACKAGE_OF_PRIVATE_HEADERS
    local include folder=$work/$1
    mkdir -p "$folder"/{source,private}
    (cd "$folder" && source_apt source -qq --download-only "$2" && apt-get download -qq "$3")
    tar -xJf "$folder"/*.orig.tar.xz -C "$folder/source" --strip-components=1 --wildcards '*/qcore_foundation.mm'
    dpkg -x "$folder/$3"_*.deb "$folder/private"
    # A Mac has no ICU.
    grep -rl 'QT_FEATURE_icu ' "$folder/private" | xargs -r sed -i 's/QT_FEATURE_icu .*/QT_FEATURE_icu -1/'
    include=$(pkg-config --variable=includedir "Qt$1Core")
    names "$folder" "$include" x86_64-apple-macos12 >"$folder/x86_64.txt"
    names "$folder" "$include" arm64-apple-macos12 >"$folder/arm64.txt"
    cmp "$folder/x86_64.txt" "$folder/arm64.txt"
    {
        echo "# Written by tools/macos/qtcore-foundation.sh: what QtCore $1 exports on macOS beyond what it exports on Linux."
        cat "$folder/x86_64.txt"
    } >"tools/macos/qtcore-foundation-$1.txt"
}
list 5 qtbase-opensource-src qtbase5-private-dev
list 6 qt6-base qt6-base-private-dev
