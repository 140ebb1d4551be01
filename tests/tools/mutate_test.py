#!/usr/bin/env python3
"""tools/mutate.py finds each kind of mutation, and nothing in what isn't code."""
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
import mutate

SOURCE = '''#include <vector>
template <typename T, int n = 1 + 1>
int Sum(int n)
{
    // a + b < c
    Log("a + b < c", n);
    Start(n);
    int sum = 0;
    for (int i = 0; i < n; ++i) sum += i;
    return sum - 1;
}'''


def found(kind):
    return [(each.line, each.after.strip()) for each in mutate.mutations("a/b.cpp", SOURCE)[kind]]


class Mutations(unittest.TestCase):
    def test_signs(self):
        self.assertEqual(found("sign"), [(9, "for (int i = 0; i < n; ++i) sum -= i;"), (10, "return sum + 1;")])

    def test_bounds(self):
        self.assertEqual(found("bound"), [(9, "for (int i = 0; i <= n; ++i) sum += i;")])

    def test_order(self):
        self.assertEqual(found("order"), [(6, 'Start(n);\n    Log("a + b < c", n);')])

    def test_dropped_calls(self):
        self.assertEqual(found("dropped call"), [(6, ""), (7, "")])

    def test_each_changes_its_own_lines_alone(self):
        before = SOURCE.split("\n")
        for kind, each in mutate.mutations("a/b.cpp", SOURCE).items():
            for mutation in each:
                after = mutate.mutated(SOURCE, mutation).split("\n")
                self.assertEqual(after[:mutation.line - 1], before[:mutation.line - 1], kind)
                self.assertNotEqual(after, before, kind)
                self.assertEqual(len(after), len(before) - (kind == "dropped call"))

    def test_the_seed_alone_decides(self):
        self.assertEqual(mutate.drawn("a/b.cpp", SOURCE, 1), mutate.drawn("a/b.cpp", SOURCE, 1))
        self.assertEqual({each.kind for each in mutate.drawn("a/b.cpp", SOURCE, 2)[:4]}, set(mutate.KINDS))


if __name__ == "__main__":
    unittest.main()
