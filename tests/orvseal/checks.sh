# What the scripts beside it share. To be sourced, with the program as the first argument.
#
# Each check is a function that runs in a subshell of its own, in an empty folder, and ends at its first failure.
# shellcheck shell=bash
set -euo pipefail

program=$(realpath "$1")
work=$(mktemp -d)
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
export ORVSEAL_PASSWORD='correct horse'
export LC_ALL=C # the system's reasons, and decimal points, are compared

fail() {
    echo "    $*"
    exit 1
}

# Runs the program and compares its exit status. What it prints goes to the files out and err.
expect_status() {
    local expected=$1 status=0
    shift
    "$program" "$@" >out 2>err </dev/null || status=$?
    [ "$status" -eq "$expected" ] || fail "exit status $status, not $expected, of: $* ($(cat err))"
}

expect_line() { # FILE TEXT
    grep -qF -- "$2" "$1" || fail "no \"$2\" in $1, which holds: $(cat "$1")"
}

# A command that could do nothing says why in one line, and nothing else.
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

# Permissions and modification times, in seconds, of all that is below $1
attributes() {
    local form=(-c '%a %Y %n')
    stat "${form[@]}" . >/dev/null 2>&1 || form=(-f '%Lp %m %N') # as macOS has it
    (cd "$1" && find . -mindepth 1 -exec stat "${form[@]}" {} +) | sort
}

small_vault() {
    mkdir -p source/folder
    echo one >source/one
    echo two >source/folder/two
    expect_status 0 seal source vault
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

wait_for() { # a condition that another process brings about, for a minute at most
    local try
    for ((try = 0; try < 600; ++try)); do
        ! "$@" || return 0
        sleep 0.1
    done
    fail "waited in vain for: $*"
}

# Runs all functions named check_..., and returns 1 if one failed.
run_checks() {
    local check status failed=0
    for check in $(compgen -A function check_); do
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
