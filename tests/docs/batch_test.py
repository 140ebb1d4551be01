#!/usr/bin/env python3
"""docs/how-to/batch.md is followed: its lines, and its workflow with two jobs at once and on a cluster, make what one run makes.

  batch_test.py KELVO OUT CLASS       OUT: emptied. CLASS: ByHand or Workflow, or one of their tests
"""
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

import pages

sys.path.insert(0, str(pages.ROOT / "tests/support"))
import made_by_hand

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
PAGE = "docs/how-to/batch.md"
BLOCKS = pages.blocks_of(PAGE, (pages.ROOT / PAGE).read_text())
INFO, STATS, APPLY, CALIBRATE, SHARDS, TWO_JOBS, SLURM = [block.text for block in BLOCKS if block.language == "sh"]
NUMBERS = [n for n in range(1, 2503) if n not in (1000, 1700)]  # 2500 frames: three of the page's shards
ENVIRONMENT = {**{name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")},
               "HOME": str(OUT), "XDG_CACHE_HOME": str(OUT / "cache"), "PATH": f"{OUT / 'bin'}:/usr/bin:/bin"}

# Kelvo, which tells when it begins and waits then until another one has begun too: two jobs at once don't depend on who is quick.
KELVO_OF_TWO = """#!/bin/sh
echo "$@" >>"{out}/begun"
for _ in $(seq 600); do
    [ "$(wc -l <"{out}/begun")" -ge 2 ] && break
    sleep 0.1
done
echo done >>"{out}/begun"
exec "{kelvo}" "$@"
"""

# A cluster of this machine. It knows the options of sbatch that it is given, and refuses all others.
SBATCH = """#!/usr/bin/python3
import os, pathlib, re, subprocess, sys
*options, script = sys.argv[1:]
known = [r"--parsable", r"--cpus-per-task=1", r"--time=\\d+", r"--output=slurm-%j\\.log"]
if len(options) != len(known) or not all(re.fullmatch(pattern, option) for pattern, option in zip(known, options)):
    sys.exit(f"sbatch: error: options {options}")
if not open(script).readline().startswith("#!"):
    sys.exit("sbatch: error: this does not look like a batch script")
sent = pathlib.Path("sent")
with sent.open("a") as log:
    log.write(os.getcwd() + "\\n")
number = len(sent.read_text().splitlines())
with open(f"slurm-{number}.log", "w") as log:
    subprocess.Popen(["/bin/sh", script], stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True)
print(number)
"""


def program(name, text):
    path = OUT / "bin" / name
    path.unlink(missing_ok=True)
    path.write_text(text)
    path.chmod(0o755)


def run(lines, timeout=300):
    return subprocess.run(["sh", "-e", "-c", lines], cwd=OUT, env=ENVIRONMENT, capture_output=True, text=True, timeout=timeout)


def result():
    """The corrected recording and its journal, taken away."""
    files = [OUT / "run_even.seq", OUT / "run_even.seq.frames"]
    contents = [file.read_bytes() for file in files]
    for file in files:
        file.unlink()
    return contents


class Batch(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "bin").mkdir(parents=True)
        (OUT / "bin/kelvo").symlink_to(KELVO)
        (OUT / "run.seq").write_bytes(made_by_hand.sequence(NUMBERS))
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(NUMBERS))
        (OUT / "calibration").mkdir()
        made_by_hand.calibration_set(OUT / "calibration")
        self.expect_done(run(APPLY))
        self.one_run = result()

    def expect_done(self, process):
        self.assertEqual(process.returncode, 0, process.stderr)


