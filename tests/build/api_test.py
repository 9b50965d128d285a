#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""api_test.py [--write]: holds the API version to what back ends that are built already rely on: the virtual functions of
each class and the data members of each type, in their order. Whoever changes those raises KELVO_API_VERSION_MAJOR and
writes the list anew (--write)."""

import re
import sys
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
HEADERS = sorted((SOURCE / "framework/core").glob("Kelvo*.h"))
LIST = Path(__file__).with_name("api-layout.txt")
TITLE = "API version {}: virtual functions and data members, in their order\n"

COMMENT = re.compile(r"//[^\n]*")
DIRECTIVE = re.compile(r"^\s*#(?:[^\n]*\\\n)*[^\n]*$", re.MULTILINE)
CLASS = re.compile(r"\b(?:class|struct)\s+(?:KELVO_CORE_EXPORT\s+)?(\w+)\s*(:[^{;]*)?\{")
# What takes no room in an object.
NO_MEMBER = re.compile(r"(?:static|using|friend|typedef|template|class|struct|enum|Q_\w+|public|private|protected)\b")


def major():
    text = (SOURCE / "framework/core/KelvoApiVersion.h").read_text(encoding="utf-8")
    return re.search(r"KELVO_API_VERSION_MAJOR (\d+)", text)[1]


def end_of_block(text, begin):
    """Index behind the brace that closes the one before `begin`."""
    depth = 1
    for at in range(begin, len(text)):
        depth += {"{": 1, "}": -1}.get(text[at], 0)
        if depth == 0:
            return at + 1
    raise ValueError(f"no end of what begins with {text[begin:begin + 60]!r}")


def flat(body):
    """The declarations of a class, without the bodies of its functions, types and initialisers."""
    out = []
    at = 0
    while at < len(body):
        if body[at] == "{":
            at = end_of_block(body, at + 1)
            out.append(";")
        else:
            out.append(body[at])
            at += 1
    text = re.sub(r"\b(?:Q_OBJECT|Q_GADGET)\b|\b(?:public|private|protected|Q_SIGNALS|public Q_SLOTS)\s*:(?!:)", ";", "".join(out))
    return [" ".join(part.split()) for part in text.split(";") if part.strip()]


def layout_of(text):
    """One line for each type, virtual function and data member of a header."""
    text = DIRECTIVE.sub("", COMMENT.sub("", text))
    lines = []
    for found in CLASS.finditer(text):
        bases = re.sub(r"\s+", " ", found[2] or "").strip()
        lines.append(f"{found[1]} {bases}".strip())
        for declaration in flat(text[found.end():end_of_block(text, found.end()) - 1]):
            if declaration.startswith("virtual ") or re.search(r"\boverride\b", declaration):
                lines.append("    " + declaration)
                continue
            declaration = re.sub(r" = .*", "", declaration)
            is_member = " " in declaration and "(" not in declaration or re.search(r"\bm_\w+$", declaration)
            if is_member and not NO_MEMBER.match(declaration):
                lines.append("    " + declaration)
    return lines


def layout():
    lines = [line for header in HEADERS for line in layout_of(header.read_text(encoding="utf-8"))]
    return TITLE.format(major()) + "".join(f"{line}\n" for line in lines)


class Layout(unittest.TestCase):
    maxDiff = None

    def test_no_other_than_that_of_the_version(self):
        self.assertEqual(layout(), LIST.read_text(encoding="utf-8"),
                         "raise KELVO_API_VERSION_MAJOR, then write the list anew: tests/build/api_test.py --write")

    def test_what_is_seen(self):
        header = """
            #define FOREACH(x) \\
                virtual x
            class Other;
            /// virtual of a comment
            class KELVO_CORE_EXPORT Thing : public QObject
            {
                Q_OBJECT
            public:
                enum State : int { A = 0, B };
                explicit Thing(QObject *parent = nullptr);
                ~Thing() override;
                virtual int  number(
                    const QString &of) const { return m_number; }
                int plain() const { if (m_number) return 1; return 0; }
                static constexpr int Most{7};
            Q_SIGNALS:
                void changed(int number);
            private:
                struct Private;
                int m_number = 3; ///< a comment
                const std::function<int()> m_read;
            };
            struct Pair { int first = 0; QString second; };
            """
        self.assertEqual(layout_of(header), [
            "Thing : public QObject", "    ~Thing() override", "    virtual int number( const QString &of) const",
            "    int m_number", "    const std::function<int()> m_read",
            "Pair", "    int first", "    QString second"])


if __name__ == "__main__":
    if sys.argv[1:] == ["--write"]:
        LIST.write_text(layout(), encoding="utf-8")
    else:
        unittest.main()
