#!/usr/bin/env python3
"""`kelvo apply` beside the same with NumPy and beside `dd`, into one directory:

    bench/apply_bench.py KELVO APPLY_FRAMES [rounds [directory]]

A recording of 400 frames (20 for a single round) of 640 x 512 with its journal is corrected with a set of gains and offsets. Kelvo is measured as a whole process, which
also checks each frame against its checksum and writes the journal of the new ones. NumPy reads and writes mapped files, without a journal, and its
process runs already. `dd` copies the recording. All end with the result on the disk. Rounds go in turn; each figure is the median of the rounds'
ratios. The calculation alone is one frame in memory. The frames of both are compared."""
import os
import shutil
import subprocess
import sys
import tempfile
import time

import numpy as np

HEADER, BEFORE, PIXELS = 512, 80, 640 * 512
FRAME = np.dtype([("before", "u1", BEFORE), ("pixels", "<i2", PIXELS)])


def seconds(work):
    start = time.perf_counter()
    work()
    return time.perf_counter() - start


def median(values):
    return sorted(values)[len(values) // 2]


def ratio(a, b):
    return median([x / y for x, y in zip(a, b)])


class Correction:
    """Gathered, less the offset, over the gain, truncated. The lists are made ready once, in the order of the image."""

    def __init__(self, directory):
        self.table = np.fromfile(directory + "/warm.dcm", "<u4").astype(np.intp)
        self.offset = np.fromfile(directory + "/warm.off", "<i2")[self.table].astype(np.int32)
        self.gain = np.fromfile(directory + "/warm.gai", "<f4")[self.table].astype(np.float64)
        self.gathered = np.empty(PIXELS, np.int16)
        self.difference = np.empty(PIXELS, np.int32)
        self.quotient = np.empty(PIXELS, np.float64)

    def usual(self, raw, result):
        result[:] = (raw[self.table] - self.offset) / self.gain  # an assignment truncates

    def sparing(self, raw, result):
        """Into memory that is taken once."""
        np.take(raw, self.table, out=self.gathered, mode="clip")
        np.subtract(self.gathered, self.offset, out=self.difference)
        np.divide(self.difference, self.gain, out=self.quotient)
        result[:] = self.quotient


def apply_numpy(directory, correct):
    path = directory + "/numpy.seq"
    frames = np.memmap(directory + "/raw.seq", FRAME, "r", HEADER)
    with open(directory + "/raw.seq", "rb") as source, open(path, "wb") as file:
        file.write(source.read(HEADER))
        file.truncate(HEADER + frames.nbytes)
    corrected = np.memmap(path, FRAME, "r+", HEADER)
    for frame, out in zip(frames, corrected):
        out["before"] = frame["before"]
        correct(frame["pixels"], out["pixels"])
    corrected.flush()


def remove(*paths):
    for path in paths:
        if os.path.exists(path):
            os.remove(path)


def main():
    kelvo, apply_frames = sys.argv[1:3]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 9
    directory = tempfile.mkdtemp(prefix="kelvo-bench-", dir=sys.argv[4] if len(sys.argv) > 4 else None)
    try:
        measure(kelvo, apply_frames, rounds, directory)
    finally:
        shutil.rmtree(directory)


def measure(kelvo, apply_frames, rounds, directory):
    raw, own, other, copy = (f"{directory}/{name}" for name in ("raw.seq", "kelvo.seq", "numpy.seq", "copy"))
    frames = 400 if rounds > 1 else 20
    subprocess.run([apply_frames, "make", directory, str(frames)], check=True)
    correction = Correction(directory)
    result = np.empty(PIXELS, np.int16)
    frame = np.array(np.memmap(raw, FRAME, "r", HEADER)[0]["pixels"])
    ways = {"NumPy": correction.usual, "NumPy, sparing": correction.sparing}
    times = {name: [] for name in ("kelvo", "dd", "kelvo frame", *ways, *(way + " frame" for way in ways))}
    for _ in range(rounds):
        remove(own, own + ".frames", copy)
        run = [kelvo, "apply", "--set", directory + "/warm.cal", raw, own]
        times["kelvo"].append(seconds(lambda: subprocess.run(run, check=True, stderr=subprocess.DEVNULL)))
        for name, correct in ways.items():
            remove(other)
            times[name].append(seconds(lambda: apply_numpy(directory, correct)))
        dd = ["dd", "if=" + raw, "of=" + copy, "bs=4M", "conv=fdatasync", "status=none"]
        times["dd"].append(seconds(lambda: subprocess.run(dd, check=True)))
        told = subprocess.run([apply_frames, "correct", directory, "30"], check=True, capture_output=True, text=True).stdout
        times["kelvo frame"].append(float(told) / 1e6)
        for name, correct in ways.items():
            correct(frame, result)
            times[name + " frame"].append(median([seconds(lambda: correct(frame, result)) for _ in range(30)]))
    pixels = [np.memmap(path, FRAME, "r", HEADER)["pixels"] for path in (own, other)]
    assert np.array_equal(*pixels), "the two don't agree"
    size = os.path.getsize(raw) / 1e6
    print(f"kelvo apply, {frames} frames: {median(times['kelvo']) * 1e3:.0f} ms, {size / median(times['kelvo']):.0f} MB/s")
    for way in ways:
        print(f"{way}: {median(times[way]) * 1e3:.0f} ms, {ratio(times[way], times['kelvo']):.2f} x (at least 4)")
    print(f"dd: {median(times['dd']) * 1e3:.0f} ms; kelvo apply takes {ratio(times['kelvo'], times['dd']):.2f} x (at most 1.5)")
    print(f"the correction of a frame alone: {median(times['kelvo frame']) * 1e6:.0f} us")
    for way in ways:
        print(f"{way}: {median(times[way + ' frame']) * 1e6:.0f} us, {ratio(times[way + ' frame'], times['kelvo frame']):.2f} x (at least 4)")


main()
