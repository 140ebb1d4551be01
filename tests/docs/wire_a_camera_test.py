#!/usr/bin/env python3
"""docs/how-to/wire-a-camera.md is followed: a head in a process of its own, and live video by its registers.

  wire_a_camera_test.py KELVO KELVO_HEAD OUT       OUT: emptied, then the home directory of the one who follows
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

import pages

PAGE = "docs/how-to/wire-a-camera.md"
KELVO, HEAD, OUT = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
DATA = OUT / ".local/share/kelvo"
# The machine's own settings must not reach a test, nor a test them.
ENVIRONMENT = {name: value for name, value in os.environ.items() if not name.startswith("XDG_")} | {"HOME": str(OUT)}


def recipe():
    blocks = pages.blocks_of(PAGE, (pages.ROOT / PAGE).read_text())
    command, terminal, socket = next(block.text for block in blocks if "kelvo-head" in block.text).splitlines()
    script = next(block.text for block in blocks if block.language == "lua")
    return command, terminal, socket, script


def kelvo(script, *options):
    path = OUT / "script.lua"
    path.write_text(script)
    return subprocess.run([KELVO, "--offscreen", *options, "--script", path], cwd=OUT, env=ENVIRONMENT, capture_output=True, text=True,
                          timeout=200)


class Link(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        kelvo("while box() do answer('ok') end if dialog() then press(2) end", "--virtual-time")  # the first start makes the data directory
        self.command, self.terminal, self.socket, self.script = recipe()
        program, *arguments = self.command.removeprefix("$ ").split()
        self.assertEqual(program, "build/dev/tools/kelvo-head")
        arguments = [argument.replace("~", str(OUT)) for argument in arguments]
        self.log = open(OUT / "log", "w")
        self.head = subprocess.Popen([HEAD, *arguments], stdout=subprocess.PIPE, stderr=self.log, text=True, env=ENVIRONMENT)
        self.told = [self.head.stdout.readline().strip() for _ in range(2)]
        self.wire()

    def tearDown(self):
        self.head.terminate()
        self.head.communicate()
        self.log.close()

    def wire(self):
        ini = DATA / "platform.ini"
        line = re.search(r"Write `(COM2=[^`]*)` into", (pages.ROOT / PAGE).read_text())[1].replace(self.terminal, self.told[0])
        ini.write_text(re.sub(r"(?m)^COM2=.*$", line, ini.read_text()))

    def test_the_head_tells_its_terminal_and_its_socket(self):
        self.assertRegex(self.told[0], self.terminal.replace("4", r"\d+"))
        self.assertEqual(pathlib.Path(self.told[1]).name, "kelvo-head" + self.told[0].replace("/", "-"))
        self.assertEqual(pathlib.Path(self.socket).name, "kelvo-head" + self.terminal.replace("/", "-"))
        self.head.terminate()
        self.assertEqual(self.head.wait(), 0)
        self.assertFalse(pathlib.Path(self.told[1]).exists())

    def test_live_video_runs_as_the_head_was_told(self):
        result = kelvo(self.script + '''
            assert(state("LiveVideo") == 1 and not box())
            assert(sim.head().clocks_on == 1 and sim.head().biases_on == 1)
            local low, high = math.huge, -math.huge
            for x = 0, 319, 8 do low, high = math.min(low, pixel(x, 128)), math.max(high, pixel(x, 128)) end
            assert(low < high, "an even picture is none")
        ''')
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertTrue((OUT / "live.png").exists())
        self.log.flush()
        frames = (OUT / "log").read_text().splitlines()
        self.assertGreater(len(frames), 10)
        self.assertIn(True, [line.startswith("90 30") for line in frames])  # the clocks were turned on over the terminal

    def test_without_the_head_no_frame_comes(self):
        result = kelvo(self.script + '''
            os.execute("kill ''' + str(self.head.pid) + '''")
            wait(4000)
            assert(box().text == "Timeout waiting for vertical blank!", box().text)
            answer("ok")
            assert(state("LiveVideo") == 0)
        ''')
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
