#!/usr/bin/env bash
# Installs missing packages for building and testing. Prints nothing if none is missing.
# usage: tools/bootstrap.sh [abi] [benchmarks] [docs] [fuzz] [lint] [macos] [packages] [peers] [qt6]
#   also for these purposes
set -euo pipefail

debian_packages=(g++ cmake ninja-build ccache pkg-config qtbase5-dev libcrypto++-dev libeasyloggingpp-dev
    libgtest-dev libgmock-dev libssl-dev zlib1g-dev openssl acl attr)
brew_formulas=(cmake ninja ccache pkg-config cryptopp googletest openssl@3)
brew_qt=qt@5
for purpose in "$@"; do
    case $purpose in
    benchmarks)
        debian_packages+=(libbenchmark-dev libqca-qt5-2-dev libqca-qt5-2-plugins libspdlog-dev gnuplot-nox python3 valgrind)
        brew_formulas+=(google-benchmark spdlog gnuplot python3)
        ;;
    abi)
        debian_packages+=(abigail-tools xz-utils)
        ;;
    lint)
        debian_packages+=(clang-format clang-tidy cppcheck shellcheck)
        brew_formulas+=(clang-format llvm cppcheck shellcheck)
        ;;
    fuzz)
        debian_packages+=(clang libclang-rt-dev llvm)
        brew_formulas+=(llvm)
        ;;
    docs)
        debian_packages+=(doxygen doxygen-awesome-css)
        brew_formulas+=(doxygen)
        ;;
    macos) # for tools/check-macos.sh
        debian_packages+=(clang lld llvm libc++-dev dpkg-dev python3)
        ;;
    packages)
        debian_packages+=(dpkg-dev debootstrap devscripts lintian gzip file)
        ;;
    peers) # for benchmarks/peers.sh, which needs Debian
        debian_packages+=(borgbackup restic time python3)
        ;;
    qt6)
        debian_packages+=(qt6-base-dev)
        brew_qt=qt
        ;;
    *)
        echo "$0 knows nothing of \"$purpose\"" >&2
        exit 2
        ;;
    esac
done

install_debian() {
    local missing=() package
    for package in "${debian_packages[@]}"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These packages are missing: ${missing[*]}. Install them as root." >&2
            exit 2
        }
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

install_macos() {
    command -v brew >/dev/null || { echo "Homebrew is needed: https://brew.sh" >&2; exit 2; }
    local missing=() formula
    has() { brew list --formula "$1" >/dev/null 2>&1; }
    # Homebrew removes Qt 5 in May 2027: if it cannot be installed, install Qt 6.
    if [ $brew_qt = qt@5 ] && ! has qt@5 && { has qt || ! brew install qt@5; }; then
        brew_qt=qt
    fi
    for formula in "${brew_formulas[@]}" $brew_qt; do
        has "$formula" || missing+=("$formula")
    done
    [ ${#missing[@]} -eq 0 ] || brew install "${missing[@]}"
    fetch_easyloggingpp
}

# Homebrew has no formula for it. CMake searches this directory; only the verified commit is moved there.
fetch_easyloggingpp() {
    local folder head commit=f1f6d98c4ca0b055fd5b61eab522ee23e9efda24
    folder=$(cd "$(dirname "$0")/.." && pwd)/build/easyloggingpp
    [ ! -d "$folder" ] || return 0
    rm -rf "$folder.new"
    git -c advice.detachedHead=false clone --quiet --depth 1 --branch v9.97.1 \
        https://github.com/abumq/easyloggingpp.git "$folder.new"
    head=$(git -C "$folder.new" rev-parse HEAD)
    if [ "$head" != "$commit" ]; then
        rm -rf "$folder.new"
        echo "easylogging++ v9.97.1 should be commit $commit, but is $head: not used" >&2
        exit 2
    fi
    mv "$folder.new" "$folder"
}

if [ -f /etc/debian_version ]; then
    install_debian
elif [ "$(uname)" = Darwin ]; then
    install_macos
else
    cat >&2 <<'EOF'
This script knows Debian and macOS. Install these by hand, then use the CMake presets:
  a C++17 compiler, CMake 3.25, Ninja, pkg-config, Qt 5.15 Core (or Qt 6.4), Crypto++ 8.7,
  easylogging++ 9.97 (header and source), OpenSSL 3 with its program, zlib, GoogleTest with GoogleMock
EOF
    exit 2
fi
