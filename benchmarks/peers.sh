#!/usr/bin/env bash
# Compares the sample client with borg and restic, on Debian: a first run over a tree, a second one over the unchanged
# tree, reading all data again, restoring it, and peak memory. Medians of wall-clock times. Then measures the client's
# peak memory with five times as many small files.
# usage: benchmarks/peers.sh ORVSEAL [REPETITIONS [FILES]]
#
# The tree has FILES (20000) files of 4 to 100 KiB, and one of 200 MB, all random. It is kept in memory if possible.
set -euo pipefail

"$(dirname "$0")/../tools/bootstrap.sh" peers
orvseal=$(realpath "$1") repetitions=${2:-3} files=${3:-20000}
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
work=$(mktemp -d "$memory/orvpeers.XXXXXX")
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
cd "$work"
export ORVSEAL_PASSWORD='correct horse' BORG_PASSPHRASE='correct horse' RESTIC_PASSWORD='correct horse'
export BORG_BASE_DIR=$work/home XDG_CACHE_HOME=$work/home # removed with the other files
create_files() { # DIRECTORY COUNT SMALLEST LARGEST: of random sizes in bytes, 200 in a directory
    python3 - "$@" <<'END'
import os, random, sys
top, (count, smallest, largest) = sys.argv[1], map(int, sys.argv[2:])
random.seed(1)
for number in range(count):
    directory = f"{top}/{number // 200:04}"
    os.makedirs(directory, exist_ok=True)
    with open(f"{directory}/{number % 200:03}", "wb") as file:
        file.write(os.urandom(random.randint(smallest, largest)))
END
}
create_files source "$files" 4096 102400
head -c 200000000 /dev/urandom >source/large

timed() { # NAME COMMAND...: appends the seconds and the kilobytes of memory to the file NAME
    /usr/bin/time -a -o "$work/times.$1" -f '%e %M' "${@:2}" >"$work/output" 2>&1 || { cat "$work/output"; exit 1; }
}

for ((round = 1; round <= repetitions; ++round)); do
    rm -rf vault borg restic home target.*
    borg init -e repokey borg 2>/dev/null
    restic init -q -r restic
    timed first.orvseal "$orvseal" seal source vault
    timed first.borg borg create borg::1 source
    timed first.restic restic -q -r restic backup source
    timed second.orvseal "$orvseal" seal source vault
    timed second.borg borg create borg::2 source
    timed second.restic restic -q -r restic backup source
    timed check.orvseal "$orvseal" verify vault
    timed check.borg borg check --verify-data borg
    timed check.restic restic -q -r restic check --read-data

    mkdir target.borg
    timed restore.orvseal "$orvseal" open vault target.orvseal
    (cd target.borg && timed restore.borg borg extract ../borg::2)
    timed restore.restic restic -q -r restic restore latest --target target.restic
done

median() { # FILE: of its first column
    sort -n "$1" | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'
}
printf '%-10s %10s %10s %10s\n' "$(date +%F)" orvseal borg restic
for run in first second check restore; do
    printf '%-10s' "$run"
    printf ' %8s s' "$(median "times.$run.orvseal")" "$(median "times.$run.borg")" "$(median "times.$run.restic")"
    echo
done
most_memory() { # FILES...: in MB
    cat "$@" | awk '{ if ($2 > most) most = $2 } END { print most * 1024 / 1000000 }'
}
printf '%-10s' memory
for program in orvseal borg restic; do printf ' %7.0f MB' "$(most_memory times.*."$program")"; done
echo

rm -rf source vault borg restic target.*
create_files source $((5 * files)) 1 100
for run in seal seal 'seal --force' verify; do
    # shellcheck disable=SC2046,SC2086 # words
    timed many.orvseal "$orvseal" $run $([ "$run" = verify ] || echo source) vault
done
printf 'memory with %d small files: %.0f MB\n' $((5 * files)) "$(most_memory times.many.orvseal)"
