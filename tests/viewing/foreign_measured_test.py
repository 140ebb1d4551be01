#!/usr/bin/env python3
"""Frames that NumPy, tifffile and astropy have written are viewed, measured and calibrated as those of a sequence of Kelvo's own; expected figures are NumPy's.

  foreign_measured_test.py KELVO OUT      OUT: emptied
"""
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

import numpy as np
import tifffile
from astropy.io import fits

KELVO, OUT = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
ROWS, COLUMNS, FRAMES = 40, 64, 6
REGION = (10, 8, 29, 23)  # columns and rows of the corners, both included
LINE = (3, 5, 60, 5)
SETTINGS = f"[Camera.7]\nDescription=a laboratory's\nVroi={ROWS}\nHroi={COLUMNS}\nDecomScheme=2\n"
MEASURE = """
answer("ok")  -- no camera
drop(arg[1])
assert(not box(), box() and box().text)
local status_of_view = status()
key("F7")  -- the second frame
regions{ { name = "r", x1 = 10, y1 = 8, x2 = 29, y2 = 23 } }
local r = stats("r")
print("stats", r.pixels, r.mean, r.deviation, r.min, r.max)
for _, plot in ipairs { { 160, "HISTGRAM", { [309] = 19, [311] = 15, [314] = 20, [316] = 16 } }, { 161, "LINEPLOT", { [402] = 3, [405] = 5, [408] = 60, [411] = 5 } } } do
  command(plot[1])
  assert(dialog() == plot[2], dialog())
  for id, place in pairs(plot[3]) do set(id, tostring(place)) end
  wait(600)
  os.remove(datadir() .. "/" .. plot[2] .. ".csv")
  press(1606)
  choose(datadir() .. "/" .. plot[2] .. ".csv")
  assert(not box(), box() and box().text)
  cancel()
end
print("status", status_of_view)
"""


def sequence(frames):
    head = bytearray(512)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", COLUMNS), (4, "<h", ROWS), (6, "<h", 2), (24, "<h", -10000), (30, "<h", -10000), (40, "<h", 8),
                               (42, "<I", len(frames))]:
        struct.pack_into(kind, head, place, value)
    return bytes(head) + frames.astype("<i2").tobytes()


def write(frames, path):
    """In the format of the path's ending."""
    if path.suffix == ".npy":
        np.save(path, frames)
    elif path.suffix == ".tif":
        tifffile.imwrite(path, frames, photometric="minisblack")
    elif path.suffix == ".fits":
        fits.PrimaryHDU(frames).writeto(path)
    else:
        path.write_bytes(sequence(frames))


def csv_rows(path):
    return [line.split(",") for line in path.read_text().splitlines() if not line.startswith("#")]


