#!/usr/bin/env python3
"""What examples/first-light.lua left, read by NumPy, astropy and Python's csv, and held against what stood on the screen.

  first_light_test.py OUT        OUT: the directory of that run
"""
import configparser
import csv
import json
import pathlib
import subprocess
import sys
import unittest

import numpy as np
from astropy.io import fits

OUT = pathlib.Path(sys.argv[1]).resolve()
ROWS, COLUMNS = 256, 320
FIRST = 100  # of the exported frames in the recording


def seen(name, frame):
    """The counts of pixel(x, y) when that frame was on view."""
    return np.fromfile(OUT / f"{name}.{frame}.seen", "<i2").reshape(ROWS, COLUMNS)


def celsius(counts):
    """The line through the two sources of the calibration, rounded to a single once."""
    read = configparser.ConfigParser()
    read.read_string((OUT / "data/morning.cal").read_text("latin-1"))
    of = read["Calibration"]
    cold, hot = float(of["IntensityCold"]), float(of["IntensityHot"])
    cold_degrees, hot_degrees = float(of["TemperatureCold"]), float(of["TemperatureHot"])
    return ((hot_degrees - cold_degrees) * (counts.astype(float) - cold) / (hot - cold) + cold_degrees).astype("f4")


def figures(name):
    lines = (OUT / name).read_text("utf-8").splitlines()
    notes = dict(line[2:].split(": ", 1) for line in lines if line.startswith("# "))
    return notes, list(csv.DictReader(line for line in lines if not line.startswith("#")))


def printed(beginning):
    for line in (OUT / "first_light.jsonl").read_text("utf-8").splitlines():
        told = json.loads(line)
        if told["kind"] == "print" and told["text"].startswith(beginning):
            return told["text"]
    raise AssertionError(beginning)


class Left(unittest.TestCase):
    def recording(self):
        """The frames of even.seq: behind 512 bytes, each behind 80 of its own."""
        stored = np.fromfile(OUT / "even.seq", np.uint8)[512:].reshape(-1, 80 + 2 * ROWS * COLUMNS)
        return np.ascontiguousarray(stored[:, 80:]).view("<i2").reshape(-1, ROWS, COLUMNS)

    def test_the_array_holds_the_counts_of_the_screen(self):
        array = np.load(OUT / "scene.npy")
        self.assertEqual((array.dtype, array.shape), (np.dtype("<i2"), (1, ROWS, COLUMNS)))
        np.testing.assert_array_equal(array[0], seen("scene.npy", 0))
        self.assertGreater(np.ptp(array), 500)  # a scene
        about = json.loads((OUT / "scene.json").read_text())
        self.assertEqual((about["form"], about["unit"], pathlib.Path(about["source"]).name), ("counts", "Counts", "scene.img"))

    def test_the_cube_holds_the_degrees_of_the_screen(self):
        with fits.open(OUT / "even.fits", checksum=True) as cube:  # a checksum that is wrong is a warning, and those are errors here
            frames, mask, table = cube[0].data, cube["MASK"].data != 0, cube["FRAMES"].data
            self.assertEqual((frames.shape, frames.dtype.itemsize, cube[0].header["BUNIT"]), ((50, ROWS, COLUMNS), 4, "deg C"))
            for frame in (0, 25, 49):
                shown = seen("even.fits", frame)
                np.testing.assert_array_equal(shown, self.recording()[FIRST + frame])
                np.testing.assert_array_equal(frames[frame].astype("f4")[~mask], celsius(shown)[~mask])
            np.testing.assert_array_equal(np.isnan(frames).all(axis=0), mask)
            np.testing.assert_array_equal(np.isnan(frames).any(axis=0), mask)
            self.assertIn(f"{mask.sum()} bad detectors", printed("even.fits"))
            self.assertTrue(0.01 < mask.mean() < 0.03)
            # A frame each 20.48 ms, the first one 100 frames after the recording's.
            np.testing.assert_allclose(table["SECONDS"], 0.02048 * np.arange(FIRST, FIRST + 50), atol=1e-6)
            self.assertEqual(table["LOSTBYBOARD"].sum() + table["LOSTBYRING"].sum(), 0)
            self.assertTrue(cube[0].header["DATE-OBS"].startswith("2024-01-01T12:00:1"))

    def test_the_trace_is_that_of_the_recording(self):
        notes, rows = figures("trace.csv")
        frames = self.recording()
        self.assertEqual((len(rows), notes["frames traced"], notes["gaps"]), (len(frames), str(len(frames)), "0"))
        for name, part in (("spot", frames[:, 64:80, 96:112]), ("ground", frames[:, 4:20, 4:36])):
            part = part.reshape(len(frames), -1).astype(float)
            for what, values in (("mean", part.mean(axis=1)), ("deviation", part.std(axis=1, ddof=1)), ("minimum", part.min(axis=1)),
                                 ("maximum", part.max(axis=1))):
                np.testing.assert_allclose([float(row[f"{name} {what}"]) for row in rows], values, rtol=1e-12, err_msg=f"{name} {what}")
        np.testing.assert_allclose([float(row["seconds"]) for row in rows], 0.02048 * np.arange(len(rows)), atol=1e-6)

    def test_the_noise_is_beside_the_truth(self):
        notes, rows = figures("netd.csv")
        self.assertEqual((len(rows), notes["frames"]), (ROWS * COLUMNS, "64"))
        netd = np.array([float(row["netd_mK"] or "nan") for row in rows]).reshape(ROWS, COLUMNS)
        told = printed("NETD").split()
        self.assertEqual(told[2], f"{np.nanmedian(netd):.3f}")
        # The median of chi with 63 degrees of freedom over sqrt(63) is 0.9947.
        self.assertAlmostEqual(np.nanmedian(netd) / float(told[told.index("noise") + 1]), 0.9947, delta=0.002)
        image = np.fromfile(OUT / "netd.img", "<f4", offset=512).reshape(ROWS, COLUMNS)
        np.testing.assert_allclose(image, netd, rtol=1e-6)
        self.assertEqual(int(notes["bad pixels left out"]), np.isnan(netd).sum())

    def test_the_pictures_are_pictures(self):
        for name in ("netd.png", "trace.png"):
            told = subprocess.run(["identify", "-format", "%m %w %h %k", OUT / name], capture_output=True, text=True, check=True).stdout.split()
            self.assertEqual(told[0], "PNG")
            self.assertTrue(int(told[1]) > 300 and int(told[2]) > 200 and int(told[3]) > 2, told)


unittest.main(argv=sys.argv[:1], verbosity=2, warnings="error")
