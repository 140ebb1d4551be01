#!/usr/bin/env python3
"""Breaks each source module once and asks whether a test notices.

    tools/mutate.py run [--minutes 60] [--seed N] [--jobs 2] [--module FOLDER/FILE.cpp ...]
    tools/mutate.py report                 what was noticed and what wasn't

One mutation a module: a sign, a bound, the order of two calls, or a call left out, drawn by the seed. It is made in a copy of the last commit
(build/mutate/tree), built, and the test programs of the module's folder are run; a folder without programs of its own is left to the operator's
scripts, and a mutation that its folder's programs let pass is shown to the scripts too. What doesn't compile is drawn again.
Each outcome goes into build/mutate/results.jsonl at once: stopped at any moment, the next run goes on where this one stood.
"""
import argparse
import dataclasses
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
BUILD = TREE / "build" / "dev"
RESULTS = WORK / "results.jsonl"
BROKEN = WORK / "broken"  # the module that is broken at the moment: what a kill leaves so is mended by the next run
DRAWS = 6  # so many mutations are tried until one compiles
TESTS_SECONDS = 300
SCRIPTS_SECONDS = 1200

TURNED = {
    "sign": {" + ": " - ", " - ": " + ", " += ": " -= ", " -= ": " += "},
    "bound": {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ", " != ": " == "},
}
KINDS = (*TURNED, "order", "dropped call")
CALL = re.compile(r"^( +)(?!return\b|else\b|throw\b|delete\b|static_assert\b|using\b)[\w:.>\-\[\]]+\(.*\);$")
PLAIN = re.compile(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)+\'|//.*')
NOT_CODE = re.compile(r"^\s*(#|template\b|static_assert\b|///?)|operator|<\w+ <")


@dataclasses.dataclass(frozen=True)
class Mutation:
    module: str  # below src/
    kind: str
    line: int    # from 1
    before: str
    after: str   # "" where the line is left out; two lines where they change places


def blanked(line):
    """The line with its strings and comments as blanks, column for column."""
    return PLAIN.sub(lambda found: " " * len(found.group()), line)


def mutations(module, text):
    """All mutations of a source text, by kind."""
    found = {kind: [] for kind in KINDS}
    lines = text.split("\n")
    for number, line in enumerate(lines, 1):
        code = blanked(line)
        if NOT_CODE.search(code):
            continue
        for kind, turned in TURNED.items():
            for old, new in turned.items():
                column = code.find(old)
                while column >= 0:
                    found[kind].append(Mutation(module, kind, number, line, line[:column] + new + line[column + len(old):]))
                    column = code.find(old, column + len(old))
        call = CALL.match(code)
        if not call:
            continue
        found["dropped call"].append(Mutation(module, "dropped call", number, line, ""))
        below = lines[number] if number < len(lines) else ""
        other = CALL.match(blanked(below))
        if other and other.group(1) == call.group(1) and below != line:
            found["order"].append(Mutation(module, "order", number, f"{line}\n{below}", f"{below}\n{line}"))
    return found


def mutated(text, mutation):
    lines = text.split("\n")
    first = mutation.line - 1
    count = mutation.before.count("\n") + 1
    assert "\n".join(lines[first:first + count]) == mutation.before
    return "\n".join(lines[:first] + ([mutation.after] if mutation.after else []) + lines[first + count:])


def drawn(module, text, seed):
    """The module's mutations in the order in which they are tried: one of each kind in turn, kinds and places by the seed."""
    dice = random.Random(f"{seed} {module}")
    found = mutations(module, text)
    kinds = [kind for kind in KINDS if found[kind]]
    dice.shuffle(kinds)
    for kind in kinds:
        dice.shuffle(found[kind])
    order = []
    while any(found[kind] for kind in kinds):
        order += [found[kind].pop() for kind in kinds if found[kind]]
    return order[:DRAWS]


def run(command, seconds, **options):
    """Exit code of a command, None where it was still running after the time; whatever it started ends with it."""
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, **options) as process:
        try:
            return process.wait(seconds)
        except BaseException as stopped:
            os.killpg(process.pid, 9)
            process.wait()
            if isinstance(stopped, subprocess.TimeoutExpired):
                return None
            raise


def prepare():
    """The last commit as a tree of its own, built once."""
    commit = subprocess.run(["git", "rev-parse", "HEAD"], cwd=ROOT, check=True, capture_output=True, text=True).stdout.strip()
    stamp = WORK / "commit"
    if not (TREE.exists() and stamp.exists() and stamp.read_text() == commit):
        TREE.mkdir(parents=True, exist_ok=True)
        for old in sorted((TREE / "src").rglob("*"), reverse=True):
            old.unlink() if old.is_file() else old.rmdir()
        archive = subprocess.Popen(["git", "archive", commit], cwd=ROOT, stdout=subprocess.PIPE)
        subprocess.run(["tar", "-x", "-C", TREE], stdin=archive.stdout, check=True)
        stamp.write_text(commit)
        BROKEN.unlink(missing_ok=True)
    if BROKEN.exists():
        module = f"src/{BROKEN.read_text()}"
        whole = subprocess.run(["git", "show", f"{commit}:{module}"], cwd=ROOT, check=True, capture_output=True)
        (TREE / module).write_bytes(whole.stdout)
        BROKEN.unlink()
    subprocess.run(["cmake", "--preset", "dev"], cwd=TREE, check=True, stdout=subprocess.DEVNULL)
    return commit


