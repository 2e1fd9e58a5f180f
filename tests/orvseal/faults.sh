#!/usr/bin/env bash
# Tests the sample client with full disks, with files that fail or change, and with kills at any moment.
# usage: faults.sh PROGRAM [CHECK...]
#
# The moments of the kills are random: ORVSEAL_TEST_SEED repeats those of an earlier run. Whatever the moment, the
# vault has to be in one of its valid states, so a slow machine changes which moments are tested, not the result.
# shellcheck disable=SC2154,SC2317 # the program is set in the file below; the checks are found by their names

# As root, in a mount namespace of its own: mounts are invisible outside, and end with the script.
if [ "$(id -u)" -eq 0 ] && [ -z "${ORVSEAL_TEST_MOUNTS-}" ] && unshare -m true 2>/dev/null; then
    ORVSEAL_TEST_MOUNTS=private exec unshare -m bash "$0" "$@"
fi

# shellcheck source=/dev/null
. "$(dirname "$0")/checks.sh"

seed=${ORVSEAL_TEST_SEED:-$$}
rounds=25

expect_one_line() { # TEXT: all of standard error
    expect_line err "$1"
    [ "$(wc -l <err)" -eq 1 ] || fail "not one line: $(cat err)"
}

random_file() { # FILE BYTES
    head -c "$2" /dev/urandom >"$1"
}

# --- No space

check_size_limit_while_sealing() {
    mkdir source empty
    random_file source/large 300000
    (ulimit -f 100 && expect_status 2 seal source vault)
    expect_one_line 'cannot be written: File too large'
    expect_absent vault
    (ulimit -f 100 && expect_status 2 seal source empty)
    [ -z "$(ls -A empty)" ] || fail "something is left: $(ls -A empty)"
}

check_size_limit_at_the_manifest() {
    mkdir source
    local number
    for number in 1 2 3 4 5 6 7 8; do echo "$number" >"source/$number"; done
    (ulimit -f 1 && expect_status 2 seal source vault)
    expect_one_line 'manifest.new cannot be written'
    expect_absent vault
    expect_status 0 seal source vault
    cp -a vault before
    echo changed >>source/1
    rm source/2
    (ulimit -f 1 && expect_status 2 seal source vault)
    expect_same_trees before vault
}

check_size_limit_while_opening() {
    mkdir source
    random_file source/a 1000
    random_file source/b 300000
    expect_status 0 seal source vault
    (ulimit -f 100 && expect_status 2 open --jobs 1 vault target)
    expect_one_line 'cannot be written: File too large'
    [ "$(ls -A target)" = a ] || fail "in the target are: $(ls -A target)"
    cmp source/a target/a || fail "the complete file differs"
}

check_full_disk() {
    mkdir source disk
    if [ -z "${ORVSEAL_TEST_MOUNTS-}" ] || ! mount -t tmpfs -o size=1024k tmpfs disk; then
        echo "    skipped: only root may mount a small disk, where the system has private mounts"
        return 0
    fi
    trap 'umount disk' EXIT
    random_file source/a 1000
    random_file source/b 3000000
    expect_status 0 seal source vault
    expect_status 2 seal source disk/vault
    expect_one_line 'cannot be written: No space left on device'
    [ -z "$(ls -A disk)" ] || fail "something is left: $(ls -A disk)"

    expect_status 2 open --jobs 1 vault disk/target
    expect_one_line 'cannot be written: No space left on device'
    [ "$(ls -A disk/target)" = a ] || fail "in the target are: $(ls -A disk/target)"
    cmp source/a disk/target/a || fail "the complete file differs"
    rm -r disk/target
    dd if=/dev/zero of=disk/all bs=1024 count=1020 2>/dev/null || fail "the space is not free again"
}

# --- Files that fail or change

check_files_that_fail_while_they_are_read() {
    # Special files of the system return more or fewer bytes than their size, or an error.
    local own=/proc/${BASHPID-}
    if [ ! -r "$own/mem" ] || [ ! -r /sys/class/net/lo/speed ]; then
        echo "    skipped: this system has no files that fail"
        return 0
    fi
    expect_status 1 seal /sys/class/net/lo vault
    expect_line err 'orvseal: speed: Invalid argument'
    expect_line err 'orvseal: mtu: it became shorter while it was read'
    expect_status 0 verify vault
    expect_status 1 seal "$own" other
    expect_line err 'orvseal: mem: Input/output error'
    expect_line err 'orvseal: status: changed while it was read'
    expect_status 0 verify other
}

