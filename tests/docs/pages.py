#!/usr/bin/env python3
"""The pages of the docs, held to what they say.

  pages.py extract OUT          what the pages' code blocks are: files to compile and scripts to run, and OUT/blocks.cmake, which lists them
  pages.py blocks OUT           fails if a block is neither compiled nor run nor marked, or if OUT isn't what the pages say now
  pages.py paths                fails if README or a page links to, or names, a file of the tree that doesn't exist
  pages.py tour                 fails if docs/architecture.md leaves out a header of src/ or a floor, or README or CONTRIBUTING a floor
  pages.py places               fails if a place of docs/architecture.md's list of named things doesn't exist, or isn't reached

A block of C++ begins with a comment that names its file, `// src/display/zoom_step.h`, and is compiled as that file. One that goes into a file of the
tree says where: `// src/script/script_calls.cpp, before kCalls` or `..., in kCalls`, where the first line that holds `kCalls[]` is meant, or `..., in includes`. A block of
XML is a dialog and names its file in the same way. Blocks of Python and of the shell are run by the tests beside this file that follow their pages. A block of Lua is an operator script; a line before it may tell where it begins:

  <!-- start: live -->      after tests/docs/starts/live.lua; `no camera`: without a camera; nothing: in front of the start's first question
  <!-- fragment -->         the block can't run alone (ctest shows that it doesn't)
"""
import dataclasses
import os
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOUR = "docs/architecture.md"
CODE = {"lua", "cpp", "xml"}
OTHER = {"cmake", "ini", "sh", "python", ""}


@dataclasses.dataclass
class Block:
    page: str
    line: int       # of its first line of text, from 1
    language: str
    text: str
    mark: str = ""  # "fragment", "start: live"

    @property
    def place(self):
        return f"{self.page}:{self.line}"


class Fault(Exception):
    pass


def pages(root=ROOT):
    return ["README.md", "CONTRIBUTING.md"] + sorted(p.relative_to(root).as_posix() for p in (root / "docs").rglob("*.md"))


def blocks_of(page, text):
    """The fenced blocks of a page, also those inside lists."""
    found, fence, mark, mark_line = [], None, "", 0
    for number, line in enumerate(text.split("\n"), 1):
        opening = re.match(r"^(\s*)(```+|~~~+)\s*(.*?)\s*$", line)
        if fence is None and opening:
            fence = (opening[1], opening[2], Block(page, number + 1, opening[3], "", mark))
            mark = ""
        elif fence is not None and line.strip() == fence[1]:
            found.append(fence[2])
            fence = None
        elif fence is not None:
            fence[2].text += (line[len(fence[0]):] if line.startswith(fence[0]) else line.lstrip()) + "\n"
        elif comment := re.match(r"^\s*<!--\s*(fragment|start:.*?)\s*-->\s*$", line):
            mark, mark_line = comment[1], number
        elif mark and line.strip():
            raise Fault(f"{page}:{mark_line}: the mark \"{mark}\" stands before no block")
    if fence is not None:
        raise Fault(f"{fence[2].place}: the block has no end")
    if mark:
        raise Fault(f"{page}:{mark_line}: the mark \"{mark}\" stands before no block")
    return found


def checked(block):
    """The block, if it is one that can be judged."""
    if block.language not in CODE | OTHER:
        raise Fault(f"{block.place}: \"{block.language}\" is no language of these pages ({', '.join(sorted(CODE | OTHER))})")
    if block.mark and block.language != "lua":
        raise Fault(f"{block.place}: only a block of Lua bears a mark")
    if block.language in {"cpp", "xml"} and not file_of(block):
        raise Fault(f"{block.place}: the first line names no file (// src/folder/name.cpp), so that nothing compiles it")
    if block.mark.startswith("start:") and start_of(block) not in {"no camera"} | starts():
        raise Fault(f"{block.place}: there is no tests/docs/starts/{start_of(block)}.lua")
    return block


def start_of(block):
    return block.mark.removeprefix("start:").strip() if block.mark.startswith("start:") else ""


def starts():
    return {p.stem for p in (ROOT / "tests/docs/starts").glob("*.lua")}


