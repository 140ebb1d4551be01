#!/usr/bin/env python3
"""`kelvo export` beside `dd` of the same bytes, into one directory:

    bench/export_bench.py KELVO [rounds [directory]]

A recording of 400 frames (20 for a single round) of 640 x 512 counts is exported in each format. Kelvo is measured as a whole process; `dd` copies the
recording. All end with the result on the disk. Rounds go in turn, `dd` before each export; each figure is the median of the rounds' ratios. What was
written is read back and compared."""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time

import numpy as np

COLUMNS, ROWS, HEADER = 640, 512, 512
FORMATS = [("npy", 1.3), ("tiff", 1.3), ("fits", None), ("hdf5", None)]


def seconds(work):
    start = time.perf_counter()
    work()
    return time.perf_counter() - start


def median(values):
    return sorted(values)[len(values) // 2]


def make(path, frames):
    head = bytearray(HEADER)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", COLUMNS), (4, "<h", ROWS), (6, "<h", 2), (40, "<h", 8), (42, "<I", frames)]:
        struct.pack_into(kind, head, place, value)
    with open(path, "wb") as file:
        file.write(head)
        for frame in range(frames):
            file.write((np.arange(COLUMNS * ROWS) * 7 + frame).astype("<u2").tobytes())
        file.flush()
        os.fsync(file.fileno())


def bytes_of_frames(path, name, frames):
    """Where the pixels stand in each format is looked up in the file itself."""
    size = COLUMNS * ROWS * 2
    with open(path, "rb") as file:
        data = file.read()
    if name == "npy":
        return data[-frames * size:]
    if name == "tiff":
        found, offset = [], struct.unpack_from("<I", data, 4)[0]
        while offset:
            entries = struct.unpack_from("<H", data, offset)[0]
            tags = {tag: value for tag, _, _, value in (struct.unpack_from("<HHII", data, offset + 2 + 12 * i) for i in range(entries))}
            found.append(data[tags[273]:tags[273] + size])
            offset = struct.unpack_from("<I", data, offset + 2 + 12 * entries)[0]
        return b"".join(found)
    if name == "fits":
        end = next(at for at in range(0, len(data), 80) if data[at:at + 80] == b"END".ljust(80))
        start = (end // 2880 + 1) * 2880
        return np.frombuffer(data, ">i2", frames * size // 2, start).astype("<i2").tobytes()
    return None


def main():
    kelvo = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 9
    frames = 400 if rounds > 1 else 20
    directory = tempfile.mkdtemp(prefix="kelvo-bench-", dir=sys.argv[3] if len(sys.argv) > 3 else None)
    try:
        source, copy = directory + "/run.seq", directory + "/copy"
        make(source, frames)
        times = {name: [] for name, _ in FORMATS}
        ratios = {name: [] for name, _ in FORMATS}
        for _ in range(rounds):
            for name, _ in FORMATS:
                out = f"{directory}/out.{name}"
                for path in (copy, out, directory + "/out.json"):
                    if os.path.exists(path):
                        os.remove(path)
                dd = ["dd", "if=" + source, "of=" + copy, "bs=4M", "conv=fsync", "status=none"]
                beside = seconds(lambda: subprocess.run(dd, check=True))
                run = [kelvo, "export", "--to", name, source, out]
                times[name].append(seconds(lambda: subprocess.run(run, check=True, stderr=subprocess.DEVNULL)))
                ratios[name].append(times[name][-1] / beside)
        with open(source, "rb") as file:
            expected = file.read()[HEADER:]
        for name, most in FORMATS:
            written = bytes_of_frames(f"{directory}/out.{name}", name, frames)
            assert written is None or written == expected, f"{name} doesn't hold the frames"
            limit = f" (at most {most})" if most else ""
            rate = len(expected) / 1e6 / median(times[name])
            print(f"{name}: {median(times[name]) * 1e3:.0f} ms, {rate:.0f} MB/s, {median(ratios[name]):.2f} x dd{limit}")
    finally:
        shutil.rmtree(directory)


main()
