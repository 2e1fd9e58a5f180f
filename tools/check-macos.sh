#!/usr/bin/env bash
# usage: tools/check-macos.sh SDK
# Compiles every source of the library and of the sample client as for a Mac, on a machine that is none, and throws the
# result away: errors and warnings of ours show before somebody has to find them there. SDK is a folder with the macOS
# SDK's headers, in include/ and Frameworks/. Needs clang with its libc++ headers (Debian: clang, libc++-dev) and this
# machine's Qt, Crypto++ and easylogging++, whose headers know macOS too.
set -euo pipefail
start=$PWD
cd "$(dirname "$0")/.."

fail() {
    echo "$1" >&2
    exit 2
}

[ $# -eq 1 ] || fail "usage: tools/check-macos.sh SDK"
sdk=$(cd "$start" && realpath "$1")
[ -d "$sdk/include" ] || fail "$sdk has no include/"
[ -d "$sdk/Frameworks" ] || fail "$sdk has no Frameworks/"
command -v clang++ >/dev/null || fail "clang++ is missing"
libcxx=$(dirname "$(dirname "$(readlink -f "$(command -v clang++)")")")/include/c++/v1
[ -d "$libcxx" ] || fail "the headers of libc++ are missing: there is no $libcxx"
qt=$(pkg-config --variable=includedir Qt5Core) || fail "Qt 5 Core is missing"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Both lie among the headers of this machine's C library, which must stay out.
mkdir "$work/include"
ln -s /usr/include/cryptopp /usr/include/easylogging++.h "$work/include"
moc=$(pkg-config --variable=host_bins Qt5Core)/moc
grep -rl Q_OBJECT orvCore/include orvCore/src --include='*.h' | while read -r header; do
    "$moc" "$header" -o "$work/moc_$(basename "$header" .h).cpp"
done

export sdk libcxx qt work
compile() { # TARGET SOURCE
    local warnings=(-Wall -Wextra -Wpedantic -Werror)
    [[ $2 != *easylogging* ]] || warnings=(-w)
    clang++ -target "$1" -fsyntax-only -x c++ -std=c++17 -fPIC -fvisibility=hidden "${warnings[@]}" \
        -nostdinc++ -nostdlibinc -isystem "$libcxx" -isystem "$sdk/include" -iframework "$sdk/Frameworks" \
        -isystem "$qt" -isystem "$qt/QtCore" -isystem "$work/include" \
        -I orvCore/include -I orvCore/src \
        -DORV_BUILDING_LIBRARY -DQT_NO_KEYWORDS -DQT_CORE_LIB -DELPP_THREAD_SAFE -DELPP_NO_DEFAULT_LOG_FILE \
        -DELPP_FEATURE_CRASH_LOG -DELPP_DISABLE_DEFAULT_CRASH_HANDLING \
        "$2" || { echo "$2 does not compile for $1" >&2; return 1; }
}
export -f compile

mapfile -t sources < <(find orvCore/src examples -name '*.cpp' ! -name '*_linux.cpp' | sort)
sources+=("$work"/moc_*.cpp /usr/include/easylogging++.cc)
for target in x86_64-apple-macos12 arm64-apple-macos12; do
    # shellcheck disable=SC2016 # the inner shell expands it
    printf '%s\n' "${sources[@]}" |
        xargs -P "$(getconf _NPROCESSORS_ONLN)" -I{} bash -c 'compile "$0" "$1"' "$target" {} || exit 1
    echo "${#sources[@]} sources compile for $target"
done
