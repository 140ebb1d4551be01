#!/usr/bin/env python3
"""The calculation of calibration_bench with NumPy, without the substitution of bad detectors: median of 40 rounds, or as many as the
first argument says."""
import sys
import time

import numpy as np

N = 640 * 512
random = np.random.default_rng(640)
low_mean = 7500 + 80 * random.normal(size=N)
response = np.where(random.integers(0, 50, N) == 0, 0, 1250 * (1 + 0.012 * random.normal(size=N)))
low_sum, high_sum = (30 * low_mean).astype(np.int32), (30 * (low_mean + response)).astype(np.int32)
noise = (5 + 0.6 * random.normal(size=N)).astype(np.float32)


def calculate():
    low, high = (low_sum + 15) // 30, (high_sum + 15) // 30
    noise_list = np.clip((noise * 20 + 0.5).astype(np.int32), 0, 16383).astype(np.int16)
    delta = high - low
    responds = abs(delta) > 25
    mean_low, mean_delta = np.float32(low[responds].mean()), np.float32(delta[responds].mean())
    noise[responds].mean(), noise[responds].std()
    response = abs(delta / mean_delta)
    good = responds & (response <= 1.22) & (response >= 0.78) & (abs(low - mean_low) <= 400) & (noise_list <= 180)
    gains = np.where(good, delta / mean_delta, 0).astype(np.float32)
    offsets = np.where(good, np.rint(low - mean_low * gains), 0).astype(np.int16)
    return gains[good].std(), offsets[good].std()


times = []
for _ in range(int(sys.argv[1]) if len(sys.argv) > 1 else 40):
    start = time.perf_counter()
    calculate()
    times.append(time.perf_counter() - start)
print(f"NumPy, 640 x 512: {sorted(times)[len(times) // 2] * 1e6:.0f} us")
