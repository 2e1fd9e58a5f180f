#!/usr/bin/env python3
"""Compares two builds of the benchmarks.

usage: compare.py ORVBENCH OTHER_ORVBENCH ROUNDS [ORVBENCH_OPTION...]

Prints a table: the library's throughput relative to that of a bare dependency or a peer, in both builds, and the
library's own processor time in the other build relative to this one. A negative change means that the ratio is lower in
the other build. The builds take turns, and each row counts with its fastest round, because other load on the machine can
only slow it down.
"""
import subprocess
import sys
import tempfile

from report import add_bench_times, comparisons


def add_round(samples, program, options):
    with tempfile.TemporaryDirectory() as work:
        path = work + "/round.json"
        subprocess.run([program, f"--benchmark_out={path}", "--benchmark_out_format=json", *options], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        add_bench_times(samples, {}, path)


def main():
    programs, rounds, options = sys.argv[1:3], int(sys.argv[3]), sys.argv[4:]
    builds = [{}, {}]
    for number in range(rounds):
        for build, program in list(zip(builds, programs, strict=True))[:: -1 if number % 2 else 1]:
            add_round(build, program, options)
    print("| subject | compared with | ratio | other build | change | own time, other build to this |")
    print("|---|---|---:|---:|---:|---:|")
    lines = []
    others = {(subject, other): (ours, theirs) for subject, other, ours, theirs, *_ in comparisons(builds[1])}
    for subject, other, ours, theirs, *_ in comparisons(builds[0]):
        if (subject, other) not in others:  # a peer that only one build has
            continue
        other_ours, other_theirs = others[subject, other]
        first, second = min(theirs) / min(ours), min(other_theirs) / min(other_ours)
        lines.append((second / first - 1, f"| {subject} | {other} | {first:.2f} | {second:.2f} |"
                      f" {100 * (second / first - 1):+.0f} % | {min(other_ours) / min(ours):.2f} |"))
    print("\n".join(line for _, line in sorted(lines)))


main()