# Creates the directory source, seals it with one job, stops the program in the middle of the file "a", runs the function
# CHANGE, and lets the program continue. If the file was sealed before the program could be stopped, tries a larger one.
seal_with_change() { # CHANGE EXPECTED-STATUS
    local size name process status=0
    for size in 24 96 384 1536; do # MiB
        rm -rf source vault
        mkdir source
        large_file source/a "$size"
        for name in b c d e f; do echo "$name" >"source/$name"; done
        # These are larger, so they are opened together with "a", and the others later.
        for name in g h i j k l m n; do echo "$name$name" >"source/$name"; done
        "$program" seal --iterations 50000 --jobs 1 --algorithm des3 source vault >out 2>err </dev/null &
        process=$!
        trap 'kill -KILL "$process" 2>/dev/null || :' EXIT # a stopped process would stay for ever
        # shellcheck disable=SC2016 # evaluated each time
        wait_for eval '[ -n "$(find vault/data -size +0 2>/dev/null)" ]'
        kill -STOP "$process" 2>/dev/null || :
        [ -n "$(find vault/data -size "+$((size * 1048576))c")" ] || break
        kill -KILL "$process" 2>/dev/null || :
        wait "$process" 2>/dev/null || :
    done
    "$1"
    kill -CONT "$process" || fail "sealing was always too fast to be stopped"
    wait "$process" || status=$?
    trap - EXIT
    [ "$status" -eq "$2" ] || fail "exit status $status, not $2 ($(cat err))"
    cp err sealing.err
    expect_status 0 verify vault
    cp sealing.err err
}

shrink() { dd if=/dev/null of=source/a bs=1 seek=1000 2>/dev/null; }
grow() { printf x >>source/a; }
rewrite() { change_byte source/a 0; }
unlink_it() { mv source/a moved; }

check_file_that_changes_while_it_is_sealed() {
    local change
    for change in shrink grow rewrite; do
        seal_with_change "$change" 1
        grep -Eq '^orvseal: a: (changed|it became shorter) while it was read$' err || fail "$change: $(cat err)"
            [ "$(grep -c '^orvseal: ' err)" -eq 1 ] || fail "$change: not one line: $(cat err)"
        expect_status 0 list vault
        [ "$(wc -l <out)" -eq 13 ] || fail "$change: not the 13 other files: $(cat out)"
        [ "$(file_count vault/data)" -eq 13 ] || fail "$change: not 13 sealed files: $(ls vault/data)"
    done
    # An open file does not need its name.
    seal_with_change unlink_it 0
    expect_status 0 open vault target
    cmp moved target/a || fail "the file that lost its name differs"
}

exchange() {
    rm source/b source/c source/d source/e
    ln -s f source/c
    mkfifo source/d
    mkdir source/e
    chmod 000 source/f
}

check_files_that_are_exchanged_before_their_turn() {
    local expected=9
    seal_with_change exchange 1
    expect_line err 'orvseal: b: No such file or directory'
    expect_line err 'orvseal: c: not a regular file'
    expect_line err 'orvseal: d: not a regular file'
    expect_line err 'orvseal: e: not a regular file'
    if [ "$(id -u)" -eq 0 ]; then
        echo "    skipped, in part: root may read any file"
        expected=10
    else
        expect_line err 'orvseal: f: Permission denied'
    fi
    expect_status 0 list vault
    [ "$(wc -l <out)" -eq "$expected" ] || fail "not the files that stayed: $(cat out)"
}

# --- Kills

# Starts the program and kills it at a random moment between its start and a little after its expected end.
kill_while() { # SECONDS COMMAND...
    local process moment part=$RANDOM # not in a subshell, which has numbers of its own
    moment=$(awk -v "whole=$1" -v "part=$part" 'BEGIN { print 1.1 * whole * part / 32767 }')
    shift
    [ "$1" != seal ] || set -- seal --iterations 50000 "${@:2}" # not through a function: the program itself is killed
    "$program" "$@" >out 2>err </dev/null &
    process=$!
    sleep "$moment"
    kill -KILL "$process" 2>/dev/null || :
    wait "$process" 2>/dev/null || :
}

duration_of() { # COMMAND...: in seconds
    local TIMEFORMAT=%R
    { time expect_status 0 "$@" >/dev/null; } 2>&1
}

several_files() {
    mkdir -p source/folder
    local number
    for number in 1 2 3 4 5 6 7 8; do random_file "source/folder/$number" $((number * 150000)); done
}

check_killed_while_sealing() {
    several_files
    local round complete=0 seconds
    seconds=$(duration_of seal --algorithm des3 source first)
    RANDOM=$seed
    for ((round = 1; round <= rounds; ++round)); do
        kill_while "$seconds" seal --algorithm des3 source vault
        if [ -e vault/manifest ]; then
            expect_status 0 verify vault
            complete=$((complete + 1))
        else
            expect_refusal verify vault
            grep -Eq 'is incomplete|No such file' err || fail "round $round: $(cat err)"
        fi
        expect_status 0 seal source again
        expect_status 0 verify again
        rm -rf vault again
    done
    echo "    seed $seed, $rounds rounds of up to $seconds s, $complete times complete"
}

