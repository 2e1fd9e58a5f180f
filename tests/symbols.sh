#!/usr/bin/env bash
# usage: symbols.sh LIBRARY LIST [--keep]
# Compares the exported symbols of the shared library with LIST: clients rely on them, and symbols of private dependencies
# must not conflict with a client's own copies. --keep: rewrites LIST after an intended change.
set -euo pipefail
library=$1 list=$2

# On macOS, symbols begin with an underscore, libc++ has an inline namespace, and the demangled spaces differ.
mac_exports() {
    "$(command -v llvm-nm || echo nm)" -gUj "$library" | sed 's/^_//' | c++filt -n
}
alike() {
    sed -e 's/std::__1::/std::/g' -e ':again' -e 's/> >/>>/g' -e 't again' | LC_ALL=C sort -u
}
# Qt 6 renamed two of the types.
if [[ $(basename "$library") == *orvCore6.* ]]; then
    listed=$(sed -e 's/QVector</QList</g' -e 's/QPair</std::pair</g' "$list" | LC_ALL=C sort -u)
else
    listed=$(<"$list")
fi
if [[ $library == *.dylib ]]; then
    if ! diff <(alike <<<"$listed") <(mac_exports | alike); then
        echo "what $library exports (>) is not what $list has (<)"
        exit 1
    fi
    exit 0
fi
# Variants of constructors and destructors have the same demangled name.
exported=$(nm -DC --defined-only "$library" | cut -d ' ' -f 3- | LC_ALL=C sort -u)
if [ "${3:-}" = --keep ]; then
    printf '%s\n' "$exported" >"$list"
elif ! diff <(echo "$listed") - <<<"$exported"; then
    echo "what the library exports (>) is not what the list has (<); if that is meant: tests/symbols.sh LIBRARY LIST --keep"
    exit 1
fi
