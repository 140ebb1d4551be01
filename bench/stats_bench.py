#!/usr/bin/env python3
"""`kelvo stats` beside `cat` and `dd` of the same file:

    bench/stats_bench.py KELVO [rounds [directory]]

A file of 4000 frames (100 for a single round) of 640 x 512 is measured, the whole picture and 16 regions of 64 x 64; the others only read it. Kelvo is measured as a
whole process, with its table. Once the file comes from the disk (the system is asked to forget it before each run), and once from memory, where memory holds it.
Rounds go in turn; each figure is the median of the rounds' ratios, of the time that passed and of the processor's time, which other work on the machine doesn't
lengthen as much."""
import json
import os
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import time

import numpy as np

COLUMNS, ROWS = 640, 512


def costs(command):
    """Seconds that passed, and of the processor."""
    before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    passed, after = time.perf_counter() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
    return passed, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def forget(path):
    """The file's pages leave the system's memory."""
    with open(path, "rb") as file:
        os.fsync(file.fileno())
        os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)


def median(values):
    return sorted(values)[len(values) // 2]


def ratio(a, b, which):
    return median([x[which] / max(y[which], 1e-3) for x, y in zip(a, b)])


def make(path, frames):
    head = bytearray(512)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", COLUMNS), (4, "<h", ROWS), (6, "<h", 2), (24, "<h", -10000), (40, "<h", 8), (42, "<I", frames)]:
        struct.pack_into(kind, head, place, value)
    drawn = np.random.default_rng(1).integers(0, 1 << 14, (8, ROWS, COLUMNS)).astype("<i2")
    with open(path, "wb") as file:
        file.write(head)
        for frame in range(frames):
            file.write(drawn[frame % len(drawn)].tobytes())


def main():
    kelvo, rounds = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 5
    directory = tempfile.mkdtemp(prefix="stats_bench.", dir=sys.argv[3] if len(sys.argv) > 3 else None)
    try:
        path, frames = os.path.join(directory, "run.seq"), 4000 if rounds > 1 else 100
        make(path, frames)
        regions = os.path.join(directory, "16.regions")
        with open(regions, "w") as file:
            json.dump({"format": "Kelvo regions", "version": 1, "columns": COLUMNS, "rows": ROWS,
                       "regions": [{"name": f"R{i + 1}", "shape": "rectangle", "x1": 128 * (i % 4), "y1": 128 * (i // 4), "x2": 128 * (i % 4) + 63, "y2": 128 * (i // 4) + 63}
                                   for i in range(16)]}, file)
        commands = {"stats": [kelvo, "stats", path], "16 regions": [kelvo, "stats", "--region", regions, path],
                    "cat": ["cat", path], "dd": ["dd", f"if={path}", "of=/dev/null", "bs=1M"]}
        megabytes = os.path.getsize(path) / 1e6
        print(f"{frames} frames of {COLUMNS} x {ROWS}, {megabytes:.0f} MB, median of {rounds} rounds")
        for source in ("disk", "memory"):
            taken = {name: [] for name in commands}
            costs(commands["cat"])
            for _ in range(rounds):
                for name, command in commands.items():
                    if source == "disk":
                        forget(path)
                    taken[name].append(costs(command))
            for name in ("stats", "16 regions"):
                for peer in ("cat", "dd"):
                    passed, processor = (ratio(taken[name], taken[peer], which) for which in (0, 1))
                    print(f"from {source}: {name} / {peer}: {passed:.2f} of the time that passed, {processor:.2f} of the processor's")
    finally:
        shutil.rmtree(directory)


if __name__ == "__main__":
    main()
