#!/usr/bin/env python3
"""kelvo stats beside Python's own statistics, by its table and by its JSON, and all that it has to refuse.

  stats_test.py KELVO OUT [LOCPATH]      OUT: emptied. LOCPATH: where the locale de_DE.UTF-8 lies
"""
import csv
import json
import os
import pathlib
import random
import shutil
import signal
import statistics
import struct
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import made_by_hand

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
BARE = {name: value for name, value in os.environ.items()
        if name not in ("DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "QT_QPA_PLATFORM", "HOME") and not name.startswith("LC_")}
COLUMNS, ROWS, FRAMES = 17, 11, 150  # more frames than are measured at once
COLD, HOT, TEMPERATURE_COLD, TEMPERATURE_HOT = 3000, 9000, 20.0, 35.0
FIGURES = ["pixels", "left_out", "mean", "deviation", "min", "min_x", "min_y", "max", "max_x", "max_y", "saturated", "outside_sources"]


def sequence(frames, columns=COLUMNS, rows=ROWS, calibrated=True):
    head = bytearray(512)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", columns), (4, "<h", rows), (6, "<h", 2), (40, "<h", 8), (42, "<I", len(frames)), (56, "<f", 50.0)]:
        struct.pack_into(kind, head, place, value)
    struct.pack_into("<hfhf", head, 24, *((COLD, TEMPERATURE_COLD, HOT, TEMPERATURE_HOT) if calibrated else (-10000, -999.0, -10000, -999.0)))
    return bytes(head) + b"".join(struct.pack(f"<{len(frame)}h", *frame) for frame in frames)


def run(*arguments, environment=None):
    done = subprocess.run([KELVO, "stats", *arguments], cwd=OUT, env={**BARE, **(environment or {})}, capture_output=True, text=True, errors="surrogateescape", timeout=120)
    return done.returncode, done.stdout, done.stderr


def measured(frame, pixels, bad=()):
    """The figures of pixels (x, y), row by row, in counts."""
    good = [(frame[y * COLUMNS + x], x, y) for x, y in pixels if (x, y) not in bad]
    counts = [count for count, _, _ in good]
    least, most = min(counts), max(counts)
    return {"pixels": len(counts), "left_out": len(pixels) - len(good), "mean": statistics.fmean(counts), "deviation": statistics.stdev(counts) if len(counts) > 1 else 0,
            "min": least, "max": most, **{f"min_{axis}": place for axis, place in zip("xy", next((x, y) for c, x, y in good if c == least))},
            **{f"max_{axis}": place for axis, place in zip("xy", next((x, y) for c, x, y in good if c == most))}, "saturated": None,
            "outside_sources": sum(not COLD <= count <= HOT for count in counts)}


def rectangle(x1, y1, x2, y2):
    return [(x, y) for y in range(y1, y2 + 1) for x in range(x1, x2 + 1)]


class Stats(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        draw = random.Random(7)
        cls.frames = [[draw.randint(2000, 10000) for _ in range(COLUMNS * ROWS)] for _ in range(FRAMES)]

    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        (OUT / "run.seq").write_bytes(sequence(self.frames))
        (OUT / "two.regions").write_text(json.dumps({"format": "Kelvo regions", "version": 1, "columns": COLUMNS, "rows": ROWS, "regions": [
            {"name": "hot, plate", "shape": "rectangle", "x1": 2, "y1": 1, "x2": 8, "y2": 6}, {"name": "spot", "shape": "point", "x1": 16, "y1": 10}]}))

    def told(self, *arguments):
        code, out, error = run(*arguments, "--json")
        self.assertEqual(code, 0, error)
        return [json.loads(line) for line in out.splitlines()]

    def expect_figures(self, told, expected):
        for name in FIGURES:
            if isinstance(expected[name], float):
                self.assertAlmostEqual(told[name], expected[name], delta=1e-9 * abs(expected[name]), msg=name)
            else:
                self.assertEqual(told[name], expected[name], name)

    def test_each_frame_of_the_whole_picture(self):
        told = self.told("run.seq")
        self.assertEqual([(each["frame"], each["region"], each["utc"]) for each in told], [(frame, "frame", None) for frame in range(FRAMES)])
        for frame, each in zip(self.frames, told):
            self.expect_figures(each, measured(frame, rectangle(0, 0, COLUMNS - 1, ROWS - 1)))
        self.assertAlmostEqual(told[75]["seconds"], 75 / 50)

    def test_regions_of_a_file_and_a_rectangle(self):
        told = self.told("run.seq", "--region", "two.regions", "--rectangle", "3,2,3,2", "--frames", "60:130")
        self.assertEqual([(each["frame"], each["region"]) for each in told], [(frame, name) for frame in range(60, 130) for name in ("rectangle", "hot, plate", "spot")])
        for place, frame in enumerate(self.frames[60:130]):
            self.expect_figures(told[3 * place], measured(frame, [(3, 2)]))
            self.expect_figures(told[3 * place + 1], measured(frame, rectangle(2, 1, 8, 6)))
            self.expect_figures(told[3 * place + 2], measured(frame, [(16, 10)]))
        self.assertEqual({each["region"] for each in self.told("run.seq", "--region=two.regions:spot")}, {"spot"})
        (OUT / "two.regions:spot").write_text((OUT / "two.regions").read_text())
        self.assertEqual(len(self.told("run.seq", "--region=two.regions:spot", "--frames=0:1")), 2, "a file of that name is meant first")

    def test_degrees(self):
        """Between the sources a count is 15 degrees / 6000."""
        step = (TEMPERATURE_HOT - TEMPERATURE_COLD) / (HOT - COLD)
        for unit, celsius in (("celsius", lambda t: t), ("kelvin", lambda t: t + 273.15), ("fahrenheit", lambda t: t * 1.8 + 32)):
            (each,) = self.told("run.seq", "--rectangle=2,1,8,6", "--frames=3:4", "--unit", unit)
            counts = measured(self.frames[3], rectangle(2, 1, 8, 6))
            for name in ("mean", "min", "max"):
                self.assertAlmostEqual(each[name], celsius((counts[name] - COLD) * step + TEMPERATURE_COLD), delta=5e-5, msg=(unit, name))
            self.assertAlmostEqual(each["deviation"], counts["deviation"] * step * (1.8 if unit == "fahrenheit" else 1), delta=1e-6)
            self.assertEqual([each[name] for name in ("min_x", "max_y", "outside_sources")], [counts[name] for name in ("min_x", "max_y", "outside_sources")])

    def test_volts(self):
        """By the display range of the header, whose two ends are given."""
        image = bytearray((OUT / "run.seq").read_bytes())
        struct.pack_into("<hh", image, 112, -400, 12000)
        (OUT / "range.seq").write_bytes(image)
        step = (2.5 - -0.5) / (12000 - -400)
        (each,) = self.told("range.seq", "--rectangle=2,1,8,6", "--frames=3:4", "--unit=volts", "--volts=-0.5:2.5")
        counts = measured(self.frames[3], rectangle(2, 1, 8, 6))
        self.assertAlmostEqual(each["mean"], (counts["mean"] - -400) * step - 0.5, delta=1e-9)
        self.assertAlmostEqual(each["deviation"], counts["deviation"] * step, delta=1e-9)
        for name in ("min", "max"):  # rounded to single once
            exact = 3.0 * (counts[name] - -400) / 12400 - 0.5
            self.assertEqual(struct.pack("<f", each[name]), struct.pack("<f", exact), name)
        self.assertEqual([each[name] for name in ("min_x", "max_y", "outside_sources")], [counts[name] for name in ("min_x", "max_y", "outside_sources")])
        # A camera that counts up as its voltage falls: the least count has the most volts, and a deviation is none the less above 0.
        (each,) = self.told("range.seq", "--rectangle=2,1,8,6", "--frames=3:4", "--unit=volts", "--volts=2.5:-0.5")
        self.assertAlmostEqual(each["mean"], 2.5 - (counts["mean"] - -400) * step, delta=1e-9)
        self.assertAlmostEqual(each["deviation"], counts["deviation"] * step, delta=1e-9)
        self.assertGreater(each["min"], each["max"])
        code, out, error = run("range.seq", "--unit=volts", "--volts=-0.5:2.5", "--frames=:1")
        self.assertEqual((code, "# unit: volts" in out.splitlines()), (0, True), error)

    def test_a_name_of_a_region_may_hold_colons(self):
        (OUT / "colon.regions").write_text(json.dumps({"format": "Kelvo regions", "version": 1, "columns": COLUMNS, "rows": ROWS, "regions": [
            {"name": "a:b:c", "shape": "point", "x1": 3, "y1": 2}, {"name": "c", "shape": "point", "x1": 4, "y1": 2}]}))
        (each,) = self.told("run.seq", "--region=colon.regions:a:b:c", "--frames=:1")
        self.assertEqual((each["region"], each["mean"]), ("a:b:c", self.frames[0][2 * COLUMNS + 3]))

    def test_bad_detectors_are_left_out(self):
        detectors = COLUMNS * ROWS
        (OUT / "warm.cal").write_text("[Calibration]\nCalType=2\nDecomFile=warm.dcm\nGainFile=warm.gai\nOffsetFile=warm.off\nBadDetFile=warm.bad\n")
        (OUT / "warm.dcm").write_bytes(struct.pack(f"<{detectors}I", *range(detectors)))
        (OUT / "warm.gai").write_bytes(struct.pack(f"<{detectors}f", *(0 if i == 5 else 1 for i in range(detectors))))
        (OUT / "warm.off").write_bytes(bytes(2 * detectors))
        (OUT / "warm.bad").write_text("   2,   7\n")
        told = self.told("run.seq", "--bad", "warm.cal")
        for frame, each in zip(self.frames, told):
            self.expect_figures(each, measured(frame, rectangle(0, 0, COLUMNS - 1, ROWS - 1), bad={(5, 0), (7, 2)}))

    def test_the_table_says_the_same(self):
        code, out, error = run("run.seq", "--region", "two.regions")
        self.assertEqual(code, 0)
        self.assertEqual(error.splitlines()[-1], "kelvo stats: 150 of 150 frames")
        lines = out.splitlines()
        head = [line for line in lines if line.startswith("#")]
        self.assertRegex(head[0], r"^# Kelvo [0-9.]+, kelvo stats$")
        self.assertEqual(head[1:], [f"# file: {OUT}/run.seq", "# unit: counts"])
        table = list(csv.DictReader(lines[len(head):]))
        for row, each in zip(table, self.told("run.seq", "--region", "two.regions"), strict=True):
            self.assertEqual(list(row), ["frame", "seconds", "utc", "region", *FIGURES])
            for name, text in row.items():
                self.assertEqual(text if isinstance(each[name], str) else json.loads(text or "null"), each[name])

    def test_what_the_journal_knows(self):
        numbers = [4, 5, 9]
        (OUT / "raw.seq").write_bytes(made_by_hand.sequence(numbers))
        (OUT / "raw.seq.frames").write_bytes(made_by_hand.journal(numbers, text=b"Pixels=raw\n"))
        told = self.told("raw.seq")
        # 10 times the number, and the place: 40 to 45.
        self.assertEqual([(each["mean"], each["min"], each["max"]) for each in told], [(42.5, 40, 45), (52.5, 50, 55), (92.5, 90, 95)])
        self.assertEqual([each["seconds"] for each in told], [0, 1e-6, 5e-6])
        self.assertEqual(told[2]["utc"], "1970-01-01T00:00:00.000018000Z")
        self.assertEqual([each["saturated"] for each in told], [0, 0, 0])
        code, out, error = run("raw.seq", "--unit=celsius")
        self.assertEqual((code, out, error), (2, "", "kelvo stats: raw.seq holds raw frames, which don't read in degrees: apply a set first\n"))

    def test_what_is_refused(self):
        (OUT / "plain.seq").write_bytes(sequence(self.frames[:1], calibrated=False))
        (OUT / "bad.regions").write_text("{]")
        for arguments, text in [([], "one file is needed"), (["run.seq", "run.seq"], "one file is needed"), (["none.seq"], "none.seq can't be opened"),
                                (["two.regions"], "two.regions isn't an image file"), (["run.seq", "--frames=150:"], "run.seq has 150 frames: there are none of that range"),
                                (["run.seq", "--frames=x"], "--frames A:B says which frames"), (["run.seq", "--rectangle=1,2,3"], "--rectangle LEFT,TOP,RIGHT,BOTTOM"),
                                (["run.seq", "--rectangle=1,2,3,4,5"], "--rectangle LEFT"), (["run.seq", "--rectangle=-1,2,3,4"], "--rectangle LEFT"), (["run.seq", "--rectangle=1,2,3,99999"], "--rectangle LEFT"),
                                (["run.seq", "--rectangle=17,0,20,3"], "region rectangle has no pixel in run.seq"), (["run.seq", "--region=none.regions"], "none.regions"),
                                (["run.seq", "--region=bad.regions"], "bad.regions"), (["run.seq", "--region=two.regions:none"], "two.regions has no region none"),
                                (["run.seq", "--unit=watts"], "--unit wants counts, volts, celsius, kelvin or fahrenheit, not watts"),
                                (["run.seq", "--unit=volts"], "run.seq doesn't say what its counts are in volts: --volts LOW:HIGH does"),
                                (["run.seq", "--unit=volts", "--volts=0:1"], "run.seq doesn't say what its counts are in volts"),
                                (["run.seq", "--unit=volts", "--volts=1:1"], "--volts LOW:HIGH says what the two ends of the display range are in volts"),
                                (["run.seq", "--frames=3:2"], "run.seq has 150 frames: there are none of that range"),
                                (["plain.seq", "--unit=celsius"], "plain.seq names no two sources with temperatures: it doesn't read in degrees"),
                                (["run.seq", "--bad=none.cal"], "none.cal")]:
            with self.subTest(arguments):
                code, out, error = run(*arguments)
                self.assertEqual((code, out), (2, ""), error)
                self.assertTrue(error.splitlines()[-1].startswith("kelvo stats: "), error)
                self.assertIn(text, error)

    def test_any_bytes_are_a_file(self):
        draw = random.Random(3)
        whole = (OUT / "run.seq").read_bytes()
        for _ in range(60):
            contents = bytearray(whole[:2000])
            for _ in range(draw.randint(1, 40)):
                contents[draw.randrange(512)] = draw.choice((0, 1, 0x7F, 0x80, 0xFF))
            (OUT / "hostile.seq").write_bytes(contents)
            code, _, error = run("hostile.seq", "--unit", draw.choice(("counts", "celsius")))
            self.assertIn(code, (0, 2), error)
            if code == 2:
                self.assertTrue(error.splitlines()[-1].startswith("kelvo stats: hostile.seq "), error)

    def test_in_another_locale_all_is_the_same(self):
        locales = [{"LANG": "C"}, {"LC_ALL": "C.UTF-8"}]
        if len(sys.argv) > 3:
            locales.append({"LC_ALL": "de_DE.UTF-8", "LOCPATH": sys.argv[3]})
        self.assertEqual(len({(run("run.seq", "--unit=celsius", environment=locale), run("run.seq", "--json", environment=locale)) for locale in locales}), 1)

    def test_interrupted_it_ends_by_the_signal(self):
        """In the midst of a table that nobody reads."""
        (OUT / "run.seq").write_bytes(sequence(self.frames * 20))
        reader, writer = os.pipe()
        process = subprocess.Popen([KELVO, "stats", "--json", *["--region=two.regions"], "run.seq"], cwd=OUT, env=BARE, stdout=writer, stderr=subprocess.DEVNULL)
        os.close(writer)
        time.sleep(1)
        self.assertIsNone(process.poll(), "its lines are longer than the pipe")
        process.send_signal(signal.SIGINT)
        written = bytearray()
        while part := os.read(reader, 65536):
            written += part
        os.close(reader)
        self.assertEqual(process.wait(timeout=60), -signal.SIGINT)
        self.assertLess(len(written.splitlines()), 20 * 2 * FRAMES)

    def test_an_output_that_takes_nothing(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([KELVO, "stats", "run.seq"], cwd=OUT, env=BARE, stdout=full, stderr=subprocess.PIPE, text=True)
        self.assertEqual((done.returncode, done.stderr.splitlines()[-1]), (2, "kelvo stats: the standard output takes nothing"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