# Changes the directory source into one of two states that the vault does not contain yet.
change_source() { # 0 or 1
    local number
    for number in 1 3 5; do random_file "source/folder/$number" $((number * 150000 + $1)); done
    rm -f source/folder/8 source/new*
    random_file "source/new-$1" 100000
    mkdir -p "source/folder-$1"
    rm -rf "source/folder-$((1 - $1))"
}

check_killed_while_updating() {
    several_files
    local round new=0 seconds before=0
    expect_status 0 seal --algorithm des3 source vault
    cp -a source state-0
    change_source 1
    cp -a vault copy
    seconds=$(duration_of seal source copy)
    RANDOM=$((seed + 2))
    for ((round = 1; round <= rounds; ++round)); do
        rm -rf state-1 target
        cp -a source state-1
        kill_while "$seconds" seal source vault
        expect_status 0 verify vault
        expect_status 0 open vault target
        if diff -r state-1 target >differences; then
            new=$((new + 1))
        else
            diff -r state-0 target >>differences || fail "round $round: neither state: $(cat differences)"
        fi
        expect_status 0 seal source vault
        expect_status 0 verify vault
        ! grep -q 'left over' out || fail "round $round: something is left: $(cat out err)"
        rm -rf state-0
        mv state-1 state-0
        change_source "$before"
        before=$((1 - before))
    done
    echo "    seed $seed, $rounds rounds of up to $seconds s, $new times the new state"
}

check_full_disk_while_updating() {
    mkdir source disk
    random_file source/a 1000
    if [ -n "${ORVSEAL_TEST_MOUNTS-}" ] && mount -t tmpfs -o size=1024k tmpfs disk; then
        trap 'umount disk' EXIT
    else
        echo "    in part: only root may mount a small disk, where the system has private mounts"
    fi
    expect_status 0 seal source disk/vault
    cp -a source before
    cp -a disk/vault vault
    random_file source/a 1100
    random_file source/b 3000000
    (ulimit -f 1000 && expect_status 2 seal source disk/vault)
    expect_one_line 'cannot be written: '
    expect_same_trees vault disk/vault
    expect_status 0 open disk/vault target
    expect_same_trees before target
}

seal_until_the_password() { # starts to seal, and waits until the program has locked the vault and wants its password
    rm -f password
    mkfifo password
    "$program" seal --iterations 50000 --password-file password source vault >first.out 2>first.err </dev/null &
    process=$!
    trap 'kill -KILL "$process" 2>/dev/null || :' EXIT
    wait_for test -s vault/lock
}

check_two_runs_at_once() {
    mkdir source
    echo text >source/file
    local process
    seal_until_the_password
    expect_refusal seal source vault
    expect_line err 'another run is writing to vault'
    printf %s "$ORVSEAL_PASSWORD" >password
    wait "$process" || fail "exit status $? of the first run ($(cat first.err))"
    expect_status 0 verify vault
    # A lock that is left by a process that has ended is no obstacle.
    seal_until_the_password
    kill -KILL "$process"
    wait "$process" 2>/dev/null || :
    trap - EXIT
    [ -e vault/lock ] || fail "there is no lock to be left"
    expect_status 0 seal source vault
    # Nor is one that a killed run has created, but not yet written; but a run that works keeps its own.
    : >vault/lock
    if command -v flock >/dev/null; then
        exec 9<vault/lock
        flock 9
        expect_refusal seal source vault
        [ -e vault/lock ] || fail "the lock of another run is gone"
        exec 9<&-
    else
        echo "    in part: without flock, no other run can be imitated"
    fi
    expect_status 0 seal source vault
    expect_absent vault/lock
}

check_killed_while_opening() {
    several_files
    expect_status 0 seal --algorithm des3 source vault
    local round seconds name complete=0
    seconds=$(duration_of open vault first)
    RANDOM=$((seed + 1))
    for ((round = 1; round <= rounds; ++round)); do
        kill_while "$seconds" open vault target
        for name in target/folder/*; do
            [ -e "$name" ] || continue
            cmp "$name" "source/folder/${name##*/}" || fail "round $round: $name is not complete"
            complete=$((complete + 1))
        done
        expect_status 0 open vault again
        expect_same_trees source again
        rm -rf target again
    done
    echo "    seed $seed, $rounds rounds of up to $seconds s, $complete complete files"
}

run_checks "${@:2}"
