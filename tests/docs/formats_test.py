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

KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2])
PIXELS = 6


def polynomial(data):
    """The checksum as the remainder of a division, bit by bit."""
    rest = 0xFFFFFFFF
    for byte in data:
        rest ^= byte
        for _ in range(8):
            rest = rest >> 1 ^ (0x82F63B78 if rest & 1 else 0)
    return rest ^ 0xFFFFFFFF


def sequence(numbers):
    head = bytearray(512)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", 3), (4, "<h", 2), (6, "<h", 2), (40, "<h", 8), (42, "<I", len(numbers)), (144, "<h", 80)]:
        struct.pack_into(kind, head, place, value)
    frames = [struct.pack("<30siif38x", b"Sat Nov 21 12:04:01.123 2026\n", place, number, 1.5) + pixels(number) for place, number in enumerate(numbers)]
    return bytes(head) + b"".join(frames)


def pixels(number):
    return struct.pack("<6h", *(10 * number + i for i in range(PIXELS)))


def sealed(*fields):
    record = struct.pack("<qqqf8I", *fields)
    return record + struct.pack("<I", polynomial(record))


def journal(numbers, text=b"Camera=made by hand\n"):
    head = bytearray(128)
    struct.pack_into("<8s7I", head, 0, b"KVFRAMES", 1, 128, 64, 2 * PIXELS, 3, 2, len(text))
    head[64:64 + len(text)] = text
    struct.pack_into("<I", head, 60, polynomial(head))
    records = [sealed(n, 1000 * n, 2000 * n, 1.5, 0, missing, 0, 0, 0, 0, 0, polynomial(pixels(n)))
               for n, missing in zip(numbers, [0] + [b - a - 1 for a, b in zip(numbers, numbers[1:])])]
    return bytes(head) + b"".join(records) + sealed(len(numbers), 0, 0, 0, 128, 0, 0, 0, 0, 1, 0, 0)


def recover(*arguments):
    result = subprocess.run([KELVO, "recover", "--json", *arguments], capture_output=True, text=True)
    return result.returncode, json.loads(result.stdout)


class Formats(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        text = (pages.ROOT / "docs/formats.md").read_text()
        reader, cls.use = [block.text for block in pages.blocks_of("docs/formats.md", text) if block.language == "python"]
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
