#!/usr/bin/env python3
"""Frames through pipes: "-" as the standard input and as the standard output of the commands that take streams.

  streams_test.py KELVO OUT      OUT: emptied
"""
import csv
import io
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time
import unittest

import numpy as np
import tifffile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import made_by_hand
from made_by_hand import COLUMNS, ROWS

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
TMP = OUT / "tmp"
NUMBERS = [4, 5, 9, 10]
COUNTS = np.array([np.frombuffer(made_by_hand.pixels(n), "<i2").reshape(ROWS, COLUMNS) for n in NUMBERS])
BARE = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "QT_QPA_PLATFORM", "HOME")}


def run(*arguments, given=b"", environment=None, **more):
    """Code, bytes of the standard output, text of the error stream."""
    done = subprocess.run([KELVO, *arguments], cwd=OUT, env={**BARE, "TMPDIR": str(TMP), **(environment or {})}, input=given,
                          stdout=more.pop("stdout", subprocess.PIPE), stderr=subprocess.PIPE, timeout=120, **more)
    return done.returncode, done.stdout, done.stderr.decode()


class Streams(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        TMP.mkdir(parents=True)
        self.sequence = made_by_hand.sequence(NUMBERS)
        (OUT / "run.seq").write_bytes(self.sequence)
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(NUMBERS))
        self.before = self.files()

    def tearDown(self):
        self.assertEqual(self.files(), self.before)
        self.assertEqual(list(TMP.iterdir()), [])

    def files(self):
        return {path.name: path.read_bytes() for path in OUT.iterdir() if path.is_file()}

    def given(self, *arguments, **more):
        code, out, error = run(*arguments, **more)
        self.assertEqual(code, 0, error)
        return out

    def test_info_of_the_standard_input(self):
        told = json.loads(self.given("info", "--json", "-", given=self.sequence))
        self.assertEqual((told["frames"], told["columns"], told["rows"], told["journal"]), (len(NUMBERS), COLUMNS, ROWS, None))

    def test_info_of_a_file_and_of_the_standard_input(self):
        first, second = [json.loads(line) for line in self.given("info", "--json", "--", "run.seq", "-", given=self.sequence).splitlines()]
        self.assertEqual(first["frames"], second["frames"])
        self.assertNotEqual(first["file"], second["file"])

    def test_stats_of_the_standard_input(self):
        told = [json.loads(line) for line in self.given("stats", "--json", "-", given=self.sequence).splitlines()]
        self.assertEqual([each["mean"] for each in told], [float(frame.mean()) for frame in COUNTS])

    def test_an_array_through_two_pipes(self):
        got = np.load(io.BytesIO(self.given("export", "--to", "npy", "-", "-", given=self.sequence)))
        self.assertEqual(got.dtype, np.dtype("<i2"))
        np.testing.assert_array_equal(got, COUNTS)

    def test_a_tiff_and_a_table_to_the_standard_output(self):
        np.testing.assert_array_equal(tifffile.imread(io.BytesIO(self.given("export", "--to=tiff", "run.seq", "-"))), COUNTS)
        text = self.given("export", "--to=csv", "--frames=2:3", "run.seq", "-").decode()
        rows = [row for row in csv.reader(io.StringIO(text)) if not row[0].startswith("#")]
        np.testing.assert_array_equal(np.array(rows, int), COUNTS[2])

    def test_a_picture_to_the_standard_output(self):
        self.assertEqual(self.given("export", "--to=png", "--range=0:4000", "--frames=:1", "run.seq", "-")[:8], b"\x89PNG\r\n\x1a\n")

    def test_traces_to_the_standard_output(self):
        lines = self.given("export", "--traces", "run.seq", "-").decode().splitlines()
        rows = list(csv.DictReader(line for line in lines if not line.startswith("#")))
        self.assertEqual([int(row["number"]) for row in rows], NUMBERS)
        self.assertEqual([float(row["picture mean"]) for row in rows], [float(frame.mean()) for frame in COUNTS])

    def expect_refused(self, text, *arguments, **more):
        code, out, error = run(*arguments, **more)
        self.assertEqual((code, out or b""), (2, b""), error)
        self.assertIn(text, error.splitlines()[-1])

    def test_several_files_are_no_stream(self):
        both = {"format": "Kelvo regions", "version": 1, "columns": COLUMNS, "rows": ROWS,
                "regions": [{"name": name, "shape": "point", "x1": 1, "y1": 1} for name in ("a", "b")]}
        (TMP / "two.regions").write_text(json.dumps(both))
        (TMP / "one.regions").write_text(json.dumps({**both, "regions": both["regions"][:1]}))
        for regions in ("two", "one"):
            self.expect_refused("one file goes to the standard output", "export", "--to=npy", f"--region=tmp/{regions}.regions", "run.seq", "-")
        got = np.load(io.BytesIO(self.given("export", "--to=npy", "--region=tmp/two.regions:a", "run.seq", "-")))
        np.testing.assert_array_equal(got, COUNTS[:, 1:2, 1:2])
        for regions in ("two", "one"):
            (TMP / f"{regions}.regions").unlink()
        self.expect_refused("one file goes to the standard output", "export", "--to=png", "--range=0:4000", "run.seq", "-")
        self.expect_refused("--json tells of a file", "export", "--to=npy", "--json", "run.seq", "-")
        self.expect_refused("--json tells of a file", "export", "--traces", "--json", "run.seq", "-")
        self.expect_refused("--to says which format", "export", "run.seq", "-")

    def test_commands_that_need_places_take_no_stream(self):
        for arguments in (["cut", "--frames=:", "-", "even.seq"], ["join", "run.seq", "-", "even.seq"], ["recover", "-"], ["apply", "--set=a.cal", "run.seq", "-"]):
            self.expect_refused("- names no file", *arguments, given=self.sequence)
        # A file of that name is one.
        (OUT / "-").write_bytes(self.sequence)
        self.before["-"] = self.sequence
        self.assertIn(b"./-", self.given("info", "./-"))

    def test_what_is_no_image_is_told(self):
        self.expect_refused("isn't an image file", "info", "-", given=b"nothing of the kind")
        self.expect_refused("isn't an image file", "export", "--to=npy", "-", "-")

    def test_no_place_for_the_bytes(self):
        self.expect_refused("can't be made: No such file or directory", "info", "-", given=self.sequence, environment={"TMPDIR": str(OUT / "nowhere")})
        self.expect_refused("can't be made: No such file or directory", "export", "--to=npy", "run.seq", "-", environment={"TMPDIR": str(OUT / "nowhere")})

    def test_a_full_disk_behind_the_standard_output(self):
        with open("/dev/full", "wb") as full:
            self.expect_refused("the standard output takes nothing", "export", "--to=npy", "run.seq", "-", stdout=full)

    def test_ctrl_c_while_the_input_comes(self):
        with subprocess.Popen([KELVO, "info", "-"], cwd=OUT, env={**BARE, "TMPDIR": str(TMP)}, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdin.write(self.sequence[:100])
            process.stdin.flush()
            deadline = time.monotonic() + 60
            while not list(TMP.rglob("standard-input")) and time.monotonic() < deadline:
                time.sleep(0.01)
            self.assertTrue(list(TMP.rglob("standard-input")))
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(timeout=60), -signal.SIGINT)
            process.stdin.close()


unittest.main(argv=sys.argv[:1], verbosity=2)
