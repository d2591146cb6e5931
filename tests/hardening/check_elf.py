#!/usr/bin/env python3
"""Looks at what is shipped, as the loader sees it: whether a mistake in it would be as hard to exploit as it can be.

usage: check_elf.py BUILD-FOLDER INSTALL-PREFIX UNPROTECTED-PROGRAM

Installs the libraries and the tool from the build folder below the prefix and checks each file. The unprotected program
lacks everything, and must be found out.
"""
import json
import pathlib
import re
import shutil
import subprocess
import sys

# Which files there must be, and whether the C library's checked functions are used in them. The store's library formats
# and copies nothing by them.
SHIPPED = {
    "libzxbase.so.1": True,
    "libzxregistry.so.1": False,
    "libzxpolicy.so.1": True,
    "zxpolicy": True,
}


def readelf(*arguments):
    command = ["readelf", "--wide", *map(str, arguments)]
    return subprocess.run(command, check=True, capture_output=True, text=True, env={"LC_ALL": "C"}).stdout


class Elf:
    """One file, as readelf tells about it."""

    def __init__(self, path):
        self.path = path
        self.type = re.search(r"Type:\s+(\w+)", readelf("--file-header", path))[1]
        self.segments = [self._segment(line) for line in readelf("--segments", path).splitlines()
                         if re.match(r"\s+[A-Z_]+\s+0x", line)]
        dynamic = readelf("--dynamic", path)
        self.dynamic = dict(re.findall(r"\((\w+)\)\s+(.*)", dynamic))
        self.symbols = set(re.findall(r"\s(__\w+)(?:@|\s|$)", readelf("--dyn-syms", path)))

    @staticmethod
    def _segment(line):
        words = line.split()
        # Type, offset, two addresses, two sizes; then the rights, up to three words; then the alignment.
        return words[0], "".join(words[6:-1])

    def rights(self, kind):
        return [rights for name, rights in self.segments if name == kind]

    def search_path(self):
        text = self.dynamic.get("RUNPATH", self.dynamic.get("RPATH"))
        return None if text is None else re.search(r"\[(.*)\]", text)[1].split(":")


def faults_of(elf, is_fortified):
    """What is wrong with a file, as sentences."""
    flags = elf.dynamic.get("FLAGS", "") + " " + elf.dynamic.get("FLAGS_1", "")
    path = elf.search_path()
    checks = [
        (elf.type == "DYN", "it cannot be loaded at any address (no PIE)"),
        (elf.rights("GNU_RELRO") != [], "what the loader has filled in stays writable (no RELRO)"),
        ("BIND_NOW" in flags or "BIND_NOW" in elf.dynamic or re.search(r"\bNOW\b", flags),
         "functions are bound late, so RELRO is partial (no BIND_NOW)"),
        (not any("W" in rights and "E" in rights for _, rights in elf.segments),
         "a segment is writable and executable"),
        (elf.rights("GNU_STACK") == ["RW"], "the stack is executable, or nothing is said about it"),
        ("TEXTREL" not in elf.dynamic and "TEXTREL" not in flags, "code is relocated when it is loaded (TEXTREL)"),
        ("__stack_chk_fail" in elf.symbols, "no function guards its stack frame (no stack protector)"),
        (not is_fortified or any(re.fullmatch(r"__\w+_chk", name) for name in elf.symbols),
         "no checked form of a C function is used (no _FORTIFY_SOURCE)"),
        ("RPATH" not in elf.dynamic, "its search path overrides LD_LIBRARY_PATH (RPATH)"),
        (path is None or all(re.match(r"\$ORIGIN(/|$)", folder) for folder in path),
         f"it looks for libraries in a folder that does not move with it: {path}"),
        ("DEBUG" in elf.dynamic or "SONAME" in elf.dynamic, "it is neither a program nor a library with a name"),
    ]
    return [sentence for is_good, sentence in checks if not is_good]


def install(build, prefix):
    shutil.rmtree(prefix, ignore_errors=True)
    for component in ("runtime", "tool"):
        subprocess.run(["cmake", "--install", build, "--prefix", prefix, "--component", component], check=True,
                       stdout=subprocess.DEVNULL)


def is_elf(path):
    return path.is_file() and not path.is_symlink() and path.read_bytes()[:4] == b"\x7fELF"


def check_shipped(prefix):
    # Libraries by the name that programs ask for: without what follows the first number of the version.
    files = filter(is_elf, pathlib.Path(prefix).rglob("*"))
    found = {re.sub(r"(\.so\.\d+)\..*", r"\1", path.name): path for path in files}
    if set(found) != set(SHIPPED):
        return [f"{sorted(found)} are shipped, where {sorted(SHIPPED)} are known here"]
    return [f"{name}: {fault}" for name, path in found.items() for fault in faults_of(Elf(path), SHIPPED[name])]


def check_unprotected(path):
    """Every check that such a program can fail must fail."""
    found = faults_of(Elf(path), True)
    missed = 9 - len(found)
    return [] if missed <= 0 else [f"{path}: {missed} faults were not found, only: " + "; ".join(found)]


def check_flags(build):
    """Which functions are guarded, and how far, does not show in a file; so all of the product is compiled alike."""
    entries = json.loads((pathlib.Path(build) / "compile_commands.json").read_text())
    # Some builders name an entry's output only in its command.
    commands = {re.search(r" -o (\S+)", entry["command"])[1]: entry["command"] for entry in entries}
    commands = {output: command for output, command in commands.items()
                if re.match(r"(src|platform/base|platform/registry|tools)/", output)}
    wrong = [output for output, command in commands.items()
             if "-fstack-protector-strong" not in command or
             re.findall(r"-[DU]_FORTIFY_SOURCE(?:=\d)?", command)[-1:] != ["-D_FORTIFY_SOURCE=3"]]
    if not commands:
        return ["it is not known how the product was compiled"]
    return [f"{output} is compiled without -fstack-protector-strong or _FORTIFY_SOURCE=3" for output in wrong]


def main():
    build, prefix, unprotected = sys.argv[1:]
    install(build, prefix)
    faults = check_flags(build) + check_shipped(prefix) + check_unprotected(unprotected)
    print(*faults, sep="\n")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
