#!/usr/bin/env python3
"""Compares the documents in docs/ with the tree: folders, files, functions, result codes, links, pictures.

Prints what differs and fails; needs nothing that is built.
"""
import re
import sys
import xml.etree.ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DOCS = ROOT / "docs"
CODE_SUFFIXES = (".cc", ".c", ".h", ".def", ".in", ".map")
FILE = re.compile(r"[\w./-]+\.(?:cc|c|h|def|in|map|md|svg|dot|py)")
faults = []


def fault(document, text):
    faults.append(f"{document}: {text}")


def read(path):
    return (ROOT / path).read_text()


def quoted(text):
    """What stands between backticks, outside of code blocks."""
    return re.findall(r"`([^`\n]+)`", re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S))


def rows(text, columns):
    """The cells of the rows of tables that have so many columns."""
    lines = (line for line in text.splitlines() if line.startswith("|"))
    cells = ([cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]] for line in lines)
    return [row for row in cells if len(row) == columns and not set("".join(row)) <= set("-")]


def differ(document, what, said, found):
    for name in sorted(found - said):
        fault(document, f"{what} is missing: {name}")
    for name in sorted(said - found):
        fault(document, f"{what} does not exist: {name}")


def folders():
    """All folders of src/, platform/, tools/ and tests/ with a file in them, but the four themselves."""
    files = (p for top in ("src", "platform", "tools", "tests") for p in (ROOT / top).rglob("*") if p.is_file())
    found = {str(p.parent.relative_to(ROOT)) + "/" for p in files if "__pycache__" not in p.parts}
    return {name for name in found if name.count("/") > 1}


def uses(folder):
    """The folders of src/ that the files of one include from."""
    text = "".join(p.read_text() for p in (ROOT / "src" / folder).iterdir() if p.suffix in (".cc", ".h"))
    return {name for name in re.findall(r'^#include "(\w+)/', text, re.M)} - {folder}


def check_architecture():
    text = read("docs/architecture.md")
    said = {name for name in quoted(text) if re.fullmatch(r"(src|platform|tools|tests)/[\w/]+/", name)}
    differ("architecture.md", "a folder", said, folders())
    used = {name: uses(name) for name in (p.name for p in (ROOT / "src").iterdir() if p.is_dir())}
    for cells in rows(text, 3):
        folder = re.fullmatch(r"`src/(\w+)/`", cells[0])
        if folder and set(quoted(cells[2])) != used.get(folder.group(1)):
            fault("architecture.md", f"src/{folder.group(1)}/ uses {sorted(used.get(folder.group(1), []))}")
    for name in used:
        if name in {below for folder in reach(name, used) for below in used[folder]}:
            fault("src", f"{name} is used by what it uses")
    for path in (ROOT / "src").rglob("*.cc"):
        taken = set(re.findall(r'^#include "frame/(\w+)\.h"', path.read_text(), re.M)) - {"reg_debug"}
        if taken and path.parent.name != "frame" and not path.stem.endswith("_api"):
            fault("architecture.md", f"{path.relative_to(ROOT)} takes more of frame than the log")
    named = {name for name in quoted(text) if name.startswith("src/")}
    for path in sorted((ROOT / "src").rglob("*.h")):
        if str(path.relative_to(ROOT)) not in named:
            fault("architecture.md", f"a header is missing: {path.relative_to(ROOT)}")


def reach(name, used):
    found, todo = set(), list(used[name])
    while todo:
        folder = todo.pop()
        if folder not in found:
            found.add(folder)
            todo += used[folder]
    return found


def check_names():
    """Every file and function that a document names exists."""
    tops = ("src", "include", "platform", "tools", "tests")
    sources = [p for top in tops for p in (ROOT / top).rglob("*") if p.suffix in CODE_SUFFIXES]
    words = set(re.findall(r"\w+", "".join(p.read_text(errors="replace") for p in sources)))
    names = {p.name for p in sources}
    for path in sorted(DOCS.glob("*.md")):
        for name in quoted(path.read_text()):
            if FILE.fullmatch(name) and not (ROOT / name).exists() and name not in names:
                fault(path.name, f"there is no file {name}")
            call = re.fullmatch(r"((?:\w+::)*~?\w+)\(\)", name)
            member = re.fullmatch(r"(?:ZxPol\w+|ZxRegDebug|MatchPairs|MatchedRules|KR)::\w+", name)
            flat = re.fullmatch(r"(?:zxpol|zxreg|kr)_[a-zA-Z]\w*|ZxPol\w+", name)
            for word in re.findall(r"\w+", name) if call or member or flat else []:
                if word not in words:
                    fault(path.name, f"there is no {name}")


def codes():
    """The result codes of both headers: number by name."""
    found = {}
    text = read("include/zxpolicy.h") + read("platform/include/zxregistry.h")
    for name, value in re.findall(r"^#define ((?:ZXPOL|ZXREG)_[SE]_\w+) (.+?)(?: */\*.*)?$", text, re.M):
        offset = re.fullmatch(r"\((?:ZXPOL|ZXREG)_FAILURE \+ (0x\w+)\)", value.strip())
        found[name] = 0x81020000 + int(offset.group(1), 16) if offset else int(value, 16)
    return found


def check_codes():
    listed = {}
    for cells in rows(read("docs/errors.md"), 4):
        if re.fullmatch(r"`?0x[0-9a-f]{8}`?", cells[0]):
            for name in re.findall(r"ZX\w+", cells[1]):
                listed[name] = int(cells[0].strip("`"), 16)
    found = codes()
    differ("errors.md", "a result code", set(listed), set(found))
    for name in sorted(set(listed) & set(found)):
        if listed[name] != found[name]:
            fault("errors.md", f"{name} is {found[name]:#010x}, not {listed[name]:#010x}")


