#!/usr/bin/env python3
"""The archive that support_files.lua saved, read by another program: it is whole, it holds what was shown and no more, and tells no names.

  support_files_test.py RUN HOME LOGIN      RUN: the directory of that script's run; HOME and LOGIN: as it was given them
"""
import pathlib
import pwd
import os
import re
import socket
import sys
import unittest
import zipfile

RUN, HOME, LOGIN = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
OWN = {b"kelvo", b"camera"}


def words():
    """What names who ran it and where, from the machine itself."""
    account = pwd.getpwuid(os.getuid())
    names = [HOME, LOGIN, account.pw_name, account.pw_dir, socket.gethostname(), socket.gethostname().split(".")[0]]
    for field in account.pw_gecos.split(","):
        names += [field] + re.split(r"[ .-]", field)
    names = {name.strip() for name in names}
    short = {name.encode() for name in names if 0 < len(name) < 4}
    return {name.encode().lower() for name in names if len(name) >= 4} - OWN, short


class Archive(unittest.TestCase):
    def setUp(self):
        self.bytes = (RUN / "data/support.zip").read_bytes()
        self.archive = zipfile.ZipFile(RUN / "data/support.zip")

    def test_is_whole(self):
        self.assertIsNone(self.archive.testzip())
        self.assertEqual(self.archive.comment, b"")

    def test_holds_what_was_shown(self):
        shown = sorted((path for path in (RUN / "data").glob("shown.*")), key=lambda path: int(path.name.split(".")[1]))
        self.assertGreater(len(shown), 8)
        self.assertEqual(self.archive.namelist(), [path.name.split(".", 2)[2] for path in shown])
        for path, name in zip(shown, self.archive.namelist()):
            stored = self.archive.read(name).replace(b"\r\n", b"\n")
            if name == "notes.ini":
                stored = stored.replace(b"\xf6", "ö".encode())  # shown as what it means
            self.assertEqual(stored, path.read_bytes(), name)

    def test_is_made_of_texts(self):
        for name in self.archive.namelist():
            self.assertNotIn(b"\0", self.archive.read(name), name)
            self.assertTrue(name.endswith((".txt", ".jsonl", ".ini", ".cnf")), name)

    def test_tells_no_names(self):
        anywhere, alone = words()
        for name in self.archive.namelist():
            contents = (name.encode() + b"\n" + self.archive.read(name)).lower()
            for word in anywhere:
                self.assertNotIn(word, contents, (name, word))
            for word in alone:
                self.assertIsNone(re.search(rb"(?<![0-9A-Za-z\x80-\xff])" + re.escape(word.lower()) + rb"(?![0-9A-Za-z\x80-\xff])", contents), (name, word))
        for word in anywhere:
            self.assertNotIn(word, self.bytes.lower(), "the directory of the archive")

    def test_tells_no_owner(self):
        for entry in self.archive.infolist():
            extra = entry.extra
            while extra:
                kind, size = int.from_bytes(extra[:2], "little"), int.from_bytes(extra[2:4], "little")
                if kind == 0x7875:  # numbers of user and group
                    self.assertFalse(any(extra[4 + 2:4 + size].replace(b"\4", b"\0")), entry.filename)
                extra = extra[4 + size:]


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
