#!/usr/bin/env python3
"""Compares the numbers of instructions that two builds of the benchmarks execute, as valgrind counts them.

usage: instructions.py ORVBENCH OTHER_ORVBENCH

Runs each row of the library once and subtracts what the program executes without any row. Unlike times, the counts do
not depend on other load. Rows below a million instructions, and the log's, whose threads vary, are left out.
"""
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor


def count(program, row):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program,
               f"--benchmark_filter=^{row}/orvCore", "--benchmark_min_time=0"]
    errors = subprocess.run(command, capture_output=True, text=True, check=True).stderr
    return int(re.search(r"Collected : (\d+)", errors)[1])


def main():
    programs = sys.argv[1:]
    names = subprocess.check_output([programs[0], "--benchmark_list_tests"], text=True).splitlines()
    rows = dict.fromkeys(name.split("/")[0] for name in names if "/orvCore" in name)
    rows = [row for row in rows if not row.startswith(("growth", "a log line", "a disabled log line"))]
    with ThreadPoolExecutor(2) as pool:
        base, *counts = pool.map(lambda row: [count(program, row) for program in programs], ["no such row", *rows])
    print("| subject | million instructions | other build to this |")
    print("|---|---:|---:|")
    for row, (first, second) in zip(rows, counts):
        first, second = first - base[0], second - base[1]
        if first > 1e6:
            print(f"| {row} | {first / 1e6:.1f} | {second / first:.3f} |")


main()
