#!/usr/bin/env python3
"""Makes the table and the chart of the benchmarks.

usage: report.py PROCESSES_JSON NOTES FOLDER ROUND_JSON...

Writes FOLDER/benchmarks.md and, with gnuplot, FOLDER/benchmarks.svg. Figures are medians of the rounds. Ratios are
throughput of the library to that of the other, so more than 1 is faster: the median of those within each round, since
the machine may be slower in one round than in the next.
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

# subject (a regular expression), the other variant, the ratio to reach (none: only shown)
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
    (r"key from a password.*", "Crypto++", 0.98),
    (r"key from a password.*", "OpenSSL", None),
    (r"hash tree.*", "bare MD5", 0.75),
    (r"a log line", "easylogging++", 1.0),
    (r"a log line", "spdlog, flushed", None),
    (r"a log line that is switched off", "QMessageLogger", 0.83),
    (r"copy of a file.*", "read and write", 0.92),
    (r"snapshots.*", "QFileInfo", 3.0),
    (r"snapshots.*", "std::filesystem", 0.60),
    (r"addresses", "QUrl::fromUserInput", 1.5),
    (r"a million 64-bit .*", "Qt on memory", 0.80),
    (r"a million 64-bit .*", "Qt on the array", None),
    (r"Base64 of.*", "QByteArray::toBase64", 0.80),
    (r"a megabyte from Base64", "QByteArray::fromBase64", 0.80),
    (r"orvseal .*", "openssl enc, file by file", 1.0),
    (r"orvseal seal.*", "tar into openssl enc", None),
]

# Variants that do in a plain loop around the bare dependency what the library cannot leave out either.
FLOORS = ["Crypto++ from the source", "Qt, asking the size"]


def add_bench_times(samples, errors, path):
    """Adds the seconds of one run of each row to (subject, variant): of the processor, or of the clock for rows that ask
    for that. Rows that failed go to `errors`."""
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
    """(subject, other, our times, the other's times, the ratio by hand, the ratio to reach)"""
    for pattern, other, target in COMPARISONS:
        for subject, variant in sorted(samples, key=lambda key: by_number(key[0])):
            if variant == other and re.fullmatch(pattern, subject) and (subject, "orvCore") in samples:
                theirs = samples[subject, other]
                floors = [ratio(theirs, samples[subject, floor]) for floor in FLOORS if (subject, floor) in samples]
                yield subject, other, samples[subject, "orvCore"], theirs, floors[0] if floors else None, target


def comparison_table(rows):
    lines = ["| subject | beside | orvCore | the other | ratio | by hand | to reach |",
             "|---|---|---:|---:|---:|---:|---:|"]
    for subject, other, ours, theirs, floor, target in rows:
        figure = ratio(theirs, ours)
        by_hand = "" if floor is None else f"{floor:.2f}"
        mark = "" if target is None else f"{target:g}" + ("" if figure >= target else " ✗")
        lines.append(f"| {subject} | {other} | {duration(statistics.median(ours))} |"
                     f" {duration(statistics.median(theirs))} | {figure:.2f} | {by_hand} | {mark} |")
    return lines


def derived_table(samples, memory):
    """What the rows of the library say beside each other."""
    lines = ["| subject | figure | to reach |", "|---|---:|---:|"]

    def times(subject):
        return samples.get((subject, "orvCore"))

    def add(subject, figure, bound, good):
        lines.append(f"| {subject} | {figure:.3g} | {bound}{'' if good else ' ✗'} |")

    off = ratio(times("a log line that is switched off"), times("a log line"))
    add("a line that is switched off, part of the cost of a written one", off, "at most 0.06", off <= 0.06)
    threads = ratio(times("a log line, one thread"), times("a log line, four threads"))
    add("lines a second of four threads to those of one, by the clock", threads, "0.8", threads >= 0.8)
    for what, few, many in [("readData of {} MiB", 1, 4096), ("hash tree of {} leaves", 10000, 10000000)]:
        short, long = (times("growth: " + what.format(count)) for count in (few, many))
        if short and long:
            growth = ratio(long, short) * few / many
            add(f"{what.format(many)}, cost of a unit to that of {few}", growth, "at most 1.1", growth <= 1.1)
    largest = max(memory[key] for key in memory if "orvseal" in key[0])
    add("peak memory of orvseal, MiB", largest, "at most 64", largest <= 64)
    return lines


def growth_table(samples, memory):
    lines = ["| subject | time | a unit | peak memory |", "|---|---:|---:|---:|"]
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


def draw(rows, folder):
    if shutil.which("gnuplot") is None:
        return False
    data = folder + "/benchmarks.dat"
    rows = [row for row in rows if row[-1] is not None][::-1]
    ratios = [ratio(theirs, ours) for _, _, ours, theirs, _, _ in rows]
    first, last = (2.0 ** edge(math.log2(bound)) for edge, bound in ((math.floor, min(ratios)), (math.ceil, max(ratios))))
    with open(data, "w") as file:
        for number, (subject, other, _, _, _, target) in enumerate(rows):
            file.write(f'{number}\t{ratios[number]:.4f}\t{target}\t"{subject} / {other}"\n')
    script = f"""
set terminal svg size 1000,{80 + 22 * len(rows)} font 'sans-serif,11'
set output '{folder}/benchmarks.svg'
set title 'Throughput of orvCore to that of the other (bar), and the ratio to reach (mark)'
set logscale x 2
set xrange [{first}:{last}]
set xtics (0.125, 0.25, 0.5, 0.75, 1, 1.5, 2, 4, 8, 16, 32)
set yrange [-1:{len(rows)}]
set grid xtics
set style fill solid 0.7
unset key
set lmargin 62
set datafile separator tab
plot '{data}' using ({first}):1:({first}):2:($1-0.35):($1+0.35):ytic(4) with boxxyerror linecolor rgb '#4477aa', \\
     '' using 3:1 with points pointtype 2 pointsize 0.8 linecolor rgb '#cc3311'
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
    os.remove(data)
    return True


def main():
    processes, notes, folder, *rounds = sys.argv[1:]
    samples, memory, errors = {}, {}, {}
    for path in rounds:
        add_bench_times(samples, errors, path)
    add_process_rows(samples, memory, processes)
    rows = list(comparisons(samples))
    lines = ["# Benchmarks", "",
             f"Made by `tools/bench.sh`: medians of {len(rounds)} rounds, fewer for what takes seconds. Times are those of",
             "the processor; of whole processes (`orvseal`), and where it says so, of the clock. Ratios are throughput of",
             "the library to that of the other in the same round, so that they mean the same on another machine. \"By hand\"",
             "is the ratio that a plain loop around the bare dependency reaches which does what the library cannot leave",
             "out either: it reads the source before it encrypts, and asks for the size of an array before it touches it.",
             ""]
    lines += [f"- {datetime.date.today()}", *machine(), f"- files in `{tempfile.gettempdir()}`", ""]
    if draw(rows, folder):
        lines += ["![Ratios](benchmarks.svg)", ""]
    lines += comparison_table(rows) + [""]
    if errors:
        lines += ["Not measured: " + "; ".join(f"{subject} / {variant}: {error}" for (subject, variant), error
                                               in sorted(errors.items())) + ".", ""]
    lines += [*derived_table(samples, memory), "", "## How cost grows", "", *growth_table(samples, memory), ""]
    with open(notes) as file:
        lines += file.read().splitlines()
    with open(folder + "/benchmarks.md", "w") as file:
        file.write("\n".join(lines) + "\n")


if __name__ == "__main__":  # compare.py imports it
    main()
