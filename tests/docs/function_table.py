#!/usr/bin/env python3
"""Makes docs/functions.md: each function of the interface with its family, its handle, and the tests that call it.

  function_table.py           prints the table
  function_table.py --write   writes docs/functions.md
  function_table.py --check   fails when docs/functions.md is not what this makes, or a row is empty

A test suite calls a function when the function is named in the body of one of its tests, or in something of the same
file that a test uses, directly or through others: a helper, a fixture, a class, a table, a macro. For a function that
no suite reaches so, the files that the test's file includes are looked at too, but for what runs unseen there:
constructors, destructors and the like.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TARGET = ROOT / "docs" / "functions.md"
COMMAND = "tests/docs/function_table.py --write"
HEADER = f"""# Functions

Each function of `include/zxpolicy.h` and `include/zxpolicy_explain.h`: its family, the kind of handle that it takes first, and the test suites that
call it, by folder of `tests/`. A suite calls a function when the body of one of its tests does, or a helper, fixture
or table of the same file that the test uses. This file is made by a script. After a change make it anew:

```sh
{COMMAND}
```

| function | family | handle | suites of tests that call it |
|---|---|---|---|
"""
WORD = re.compile(r"[A-Za-z_]\w*")
TEST = re.compile(r"\b(TEST|TEST_F|TEST_P|TYPED_TEST)\s*\(\s*(\w+)\s*,\s*(\w+)\s*\)\s*$")
CONTAINER = re.compile(r"\b(namespace|extern)\b[^;(){}]*$")
CLASS = re.compile(r"\b(?:class|struct)\s+(?:\w+\s*\([^)]*\)\s*)?(\w+)[^;()=]*$")


def functions():
    """Name, handle and family of every function, in the order of the table in the library's sources."""
    text = (ROOT / "src/frame/functions.def").read_text()
    return re.findall(r"^ZXPOL_FUNCTION\((\w+), (\w+), (\w+)\)", text, re.M)


def without_noise(text):
    """The code alone: comments, texts and characters become blanks."""
    noise = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\'', re.S)
    return noise.sub(lambda m: " " if m.group().startswith("/") else '""', text)


class Part:
    """A piece of a file under the names by which other pieces use it: a test, a function, a class, a table."""

    def __init__(self, names, suite, text, is_unseen=False):
        self.names, self.suite, self.words = set(names), suite, set(WORD.findall(text))
        self.is_unseen = is_unseen


def head_names(head, outer):
    """The names that a definition is used by, from the text before its braces, and whether it is used unseen."""
    if head.rstrip().endswith("]") or "=" in head.split("(")[0]:
        before = re.split(r"[=\[]", head)[0]
        return WORD.findall(before)[-1:], False
    called = re.search(r"(?:(\w+)\s*::\s*)?(~?\w+|operator[^(]*)\s*\(", head)
    if not called:
        return WORD.findall(head)[-1:], False
    owner, name = called.group(1) or outer, called.group(2)
    unseen = name.lstrip("~") == owner or name.startswith("operator") or name in ("SetUp", "TearDown", "SetUpTestSuite")
    return ([owner], True) if unseen and owner else ([name.lstrip("~")], False)


def parts_of(path):
    """All parts of a file."""
    code = without_noise(path.read_text(errors="replace"))
    parts = []
    for name, body in re.findall(r"^[ \t]*#[ \t]*define[ \t]+(\w+)((?:\\\n|[^\n])*)", code, re.M):
        parts.append(Part([name], None, body))
    code = re.sub(r"^[ \t]*#(?:\\\n|[^\n])*", "", code, flags=re.M)
    scan(code, "", parts)
    return parts


def scan(code, outer, parts):
    """Cuts code outside of functions into parts; `outer` is the class around it."""
    start = at = 0
    while at < len(code):
        if code[at] == ";":
            add_statement(code[start:at], outer, parts)
            start = at + 1
        elif code[at] == "{":
            end = closing_brace(code, at)
            head, body = code[start:at], code[at + 1:end]
            test, is_class = TEST.search(head), CLASS.search(head)
            if CONTAINER.search(head):
                scan(body, outer, parts)
            elif is_class:
                parts.append(Part([is_class.group(1)], None, head))
                scan(body, is_class.group(1), parts)
            else:
                names, is_unseen = ([], False) if test else head_names(head, outer)
                parts.append(Part(names, test and test.group(2), head + body, is_unseen))
            at = end
            start = at + 1
        at += 1