def programs():
    """The test programs of each folder: {folder: [program]}, paths below the build directory."""
    shown = subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILD, check=True, capture_output=True, text=True).stdout
    found = {}
    for test in json.loads(shown)["tests"]:
        if test["name"].startswith("Whole."):
            program = pathlib.Path(test["command"][0])
            found.setdefault(program.parent.name, []).append(program)
    return found


def built(jobs, targets):
    return run(["ninja", f"-j{jobs}", *targets], None, cwd=BUILD) == 0


def noticed(folder, jobs, tests):
    """Who notices what the tree holds now: a program's name, "scripts", "compiler" or None."""
    mine = tests.get(folder, [])
    if not built(jobs, [str(program.relative_to(BUILD)) for program in mine] or ["kelvo"]):
        return "compiler"
    surroundings = os.environ | {"QT_QPA_PLATFORM": "offscreen"}
    for program in mine:
        if run([program, "--gtest_brief=1"], TESTS_SECONDS, cwd=program.parent, env=surroundings) != 0:
            return program.name
    if not built(jobs, ["kelvo"]):
        return "compiler"
    scripts = run(["ctest", f"-j{jobs}", "--stop-on-failure", "-R", "^Script"], SCRIPTS_SECONDS, cwd=BUILD)
    return None if scripts == 0 else "scripts"


def results():
    if not RESULTS.exists():
        return []
    return [json.loads(line) for line in RESULTS.read_text().splitlines()]


def run_mutations(arguments):
    end = time.monotonic() + 60 * arguments.minutes
    WORK.mkdir(parents=True, exist_ok=True)
    commit = prepare()
    if not built(arguments.jobs, ["kelvo", "tests/all"]):
        sys.exit("the tree doesn't build as it is")
    tests = programs()
    done = {outcome["module"] for outcome in results()}
    modules = arguments.module or sorted(str(path.relative_to(ROOT / "src")) for path in (ROOT / "src").rglob("*.cpp"))
    # Drawn over the folders, so that an hour says something of each of them.
    random.Random(arguments.seed).shuffle(modules)
    for module in modules:
        if module in done:
            continue
        if time.monotonic() > end:
            break
        source = TREE / "src" / module
        text = source.read_text()
        outcome = {"module": module, "commit": commit, "outcome": "nothing to break"}
        for mutation in drawn(module, text, arguments.seed):
            try:
                BROKEN.write_text(module)
                source.write_text(mutated(text, mutation))
                by = noticed(pathlib.Path(module).parts[0], arguments.jobs, tests)
            finally:
                source.write_text(text)
                BROKEN.unlink()
            if by != "compiler":
                outcome = dataclasses.asdict(mutation) | {"commit": commit, "outcome": f"noticed by {by}" if by else "survived"}
                break
        with RESULTS.open("a") as file:
            file.write(json.dumps(outcome) + "\n")
        print(f"{module}: {outcome['outcome']}", flush=True)


def report(_):
    outcomes = results()
    for outcome in outcomes:
        if outcome["outcome"] == "survived":
            print(f"src/{outcome['module']}:{outcome['line']}: {outcome['kind']}")
            for sign, text in (("-", outcome["before"]), ("+", outcome["after"])):
                for line in text.split("\n"):
                    if line:
                        print(f"  {sign} {line.strip()}")
    count = {name: sum(outcome["outcome"].startswith(name) for outcome in outcomes) for name in ("noticed", "survived", "nothing")}
    by_scripts = sum(outcome["outcome"] == "noticed by scripts" for outcome in outcomes)
    print(f"{len(outcomes)} modules: {count['noticed']} noticed ({by_scripts} of them by the scripts), {count['survived']} survived, "
          f"{count['nothing']} with nothing to break")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(required=True)
    runs = commands.add_parser("run")
    runs.add_argument("--minutes", type=float, default=60)
    runs.add_argument("--seed", type=int, default=1)
    runs.add_argument("--jobs", type=int, default=2)
    runs.add_argument("--module", nargs="*")
    runs.set_defaults(do=run_mutations)
    commands.add_parser("report").set_defaults(do=report)
    arguments = parser.parse_args()
    arguments.do(arguments)


if __name__ == "__main__":
    main()
