#!/usr/bin/env python3
"""tidy_keys.py BUILD SOURCE...: one line a source, "KEY SOURCE". The key stands for all that a check of the source depends on: clang-tidy, its configuration,
the compile command, the source and each file of the tree that it includes, as the build has found them. Where the tree lies has no part in it. A source that
the build doesn't know, or not as it stands now, has the key "-": nothing is known of it."""
import hashlib
import json
import pathlib
import subprocess
import sys


def dependencies(build, top):
    """For each source of the tree what it includes: out of the build's own records, where the first file of an entry is the source."""
    found, entry, valid = {}, [], False
    lines = subprocess.run(["ninja", "-C", build, "-t", "deps"], check=True, capture_output=True, text=True).stdout.split("\n")
    for line in lines:
        if line.startswith("    "):
            path = pathlib.Path(build, line.strip()).resolve()
            if path.is_relative_to(top):
                entry.append(path)
        elif line:
            valid = line.endswith("(VALID)")
        else:
            if entry and valid:
                found.setdefault(entry[0], entry)
            entry = []
    return found


def main():
    build, *sources = sys.argv[1:]
    top = pathlib.Path(__file__).resolve().parents[1]
    digests = {}

    def digest(path):
        if path not in digests:
            digests[path] = hashlib.sha1(path.read_bytes()).hexdigest()
        return digests[path]

    commands = {entry["file"]: entry["command"] for entry in json.loads(pathlib.Path(build, "compile_commands.json").read_text())}
    includes = dependencies(build, top)
    checker = subprocess.run(["clang-tidy-16", "--version"], check=True, capture_output=True, text=True).stdout
    for source in sources:
        path = top / source
        known = includes.get(path)
        if not known or not all(each.exists() for each in known):
            print("-", source)
            continue
        command = commands.get(str(path), "").replace(str(top), ".")
        text = [checker, digest(top / ".clang-tidy"), command] + [f"{each.relative_to(top)} {digest(each)}" for each in sorted(set(known))]
        print(hashlib.sha1("\n".join(text).encode()).hexdigest(), source)


if __name__ == "__main__":
    main()
