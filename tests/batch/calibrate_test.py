#!/usr/bin/env python3
"""kelvo calibrate on six detectors that can be reckoned in the head, and all that it has to refuse.

  calibrate_test.py KELVO OUT [LOCPATH]      OUT: emptied. LOCPATH: where the locale de_DE.UTF-8 lies
"""
import json
import os
import pathlib
import resource
import shutil
import signal
import struct
import subprocess
import sys
import time
import unittest

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
BARE = {name: value for name, value in os.environ.items()
        if name not in ("DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "QT_QPA_PLATFORM", "HOME") and not name.startswith(("LC_", "XDG_"))}
COLUMNS, ROWS = 3, 2
SET = (".gai", ".off", ".noi", ".dcm", ".bad", ".cal")
LOW = [1000, 1001, 1002, 1003, 1004, 1005]
HIGH = [1400, 1401, 1402, 1403, 1404, 1015]  # the last one hardly responds
TWO = ["--low", "low.seq", "--high", "high.seq", "--tlow", "20.5", "--thigh", "25", "--data", "data", "--camera", "7", "--out", "made.cal"]
ONE = ["--low", "low.seq", "--tlow", "20.5", "--data", "data", "--camera", "7", "--out", "made.cal"]
CAMERA = "[Camera.7]\nDescription=six detectors\nVroi=2\nHroi=3\nDecomScheme=2\nHdelay=0\nUnityOffset=8192\nfFrameRate=48.5\nIndexIntegrationTime=4,5,6,7\n"


def sequence(frames, columns=COLUMNS, rows=ROWS, sample=2, cold=-10000):
    head = bytearray(512)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", columns), (4, "<h", rows), (6, "<h", sample), (24, "<h", cold), (40, "<h", 8), (42, "<I", len(frames))]:
        struct.pack_into(kind, head, place, value)
    return bytes(head) + b"".join(struct.pack(f"<{len(frame)}h", *frame) for frame in frames)


def npy(frames, kind, columns=COLUMNS, rows=ROWS):
    head = f"{{'descr': '{kind}', 'fortran_order': False, 'shape': ({len(frames)}, {rows}, {columns}), }}".ljust(117) + "\n"
    return b"\x93NUMPY\x01\x00" + struct.pack("<H", len(head)) + head.encode() + b"".join(struct.pack(f"<{len(frame)}{'hH'[kind == '<u2']}", *frame) for frame in frames)


def run(arguments, environment=None, before=(), **more):
    done = subprocess.run([*before, KELVO, "calibrate", *arguments], cwd=OUT, env={**BARE, **(environment or {})}, capture_output=True, timeout=120, **more)
    return done.returncode, done.stdout.decode(errors="surrogateescape"), done.stderr.decode(errors="surrogateescape")


def everything():
    return {str(path.relative_to(OUT)): path.read_bytes() for path in OUT.rglob("*") if path.is_file()}


def made():
    return {path.name: path.read_bytes() for path in OUT.glob("made.*")}


class Calibrate(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "data").mkdir(parents=True)
        (OUT / "data/camera.ini").write_text(CAMERA)
        (OUT / "data/nearccw.prs").write_text("row,col\n0,-1\n")
        (OUT / "low.seq").write_bytes(sequence([LOW]))
        (OUT / "high.seq").write_bytes(sequence([HIGH]))

    def expect_refused(self, arguments, text, **more):
        """With 2, a line on the error stream, and nothing changed."""
        before = everything()
        code, out, error = run(arguments, **more)
        self.assertEqual((code, out), (2, ""), error)
        last = error.splitlines()[-1]
        self.assertTrue(last.startswith("kelvo calibrate: "), error)
        self.assertIn(text, last)
        self.assertEqual(everything(), before)

    def test_two_points(self):
        code, out, error = run([*TWO, "--json"])
        self.assertEqual((code, error), (0, "kelvo calibrate: low source, 1 of 1 frames\nkelvo calibrate: high source, 1 of 1 frames\n"))
        self.assertEqual(json.loads(out), {"set": f"{OUT}/made.cal", "type": 2, "camera": 7, "frames": 1, "detectors": 6, "bad": 1,
                                           "intensity_cold": 1002, "intensity_hot": 1402})
        # Each of five responds by 400 counts as their mean does; their mean at the low source is 1002.
        self.assertEqual(struct.unpack("<6f", (OUT / "made.gai").read_bytes()), (1, 1, 1, 1, 1, 0))
        self.assertEqual(struct.unpack("<6h", (OUT / "made.off").read_bytes()), (-2, -1, 0, 1, 2, 0))
        # One frame has no noise. The neighbour to the left answers for the sixth.
        self.assertFalse((OUT / "made.noi").exists())
        self.assertEqual(struct.unpack("<6I", (OUT / "made.dcm").read_bytes()), (0, 1, 2, 3, 4, 4))
        self.assertEqual((OUT / "made.bad").read_bytes(), b"   1,   2\n")
        cal = (OUT / "made.cal").read_text()
        for line in ("NumFrames=1", "BadDetFile=made.bad", "DecomFile=made.dcm", "GainFile=made.gai", "OffsetFile=made.off", "CalType=2", f"CalFile={OUT}/made.cal",
                     "DriverNumber=7", "TemperatureCold=20.500000", "TemperatureHot=25.000000", "IntensityCold=1002", "IntensityHot=1402", "ActiveCamera=7",
                     "SubstBadPixels=1", "FrameRate=48.5", "IntTime=4"):
            self.assertIn(line, cal.splitlines())

    def test_noise_is_that_of_the_low_source(self):
        """Three frames about the same mean: 2 counts below, on it, 2 above: a deviation of 2 counts, 40 steps of 1/20. The third detector has 20 counts."""
        spread = [2, 2, 20, 2, 2, 2]
        (OUT / "low.seq").write_bytes(sequence([[v + k * s for v, s in zip(LOW, spread)] for k in (-1, 0, 1)]))
        (OUT / "high.seq").write_bytes(sequence([HIGH] * 3))
        code, out, _ = run(TWO)
        self.assertEqual(code, 0)
        self.assertEqual(struct.unpack("<6h", (OUT / "made.noi").read_bytes()), (40, 40, 400, 40, 40, 40))
        self.assertEqual(struct.unpack("<6f", (OUT / "made.gai").read_bytes()), (1, 1, 0, 1, 1, 0), "20 counts are more than 9")
        self.assertEqual((OUT / "made.bad").read_bytes(), b"   0,   2\n   1,   2\n")
        self.assertIn("Noisy =     1", out)
        for name in made():
            (OUT / name).unlink()
        self.assertEqual(run([*TWO, "--keep-noisy"])[0], 0)
        self.assertEqual(struct.unpack("<6f", (OUT / "made.gai").read_bytes()), (1, 1, 1, 1, 1, 0))

    def test_foreign_files_give_the_same_set(self):
        """As raw frames in .npy; where the samples of one reach beyond 32767, those of both are taken 32768 lower."""
        self.assertEqual(run(TWO)[0], 0)
        expected = {name: (OUT / name).read_bytes() for name in made() if not name.endswith(".cal")}
        for add, kind, told in ((0, "<i2", False), (0, "<u2", False), (31500, "<u2", True)):  # of these only the high source lies above
            for name in made():
                (OUT / name).unlink()
            for name, frame in (("low", LOW), ("high", HIGH)):
                (OUT / f"{name}.npy").write_bytes(npy([[count + add for count in frame]], kind))
            code, out, error = run([argument.replace(".seq", ".npy") for argument in TWO] + ["--json"])
            self.assertEqual((code, "32768 lower" in error), (0, told), error)
            self.assertEqual(json.loads(out)["intensity_cold"], 1002 + add - 32768 * told)
            self.assertEqual({name: (OUT / name).read_bytes() for name in expected}, expected, (add, kind))

    def test_samples_of_two_kinds_are_refused(self):
        (OUT / "low.npy").write_bytes(npy([LOW], "<i2"))
        (OUT / "high.npy").write_bytes(npy([[count + 32000 for count in HIGH]], "<u2"))
        self.expect_refused([argument.replace(".seq", ".npy") for argument in TWO],
                            "high.npy has samples above 32767, which are taken 32768 lower, and low.npy has samples with a sign: they can't be compared")
        self.expect_refused([argument.replace("high.seq", "high.npy") for argument in TWO], "low.seq has samples with a sign")

    def test_one_point(self):
        code, out, _ = run(ONE)
        self.assertEqual(code, 0)
        # All are good; their mean is 1002.5, and a half is rounded away from zero.
        self.assertIn("Total bad pixels =      0", out)
        self.assertEqual(struct.unpack("<6f", (OUT / "made.gai").read_bytes()), (1,) * 6)
        self.assertEqual(struct.unpack("<6h", (OUT / "made.off").read_bytes()), (-3, -2, -1, 1, 2, 3))
        self.assertEqual((OUT / "made.bad").read_bytes(), b"")
        self.assertEqual(struct.unpack("<6I", (OUT / "made.dcm").read_bytes()), (0, 1, 2, 3, 4, 5))
        cal = (OUT / "made.cal").read_text().splitlines()
        self.assertIn("CalType=1", cal)
        self.assertIn("IntensityCold=1003", cal)
        self.assertFalse([line for line in cal if line.startswith(("TemperatureHot", "IntensityHot"))])

    def test_settings_beside_come_along_and_stay(self):
        ini = "; of the laboratory\r\n[Display]\r\nMirrorHoriz=1\r\n[Calibration]\r\nNoiseFloor=5\r\nCalFile=c:\\KELVO\\old.cal\r\nEmissivityCold=0.9\r\n[Own]\r\nkey=1\r\n"
        (OUT / "data/kelvo.ini").write_bytes(ini.encode())
        before = everything()
        self.assertEqual(run([*TWO, "--elow", "0.95", "--ehigh", "1"])[0], 0)
        # The sixth responds by 10 counts, more than 5: by a fortieth of the others' 400, which is far from the mean of 335.
        self.assertEqual(struct.unpack("<6f", (OUT / "made.gai").read_bytes())[5], 0)
        # Rows are reversed behind the replacement.
        self.assertEqual(struct.unpack("<6I", (OUT / "made.dcm").read_bytes()), (3, 4, 4, 0, 1, 2))
        cal = (OUT / "made.cal").read_bytes().decode().split("\r\n")
        for line in ("; of the laboratory", "MirrorHoriz=1", "NoiseFloor=5", "EmissivityCold=0.950000", "EmissivityHot=1.000000", "[Own]", "key=1", f"CalFile={OUT}/made.cal"):
            self.assertIn(line, cal)
        self.assertEqual({name: contents for name, contents in everything().items() if not name.startswith("made.")}, before)

    def test_what_is_refused(self):
        (OUT / "high2.seq").write_bytes(sequence([HIGH, HIGH]))
        (OUT / "wide.seq").write_bytes(sequence([LOW + LOW], columns=6))
        (OUT / "zero.seq").write_bytes(sequence([[0] * 6]))
        (OUT / "floats.seq").write_bytes(sequence([[0] * 12], sample=4))
        (OUT / "corrected.seq").write_bytes(sequence([LOW], cold=3000))
        (OUT / "flat.seq").write_bytes(sequence([[v + 1 for v in LOW]]))
        (OUT / "stands.bad").touch()
        (OUT / "report.report.txt").touch()
        (OUT / "folder.gai").mkdir()

        def with_(option, value, arguments=TWO):
            changed = list(arguments)
            if option in changed:
                changed[changed.index(option) + 1] = value
            else:
                changed += [option, value]
            return changed

        for arguments, text in [([], "--low FILE and --out X.cal are needed"), (["run.seq"], "files are named by --low, --high and --out alone"),
                                (with_("--tlow", "warm"), "--tlow wants degrees Celsius from -274 to 2500, not warm"), (with_("--tlow", "20,5"), "--tlow wants degrees"),
                                (with_("--thigh", "nan"), "--thigh wants degrees"), (with_("--thigh", "20"), "--thigh is not above --tlow"),
                                (with_("--ehigh", "1.5"), "--ehigh wants a number above 0"), (with_("--elow", "0"), "--elow wants a number above 0"),
                                (with_("--thigh", "25", ONE), "--high FILE is needed"), (with_("--frames", "3"), "--frames A:B says which frames"),
                                (with_("--frames", "1:"), "low.seq has 1 frames: there are none of that range"), (with_("--camera", "x"), "--camera wants the number"),
                                (with_("--camera", "8"), f"{OUT}/data/camera.ini has no section Camera.8"), (with_("--data", "none"), "/none/camera.ini has no section Camera.7"),
                                (with_("--low", "none.seq"), "none.seq can't be opened"), (with_("--low", "data/camera.ini"), "camera.ini isn't an image file"),
                                (with_("--low", "wide.seq"), "wide.seq has frames of 6 x 2 pixels, Camera.7 has 3 x 2"), (with_("--low", "zero.seq"), "all zero"),
                                (with_("--low", "floats.seq"), "floats.seq holds floats, not counts"), (with_("--low", "corrected.seq"), "is corrected already"),
                                (with_("--high", "high2.seq"), "as many frames are needed of one source as of the other"),
                                (with_("--high", "flat.seq"), "too few good detectors"),
                                (with_("--out", "made"), "made doesn't end in .cal"), (with_("--out", "stands.cal"), "stands.bad stands already"),
                                (with_("--out", "report.cal"), "report.report.txt stands already"), (with_("--out", "folder.cal"), "folder.gai stands already"),
                                (with_("--out", "none/made.cal"), "none/made.cal can't be written: No such file or directory"),
                                (with_("--bad-list", "none.bad"), "none.bad can't be opened"), ([*with_("--bad-list", "stands.bad"), "--keep-bad"], "exclude each other"),
                                ([*TWO, "--bogus"], "unknown option --bogus")]:
            with self.subTest(arguments):
                self.expect_refused(arguments, text)
        (OUT / "data/nearccw.prs").unlink()
        self.expect_refused(TWO, "nearccw.prs, where neighbours of bad pixels are looked for, can't be opened")
        self.assertEqual(run([*TWO, "--keep-bad"])[0], 0)
        self.assertEqual(sorted(made()), ["made.cal", "made.dcm", "made.gai", "made.off"])

    def test_without_a_home_and_without_settings(self):
        arguments = [word for word in ONE if word not in ("--data", "data", "--camera", "7")]
        self.expect_refused(arguments, "/kelvo/camera.ini has no section Camera.2 with a region", environment={"XDG_DATA_HOME": str(OUT / "own"), "XDG_CONFIG_HOME": str(OUT / "own")})

    def test_the_directory_by_default(self):
        own = OUT / "own/kelvo"
        shutil.copytree(OUT / "data", own)
        (own / "kelvo.ini").write_text("[Setup]\nActiveCamera=7\n")
        arguments = [word for word in TWO if word not in ("--data", "data", "--camera", "7")]
        self.assertEqual(run(arguments, environment={"XDG_DATA_HOME": str(OUT / "own"), "XDG_CONFIG_HOME": str(OUT / "config")})[0], 0)
        self.assertEqual(len(made()["made.gai"]), 24)

    def test_a_disk_that_refuses(self):
        self.assertEqual(run(TWO)[0], 0)
        whole = made()
        for name in whole:
            (OUT / name).unlink()
        for length in (0, 1, 23, 24, len(whole["made.cal"]) - 1):
            self.expect_refused(TWO, "can't be written: ", preexec_fn=lambda length=length: resource.setrlimit(resource.RLIMIT_FSIZE, (length, length)))
        self.assertEqual(run(TWO)[0], 0)
        self.assertEqual(made(), whole)

    def test_interrupted_it_leaves_nothing(self):
        reader, writer = os.pipe()
        os.set_blocking(writer, False)
        try:
            while True:
                os.write(writer, b"\n" * 4096)
        except BlockingIOError:
            pass
        os.set_blocking(writer, True)
        before = everything()
        process = subprocess.Popen([KELVO, "calibrate", *TWO], cwd=OUT, env=BARE, stdout=subprocess.DEVNULL, stderr=writer)
        os.close(writer)
        for _ in range(600):  # until it has begun, and waits for somebody to read what it says
            if (OUT / ".made.cal.new").exists():
                break
            time.sleep(0.1)
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(timeout=60), -signal.SIGINT)
        os.close(reader)
        self.assertEqual(everything(), before)

    def test_in_another_locale_all_is_the_same(self):
        locales = [{"LANG": "C"}, {"LC_ALL": "C.UTF-8"}]
        if len(sys.argv) > 3:
            locales.append({"LC_ALL": "de_DE.UTF-8", "LOCPATH": sys.argv[3]})
        results = set()
        for locale in locales:
            told = run(TWO, environment=locale)
            self.assertEqual(told[0], 0)
            results.add((told, tuple(sorted(made().items()))))
            for name in made():
                (OUT / name).unlink()
        self.assertEqual(len(results), 1)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
