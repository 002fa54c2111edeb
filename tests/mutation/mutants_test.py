#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What is changed of a source, and what is left alone.

    mutants_test.py
"""
import contextlib
import io
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import mutate
from mutants import mutants_of


def changes(source):
    """Each change as OLD => NEW, in the order of the places."""
    return [f"{source[m.start:m.end]} => {m.new}" for m in mutants_of("a.cpp", source)]


CASES = (
    ("a comparison", "bool f = a < b;", ["< => <=", "< => >="]),
    ("both of a logical one", "bool f = a && b || c;", ["&& => ||", "|| => &&"]),
    ("arithmetic", "int f = a + b * c;", ["+ => -", "* => /"]),
    ("bits", "int f = a & b | c << d;", ["& => |", "| => &", "<< => >>"]),
    ("brackets of a template, references and pointers are no operators",
     "std::vector<int> f(const A& a, B* b, C&& c);", []),
    ("the head of a template", "template <typename T, int n = 3>\nvoid f(T t);", []),
    ("an operator's own name", "bool operator==(const A& a);\nbool operator+=(A a);", []),
    ("a number is one more and one less", "int f = 15;", ["15 => 14", "15 => 16"]),
    ("nothing is below zero", "int f = 0;", ["0 => 1"]),
    ("it stays decimal", "int f = 10;", ["10 => 11", "10 => 9"]),
    ("hexadecimal ones keep their digits", "int f = 0x0F;", ["0x0F => 0x0E", "0x0F => 0x10"]),
    ("octal ones too", "int f = 0644;", ["0644 => 0643", "0644 => 0645"]),
    ("and their suffix", "auto f = 9U;", ["9U => 10U", "9U => 8U"]),
    ("digits may be set apart", "int f = 1'000;", ["1'000 => 999", "1'000 => 1001"]),
    ("a fraction is left alone", "double f = 0.5;", []),
    ("truth", "bool f = true;", ["true => false"]),
    ("a character", "char f = 'a';", ["'a' => 'b'"]),
    ("a character that is escaped", r"char f = '\n';", [r"'\n' => 'x'"]),
    ("first, middle, last letter of a text, and the whole of it", 'f("abcde");',
     ['"abcde" => ""', '"abcde" => "abcdf"', '"abcde" => "abdde"', '"abcde" => "bbcde"']),
    ("no text", 'f("");', ['"" => "x"']),
    ("escapes and conversions stay", r'f("\n%02d");', [r'"\n%02d" => ""']),
    ("a raw text", 'f(R"(a"b)");', ['R"(a"b)" => R"()"', 'R"(a"b)" => R"(a"c)"',
                                    'R"(a"b)" => R"(axb)"', 'R"(a"b)" => R"(b"b)"']),
    ("a severity", "auto f = kSeverityFailure;",
     ["kSeverityFailure => kSeverityPrevented", "kSeverityFailure => kSeverityProgress"]),
    ("the smaller of two", "int f = std::min(a, b);", ["min => max"]),
    ("a choice", "int f = a ? b : c;", ["b : c => c : b"]),
    ("a choice among arguments", "int f = g(a ? b : c, d);", ["b : c => c : b"]),
    ("a choice within another", "int f = a ? b : c ? d : e;",
     ["b : c ? d : e => c ? d : e : b", "d : e => e : d"]),
    ("a name of another space is no choice", "int f = a::b;", []),
    ("a condition", "void f() {\n  if (a()) return;\n}", ["a() => !(a())"]),
    ("a condition behind a declaration", "void f() {\n  if (A a; a.b()) return;\n}",
     ["a.b() => !(a.b())"]),
    ("a declaration as a condition", "void f() {\n  if (const A* a = b()) return;\n}", []),
    ("what an operator negates is not negated once more", "void f() {\n  if (a == b) return;\n}",
     ["== => !="]),
    ("nor what loses its own negation", "void f() {\n  while (!a()) return;\n}", ["! => "]),
    ("two conditions in one", "void f() {\n  if (a && b) return;\n}",
     ["a && b => !(a && b)", "&& => ||"]),
    ("a call", "void f() {\n  g();\n}", ["g(); => {}"]),
    ("an assignment, and what follows a head or else",
     "void f() {\n  if (a()) b = c;\n  else\n    d[e] = g;\n}",
     ["a() => !(a())", "b = c; => {}", "d[e] = g; => {}"]),
    ("a statement in a case", "void f() {\n  switch (a) {\n    case b:\n      c();\n      break;\n  }\n}",
     ["c(); => {}", "break; => {}"]),
    ("a statement of a function within a statement", "void f() {\n  g([&](A a) { h(a); });\n}",
     ["g([&](A a) { h(a); }); => {}", "h(a); => {}"]),
    ("a return value is needed", "int f() {\n  return g();\n}", []),
    ("a declaration is needed", "void f() {\n  const A a = b();\n  A c(d);\n  n::A<B>& e = g;\n}", []),
    ("members and functions are declared", "class A {\n  void f();\n  B b_;\n};\nnamespace n {\nA g(B);\n}", []),
    ("values in braces are no statements", "const A f[] = {{a, b}, {c, d}};", []),
    ("a pure virtual operation", "class A {\n  virtual int f() const = 0;\n};", []),
    ("comments", '// a < 1\n/* "b" */\n', []),
    ("directives", '#include "a.h"\n#define A \\\n  1\n', []),
    ("what the compiler asserts", 'static_assert(sizeof(a) == 4, "no");', []),
    ("attributes", '[[nodiscard("why")]] int f();', []),
    ("other names", 'using A = B<3>;\nextern "C" void f();', []),
)


class Mutants(unittest.TestCase):
    def test_each_kind_of_change(self):
        for what, source, expected in CASES:
            with self.subTest(what):
                self.assertEqual(sorted(expected), sorted(changes(source)))

    def test_only_the_place_is_changed(self):
        source = "int a = 1;  // one\nint b = 1;\n"
        self.assertEqual(["int a = 0;  // one\nint b = 1;\n", "int a = 2;  // one\nint b = 1;\n",
                          "int a = 1;  // one\nint b = 0;\n", "int a = 1;  // one\nint b = 2;\n"],
                         [mutant.applied(source) for mutant in mutants_of("a.cpp", source)])

    def test_the_lines_of_a_change_are_whole(self):
        source = "void f() {\n  int c;\n  a(b,\n    c);\n}\n"
        mutant, = mutants_of("a.cpp", source)
        self.assertEqual(("a(b, c);", "{}"), mutant.lines(source))
        self.assertEqual(3, mutant.line_number(source))


class Choice(unittest.TestCase):
    SOURCE = 'void f() {\n  g(1, "a");\n  h(2, "b");\n}\n'

    def test_a_seed_gives_the_same_order_and_the_kinds_take_turns(self):
        mutants = mutants_of("a.cpp", self.SOURCE)
        order = mutate.in_turns(mutants, "1")
        self.assertEqual(order, mutate.in_turns(mutants, "1"))
        self.assertEqual(sorted(mutants, key=repr), sorted(order, key=repr))
        self.assertEqual(["constant", "statement", "text"] * 2, [m.kind for m in order[:6]])
        self.assertTrue(any(order != mutate.in_turns(mutants, str(seed)) for seed in range(2, 9)))


class List(unittest.TestCase):
    SOURCES = {"a.cpp": "int a = 1;\n"}

    def test_an_entry_is_found_by_its_lines(self):
        place = mutate.Place("a.cpp", "int a = 1;", "int a = 2;")
        mutant, = mutate.listed_mutants([place], self.SOURCES)
        self.assertEqual("2", mutant.new)
        self.assertEqual(place, mutate.place_of(mutant, self.SOURCES["a.cpp"]))

    def test_an_entry_that_fits_nothing_any_more_is_refused(self):
        for file, old, new in (("a.cpp", "int b = 1;", "int b = 2;"), ("b.cpp", "int a = 1;", "int a = 2;"),
                               ("a.cpp", "int a = 1;", "int a = 3;")):
            with self.subTest(new), self.assertRaises(mutate.Trouble):
                mutate.listed_mutants([mutate.Place(file, old, new)], self.SOURCES)

    def test_each_entry_of_the_list_fits_its_source_and_has_a_reason(self):
        places = mutate.read_list(mutate.LISTED)
        sources = {p.file: (mutate.ROOT / p.file).read_text() for p in places}
        self.assertEqual(len(places), len(mutate.listed_mutants(places, sources)))
        for place, reason in places.items():
            self.assertGreater(len(reason.split()), 2, place)


class Order(unittest.TestCase):
    def test_the_suites_of_a_test_file(self):
        self.assertEqual({"A", "B", "C"},
                         mutate.suites_in("TEST(B, X) {\nTEST_F(A, Y)\nTEST(B, Z)\n  TEST(D, W)\nTEST_P(C, V)"))

    def test_the_nearest_tests_are_asked_first_then_the_shortest(self):
        tester = mutate.Tester(0)
        tester.tree.limits = {"host_test": 9, "report": 8, "explain": 3, "velhost_test": 1}
        self.assertEqual(["host_test", "report", "velhost_test", "explain"],
                         tester.in_order(tester.tree.limits, "host/report/html.cpp"))
        self.assertEqual(["host_test", "velhost_test", "explain", "report"],
                         tester.in_order(tester.tree.limits, "host/text/utf8.cpp"))

    def test_or_the_nearest_alone(self):
        sources = {"host/report/html.cpp": "", "host/text/utf8.cpp": "", "platform/core/log.cpp": ""}
        near = mutate.Tester(0, near=True)
        self.assertEqual(("host_test", "report"), near.in_order((), "host/report/html.cpp"))
        self.assertEqual(("velhost_test", "terminal"), near.in_order((), "host/main.cpp"))
        self.assertEqual(["host_test", "report", "vel_core_test"],
                         mutate.tests_of("host", sources, True))


class FiguresOfAFolder(unittest.TestCase):
    def test_what_does_not_compile_is_not_tried(self):
        sources = {"a.cpp": "int a = 1;\nbool b = true;\nint c = 0;\n"}
        mutants = mutants_of("a.cpp", sources["a.cpp"])
        listed = {mutate.place_of(mutants[2], sources["a.cpp"]): "for a reason"}
        run = mutate.FolderRun(mutants, sources, (), listed, 10)
        witnesses = iter(["Test.One", mutate.DOES_NOT_COMPILE, ""])

        class Tester:
            def seen_by(self, *_):
                return next(witnesses)
        with contextlib.redirect_stdout(io.StringIO()) as said:
            run.work(Tester())
        self.assertEqual(
            "a.cpp:1: constant: int a = 0;\n    Test.One\n"
            "a.cpp:1: constant: int a = 2;\n    does not compile\n"
            "a.cpp:2: constant: bool b = false;\n    cannot be seen\n"
            "a.cpp:3: constant: int c = 1;\n    NOT SEEN\n", said.getvalue())
        self.assertEqual("3 tried, 1 seen (33.3 %), 1 cannot be seen, 1 not seen; 1 more did not compile",
                         str(run.figures))
        self.assertEqual([mutate.Place("a.cpp", "int c = 0;", "int c = 1;")], run.figures.unseen)


if __name__ == "__main__":
    unittest.main()
