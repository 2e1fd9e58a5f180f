#!/usr/bin/env python3
"""Writes the benchmark report: a table, a chart, and the rows that the README shows.

usage: report.py PROCESSES_JSON NOTES DIRECTORY README ROUND_JSON...

Writes DIRECTORY/benchmarks.md and, with gnuplot, DIRECTORY/benchmarks.svg, and replaces the rows between the markers in
README. Times are medians over the rounds. A ratio is the library's throughput divided by the other's, so above 1 the
library is faster. It is the median of the ratios within each round, because the machine's speed varies between rounds.
"""
import datetime
import json
import math
import os
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

# subject (a regular expression), the variant to compare with, the target ratio (None: no target)
COMPARISONS = [
    (r"AES-256-CBC (en|de)crypt, (64 KiB|1 MiB) .*", "Crypto++", 0.95),
    (r"AES-256-CBC encrypt, from a file.*", "Crypto++", 0.93),
    (r"AES-256-CBC decrypt, from a file.*", "Crypto++", 0.75),
    (r"AES-256-CBC encrypt, . streams.*", "Crypto++", 2.5),
    (r"AES-256-CBC encrypt, . streams.*", "OpenSSL", 2.0),
    (r"AES-256-CBC encrypt, 4 KiB .*", "Crypto++", 0.90),
    (r"AES-256-CBC decrypt, 4 KiB .*", "Crypto++", 0.70),
    (r"AES-128-CBC encrypt.*", "Crypto++", 0.95),
    (r"AES-128-CBC decrypt.*", "Crypto++", 0.82),
    (r"AES-...-ECB .*", "Crypto++", 0.80),
    (r".*DES-CBC .*", "Crypto++", 0.97),
    (r".*(CBC|ECB) encrypt.*", "QCA", 1.9),
    (r".*(CBC|ECB) decrypt.*", "QCA", 4),
    (r".*(CBC|ECB) (en|de)crypt, ((?!stream).)*", "OpenSSL", None),
    (r"PBKDF2.*", "Crypto++", 2.0),
    (r"PBKDF2.*", "OpenSSL", 2.0),
    (r"hash tree.*", "bare MD5", 0.75),
    (r"a log line", "easylogging++", 1.0),
    (r"a log line", "spdlog, flushed", None),
    (r"a disabled log line", "QMessageLogger", 0.83),
    (r"copy of a .*", "read and write", 0.92),
    (r"snapshots.*", "QFileInfo", 3.0),
    (r"snapshots.*", "std::filesystem", 0.60),
    (r"addresses", "QUrl::fromUserInput", 1.5),
    (r"a million 64-bit .*", "Qt on memory", 0.80),
    (r"a million 64-bit .*", "Qt on the array", None),
    (r"Base64 encoding.*", "QByteArray::toBase64", 0.80),
    (r"Base64 decoding.*", "QByteArray::fromBase64", 0.80),
    (r"orvseal .*", "openssl enc, file by file", 1.0),
    (r"orvseal seal.*", "tar into openssl enc", 2.2),
    (r"orvseal seal.*", "md5sum, two processes", None),
]

# The baseline loops: the bare dependency with only the work that the library cannot avoid.
BASELINES = ["Crypto++ from the source", "Qt with a size check"]

# The rows that the README shows: subject (a regular expression), the variant to compare with
README_ROWS = [
    (r"AES-256-CBC encrypt, 64 KiB .*", "Crypto++"),
    (r"AES-256-CBC encrypt, 8 streams.*", "OpenSSL"),
    (r"snapshots.*", "QFileInfo"),
    (r"a log line", "easylogging++"),
    (r"orvseal seal.*", "tar into openssl enc"),
]
BEGIN, END = "<!-- benchmarks: filled in by tools/bench.sh -->", "<!-- benchmarks: end -->"


def add_bench_times(samples, errors, path):
    """Appends each row's time, in seconds, to samples[subject, variant]: CPU time, or wall-clock time for rows measured
    in real time. Failed rows go to `errors`."""
    with open(path) as file:
        for row in json.load(file)["benchmarks"]:
            subject, variant, *rest = row["run_name"].split("/")
            if row.get("error_occurred"):
                errors[subject, variant] = row["error_message"]
                continue
            assert row["run_type"] == "iteration" and row["time_unit"] == "ns"
            time = row["real_time" if "real_time" in rest else "cpu_time"]
            samples.setdefault((subject, variant), []).append(time / 1e9)