class ForeignMeasured(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "data").mkdir(parents=True)
        (OUT / "data/camera.ini").write_text(SETTINGS)
        (OUT / "data/nearccw.prs").write_text("row,col\n0,-1\n0,1\n")
        (OUT / "data/platform.ini").write_text("[Ports]\nCOM2=none\n[Board]\nBoard=none\n")
        (OUT / "measure.lua").write_text(MEASURE)
        random = np.random.default_rng(3)
        response = random.normal(1, 0.05, (ROWS, COLUMNS))
        response[4, 9] = 0.0002
        self.low, self.high = (np.rint(6000 + random.normal(0, 60, (ROWS, COLUMNS)) + response * counts + 3 * random.standard_normal((FRAMES, ROWS, COLUMNS))).astype("i4")
                               for counts in (0, 1500))

    def kelvo(self, *arguments):
        ran = subprocess.run([KELVO, *arguments], cwd=OUT, capture_output=True, text=True, timeout=120)
        self.assertEqual(ran.returncode, 0, ran.stderr)
        return ran

    def expect_measured(self, path, frames, changes):
        """frames: the counts that are viewed."""
        told = self.kelvo("--offscreen", "--virtual-time", "--data", OUT / "data", "--script", OUT / "measure.lua", "--", path).stdout.splitlines()
        words = dict(line.split("\t", 1) for line in told if "\t" in line)
        left, top, right, bottom = REGION
        inside = frames[1, top:bottom + 1, left:right + 1].astype(float)
        figures = [float(word) for word in words["stats"].split("\t")]
        np.testing.assert_allclose(figures, [inside.size, inside.mean(), inside.std(ddof=1), inside.min(), inside.max()], rtol=1e-12)
        self.assertEqual("less 32768" in words["status"], "less 32768" in changes, words["status"])
        self.assertIn(path.name, words["status"])

        notes = dict(line[2:].split(": ", 1) for line in (OUT / "data/HISTGRAM.csv").read_text().splitlines() if line.startswith("# "))
        self.assertEqual(notes["region"], "columns 10 to 29, rows 8 to 23")
        self.assertEqual(int(notes["samples"]), inside.size)
        self.assertAlmostEqual(float(notes["mean"]), inside.mean(), 2)
        self.assertAlmostEqual(float(notes["deviation"]), inside.std(), 2)  # the histogram divides by n
        bins = {int(row[0]): int(row[-1]) for row in csv_rows(OUT / "data/HISTGRAM.csv")[1:] if int(row[-1]) > 0}
        counts, numbers = np.unique(inside.astype(int), return_counts=True)
        if counts.min() >= 0:  # the bins of the plot begin at 0 counts
            self.assertTrue(bins == dict(zip(counts.tolist(), numbers.tolist())), path)

        x1, y1, x2, _ = LINE
        line = [int(row[3]) for row in csv_rows(OUT / "data/LINEPLOT.csv")[1:]]
        self.assertEqual(line, frames[1, y1, x1:x2 + 1].tolist())

    def test_each_kind_is_viewed_and_measured(self):
        for kind in (".npy", ".tif", ".fits"):
            path = OUT / f"low{kind}"
            write(self.low.astype("i2"), path)
            with self.subTest(path.name):
                self.expect_measured(path, self.low, "")
            path = OUT / f"high{kind}"
            write((self.low + 30000).astype("u2"), path)
            with self.subTest(path.name):
                self.expect_measured(path, self.low + 30000 - 32768, "less 32768")

    def test_each_kind_gives_the_set_of_a_sequence(self):
        sets = {}
        for kind, sample, add in ((".seq", "i2", 0), (".npy", "i2", 0), (".tif", "u2", 0), (".fits", "i2", 0),
                                  (".npy", "u2", 25300), (".tif", "u2", 25300), (".fits", "u2", 25300)):  # of these the high source alone reaches beyond 32767
            name = f"{sample}{add}{kind[1:]}"
            write((self.low + add).astype(sample), OUT / f"low_{name}{kind}")
            write((self.high + add).astype(sample), OUT / f"high_{name}{kind}")
            ran = self.kelvo("calibrate", "--low", f"low_{name}{kind}", "--high", f"high_{name}{kind}", "--tlow", "20", "--thigh", "25", "--data", "data",
                             "--camera", "7", "--out", f"{name}/made.cal" if (OUT / name).mkdir() is None else "")
            self.assertEqual("samples are taken 32768 lower" in ran.stderr, add > 0, ran.stderr)
            sets[name] = {path.name: path.read_bytes() for path in (OUT / name).iterdir() if path.suffix != ".cal"}
        own = sets.pop("i20seq")
        self.assertEqual(sorted(own), ["made.bad", "made.dcm", "made.gai", "made.noi", "made.off"])
        gains = np.frombuffer(own["made.gai"], "<f4").reshape(ROWS, COLUMNS)
        span = self.high.mean(axis=0) - self.low.mean(axis=0)
        good = gains != 0
        self.assertFalse(good[4, 9])
        self.assertGreater(good.sum(), 0.99 * good.size)
        np.testing.assert_allclose(gains[good], span[good] / span.mean(), rtol=2e-3)  # a gain is the response over the mean one
        for name, files in sets.items():
            for list_name, contents in own.items():
                if "25300" not in name or list_name in ("made.bad", "made.dcm", "made.noi"):
                    self.assertTrue(files[list_name] == contents, (name, list_name))
            # Means are whole counts, cut toward zero, which lies elsewhere among counts that are lower: a count in the response.
            lowered = np.frombuffer(files["made.gai"], "<f4").reshape(ROWS, COLUMNS)
            np.testing.assert_allclose(lowered, gains, atol=2 / span.mean(), err_msg=name)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0]])