def file_of(block):
    """Path, and for an addition to a file of the tree ("before" or "in", what), else None."""
    first = block.text.split("\n", 1)[0]
    pattern = r"^// ((?:src|tests)/[\w/]+\.(?:h|cpp))(?:, (before|in) (\w+))?$" if block.language == "cpp" \
        else r"^<!-- (src/resources/dialogs/\w+\.ui)() -->$"
    named = re.match(pattern, first)
    if not named:
        return None
    return named[1], ((named[2], named[3]) if named[2] else None)


def all_blocks(root=ROOT):
    return [checked(block) for page in pages(root) for block in blocks_of(page, (root / page).read_text())]


def name_of(page):
    return pathlib.PurePosixPath(page).stem


def added(text, where, addition, place):
    """The file's text with the addition before, or at the top of, the table that where names, or among the includes."""
    lines = text.split("\n")
    way, what = where
    if where == ("in", "includes"):
        way, what = "before", '#include "'
    else:
        what += "[]"
    at = next((i for i, line in enumerate(lines) if what in line), None)
    if at is None:
        raise Fault(f"{place}: the file has no {what}")
    at += way == "in"
    return "\n".join(lines[:at] + addition.rstrip("\n").split("\n") + lines[at:])


def extraction():
    """All files by their path below OUT, and the lines of blocks.cmake."""
    files, lines, numbers = {}, [], {}
    for block in all_blocks():
        name = name_of(block.page)
        if block.language == "lua":
            number = numbers[name] = numbers.get(name, 0) + 1
            start = start_of(block)
            before = "" if start in {"", "no camera"} else (ROOT / f"tests/docs/starts/{start}.lua").read_text()
            script = f"lua/{name}.{number}.lua"
            files[script] = f"{before}-- {block.place}\n{block.text}"
            fate = "FRAGMENT" if block.mark == "fragment" else "NO_CAMERA" if start == "no camera" else "CAMERA"
            lines.append(f"docs_lua({name} {number} {fate})")
        elif block.language == "cpp":
            path, where = file_of(block)
            out = f"{name}/" + path.split("/", 1)[1]
            if where:
                source = files.get(out) or (ROOT / path).read_text()
                files[out] = added(source, where, block.text, block.place)
                line = f"docs_replacement({name} {out})"
            else:
                if out in files:
                    raise Fault(f"{block.place}: the page has that file twice")
                files[out] = block.text
                line = f"docs_cpp({name} {out})"
            if out.endswith(".cpp") and line not in lines:
                lines.append(line)
        elif block.language == "xml":
            out = f"{name}/" + pathlib.PurePosixPath(file_of(block)[0]).name
            files[out] = block.text.split("\n", 1)[1]
            lines.append(f"docs_dialog({name} {out})")
    files["blocks.cmake"] = "\n".join(lines) + "\n"
    return files


def extract(out):
    for path, text in extraction().items():
        target = out / path
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.exists() or target.read_text() != text:  # what stands is not compiled again
            target.write_text(text)


def check_blocks(out):
    wanted = extraction()
    if not any(path.endswith(".lua") for path in wanted) or not any(path.endswith(".cpp") for path in wanted):
        raise Fault("the pages have no code: the search is broken")
    for path, text in wanted.items():
        if not (out / path).exists() or (out / path).read_text() != text:
            raise Fault(f"{path} isn't what the pages say: run cmake again")


# --- The tour and the paths ------------------------------------------------------------------------------------------

def named_paths(page, text):
    """What a page names of the tree: its links, and `src/...` and the like in backticks."""
    here = pathlib.PurePosixPath(page).parent
    for link in re.findall(r"\]\(([^)#:\s]+)\)", text):
        yield os.path.normpath(here / link)
    for name in re.findall(r"(?<=[ ])(src/\w+/)(?=[ ])", text):  # the tree
        yield name
    for name in re.findall(r"`((?:src|tests|docs|cmake|bench|fuzz|tools|examples|packaging)/[\w./-]*)`", text):
        yield name


def check_paths():
    faults = [f"{page} names {path}, which doesn't exist" for page in pages() + ["CHANGELOG.md"]
              for path in named_paths(page, (ROOT / page).read_text())
              if not (ROOT / path).exists() and not re.search(r"\bNAME\b", path) and path not in page_files(page)]
    if faults:
        raise Fault("\n".join(faults))


