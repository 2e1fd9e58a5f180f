# Shared by the scripts in this directory, which source it. Their arguments: PROGRAM [CHECK...]
#
# Each check is a function that runs in a subshell of its own, in an empty directory, and ends at its first failure.
# shellcheck shell=bash
set -euo pipefail

program=$(realpath "$1")
manual=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../../docs/orvseal.md")
work=$(mktemp -d)
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
export ORVSEAL_PASSWORD='correct horse'
export LC_ALL=C # the system's reasons, and decimal points, are compared

fail() {
    echo "    $*"
    exit 1
}

# The program, with the smallest number of iterations for a new vault, because the checks create hundreds.
orvseal() {
    if [ "${1-}" = seal ]; then
        "$program" seal --iterations 50000 "${@:2}"
    else
        "$program" "$@"
    fi
}

# Runs the program and checks its exit status. Its output goes to the files out and err.
expect_status() {
    local expected=$1 status=0
    shift
    orvseal "$@" >out 2>err </dev/null || status=$?
    [ "$status" -eq "$expected" ] || fail "exit status $status, not $expected, of: $* ($(cat err))"
}

expect_line() { # FILE TEXT
    grep -qF -- "$2" "$1" || fail "no \"$2\" in $1, which holds: $(cat "$1")"
}

# A command that fails as a whole prints one line with the reason, and nothing else.
expect_refusal() {
    expect_status 2 "$@"
    [ "$(wc -l <err)" -eq 1 ] || fail "not one line of: $* ($(cat err))"
    [ ! -s out ] || fail "there is output of: $* ($(cat out))"
}

expect_absent() {
    if [ -e "$1" ] || [ -L "$1" ]; then fail "$1 exists"; fi
}

expect_same_trees() {
    diff -r --no-dereference "$1" "$2" || fail "$1 and $2 differ"
}

# Permissions, modification times in nanoseconds, owners, groups and link counts of $1 and everything in it
attributes() {
    local form=(-c '%a %.9Y %u %g %h %n')
    stat "${form[@]}" . >/dev/null 2>&1 || form=(-f '%Lp %Fm %u %g %l %N') # as macOS has it
    (cd "$1" && find . -exec stat "${form[@]}" {} +) | sort
}

small_vault() {
    mkdir -p source/folder
    echo one >source/one
    echo two >source/folder/two
    expect_status 0 seal source vault
}

# Runs the commands of the manual, which do not need orvseal. They leave the keys of $vault in $key and $mac_key, and its
# entries in the file "entries". Ends the check if this openssl does not support them.
manual_commands() { # VAULT [PATH]
    if ! openssl kdf -keylen 16 -kdfopt digest:SHA1 -kdfopt pass:x -kdfopt salt:12345678 -kdfopt iter:1 PBKDF2 \
        >/dev/null 2>&1; then
        echo "    skipped, in part: this openssl derives no keys"
        exit 0
    fi
    vault=$1 path=${2-one}
    set +e # the last command fails without a path
    # shellcheck source=/dev/null
    # shellcheck disable=SC2016 # the "$" is one of sed
    . <(sed -n '/^```sh$/,/^```$/{/^```/!p}' "$manual") 2>manual.err
    set -e
}

sealed_of() { # VAULT PATH: prints its sealed file
    # shellcheck disable=SC2034 # set and used by the commands of the manual
    local key mac_key iv manifest vault path
    manual_commands "$1" "$2" >&2
    echo "$1/data/$iv"
}

large_file() { # FILE MEBIBYTES: a hole, which takes no space
    dd if=/dev/zero of="$1" bs=1048576 count=0 seek="$2" 2>/dev/null
}

change_byte() { # FILE OFFSET
    local byte
    byte=$(od -An -tu1 -j "$2" -N 1 "$1")
    # shellcheck disable=SC2059 # the format is the byte
    printf "\\$(printf %03o $((byte ^ 1)))" | dd of="$1" bs=1 seek="$2" conv=notrunc 2>/dev/null
}

file_count() { # DIRECTORY
    find "$1" -type f | wc -l
}

wait_for() { # CONDITION...: for a minute at most
    local try
    for ((try = 0; try < 600; ++try)); do
        ! "$@" || return 0
        sleep 0.1
    done
    fail "timed out waiting for: $*"
}

# Runs the checks that the script was called with, by default all functions named check_..., and returns 1 if one failed.
run_checks() { # [CHECK...]
    local check status failed=0
    # shellcheck disable=SC2046 # names of functions
    [ $# -gt 0 ] || set -- $(compgen -A function check_)
    for check in "$@"; do
        mkdir "$work/$check"
        # Not as a condition: "set -e" would not hold in it.
        set +e
        (set -e; cd "$work/$check"; "$check")
        status=$?
        set -e
        if [ "$status" -eq 0 ]; then
            echo "passed: $check"
        else
            echo "FAILED: $check"
            failed=1
        fi
    done
    return "$failed"
}
