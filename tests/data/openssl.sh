#!/usr/bin/env bash
# usage: openssl.sh >openssl.txt
# Asks the openssl program for what the encryptors are held against.
set -euo pipefail

cat <<'END'
# What the openssl program makes of a plain text, made by openssl.sh: a second opinion, which owes nothing to the cipher
# library. The plain text is the numbers from 1 on, a line each, cut to 0 to 70, 4095, 4096 and 1000003 bytes; the
# SHA-256 is that of all 74 results, one behind the other. Keys and IVs in hex.

END
plain=$(mktemp)
trap 'rm "$plain"' EXIT
seq 1 200000 >"$plain"
bytes() { # FIRST COUNT
    printf '%02x' $(seq "$1" $(($1 + $2 - 1)))
}
row() {
    printf '%-6s | %-64s | %-32s | %s\n' "$@"
}
row cipher key iv sha256
sealed() { # the options that name the cipher, the key and the IV
    for length in $(seq 0 70) 4095 4096 1000003; do
        head -c "$length" "$plain" | openssl enc -provider legacy -provider default -e "$@"
    done | sha256sum | cut -d ' ' -f 1
}
number=0
# OpenSSL keeps single DES among its legacy ciphers, and names triple DES in ECB mode without the mode.
while read -r cbc ecb key_size iv_size; do
    key=$(bytes 1 "$key_size")
    iv=$(bytes 101 "$iv_size")
    row "$number cbc" "$key" "$iv" "$(sealed "-$cbc" -K "$key" -iv "$iv")"
    row "$number ecb" "$key" "" "$(sealed "-$ecb" -K "$key")"
    number=$((number + 1))
done <<'END'
des-cbc      des-ecb     8  8
des-ede-cbc  des-ede     16 8
des-ede3-cbc des-ede3    24 8
aes-128-cbc  aes-128-ecb 16 16
aes-192-cbc  aes-192-ecb 24 16
aes-256-cbc  aes-256-ecb 32 16
END
