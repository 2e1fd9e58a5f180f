#!/usr/bin/env bash
# Builds the fuzz targets and runs them, one after the other, each from its seeds in fuzz/corpus.
# usage: tools/fuzz.sh [MINUTES [TARGET...]]
#   Without arguments: so many inputs each, the same ones every time, for CI.
#   MINUTES: so long each, going on from what earlier runs have found in build/fuzz/corpus. All targets, or those named.
# An input that breaks a target ends the run and is kept in build/fuzz/findings; the target runs it again when it is
# given the file.
set -euo pipefail
cd "$(dirname "$0")/.."

inputs=20000
minutes=${1:-}
case $minutes in 0* | *[!0-9]*)
    sed -n 's/^# usage/usage/p' "$0" >&2
    exit 2
    ;;
esac

tools/bootstrap.sh fuzz
if [ "$(uname)" = Darwin ]; then
    PATH=$(brew --prefix llvm)/bin:$PATH # Apple's own clang has no fuzzer
fi
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

build=$PWD/build/fuzz
targets=("${@:2}")
[ ${#targets[@]} -gt 0 ] || targets=("$build"/fuzz/*Fuzz)
mkdir -p "$build/findings"
# Some targets write files: in memory, where that can be had.
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
work=$(mktemp -d "$memory/orvfuzz.XXXXXX")
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work
# Hashes and addresses are part of what guides the fuzzer, so short runs do without chance in either, where they can.
runner=(env QT_HASH_SEED=0)
if [ -z "$minutes" ] && setarch -R true 2>/dev/null; then
    runner+=(setarch -R)
fi

for target in "${targets[@]##*/}"; do
    if [ -n "$minutes" ]; then
        found=$build/corpus/$target
        bound=("-max_total_time=$((minutes * 60))")
    else
        found=$work/$target
        bound=("-runs=$inputs" -seed=1)
    fi
    mkdir -p "$found"
    # The first folder is where new inputs go.
    "${runner[@]}" "$build/fuzz/$target" "${bound[@]}" -timeout=10 -print_final_stats=1 \
        -artifact_prefix="$build/findings/$target-" "$found" "fuzz/corpus/$target" >"$work/output" 2>&1 ||
        { cat "$work/output"; exit 1; }
    echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$work/output") inputs"
done
