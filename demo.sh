#!/usr/bin/env bash
# Seals a directory with the sample client twice, verifies the vault, restores it elsewhere and compares. Needs only a
# bare Debian 12 or macOS machine, and leaves nothing behind but the build.
# usage: ./demo.sh [DIRECTORY]    default: the project itself
set -euo pipefail

unset CDPATH # "cd" would search other directories, and print the result
directory=$(cd -- "${1:-$(dirname -- "$0")}" && pwd -P)
cd -- "$(dirname -- "$0")"

echo "Installing what is missing"
tools/bootstrap.sh
echo "Building the library and orvseal"
cmake --preset release >/dev/null
cmake --build --preset release --target orvseal # prints its progress
orvseal=$PWD/build/release/examples/orvseal/orvseal

work=$(mktemp -d)
# Restored read-only directories have to be writable before they can be removed.
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
# The client receives an interrupt as well, and stops by itself.
trap 'exit 130' INT TERM

(umask 077 && od -An -tx1 -N 16 /dev/urandom | tr -d ' \n' >"$work/password")

step() { # COMMAND DIRECTORIES...: prints the summary
    local status=0
    "$orvseal" "$1" --password-file "$work/password" --log-dir "$work/log" "${@:2}" >"$work/out" || status=$?
    if [ "$status" -ne 0 ]; then
        echo "The demo failed: \"orvseal $1\" ended with status $status; the lines above say why." >&2
        exit 1
    fi
    tail -n 1 "$work/out"
}

echo "Directory: $directory"
step seal "$directory" "$work/vault"
echo "Again, which seals only what has changed:"
step seal "$directory" "$work/vault"
step verify "$work/vault"
step open "$work/vault" "$work/restored"
if ! diff -r --no-dereference "$directory" "$work/restored"; then
    echo "The demo failed: the restored directory differs from the sealed one." >&2
    exit 1
fi
echo "The restored directory is the same as the sealed one."
echo
echo "The last lines of the log:"
tail -n 5 "$work/log/log_orvseal.log"
