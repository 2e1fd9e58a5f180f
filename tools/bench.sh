#!/usr/bin/env bash
# Compares the library's speed with its dependencies and with alternatives; writes docs/benchmarks.md and .svg, and the
# README's table.
# usage: tools/bench.sh [--quick]    --quick: a short run that stores nothing, to see that it works
#        tools/bench.sh --compare CMAKE_OPTION...
#   prints how a build with these options (-DORV_QT_MAJOR=6, -DORV_HARDEN=OFF) differs from one without them, in times
#   and in executed instructions; takes half an hour, and needs an idle machine for the times
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/bench
build() { # DIRECTORY CMAKE_OPTION...
    cmake --preset release -B "$1" -DORV_BUILD_BENCHMARKS=ON -DORV_BUILD_TESTS=OFF "${@:2}" >/dev/null
    cmake --build "$1" >/dev/null
}

quick=false
[ "${1:-}" != --quick ] || quick=true

tools/bootstrap.sh benchmarks
build "$build"
if [ "${1:-}" = --compare ]; then
    tools/bootstrap.sh qt6
    rm -rf "$build-compared" # it would keep earlier options
    build "$build-compared" "${@:2}"
    python3 benchmarks/compare.py {"$build","$build-compared"}/benchmarks/orvBench 9 \
        --benchmark_min_time=0.01 --benchmark_filter='-growth.*'
    ! command -v valgrind >/dev/null || # which a Mac does not have
        python3 benchmarks/instructions.py {"$build","$build-compared"}/benchmarks/orvBench
    exit
fi

# Use tmpfs, if it has room, to keep disk noise out.
room=$((12 * 1024 * 1024)) # KiB
if [ -z "${TMPDIR:-}" ] && [ -r /proc/meminfo ] && [ -d /dev/shm ] &&
    awk -v room=$room '/^MemAvailable:/ && $2 > room {found = 1} END {exit !found}' /proc/meminfo &&
    [ "$(df -Pk /dev/shm | awk 'END {print $4}')" -gt $room ]; then
    export TMPDIR=/dev/shm
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if $quick; then
    rounds=1 long_rounds=1 time=0.001 files=(1 64) out=$work readme=$work/README.md
    cp README.md "$readme"
else
    rounds=9 long_rounds=3 time=0.05 files=(3 2048) out=docs readme=README.md
fi
# The rows of a subject run one after the other in each round, so that other load affects all of them.
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
python3 benchmarks/report.py "$work/processes.json" benchmarks/notes.md "$out" "$readme" "$work"/round*.json
cat "$out/benchmarks.md"