def add_process_rows(samples, memory, path):
    with open(path) as file:
        for row in json.load(file):
            key = (row["subject"], row["variant"])
            if "seconds" in row:
                samples.setdefault(key, []).append(row["seconds"])
            if "memory" in row:
                memory[key] = row["memory"]


def ratio(theirs, ours):
    return statistics.median(their / our for their, our in zip(theirs, ours, strict=True))


def duration(seconds):
    for unit, factor in (("s", 1), ("ms", 1e3), ("µs", 1e6), ("ns", 1e9)):
        if seconds * factor >= 1:
            break
    return f"{seconds * factor:.3g} {unit}"


def by_number(text):
    return [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", text)]


def comparisons(samples):
    """Yields (subject, other variant, our times, their times, ratio of the baseline loop or None, target or None)."""
    for pattern, other, target in COMPARISONS:
        for subject, variant in sorted(samples, key=lambda key: by_number(key[0])):
            if variant == other and re.fullmatch(pattern, subject) and (subject, "orvCore") in samples:
                theirs = samples[subject, other]
                baselines = [ratio(theirs, samples[subject, loop]) for loop in BASELINES if (subject, loop) in samples]
                yield subject, other, samples[subject, "orvCore"], theirs, baselines[0] if baselines else None, target


def comparison_table(rows):
    lines = ["| subject | compared with | orvCore | the other | ratio | baseline | target |",
             "|---|---|---:|---:|---:|---:|---:|"]
    for subject, other, ours, theirs, baseline, target in rows:
        figure = ratio(theirs, ours)
        baseline = "" if baseline is None else f"{baseline:.2f}"
        target = "" if target is None else f"{target:g}" + ("" if figure >= target else " ✗")
        lines.append(f"| {subject} | {other} | {duration(statistics.median(ours))} |"
                     f" {duration(statistics.median(theirs))} | {figure:.2f} | {baseline} | {target} |")
    return lines


def update_readme(rows, path):
    """Replaces the table between the markers in the README."""
    lines = ["| | compared with | ratio |", "|---|---|---:|"]
    for pattern, other in README_ROWS:
        lines += [f"| {row[0]} | {other} | {ratio(row[3], row[2]):.2f} |" for row in rows
                  if row[1] == other and re.fullmatch(pattern, row[0])]
    with open(path) as file:
        before, rest = file.read().split(BEGIN)
    after = rest.split(END)[1]
    with open(path, "w") as file:
        file.write("\n".join([before + BEGIN, *lines, END + after]))


def derived_table(samples, memory):
    """Figures that compare rows of the library with each other."""
    lines = ["| subject | figure | target |", "|---|---:|---:|"]

    def times(subject):
        return samples.get((subject, "orvCore"))

    def add(subject, figure, bound, good):
        lines.append(f"| {subject} | {figure:.3g} | {bound}{'' if good else ' ✗'} |")

    off = ratio(times("a disabled log line"), times("a log line"))
    add("cost of a disabled log line, relative to a written one", off, "at most 0.06", off <= 0.06)
    threads = ratio(times("a log line, one thread"), times("a log line, four threads"))
    add("log lines per second with four threads, relative to one (wall clock)", threads, "at least 0.8", threads >= 0.8)
    for what, few, many in [("readData of {} MiB", 1, 4096), ("hash tree of {} leaves", 10000, 10000000)]:
        short, long = (times("growth: " + what.format(count)) for count in (few, many))
        if short and long:
            growth = ratio(long, short) * few / many
            add(f"{what.format(many)}, cost per unit relative to {few}", growth, "at most 1.1", growth <= 1.1)
    for (subject, variant), seconds in samples.items():
        if variant == "orvCore, second run, unchanged tree":
            again = ratio(seconds, times(subject))
            add(f"{subject} again, unchanged, relative to the first time", again, "at most 0.1", again <= 0.1)
    largest = max(memory[key] for key in memory if "orvseal" in key[0])
    add("peak memory of orvseal, MiB", largest, "at most 64", largest <= 64)
    return lines


def growth_table(samples, memory):
    lines = ["| subject | time | per unit | peak memory |", "|---|---:|---:|---:|"]
    for key in sorted(set(samples) | set(memory), key=lambda key: by_number(key[0])):
        subject = key[0]
        if not subject.startswith("growth: "):
            continue
        units = int(re.search(r"\d+", subject)[0])
        time = statistics.median(samples[key]) if key in samples else None
        lines.append(f"| {subject[8:]} | {duration(time) if time else ''} | {duration(time / units) if time else ''} |"
                     f" {f'{memory[key]:.1f} MiB' if key in memory else ''} |")
    return lines


def version(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip().splitlines()[0]
    except (OSError, subprocess.CalledProcessError, IndexError):
        return "unknown"


def machine():
    processor = platform.machine()
    if os.path.exists("/proc/cpuinfo"):
        with open("/proc/cpuinfo") as file:
            names = [line.split(":")[1].strip() for line in file if line.startswith("model name")]
        processor = f"{names[0]}, {len(names)} processors" if names else processor
    system = platform.freedesktop_os_release()["PRETTY_NAME"] if hasattr(platform, "freedesktop_os_release") else ""
    packages = ["libqt5core5a", "libcrypto++-dev", "libeasyloggingpp-dev", "libssl3", "libqca-qt5-2", "libspdlog-dev",
                "libbenchmark-dev"]
    versions = [f"{name} {version('dpkg-query', '-W', '-f', '${Version}', name)}" for name in packages]
    return [f"- {processor}; {system}; Linux {platform.release()}" if system else f"- {processor}; {platform.platform()}",
            f"- {version('c++', '--version')}", "- " + ", ".join(versions)]


def draw(rows, directory):
    if shutil.which("gnuplot") is None:
        return False
    data = directory + "/benchmarks.dat"
    rows = [row for row in rows if row[-1] is not None][::-1]
    ratios = [ratio(theirs, ours) for _, _, ours, theirs, _, _ in rows]
    first, last = 2.0 ** math.floor(math.log2(min(ratios))), 2.0 ** math.ceil(math.log2(max(ratios)))
    with open(data, "w") as file:
        for number, (subject, other, _, _, _, target) in enumerate(rows):
            file.write(f'{number}\t{ratios[number]:.4f}\t{target}\t"{subject} / {other}"\n')
    script = f"""
set terminal svg size 1000,{80 + 22 * len(rows)} font 'sans-serif,11'
set output '{directory}/benchmarks.svg'
set title 'orvCore: left of 1 slower, right of 1 faster (× target)'
set logscale x 2
set xrange [{first}:{last}]
set xtics (0.125, 0.25, 0.5, 1, 2, 4, 8, 16, 32)
set yrange [-1:{len(rows)}]
set grid xtics
set arrow from 1,-1 to 1,{len(rows)} nohead linewidth 2
set style fill solid 0.7
unset key
set lmargin 62
set datafile separator tab
color(ratio) = ratio < 1 ? 0xcc7733 : 0x4477aa
plot '{data}' using (1):1:($2 < 1 ? $2 : 1):($2 < 1 ? 1 : $2):($1-0.35):($1+0.35):(color($2)):ytic(4) \\
     with boxxyerror linecolor rgb variable, \\
     '' using 3:1 with points pointtype 2 pointsize 0.8 linecolor rgb '#cc3311'
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
    os.remove(data)
    return True


def main():
    processes, notes, directory, readme, *rounds = sys.argv[1:]
    samples, memory, errors = {}, {}, {}
    for path in rounds:
        add_bench_times(samples, errors, path)
    add_process_rows(samples, memory, processes)
    rows = list(comparisons(samples))
    lines = ["# Benchmarks", "",
             f"Generated by `tools/bench.sh`: medians of {len(rounds)} rounds; rows that take seconds have fewer rounds.",
             "Times are CPU times; those of `orvseal` and of rows that say so are wall-clock times. A ratio is the",
             "library's throughput divided by the other's in the same round, so it carries over to other machines:",
             "above 1, the library is faster. \"Baseline\" is the ratio of a plain loop around the bare dependency that",
             "does the same unavoidable work: it reads the source before it encrypts, and checks an array's size before",
             "it accesses it. ✗ marks a missed target.",
             ""]
    lines += [f"- {datetime.date.today()}", *machine(), f"- files in `{tempfile.gettempdir()}`", ""]
    if draw(rows, directory):
        lines += ["![Ratios](benchmarks.svg)", ""]
    lines += comparison_table(rows) + [""]
    if errors:
        lines += ["Not measured: " + "; ".join(f"{subject} / {variant}: {error}" for (subject, variant), error
                                               in sorted(errors.items())) + ".", ""]
    lines += [*derived_table(samples, memory), "", "## Scaling", "", *growth_table(samples, memory), ""]
    with open(notes) as file:
        lines += file.read().splitlines()
    with open(directory + "/benchmarks.md", "w") as file:
        file.write("\n".join(lines) + "\n")
    update_readme(rows, readme)


if __name__ == "__main__":  # compare.py imports it
    main()
