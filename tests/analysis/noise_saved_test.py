#!/usr/bin/env python3
"""What a noise measurement saves, read by NumPy and ImageMagick, against the noise that NumPy works out from the frames and the set's files. The frames are raw,
of a file of another program, or corrected; the program runs under a locale with a decimal comma.

  noise_saved_test.py KELVO OUT LOCPATH      OUT: emptied. LOCPATH: where the locale de_DE.UTF-8 lies
"""
import configparser
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

import numpy as np

KELVO, OUT, LOCALES = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
ROWS, COLUMNS, FRAMES = 12, 20, 32
DEAD = (3, 7)  # row, column of the detector that hardly responds
CAMERA = f"[Camera.7]\nDescription=a laboratory's\nVroi={ROWS}\nHroi={COLUMNS}\nDecomScheme=2\n"
MEASURE = """
if box() then answer("ok") end
command(2230)
press(22302)
set(22303, arg[1])
set(22305, arg[2])
set(22307, arg[3])
press(1)
assert(not box(), box() and box().text)
for _, name in ipairs { "netd.csv", "netd.img", "netd.png", "netd.bmp" } do
  press(1606)
  choose(datadir() .. "/" .. name)
  assert(not box(), box() and box().text)
end
print(text(22311))
print(text(22312))
print(text(22313))
press(2)
"""


def sequence(frames):
    head = bytearray(512)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", COLUMNS), (4, "<h", ROWS), (6, "<h", 2), (24, "<h", -10000), (40, "<h", 8), (42, "<I", len(frames))]:
        struct.pack_into(kind, head, place, value)
    return bytes(head) + frames.astype("<i2").tobytes()


