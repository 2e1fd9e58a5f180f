#!/usr/bin/env bash
# usage: symbols.sh LIBRARY LIST [--keep]
# What the shared library exports is what the committed list says: clients rely on it, and a client with its own copy of
# a library that is inside must not meet ours. --keep: writes the list anew, after a change that is meant.
set -euo pipefail
library=$1 list=$2
case $(uname) in
Darwin)
    # Names are made in another way there; what must not leave is known.
    if nm -gU "$library" | c++filt | grep -E 'CryptoPP|[^A-Za-z]el::|easylogging|LogBackend|LogHandler|GlobalConfigImpl'; then
        echo "these symbols must not be exported"
        exit 1
    fi
    exit 0
    ;;
esac
# Constructors and destructors come in variants with one name.
exported=$(nm -DC --defined-only "$library" | cut -d ' ' -f 3- | LC_ALL=C sort -u)
if [ "${3:-}" = --keep ]; then
    printf '%s\n' "$exported" >"$list"
elif ! diff "$list" - <<<"$exported"; then
    echo "what the library exports (>) is not what the list has (<); if that is meant: tests/symbols.sh LIBRARY LIST --keep"
    exit 1
fi
