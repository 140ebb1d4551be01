#!/usr/bin/env python3
"""docs/how-to/external-signal.md is followed: a run of the triggered save begins by the shell's line and by the page's Python.

  external_signal_test.py KELVO OUT       OUT: emptied, then the home directory of the one who follows
"""
import os
import pathlib
import shutil
import subprocess
import sys
import time
import unittest

import pages

PAGE = "docs/how-to/external-signal.md"
KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2])
RUNTIME = pathlib.Path("/tmp") / f"kelvo-signal-test-{os.getpid()}"  # a path short enough for a socket
ENVIRONMENT = dict(os.environ, HOME=str(OUT), XDG_RUNTIME_DIR=str(RUNTIME), XDG_CONFIG_HOME=str(OUT / "config"), XDG_DATA_HOME=str(OUT / "share"),
                   XDG_STATE_HOME=str(OUT / "state"), XDG_CACHE_HOME=str(OUT / "cache"))

# In real time: turned on, a run of two steps that waits for the signal, then its file.
SCRIPT = """
package.path = arg[2] .. "/?.lua;" .. package.path
local video = require "video"
while box() do answer("ok") end
video.turn_on()
command(112)
set(1460, arg[1])
set(102, "2")
press(124)
assert(state("AcquisitionRunning") == 1, status())
io.open(arg[1] .. ".waits", "w"):close()
for _ = 1, 600 do
  if box() then break end
  wait(50)
end
assert(box() and box().text == "Acquisition completed", "no signal came")
answer("ok")
press(2)
"""


def blocks(language):
    return [block.text for block in pages.blocks_of(PAGE, (pages.ROOT / PAGE).read_text()) if block.language == language]


class Signal(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        RUNTIME.mkdir(mode=0o700)
        self.data = OUT / "spectra"
        self.data.mkdir()
        (self.data / "kelvo.ini").write_text((pages.ROOT / "src/resources/defaults/kelvo.ini").read_text() + "\n[Trigger]\nCodeTrigger=1\n")

    def tearDown(self):
        shutil.rmtree(RUNTIME)

    def run_until_it_waits(self, name):
        (OUT / "run.lua").write_text(SCRIPT)
        kelvo = subprocess.Popen([KELVO, "--offscreen", "--data", self.data, "--script", OUT / "run.lua", "--", OUT / name,
                                  pages.ROOT / "tests/scripts/lib"], cwd=OUT, env=ENVIRONMENT, stderr=subprocess.PIPE, text=True)
        for _ in range(1200):
            if (OUT / (name + ".waits")).exists() or kelvo.poll() is not None:
                break
            time.sleep(0.1)
        return kelvo

    def expect_saved(self, kelvo, name):
        _, errors = kelvo.communicate(timeout=120)
        self.assertEqual(kelvo.returncode, 0, errors)
        self.assertEqual((OUT / name).stat().st_size, 1024 + 2 * 4 * 320 * 256)

    def test_from_a_shell(self):
        kelvo = self.run_until_it_waits("shell.seq")
        line = blocks("sh")[0].strip().replace("~", str(OUT))
        self.assertTrue(line.startswith("kelvo --signal"))
        sent = subprocess.run(line.replace("kelvo", str(KELVO), 1), shell=True, env=ENVIRONMENT, timeout=60)
        self.assertEqual(sent.returncode, 0)
        self.expect_saved(kelvo, "shell.seq")
        sent = subprocess.run(line.replace("kelvo", str(KELVO), 1), shell=True, env=ENVIRONMENT, timeout=60, capture_output=True, text=True)
        self.assertEqual((sent.returncode, sent.stderr), (4, f"kelvo: no Kelvo runs with the data directory {self.data}\n"))

    def test_from_python(self):
        kelvo = self.run_until_it_waits("python.seq")
        sender = blocks("python")[0] + f"\nsignal_kelvo({str(self.data)!r})\n"
        subprocess.run([sys.executable, "-c", sender], env=ENVIRONMENT, check=True, timeout=60)
        self.expect_saved(kelvo, "python.seq")
        sent = subprocess.run([sys.executable, "-c", sender], env=ENVIRONMENT, timeout=60, capture_output=True, text=True)
        self.assertIn("FileNotFoundError", sent.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
