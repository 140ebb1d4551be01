#!/usr/bin/env python3
"""The figures of traces as another program reads them, saved under a locale with a decimal comma.

  trace_csv_test.py KELVO OUT LOCPATH      OUT: emptied. LOCPATH: where the locale de_DE.UTF-8 lies
"""
import csv
import os
import pathlib
import shutil
import statistics
import struct
import subprocess
import sys
import unittest
from datetime import datetime, timezone

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import made_by_hand

KELVO, OUT, LOCALES = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
NUMBERS = [4, 5, 6, 9, 10]
SCRIPT = """
command(2240)
press("TRACES", 22403)
press("TRACES", 1606)
choose(datadir() .. "/trace.csv")
assert(not dialog() and not box())
press("TRACES", 2)
"""


def frames_of(sequence):
    """The counts of each frame, by the layout alone: 512 bytes, then 80 bytes and the pixels of each."""
    width, height = struct.unpack_from("<hh", sequence, 2)
    size = 80 + 2 * width * height
    for at in range(512, len(sequence) - size + 1, size):
        yield struct.unpack_from(f"<{width * height}h", sequence, at + 80)


class TraceCsv(unittest.TestCase):
    def test_python_reads_every_frame_of_it(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "data").mkdir(parents=True)
        sequence, journal = made_by_hand.sequence(NUMBERS), made_by_hand.journal(NUMBERS)
        (OUT / "run.seq").write_bytes(sequence)
        (OUT / "run.seq.frames").write_bytes(journal)
        (OUT / "trace.lua").write_text(SCRIPT)
        ran = subprocess.run([KELVO, "--offscreen", "--virtual-time", "--data", OUT / "data", "--script", OUT / "trace.lua", "--view", OUT / "run.seq"],
                             env={**os.environ, "LC_ALL": "de_DE.UTF-8", "LOCPATH": str(LOCALES)}, capture_output=True, text=True, timeout=120)
        self.assertEqual(ran.returncode, 0, ran.stderr)

        lines = (OUT / "data" / "trace.csv").read_text(encoding="utf-8").splitlines()
        notes = [line for line in lines if line.startswith("#")]
        self.assertIn("# frames traced: 5", notes)
        self.assertIn("# gaps: 1", notes)
        self.assertIn("# gap: before frame 4: 2 missing", notes)
        rows = list(csv.DictReader(lines[len(notes):]))
        frames = list(frames_of(sequence))
        self.assertEqual(len(rows), len(frames))
        head_bytes = struct.unpack_from("<I", journal, 12)[0]
        records = [struct.unpack_from("<qqq", journal, head_bytes + 64 * i) for i in range(len(rows))]
        for row, counts, (number, monotonic_ns, utc_ns) in zip(rows, frames, records):
            self.assertEqual(int(row["number"]), number)
            self.assertAlmostEqual(float(row["seconds"]), (monotonic_ns - records[0][1]) / 1e9, places=9)
            self.assertEqual(float(row["picture mean"]), statistics.fmean(counts))
            self.assertAlmostEqual(float(row["picture deviation"]), statistics.stdev(counts), places=9)
            self.assertEqual((int(row["picture minimum"]), int(row["picture maximum"])), (min(counts), max(counts)))
            if utc_ns:
                whole, _, fraction = row["utc"].rstrip("Z").partition(".")
                moment = datetime.fromisoformat(whole).replace(tzinfo=timezone.utc)
                self.assertEqual(int(moment.timestamp()) * 10**9 + int(fraction), utc_ns)
        self.assertEqual([int(row["missing"]) for row in rows], [0, 0, 0, 2, 0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
