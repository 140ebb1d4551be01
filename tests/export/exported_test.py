#!/usr/bin/env python3
"""What `kelvo export` writes, read by those for whom it is written. Expected values are worked out here, from the bytes of the recording.

  exported_test.py KELVO OUT [LOCPATH]      OUT: emptied. LOCPATH: where the locale de_DE.UTF-8 lies
"""
import csv
import hashlib
import json
import os
import pathlib
import resource
import shutil
import signal
import struct
import subprocess
import sys
import unittest
import warnings

import h5py
import numpy as np
import tifffile
from astropy.io import fits
from astropy.utils.exceptions import AstropyWarning

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import made_by_hand
from made_by_hand import COLUMNS, PIXELS, ROWS

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
BARE = {name: value for name, value in os.environ.items()
        if name not in ("DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "QT_QPA_PLATFORM", "HOME") and not name.startswith("LC_")}
NUMBERS = [4, 5, 9, 10]
BAD = [(0, 1), (1, 2)]  # row, column
COLD, HOT, TCOLD, THOT = 3000, 9000, 20.0, 25.0  # of made_by_hand's set
UTC = 1_795_000_000_123_456_789  # of the first frame: 2026-11-18T11:06:40.123456789
FORMATS = ["npy", "tiff", "fits", "hdf5"]


def run(*arguments, environment=None, **more):
    process = subprocess.run([KELVO, "export", *arguments], cwd=OUT, env={**BARE, **(environment or {})}, capture_output=True, text=True, timeout=300, **more)
    return process.returncode, process.stdout, process.stderr


def stored(number):
    return np.frombuffer(made_by_hand.pixels(number), "<i2").reshape(ROWS, COLUMNS)


def corrected(number):
    return np.frombuffer(made_by_hand.corrected(number), "<i2").reshape(ROWS, COLUMNS)


COUNTS = np.array([stored(n) for n in NUMBERS])
CORRECTED = np.array([corrected(n) for n in NUMBERS])
IS_BAD = np.zeros((ROWS, COLUMNS), bool)
for place in BAD:
    IS_BAD[place] = True


def degrees(counts):
    """On the line through the two sources, in double, rounded once."""
    celsius = (THOT - TCOLD) * (counts.astype(float) - COLD) / (HOT - COLD) + TCOLD
    return np.where(IS_BAD, np.nan, celsius.astype("<f4")).astype("<f4")


def journal():
    """As made_by_hand's, with a time of day and a period of 10 ms."""
    head = made_by_hand.journal(NUMBERS)[:128]
    records = [made_by_hand.sealed(n, 10_000_000 * n, UTC + 10_000_000 * (n - NUMBERS[0]), 1.5, 0, min(missing, 2), 0, 0, 0, 0, max(missing - 2, 0),
                                   made_by_hand.polynomial(made_by_hand.pixels(n))) for n, missing in zip(NUMBERS, [0, 0, 3, 0])]
    return head + b"".join(records) + made_by_hand.sealed(len(NUMBERS), 0, 0, 0, 128, 0, 0, 0, 0, 1, 0, 0)


def recording(numbers=NUMBERS):
    """With what a header tells of the head."""
    data = bytearray(made_by_hand.sequence(numbers))
    struct.pack_into("<6h", data, 12, 26, 11, 18, 12, 6, 40)       # local time
    struct.pack_into("<hfhf", data, 24, -10000, -999.0, -10000, -999.0)
    struct.pack_into("<ff", data, 56, 100.0, 1.5)                    # frame rate, integration time
    struct.pack_into("<hh", data, 112, -100, 300)                    # display range
    return bytes(data)


def everything():
    return {str(path.relative_to(OUT)): path.read_bytes() for path in OUT.rglob("*") if path.is_file()}


class Exported(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        made_by_hand.calibration_set(OUT)
        with open(OUT / "warm.cal", "a") as cal:
            cal.write("BadDetFile=warm.bad\n")
        (OUT / "warm.bad").write_text("".join(f"{row:4d},{column:4d}\n" for row, column in BAD))
        (OUT / "run.seq").write_bytes(recording())
        (OUT / "run.seq.frames").write_bytes(journal())

    def export(self, *arguments, **more):
        code, out, error = run(*arguments, **more)
        self.assertEqual((code, out), (0, ""), error)

    def expect_refused(self, arguments, text, **more):
        """With 2, a line on the error stream alone, and everything as it was."""
        before = everything()
        code, out, error = run(*arguments, **more)
        last = error.splitlines()[-1] if error else ""
        self.assertEqual((code, out), (2, ""), error)
        self.assertTrue(last.startswith("kelvo export: "), error)
        self.assertIn(text, last)
        self.assertEqual(everything(), before)

    def same_bits(self, array, expected, kind):
        self.assertEqual(array.dtype, np.dtype(kind))
        self.assertEqual(array.shape, expected.shape)
        self.assertEqual(np.ascontiguousarray(array, kind).tobytes(), np.ascontiguousarray(expected, kind).tobytes())

    # --- What all formats hold alike

    def test_counts_are_the_bytes_of_the_recording(self):
        for name in FORMATS:
            self.export("run.seq", f"x.{name}", "--to", name)
            self.same_bits(READERS[name](f"x.{name}"), COUNTS, "<i2")

    def test_a_range_of_frames(self):
        for name in FORMATS:
            self.export("--frames=1:3", "run.seq", f"x.{name}", "--to", name)
            self.same_bits(READERS[name](f"x.{name}"), COUNTS[1:3], "<i2")

    def test_a_rectangle(self):
        for name in FORMATS:
            self.export("--rectangle=1,0,2,0", "run.seq", f"x.{name}", "--to", name)
            self.same_bits(READERS[name](f"x.{name}"), COUNTS[:, 0:1, 1:3], "<i2")

    def test_corrected_counts(self):
        for name in FORMATS:
            self.export("--as=corrected", "--set=warm.cal", "run.seq", f"x.{name}", "--to", name)
            self.same_bits(READERS[name](f"x.{name}"), CORRECTED, "<i2")

    def test_temperatures_with_bad_detectors_as_no_number(self):
        celsius = degrees(CORRECTED)
        exact = (THOT - TCOLD) * (CORRECTED.astype(float) - COLD) / (HOT - COLD) + TCOLD
        kelvin = np.where(IS_BAD, np.nan, (exact + float(np.float32(273.15))).astype("<f4"))
        fahrenheit = np.where(IS_BAD, np.nan, (exact * float(np.float32(1.8)) + 32).astype("<f4"))
        for name in FORMATS:
            for form, expected in [("celsius", celsius), ("kelvin", kelvin), ("fahrenheit", fahrenheit)]:
                self.export("--force", "--as", form, "--set=warm.cal", "run.seq", f"x.{name}", "--to", name)
                self.same_bits(READERS[name](f"x.{name}"), expected, "<f4")

    def test_temperatures_of_what_was_corrected_before(self):
        """The set that corrected it is found by the journal, and its bad detectors with it."""
        subprocess.run([KELVO, "apply", "--set", "warm.cal", "run.seq", "even.seq"], cwd=OUT, env=BARE, check=True, stderr=subprocess.DEVNULL)
        for name in FORMATS:
            self.export("--as=celsius", "even.seq", f"x.{name}", "--to", name)
            self.same_bits(READERS[name](f"x.{name}"), degrees(CORRECTED), "<f4")

    def test_volts(self):
        expected = ((2.0 - -0.5) * (COUNTS.astype(float) - -100) / (300 - -100) + -0.5).astype("<f4")
        for name in FORMATS:
            self.export("--as=volts", "--volts=-0.5:2", "run.seq", f"x.{name}", "--to", name)
            self.same_bits(READERS[name](f"x.{name}"), expected, "<f4")

    # --- One format each

    def test_the_json_beside_an_array(self):
        self.export("--as=celsius", "--set=warm.cal", "--frames=1:", "run.seq", "x.npy")
        told = json.loads((OUT / "x.json").read_text("ascii"))
        self.assertEqual((told["columns"], told["rows"], told["frames"]), (COLUMNS, ROWS, 3))
        self.assertEqual((told["form"], told["quantity"], told["unit"]), ("celsius", "Temperature", "\u00b0C"))
        self.assertEqual(told["scale"], [{"count": COLD, "value": TCOLD}, {"count": HOT, "value": THOT}])
        self.assertEqual(told["source"], str(OUT / "run.seq"))
        self.assertEqual(told["camera"], "made by hand")
        self.assertEqual(told["calibration_set"], str(OUT / "warm.cal"))
        self.assertEqual(told["calibration_sha256"], hashlib.sha256((OUT / "warm.cal").read_bytes()).hexdigest())
        self.assertEqual((told["bad_detectors"], told["bad_detector_places"]), (2, [list(place) for place in BAD]))
        self.assertEqual(told["gaps"], [{"before": 1, "lost_by_board": 2, "lost_by_ring": 0, "passed_over": 0, "lost_by_transport": 1}])
        self.assertEqual(told["local_time"], "2026-11-18T12:06:40")
        self.assertEqual((told["head"]["frame_rate_hz"], told["head"]["integration_ms"]), (100, 1.5))
        self.assertEqual([time["number"] for time in told["times"]], [5, 9, 10])
        self.assertEqual([time["seconds"] for time in told["times"]], [0.01, 0.05, 0.06])
        # A period behind the first frame, which was complete at .123456789; the exposure began 1.5 ms before.
        self.assertEqual(told["times"][0]["utc"], "2026-11-18T11:06:40.133456789Z")
        self.assertEqual(told["times"][0]["start_utc"], "2026-11-18T11:06:40.131956789Z")

    def test_a_frame_as_text(self):
        self.export("--frames=2:3", "--as=celsius", "--set=warm.cal", "run.seq", "x.csv", environment=COMMA)
        lines = (OUT / "x.csv").read_text("utf-8").splitlines()
        rows = list(csv.reader(line for line in lines if not line.startswith("#")))
        self.same_bits(np.array([[np.float32(value) for value in row] for row in rows]), degrees(CORRECTED)[2], "<f4")
        self.assertIn("# unit: \u00b0C", lines)
        self.assertIn("# seconds: 0.05", lines)
        self.export("--frames=2:3", "run.seq", "counts.csv")
        rows = list(csv.reader(line for line in (OUT / "counts.csv").read_text().splitlines() if not line.startswith("#")))
        self.assertEqual([[int(value) for value in row] for row in rows], COUNTS[2].tolist())

    def test_what_the_pages_of_a_tiff_tell(self):
        self.export("--as=corrected", "--set=warm.cal", "run.seq", "x.tif")
        with tifffile.TiffFile(OUT / "x.tif") as file:
            self.assertFalse(file.is_bigtiff)
            self.assertEqual(len(file.pages), 4)
            told = [json.loads(page.description) for page in file.pages]
            for page in file.pages:
                self.assertEqual((page.tags["BitsPerSample"].value, page.tags["SampleFormat"].value, page.tags["Compression"].value), (16, 2, 1))
                self.assertEqual(page.tags["Software"].value, told[0]["program"])
        self.assertEqual([(page["form"], page["unit"], page["scale"]) for page in told], [("corrected", "Counts", None)] * 4)
        self.assertEqual([page["time"]["number"] for page in told], NUMBERS)
        self.assertEqual([(page["time"]["lost_by_board"], page["time"]["lost_by_transport"]) for page in told], [(0, 0), (0, 0), (2, 1), (0, 0)])
        self.assertEqual(told[0]["time"]["utc"], "2026-11-18T11:06:40.123456789Z")
        self.assertEqual((told[0]["camera"], told[0]["bad_detector_places"]), ("made by hand", [list(place) for place in BAD]))
        printed = subprocess.run(["tiffinfo", "x.tif"], cwd=OUT, capture_output=True, text=True, check=True)
        self.assertEqual(printed.stderr, "")
        self.assertEqual(printed.stdout.count("Sample Format: signed integer"), 4)
        self.export("--as=celsius", "--set=warm.cal", "run.seq", "y.tif")
        printed = subprocess.run(["tiffinfo", "y.tif"], cwd=OUT, capture_output=True, text=True, check=True)
        self.assertEqual(printed.stdout.count("Sample Format: IEEE floating point"), 4)

    def verified(self, name):
        """fitsverify finds neither an error nor a warning."""
        told = subprocess.run(["fitsverify", "-e", name], cwd=OUT, capture_output=True, text=True)
        self.assertEqual(told.returncode, 0, told.stdout + told.stderr)
        told = subprocess.run(["fitsverify", name], cwd=OUT, capture_output=True, text=True)
        self.assertIn("**** Verification found 0 warning(s) and 0 error(s). ****", told.stdout)

    def test_a_fits_cube_with_its_times_and_its_mask(self):
        self.export("--as=corrected", "--set=warm.cal", "run.seq", "x.fits")
        self.verified("x.fits")
        with fits.open(OUT / "x.fits", checksum=True) as file:
            self.assertEqual([part.name for part in file], ["PRIMARY", "FRAMES", "MASK"])
            head = file[0].header
            self.assertEqual((head["BITPIX"], head["NAXIS1"], head["NAXIS2"], head["NAXIS3"]), (16, COLUMNS, ROWS, 4))
            self.assertNotIn("BZERO", head)
            self.assertEqual((head["ROWORDER"], head["BUNIT"], head["FORM"]), ("TOP-DOWN", "adu", "corrected"))
            self.assertEqual((head["EXPTIME"], head["FRATE"], head["INSTRUME"]), (0.0015, 100, "made by hand"))
            self.assertEqual((head["DATE-OBS"], head["TIMESYS"]), ("2026-11-18T11:06:40.121956789", "UTC"))
            self.assertEqual(head["LOCTIME"], "2026-11-18T12:06:40")
            self.assertEqual((head["NGAPS"], head["NMISSING"]), (1, 3))
            self.assertEqual(head["CALSHA"], hashlib.sha256((OUT / "warm.cal").read_bytes()).hexdigest())
            self.assertIn(f"calibration set: {OUT}/warm.cal", "".join(head["HISTORY"]))
            for part in file:
                self.assertIn("CHECKSUM", part.header)
                self.assertIn("DATASUM", part.header)
            table = file["FRAMES"].data
            self.assertEqual(table["NUMBER"].tolist(), NUMBERS)
            self.assertEqual(table["SECONDS"].tolist(), [0, 0.01, 0.05, 0.06])
            self.assertEqual(table["UTC_START"][1], "2026-11-18T11:06:40.131956789Z")
            self.assertEqual(table["LOSTBYBOARD"].tolist(), [0, 0, 2, 0])
            self.assertEqual(table["LOSTBYTRANSPORT"].tolist(), [0, 0, 1, 0])
            self.assertEqual(file["MASK"].data.tolist(), IS_BAD.astype(int).tolist())

    def test_a_fits_cube_of_floats_and_one_without_a_journal(self):
        self.export("--as=kelvin", "--set=warm.cal", "run.seq", "x.fits")
        self.verified("x.fits")
        with fits.open(OUT / "x.fits") as file:
            head = file[0].header
            self.assertEqual((head["BITPIX"], head["BUNIT"]), (-32, "K"))
            self.assertEqual((head["COUNTLO"], head["COUNTHI"]), (COLD, HOT))
        (OUT / "run.seq.frames").unlink()
        self.export("run.seq", "y.fits")
        self.verified("y.fits")
        with fits.open(OUT / "y.fits") as file:
            self.assertEqual([part.name for part in file], ["PRIMARY", "FRAMES"])
            self.assertNotIn("DATE-OBS", file[0].header)
            self.assertEqual(file[0].header["LOCTIME"], "2026-11-18T12:06:40")
            self.assertEqual(file["FRAMES"].data["SECONDS"].tolist(), [0, 0.01, 0.02, 0.03])

    def test_what_an_hdf5_file_has_beside_its_frames(self):
        self.export("--as=celsius", "--set=warm.cal", "--frames=1:", "run.seq", "x.h5")
        with h5py.File(OUT / "x.h5") as file:
            self.assertEqual(sorted(file), sorted(["frames", "index", "number", "seconds", "utc_ns", "integration_ms", "lost_by_board", "lost_by_ring",
                                                   "passed_over", "lost_by_transport", "mask"]))
            self.assertEqual((file["frames"].chunks, file["frames"].compression), ((1, ROWS, COLUMNS), None))
            self.assertEqual(file["frames"].attrs["unit"], "\u00b0C")
            self.assertEqual((file.attrs["form"], file.attrs["unit"], file.attrs["camera"], file.attrs["format"]), ("celsius", "\u00b0C", "made by hand", 1))
            self.assertEqual(file.attrs["calibration_sha256"], hashlib.sha256((OUT / "warm.cal").read_bytes()).hexdigest())
            told = json.loads(file.attrs["provenance"])
            self.assertEqual((told["program"], told["frames"], told["gaps"][0]["lost_by_board"]), (file.attrs["program"], 3, 2))
            self.assertEqual(file["lost_by_transport"][()].tolist(), [0, 1, 0])
            self.assertEqual(file["number"][()].tolist(), NUMBERS[1:])
            self.assertEqual(file["seconds"][()].tolist(), [0.01, 0.05, 0.06])
            self.assertEqual(file["utc_ns"][()].tolist(), [UTC + 10_000_000 * (n - NUMBERS[0]) for n in NUMBERS[1:]])
            self.assertEqual(file["integration_ms"][()].tolist(), [1.5] * 3)
            self.assertEqual(file["mask"][()].tolist(), IS_BAD.astype(int).tolist())

    def test_names_that_cfitsio_would_take_apart(self):
        for name in ("x[1].fits", "a(b).fits", "+1.fits", "!x.fits", "x.fits.gz", "mem:y.fits"):
            self.export("--to=fits", "run.seq", name)
            self.same_bits(fits.getdata(OUT / name).astype("<i2") if not name.endswith(".gz") else COUNTS, COUNTS, "<i2")
            self.assertEqual((OUT / name).read_bytes()[:9], b"SIMPLE  =")

    # --- Pictures

    def test_pictures_have_the_gray_of_each_count(self):
        """From the first count of the range to the last one gray rises in a straight line from 0 to 255."""
        def gray(counts, low, high):
            return np.clip(np.floor(255.0 * (counts.astype(float) - low) / (high - low)), 0, 255).astype(int)
        for arguments, low, high in [([], -100, 300), (["--range=40:100"], 40, 100), (["--range=-32768:32767"], -32768, 32767)]:
            self.export("--force", *arguments, "run.seq", "x.png")
            for frame, name in enumerate(f"x-{index:06d}.png" for index in range(4)):
                self.assertEqual(identified(name, "%m %w %h %z"), f"PNG {COLUMNS} {ROWS} 8")
                shown = rgb(name).astype(int)
                self.assertTrue((shown == shown[:, :, :1]).all())
                expected = gray(COUNTS[frame], low, high)
                self.assertLessEqual(np.abs(shown[:, :, 0] - expected).max(), 1)  # single precision on the way
                self.assertTrue((shown[:, :, 0][COUNTS[frame] <= low] == 0).all())
                self.assertTrue((shown[:, :, 0][COUNTS[frame] >= high] == 255).all())
        self.export("--range=40:100", "--colors=inverted", "--frames=1:2", "run.seq", "inverted.png")
        self.export("--range=40:100", "--frames=1:2", "run.seq", "gray.png")
        self.assertTrue((rgb("inverted.png").astype(int) + rgb("gray.png") == 255).all())

    def test_pictures_in_colors(self):
        """Of MATROX.PAL: a comment, then red, green and blue of each gray."""
        (OUT / "data").mkdir()
        (OUT / "data" / "MATROX.PAL").write_text("mine\n" + "".join(f"{i} {255 - i} {i // 2}\n" for i in range(256)))
        self.export("--range=40:100", "--frames=1:2", "run.seq", "gray.png")
        self.export("--range=40:100", "--frames=1:2", "--colors=color", "--data=data", "run.seq", "colors.png")
        gray = rgb("gray.png")[:, :, 0].astype(int)
        self.assertEqual(rgb("colors.png").tolist(), np.stack([gray, 255 - gray, gray // 2], axis=2).tolist())
        self.export("--range=40:100", "--frames=1:2", "--colors=color", "--data=nowhere", "run.seq", "own.png")
        self.assertFalse((rgb("own.png")[:, :, 0] == rgb("own.png")[:, :, 2]).all())

    def test_what_stands_beside_a_picture_leaves_its_pixels(self):
        self.wide_recording()
        self.export("--range=0:4000", "--frames=:1", "wide.seq", "plain.png")
        for names in (["--scale"], ["--time"], ["--scale", "--time"]):
            self.export("--force", "--range=0:4000", "--frames=:1", *names, "wide.seq", "more.png")
            columns, rows = map(int, identified("more.png", "%w %h").split())
            self.assertEqual((columns > 260, rows > 180), ("--scale" in names, "--time" in names))
            # The number of pixels that differ, as compare counts them.
            told = subprocess.run(["compare", "-metric", "AE", "plain.png", "more.png[260x180+0+0]", "null:"], cwd=OUT, capture_output=True, text=True)
            self.assertEqual((told.returncode, told.stderr), (0, "0"))
            self.assertTrue((rgb("more.png")[180:, 260:] == 0x26).all())  # the ground
        # On the scale the gray falls from the last one to the first one.
        bar = rgb("more.png")[:, 260 + 20, 0].astype(int)
        inside = [y for y in range(1, 179) if (rgb("more.png")[y, 272:296, 0] == bar[y]).all() and bar[y] != 0x26]
        self.assertEqual((bar[inside[0]], bar[inside[-1]] <= 4), (255, True))
        self.assertTrue((np.diff(bar[inside]) <= 0).all())

    def test_regions_are_drawn_over_the_frame(self):
        self.wide_recording()
        (OUT / "some.regions").write_text(json.dumps({"format": "Kelvo regions", "version": 1, "columns": 260, "rows": 180, "regions": [
            {"name": "Lid", "shape": "rectangle", "x1": 50, "y1": 60, "x2": 99, "y2": 119}]}))
        self.export("--range=0:4000", "--frames=:1", "wide.seq", "plain.png")
        self.export("--range=0:4000", "--frames=:1", "--draw-regions=some.regions", "wide.seq", "drawn.png")
        plain, drawn = rgb("plain.png"), rgb("drawn.png")
        outline = [(60, x) for x in range(50, 101)] + [(120, x) for x in range(50, 101)] + [(y, x) for y in range(60, 121) for x in (50, 100)]
        self.assertTrue(all(drawn[place].tolist() == [255] * 3 for place in outline))
        # Its rim is a pixel wide, and its name stands above it.
        kept = np.ones((180, 260), bool)
        kept[60:122, 50:102] = False
        kept[40:60, 50:90] = False
        self.assertTrue((plain[kept] == drawn[kept]).all())
        self.assertTrue((plain[63:119, 53:99] == drawn[63:119, 53:99]).all())
        self.assertEqual(drawn[40:60, 50:90].max(), 255)
        # In a cut they lie where they lie in the frame.
        self.export("--range=0:4000", "--frames=:1", "--draw-regions=some.regions", "--rectangle=40,30,199,179", "wide.seq", "cut.png")
        self.assertTrue((rgb("cut.png") == drawn[30:, 40:200]).all())

    def test_what_a_picture_tells(self):
        self.export("--as=corrected", "--set=warm.cal", "--frames=1:3", "run.seq", "x.png")
        self.assertEqual(sorted(path.name for path in OUT.glob("*.png")), ["x-000001.png", "x-000002.png"])
        told = json.loads(identified("x-000002.png", "%[Description]"))
        self.assertEqual(identified("x-000002.png", "%[Software]"), told["program"])
        self.assertEqual(identified("x-000002.png", "%[Source]"), "made by hand")
        self.assertEqual(identified("x-000002.png", "%[Creation Time]"), "2026-11-18T11:06:40.173456789Z")
        self.assertEqual((told["source"], told["form"], told["columns"]), (str(OUT / "run.seq"), "corrected", COLUMNS))
        self.assertEqual((told["time"]["number"], told["time"]["index"]), (9, 2))
        self.assertEqual(told["colors"], {"first": -100, "last": 300})
        self.assertEqual(told["calibration_sha256"], hashlib.sha256((OUT / "warm.cal").read_bytes()).hexdigest())
        code, out, error = run("--json", "--force", "run.seq", "x.png")
        self.assertEqual(json.loads(out), {"file": "x-000000.png", "last_file": "x-000003.png", "format": "png", "form": "counts", "unit": "Counts",
                                           "frames": 4, "stopped": False}, error)

    def test_a_video_of_the_same_pictures(self):
        stand_in = pathlib.Path(__file__).resolve().parents[1] / "scripts" / "stand_in"
        path = {"PATH": f"{stand_in}:{os.environ['PATH']}"}
        beside = ["--range=40:100", "--scale", "--time", "--as=corrected", "--set=warm.cal", "--unit=celsius"]
        self.export(*beside, "run.seq", "x.mp4", environment=path)
        self.export(*beside, "run.seq", "x.png")
        told, frames = (OUT / "x.mp4").read_bytes().split(b"\n--\n", 1)
        columns, rows = map(int, identified("x-000000.png", "%w %h").split())
        self.assertIn(f"-video_size\n{columns}x{rows}\n-framerate\n100.000000".encode(), told)
        self.assertEqual(frames, b"".join(rgb(f"x-{index:06d}.png").tobytes() for index in range(4)))
        self.expect_refused(["run.seq", "none.mp4", "--as=corrected", "--set=warm.cal"], "A video needs the program ffmpeg, which isn't installed",
                            environment={"PATH": "/nowhere"})
        # Ctrl+C in a terminal reaches all that run there; the video is closed with the frames that it has.
        self.long_recording()
        process = subprocess.Popen([KELVO, "export", "--range=0:3000", "long.seq", "long.mp4"], cwd=OUT, env={**BARE, **path}, stderr=subprocess.PIPE,
                                   text=True, start_new_session=True)
        error = process.stderr.readline()
        os.killpg(process.pid, signal.SIGINT)
        error += process.communicate(timeout=120)[1]
        frames = (OUT / "long.mp4").read_bytes().split(b"\n--\n", 1)[1]
        if process.returncode == 1:
            self.assertIn(f"stopped, long.mp4 has {len(frames) // (3 * 128 * 64)} of 3000 frames", error)
        self.assertEqual((process.returncode in (0, 1), len(frames) % (3 * 128 * 64)), (True, 0), error)

    def test_pictures_that_cant_be(self):
        for arguments, text in [
                (["run.seq", "x.png", "--as=celsius", "--set=warm.cal"], "a picture is made of counts"),
                (["run.seq", "x.mp4", "--as=volts", "--volts=0:1"], "a picture is made of counts"),
                (["run.seq", "x.npy", "--scale"], "are of pictures: png and mp4"), (["run.seq", "x.npy", "--range=1:2"], "are of pictures"),
                (["run.seq", "x.png", "--range=9:9"], "--range LOW:HIGH"), (["run.seq", "x.png", "--range=0:32768"], "--range LOW:HIGH"),
                (["run.seq", "x.png", "--colors=pink"], "--colors says which"), (["run.seq", "x.png", "--unit=watts"], "--unit says"),
                (["run.seq", "x.png", "--scale", "--unit=celsius"], "run.seq has no calibration with two temperatures"),
                (["run.seq", "x.png", "--draw-regions=none.regions"], "none.regions")]:
            self.expect_refused(arguments, text)
        for name in ("x-000002.png", "x-000000.png"):
            (OUT / name).write_text("mine")
            self.expect_refused(["run.seq", "x.png"], f"{name} stands already")
        self.export("--frames=1:2", "run.seq", "x.png")
        data = bytearray(recording())
        struct.pack_into("<hh", data, 112, 0, 0)
        (OUT / "run.seq").write_bytes(data)
        self.expect_refused(["run.seq", "y.png"], "run.seq has no display range: --range LOW:HIGH")

    def test_pictures_before_a_failure_stay_whole(self):
        self.wide_recording()
        self.export("--range=0:4000", "--frames=:1", "wide.seq", "x.png")
        longest = len((OUT / "x.png").read_bytes())
        with open(OUT / "wide.seq", "r+b") as file:  # a frame of noise, which takes more room, in third place
            file.seek(512 + 2 * 2 * 260 * 180)
            file.write(np.random.default_rng(1).integers(0, 4000, 260 * 180).astype("<i2").tobytes())
        code, out, error = run("--range=0:4000", "wide.seq", "y.png", preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (longest + 2000,) * 2))
        self.assertEqual((code, out), (2, ""))
        self.assertIn("y-000002.png can't be written: the disk refuses; y-000000.png to y-000001.png before it stand whole", error)
        self.assertEqual(sorted(path.name for path in OUT.glob("y*")), ["y-000000.png", "y-000001.png"])
        self.assertEqual(rgb("y-000001.png").shape, (180, 260, 3))

    @staticmethod
    def wide_recording():
        """Three frames of 260 x 180: a slope."""
        head = bytearray(recording()[:512])
        struct.pack_into("<hh", head, 2, 260, 180)
        struct.pack_into("<I", head, 42, 3)
        struct.pack_into("<h", head, 144, 0)
        slope = np.add.outer(10 * np.arange(180), 10 * np.arange(260)).astype("<i2")
        (OUT / "wide.seq").write_bytes(bytes(head) + 3 * slope.tobytes())

    # --- What can't be, and what goes wrong

    def test_what_is_wrong_stands_on_the_error_stream(self):
        image = bytearray(recording())
        struct.pack_into("<hfhf", image, 24, COLD, TCOLD, HOT, THOT)
        (OUT / "image.seq").write_bytes(image)
        raw = (OUT / "run.seq.frames").read_bytes()
        for arguments, text in [
                (["run.seq"], "a file of frames and the name of the new file are needed"), (["run.seq", "x"], "--to says which format"),
                (["run.seq", "x.npy", "--as=watts"], "--as says in what form"), (["run.seq", "x.npy", "--frames=3"], "--frames A:B says which frames"),
                (["run.seq", "x.npy", "--frames=4:"], "run.seq has 4 frames: there are none of that range"),
                (["run.seq", "x.npy", "--rectangle=1,2,3"], "--rectangle LEFT,TOP,RIGHT,BOTTOM"),
                (["run.seq", "x.npy", "--rectangle=3,0,9,1"], "The region lies outside of the frame."),
                (["run.seq", "x.npy", "--volts=2:2"], "--volts LOW:HIGH"), (["run.seq", "x.npy", "--as=volts"], "it isn't known what its counts are in volts"),
                (["run.seq", "x.npy", "--as=celsius"], "run.seq has no calibration with two temperatures"),
                (["run.seq", "x.npy", "--as=corrected"], "run.seq isn't corrected: a calibration set is needed"),
                (["run.seq", "x.npy", "--set=warm.cal"], "leave the set out, or ask for corrected ones"),
                (["image.seq", "x.npy", "--set=warm.cal", "--as=kelvin"], "image.seq is corrected already"),
                (["run.seq", "x.npy", "--set=cold.cal", "--as=corrected"], "cold.cal can't be opened"),
                (["none.seq", "x.npy"], "none.seq can't be opened"), (["warm.cal", "x.npy"], "warm.cal isn't an image file"),
                (["run.seq", "x.csv"], "x.csv can't be written: a CSV file holds one frame"),
                (["run.seq", "none/x.npy"], "none/x.npy can't be written: No such file or directory"), (["run.seq", "x.npy", "--all"], "unknown option --all")]:
            self.expect_refused(arguments, text)
        self.assertEqual((OUT / "run.seq.frames").read_bytes(), raw)

    def test_a_file_that_stands_is_replaced_when_that_is_said_alone(self):
        for name in [*FORMATS, "csv"]:
            self.export("run.seq", "--frames=:1", f"x.{name}", "--to", name)
            self.expect_refused(["run.seq", "--frames=1:2", f"x.{name}", "--to", name], f"x.{name} stands already")
            before = (OUT / f"x.{name}").read_bytes()
            self.export("--force", "--frames=1:2", "run.seq", f"x.{name}", "--to", name)
            self.assertNotEqual((OUT / f"x.{name}").read_bytes(), before)
            (OUT / "folder").mkdir(exist_ok=True)
            self.expect_refused(["run.seq", "--frames=:1", "--force", "folder", "--to", name], "folder is a directory")

    def test_a_recording_is_never_replaced_by_its_own_export(self):
        (OUT / "link.seq").symlink_to("run.seq")
        for out in ("run.seq", "./run.seq", "link.seq", "RUN.SEQ"):
            for name in FORMATS:
                self.expect_refused(["--force", "--to", name, "run.seq", out], f"{out} is the file that is exported")

    def test_what_was_made_is_told(self):
        code, out, error = run("--json", "--as=celsius", "--set=warm.cal", "run.seq", "x.npy")
        self.assertEqual(code, 0, error)
        self.assertEqual(json.loads(out), {"file": "x.npy", "format": "npy", "form": "celsius", "unit": "\u00b0C", "frames": 4, "stopped": False})
        self.assertEqual(error.splitlines()[-1], "kelvo export: 4 of 4 frames")

    def test_a_limit_on_the_length_of_files(self):
        for name in [*FORMATS, "csv"]:
            arguments = ["--frames=:1", "--to", name, "run.seq", f"x.{name}"]
            self.export(*arguments)
            longest = len((OUT / f"x.{name}").read_bytes())
            for path in OUT.glob("x.*"):
                path.unlink()
            for length in (0, longest // 2, longest - 2880, longest - 1):
                if length < 0:
                    continue
                self.expect_refused(arguments, " can't be written: the disk refuses",
                                    preexec_fn=lambda length=length: resource.setrlimit(resource.RLIMIT_FSIZE, (length, length)))

    def test_a_disk_that_is_full(self):
        """A file system of 64 kB doesn't take 3000 frames, and keeps what stood there."""
        if subprocess.run(["unshare", "--mount", "true"], stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("no file system can be mounted here")
        (OUT / "small").mkdir()
        self.long_recording()
        for name in FORMATS:
            script = f"""mount -t tmpfs -o size=64k none small && echo mine >small/x.{name}
                "$@" --force --to {name} long.seq small/x.{name}; code=$?; ls -A small; cat small/x.{name}; exit $code"""
            done = subprocess.run(["unshare", "--mount", "sh", "-c", script, "sh", KELVO, "export"], cwd=OUT, env=BARE, capture_output=True, text=True, timeout=300)
            self.assertEqual((done.returncode, done.stdout), (2, f"x.{name}\nmine\n"), done.stderr)
            self.assertIn(f"small/x.{name} can't be written: ", done.stderr.splitlines()[-1])

    def test_an_interrupt_finishes_the_frame_and_closes_the_file(self):
        self.long_recording()
        for name in FORMATS:
            code, error = self.interrupted(name, signal.SIGINT)
            if code == 0:
                continue  # it was quicker
            self.assertEqual(code, 1, error)
            got = READERS[name](f"x.{name}")
            self.assertIn(f"kelvo export: stopped, x.{name} has {len(got)} of 3000 frames", error)
            self.assertTrue(0 < len(got) < 3000)
            self.assertTrue((got == np.arange(1, len(got) + 1, dtype="<i2")[:, None, None]).all())

    def test_a_kill_leaves_nothing_under_the_name(self):
        self.long_recording()
        for name in FORMATS:
            code, error = self.interrupted(name, signal.SIGKILL)
            self.assertEqual((OUT / f"x.{name}").exists(), code == 0, error)
            self.export("--frames=:2", "--force", "--to", name, "long.seq", f"x.{name}")
            self.assertEqual(len(READERS[name](f"x.{name}")), 2)

    @staticmethod
    def long_recording():
        """3000 frames of 128 x 64; all pixels of a frame are its number, from 1."""
        head = bytearray(recording()[:512])
        struct.pack_into("<hh", head, 2, 128, 64)
        struct.pack_into("<h", head, 144, 0)
        frames = np.repeat(np.arange(1, 3001, dtype="<i2"), 128 * 64)
        (OUT / "long.seq").write_bytes(bytes(head) + frames.tobytes())

    @staticmethod
    def interrupted(name, which):
        process = subprocess.Popen([KELVO, "export", "--to", name, "long.seq", f"x.{name}"], cwd=OUT, env=BARE, stderr=subprocess.PIPE, text=True)
        first = process.stderr.readline()
        process.send_signal(which)
        error = first + process.communicate(timeout=120)[1]
        return process.returncode, error


def identified(name, what):
    """What ImageMagick tells of a picture."""
    return subprocess.run(["identify", "-format", what, name], cwd=OUT, capture_output=True, text=True, check=True).stdout


def rgb(name):
    """A picture's pixels as ImageMagick reads them: rows x columns x red, green, blue."""
    subprocess.run(["stream", "-map", "rgb", "-storage-type", "char", name, "pixels.rgb"], cwd=OUT, check=True, capture_output=True)
    data = np.fromfile(OUT / "pixels.rgb", np.uint8)
    (OUT / "pixels.rgb").unlink()
    columns, rows = map(int, identified(name, "%w %h").split())
    return data.reshape(rows, columns, 3)


def read_npy(name):
    return np.load(OUT / name, allow_pickle=False)


def read_tiff(name):
    with tifffile.TiffFile(OUT / name) as file:
        return np.array([page.asarray() for page in file.pages])


def read_fits(name):
    """In native order, as the other readers give it."""
    with fits.open(OUT / name, checksum=True) as file:
        return file[0].data.astype(file[0].data.dtype.newbyteorder("="))


def read_hdf5(name):
    with h5py.File(OUT / name) as file:
        return file["frames"][()]


READERS = {"npy": read_npy, "tiff": read_tiff, "fits": read_fits, "hdf5": read_hdf5}
COMMA = {"LC_ALL": "de_DE.UTF-8", "LOCPATH": sys.argv[3]} if len(sys.argv) > 3 else {}

warnings.simplefilter("error", AstropyWarning)  # a checksum that doesn't hold, a card that breaks a rule
if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
