#!/usr/bin/env python3
"""filter.py HEADER: prints the header as the reference's generator is to read it, line for line.

The headers say a thing once: one comment above a block of declarations speaks for all of them, up to
the next comment or the next blank line, and the title of a section ("// --- size and range ---",
with the comment lines below it) speaks for the section's declarations that no comment speaks for. The
generator knows one comment for one declaration. So the comment is repeated here, on the line of each
declaration that it speaks for. Comments that begin with three slashes are left as they are.

Before that, the comment at the top of the header becomes the file's, and that of a class that it
names and that has none of its own; and all that is declared outside of classes goes into the group that groups.dox names for the header.
"""

import os
import re
import sys

OPENERS = {"(": ")", "{": "}", "[": "]"}
SCOPE = re.compile(r"\b(class|struct|union|namespace|enum|extern)\b")
ACCESS = re.compile(r"(public|protected|private)\s*:$")
SECTION = re.compile(r"\s*// --- (.*?) -+$")
CLASS = re.compile(r"(class|struct)\s+(?:VNBYTSTR_\w*API\s+)?(\w+)\b(?!.*;\s*$)")
QUIET = re.compile(r"friend\b|using namespace\b|namespace\b|static_assert\b|extern\s*\"C\"\s*$"
                   r"|template class\b|extern template\b|(class|struct|enum)\s+(class\s+)?\w+(\s*:\s*\w+)?;"
                   r"|DECLARE_\w+\(")


def groups(path):
    """The group of each header: groups.dox has lines "Headers: A.h B.h" after each \\defgroup."""
    found, name = {}, None
    with open(path, encoding="utf-8") as file:
        for line in file:
            if match := re.search(r"[@\\]defgroup\s+(\w+)", line):
                name = match[1]
            elif line.strip().startswith("Headers:"):
                found.update({header.strip("`,."): name for header in line.split()[1:]})
    return found


def code_of(line, in_comment):
    """The line without comments and with the texts in quotes made empty; whether a comment goes on."""
    out, i = [], 0
    while i < len(line):
        if in_comment:
            end = line.find("*/", i)
            if end < 0:
                return "".join(out), True
            in_comment, i = False, end + 2
        elif line.startswith("//", i):
            break
        elif line.startswith("/*", i):
            in_comment, i = True, i + 2
        elif line[i] == '"' or (line[i] == "'" and not (i and line[i - 1].isalnum())):
            quote, j = line[i], i + 1
            while j < len(line) and line[j] != quote:
                j += 2 if line[j] == "\\" else 1
            out.append(quote * 2)
            i = j + 1
        else:
            out.append(line[i])
            i += 1
    return "".join(out), in_comment


MACRO = re.compile(r"DECLARE_\w+\(\w*\)$") # needs no semicolon
STOCK = [
    (re.compile(r"(virtual )?~\w+\("), "Destructor."),
    (re.compile(r"(explicit )?(constexpr )?(\w+)\(\)"), "Default constructor."),
    (re.compile(r"(constexpr )?(\w+)\(const \2& \w+\)|(constexpr )?(\w+)\(const \4&\)"), "Copy constructor."),
    (re.compile(r"(\w+)\(\1&&"), "Move constructor."),
    (re.compile(r"(\w+)& operator=\(const \1&"), "Copy assignment."),
    (re.compile(r"(\w+)& operator=\(\1&&"), "Move assignment."),
    (re.compile(r"using LP(C?)\w+ = (const )?(\w+)\*;"), "A pointer to one."),
    (re.compile(r"(afx_msg )?(void|int|BOOL|HBRUSH|LRESULT|UINT) On[A-Z]\w*\("), "Handles a message of the window."),
]


def stock(declaration):
    """What is to be said of a declaration whose form says all of it, as a list of lines."""
    return next(([words] for form, words in STOCK if form.match(declaration)), [])


def spoken(lines):
    """Lines of a comment as one line; an empty line begins a paragraph."""
    return " ".join(part.strip() or "<p>" for part in lines).strip().replace("*/", "* /")


