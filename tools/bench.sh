#!/usr/bin/env bash
# Measures the library beside what it is built on and what else one could take, and writes docs/benchmarks.md and .svg.
# usage: tools/bench.sh [--quick]    --quick: a minute, to see that it works; its figures go nowhere
set -euo pipefail
cd "$(dirname "$0")/.."

quick=false
[ "${1:-}" != --quick ] || quick=true

tools/bootstrap.sh benchmarks
build=build/bench
cmake --preset release -B "$build" -DORV_BUILD_BENCHMARKS=ON -DORV_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" >/dev/null

# Files go to memory where it has room for them: the moods of a disk say nothing about programs.
room=$((12 * 1024 * 1024)) # KiB
if [ -z "${TMPDIR:-}" ] && [ -r /proc/meminfo ] && [ -d /dev/shm ] &&
    awk -v room=$room '/^MemAvailable:/ && $2 > room {found = 1} END {exit !found}' /proc/meminfo &&
    [ "$(df -Pk /dev/shm | awk 'END {print $4}')" -gt $room ]; then
    export TMPDIR=/dev/shm
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if $quick; then
    rounds=1 long_rounds=1 time=0.001 files=(1 64) out=$work
else
    rounds=9 long_rounds=3 time=0.05 files=(3 2048) out=docs
fi
# In each round the rows of a subject follow each other, so that what else the machine does falls on all of them.
for round in $(seq "$rounds"); do
    filter=.
    [ "$round" -le $long_rounds ] || filter='-(growth|snapshots).*'
    ! $quick || filter='-growth.*(00000|256|4096).*'
    "$build/benchmarks/orvBench" --benchmark_min_time=$time --benchmark_filter="$filter" \
        --benchmark_out="$work/round$round.json" --benchmark_out_format=json >/dev/null 2>"$work/errors" ||
        { cat "$work/errors"; exit 1; }
done
python3 benchmarks/processes.py "$build" "${files[@]}" "$work/processes.json"
mkdir -p "$out"
python3 benchmarks/report.py "$work/processes.json" benchmarks/notes.md "$out" "$work"/round*.json
cat "$out/benchmarks.md"