def add_statement(text, outer, parts):
    """A declaration without braces: a constant, an alias, a member with its first value."""
    words = WORD.findall(text)
    if not words:
        return
    named = re.match(r"\s*(?:using\s+)?(?:[\w:<>,*&\s]*\s)?(\w+)\s*(?:\[[^\]]*\])?\s*(?:=|\()", text)
    name = named.group(1) if named else words[-1]
    parts.append(Part([name] + ([outer] if outer else []), None, text))


def closing_brace(code, at):
    depth = 0
    for i in range(at, len(code)):
        depth += (code[i] == "{") - (code[i] == "}")
        if depth == 0:
            return i
    return len(code)


def reached(parts, suite, others):
    """All words in the tests of a suite and in what they use."""
    by_name = {}
    for part in parts + others:
        for name in part.names:
            by_name.setdefault(name, []).append(part)
    words, todo, seen = set(), [p for p in parts if p.suite == suite], set()
    todo += by_name.get(suite, [])
    while todo:
        part = todo.pop()
        if id(part) in seen:
            continue
        seen.add(id(part))
        words |= part.words
        for word in part.words:
            todo += by_name.get(word, [])
    return words


def included(path, cache, seen=None):
    """The files of tests that a file includes, and the sources beside those headers."""
    seen = set() if seen is None else seen
    for name in re.findall(r'^#include "([^"]+)"', path.read_text(errors="replace"), re.M):
        for base in (path.parent, ROOT / "tests"):
            header = (base / name).resolve()
            if header not in cache:
                continue
            for file in [header] + [header.with_suffix(s) for s in (".cc", ".c")]:
                if file in cache and file not in seen:
                    seen.add(file)
                    included(file, cache, seen)
    return seen - {path}


def callers():
    """For each function, the suites that call it, as (folder, suite)."""
    wanted = [name for name, _, _ in functions()]
    files = [p for p in sorted((ROOT / "tests").rglob("*")) if p.suffix in (".cc", ".c", ".h")]
    cache = {path: parts_of(path) for path in files}
    near, far = {name: set() for name in wanted}, {name: set() for name in wanted}
    for path, parts in cache.items():
        folder = path.relative_to(ROOT / "tests").parts[0]
        others = [part for file in included(path, cache) for part in cache[file] if not part.is_unseen]
        for suite in {part.suite for part in parts if part.suite}:
            own, all_words = reached(parts, suite, []), reached(parts, suite, others)
            for name in wanted:
                if name in own:
                    near[name].add((folder, suite))
                elif name in all_words:
                    far[name].add((folder, suite))
    return {name: near[name] or far[name] for name in wanted}


def suites_text(suites):
    folders = {}
    for folder, suite in sorted(suites):
        folders.setdefault(folder, []).append(suite)
    return "; ".join(f"{folder}: {', '.join(names)}" for folder, names in folders.items())


def table():
    """The text of docs/functions.md, and the functions that no test calls."""
    called = callers()
    rows, empty = "", []
    for name, handle, family in functions():
        kind = "-" if handle == "NONE" else handle.lower().replace("_", " ")
        rows += f"| `{name}` | {family.replace('_', ' ')} | {kind} | {suites_text(called[name])} |\n"
        if not called[name]:
            empty.append(name)
    return HEADER + rows, empty


def main():
    text, empty = table()
    for name in empty:
        print(f"functions.md: no test calls {name}; write one, then run: {COMMAND}", file=sys.stderr)
    if "--write" in sys.argv:
        TARGET.write_text(text)
    elif "--check" in sys.argv:
        if not TARGET.exists() or TARGET.read_text() != text:
            print(f"docs/functions.md is not what the tests say now; run: {COMMAND}", file=sys.stderr)
            return 1
    else:
        print(text, end="")
    return 1 if empty else 0


if __name__ == "__main__":
    sys.exit(main())