class Filter:
    def __init__(self, stem, top):
        self.stem = stem        # the header's name without its ending
        self.top = top          # the lines of the comment at the top of the header
        self.scopes = []        # of each open brace: is it a scope with declarations of its own?
        self.depth = 0          # of brackets within the declaration that is being read
        self.declaration = ""   # what has been read of it
        self.comment = []       # the comment that speaks for the declarations that follow
        self.section = []       # the section's title and comment, when no other does
        self.in_section = False # its lines are being read
        self.directive = False  # the line before ends with a backslash
        self.fresh = False      # the comment stands right above: it is the next declaration's own

    def is_of_file(self, name):
        """Whether the header is about the class: its comment names it, or its own name does."""
        return name.lstrip("C") == self.stem.lstrip("C") or re.search(rf"\b{name}\b", "\n".join(self.top))

    def in_enum(self):
        return bool(self.scopes) and self.scopes[-1] == "enum"

    def line(self, line):
        """One line as the generator is to see it."""
        text = line.strip()
        if not self.declaration and not self.depth and not self.directive:
            if match := SECTION.match(line):
                self.section, self.comment, self.in_section = [match[1] + "."], [], True
                return line
            if text.startswith("///") and not text.startswith("///<"):
                if not self.fresh:
                    self.comment = []
                self.comment.append(text[3:])
                self.fresh, self.in_section = True, False
                return line
            if text.startswith("//"):
                if self.in_section:
                    self.section.append(text[2:])
                return line
            if not text:
                self.comment, self.fresh = [], False
                self.in_section = False
                return line
        self.in_section = False
        if self.directive or text.startswith("#"):
            goes_on, self.directive = self.directive, line.endswith("\\")
            if goes_on:
                return line
            own, self.fresh = self.fresh, False
            if text.startswith("#define") and not own and self.comment:
                return f"/** {spoken(self.comment)} */ {line}"
            return line
        return self.insert(line)

    def insert(self, line):
        """The line with the comments of the declarations that begin in it."""
        code, _ = code_of(line, False)
        begins = not self.declaration and not self.depth
        first = code.strip()
        if begins and MACRO.match(first):
            return line
        named = CLASS.match(first)
        of_file = named and not self.comment and set(self.scopes) <= {"namespace"} and self.is_of_file(named[2])
        words = self.top if of_file else self.comment or stock(first) or self.section
        self.read(code)
        if not begins or not first or first[0] in "};" or ACCESS.match(first):
            if ACCESS.match(first):
                self.comment, self.section, self.fresh = [], [], False
            return line
        own, self.fresh = self.fresh, False
        if own or "///<" in line or QUIET.match(first):
            return line
        if not words:
            return line
        words = spoken(words)
        indent = line[:len(line) - len(line.lstrip())]
        return f"{indent}/** {words} */ {line.lstrip()}"

    def read(self, code):
        """Follows brackets and ends of declarations."""
        for char in code + "\n":
            if char in "([":
                self.depth += 1
            elif char in ")]":
                self.depth -= 1
            elif char == "{":
                kind = SCOPE.search(re.sub(r"template\s*<[^{]*?>\s*(?=class|struct|\w)", "", self.declaration))
                if self.depth == 0 and kind and "(" not in self.declaration.replace("alignas(", ""):
                    self.scopes.append(kind[1])
                    self.declaration = ""
                    self.comment, self.section = [], []
                    continue
                self.depth += 1
            elif char == "}":
                if self.depth == 0:
                    if self.scopes:
                        self.scopes.pop()
                    self.comment, self.section, self.declaration = [], [], ""
                    continue
                self.depth -= 1
                if self.depth == 0 and re.search(r"\)[^=]*$", self.declaration.split("{")[0]):
                    self.declaration = "" # a function's body
                    continue
            elif self.depth == 0 and (char == ";" or (char == "," and self.in_enum())):
                self.declaration = ""
                continue
            if char == ":" and self.depth == 0 and ACCESS.match((self.declaration + ":").strip()):
                self.declaration = ""
                continue
            if not char.isspace() or self.declaration:
                self.declaration += char
        if not self.declaration.strip() or self.in_enum() and not self.depth and "=" not in self.declaration:
            if not self.depth:
                self.declaration = self.declaration.strip() and ""


def file_comment(lines, name, group):
    """Turns the comment at the top into the file's, and opens the group at `#pragma once`."""
    for i, line in enumerate(lines):
        if line.startswith("//"):
            lines[i] = "///" + line[2:]
        elif line.startswith("#pragma once"):
            lines[i] = ""
            lines[i + 1] = f"/** @addtogroup {group} */ /** @{{ */" + lines[i + 1]
            break
    lines[0] = f"/// @file {name} " + lines[0][3:] if lines[0].startswith("///") else lines[0]
    if not lines[-1].strip():
        lines.pop()
    lines.append("/** @} */")
    return lines


def filtered(lines, name, group):
    at_top = [line[2:] for line in lines[:next(i for i, line in enumerate(lines) if line.startswith("#"))]]
    state, in_comment, out = Filter(os.path.basename(name)[:-2], at_top), False, []
    top = True
    for line in lines:
        if top and (line.startswith("//") or line.startswith("#pragma")):
            out.append(line)
            continue
        top = False
        if in_comment or line.strip().startswith("/*"):
            _, in_comment = code_of(line, in_comment)
            out.append(line)
            continue
        out.append(state.line(line))
    return file_comment(out, name, group)


def with_anchors(text):
    """A guide, with names for the headings that it links to: the generator makes none by itself."""
    for anchor in set(re.findall(r"\]\(#([\w-]+)\)", text)):
        def named(match):
            name = re.sub(r"[^\w -]", "", match[2]).strip().lower().replace(" ", "-")
            return f"{match[0]} {{#{anchor}}}" if name == anchor else match[0]
        text = re.sub(r"^(#+) (.*)$", named, text, flags=re.MULTILINE)
    return text


def main():
    path = sys.argv[1]
    if path.endswith(".md"):
        with open(path, encoding="utf-8") as file:
            print(with_anchors(file.read()), end="")
        return
    here = os.path.dirname(os.path.abspath(__file__))
    name = re.sub(r"^.*include/vnbytstr/", "", path)
    group = groups(os.path.join(here, "groups.dox")).get(name)
    if group is None:
        sys.exit(f"docs/doxygen/groups.dox has no group for {name}")
    with open(path, encoding="utf-8") as file:
        lines = file.read().split("\n")
    print("\n".join(filtered(lines, name, group)))


if __name__ == "__main__":
    main()
