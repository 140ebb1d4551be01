#!/usr/bin/env python3
"""The files of a two-point calibration, worked out independently with NumPy.

expected_set.py FRAMES_DIRECTORY OUT_DIRECTORY    reads low.raw and high.raw, writes Last.gai, .off, .noi, .dcm, .bad
                                                  and calibration.txt (the section of the .cal)
expected_set.py --frames OUT_DIRECTORY            draws the frames: kept beside this file, so that they stay as they are
expected_set.py --falling-frames OUT_DIRECTORY    the same for an array whose counts fall with flux, through 0

The camera: 24 rows of 32 detectors, four channels that read a quarter of the line each. Five frames at each source.
"""
import sys
from pathlib import Path

import numpy as np

ROWS, COLUMNS, FRAMES = 24, 32, 5
NOISE_FLOOR, RANGE, MIN_OFFSET, MAX_OFFSET, ALLOWED_NOISE, UNITY_OFFSET = 25, np.float32(0.22), 400, 400, np.float32(30), 8192
PATTERN = [(0, 1), (-1, 0), (0, -1), (1, 0), (-1, 1), (-1, -1), (1, -1), (1, 1)]


def draw_falling_frames(out):
    """Counts about 300 at the low source and -900 at the high one; some detectors rise, some stay, some fall the wrong way far."""
    random = np.random.default_rng(77)
    n = ROWS * COLUMNS
    offset = random.normal(0, 60, n)
    response = random.normal(-1200, 30, n)
    noise = np.full(n, 5.0)
    response[[9, 250]] = 1150            # as strong as the others, and the other way
    response[[31, 400]] = 300            # weak, and the other way
    response[[60, 500]] = 0
    response[[90]] = -2500
    response[[120]] = -24.6              # about the noise floor
    offset[[150]], offset[[180]] = -700, 900
    noise[[600, 601]] = 150
    for name, flux in (("low", 0.0), ("high", 1.0)):
        frames = np.rint(300 + offset + flux * response + random.normal(0, 1, (FRAMES, n)) * noise).astype("<i2")
        (out / f"{name}.raw").write_bytes(frames.tobytes())


def draw_frames(out):
    random = np.random.default_rng(2024)
    n = ROWS * COLUMNS
    offset = random.normal(0, 60, n)
    gain = random.normal(1, 0.02, n)
    noise = np.full(n, 5.0)
    for start, change in ((5, "dead low"), (105, "dead high"), (200, "strong"), (300, "weak"), (400, "low"), (500, "high"),
                          (600, "noisy"), (601, "noisy"), (632, "noisy"), (700, "huge")):
        if change.startswith("dead"):
            gain[start] = 0
            offset[start] = 300 if change == "dead high" else -300
        gain[start] = {"strong": 1.5, "weak": 0.4}.get(change, gain[start])
        offset[start] = {"low": -700, "high": 900}.get(change, offset[start])
        noise[start] = {"noisy": 150, "huge": 2500}.get(change, noise[start])
    for name, level in (("low", 7500), ("high", 8750)):
        signal = 7500 + offset + (level - 7500) * gain
        frames = np.rint(signal + random.normal(0, 1, (FRAMES, n)) * noise).clip(0, 16383).astype("<i2")
        (out / f"{name}.raw").write_bytes(frames.tobytes())


def read_frames(path):
    return np.fromfile(path, "<i2").reshape(FRAMES, ROWS * COLUMNS).astype(np.int64)


def readout_order():
    """Raw index of each image pixel: sample k of channel q stands at 4 k + q of its line."""
    quarter = COLUMNS // 4
    row, column = np.divmod(np.arange(ROWS * COLUMNS), COLUMNS)
    return (row * COLUMNS + 4 * (column % quarter) + column // quarter).astype("<u4")


def mean_of(sums):
    """Half a frame count more, divided toward zero: a mean below zero is cut upward."""
    return np.trunc((sums + FRAMES // 2) / FRAMES).astype(np.int64)


def half_away(values):
    return np.where(values >= 0, np.trunc(values + 0.5), np.trunc(values - 0.5))


def replace(table, bad):
    original = table.copy()
    for i in np.flatnonzero(bad):
        row, column = divmod(int(i), COLUMNS)
        for down, right in PATTERN:
            r, c = row + down, column + right
            if 0 <= r < ROWS and 0 <= c < COLUMNS and not bad[r * COLUMNS + c]:
                table[i] = original[r * COLUMNS + c]
                break
    return table


def main(frames, out):
    low_frames, high_frames = read_frames(frames / "low.raw"), read_frames(frames / "high.raw")
    sums, squares = low_frames.sum(0), (low_frames**2).sum(0).astype(float)
    noise = np.sqrt(abs(squares - sums.astype(float) ** 2 / FRAMES) / (FRAMES - 1)).astype(np.float32)
    low, high = mean_of(sums), mean_of(high_frames.sum(0))
    steps = np.trunc(noise.astype(float) * 20 + 0.5).astype(np.int64)
    steps = ((steps + 32768) % 65536) - 32768
    noise_list = np.clip(np.minimum(steps, 2 * UNITY_OFFSET - 1), 0, None).astype("<i2")

    responds = abs(high - low) > NOISE_FLOOR
    mean_low, mean_high, mean_delta = (np.float32(x[responds].sum() / responds.sum()) for x in (low, high, high - low))
    delta = np.where(responds, high - low, 0)
    ratio = delta / float(mean_delta)  # negative for a detector that answers the other way; its gain keeps the sign
    response = abs(ratio)
    upper, lower = np.float32(float(RANGE) + 1.0), np.float32(abs(1.0 - float(RANGE)))
    good = (delta != 0) & (response <= float(upper)) & (response >= float(lower))
    good &= (low + MIN_OFFSET >= float(mean_low)) & (low - MAX_OFFSET <= float(mean_low))
    good &= noise_list / 20.0 <= float(ALLOWED_NOISE)
    gains = np.where(good, ratio, 0).astype("<f4")
    wanted = np.where(good, low - float(mean_low) * gains.astype(float), 0).astype(np.float32).astype(float)
    offsets = half_away(wanted).astype("<i2")

    table = readout_order()
    bad = gains[table] == 0
    (out / "Last.bad").write_text("".join("%4d,%4d\n" % divmod(int(i), COLUMNS) for i in np.flatnonzero(bad)))
    (out / "Last.gai").write_bytes(gains.tobytes())
    (out / "Last.off").write_bytes(offsets.tobytes())
    (out / "Last.noi").write_bytes(noise_list.tobytes())
    (out / "Last.dcm").write_bytes(replace(table, bad).tobytes())
    (out / "calibration.txt").write_text(
        "[Calibration]\nBadDetFile=Last.bad\nDecomFile=Last.dcm\nGainFile=Last.gai\nOffsetFile=Last.off\nCalType=2\n"
        "CalFile=Last.cal\nDriverNumber=2\nTemperatureCold=20.000000\nTemperatureHot=25.000000\n"
        f"IntensityCold={int(half_away(float(mean_low)))}\nIntensityHot={int(half_away(float(mean_high)))}\n")


if __name__ == "__main__":
    if sys.argv[1] == "--frames":
        draw_frames(Path(sys.argv[2]))
    elif sys.argv[1] == "--falling-frames":
        draw_falling_frames(Path(sys.argv[2]))
    else:
        main(Path(sys.argv[1]), Path(sys.argv[2]))
