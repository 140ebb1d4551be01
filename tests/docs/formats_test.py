#!/usr/bin/env python3
"""docs/formats.md is followed: its reader reads the journal that Kelvo wrote, and Kelvo finds one clean that was put together by the page alone.

  formats_test.py KELVO OUT       OUT: emptied
"""
import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

import pages

sys.path.insert(0, str(pages.ROOT / "tests/support"))
from made_by_hand import journal, pixels, polynomial, sequence

KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2])


def recover(*arguments):
    result = subprocess.run([KELVO, "recover", "--json", *arguments], capture_output=True, text=True)
    return result.returncode, json.loads(result.stdout)


class Formats(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        text = (pages.ROOT / "docs/formats.md").read_text()
        reader, cls.use = [block.text for block in pages.blocks_of("docs/formats.md", text)
                           if block.language == "python" and "kelvo_tiff" not in block.text]
        (OUT / "kelvo_frames.py").write_text(reader)
        sys.path.insert(0, str(OUT))
        import kelvo_frames
        cls.frames = kelvo_frames
        os.chdir(OUT)

    def test_the_checksum(self):
        self.assertEqual(self.frames.crc32c(b"123456789"), 0xE3069283)
        self.assertEqual(polynomial(b"123456789"), 0xE3069283)

    def test_what_the_page_describes_is_clean(self):
        pathlib.Path("run.seq").write_bytes(sequence([1, 2, 5]))
        pathlib.Path("run.seq.frames").write_bytes(journal([1, 2, 5]))
        code, told = recover("--dry-run", "run.seq")
        self.assertEqual((code, told["outcome"], told["frames"]), (0, "clean", 3))
        self.assertEqual([(gap["before"], gap["first"], gap["board"]) for gap in told["gaps"]], [(2, 3, 2)])
        result = subprocess.run([sys.executable, "-c", self.use], env=dict(os.environ, PYTHONPATH=str(OUT)), capture_output=True, text=True)
        self.assertEqual(result.stdout, "3 frames, closed\n2 lost before number 5\n", result.stderr)

    def test_what_kelvo_wrote_is_read(self):
        pathlib.Path("made.seq").write_bytes(sequence([7, 8, 9, 12]) + b"part")
        pathlib.Path("made.seq.frames").write_bytes(b"damaged" * 20)
        code, told = recover("made.seq")
        self.assertEqual((code, told["records_made"], told["bytes_cut"]), (1, 4, 4))
        _, records, closing = self.frames.read("made.seq.frames")
        self.assertEqual([record["number"] for record in records], [7, 8, 9, 12])
        self.assertEqual([record["pixel_crc"] for record in records], [polynomial(pixels(n)) for n in [7, 8, 9, 12]])
        self.assertEqual({record["flags"] for record in records}, {8})
        self.assertEqual((closing["number"], closing["mark"], closing["flags"]), (4, 6, 128))

    def test_one_that_wasnt_closed(self):
        pathlib.Path("open.frames").write_bytes(journal([1, 2])[:-64])
        texts, records, closing = self.frames.read("open.frames")
        self.assertEqual((texts, len(records), closing), ({"Camera": "made by hand"}, 2, None))

    def test_a_damaged_one(self):
        contents = bytearray(journal([1, 2]))
        contents[128 + 64] ^= 1
        pathlib.Path("damaged.frames").write_bytes(contents)
        self.assertEqual(len(self.frames.read("damaged.frames")[1]), 1)
        contents[70] ^= 1
        pathlib.Path("damaged.frames").write_bytes(contents)
        self.assertRaises(ValueError, self.frames.read, "damaged.frames")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
