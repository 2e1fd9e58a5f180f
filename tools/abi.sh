#!/usr/bin/env bash
# Compares the library's binary interface with that of the last release, which is stored in tests/abi.
# usage: tools/abi.sh [--keep]    --keep: stores the current interface, for a release
set -euo pipefail
cd "$(dirname "$0")/.."

tools/bootstrap.sh abi
build=build/abi
cmake --preset release -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORV_BUILD_TESTS=OFF -DORV_BUILD_EXAMPLES=OFF \
    >/dev/null
cmake --build "$build" --target orvCore >/dev/null

kept=tests/abi/orvCore.abi.xz
describe() { # only the types of the exported headers
    abidw --headers-dir orvCore/include --drop-private-types --exported-interfaces-only --drop-undefined-syms \
        --no-corpus-path --no-comp-dir-path --no-show-locs "$build/orvCore/liborvCore.so"
}
if [ "${1:-}" = --keep ]; then
    mkdir -p "$(dirname "$kept")"
    describe | xz -9 >"$kept"
    exit
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
xz -dc "$kept" >"$work/kept.abi"
describe >"$work/now.abi"
# Additions are allowed; removals and changes are not.
status=0
abidiff --no-added-syms "$work/kept.abi" "$work/now.abi" || status=$?
if [ "$status" -ne 0 ]; then
    echo "The binary interface is not that of the last release (abidiff: $status). If that is meant, raise the version" >&2
    echo "and keep the new interface with tools/abi.sh --keep." >&2
    exit 1
fi
