#!/usr/bin/env python3
"""The package as others take it: packed twice, judged by Debian's own tools, unpacked into a staging root, and the program started from there.

  package_test.py CPACK BUILD OUT       OUT: emptied, then the packages, the staging root and what the runs leave
"""
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import unittest

CPACK, BUILD, OUT = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
TREE = pathlib.Path(__file__).resolve().parents[2]
ROOT = OUT / "root"
HOME = OUT / "home"
SHARE = ROOT / "usr/share"
PROGRAMS = ("kelvo", "kelvo-head", "kelvo-wrap")
IDENTITY = "io.kelvo.Kelvo"
# A machine on which nothing of Kelvo is but the package.
ENVIRONMENT = {"HOME": str(HOME), "PATH": f"{ROOT}/usr/bin:/usr/bin:/bin", "LC_ALL": "C.UTF-8"}


kLongestRun = 300  # seconds, of a machine with much else to do


def run(*command, **more):
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, errors="replace", timeout=kLongestRun,
                          **{"env": ENVIRONMENT, "cwd": OUT, **more})
    return done.returncode, done.stdout, done.stderr


def pack(directory, umask):
    code, out, errors = run(CPACK, "-G", "DEB", "--config", BUILD / "CPackConfig.cmake", "-B", directory, umask=umask)
    if code:
        raise AssertionError(out + errors)
    [package] = directory.glob("*.deb")
    return package


