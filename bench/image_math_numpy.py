#!/usr/bin/env python3
"""The weighted sum of two frames of 640 x 512 counts beside the same with NumPy, in turn:

    bench/image_math_numpy.py IMAGE_MATH_BENCH [rounds]

NumPy takes the usual expression, and the same into memory that is taken once. All are in double and truncate. Each figure is the median of
the rounds' ratios. The results are compared."""
import subprocess
import sys
import tempfile
import time

import numpy as np

PIXELS = 640 * 512
C1, C2, C3 = np.float64(np.float32(1.25)), np.float64(np.float32(-0.7)), np.float64(np.float32(100.5))  # as in the program


def usual(first, second):
    return (C1 * first + C2 * second + C3).astype(np.int64).astype(np.int16)


class Sparing:
    """Into memory that is taken once."""

    def __init__(self):
        self.sum, self.product = np.empty(PIXELS), np.empty(PIXELS)
        self.whole, self.result = np.empty(PIXELS, np.int32), np.empty(PIXELS, np.int16)

    def __call__(self, first, second):
        np.multiply(first, C1, out=self.sum)
        np.multiply(second, C2, out=self.product)
        np.add(self.sum, self.product, out=self.sum)
        np.add(self.sum, C3, out=self.sum)
        self.whole[:] = self.sum  # an assignment truncates
        self.result[:] = self.whole
        return self.result


def median(values):
    return sorted(values)[len(values) // 2]


def microseconds(work):
    start = time.perf_counter()
    work()
    return (time.perf_counter() - start) * 1e6


def main():
    program = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 15
    random = np.random.default_rng(1)
    frames = [random.integers(-32768, 32768, PIXELS).astype(np.int16) for _ in range(2)]
    ways = {"NumPy": usual, "NumPy, memory taken once": Sparing()}
    ratios = {name: [] for name in ways}
    with tempfile.TemporaryDirectory(prefix="kelvo-bench-") as directory:
        paths = [f"{directory}/{name}" for name in ("first", "second", "result")]
        for frame, path in zip(frames, paths):
            frame.tofile(path)
        for _ in range(rounds):
            told = subprocess.run([program, *paths, "30"], check=True, capture_output=True, text=True).stdout
            for name, way in ways.items():
                ratios[name].append(median([microseconds(lambda: way(*frames)) for _ in range(10)]) / float(told))
        result = np.fromfile(paths[2], np.int16)
    for name, way in ways.items():
        assert np.array_equal(result, way(*frames)), "the two don't agree"
        print(f"{name}: {median(ratios[name]):.1f} x (at least 10)")


main()