class ByHand(Batch):
    def test_one_run_is_what_the_set_makes_of_each_frame(self):
        frames = self.one_run[0][512:]
        size = 80 + 2 * made_by_hand.PIXELS
        self.assertEqual(len(frames), size * len(NUMBERS))
        for place, number in enumerate(NUMBERS):
            self.assertEqual(frames[place * size + 80:(place + 1) * size], made_by_hand.corrected(number), number)

    def test_shards_joined_are_one_run(self):
        self.expect_done(run(SHARDS))
        self.assertEqual(result(), self.one_run)


    def test_the_recording_is_told(self):
        told = run(INFO)
        self.expect_done(told)
        for line in ("  frames        2500", "  camera        made by hand", "  gaps          2, 2 frames missing"):
            self.assertIn(line, told.stdout.splitlines())

    def test_a_rectangle_is_measured(self):
        """The page's frames are larger than these; the line of the corrected recording is read with a rectangle that fits."""
        self.expect_done(run(APPLY))
        self.assertIn("--rectangle 100,80,163,143 ", STATS)
        self.expect_done(run(STATS.replace("100,80,163,143", "1,0,2,1").replace("celsius", "counts")))
        lines = [line for line in (OUT / "trace.csv").read_text().splitlines() if not line.startswith("#")]
        names = lines[0].split(",")
        self.assertEqual(len(lines), 1 + len(NUMBERS))
        for line, number in zip(lines[1:], NUMBERS):
            counts = struct.unpack("<6h", made_by_hand.corrected(number))
            self.assertAlmostEqual(float(line.split(",")[names.index("mean")]), sum(counts[i] for i in (1, 2, 4, 5)) / 4)

    def test_a_set_is_made_of_stored_frames(self):
        """Two frames of each source: detectors respond by 400 counts."""
        settings = OUT / "bench"
        settings.mkdir()
        (settings / "camera.ini").write_text("[Camera.2]\nVroi=2\nHroi=3\nDecomScheme=2\nUnityOffset=8192\n")
        (settings / "nearccw.prs").write_text("row,col\n0,-1\n")
        for name, counts in (("low", 7000), ("high", 7400)):
            sequence = bytearray(made_by_hand.sequence([1, 2]))
            struct.pack_into("<h", sequence, 24, -10000)  # of no calibration
            for frame in range(2):
                struct.pack_into("<6h", sequence, 512 + frame * 92 + 80, *[counts + detector for detector in range(6)])
            (OUT / f"{name}.seq").write_bytes(sequence)
        self.assertIn("--data /media/bench/kelvo ", CALIBRATE)
        self.expect_done(run(CALIBRATE.replace("/media/bench/kelvo", str(settings))))
        self.assertEqual(struct.unpack("<6f", (OUT / "calibration/new.gai").read_bytes()), (1,) * 6)
        self.assertEqual(struct.unpack("<6h", (OUT / "calibration/new.off").read_bytes()), (-3, -2, -1, 1, 2, 3), "their mean is 7002.5")


class Workflow(Batch):
    def setUp(self):
        if not shutil.which("snakemake", path=ENVIRONMENT["PATH"]):
            self.skipTest("snakemake isn't installed")
        super().setUp()
        (snakefile,) = [block.text for block in BLOCKS if block.language == "python"]
        (OUT / "Snakefile").write_text(snakefile)

    def expect_only_the_result(self):
        self.assertEqual(result(), self.one_run)
        self.assertEqual(sorted(file.name for file in OUT.glob("run.shards/*")), [])

    def test_two_jobs_at_once(self):
        program("kelvo", KELVO_OF_TWO.format(out=OUT, kelvo=KELVO))
        self.expect_done(run(TWO_JOBS))
        begun = (OUT / "begun").read_text().splitlines()
        self.assertEqual([line.split()[0] for line in begun[:2]], ["apply", "apply"], "the second began while the first waited")
        self.assertEqual(sorted(line.split()[0] for line in begun), ["apply"] * 3 + ["done"] * 4 + ["join"])
        self.expect_only_the_result()

    def test_on_a_cluster(self):
        program("sbatch", SBATCH)
        self.expect_done(run(SLURM))
        self.assertEqual((OUT / "sent").read_text().splitlines(), [str(OUT)] * 4, "three shards and the join")
        self.expect_only_the_result()

    def test_a_job_that_failed_leaves_nothing_and_the_same_line_goes_on(self):
        contents = bytearray((OUT / "run.seq").read_bytes())
        place = 512 + 1500 * (80 + 2 * made_by_hand.PIXELS) + 85
        contents[place] ^= 1
        (OUT / "run.seq").write_bytes(contents)
        failed = run(TWO_JOBS)
        self.assertNotEqual(failed.returncode, 0)
        self.assertIn("run.seq: frame 1500 doesn't fit its checksum", failed.stderr)
        self.assertFalse((OUT / "run_even.seq").exists())
        self.assertNotIn("1000-2000.seq", [file.name for file in OUT.glob("run.shards/*")])
        contents[place] ^= 1
        (OUT / "run.seq").write_bytes(contents)
        self.expect_done(run(TWO_JOBS.strip() + " --rerun-incomplete"))
        self.expect_only_the_result()


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[3:]])