def members(package):
    """The archive's parts: each one's name, time and owner, and its bytes. Their modes are the packer's, whatever stands in them."""
    data, at, parts = package.read_bytes(), 8, []
    while at < len(data):
        header, size = data[at:at + 60], int(data[at + 48:at + 58])
        parts.append((header[:40], data[at + 60:at + 60 + size]))
        at += 60 + size + size % 2
    return parts


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(OUT, ignore_errors=True)
        HOME.mkdir(parents=True)
        cls.package = pack(OUT / "first", 0o022)
        subprocess.run(["dpkg-deb", "-x", cls.package, ROOT], check=True, timeout=kLongestRun)

    def told(self, *command):
        code, out, errors = run(*command)
        self.assertEqual((code, errors), (0, ""), command)
        return out

    def test_one_build_packed_twice_is_one_package(self):
        again = pack(OUT / "second", 0o077)
        self.assertEqual(again.name, self.package.name)
        self.assertEqual([header[:16].strip() for header, _ in members(again)], [b"debian-binary", b"control.tar.gz", b"data.tar.gz"])
        for (header, contents), (first_header, first_contents) in zip(members(again), members(self.package), strict=True):
            self.assertEqual(header, first_header)
            self.assertTrue(contents == first_contents, header)

    def test_debians_judge_finds_no_error(self):
        code, out, errors = run("lintian", "--fail-on", "error", "--tag-display-limit", "0", self.package)
        self.assertEqual(code, 0, out + errors)
        self.assertNotIn("\nE:", "\n" + out)

    def test_what_it_depends_on_is_told(self):
        fields = dict(line.split(": ", 1) for line in self.told("dpkg-deb", "-f", self.package).splitlines() if re.match(r"[A-Z][\w-]*: ", line))
        self.assertEqual(fields["Package"], "kelvo")
        self.assertEqual(fields["Version"], self.told("kelvo", "--version").split()[1] + "-1")
        for needed in ("libc6", "libqt6widgets6", "libqt6svg6", "liblua5.4-0", "libhwy1", "libtiff6", "libaravis-0.8-0", "libarchive13", "libsystemd0",
                       "fonts-dejavu-core"):
            self.assertRegex(fields["Depends"], rf"(^|, ){re.escape(needed)}\b")
        self.assertEqual(fields["Recommends"], "qt6-wayland")

    def test_everything_belongs_to_root_and_is_readable(self):
        for line in self.told("dpkg-deb", "-c", self.package).splitlines():
            mode, owner, *_, name = line.split()
            expected = "drwxr-xr-x" if mode.startswith("d") else "-rwxr-xr-x" if name.startswith("./usr/bin/") else "-rw-r--r--"
            self.assertEqual((mode, owner), (expected, "root/root"), line)

    def test_it_names_no_place_of_the_machine_that_built_it(self):
        for path in ROOT.rglob("*"):
            if path.is_file():
                self.assertNotIn(str(TREE).encode(), path.read_bytes(), path)

    def test_desktops_find_the_program(self):
        entry = SHARE / f"applications/{IDENTITY}.desktop"
        self.assertEqual(run("desktop-file-validate", entry), (0, "", ""))
        fields = dict(line.split("=", 1) for line in entry.read_text().splitlines()[1:])
        self.assertTrue((ROOT / "usr/bin" / fields["Exec"].split()[0]).is_file())
        self.assertEqual(fields["Icon"], IDENTITY)
        self.assertTrue((SHARE / f"icons/hicolor/scalable/apps/{IDENTITY}.svg").is_file())
        for size in (16, 24, 32, 48, 64, 128, 256):
            picture = (SHARE / f"icons/hicolor/{size}x{size}/apps/{IDENTITY}.png").read_bytes()
            self.assertEqual(picture[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual(struct.unpack(">II", picture[16:24]), (size, size))
        code, out, errors = run("appstreamcli", "validate", "--no-net", SHARE / f"metainfo/{IDENTITY}.metainfo.xml")
        self.assertEqual(code, 0, out + errors)
        self.assertNotRegex(out, r"(?m)^[EW]:")

    def test_the_file_types_are_taken(self):
        mime = OUT / "mime"
        shutil.copytree(SHARE / "mime", mime)
        code, out, errors = run("update-mime-database", mime, env=ENVIRONMENT | {"XDG_DATA_HOME": str(OUT)})
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("application/x-kelvo-image", (mime / "types").read_text())
        claimed = re.search("MimeType=(.*)", (SHARE / f"applications/{IDENTITY}.desktop").read_text())[1].strip(";").split(";")
        self.assertLessEqual(set(claimed), set((mime / "types").read_text().split()))

    def test_the_device_rule_has_conditions_and_one_act_a_line(self):
        rules = (ROOT / "usr/lib/udev/rules.d/70-kelvo.rules").read_text().splitlines()
        rules = [line for line in rules if line and not line.startswith("#")]
        self.assertEqual(len(rules), 2)
        for rule in rules:
            *conditions, act = rule.split(", ")
            self.assertEqual(act, 'TAG+="uaccess"')
            for condition in conditions:
                self.assertRegex(condition, r'^(SUBSYSTEMS?|KERNEL|ENV\{\w+\})=="[^"]+"$')

    def test_each_program_has_a_page_that_tells_its_options(self):
        self.assertEqual(sorted(path.name for path in (ROOT / "usr/bin").iterdir()), sorted(PROGRAMS))
        for program in PROGRAMS:
            page = SHARE / f"man/man1/{program}.1.gz"
            code, text, errors = run("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", page, env=ENVIRONMENT | {"MANWIDTH": "160"})
            self.assertEqual((code, errors), (0, ""), program)
            text = re.sub(".\b", "", text)
            for option in set(re.findall(r"(?m)^  (--[a-z-]+)", self.told(program, "--help"))):
                self.assertIn(option, text, program)

    def test_the_shell_completes_it(self):
        completion = SHARE / "bash-completion/completions/kelvo"
        self.assertEqual(self.told("bash", "--norc", "-c", f"source {completion}; complete -p kelvo").strip(), "complete -F _kelvo kelvo")

    def test_licences_and_changes_are_told(self):
        licences = (SHARE / "doc/kelvo/copyright").read_text()
        for owner in ("Kelvo developers", "The Cacophony Project", "Mark Borgerding"):
            self.assertRegex(licences, rf"(?m)^Copyright: .*{owner}$")
        for name in ("changelog.gz", "changelog.Debian.gz"):
            self.assertGreater(len(self.told("zcat", SHARE / "doc/kelvo" / name)), 100, name)
        code, out, errors = run("dpkg-parsechangelog", "-l", BUILD / "packaging/changelog.Debian", "-S", "Version")
        self.assertEqual((code, errors), (0, ""))
        self.assertEqual(out.strip(), self.told("kelvo", "--version").split()[1] + "-1")

    def test_links_of_the_pages_lead_on(self):
        pages = sorted((SHARE / "doc/kelvo").rglob("*.md"))
        self.assertGreater(len(pages), 20)
        for page in pages:
            text = re.sub(r"(?ms)^ *```.*?^ *```", "", page.read_text())
            for link in re.findall(r"\]\(([^)#:]+)\)", text):
                self.assertTrue((page.parent / link).exists(), f"{page}: {link}")

    def test_the_installed_program_does_the_whole_job(self):
        self.assertNotIn("not found", self.told("ldd", ROOT / "usr/bin/kelvo"))
        out = OUT / "first-light"
        out.mkdir()
        examples = SHARE / "doc/kelvo/examples"
        start = (ROOT / "usr/bin/kelvo", "--offscreen", "--virtual-time", "--script")
        code, text, errors = run(*start, examples / "first-light.lua", "--", out)
        self.assertEqual(code, 0, text + errors)
        self.assertGreater(len(list(out.glob("*.png"))), 20)
        code, text, errors = run(*start, examples / "next-start.lua", "AUTOSTART", "last.cal", "--", out)
        self.assertEqual(code, 0, text + errors)
        # Everything where a user's files are looked for, and nothing elsewhere.
        self.assertTrue((HOME / ".local/share/kelvo/kelvo.ini").is_file())
        self.assertTrue((HOME / ".local/state/kelvo/window.ini").is_file())
        self.assertFalse((HOME / ".local/share/kelvo/window.ini").exists())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
