#!/usr/bin/env python3
"""docs/how-to/add-a-board.md is followed to its end: the program with the page's board in it plays a recording of the simulated camera.

  add_a_board_test.py KELVO OUT       KELVO: the program after the page. OUT: emptied, then the directory of the one who follows
"""
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

import pages

PAGE = "docs/how-to/add-a-board.md"
KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2])
DATA = OUT / "data"
FRAMES = 4
RECORD = f'''
    press(1070) press(1) press(2)
    frames(2)
    assert(state("CameraRate") == 0, "the simulated camera tells no rate")
    local run = record{{ name = "walk", pixels = "raw", frames = {FRAMES}, limit = 5000 }}
    assert(run.frames == {FRAMES} and run.lost == 0)
'''


def blocks(language):
    return [block.text for block in pages.blocks_of(PAGE, (pages.ROOT / PAGE).read_text()) if block.language == language]


def kelvo(name, script):
    path = OUT / f"{name}.lua"
    path.write_text(script)
    return subprocess.run([KELVO, "--offscreen", "--virtual-time", "--data", DATA, "--transcript", OUT / f"{name}.jsonl", "--script", path],
                          cwd=OUT, capture_output=True, text=True, timeout=200)


def with_key(text, section, key, value):
    """The ini file's text with that key of the section set, which it has."""
    head, body = re.split(rf"(?m)^(?=\[{re.escape(section)}\])", text, maxsplit=1)
    changed, count = re.subn(rf"(?m)^{re.escape(key)}=.*$", f"{key}={value}", body, count=1)
    assert count == 1, (section, key)
    return head + changed


def wire(block):
    """The page's lines go into the file that has such a section."""
    for section, lines in re.findall(r"(?m)^\[([^]]+)\]\n((?:[^\[\n].*\n?)*)", block):
        file = DATA / ("camera.ini" if section.startswith("Camera.") else "platform.ini")
        for key, value in (line.split("=", 1) for line in lines.split()):
            file.write_text(with_key(file.read_text(), section, key, value))


def frames_of(path):
    """The samples of each frame of a sequence with frame headers, 320 x 256."""
    data, size = path.read_bytes()[512:], 80 + 2 * 320 * 256
    return [data[at + 80:at + size] for at in range(0, len(data), size)]


class Board(unittest.TestCase):
    def test_it_plays_what_the_simulated_camera_gave(self):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        recorded = kelvo("record", RECORD)
        self.assertEqual(recorded.returncode, 0, recorded.stdout + recorded.stderr)
        ini = blocks("ini")
        self.assertEqual(len(ini), 2)
        for block in ini:
            wire(block)
        played = kelvo("play", blocks("lua")[0])
        self.assertEqual(played.returncode, 0, played.stdout + played.stderr)

        walk, copy = frames_of(DATA / "walk.seq"), frames_of(DATA / "played.seq")
        self.assertEqual((len(walk), len(set(walk)), len(copy)), (FRAMES, FRAMES, 10))
        first = walk.index(copy[0])
        self.assertEqual(copy, [walk[(first + number) % FRAMES] for number in range(10)])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
