#!/usr/bin/env python3
"""The checker of definitions itself: what it takes for a type, and what for the same one."""

import pathlib
import tempfile
import unittest

import definitions


class Names(unittest.TestCase):
    def test_kinds_of_types_with_their_scopes(self):
        self.assertEqual(
            ["A::B::S", "A::B::S::Inner", "A::C", "A::E", "A::F", "A::U", "T", "S::Impl"],
            definitions.definitions("""
                namespace A::B {
                struct S : Base<int>, private Other { struct Inner {}; int f() { return 1; } };
                }
                namespace A {
                class VESK_API C final : public S { };
                enum class E : int { one, two };
                enum F { three };
                union U { };
                }
                template <typename Value> struct T { };
                struct S::Impl { };
            """))

    def test_what_is_no_definition_for_the_whole_program(self):
        self.assertEqual([], definitions.definitions("""
            namespace { struct Own { struct Inner { }; }; }
            namespace A { namespace { class Own { }; } }
            struct Declared;
            enum class Declared2 : int;
            void f(struct Declared* x) { struct Own { }; }
            template <class Value> void g() { enum { one }; }
            struct Traits<int> { };
            // struct Comment {
            /* struct Comment {
               } */
            const char* s = "struct Text {";
            const char* r = R"(struct Text {)";
            const char c = '{';
        """))


class Files(unittest.TestCase):
    def test_tells_the_files_of_a_type_that_is_defined_twice(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "src").mkdir()
            (root / "tools").mkdir()
            (root / "src/a.h").write_text("namespace A { struct S { }; struct Once { }; }")
            (root / "src/b.h").write_text("namespace B { struct S { }; }")
            (root / "tools/c.cpp").write_text("namespace A { struct S { int i; }; }")
            problems, count = definitions.check(root)
        self.assertEqual(["A::S: src/a.h, tools/c.cpp"], problems)
        self.assertEqual(3, count)


if __name__ == "__main__":
    unittest.main()
