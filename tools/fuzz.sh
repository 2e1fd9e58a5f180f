#!/usr/bin/env bash
# Builds the fuzz targets and runs them one after the other, each starting from its seeds in fuzz/corpus.
# usage: tools/fuzz.sh [MINUTES [TARGET...]]
#   Without arguments: a fixed number of reproducible inputs per target, for CI.
#   MINUTES: the time per target; continues from the inputs that earlier runs found, in build/fuzz/corpus.
#   TARGET: the targets to run; default: all.
# The first failing input ends the run and is stored in build/fuzz/findings; pass that file to the target to reproduce
# the failure.
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
# Some targets write files: use tmpfs if there is one.
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
work=$(mktemp -d "$memory/orvfuzz.XXXXXX")
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work
# Hashes and addresses guide the fuzzer; fix both, where possible, to make short runs reproducible.
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
    # The fuzzer stores new inputs in the first directory.
    "${runner[@]}" "$build/fuzz/$target" "${bound[@]}" -timeout=10 -print_final_stats=1 \
        -artifact_prefix="$build/findings/$target-" "$found" "fuzz/corpus/$target" >"$work/output" 2>&1 ||
        { cat "$work/output"; exit 1; }
    echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$work/output") inputs"
done
