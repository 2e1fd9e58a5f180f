#!/usr/bin/env python3
"""Measures the time and memory of whole processes: the sample client compared with the openssl program, on real files.

usage: processes.py BUILD REPETITIONS MEBIBYTES OUT

Writes JSON rows {"subject", "variant", "seconds", ...} to OUT. Variants alternate, so that other load on the
machine affects all of them alike.
"""
import json
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time

PASSWORD = "correct horse battery staple"
MIB = 1024 * 1024


def write_file(path, size):
    """Random bytes, so that no layer below can compress or deduplicate them."""
    block = os.urandom(MIB)
    with open(path, "wb") as file:
        while size > 0:
            file.write(block[:min(size, MIB)])
            size -= MIB


def make_source(directory, mebibytes):
    """Four large files with 95 % of the bytes; small files with the rest."""
    os.makedirs(directory + "/many")
    for number in range(4):
        write_file(f"{directory}/large{number}", mebibytes * MIB * 19 // 80)
    for number in range(mebibytes * MIB // 20 // (128 * 1024)):
        write_file(f"{directory}/many/{number:05}", 128 * 1024)


def shell(command):
    subprocess.run(["bash", "-euc", command], check=True, env={**os.environ, "PASSWORD": PASSWORD})


def timed(work):
    begin = time.monotonic()
    work()
    return time.monotonic() - begin


def client(program, *arguments):
    subprocess.run([program, *arguments], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "ORVSEAL_PASSWORD": PASSWORD})


def openssl_files(direction, source, target):
    """One process per file, as a script would do it."""
    option = "-d" if direction == "open" else "-e"
    shell(f"cd {source}; find . -type d -exec mkdir -p {target}/{{}} \\; ; find . -type f -print0 |"
          f" while IFS= read -r -d '' f; do openssl enc {option} -aes-256-cbc -pbkdf2"
          f" -pass env:PASSWORD -in \"$f\" -out \"{target}/$f\"; done")


def openssl_tar(direction, source, target):
    """One stream of all files, with a key that costs as much as that of orvseal. Only sealing is measured."""
    del direction
    shell(f"mkdir {target}; tar -C {source} -c . | openssl enc -e -aes-256-cbc -pbkdf2 -md sha1 -iter 1300000"
          f" -pass env:PASSWORD -out {target}/archive")


def md5_only(source, target):
    """A lower bound for any program that computes the MD5 of all bytes on two processors."""
    shell(f"mkdir {target}; find {source} -type f -print0 | xargs -0 -n 1 -P 2 md5sum >{target}/sums")


def measure(orvseal, repetitions, mebibytes, work):
    source, vault, sealed = work + "/source", work + "/vault", work + "/sealed"
    make_source(source, mebibytes)
    target = work + "/target"
    runs = [
        ("seal", "orvCore", lambda: client(orvseal, "seal", "--jobs", "2", source, target)),
        ("seal", "openssl enc, file by file", lambda: openssl_files("seal", source, target)),
        ("seal", "tar into openssl enc", lambda: openssl_tar("seal", source, target)),
        ("seal", "md5sum, two processes", lambda: md5_only(source, target)),
        ("open", "orvCore", lambda: client(orvseal, "open", "--jobs", "2", vault, target)),
        ("open", "openssl enc, file by file", lambda: openssl_files("open", sealed, target)),
    ]
    # Seals the unchanged tree into the vault of the first round again.
    def second_run():
        client(orvseal, "seal", "--jobs", "2", source, vault)

    # All rounds open what the first round sealed.
    to_open = {("seal", "orvCore"): vault, ("seal", "openssl enc, file by file"): sealed}
    rows = []
    for _ in range(repetitions):
        for command, variant, run in runs:
            seconds = timed(run)
            kept = to_open.get((command, variant), target)
            if os.path.exists(kept):
                shutil.rmtree(target)
            else:
                os.rename(target, kept)
            rows.append({"subject": f"orvseal {command} of {mebibytes} MiB", "variant": variant, "seconds": seconds})
        rows.append({"subject": f"orvseal seal of {mebibytes} MiB", "variant": "orvCore, second run, unchanged tree",
                     "seconds": timed(second_run)})
    return rows


def peak_memory(run):
    """Peak resident memory, in MiB, of the largest process that `run` starts. Measured in a child process, so this
    script's own size (about 11 MiB) is a lower bound."""
    reader, writer = os.pipe()
    child = os.fork()
    if child == 0:
        run()
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
        os.write(writer, str(peak).encode())
        os._exit(0)
    os.close(writer)
    peak = int(os.read(reader, 64))
    os.close(reader)
    os.waitpid(child, 0)
    return peak / (MIB if sys.platform == "darwin" else 1024)


def stream_memory(bench, sizes):
    """Peak memory by the length of a stream that is encrypted in chunks."""
    rows = []
    for size in sizes:
        subject = f"growth: readData of {size} MiB"
        memory = peak_memory(lambda: subprocess.run(
            [bench, f"--benchmark_filter=^{subject}/", "--benchmark_min_time=0.001"], check=True,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
        rows.append({"subject": subject, "variant": "orvCore", "memory": memory})
    return rows


def growth(orvseal, work, sizes, counts):
    """Time and peak memory of one run each, by the size of one file and by the number of files."""
    rows = []

    def add(what, source):
        vault, target = work + "/vault", work + "/target"
        for arguments in (["seal", "--jobs", "2", source, vault], ["open", "--jobs", "2", vault, target]):
            begin = time.monotonic()
            memory = peak_memory(lambda: client(orvseal, *arguments))
            rows.append({"subject": f"growth: orvseal {arguments[0]} of {what}", "variant": "orvCore",
                         "seconds": time.monotonic() - begin, "memory": memory})
        for directory in (source, vault, target):
            shutil.rmtree(directory)

    for size in sizes:
        source = work + "/source"
        os.makedirs(source)
        write_file(source + "/file", size * MIB)
        add(f"one file of {size} MiB", source)
    for count in counts:
        source = work + "/source"
        os.makedirs(source)
        for number in range(count):
            write_file(f"{source}/{number}", 100)
        add(f"{count} small files", source)
    return rows


def main():
    build, repetitions, mebibytes, out = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4]
    orvseal = build + "/examples/orvseal/orvseal"
    quick = mebibytes < 1024
    with tempfile.TemporaryDirectory() as work:
        rows = measure(orvseal, repetitions, mebibytes, work)
    with tempfile.TemporaryDirectory() as work:
        sizes, counts = ([16, 64], [100, 400]) if quick else ([64, 256, 1024], [1000, 4000, 16000])
        rows += growth(orvseal, work, sizes, counts)
    rows += stream_memory(build + "/benchmarks/orvBench", [1, 16] if quick else [1, 16, 256, 4096])
    with open(out, "w") as file:
        json.dump(rows, file, indent=1)


main()
