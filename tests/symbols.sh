#!/usr/bin/env bash
# usage: symbols.sh LIBRARY LIST [--keep]
# What the shared library exports is what the committed list says: clients rely on it, and a client with its own copy of
# a library that is inside must not meet ours. --keep: writes the list anew, after a change that is meant.
set -euo pipefail
library=$1 list=$2

# A Mac's names begin with an underscore, its C++ library is in an inline namespace, and demanglers differ in blanks.
mac_exports() {
    "$(command -v llvm-nm || echo nm)" -gUj "$library" | sed 's/^_//' | c++filt -n
}
alike() {
    sed -e 's/std::__1::/std::/g' -e ':again' -e 's/> >/>>/g' -e 't again' | LC_ALL=C sort -u
}
# Qt 6 has another name for two of the types.
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
# Constructors and destructors come in variants with one name.
exported=$(nm -DC --defined-only "$library" | cut -d ' ' -f 3- | LC_ALL=C sort -u)
if [ "${3:-}" = --keep ]; then
    printf '%s\n' "$exported" >"$list"
elif ! diff <(echo "$listed") - <<<"$exported"; then
    echo "what the library exports (>) is not what the list has (<); if that is meant: tests/symbols.sh LIBRARY LIST --keep"
    exit 1
fi
