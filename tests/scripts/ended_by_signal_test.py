#!/usr/bin/env python3
"""Kelvo, ended by a signal while it records: it doesn't ask, its files are closed, and it ends by that signal.

  ended_by_signal_test.py KELVO OUT [unittest arguments]      OUT: emptied
"""
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import sys
import time
import unittest

KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2])
SCRIPT = pathlib.Path(__file__).with_suffix("").with_name("ended_by_signal.lua")
kLongestStart, kLongestEnd = 200, 30


class EndedBySignal(unittest.TestCase):
    def end(self, way, number):
        """Starts it, ends it, and returns the data directory and the settings file of before."""
        out = OUT / f"{way}.{number.name}"
        data = out / "data"
        data.mkdir(parents=True)
        runs = out / "runs"
        environment = dict(os.environ, HOME=str(out), XDG_CONFIG_HOME=str(out / "config"), XDG_DATA_HOME=str(out / "share"),
                           XDG_STATE_HOME=str(out / "state"), XDG_CACHE_HOME=str(out / "cache"))
        command = [KELVO, "--offscreen", "--data", data, "--transcript", out / "transcript.jsonl", "--script", SCRIPT, "--", way, runs]
        program = subprocess.Popen(command, env=environment, cwd=out)
        try:
            deadline = time.monotonic() + kLongestStart
            while not runs.exists():
                self.assertIsNone(program.poll(), "it has ended by itself")
                self.assertLess(time.monotonic(), deadline, "it doesn't begin")
                time.sleep(0.05)
            time.sleep(0.3)
            program.send_signal(number)
            self.assertEqual(program.wait(kLongestEnd), -number, "it ends by the signal")
        finally:
            program.kill()
            program.wait()
        transcript = (out / "transcript.jsonl").read_text()
        self.assertNotIn("A recording is running", transcript)
        self.assertFalse((data / "kelvo.lock").exists(), "the next start finds the directory free")
        return data, transcript

    def expect_clean(self, path):
        recovery = subprocess.run([KELVO, "recover", "--dry-run", path], capture_output=True, text=True)
        self.assertEqual(recovery.returncode, 0, recovery.stdout + recovery.stderr)

    def test_a_continuous_save(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number):
                data, _ = self.end("continuous", number)
                contents = (data / "run.seq").read_bytes()
                frames = struct.unpack_from("<I", contents, 42)[0]
                self.assertGreaterEqual(frames, 5)
                self.assertEqual(len(contents), 512 + frames * 2 * 320 * 256, "the header's count is true")
                self.expect_clean(data / "run.seq")

    def test_a_triggered_save(self):
        data, _ = self.end("triggered", signal.SIGTERM)
        length = (data / "run.seq").stat().st_size
        self.assertGreaterEqual(length, 1024 + 3 * 4 * 320 * 256)
        self.assertEqual((length - 1024) % (4 * 320 * 256), 0, "no part of a frame")

    def test_a_burst(self):
        _, transcript = self.end("burst", signal.SIGTERM)
        self.assertIn(" Captured 1 frames to Host RAM", transcript, "the frames until then count")

    def test_nothing_that_records(self):
        self.end("nothing", signal.SIGINT)


if __name__ == "__main__":
    shutil.rmtree(OUT, ignore_errors=True)
    OUT.mkdir(parents=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
