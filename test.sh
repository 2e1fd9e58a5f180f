#!/usr/bin/env bash
# Builds the library and runs its tests. Starts from a bare Debian 12 or macOS machine.
# usage: ./test.sh [PRESET]    release (the default), debug, asan, tsan, release-qt6 or asan-qt6
set -euo pipefail
cd "$(dirname "$0")"

preset=${1:-release}
echo "Installing what is missing"
case $preset in
*-qt6) tools/bootstrap.sh qt6 ;;
*) tools/bootstrap.sh ;;
esac
echo "Building ($preset)"
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
echo "Testing"
ctest --preset "$preset"
