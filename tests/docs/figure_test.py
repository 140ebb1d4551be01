#!/usr/bin/env python3
"""docs/how-to/from-recording-to-figure.md and export.md are followed: their blocks run in their order as they stand, and the figure shows what the
recording holds.

  figure_test.py KELVO OUT       OUT: emptied
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import unittest

import numpy as np

import pages

sys.path.insert(0, str(pages.ROOT / "tests/support"))
import made_by_hand

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
NOTEBOOK = "docs/how-to/from-recording-to-figure.md"
ENVIRONMENT = {**{name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")},
               "HOME": str(OUT), "PATH": f"{OUT / 'bin'}:/usr/bin:/bin", "MPLBACKEND": "Agg", "MPLCONFIGDIR": str(OUT / "matplotlib")}
# Runs blocks as a notebook does, one Python for all, and writes a line of its own between what they print.
CELLS = """
import json, subprocess, sys
names = {}
for language, text in json.loads(sys.argv[1]):
    if language == "sh":
        subprocess.run(["sh", "-e", "-c", text], check=True)
    else:
        exec(compile(text, "block", "exec"), names)
    print("-- end of block", flush=True)
"""


def blocks(page, *languages):
    return [block for block in pages.blocks_of(page, (pages.ROOT / page).read_text()) if block.language in languages]


class Scene:
    """A warm disc whose temperature swings once a second on a cooler ground, through detectors of different gains and offsets, some of them bad. The
    readout begins at the lower left, the picture at the upper left."""
    ROWS, COLUMNS = 24, 32
    PERIOD_NS = 20_000_000
    UTC = 1_795_000_000_000_000_000  # of number 1: 2026-11-18T11:06:40
    NUMBERS = [*range(1, 30), *range(50, 80), *range(85, 121)]
    BAD = [(0, 0), (3, 20), (10, 12), (17, 5), (17, 6), (23, 31)]  # row and column; two are corners of the picture
    PAIR = (3000, 20.0), (9000, 25.0)
    NOISE = 24  # counts
    MIDDLE, RADIUS = (10, 19), 4

    def __init__(self):
        random = np.random.default_rng(7)
        shape = self.ROWS, self.COLUMNS
        self.size = shape
        self.gains = random.normal(1, 0.02, shape).astype("<f4")      # in image order
        self.offsets = random.normal(0, 60, shape).round().astype("<i2")
        self.noise = {number: random.normal(0, self.NOISE, shape) for number in range(1, 400)}
        y, x = np.mgrid[:self.ROWS, :self.COLUMNS]
        far = np.hypot(y - self.MIDDLE[0], x - self.MIDDLE[1])
        self.disc = np.clip(self.RADIUS + 1 - far, 0, self.RADIUS + 1) / (self.RADIUS + 1)  # 1 in the middle alone
        self.bad = np.zeros(shape, bool)
        for place in self.BAD:
            self.bad[place] = True

    def temperature(self, number):
        return 21 + self.disc * (2 + np.sin(2 * np.pi * number * self.PERIOD_NS / 1e9))

    def raw(self, number, temperature):
        (cold, cold_c), (hot, hot_c) = self.PAIR
        counts = cold + (temperature - cold_c) * (hot - cold) / (hot_c - cold_c) + self.noise[number]
        counts = counts * self.gains + self.offsets
        return np.where(self.bad, 16383, counts).round().astype("<i2")

    def celsius(self, raw):
        """(count - offset) / gain, cut to a whole number, on the line through the two sources; no number for bad ones."""
        (cold, cold_c), (hot, hot_c) = self.PAIR
        whole = np.trunc((raw.astype("f4") - self.offsets.astype("f4")) / self.gains).astype(float)
        return np.where(self.bad, np.nan, (hot_c - cold_c) * (whole - cold) / (hot - cold) + cold_c)

    def swinging(self, number):
        return self.raw(number, self.temperature(number))

    def uniform(self, number):
        return self.raw(200 + number, np.full(self.size, 22.0))

    def put(self):
        def upside_down(frame):
            return lambda number: frame(number)[::-1].tobytes()  # the lower row is read first
        (OUT / "run.seq").write_bytes(made_by_hand.sequence(self.NUMBERS, upside_down(self.swinging), self.size))
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(
            self.NUMBERS, frame=upside_down(self.swinging), size=self.size, clock=lambda n: 5_000_000_000 + self.PERIOD_NS * n,
            utc=lambda n: self.UTC + self.PERIOD_NS * (n - 1)))
        (OUT / "uniform.seq").write_bytes(made_by_hand.sequence(range(1, 101), upside_down(self.uniform), self.size))
        places = np.arange(self.ROWS * self.COLUMNS).reshape(self.size)[::-1]
        made_by_hand.calibration_set(OUT / "calibration", decom=places.flatten().tolist(), offsets=self.offsets[::-1].flatten().tolist(),
                                     gains=self.gains[::-1].flatten().tolist())
        with open(OUT / "calibration/warm.cal", "a") as cal:
            cal.write("BadDetFile=warm.bad\n")
        (OUT / "calibration/warm.bad").write_text("".join(f"{row:4d},{column:4d}\n" for row, column in self.BAD))


class Figure(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "bin").mkdir(parents=True)
        (OUT / "bin/kelvo").symlink_to(KELVO)
        (OUT / "calibration").mkdir()

    def sh(self, lines):
        done = subprocess.run(["sh", "-e", "-c", lines], cwd=OUT, env=ENVIRONMENT, capture_output=True, text=True, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def test_the_notebook_shows_what_the_recording_holds(self):
        scene = Scene()
        scene.put()
        page = blocks(NOTEBOOK, "sh", "python")
        done = subprocess.run(["/usr/bin/python3", "-W", "error", "-c", CELLS, json.dumps([(block.language, block.text) for block in page])],
                              cwd=OUT, env=ENVIRONMENT, capture_output=True, text=True, timeout=240)
        self.assertEqual(done.returncode, 0, done.stderr)
        told = done.stdout.split("-- end of block\n")[:-1]
        self.assertEqual(len(told), len(page))
        told = [text for block, text in zip(page, told) if block.language == "python"]

        # What is printed, worked out from the scene.
        frames = np.array([scene.celsius(scene.swinging(number)) for number in scene.NUMBERS])
        mean = frames.mean(axis=0)
        row, column = np.unravel_index(np.nanargmax(mean), mean.shape)
        self.assertEqual((row, column), scene.MIDDLE)
        spot = frames[:, row - 1:row + 2, column - 1:column + 2].mean(axis=(1, 2))
        self.assertEqual(told[0].splitlines()[0], f"{len(frames)} {scene.ROWS} {scene.COLUMNS} float32 Temperature in \u00b0C")
        self.assertIn("warm.cal", told[0])
        self.assertEqual(told[1], f"{len(scene.BAD)} bad detectors of {mean.size}\n")
        self.assertEqual(told[2], "20 frames are missing between 0.560 s and 0.980 s\n5 frames are missing between 1.560 s and 1.680 s\n")
        words = told[3].replace(":", "").split()
        self.assertEqual(words[:6], ["spot", "at", "row", str(row) + ",", "column", str(column)])
        for text, value in zip((words[6], words[9], words[11]), (spot.mean(), spot.min(), spot.max())):
            self.assertAlmostEqual(float(text), value, delta=0.001)
        # 24 counts over 1200 counts a degree are 20 mK; the deviation of a hundred frames of each of many pixels.
        median = float(told[4].split()[2])
        self.assertAlmostEqual(median, 20, delta=0.3)
        self.assertEqual(told[6], "from 2026-11-18T11:06:39.998500000 on, in deg C\n")  # 1.5 ms of exposure before the frame was complete

        self.look_at(scene, mean, spot)
        self.assertEqual((OUT / "figure.pdf").read_bytes()[:5], b"%PDF-")

    def look_at(self, scene, mean, spot):
        """The picture's points, decoded by ImageMagick."""
        size = subprocess.run(["identify", "-format", "%m %w %h", OUT / "figure.png"], capture_output=True, text=True, check=True).stdout
        self.assertEqual(size, "PNG 1950 600")  # 13 x 4 inches
        points = subprocess.run(["convert", OUT / "figure.png", "-background", "white", "-flatten", "-depth", "8", "RGB:-"], capture_output=True, check=True).stdout
        points = np.frombuffer(points, np.uint8).reshape(600, 1950, 3).astype(int)

        # The bad detectors in the corners tell where the map is; each pixel of it is seen at its middle.
        y, x = np.nonzero((points == (0, 255, 0)).all(axis=2))
        top, height, left, width = y.min(), np.ptp(y) + 1, x.min(), np.ptp(x) + 1
        self.assertAlmostEqual(width / scene.COLUMNS, height / scene.ROWS, delta=0.1)
        middle_y = (top + (np.arange(scene.ROWS) + 0.5) * height / scene.ROWS).astype(int)
        middle_x = (left + (np.arange(scene.COLUMNS) + 0.5) * width / scene.COLUMNS).astype(int)
        seen = points[np.ix_(middle_y, middle_x)]
        np.testing.assert_array_equal((seen == (0, 255, 0)).all(axis=2), scene.bad)
        brightness = seen.sum(axis=2)
        self.assertGreater(np.corrcoef(brightness[~scene.bad], mean[~scene.bad])[0, 1], 0.9)
        self.assertEqual(np.unravel_index(np.where(scene.bad, 0, brightness).argmax(), mean.shape), scene.MIDDLE)

        # The line of the spot: true seconds to the right, open where frames are missing.
        y, x = np.nonzero((points == (0xD6, 0x27, 0x28)).all(axis=2))
        seconds = (np.array(scene.NUMBERS) - 1) * scene.PERIOD_NS / 1e9
        scale = np.ptp(x) / seconds[-1]
        open_at = np.flatnonzero(np.diff(np.unique(x)) > 10)
        ends = np.unique(x)
        self.assertEqual(len(open_at), 2)
        for at, (since, until) in zip(open_at, ((0.56, 0.98), (1.56, 1.68))):
            self.assertAlmostEqual((ends[at] - ends[0]) / scale, since, delta=0.02)
            self.assertAlmostEqual((ends[at + 1] - ends[0]) / scale, until, delta=0.02)
        # The warmest moment is the highest point.
        self.assertAlmostEqual((x[y.argmin()] - ends[0]) / scale, seconds[spot.argmax()], delta=0.03)
        self.assertAlmostEqual((x[y.argmax()] - ends[0]) / scale, seconds[spot.argmin()], delta=0.03)

        # The histogram is highest about the dashed line of the median.
        y, x = np.nonzero((points == (0x1F, 0x77, 0xB4)).all(axis=2))
        heights = np.bincount(x)
        high = np.flatnonzero(heights > 0.5 * heights.max())
        dashed = np.flatnonzero((points[:, x.min():x.max()] == 0).all(axis=2).sum(axis=0) > 100) + x.min()
        self.assertTrue(len(dashed) and high.min() < dashed.mean() < high.max(), dashed)

    def test_the_lines_of_the_page_on_exports(self):
        made_by_hand.calibration_set(OUT / "calibration")
        numbers = range(1, 102)  # a hundred frames are asked for
        (OUT / "run.seq").write_bytes(made_by_hand.sequence(numbers))
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(numbers))
        lines, picture = blocks("docs/how-to/export.md", "sh")
        first, spot, *of_regions = lines.text.splitlines()
        self.sh(first)
        # Its rectangle lies in a frame larger than the recording's three by two pixels.
        self.sh(spot.replace("10,20,41,51", "1,0,2,1"))
        self.assertEqual((OUT / "first.h5").read_bytes()[:8], b"\x89HDF\r\n\x1a\n")
        self.assertEqual((OUT / "spot.tif").read_bytes()[:4], b"II*\0")
        (OUT / "view.regions").write_text(json.dumps({"format": "Kelvo regions", "version": 1, "columns": 3, "rows": 2, "regions": [
            {"name": "oval", "shape": "ellipse", "x1": 0, "y1": 0, "x2": 2, "y2": 1}, {"name": "corner", "shape": "point", "x1": 2, "y1": 1}]}))
        for line in of_regions:
            self.sh(line)
        self.assertEqual(np.load(OUT / "oval.npy").shape, (101, 2, 3))
        self.assertEqual({path.name for path in OUT.glob("part-*")}, {"part-oval.tif", "part-corner.tif"})
        self.sh(picture.text)
        self.assertEqual(sorted(path.name for path in OUT.glob("run-*.png")), [f"run-{index:06d}.png" for index in range(101)])
        self.assertEqual((OUT / "run-000100.png").read_bytes()[:8], b"\x89PNG\r\n\x1a\n")


unittest.main(argv=sys.argv[:1], verbosity=2)
