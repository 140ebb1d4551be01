"""The checks of pages.py find what they are for."""
import unittest

import pages


class Blocks(unittest.TestCase):
    def block(self, text):
        return pages.checked(pages.blocks_of("page.md", text)[0])

    def fault(self, text):
        with self.assertRaises(pages.Fault) as raised:
            self.block(text)
        return str(raised.exception)

    def test_a_script_and_where_it_begins(self):
        block = self.block("Text\n\n<!-- start: live -->\n```lua\npress(1)\n```\n")
        self.assertEqual((block.line, block.text, pages.start_of(block)), (5, "press(1)\n", "live"))

    def test_a_block_inside_a_list(self):
        self.assertEqual(self.block("1. x\n\n   ```cpp\n   // src/a/b.h\n     int c;\n   ```\n").text, "// src/a/b.h\n  int c;\n")

    def test_the_file_of_a_block(self):
        self.assertEqual(pages.file_of(self.block("```cpp\n// src/a/b.cpp, before kCalls\n```\n")), ("src/a/b.cpp", ("before", "kCalls")))
        self.assertEqual(pages.file_of(self.block("```xml\n<!-- src/resources/dialogs/A.ui -->\n```\n")),
                         ("src/resources/dialogs/A.ui", None))

    def test_code_that_nothing_compiles(self):
        self.assertIn("names no file", self.fault("```cpp\nint a;\n```\n"))
        self.assertIn("names no file", self.fault("```cpp\n// a comment\n```\n"))

    def test_a_language_that_nothing_judges(self):
        self.assertIn("no language", self.fault("```c++\nint a;\n```\n"))
        self.assertIn("no language", self.fault("```Lua\npress(1)\n```\n"))

    def test_marks_that_mean_nothing(self):
        self.assertIn("before no block", self.fault("<!-- fragment -->\nText\n```lua\n```\n"))
        self.assertIn("before no block", self.fault("```lua\n```\n<!-- fragment -->\n"))
        self.assertIn("bears a mark", self.fault("<!-- fragment -->\n```cpp\n// src/a/b.cpp\n```\n"))
        self.assertIn("there is no", self.fault("<!-- start: nowhere -->\n```lua\n```\n"))

    def test_a_block_without_an_end(self):
        self.assertIn("no end", self.fault("```lua\npress(1)\n"))

    def test_what_is_added_to_a_file(self):
        source = "a\nint kCalls[] = {\nb\n};"
        self.assertEqual(pages.added(source, ("before", "kCalls"), "x\n", ""), "a\nx\nint kCalls[] = {\nb\n};")
        self.assertEqual(pages.added(source, ("in", "kCalls"), "x\n", ""), "a\nint kCalls[] = {\nx\nb\n};")
        with self.assertRaises(pages.Fault):
            pages.added(source, ("in", "kRows"), "x", "")
        source = "// it\n#include \"b.h\"\n\n#include <c>"
        self.assertEqual(pages.added(source, ("in", "includes"), "#include \"a.h\"\n", ""), "// it\n#include \"a.h\"\n#include \"b.h\"\n\n#include <c>")


class Tour(unittest.TestCase):
    CMAKE = "kelvo_floor(low LIBRARIES x)\nkelvo_floor(high USES low)\n"

    def test_a_whole_tour(self):
        self.assertEqual(list(pages.tour_faults("1. **low**\n2. **high**: `src/low/a.h`", self.CMAKE, ["src/low/a.h"])), [])

    def test_the_variables_behind_a_plain_header(self):
        self.assertEqual(list(pages.tour_faults("**low** **high** `src/low/a.h`", self.CMAKE, ["src/low/a.h", "src/low/a_write.h"])), [])
        self.assertIn("b_write.h", "".join(pages.tour_faults("**low** **high**", self.CMAKE, ["src/low/b_write.h"])))

    def test_what_it_leaves_out_and_what_is_gone(self):
        faults = "\n".join(pages.tour_faults("1. **low**\n\n`src/low/b.h` is high", self.CMAKE, ["src/low/a.h"]))
        self.assertIn("doesn't name `src/low/a.h`", faults)
        self.assertIn("names `src/low/b.h`, which", faults)
        self.assertIn("floor **high**", faults)
        self.assertNotIn("floor **low**", faults)

    def test_what_a_page_names(self):
        self.assertEqual(list(pages.named_paths("docs/how-to/a.md", "[b](../b.md) [c](https://c) `src/d.h` `src/<e>`")),
                         ["docs/b.md", "src/d.h"])


class Places(unittest.TestCase):
    TREE = {"src/a.h": "void Send();", "src/a.cpp": "#include \"b.h\"\nvoid Send() { Byte(); }", "src/b.h": "void Byte();", "src/c.h": "Resend"}

    def faults(self, row):
        return [fault for fault in pages.place_faults(row, self.TREE.get) if "named things" not in fault]

    def test_a_way_of_three_openings(self):
        self.assertEqual(self.faults("| Where? | `src/a.h`: `Send` | `src/a.cpp`: `Byte` | `src/b.h`: `Byte` |"), [])

    def test_ways_that_lead_nowhere(self):
        self.assertIn("src/d.h doesn't exist", self.faults("| Where? | `src/d.h`: `Send` |")[0])
        self.assertIn("src/c.h has no Send", self.faults("| Where? | `src/c.h`: `Send` |")[0])
        self.assertIn("names neither", self.faults("| Where? | `src/a.h`: `Send` | `src/c.h`: `Resend` |")[0])
        self.assertIn("one to three", self.faults("| Where? | in some file |")[0])
        self.assertIn("one to three", self.faults("| Where? |" + " `src/a.h`: `Send` |" * 4)[0])

    def test_too_few(self):
        self.assertIn("ten are wanted", list(pages.place_faults("", self.TREE.get))[0])


if __name__ == "__main__":
    unittest.main()
