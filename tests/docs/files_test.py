#!/usr/bin/env python3
"""docs/files.md is followed: its reader, on files that Kelvo saved, gives the counts that were on the screen.

  files_test.py KELVO OUT       OUT: emptied, then the data directory and the page's code
"""
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

import pages

HERE = pathlib.Path(__file__).resolve().parent
KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2])


def python_blocks():
    return [block.text for block in pages.blocks_of("docs/files.md", (pages.ROOT / "docs/files.md").read_text()) if block.language == "python"]


def save_files():
    """Kelvo's own files, with the simulated camera as it ships."""
    shutil.rmtree(OUT, ignore_errors=True)
    (OUT / "data").mkdir(parents=True)
    environment = dict(os.environ, XDG_CONFIG_HOME=str(OUT / "config"), XDG_DATA_HOME=str(OUT / "share"),
                       XDG_STATE_HOME=str(OUT / "state"), XDG_CACHE_HOME=str(OUT / "cache"))
    subprocess.run([KELVO, "--offscreen", "--virtual-time", "--data", OUT / "data", "--script", HERE / "files_saved.lua"],
                   cwd=OUT, env=environment, check=True)


class Files(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        save_files()
        reader, cls.use = python_blocks()
        (OUT / "kelvo_images.py").write_text(reader)
        sys.path.insert(0, str(OUT))
        import kelvo_images
        cls.read = staticmethod(lambda name: kelvo_images.read(name))
        os.chdir(OUT / "data")

    def test_the_counts_are_those_that_were_seen(self):
        lines = [line.split() for line in (OUT / "data/truth.txt").read_text().splitlines()]
        self.assertGreater(len(lines), 200)
        files = {name: self.read(name)[1] for name in {line[0] for line in lines}}
        for name, frame, sample, count in lines:
            self.assertEqual(int(files[name][int(frame)].ravel()[int(sample)]), int(count), (name, frame, sample))

    def test_the_shapes(self):
        self.assertEqual(self.read("many0.seq")[1].shape, (2, 256, 320))
        header, frames = self.read("still.img")
        self.assertEqual(frames.shape, (1, int(header["ImageHeight"]), int(header["ImageWidth"])))

    def test_the_header(self):
        header, _ = self.read("many0.seq")
        self.assertEqual((header["HeaderVersion"], header["FrameCount"], header["TemperatureCold"]), (8, 2, -999))
        self.assertLessEqual(header["IntensityCold"], 0)  # not calibrated
        self.assertEqual((header["RightColumn"], header["BottomRow"]), (319, 255))
        self.assertGreater(header["IntegrationMsec"], 0)

    def test_what_the_page_does_with_it(self):
        result = subprocess.run([sys.executable, "-c", self.use], env=dict(os.environ, PYTHONPATH=str(OUT)), capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("2 frames", result.stdout)

    def test_the_tiff_files_for_other_programs(self):
        text = (pages.ROOT / "docs/formats.md").read_text()
        [reader] = [block.text for block in pages.blocks_of("docs/formats.md", text) if "kelvo_tiff" in block.text]
        (OUT / "kelvo_tiff.py").write_text(reader)
        import kelvo_tiff
        _, frames = self.read("still.img")
        counts, description = kelvo_tiff.read("still.tif")
        self.assertEqual(counts.tolist(), frames[0].tolist())
        self.assertTrue(description.startswith("Kelvo Thermal Image\nFrameRate="), description)
        grays, _ = kelvo_tiff.read("still8.tif")
        self.assertEqual(grays.tolist(), (frames[0] // 64).clip(0, 255).tolist())

    # Files of other kinds, put together byte by byte.
    def header(self, **values):
        fields = {"swap": 0xFFFF, "bytes": 2, "version": 8, "before": 0} | values
        block = bytearray(512)
        for place, kind, value in [(0, "<H", fields["swap"]), (2, "<h", 3), (4, "<h", 2), (6, "<h", fields["bytes"]), (40, "<h", fields["version"]),
                                   (144, "<h", fields["before"])]:
            struct.pack_into(kind, block, place, value)
        return bytes(block)

    def frames(self, contents):
        (OUT / "made.seq").write_bytes(contents)
        return self.read(OUT / "made.seq")[1].tolist()

    def test_frames_with_headers_of_their_own(self):
        frame = b"\x55" * 80 + struct.pack("<6h", -1, 2, 3, 4, 5, 16383)
        self.assertEqual(self.frames(self.header(before=80) + 2 * frame + b"part"), 2 * [[[-1, 2, 3], [4, 5, 16383]]])

    def test_an_older_file_has_none(self):
        self.assertEqual(self.frames(self.header(before=80, version=7) + struct.pack("<6h", 1, 2, 3, 4, 5, 6)), [[[1, 2, 3], [4, 5, 6]]])

    def test_bytes_the_other_way_round(self):
        contents = bytearray(self.header(swap=0) + struct.pack("<6h", 1, -2, 3, 4, 5, 6))
        contents[0::2], contents[1::2] = contents[1::2], contents[0::2]
        self.assertEqual(self.frames(bytes(contents)), [[[1, -2, 3], [4, 5, 6]]])

    def test_floats_behind_the_longer_header(self):
        contents = b"\x01" + bytes(110) + self.header(bytes=4) + bytes(401) + struct.pack("<6f", 0.5, 1, 2, 3, 4, -5)
        self.assertEqual(self.frames(contents), [[[0.5, 1, 2], [3, 4, -5]]])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
