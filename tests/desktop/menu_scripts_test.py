#!/usr/bin/env python3
"""Scripts of the menu in a program that no script has started: the keyboard is the machine's own (xdotool), and what the program shows is read from its
transcript, from the title of the window in front and from the text that the window of the scripts saves.

  menu_scripts_test.py KELVO OUT       OUT: for data directories; run by run_in_window.sh, which has emptied it
"""
import json
import pathlib
import subprocess
import sys
import time
import unittest

KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
LONGEST = 30  # seconds that anything may take

TICKS = """
print("begins")
for n = 1, 1000 do
  wait(100)
  print("tick " .. n)
end
"""


def xdotool(*arguments):
    return subprocess.run(["xdotool", *map(str, arguments)], capture_output=True, text=True, timeout=LONGEST, check=False).stdout.strip()


def keys(*names):
    for name in names:
        xdotool("key", name)
        time.sleep(0.15)


def until(what, text):
    deadline = time.monotonic() + LONGEST
    while time.monotonic() < deadline:
        value = what()
        if value:
            return value
        time.sleep(0.05)
    raise AssertionError(f"not within {LONGEST} s: {text}")


class ScriptsOfTheMenu(unittest.TestCase):
    def start(self, scripts, camera=False):
        self.out = OUT / self.id().rsplit(".", 1)[-1]
        self.data = self.out / "data"
        (self.data / "scripts").mkdir(parents=True)
        # Those that come with Kelvo are put there once, at the first start; here there are others.
        for name, text in scripts.items():
            (self.data / "scripts" / name).write_text(text)
        (self.data / "window.ini").write_text("[Bench]\nShown=1\n")  # it opens by itself at the first start alone
        if not camera:
            (self.data / "platform.ini").write_text("[Ports]\nCOM2=none\n[Board]\nBoard=none\n")
        self.transcript = self.out / "transcript.jsonl"
        with open(self.out / "errors.txt", "w") as errors:
            self.program = subprocess.Popen([KELVO, "--data", self.data, "--transcript", self.transcript], cwd=self.out, stderr=errors)
        self.addCleanup(self.end)
        if camera:
            self.seen("dialog", name="CLOCK_ON")
            self.front("Turn on")
            keys("Escape")
            self.seen("close", name="CLOCK_ON")
        else:
            self.seen("box", text="Initialize Hardware Failure")
            time.sleep(0.5)
            keys("Return")
            self.seen("answer", button="ok")
            self.seen("status", text=" Use Alt + underlined menu item or trackball to select menu item")  # the start has ended
        for name in ("noise-over-time.lua", "what-is-on-view.lua"):
            (self.data / "scripts" / name).unlink(missing_ok=True)
        self.main_window()

    def end(self):
        self.program.kill()
        self.program.wait()

    def lines(self, kind, **fields):
        if not self.transcript.exists():
            return []
        whole = self.transcript.read_text("utf-8")
        told = [json.loads(line) for line in whole[:whole.rfind("\n") + 1].splitlines()]
        return [line for line in told if line["kind"] == kind and all(line.get(name) == value for name, value in fields.items())]

    def printed(self):
        return [line["text"] for line in self.lines("print")]

    def seen(self, kind, times=1, **fields):
        self.assertIsNone(self.program.poll(), "the program has ended")
        return until(lambda: self.lines(kind, **fields)[times - 1:times], f"{kind} {fields}")[0]

    def prints(self, text):
        until(lambda: text in self.printed(), f"a print of {text!r}, not {self.printed()[-3:]}")

    def front(self, part):
        """Waits until a window is in front whose title holds that."""
        until(lambda: part.lower() in xdotool("getactivewindow", "getwindowname").lower(), f"{part} in front")
        time.sleep(0.3)

    def main_window(self):
        window = until(lambda: xdotool("search", "--onlyvisible", "--name", "^Kelvo").split(), "the main window")[0]
        xdotool("windowactivate", "--sync", window)
        self.front("Kelvo")

    def choose(self, number):
        """The menu's script of that number, by its letters: Analysis, Scripts, number."""
        self.main_window()
        keys("alt+a", "s", str(number))

    def text_of_the_window(self):
        """What the window SCRIPT shows, saved by its button."""
        path = self.out / f"text{time.monotonic_ns()}.txt"
        before = len(self.lines("file", title="Save text"))
        window = until(lambda: xdotool("search", "--onlyvisible", "--name", "^Script$").split(), "the window of the scripts")[0]
        xdotool("windowactivate", "--sync", window)
        self.front("Script")
        keys("alt+t")
        self.seen("file", times=before + 1, title="Save text")
        self.front("Save text")
        keys("ctrl+a")
        xdotool("type", "--delay", 5, path)
        keys("Return")
        until(path.exists, path)
        return path.read_text("utf-8")

    def ticks(self):
        return sum(line.startswith("tick ") for line in self.printed())

    def grows(self):
        before = self.ticks()
        until(lambda: self.ticks() >= before + 5, "five more ticks")

    def test_one_runs_beside_the_work_of_the_operator_until_escape(self):
        self.start({"a-camera.lua": 'command(169)\npress(1070)\npress(1)\npress(2)\nprint("live " .. state("LiveVideo"))\n', "ticks.lua": TICKS}, camera=True)
        self.choose(1)
        self.prints("live 1")
        self.choose(2)
        self.seen("dialog", name="SCRIPT")
        self.prints("begins")
        self.grows()
        # A dialog is opened, worked and left meanwhile; live video runs on.
        self.main_window()
        keys("alt+s", "d")
        self.seen("dialog", name="DISPLAY")
        self.grows()
        self.front("Display")
        keys("Escape")
        self.seen("close", name="DISPLAY")
        self.assertEqual(self.lines("box"), [])
        self.grows()
        self.main_window()
        keys("F2")  # frozen
        until(lambda: "Frozen" in self.lines("title")[-1]["text"] or "frozen" in self.lines("status")[-1]["text"].lower(), "a frozen picture")
        self.grows()
        self.main_window()
        keys("Escape")
        time.sleep(0.5)
        stopped = self.ticks()
        time.sleep(1)
        self.assertEqual(self.ticks(), stopped)
        text = self.text_of_the_window()
        self.assertIn("begins\ntick 1\ntick 2\n", text)
        self.assertIn(f"tick {stopped}\n", text)
        self.assertIsNone(self.program.poll())

    def test_one_that_fails_says_where_and_the_program_goes_on(self):
        self.start({"fails.lua": 'print("before")\nlocal nothing\nprint(nothing.field)\n', "syntax.lua": "local = 3\n", "works.lua": 'print("works")\n'})
        self.choose(1)
        self.prints("before")
        text = self.text_of_the_window()
        self.assertIn("before\n", text)
        self.assertIn("fails.lua:3: attempt to index a nil value (local 'nothing')", text)
        self.choose(2)
        time.sleep(0.5)
        text = self.text_of_the_window()
        self.assertIn("syntax.lua:1: ", text)
        self.assertNotIn("before", text)
        self.choose(3)
        self.prints("works")

    def test_one_without_an_end_leaves_the_window_to_the_operator(self):
        self.start({"forever.lua": 'print("begins")\nwhile true do end\n', "works.lua": 'print("works")\n'})
        self.choose(1)
        self.prints("begins")
        self.main_window()
        keys("alt+h", "a")
        self.seen("dialog", name="ABOUT")
        self.front("About")
        keys("Escape")
        self.seen("close", name="ABOUT")
        self.choose(2)  # one at a time
        self.assertIn("forever.lua is still running", self.seen("box", times=2)["text"])
        self.front("Kelvo")
        keys("Return")
        self.seen("answer", times=2)
        self.main_window()
        keys("Escape")
        self.choose(2)
        self.prints("works")

    def test_the_program_ends_while_one_runs(self):
        for name, text in (("forever", 'print("begins")\nwhile true do end\n'), ("ticks", TICKS), ("box", 'print("begins")\ncommand(196)\nwait(60000)\n')):
            with self.subTest(name):
                self.start({"runs.lua": text})
                self.choose(1)
                self.prints("begins")
                if name == "box":
                    self.seen("dialog", name="ABOUT")
                    self.front("About")
                    keys("Escape")
                    self.seen("close", name="ABOUT")
                self.main_window()
                keys("ctrl+q")
                self.seen("box", text="\nDo you wish to exit?")
                time.sleep(0.5)
                keys("y")
                until(lambda: self.program.poll() is not None, "the end of the program")
                self.assertEqual(self.program.returncode, 0, (self.out / "errors.txt").read_text())
                self.out.rename(self.out.with_name(f"{self.out.name}.{name}"))

    def test_names_and_a_folder_that_changes(self):
        """The texts of the menu are told by a script itself."""
        tell = 'for id = 2300, 2309 do\n  local item = menu(id)\n  if item then print(id .. " " .. item.text) end\nend\nprint("told")\n'
        self.start({"0 tell.lua": tell, "a & b.lua": 'print("a and b")\n', "\u00fcber die Br\u00fccke.lua": 'print("umlauts")\n', "no script.txt": ""})
        self.main_window()
        keys("alt+a", "s")
        subprocess.run(["import", "-window", "root", self.out / "menu.png"], check=True)  # to be looked at
        keys("Escape", "Escape", "Escape")
        self.choose(1)
        self.prints("told")
        self.assertEqual(self.printed()[-4:], ["2300 &1 0 tell", "2301 &2 a && b", "2302 &3 \u00fcber die Br\u00fccke", "told"])
        self.choose(2)
        self.prints("a and b")
        self.choose(3)
        self.prints("umlauts")
        # One more, one gone, one changed; the menu is read anew when it opens.
        folder = self.data / "scripts"
        (folder / "z new.lua").write_text('print("new")\n')
        (folder / "a & b.lua").unlink()
        (folder / "\u00fcber die Br\u00fccke.lua").write_text('print("changed")\n')
        self.choose(2)
        self.prints("new")
        self.choose(3)
        self.prints("changed")
        # Gone between the menu's opening and the choice.
        self.main_window()
        keys("alt+a", "s")
        (folder / "z new.lua").unlink()
        keys("2")
        time.sleep(0.5)
        self.assertIn("z new.lua", self.text_of_the_window())
        self.assertEqual(self.printed().count("new"), 1)
        # The folder itself goes.
        for file in folder.iterdir():
            file.unlink()
        folder.rmdir()
        self.main_window()
        keys("alt+a", "s", "Escape", "Escape", "Escape")
        self.assertIsNone(self.program.poll())
        folder.mkdir()
        (folder / "again.lua").write_text('print("again")\n')
        self.choose(1)
        self.prints("again")


unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
