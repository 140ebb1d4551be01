#!/usr/bin/env python3
"""The commands without a window as a shell, a script or another machine calls them: what they tell, and where, how they end, and what then
stands on the disk.

  command_line_test.py KELVO OUT [LOCPATH]      OUT: emptied. LOCPATH: where the locale de_DE.UTF-8 lies
"""
import fcntl
import json
import os
import pathlib
import pty
import resource
import shutil
import signal
import struct
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import made_by_hand

KELVO, OUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
# Neither a display nor a home.
BARE = {name: value for name, value in os.environ.items()
        if name not in ("DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "QT_QPA_PLATFORM", "HOME") and not name.startswith("LC_")}
APPLY = ["apply", "--set", "warm.cal", "run.seq", "even.seq"]
CUT = ["cut", "--frames", "1:3", "run.seq", "even.seq"]
JOIN = ["join", "run.seq", "run.seq", "even.seq"]
NUMBERS = [4, 5, 9, 10]


def command(*arguments, environment=None, before=(), **more):
    return subprocess.Popen([*before, KELVO, *arguments], cwd=OUT, env={**BARE, **(environment or {})}, stdout=more.pop("stdout", subprocess.PIPE),
                            stderr=more.pop("stderr", subprocess.PIPE), text=True, errors="surrogateescape", **more)


def run(*arguments, **more):
    process = command(*arguments, **more)
    out, error = process.communicate(timeout=120)
    return process.returncode, out, error


def everything():
    return {str(path.relative_to(OUT)): path.read_bytes() for path in OUT.rglob("*") if path.is_file()}


class CommandLine(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        made_by_hand.calibration_set(OUT)
        (OUT / "run.seq").write_bytes(made_by_hand.sequence(NUMBERS))
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(NUMBERS))

    def expect_refused(self, arguments, text, **more):
        """With 2, a line on the error stream alone, and everything as it was."""
        before = everything()
        code, out, error = run(*arguments, **more)
        last = error.splitlines()[-1] if error else ""
        self.assertEqual((code, out), (2, ""), error)
        self.assertTrue(last.startswith(f"kelvo {arguments[0]}: "), error)
        self.assertIn(text, last)
        self.assertEqual(everything(), before)

    def make(self, arguments, **more):
        code, out, error = run(*arguments, **more)
        self.assertEqual((code, out), (0, ""), error)
        made = [(OUT / name).read_bytes() for name in ("even.seq", "even.seq.frames")]
        for name in ("even.seq", "even.seq.frames"):
            (OUT / name).unlink()
        return made

    def test_each_word_tells_how_it_is_used(self):
        before = everything()
        usages = {"recover": "recover [--dry-run] [--json] FILE...", "apply": "apply --set X.cal [--frames A:B] IN OUT", "cut": "cut --frames A:B IN OUT",
                  "join": "join IN... OUT", "info": "info [--json] FILE...",
                  "export": "export [--to FORMAT] [--as FORM] [--frames A:B] [--set X.cal] [--volts LOW:HIGH] [--rectangle L,T,R,B] [--region FILE.regions[:NAME]] [--traces] [--range LOW:HIGH] [--colors NAME] [--data DIR] [--scale] [--unit UNIT] [--time] [--draw-regions FILE] [--force] [--json] IN OUT",
                  "stats": "stats [--region FILE.regions[:NAME]] [--rectangle L,T,R,B] [--frames A:B] [--unit UNIT] [--volts LOW:HIGH] [--bad X.cal] [--json] FILE",
                  "calibrate": "calibrate --low FILE [--high FILE] [--tlow T] [--thigh T] [--elow E] [--ehigh E] [--camera N] [--data DIR] [--frames A:B] "
                               "[--bad-list FILE] [--keep-bad] [--keep-noisy] [--json] --out X.cal"}
        general = run("--help")[1]
        for word, usage in usages.items():
            for arguments in ([word, "--help"], [word, "-h"], [word, "run.seq", "--help", "even.seq"]):
                code, out, error = run(*arguments)
                self.assertEqual((code, error), (0, ""))
                self.assertEqual(out.splitlines()[0], "kelvo " + usage)
                self.assertIn("Ends with 0 where", out)
            self.assertIn("  " + usage, general)
        self.assertEqual(everything(), before)

    def test_behind_two_dashes_all_are_files(self):
        code, out, _ = run("recover", "--json", "--", "--help")
        self.assertEqual(code, 2)
        self.assertEqual(json.loads(out)["file"], "--help")

    def test_what_is_wrong_stands_on_the_error_stream(self):
        for arguments, text in [(["apply"], "--set DIR/x.cal, a sequence and the name of the new one are needed"),
                                (["apply", "--set=warm.cal", "--frames=3", "run.seq", "even.seq"], "--frames A:B says which frames"),
                                (["apply", "--set=warm.cal", "--frames=4:", "run.seq", "even.seq"], "run.seq has 4 frames: there are none of that range"),
                                (["apply", "--set=cold.cal", "run.seq", "even.seq"], "cold.cal can't be opened"),
                                (["apply", "--set=warm.cal", "none.seq", "even.seq"], "none.seq can't be opened"),
                                (["cut", "run.seq", "even.seq"], "--frames A:B says which frames"),
                                (["join", "run.seq"], "sequences and the name of the new one are needed"),
                                (["join", "run.seq", "warm.cal", "even.seq"], "warm.cal isn't a sequence that can be read"),
                                (["cut", "--frames=:", "-", "even.seq"], "- names no file: one is needed that can be read at any place"),
                                (["join", "run.seq", "--", "run.seq", "-"], "- names no file"), (["info"], "no file was named"), (["info", "--jason", "run.seq"], "unknown option --jason"),
                                (["info", "none.seq"], "none.seq can't be opened"), (["info", "warm.cal"], "warm.cal isn't an image file"),
                                (["recover"], "no file was named"), (["recover", "--all"], "unknown option --all")]:
            self.expect_refused(arguments, text)

    def test_what_is_given_twice_or_empty_or_begins_with_a_dash(self):
        for arguments, text in [(["apply", "--set=warm.cal", "--set", "cold.cal", "run.seq", "even.seq"], "--set is given twice"),
                                (["stats", "--bad=", "run.seq"], "--bad needs a value"), (["export", "--set=", "run.seq", "even.npy"], "--set needs a value"),
                                (["cut", "--frames=:", "run.seq", ""], "an empty name names no file"), (["join", "--", "", "even.seq"], "an empty name names no file"),
                                (["info", "-json", "run.seq"], "unknown option -json (./-json is a file of that name)"), (["info", "--json=yes", "run.seq"], "--json takes no value"),
                                (["cut", "--frames=:", "run.seq", "-f"], "unknown option -f")]:
            self.expect_refused(arguments, text)
        self.assertEqual(run("cut", "--frames=:", "run.seq", "./-f")[0], 0)
        self.assertEqual(run("info", "--", "-f")[0], 0)

    def test_what_is_told_of_a_name_is_one_line(self):
        self.expect_refused(["info", "a\nb\x1b[2J.seq"], "a?b?[2J.seq can't be opened")
        self.assertEqual(run("cut", "--frames=:", "run.seq", "a\nb.seq")[0], 0)
        self.assertEqual(run("info", "a\nb.seq")[1].splitlines()[0], "a?b.seq")
        self.assertTrue(run("recover", "a\nb.seq")[1].startswith("a?b.seq: clean"))
        for word in ("info", "recover"):
            self.assertEqual(json.loads(run(word, "--json", "a\nb.seq")[1])["file"], "a\nb.seq")

    def test_the_progress_stands_on_the_error_stream(self):
        self.assertEqual(run(*APPLY), (0, "", "kelvo apply: 4 of 4 frames\n"))
        self.assertEqual(run(*CUT), (2, "", "kelvo cut: even.seq stands already\n"))
        (OUT / "even.seq").unlink()
        (OUT / "even.seq.frames").unlink()
        self.assertEqual(run(*JOIN)[2].splitlines()[-1], "kelvo join: 8 of 8 frames")
        self.assertEqual(run("recover", "run.seq")[2].splitlines()[-1], "kelvo recover: run.seq, 3 of 4 frames")

    def on_a_terminal(self, *arguments):
        here, there = pty.openpty()
        process = command(*arguments, stdout=subprocess.DEVNULL, stderr=there)
        os.close(there)
        told = b""
        try:
            while part := os.read(here, 65536):
                told += part
        except OSError:  # its other end is closed
            pass
        os.close(here)
        return process.wait(timeout=60), told.decode().replace("\r\n", "\n")

    def test_a_terminal_has_one_line_that_is_written_over(self):
        numbers = list(range(1, 3001))
        (OUT / "long.seq").write_bytes(made_by_hand.sequence(numbers))
        code, told = self.on_a_terminal("cut", "--frames=:", "long.seq", "even.seq")
        self.assertEqual(code, 0)
        self.assertTrue(told.endswith("\rkelvo cut: 3000 of 3000 frames\n"), told[-80:])
        self.assertEqual(told.count("\n"), 1)
        self.assertLessEqual(told.count("\r"), 1001, "as many steps as a thousandth needs")
        # Frames 4 and 5 of the journal are whole, the pixels of the last one aren't: what went wrong has its own line.
        contents = bytearray((OUT / "run.seq").read_bytes())
        contents[-1] ^= 1
        (OUT / "run.seq").write_bytes(contents)
        code, told = self.on_a_terminal("cut", "--frames=:", "run.seq", "odd.seq")
        self.assertEqual((code, told.splitlines()[-1]), (2, "kelvo cut: run.seq: frame 3 doesn't fit its checksum"))
        self.assertIn("kelvo cut: 3 of 4 frames\n", told)

    def test_streams_that_are_closed(self):
        """None of the files becomes one of them, and has told texts among its frames."""
        whole = [self.make(make) for make in (APPLY, CUT, JOIN)]
        exported = run("export", "run.seq", "plain.npy")
        self.assertEqual(exported[0], 0, exported)
        for closed in ("<&-", ">&-", "2>&-", ">&- 2>&-", "<&- >&- 2>&-"):
            without = ["sh", "-c", f'exec "$@" {closed}', "sh"]
            for make, expected in zip((APPLY, CUT, JOIN), whole):
                self.assertEqual(self.make(make, before=without, stderr=subprocess.DEVNULL), expected, closed)
            run("export", "run.seq", "even.npy", before=without)
            self.assertEqual((OUT / "even.npy").read_bytes(), (OUT / "plain.npy").read_bytes(), closed)
            (OUT / "even.npy").unlink()
            (OUT / "even.json").unlink()
        for word in ("info", "stats", "recover"):
            code, _, error = run(word, "run.seq", before=["sh", "-c", 'exec "$@" >&-', "sh"])
            self.assertEqual((code, error.splitlines()[-1]), (2, f"kelvo {word}: the standard output takes nothing"))

    def test_who_listens_to_the_progress_may_go(self):
        reader, writer = os.pipe()
        os.close(reader)
        for make in (APPLY, CUT, JOIN):
            self.make_quietly(make, writer)
        os.close(writer)

    def make_quietly(self, make, errors):
        process = command(*make, stderr=errors)
        self.assertEqual(process.wait(timeout=60), 0)
        for name in ("even.seq", "even.seq.frames"):
            (OUT / name).unlink()

    def test_a_result_is_never_written_over_anything(self):
        (OUT / "stands.seq").write_bytes(b"mine")
        (OUT / "left.seq.frames").write_bytes(b"mine")
        (OUT / "link.seq").symlink_to("run.seq")
        (OUT / "hard.seq").hardlink_to(OUT / "run.seq")
        (OUT / "folder").mkdir()
        os.mkfifo(OUT / "pipe")
        for make in (APPLY, CUT, JOIN):
            for out in ("run.seq", "./run.seq", "link.seq", "hard.seq", "RUN.SEQ", "stands.seq", "left.seq"):
                self.expect_refused([*make[:-1], out], f"{out} stands already")
            self.expect_refused([*make[:-1], "folder"], "folder is a directory")
            for device in ("/dev/null", "/dev/full", "pipe"):
                self.expect_refused([*make[:-1], device], f"{device} stands already")

    def test_what_is_corrected_isnt_corrected_again(self):
        self.assertEqual(run(*APPLY)[0], 0)
        self.assertIn(f"CalibrationSet={OUT}/warm.cal\n".encode(), (OUT / "even.seq.frames").read_bytes(), "it is found from anywhere")
        self.expect_refused(["apply", "--set=warm.cal", "even.seq", "twice.seq"], "even.seq is corrected already")

    def test_a_directory_that_takes_nothing(self):
        for make in (APPLY, CUT, JOIN):
            self.expect_refused([*make[:-1], "none/even.seq"], "none/even.seq can't be written: No such file or directory")
        (OUT / "locked").mkdir(mode=0o555)
        without_rights = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.getuid() == 0 else []
        for make in (APPLY, CUT, JOIN):
            self.expect_refused([*make[:-1], "locked/even.seq"], "locked/even.seq can't be written: Permission denied", before=without_rights)

    def test_a_limit_on_the_length_of_files(self):
        whole = {tuple(make): self.make(make) for make in (APPLY, CUT, JOIN)}
        for make in (APPLY, CUT, JOIN):
            longest = max(len(contents) for contents in whole[tuple(make)])
            for length in (0, 511, 512, 513, longest - 1):
                self.expect_refused(make, "even.seq can't be written: File too large",
                                    preexec_fn=lambda length=length: resource.setrlimit(resource.RLIMIT_FSIZE, (length, length)))
            self.assertEqual(self.make(make), whole[tuple(make)])

    def test_a_disk_that_is_full(self):
        """A file system of 64 kB, its room taken but for a page."""
        script = """mount -t tmpfs -o size=64k none small && head -c 61440 /dev/zero >small/filler
            "$@"; code=$?; ls -A small; exit $code"""
        (OUT / "small").mkdir()
        if subprocess.run(["unshare", "--mount", "true"], stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("no file system can be mounted here")
        numbers = range(1, 101)
        (OUT / "long.seq").write_bytes(made_by_hand.sequence(numbers))
        (OUT / "long.seq.frames").write_bytes(made_by_hand.journal(numbers))
        before = everything()
        for make in (["apply", "--set=warm.cal"], ["cut", "--frames=:"], ["join"]):
            code, out, error = run(*make, "long.seq", "small/even.seq", before=["unshare", "--mount", "sh", "-c", script, "sh"])
            self.assertEqual((code, out), (2, "filler\n"), error)
            self.assertEqual(error.splitlines()[-1], f"kelvo {make[0]}: small/even.seq can't be written: No space left on device", error)
        self.assertEqual(everything(), before)

    def held_in_the_middle(self):
        """An apply that has done its frames, and waits for somebody to read what it says: the result hasn't got its name yet."""
        reader, writer = os.pipe()
        os.set_blocking(writer, False)
        try:
            while True:
                os.write(writer, b"\n" * 4096)
        except BlockingIOError:
            pass
        os.set_blocking(writer, True)
        process = command(*APPLY, stdout=subprocess.DEVNULL, stderr=writer)
        os.close(writer)
        expected = (OUT / "run.seq").stat().st_size
        for _ in range(600):
            made = OUT / ".even.seq.new"
            if made.exists() and made.stat().st_size == expected:
                return process, reader
            time.sleep(0.1)
        self.fail("it never came that far")

    def test_one_that_is_killed_leaves_no_result_and_can_be_run_again(self):
        whole = self.make(APPLY)
        before = everything()
        for end in (signal.SIGTERM, signal.SIGKILL, signal.SIGHUP, signal.SIGINT):
            process, reader = self.held_in_the_middle()
            process.send_signal(end)
            self.assertEqual(process.wait(timeout=60), -end)
            os.close(reader)
            left = everything()
            if end != signal.SIGKILL:
                self.assertNotIn(".even.seq.new", left, "an interrupt closes and clears away")
            left.pop(".even.seq.new", None)
            self.assertEqual(left, before, "at most a hidden file in the making, which the next run uses again")
            self.assertEqual(self.make(APPLY), whole)
            self.assertEqual(everything(), before)

    def test_of_two_that_make_the_same_one_does(self):
        whole = self.make(APPLY)
        first, reader = self.held_in_the_middle()
        code, _, error = run(*APPLY)
        self.assertEqual((code, error), (2, "kelvo apply: even.seq can't be written: Device or resource busy\n"))
        # One that begins while the first is about to end.
        second = command(*APPLY)
        time.sleep(0.2)
        while os.read(reader, 65536):
            pass
        self.assertEqual(first.wait(timeout=60), 0)
        _, error = second.communicate(timeout=60)
        self.assertEqual(second.returncode, 2)
        self.assertIn("kelvo apply: even.seq ", error)
        self.assertEqual([(OUT / name).read_bytes() for name in ("even.seq", "even.seq.frames")], whole)

    def test_an_output_that_takes_nothing(self):
        with open("/dev/full", "w") as full:
            code, _, error = run("recover", "--json", "run.seq", stdout=full)
        self.assertEqual((code, error.splitlines()[-1]), (2, "kelvo recover: the standard output takes nothing"))

    def test_a_recording_that_goes_on_is_left_alone(self):
        with open(OUT / "run.seq", "rb") as recording:
            fcntl.flock(recording, fcntl.LOCK_EX)
            for make in (APPLY, CUT, JOIN):
                self.expect_refused(make, "run.seq is being recorded")
            before = everything()
            code, out, _ = run("recover", "run.seq")
            self.assertEqual(code, 2)
            self.assertIn("run.seq: failed: it is being recorded", out)
            self.assertEqual(everything(), before)

    def test_in_another_locale_all_is_the_same(self):
        self.described()
        locales = [{"LANG": "C"}, {"LC_ALL": "C.UTF-8"}]
        if len(sys.argv) > 3:
            locales.append({"LC_ALL": "de_DE.UTF-8", "LOCPATH": sys.argv[3]})
        results = set()
        for locale in locales:
            made = [b"".join(self.make(make, environment=locale)) for make in (APPLY, CUT, JOIN)]
            told = run("recover", "--json", "--dry-run", "run.seq", "none.seq", environment=locale)
            refused = run("cut", "--frames=2:1", "run.seq", "none/even.seq", environment=locale)
            described = run("info", "run.seq", environment=locale), run("info", "--json", "run.seq", environment=locale)
            results.add((*made, told, refused, described))
        self.assertEqual(len(results), 1)

    def described(self):
        """run.seq with a header that says everything."""
        contents = bytearray((OUT / "run.seq").read_bytes())
        # Date and time, both sources, frames averaged, rate, integration time, and what the picture was shown with.
        struct.pack_into("<6h", contents, 12, 26, 11, 21, 12, 4, 1)
        struct.pack_into("<hfhf", contents, 24, 3000, 20.5, 9000, 25.0)
        struct.pack_into("<hff", contents, 54, 16, 123.5, 1.5)
        (OUT / "run.seq").write_bytes(contents)

    def test_info_tells_what_header_and_journal_say(self):
        self.described()
        before = everything()
        code, out, error = run("info", "--json", "run.seq")
        self.assertEqual((code, error), (0, ""))
        told = json.loads(out)
        expected = {"file": "run.seq", "columns": 3, "rows": 2, "frames": 4, "rate_hz": 123.5, "integration_ms": 1.5, "header_time": "2026-11-21T12:04:01",
                    "first_utc": "1970-01-01T00:00:00.000008000Z", "last_utc": "1970-01-01T00:00:00.000020000Z", "calibrated": True}
        self.assertEqual({key: told[key] for key in expected}, expected)
        self.assertAlmostEqual(told["duration_s"], (10 - 4) * 1e-6, delta=1e-12)
        header = {"IntensityCold": 3000, "TemperatureCold": 20.5, "IntensityHot": 9000, "TemperatureHot": 25, "FramesAveraged": 16, "FrameCount": 4}
        self.assertEqual({key: told["header"][key] for key in header}, header)
        self.assertEqual(told["journal"]["gaps"], [{"before": 2, "first": 6, "missing": 3, "board": 3, "ring": 0, "passed_over": 0, "unexplained": 0, "transport": 0}])
        journal = {"records": 4, "closed": True, "end": "complete", "camera": "made by hand", "missing": 3}
        self.assertEqual({key: told["journal"][key] for key in journal}, journal)
        code, text, error = run("info", "run.seq")
        self.assertEqual((code, error), (0, ""))
        for line in ("run.seq", "  size          3 columns x 2 rows, 16-bit counts", "  rate          123.5 Hz", "  header time   2026-11-21T12:04:01, local",
                     "  calibration   low source 3000 counts at 20.5 \u00b0C, high source 9000 counts at 25 \u00b0C", "  gaps          1, 3 frames missing",
                     "    before frame 2: 3 missing from number 6, 3 lost by the board"):
            self.assertIn(line, text.splitlines())
        self.assertEqual(everything(), before)

    def test_info_tells_of_a_journal_that_is_passed_over(self):
        journal = OUT / "run.seq.frames"
        whole = journal.read_bytes()
        for contents, fault in [(whole[:20] + b"x" + whole[21:], "is damaged"), (b"notes", "is none"),
                                (whole[:8] + b"\2" + whole[9:], "is of a later version"), (None, "can't be read")]:
            journal.unlink()
            if contents is None:
                journal.mkdir()
            else:
                journal.write_bytes(contents)
            code, out, error = run("info", "--json", "run.seq")
            self.assertEqual((code, error), (0, ""))
            self.assertEqual((json.loads(out)["journal"], json.loads(out)["journal_fault"]), (None, fault))
            self.assertIn(f"  journal       what lies beside the file {fault}\n", run("info", "run.seq")[1])
        journal.rmdir()
        self.assertNotIn("journal_fault", json.loads(run("info", "--json", "run.seq")[1]))

    def test_frames_that_read_in_other_degrees_arent_joined(self):
        (OUT / "run.seq.frames").unlink()
        self.described()
        (OUT / "same.seq").write_bytes((OUT / "run.seq").read_bytes())
        contents = bytearray((OUT / "run.seq").read_bytes())
        struct.pack_into("<f", contents, 26, 20.25)
        (OUT / "other.seq").write_bytes(contents)
        self.expect_refused(["join", "run.seq", "other.seq", "even.seq"], "other.seq was corrected with other sources")
        self.assertEqual(run("join", "run.seq", "same.seq", "even.seq")[0], 0)

    def test_info_goes_on_behind_a_file_that_is_none(self):
        (OUT / "run.seq.frames").unlink()
        (OUT / "empty.seq").touch()
        (OUT / "noise.seq").write_bytes(bytes(range(256)) * 64)
        (OUT / "torn.seq").write_bytes((OUT / "run.seq").read_bytes()[:540])
        code, out, error = run("info", "--json", "empty.seq", "noise.seq", "torn.seq", "warm.cal", ".", "none.seq", "run.seq")
        self.assertEqual(code, 2)
        self.assertEqual([line.split(" ", 3)[2] for line in error.splitlines()], ["empty.seq", "noise.seq", "torn.seq", "warm.cal", ".", "none.seq"])
        self.assertIn("kelvo info: torn.seq holds no whole frame\n", error)
        told = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([(each["file"], each["frames"], each["journal"], each["first_utc"]) for each in told], [("run.seq", 4, None, None)])

    def test_info_takes_any_header(self):
        """Any number in any field, floats that are none too, and a journal whose text is no text: one line of JSON and no control character."""
        whole = (OUT / "run.seq").read_bytes()
        (OUT / "run.seq.frames").write_bytes(made_by_hand.journal(NUMBERS, text=b"Camera=\x1b[2J\xff\x07\\n\"\n"))
        for fill in (0x00, 0x7F, 0x80, 0xFF):
            contents = bytearray(whole)
            contents[12:40] = bytes([fill]) * 28
            contents[42:144] = bytes([fill]) * 102
            (OUT / "run.seq").write_bytes(contents)
            code, out, error = run("info", "--json", "run.seq")
            self.assertEqual((code, error), (0, ""))
            self.assertEqual(json.loads(out)["frames"], 4)
            code, text, error = run("info", "run.seq")
            self.assertEqual((code, error), (0, ""))
            self.assertNotRegex(text, "[\x00-\x09\x0b-\x1f]")

    def test_names_are_any_bytes(self):
        for name in ("Über 25 °C.seq".encode(), b"\xfc\xff.seq", b"-x.seq"):
            code, _, error = run(*APPLY[:-1], b"./" + name, environment={"LANG": "C"})
            self.assertEqual(code, 0, error)
            path = os.fsencode(OUT) + b"/" + name
            with open(path, "rb") as file:
                self.assertEqual(file.read(512)[42], len(NUMBERS))
            self.assertEqual(run("recover", b"./" + name)[0], 0)
            os.unlink(path)
            os.unlink(path + b".frames")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
