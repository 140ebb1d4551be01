#!/usr/bin/env python3
"""docs/how-to/from-recording-to-figure.md and export.md are followed: their lines run as they stand, and the figure shows what the recording holds.

  figure_test.py KELVO OUT       OUT: emptied
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

import numpy as np

import pages

sys.path.insert(0, str(pages.ROOT / "tests/support"))
import made_by_hand

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
NUMBERS = [1, 2, 3, 7, 8, 20]  # two gaps
ENVIRONMENT = {**{name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")},
               "HOME": str(OUT), "PATH": f"{OUT / 'bin'}:/usr/bin:/bin"}


def blocks(page, language):
    return [block.text for block in pages.blocks_of(page, (pages.ROOT / page).read_text()) if block.language == language]


def celsius(number):
    """As made_by_hand's set has it: 3000 counts are 20 degrees, 9000 are 25."""
    counts = np.frombuffer(made_by_hand.corrected(number), "<i2").reshape(made_by_hand.ROWS, made_by_hand.COLUMNS)
    return 5 * (counts.astype(float) - 3000) / 6000 + 20


class Figure(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "bin").mkdir(parents=True)
        (OUT / "bin/kelvo").symlink_to(KELVO)
        (OUT / "calibration").mkdir()
        made_by_hand.calibration_set(OUT / "calibration")
        (OUT / "run.seq").write_bytes(made_by_hand.sequence(NUMBERS))
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(NUMBERS))

    def sh(self, lines):
        done = subprocess.run(["sh", "-e", "-c", lines], cwd=OUT, env=ENVIRONMENT, capture_output=True, text=True, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def python(self, text):
        name = re.match(r"# (\w+\.py)\n", text)[1]
        (OUT / name).write_text(text)
        return self.sh(f"/usr/bin/python3 -W error {name}").splitlines()

    def test_the_figure_shows_the_spot_over_time_with_its_gaps(self):
        to_array, to_cube = blocks("docs/how-to/from-recording-to-figure.md", "sh")
        figure, cube = blocks("docs/how-to/from-recording-to-figure.md", "python")
        self.sh(to_array)
        told = self.python(figure)
        frames = np.array([celsius(number) for number in NUMBERS])
        mean = frames.mean(axis=0)
        row, column = np.unravel_index(mean.argmax(), mean.shape)
        spot = frames[:, max(row - 1, 0):row + 2, max(column - 1, 0):column + 2].mean(axis=(1, 2))
        self.assertEqual(told[0], f"6 {made_by_hand.ROWS} {made_by_hand.COLUMNS} \u00b0C 0 bad")
        self.assertEqual(told[1], f"spot at row {row}, column {column}: {spot.mean():.3f} \u00b0C")
        self.assertEqual(told[2:], ["missing before frame 3 : 3", "missing before frame 5 : 11"])
        lines = [[tuple(map(float, point.split(","))) for point in line.split()]
                 for line in re.findall(r'<polyline points="([^"]*)"', (OUT / "figure.svg").read_text())]
        self.assertEqual([len(line) for line in lines], [3, 2, 1])
        drawn = [point for line in lines for point in line]
        # 720 points wide, from the first frame's time to the last one's; 340 high, the warmest above.
        for (x, y), number, value in zip(drawn, NUMBERS, spot):
            self.assertAlmostEqual(x, 60 + 720 * (number - 1) / 19, delta=0.02)
            self.assertAlmostEqual(y, 360 - 340 * (value - spot.min()) / np.ptp(spot), delta=0.2)
        self.sh(to_cube)
        told = self.python(cube)
        self.assertIn("deg C (6, 2, 3)", told[0])
        self.assertEqual(told[1], str([(number - 1) / 1e6 for number in NUMBERS]))

    def test_the_lines_of_the_page_on_exports(self):
        numbers = range(1, 102)  # a hundred frames are asked for
        (OUT / "run.seq").write_bytes(made_by_hand.sequence(numbers))
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(numbers))
        lines, picture = blocks("docs/how-to/export.md", "sh")
        first, spot = lines.splitlines()
        self.sh(first)
        # Its rectangle lies in a frame larger than the recording's three by two pixels.
        self.sh(spot.replace("10,20,41,51", "1,0,2,1"))
        self.assertEqual((OUT / "first.h5").read_bytes()[:8], b"\x89HDF\r\n\x1a\n")
        self.assertEqual((OUT / "spot.tif").read_bytes()[:4], b"II*\0")
        self.sh(picture)
        self.assertEqual(sorted(path.name for path in OUT.glob("run-*.png")), [f"run-{index:06d}.png" for index in range(101)])
        self.assertEqual((OUT / "run-000100.png").read_bytes()[:8], b"\x89PNG\r\n\x1a\n")


unittest.main(argv=sys.argv[:1], verbosity=2)
