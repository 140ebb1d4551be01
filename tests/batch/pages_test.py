#!/usr/bin/env python3
"""The manual page and the completion as man and bash take them, beside what the program itself says of its words.

  pages_test.py KELVO MANUAL COMPLETION OUT      OUT: emptied
"""
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

KELVO, MANUAL, COMPLETION, OUT = (pathlib.Path(path).resolve() for path in sys.argv[1:5])
REFERENCE = pathlib.Path(__file__).resolve().parents[2] / "docs/commands.md"
WORDS = ["export", "info", "stats", "recover", "apply", "calibrate", "cut", "join"]


def told(*arguments):
    return subprocess.run([KELVO, *arguments], capture_output=True, text=True, check=True).stdout


def options_of(text):
    return sorted(set(re.findall(r"^  (--[a-z-]+)", text, re.MULTILINE)))


class Pages(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(OUT, ignore_errors=True)
        (OUT / "deep").mkdir(parents=True)
        (OUT / "run.seq").touch()
        (OUT / "over the hill.seq").touch()
        (OUT / "warm.cal").touch()

    def complete(self, *words):
        """What the last of the words may become. Words are split at = as bash does it."""
        script = """source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kelvo; ((${#COMPREPLY[@]})) && printf '%s\\n' "${COMPREPLY[@]}"; true"""
        done = subprocess.run(["bash", "--norc", "-c", script, "bash", COMPLETION, "kelvo", *words], cwd=OUT, capture_output=True, text=True, check=True)
        self.assertEqual(done.stderr, "")
        return done.stdout.split("\n")[:-1]

    def test_general_help_names_the_words(self):
        general = told("--help")
        behind = general.split("kelvo WORD ...:\n")[1]
        self.assertEqual(sorted(re.findall(r"^  ([a-z]+) ", behind, re.MULTILINE)), sorted(WORDS))

    def test_the_manual_page_has_no_fault_and_tells_everything(self):
        source = MANUAL.read_bytes()
        self.assertTrue(source.isascii())
        if shutil.which("groff"):
            plain = subprocess.run(["groff", "-ww", "-man", "-Tutf8", "-P-c", "-P-b", "-P-u", MANUAL], capture_output=True, text=True, check=True)
            self.assertEqual(plain.stderr, "")
            page = plain.stdout
        else:
            page = source.decode().replace("\\-", "-").replace("\\fB", "").replace("\\fI", "").replace("\\fR", "")
        for section in ("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "COMMANDS", "EXIT STATUS"):
            self.assertRegex(page, rf"(?m)^(\.SH )?{section}$")
        options = page.split("\nOPTIONS\n" if "\nOPTIONS\n" in page else ".SH OPTIONS\n")[1]
        for option in options_of(told("--help")):
            self.assertIn(option, options)
        for word in WORDS:
            self.assertRegex(page, rf"(?m)^ *(\.SS )?{word}$")
            for option in options_of(told(word, "--help")):
                self.assertIn(option, page)

    def test_the_reference_tells_everything(self):
        reference = REFERENCE.read_text()
        for word in WORDS:
            section = reference.split(f"\n## {word}\n\n")[1].split("\n## ")[0]
            usage = told(word, "--help").splitlines()[0]
            self.assertTrue(section.startswith(f"`{usage}`\n"), usage)
            for option in options_of(told(word, "--help")):
                self.assertIn(option, section.split("\n", 1)[1] if option != "--json" else section)

    def test_man_itself_takes_it(self):
        if not shutil.which("man"):
            self.skipTest("there is no man")
        done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", MANUAL], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_the_first_word(self):
        self.assertEqual(self.complete("re"), ["recover"])
        self.assertEqual(sorted(self.complete("")), sorted([*WORDS, "deep", "run.seq", "over the hill.seq", "warm.cal"]))
        self.assertEqual(sorted(self.complete("r")), ["recover", "run.seq"])
        self.assertEqual(sorted(self.complete("--")), options_of(told("--help")))
        self.assertEqual(self.complete("--off"), ["--offscreen"])

    def test_options_of_each_word(self):
        for word in WORDS:
            self.assertEqual(sorted(self.complete(word, "--")), sorted([*options_of(told(word, "--help")), "--help"]), word)
        self.assertEqual(self.complete("view.seq", "cut", "--fr"), [], "cut is no command there")

    def test_values(self):
        self.assertEqual(self.complete("--theme", ""), ["light", "dark", "desktop"])
        self.assertEqual(self.complete("--theme", "=", "da"), ["dark"])
        self.assertEqual(self.complete("--theme", "="), ["light", "dark", "desktop"])
        self.assertEqual(self.complete("--data", ""), ["deep"])
        self.assertEqual(self.complete("apply", "--set", "w"), ["warm.cal"])
        self.assertEqual(self.complete("stats", "--unit", "=", "k"), ["kelvin"])
        self.assertEqual(self.complete("cut", "--frames", ""), [])

    def test_files(self):
        self.assertEqual(self.complete("info", "r"), ["run.seq"])
        self.assertEqual(self.complete("info", "ov"), ["over the hill.seq"])
        self.assertEqual(self.complete("info", "--", "--"), [])
        self.assertEqual(self.complete("info", "--", "w"), ["warm.cal"])

    def test_bash_knows_whose_completion_it_is(self):
        done = subprocess.run(["bash", "--norc", "-c", 'source "$1"; complete -p kelvo', "bash", COMPLETION], capture_output=True, text=True, check=True)
        self.assertEqual(done.stdout, "complete -F _kelvo kelvo\n")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
