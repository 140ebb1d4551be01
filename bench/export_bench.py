#!/usr/bin/env python3
"""`kelvo export` beside `dd` of the same bytes, into one directory:

    bench/export_bench.py KELVO [rounds [directory]]

A recording of 400 frames (20 for a single round) of 640 x 512 counts is exported in each format. Kelvo is measured as a whole process; `dd` copies the
recording. All end with the result on the disk. Rounds go in turn, `dd` before each export; each figure is a median of the rounds' ratios, of the time that
passed and of the processor's time, which other work on the machine doesn't lengthen as much; beside them the ratio of the shortest times. What was written
is read back and compared."""
import os
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import time

import numpy as np

COLUMNS, ROWS, HEADER = 640, 512, 512
FORMATS = [("npy", 1.3), ("tiff", 1.3), ("fits", None), ("hdf5", None)]


def seconds(command):
    """That passed, and of the processor."""
    before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
    subprocess.run(command, check=True, stderr=subprocess.DEVNULL)
    passed, after = time.perf_counter() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
    return passed, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


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
        ours = {name: [] for name, _ in FORMATS}
        beside = {name: [] for name, _ in FORMATS}
        for _ in range(rounds):
            for name, _ in FORMATS:
                out = f"{directory}/out.{name}"
                for path in (copy, out, directory + "/out.json"):
                    if os.path.exists(path):
                        os.remove(path)
                dd = ["dd", "if=" + source, "of=" + copy, "bs=4M", "conv=fsync", "status=none"]
                beside[name].append(seconds(dd))
                ours[name].append(seconds([kelvo, "export", "--to", name, source, out]))
        with open(source, "rb") as file:
            expected = file.read()[HEADER:]
        for name, most in FORMATS:
            written = bytes_of_frames(f"{directory}/out.{name}", name, frames)
            assert written is None or written == expected, f"{name} doesn't hold the frames"
            limit = f" (at most {most})" if most else ""
            passed, processor = (median([a[which] / max(b[which], 1e-3) for a, b in zip(ours[name], beside[name])]) for which in (0, 1))
            shortest, of_dd = min(ours[name])[0], min(beside[name])[0]
            print(f"{name}: {passed:.2f} x dd of the time that passed{limit}, {processor:.2f} x of the processor's; "
                  f"the shortest {shortest * 1e3:.0f} ms, {shortest / of_dd:.2f} x dd's, {len(expected) / 1e6 / shortest:.0f} MB/s")
    finally:
        shutil.rmtree(directory)


main()