def check_host_functions():
    """Every function of the host's libraries is told about, and no other."""
    text = read("platform/include/zxregistry.h") + read("platform/include/zxbase.h")
    code = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    found = set(re.findall(r"\b((?:zxreg|kr)_\w+|grGetLog)\(", code))
    said = set(re.findall(r"\b((?:zxreg|kr)_[a-zA-Z]\w*|grGetLog)\b", read("docs/host-integration.md")))
    differ("host-integration.md", "a function of the host", said, found)


def check_store_names():
    """Every name of a key or value that the library writes stands in the layout."""
    text = "".join(p.read_text() for p in sorted((ROOT / "src").rglob("*.cc")))
    found = set(re.findall(r'\b(?:read|write)(?:Text|TextOrEmpty|Number)\([^,"]+, "(\w+)"', text))
    found |= set(re.findall(r"\bZXPOL_SETTING\((\w+), ZXREG", text))
    found |= set(re.findall(r'\bk\w*(?:Key|Value|Prefix)(?:\[\])? = "(\w+)', text))
    said = set(re.findall(r"\w+", " ".join(quoted(read("docs/store-layout.md")))))
    for name in sorted(found - said):
        fault("store-layout.md", f"a name in the store is missing: {name}")
    if len(found) < 20:
        fault("check_text.py", "the names in the store are not found in the sources any more")


def check_limits():
    """Every row of the limits names tests that exist."""
    code = "".join(p.read_text() for p in (ROOT / "tests").rglob("*.cc"))
    found = {f"{suite}.{name}" for suite, name in re.findall(r"^TEST(?:_[FP])?\((\w+), (\w+)\)", code, re.M)}
    for cells in rows(read("docs/limits.md"), 3)[1:]:
        named = [name for name in quoted(cells[2]) if "." in name]
        if cells[2] != "shown by" and (not named or set(named) - found):
            fault("limits.md", f"no test shows: {cells[0]}")


def check_passed_over():
    """The failures that are passed over are the ones that the tests know."""
    known = {tuple(line.split("\t")) for line in read("tests/fault/passed_over.tsv").splitlines()}
    said = {tuple(cells) for cells in rows(read("docs/reliability.md"), 2)} - {("name", "what is passed over")}
    for name, _ in sorted(known ^ said):
        fault("reliability.md", f"what is passed over differs from tests/fault/passed_over.tsv: {name}")


def check_widths():
    """The widths of texts in the layout are those of the records, without the NUL."""
    text = read("include/zxpolicy.h")
    sizes = dict(re.findall(r"^#define (ZXPOL_\w+_SIZE) (\d+)", text, re.M))
    texts = re.findall(r"^    char (\w+)\[(\w+)\];", text, re.M)
    widths = {name: str(int(sizes.get(size, size)) - 1) for name, size in texts if name not in ("sender", "receiver")}
    layout = read("docs/store-layout.md")
    found = set()
    for cells in rows(layout, 5) + [row[1:] for row in rows(layout, 6)]:
        name = cells[0].strip("`")
        if name not in widths or cells[1] not in ("string", "protected"):
            continue
        found.add(name)
        if cells[2] != widths[name]:
            fault("store-layout.md", f"the width of {name} is {widths[name]}, not {cells[2]}")
    differ("store-layout.md", "the width of a text", found, set(widths))


def check_links():
    """Links and pictures lead to files, and headings; pictures say what is on them."""
    for path in [ROOT / "README.md", *sorted(DOCS.glob("*.md"))]:
        text = path.read_text()
        for mark, label, target in re.findall(r"(!?)\[([^\]]*)\]\(([^)\s]+)\)", text):
            if "://" in target:
                continue
            name, _, anchor = target.partition("#")
            file = path.parent / name if name else path
            if not file.exists():
                fault(path.name, f"a link leads nowhere: {target}")
            elif anchor and anchor not in anchors(file.read_text()):
                fault(path.name, f"a link leads to no heading: {target}")
            if mark and len(label) < 20:
                fault(path.name, f"the picture {target} has no text in its place")


def anchors(text):
    headings = re.findall(r"^#+ (.+)$", text, re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def check_pictures():
    """Each picture is made from its description, and stands in a document."""
    pictures = sorted((DOCS / "pictures").glob("*.svg"))
    documents = "".join(p.read_text() for p in DOCS.glob("*.md"))
    if not pictures:
        fault("pictures", "there are none")
    for picture in pictures:
        tree = xml.etree.ElementTree.parse(picture)
        drawn = "\n".join("".join(node.itertext()) for node in tree.iter() if node.tag.endswith("}text"))
        source = picture.with_suffix(".dot")
        labels = re.findall(r'label="([^"]*)"', source.read_text()) if source.exists() else []
        for line in (part for label in labels for part in re.split(r"\\[lnr]", label)):
            wanted = line.replace("\\\\", "\\").strip()
            if wanted and wanted not in drawn:
                fault(picture.name, f"not made from {source.name}: dot -Tsvg {source.name} -o {picture.name}: {wanted}")
        if not labels:
            fault(picture.name, f"{source.name} is missing")
        if f"pictures/{picture.name})" not in documents:
            fault(picture.name, "no document shows it")


def main():
    check_architecture()
    check_names()
    check_codes()
    check_host_functions()
    check_store_names()
    check_limits()
    check_passed_over()
    check_widths()
    check_links()
    check_pictures()
    print("\n".join(faults) if faults else "the documents agree with the tree")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
