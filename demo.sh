#!/usr/bin/env bash
# Seals a folder with the sample client twice, verifies the vault, opens it elsewhere and compares. Starts from a bare
# Debian 12 or macOS machine, and leaves nothing behind but the build.
# usage: ./demo.sh [FOLDER]    default: the project's own folder
set -euo pipefail

unset CDPATH # "cd" would look elsewhere, and say so on standard output
folder=$(cd -- "${1:-$(dirname -- "$0")}" && pwd -P)
cd -- "$(dirname -- "$0")"

echo "Installing what is missing"
tools/bootstrap.sh
echo "Building the library and orvseal"
cmake --preset release >/dev/null
cmake --build --preset release --target orvseal # shows how far it is
orvseal=$PWD/build/release/examples/orvseal/orvseal

work=$(mktemp -d)
# Read-only folders that were opened are no obstacle to removing them.
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
# An interrupt reaches the client as well, which stops by itself.
trap 'exit 130' INT TERM

(umask 077 && od -An -tx1 -N 16 /dev/urandom | tr -d ' \n' >"$work/password")

step() { # COMMAND FOLDERS...: shows the summary
    local status=0
    "$orvseal" "$1" --password-file "$work/password" --log-dir "$work/log" "${@:2}" >"$work/out" || status=$?
    if [ "$status" -ne 0 ]; then
        echo "The demo failed: \"orvseal $1\" ended with status $status; the lines above say why." >&2
        exit 1
    fi
    tail -n 1 "$work/out"
}

echo "Folder:   $folder"
step seal "$folder" "$work/vault"
echo "the same again, which seals only what has changed:"
step seal "$folder" "$work/vault"
step verify "$work/vault"
step open "$work/vault" "$work/opened"
if ! diff -r --no-dereference "$folder" "$work/opened"; then
    echo "The demo failed: what was opened is not what was sealed." >&2
    exit 1
fi
echo "no difference between the folder and what was opened"
echo
echo "The last lines of the log:"
tail -n 5 "$work/log/log_orvseal.log"
