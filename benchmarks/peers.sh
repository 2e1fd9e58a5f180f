#!/usr/bin/env bash
# Compares the sample client with borg and restic, which have to be installed: a first run over a tree, a second one over
# the unchanged tree, reading all data again, restoring it, and peak memory. Medians of wall-clock times.
# usage: benchmarks/peers.sh ORVSEAL [REPETITIONS [FILES]]
#
# The tree has FILES (20000) files of 4 to 100 KiB, and one of 200 MB, all random. It is kept in memory if possible.
set -euo pipefail

orvseal=$(realpath "$1") repetitions=${2:-3} files=${3:-20000}
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
work=$(mktemp -d "$memory/orvpeers.XXXXXX")
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
cd "$work"
export ORVSEAL_PASSWORD='correct horse' BORG_PASSPHRASE='correct horse' RESTIC_PASSWORD='correct horse'
export BORG_BASE_DIR=$work/home XDG_CACHE_HOME=$work/home # caches and keys go with the rest

python3 - "$files" <<'END'
import os, random, sys
random.seed(1)
for number in range(int(sys.argv[1])):
    directory = f"source/{number // 200:04}"
    os.makedirs(directory, exist_ok=True)
    with open(f"{directory}/{number % 200:03}", "wb") as file:
        file.write(os.urandom(random.randint(4 * 1024, 100 * 1024)))
with open("source/large", "wb") as file:
    for _ in range(200):
        file.write(os.urandom(1000 * 1000))
END

timed() { # NAME COMMAND...: appends the seconds and the kilobytes of memory to the file NAME
    local name=$1
    shift
    /usr/bin/time -a -o "$work/times.$name" -f '%e %M' "$@" >"$work/output" 2>&1 || { cat "$work/output"; exit 1; }
}

for ((round = 1; round <= repetitions; ++round)); do
    rm -rf vault borg restic home target.*
    timed first.orvseal "$orvseal" seal source vault
    borg init -e repokey borg 2>/dev/null
    timed first.borg borg create borg::1 source
    restic init -q -r restic
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

column_of() { # FILE COLUMN: its median
    sort -n -k "$2,$2" "$1" | awk -v column="$2" '{ all[NR] = $column } END { print all[int((NR + 1) / 2)] }'
}
printf '%-10s %10s %10s %10s\n' "$(date +%F)" orvseal borg restic
for run in first second check restore; do
    printf '%-10s' "$run"
    for program in orvseal borg restic; do printf ' %8s s' "$(column_of "times.$run.$program" 1)"; done
    echo
done
printf '%-10s' memory
for program in orvseal borg restic; do
    printf ' %7.0f MB' "$(cat times.*."$program" | awk '{ if ($2 > most) most = $2 } END { print most / 1000 }')"
done
echo
