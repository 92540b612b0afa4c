#!/usr/bin/env python3
"""What filter.py makes of headers: each comment reaches the declarations that it speaks for, and no other."""

import os
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
sys.dont_write_bytecode = True
import filter as headers  # noqa: E402

CASES = {
    "a comment speaks for its block": (
        "/// Both.\nint A();\nint B(); ///< own\nint C();\n\nint D();\n",
        "/// Both.\nint A();\nint B(); ///< own\n/** Both. */ int C();\n\nint D();\n"),
    "the next comment takes over": (
        "/// One.\nint A();\n/// Two,\n/// longer.\nint B();\nint C();\n",
        "/// One.\nint A();\n/// Two,\n/// longer.\nint B();\n/** Two, longer. */ int C();\n"),
    "a body and a parameter list are not declarations": (
        "/// One.\nint A(int a,\n      int b) {\n    int c = 0;\n    return c;\n}\nint B();\n",
        "/// One.\nint A(int a,\n      int b) {\n    int c = 0;\n    return c;\n}\n/** One. */ int B();\n"),
    "an initializer in braces is not a scope": (
        "struct S {\n    /// Two.\n    ULONGLONG a = ULONGLONG{0};\n    int b{};\n};\n",
        "struct S {\n    /// Two.\n    ULONGLONG a = ULONGLONG{0};\n    /** Two. */ int b{};\n};\n"),
    "a section speaks for what nothing else speaks for": (
        "// --- size ---\n// In bytes.\nint A();\n\nint B();\n\n/// Own.\nint C();\n",
        "// --- size ---\n// In bytes.\n/** size. In bytes. */ int A();\n\n/** size. In bytes. */ int B();\n\n/// Own.\nint C();\n"),
    "not past an access label or the end of its class": (
        "class A {\npublic:\n    // --- size ---\n    int a();\n\nprotected:\n    int b();\n};\nint c();\n",
        "class A {\npublic:\n    // --- size ---\n    /** size. */ int a();\n\nprotected:\n    int b();\n};\nint c();\n"),
    "forms that say all": (
        "class A {\n    A();\n    A(const A& other);\n    A& operator=(A&& other);\n    ~A();\n    A(int);\n};\n",
        "class A {\n    /** Default constructor. */ A();\n    /** Copy constructor. */ A(const A& other);\n"
        "    /** Move assignment. */ A& operator=(A&& other);\n    /** Destructor. */ ~A();\n    A(int);\n};\n"),
    "a macro without a semicolon": (
        "class A {\n    DECLARE_DYNAMIC(A)\n    /// Two.\n    int a;\n    int b;\n};\n",
        "class A {\n    DECLARE_DYNAMIC(A)\n    /// Two.\n    int a;\n    /** Two. */ int b;\n};\n"),
    "definitions of macros, whose lines are no code": (
        "/// Begin and end.\n#define A { \\\n    {\n#define B }\n\nint c();\n",
        "/// Begin and end.\n#define A { \\\n    {\n/** Begin and end. */ #define B }\n\nint c();\n"),
    "brackets in texts and comments": (
        "/// Two.\nchar a = '{'; // (\nconst char* b = \"{\"; /* [ */\nint c = 1'000;\n",
        "/// Two.\nchar a = '{'; // (\n/** Two. */ const char* b = \"{\"; /* [ */\n/** Two. */ int c = 1'000;\n"),
}


class FilterTest(unittest.TestCase):
    def test_cases(self):
        for name, (given, expected) in CASES.items():
            with self.subTest(name):
                state = headers.Filter("Header", [])
                self.assertEqual("\n".join(state.line(line) for line in given.split("\n")), expected)

    def test_file_comment_group_and_class(self):
        given = "// CBox, a box.\n//\n// Closed.\n#pragma once\n\nclass CBox {\n    int a();\n};\nclass COther {\n};\n"
        lines = headers.filtered(given.split("\n"), "sub/Box.h", "boxes")
        self.assertEqual(lines[0], "/// @file sub/Box.h  CBox, a box.")
        self.assertEqual(lines[4], "/** @addtogroup boxes */ /** @{ */")
        self.assertEqual(lines[5], "/** CBox, a box. <p> Closed. */ class CBox {")
        self.assertEqual(lines[6], "    int a();")
        self.assertEqual(lines[8], "class COther {")
        self.assertEqual(lines[-1], "/** @} */")

    def test_headings_that_are_linked_to(self):
        self.assertEqual(headers.with_anchors("[a](#the-window)\n\n## The window\n\n## Other\n"),
                         "[a](#the-window)\n\n## The window {#the-window}\n\n## Other\n")

    def test_a_header_without_a_group_fails(self):
        here = os.path.dirname(os.path.abspath(__file__))
        known = headers.groups(os.path.join(here, "groups.dox"))
        self.assertEqual(known["ByteStore.h"], "storage")
        self.assertNotIn("Missing.h", known)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-q"])
