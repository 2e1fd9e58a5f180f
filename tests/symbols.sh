#!/usr/bin/env bash
# usage: symbols.sh LIBRARY
# No symbol of the cipher library, of the logging back end or of another library inside may leave the shared library: a
# client with its own copy of one must not meet ours.
set -euo pipefail
case $(uname) in
Darwin) list=(nm -gU) ;;
*) list=(nm -D --defined-only) ;;
esac
exported=$("${list[@]}" "$1" | c++filt)
grep -q 'Orv::LogManager::init()' <<<"$exported" || { echo "the library's own symbols are missing"; exit 1; }
if grep -E 'CryptoPP|\<el::|easylogging|LogBackend|LogHandler|GlobalConfigImpl|x509|X509|[^a-z](inflate|uncompress)|xar_' <<<"$exported"; then
    echo "these symbols must not be exported"
    exit 1
fi
