#!/usr/bin/env bash
# Generates the certificates of certificates.txt in the current directory, as NAME (PEM) and NAME.der.
set -euo pipefail
data=$(cd "$(dirname "$0")" && pwd)
touch index none

make_certificate() { # NAME ISSUER SECTION FROM TO
    local request=(req -config "$data/ca.cnf" -subj "/CN=$1" -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes
        -keyout "$1.key")
    if [ "$2" = itself ]; then
        openssl "${request[@]}" -out "$1" -x509 -days 1000 -extensions "$3"
        return
    fi
    openssl "${request[@]}" -out "$1.csr"
    openssl ca -batch -config "$data/ca.cnf" -extensions "$3" -startdate "$4" -enddate "$5" -notext \
        -cert "$2" -keyfile "$2.key" -in "$1.csr" -out "$1"
}

names=()
while IFS='| ' read -r name issuer section from to; do
    case $name in '#'* | name | '') continue ;; esac
    make_certificate "$name" "$issuer" "$section" "$from" "$to" </dev/null
    names+=("$name")
done <"$data/certificates.txt"

# Larger than the limit of a chain
{ printf '[huge]\nnsComment=' && head -c 300000 /dev/zero | tr '\0' x && echo; } >huge.cnf
openssl x509 -req -in direct.csr -CA root -CAkey root.key -days 1000 -extfile huge.cnf -extensions huge -out huge

for name in "${names[@]}" huge; do
    openssl x509 -in "$name" -outform DER -out "$name.der"
done