class NoiseSaved(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "data").mkdir(parents=True)
        (OUT / "data/camera.ini").write_text(CAMERA)
        (OUT / "data/nearccw.prs").write_text("row,col\n0,-1\n0,1\n")
        (OUT / "data/platform.ini").write_text("[Ports]\nCOM2=none\n[Board]\nBoard=none\n")
        (OUT / "measure.lua").write_text(MEASURE)
        random = np.random.default_rng(5)
        response = random.normal(1, 0.05, (ROWS, COLUMNS))
        response[DEAD] = 0.0002
        offset = random.normal(0, 80, (ROWS, COLUMNS))
        noise = random.uniform(2, 6, (ROWS, COLUMNS))

        def frames(counts):
            return np.rint(6000 + offset + response * counts + noise * random.standard_normal((FRAMES, ROWS, COLUMNS))).astype("i2")
        self.low, self.high = frames(0), frames(1500)
        (OUT / "low.seq").write_bytes(sequence(self.low))
        (OUT / "high.seq").write_bytes(sequence(self.high))
        self.kelvo("calibrate", "--low", "low.seq", "--high", "high.seq", "--tlow", "20", "--thigh", "25.5", "--data", "data", "--camera", "7", "--out", "set.cal")

    def kelvo(self, *arguments):
        ran = subprocess.run([KELVO, *arguments], cwd=OUT, capture_output=True, text=True, timeout=120,
                             env={**os.environ, "LC_ALL": "de_DE.UTF-8", "LOCPATH": str(LOCALES)})
        self.assertEqual(ran.returncode, 0, ran.stderr)
        return ran.stdout.splitlines()

    def measure(self, file, cal):
        told = self.kelvo("--offscreen", "--virtual-time", "--data", OUT / "data", "--script", OUT / "measure.lua", "--", OUT / file, cal and OUT / cal, str(FRAMES))
        table = np.genfromtxt(OUT / "data/netd.csv", delimiter=",", names=True, skip_header=14)
        image = np.fromfile(OUT / "data/netd.img", "<f4", offset=512).reshape(ROWS, COLUMNS)
        return told[-3:], table, image

    def response(self):
        """Counts a degree of the mean response, the gain that each pixel is shown with, and the pixels that are bad, of the set's files alone."""
        cal = configparser.RawConfigParser(strict=False)
        cal.read(OUT / "set.cal", encoding="latin-1")
        keys = cal["Calibration"]
        counts = (int(keys["IntensityHot"]) - int(keys["IntensityCold"])) / (float(keys["TemperatureHot"]) - float(keys["TemperatureCold"]))
        order = np.fromfile(OUT / "set.dcm", "<u4")
        bad = np.zeros((ROWS, COLUMNS), bool)
        for row, column in np.loadtxt(OUT / "set.bad", delimiter=",", dtype=int, ndmin=2):
            bad[row, column] = True
        return counts, np.fromfile(OUT / "set.gai", "<f4")[order].astype(float), order, bad

    def expect(self, measured, deviation, netd, bad):
        told, table, image = measured
        self.assertEqual(len(table), ROWS * COLUMNS)
        np.testing.assert_array_equal(table["row"] * COLUMNS + table["column"], np.arange(ROWS * COLUMNS))
        np.testing.assert_array_equal(np.isnan(table["netd_mK"]), bad.ravel())
        good = ~bad.ravel()
        np.testing.assert_allclose(table["deviation"][good], deviation.ravel()[good], rtol=3e-7)
        np.testing.assert_allclose(table["netd_mK"][good], netd.ravel()[good], rtol=3e-7)
        np.testing.assert_array_equal(image.ravel(), table["netd_mK"].astype("f4"))
        sorted_values = np.sort(netd.ravel()[good])
        rms, percentile = np.sqrt(np.mean(sorted_values ** 2)), sorted_values[int(np.ceil(0.99 * len(sorted_values))) - 1]
        self.assertEqual(told, [f"{np.median(sorted_values):.3f} mK", f"{rms:.3f} mK", f"above {percentile:.3f} mK, up to {sorted_values[-1]:.3f} mK"])
        for name, kind in (("netd.png", "PNG"), ("netd.bmp", "BMP3")):
            is_as = subprocess.run(["identify", "-format", "%m %w %h %k", OUT / "data" / name], capture_output=True, text=True, check=True).stdout.split()
            self.assertEqual(is_as[0], kind)
            self.assertGreater(int(is_as[1]), 600)
            self.assertGreater(int(is_as[3]), 100, "no map of colours")

    def test_raw_frames_with_their_set(self):
        counts, gain, order, bad = self.response()
        self.assertTrue(bad[DEAD])
        self.assertLess(bad.sum(), 5)
        deviation = self.low.reshape(FRAMES, -1).astype(float).std(axis=0, ddof=1)[order]
        measured = self.measure("low.seq", "set.cal")
        self.expect(measured, deviation, 1000 * deviation / (np.abs(gain) * counts), bad)
        notes = dict(line[2:].split(": ", 1) for line in (OUT / "data/netd.csv").read_text().splitlines() if line.startswith("# "))
        self.assertEqual((notes["source"], notes["calibration"], notes["frames"]), (str(OUT / "low.seq"), str(OUT / "set.cal"), str(FRAMES)))
        self.assertEqual(notes["bad pixels left out"], str(bad.sum()))
        self.assertAlmostEqual(float(notes["counts a degree"]), counts, 3)

    def test_frames_of_another_program(self):
        counts, gain, order, bad = self.response()
        np.save(OUT / "low.npy", self.low.astype("<u2") + np.uint16(30000))  # some above 32767: all are taken 32768 lower
        deviation = self.low.reshape(FRAMES, -1).astype(float).std(axis=0, ddof=1)[order]
        self.expect(self.measure("low.npy", "set.cal"), deviation, 1000 * deviation / (np.abs(gain) * counts), bad)
        self.assertIn("# counts: raw, less 32768\n", (OUT / "data/netd.csv").read_text())

    def test_corrected_frames(self):
        counts, _, _, bad = self.response()
        self.kelvo("apply", "--set", "set.cal", "low.seq", "corrected.seq")
        stored = np.fromfile(OUT / "corrected.seq", "<i2", offset=512).reshape(FRAMES, -1).astype(float)
        deviation = stored.std(axis=0, ddof=1)
        self.expect(self.measure("corrected.seq", "set.cal"), deviation, 1000 * deviation / counts, bad)
        # Nearly that of the raw frames: the counts are whole ones again.
        raw_counts, gain, order, _ = self.response()
        raw = self.low.reshape(FRAMES, -1).astype(float).std(axis=0, ddof=1)[order] / np.abs(gain)
        good = ~bad.ravel()
        self.assertAlmostEqual(np.sqrt(np.mean(deviation[good] ** 2) / np.mean(raw[good] ** 2 + 1 / 12)), 1, 2)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0]])
