#!/usr/bin/env python3
"""Regions that `kelvo export` writes, read by those for whom they are written. Which pixels a region has is worked out here, from its definition.

  exported_regions_test.py KELVO OUT      OUT: emptied
"""
import csv
import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

import h5py
import numpy as np
import tifffile
from astropy.io import fits

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
BARE = {name: value for name, value in os.environ.items()
        if name not in ("DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "QT_QPA_PLATFORM", "HOME") and not name.startswith("LC_")}
COLUMNS, ROWS, FRAMES = 13, 9, 4
COLD, HOT, TCOLD, THOT = 3000, 9000, 20.0, 25.0
BAD = [(3, 4), (0, 0)]  # row, column
FORMATS = ["npy", "tiff", "fits", "hdf5"]
COUNTS = np.array([[[3100 + 1000 * f + 100 * y + x for x in range(COLUMNS)] for y in range(ROWS)] for f in range(FRAMES)], "<i2")

REGIONS = [
    {"name": "oval", "shape": "ellipse", "x1": 2, "y1": 1, "x2": 8, "y2": 5},
    {"name": "box", "shape": "rectangle", "x1": 10, "y1": 6, "x2": 40, "y2": 7},
    {"name": "a:b", "shape": "point", "x1": 12, "y1": 8},
    {"name": "A/B", "shape": "line", "x1": 0, "y1": 0, "x2": 4, "y2": 4},
    {"name": "a?b", "shape": "point", "x1": 1, "y1": 1},
]


def ellipse(x1, y1, x2, y2):
    """Pixels whose centre lies in or on the ellipse that touches the outer edges of its place."""
    across, down = (x2 - x1 + 1) / 2, (y2 - y1 + 1) / 2
    inside = np.zeros((ROWS, COLUMNS), bool)
    for y in range(ROWS):
        for x in range(COLUMNS):
            inside[y, x] = ((x - (x1 + x2) / 2) / across) ** 2 + ((y - (y1 + y2) / 2) / down) ** 2 <= 1
    return inside


def pixels_of(region):
    inside = np.zeros((ROWS, COLUMNS), bool)
    x1, y1 = region["x1"], region["y1"]
    if region["shape"] == "ellipse":
        return ellipse(x1, y1, region["x2"], region["y2"])
    if region["shape"] == "line":  # at 45 degrees it is the diagonal
        for step in range(region["x2"] - x1 + 1):
            inside[y1 + step, x1 + step] = True
        return inside
    inside[y1:region.get("y2", y1) + 1, x1:region.get("x2", x1) + 1] = True
    return inside


def cut(region):
    """Left and top of the rectangle, its slices, and the pixels outside of the region in it."""
    inside = pixels_of(region)
    rows, columns = np.nonzero(inside.any(axis=1))[0], np.nonzero(inside.any(axis=0))[0]
    place = np.s_[rows[0]:rows[-1] + 1, columns[0]:columns[-1] + 1]
    return int(columns[0]), int(rows[0]), place, ~inside[place]


def run(*arguments):
    process = subprocess.run([KELVO, "export", *arguments], cwd=OUT, env=BARE, capture_output=True, text=True, timeout=120)
    return process.returncode, process.stdout, process.stderr


def calibration_set():
    """Gains of 1, no offsets, the picture as it is read."""
    detectors = COLUMNS * ROWS
    (OUT / "warm.cal").write_text("[Calibration]\nCalType=2\nDecomFile=warm.dcm\nGainFile=warm.gai\nOffsetFile=warm.off\nBadDetFile=warm.bad\n"
                                  f"IntensityCold={COLD}\nIntensityHot={HOT}\nTemperatureCold={TCOLD}\nTemperatureHot={THOT}\n")
    (OUT / "warm.dcm").write_bytes(struct.pack(f"<{detectors}I", *range(detectors)))
    (OUT / "warm.gai").write_bytes(struct.pack(f"<{detectors}f", *[1] * detectors))
    (OUT / "warm.off").write_bytes(bytes(2 * detectors))
    (OUT / "warm.bad").write_text("".join(f"{row:4d},{column:4d}\n" for row, column in BAD))


def read(name):
    """Frames, what is outside of the region, and what is told of both."""
    path = OUT / name
    if name.endswith(".npy"):
        told = json.loads(path.with_suffix(".json").read_text())
        return np.load(path), outside_of(told), told
    if name.endswith(".tif"):
        with tifffile.TiffFile(path) as file:
            told = json.loads(file.pages[0].description)
            return np.array([page.asarray() for page in file.pages]), outside_of(told), told
    if name.endswith(".fits"):
        with fits.open(path, checksum=True) as file:
            return file[0].data.astype(file[0].data.dtype.newbyteorder("=")), file["OUTSIDE"].data.astype(bool), None
    with h5py.File(path) as file:
        return file["frames"][()], file["outside"][()].astype(bool), json.loads(file.attrs["provenance"])


def outside_of(told):
    mask = np.zeros((told["rows"], told["columns"]), bool)
    for row, first, last in told["outside_of_region"]:
        assert not mask[row, first:last + 1].any() and not (first > 0 and mask[row, first - 1]), "runs are whole, and none comes twice"
        mask[row, first:last + 1] = True
    return mask


ENDINGS = {"npy": ".npy", "tiff": ".tif", "fits": ".fits", "hdf5": ".h5"}


class ExportedRegions(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        head = bytearray(512)
        for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", COLUMNS), (4, "<h", ROWS), (6, "<h", 2), (40, "<h", 8), (42, "<I", FRAMES)]:
            struct.pack_into(kind, head, place, value)
        struct.pack_into("<hfhf", head, 24, -10000, -999.0, -10000, -999.0)
        (OUT / "run.seq").write_bytes(bytes(head) + COUNTS.tobytes())
        self.write_regions(REGIONS)
        calibration_set()

    @staticmethod
    def write_regions(regions, name="all.regions"):
        (OUT / name).write_text(json.dumps({"format": "Kelvo regions", "version": 1, "columns": COLUMNS, "rows": ROWS, "regions": regions}))

    def export(self, *arguments):
        code, out, error = run(*arguments)
        self.assertEqual((code, out), (0, ""), error)

    def expect_refused(self, arguments, text):
        before = {path.name: path.read_bytes() for path in OUT.iterdir()}
        code, out, error = run(*arguments)
        self.assertEqual((code, out), (2, ""), error)
        self.assertEqual(error.splitlines()[-1], "kelvo export: " + text)
        self.assertEqual({path.name: path.read_bytes() for path in OUT.iterdir()}, before)

    def test_counts_with_a_mask_of_what_lies_outside(self):
        for region in REGIONS:
            left, top, place, outside = cut(region)
            for name in FORMATS:
                path = "x" + ENDINGS[name]
                self.export("--force", f"--region=all.regions:{region['name']}", "run.seq", path)
                frames, mask, told = read(path)
                self.assertEqual(frames.dtype, np.dtype("<i2"))
                np.testing.assert_array_equal(frames, COUNTS[(slice(None), *place)], f"{region} {name}")
                np.testing.assert_array_equal(mask, outside, f"{region} {name}")
                if told:
                    self.assertEqual(told["region"], region)
                    self.assertEqual((told["left"], told["top"]), (left, top))

    def test_degrees_are_no_number_outside_and_where_a_detector_is_bad(self):
        """The mask of bad detectors stands beside that of the region, and neither holds the other."""
        region = REGIONS[0]
        left, top, place, outside = cut(region)
        bad = np.zeros((ROWS, COLUMNS), bool)
        for where in BAD:
            bad[where] = True
        bad = bad[place]
        self.assertEqual(bad.sum(), 1, "one of the two lies in the rectangle")
        celsius = ((THOT - TCOLD) * (COUNTS.astype(float) - COLD) / (HOT - COLD) + TCOLD).astype("<f4")[(slice(None), *place)]
        celsius[:, outside | bad] = np.nan
        for name in FORMATS:
            path = "x" + ENDINGS[name]
            self.export("--as=celsius", "--set=warm.cal", "--region=all.regions:oval", "run.seq", path)
            frames, mask, told = read(path)
            self.assertEqual(np.ascontiguousarray(frames, "<f4").tobytes(), celsius.tobytes(), name)
            np.testing.assert_array_equal(mask, outside)
            if told:
                self.assertEqual(told["bad_detectors"], 1)
            if told and "bad_detector_places" in told:
                self.assertEqual(told["bad_detector_places"], [[BAD[0][0] - top, BAD[0][1] - left]])
        with fits.open(OUT / "x.fits") as file:
            np.testing.assert_array_equal(file["MASK"].data.astype(bool), bad)
            self.assertIn("region's place: ellipse from 2, 1 to 8, 5", list(file[0].header["HISTORY"]))
        with h5py.File(OUT / "x.h5") as file:
            np.testing.assert_array_equal(file["mask"][()].astype(bool), bad)
        told = subprocess.run(["fitsverify", "x.fits"], cwd=OUT, capture_output=True, text=True)
        self.assertIn("**** Verification found 0 warning(s) and 0 error(s). ****", told.stdout)

    def test_fields_of_text_are_empty_outside(self):
        _, _, place, outside = cut(REGIONS[0])
        for form, more in (("counts", []), ("celsius", ["--set=warm.cal"])):
            self.export("--force", "--frames=1:2", f"--as={form}", *more, "--region=all.regions:oval", "run.seq", "x.csv")
            lines = (OUT / "x.csv").read_text().splitlines()
            self.assertIn("# region: oval", lines)
            rows = list(csv.reader(line for line in lines if not line.startswith("#")))
            self.assertEqual([[field == "" for field in row] for row in rows], outside.tolist(), form)
        self.assertEqual(rows[2][2], "nan", "a bad detector in the region isn't a pixel outside of it")
        self.export("--frames=1:2", "--region=all.regions:oval", "run.seq", "counts.csv")
        rows = list(csv.reader(line for line in (OUT / "counts.csv").read_text().splitlines() if not line.startswith("#")))
        self.assertEqual([int(field) for row in rows for field in row if field], COUNTS[1][place][~outside].tolist())

    def test_no_region_has_no_such_mask(self):
        self.export("run.seq", "x.npy")
        told = json.loads((OUT / "x.json").read_text())
        self.assertEqual((told["region"], told["outside_of_region"]), (None, None))
        self.export("run.seq", "x.fits")
        with fits.open(OUT / "x.fits") as file:
            self.assertEqual([part.name for part in file], ["PRIMARY", "FRAMES"])

    def test_all_regions_of_a_file_go_to_a_file_each(self):
        """What can't stand in a name is a low line, and names that would be one get a number."""
        names = ["x-oval.npy", "x-box.npy", "x-a_b.npy", "x-A_B-2.npy", "x-a_b-3.npy"]
        code, out, error = run("--json", "--region=all.regions", "--frames=1:3", "run.seq", "x.npy")
        self.assertEqual(code, 0, error)
        self.assertEqual([(json.loads(line)["file"], json.loads(line)["region"], json.loads(line)["frames"]) for line in out.splitlines()],
                         [(name, region["name"], 2) for name, region in zip(names, REGIONS)])
        self.assertEqual(sorted(path.name for path in OUT.glob("x*.npy")), sorted(names))
        for name, region in zip(names, REGIONS):
            _, _, place, outside = cut(region)
            frames, mask, told = read(name)
            np.testing.assert_array_equal(frames, COUNTS[1:3][(slice(None), *place)])
            np.testing.assert_array_equal(mask, outside)
            self.assertEqual(told["region"], region)
        # One that stands keeps all others from being made.
        for name in names[:2]:
            (OUT / name).unlink()
            (OUT / name).with_suffix(".json").unlink()
        self.expect_refused(["--region=all.regions", "run.seq", "x.npy"], "x-a_b.npy stands already")
        self.export("--region=all.regions", "--force", "run.seq", "x.npy")
        self.assertEqual(len(np.load(OUT / "x-box.npy")), FRAMES)

    def test_as_many_regions_as_a_file_takes(self):
        many = [{"name": f"r{i}", "shape": "point", "x1": i % COLUMNS, "y1": i // COLUMNS % ROWS} for i in range(256)]
        self.write_regions(many, "many.regions")
        for name in FORMATS:
            self.export("--region=many.regions", "run.seq", "m" + ENDINGS[name])
            self.assertEqual(len(list(OUT.glob(f"m-*{ENDINGS[name]}"))), 256)
            self.assertEqual(read(f"m-r100{ENDINGS[name]}")[0].ravel().tolist(), COUNTS[:, 100 // COLUMNS, 100 % COLUMNS].tolist())

    def test_which_file_is_divided_from_which_name(self):
        self.write_regions([{"name": "b", "shape": "point", "x1": 3, "y1": 2}], "odd.regions:a.regions")
        for text, column in (("odd.regions:a.regions:b", 3), ("odd.regions:a.regions", 3)):
            self.export("--force", "--region", text, "run.seq", "y.npy")
            path = "y.npy" if text.endswith("b") else "y-b.npy"
            self.assertEqual(np.load(OUT / path)[0, 0, 0], COUNTS[0, 2, column])

    def test_what_is_wrong_stands_on_the_error_stream(self):
        self.write_regions([{"name": "far", "shape": "ellipse", "x1": 100, "y1": 0, "x2": 104, "y2": 4}], "far.regions")
        self.write_regions([], "none.regions")
        (OUT / "bad.regions").write_text("{")
        for region, text in [("all.regions:tail", "all.regions has no region tail"), ("none.regions", "none.regions has no region"),
                             ("far.regions:far", "Region far lies outside of the frame."), ("far.regions", "Region far lies outside of the frame.")]:
            self.expect_refused([f"--region={region}", "run.seq", "x.npy"], text)
        self.expect_refused(["--region=all.regions", "--rectangle=0,0,1,1", "run.seq", "x.npy"], "--rectangle and --region don't go together")
        for region in ("bad.regions", "gone.regions:oval"):
            code, out, error = run(f"--region={region}", "run.seq", "x.npy")
            self.assertEqual((code, out, len(error.splitlines())), (2, "", 1), error)
            self.assertIn(region.split(":")[0], error)
        self.assertEqual(list(OUT.glob("x*")), [])

    def traces(self, name):
        lines = (OUT / name).read_text("utf-8").splitlines()
        notes = [line for line in lines if line.startswith("#")]
        return notes, list(csv.DictReader(lines[len(notes):]))

    def test_what_regions_measure_frame_by_frame(self):
        code, out, error = run("--traces", "--json", "--region=all.regions", "--frames=1:", "run.seq", "t.csv")
        self.assertEqual(code, 0, error)
        self.assertEqual(json.loads(out), {"file": "t.csv", "format": "csv", "form": "traces", "unit": "Counts", "frames": 3, "stopped": False})
        self.assertEqual(error.splitlines()[-1], "kelvo export: 3 of 3 frames")
        notes, rows = self.traces("t.csv")
        self.assertIn("# unit: counts", notes)
        self.assertTrue(any(note.startswith("# source: ") and "run.seq" in note for note in notes), notes)
        self.assertEqual(list(rows[0]), ["frame", "number", "seconds", "utc", "missing"]
                         + [f"{region['name']} {figure}" for region in REGIONS for figure in ("mean", "deviation", "minimum", "maximum")])
        self.assertEqual(len(rows), 3)
        for row, frame in zip(rows, COUNTS[1:]):
            for region in REGIONS:
                counts = frame[pixels_of(region)].astype(float)
                told = [float(row[f"{region['name']} {figure}"]) for figure in ("mean", "deviation", "minimum", "maximum")]
                expected = [counts.mean(), counts.std(ddof=1) if len(counts) > 1 else 0, counts.min(), counts.max()]
                np.testing.assert_allclose(told, expected, rtol=1e-12)
        # One region alone, and none: the whole picture.
        self.export("--traces", "--region=all.regions:oval", "run.seq", "oval.csv")
        self.assertEqual(len(self.traces("oval.csv")[1][0]), 5 + 4)
        self.export("--traces", "run.seq", "whole.csv")
        self.assertEqual([float(row["picture mean"]) for row in self.traces("whole.csv")[1]], COUNTS.mean(axis=(1, 2)).tolist())

    def test_traces_that_can_not_be(self):
        self.export("--traces", "run.seq", "t.csv")
        for more, text in [(["--as=celsius"], "--traces and --as don't go together"), (["--set=warm.cal"], "--traces and --set don't go together"),
                           (["--volts=0:1"], "--traces and --volts don't go together"), (["--rectangle=0,0,1,1"], "--traces and --rectangle don't go together"),
                           (["--to=npy"], "--traces are written as csv alone"), (["--frames=4:"], "run.seq has 4 frames: there are none of that range"),
                           (["--frames=2:1"], "run.seq has 4 frames: there are none of that range"),
                           (["--frames=1"], "--frames A:B says which frames, counted from 0, without frame B"), (["--region=all.regions:tail"], "all.regions has no region tail"),
                           (["--all"], "unknown option --all")]:
            code, out, error = run("--traces", *more, "run.seq", "no.csv")
            self.assertEqual((code, out), (2, ""), error)
            self.assertIn(f"kelvo export: {text}", error)
            self.assertFalse((OUT / "no.csv").exists())
        self.expect_refused(["--traces", "run.seq", "t.csv"], "t.csv stands already")
        self.expect_refused(["--traces", "--force", "run.seq", "./run.seq"], "./run.seq is the file that is exported")
        self.expect_refused(["--traces", "run.seq"], "a file of frames and the name of the new file are needed")
        self.expect_refused(["--traces", "none.seq", "x.csv"], "none.seq can't be opened")
        self.expect_refused(["--traces", "run.seq", "none/x.csv"], "none/x.csv can't be written: No such file or directory")
        self.export("--traces", "--force", "--frames=:1", "run.seq", "t.csv")
        self.assertEqual(len(self.traces("t.csv")[1]), 1)

    def test_ranges_that_the_file_does_not_hold(self):
        none = "run.seq has 4 frames: there are none of that range"
        form = "--frames A:B says which frames, counted from 0, without frame B"
        for frames, text in [("4:", none), ("0:5", none), ("3:2", none), ("2:2", none), ("7:9", none), ("99999999999999999999:", form), ("-1:2", form),
                             ("1:-1", form), ("a:2", form), ("2", form)]:
            self.expect_refused([f"--frames={frames}", "run.seq", "x.npy"], text)
        self.export("--frames=3:4", "run.seq", "last.npy")
        np.testing.assert_array_equal(np.load(OUT / "last.npy"), COUNTS[3:4])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