def page_files(page):
    """The files that a how-to page makes itself."""
    made = [file_of(block) for block in blocks_of(page, (ROOT / page).read_text()) if block.language in {"cpp", "xml"}]
    return {path[0] for path in made if path}


def headers(root=ROOT):
    return sorted(p.relative_to(root).as_posix() for p in (root / "src").rglob("*.h"))


def floors(cmake):
    return re.findall(r"^kelvo_floor\((\w+)", cmake, re.M)


def tour_faults(text, cmake, headers_of_tree):
    for header in headers_of_tree:
        if f"`{header}`" not in text and f"`{header.replace('_write.h', '.h')}`" not in text:  # a module's variables stand behind its views
            yield f"{TOUR} doesn't name `{header}`"
    for path in re.findall(r"`(src/[\w/]+\.h)`", text):
        if path not in headers_of_tree:
            yield f"{TOUR} names `{path}`, which doesn't exist"
    for floor in floors(cmake):
        if f"**{floor}**" not in text:
            yield f"{TOUR} doesn't name the floor **{floor}**"


def check_tour():
    cmake = (ROOT / "src/CMakeLists.txt").read_text()
    faults = list(tour_faults((ROOT / TOUR).read_text(), cmake, headers()))
    for page, form in {"README.md": "src/{}/", "CONTRIBUTING.md": "{}"}.items():
        text = (ROOT / page).read_text()
        faults += [f"{page} doesn't name the floor {floor}" for floor in floors(cmake)
                   if not re.search(rf"\b{form.format(floor)}(?!\w)", text)]
    if faults:
        raise Fault("\n".join(faults))


def named_things(text):
    """Rows of the list: | question | `file`: `name` | `file`: `name` | ..., one to three openings, the last has what was asked."""
    for row in re.findall(r"^\| (.*\? *\|.*)\|$", text, re.M):
        question, *cells = [cell.strip() for cell in row.split("|")]
        yield question, [re.match(r"^`([\w./]+)`: `([^`]+)`$", cell) for cell in cells if cell]


def place_faults(text, read):
    """read(path): the file's text, None where there is none."""
    things = list(named_things(text))
    if len(things) < 10:
        yield f"{TOUR} lists {len(things)} named things: ten are wanted"
    for question, openings in things:
        if not 1 <= len(openings) <= 3 or None in openings:
            yield f"{question}: one to three openings are wanted, each `file`: `name`"
            continue
        before = None
        for path, name in (opening.groups() for opening in openings):
            contents = read(path)
            if contents is None:
                yield f"{question}: {path} doesn't exist"
            elif not re.search(rf"(?<![\w]){re.escape(name)}(?![\w])", contents):
                yield f"{question}: {path} has no {name}"
            short = pathlib.PurePosixPath(path).stem
            if before is not None and contents is not None and not is_named(path, name, *before):
                yield f"{question}: {before[0]} names neither {path} nor {name}"
            before = (path, contents or "")


def is_named(path, name, before_path, before):
    """Whoever reads the file before finds the way: it is this one's header or source, includes it, or names its file."""
    same_module = os.path.splitext(path)[0] == os.path.splitext(before_path)[0]
    included = path.removeprefix("src/") in before or os.path.splitext(path.removeprefix("src/"))[0] + ".h" in before
    return same_module or included or pathlib.PurePosixPath(path).name in before


def check_places():
    def read(path):
        return (ROOT / path).read_text() if (ROOT / path).is_file() else None

    faults = list(place_faults((ROOT / TOUR).read_text(), read))
    if faults:
        raise Fault("\n".join(faults))


def main():
    what, *rest = sys.argv[1:] or ["?"]
    checks = {"extract": extract, "blocks": check_blocks, "paths": check_paths, "tour": check_tour, "places": check_places}
    if what not in checks or len(rest) != (what in {"extract", "blocks"}):
        sys.exit(__doc__)
    try:
        checks[what](*map(pathlib.Path, rest))
    except Fault as fault:
        sys.exit(str(fault))


if __name__ == "__main__":
    main()
