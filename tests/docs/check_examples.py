#!/usr/bin/env python3
"""Runs the worked examples of documents and compares what is printed with what they say.

  check_examples.py TOOL DOCUMENT...           compares
  check_examples.py --write TOOL DOCUMENT...   puts what is printed into the documents: look at the difference

In a document, a block of YAML that begins with "zxpolicy: 1" is policy.yaml in a new, empty folder. One that begins with
"zxpolicyTest: 1" is tests.yaml there, and a block of TSV is mails.tsv. The blocks of console lines after it are run there, on a store of that folder: each line that begins with "$ " is given to the shell,
with the tool and the scripts beside this one in the search path, and the lines below it are what it prints, on standard
output and standard error together. The policy is applied before, unless the first command does that itself.
"""
import difflib
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
TIME_LIMIT = 60


class Example:
    """A folder with a policy, and the store that the commands work on."""

    def __init__(self, policy, tool):
        self.folder = tempfile.TemporaryDirectory()
        self.write("policy.yaml", policy)
        self.is_fresh = True
        here = str(Path(__file__).resolve().parent)
        self.environment = {
            "PATH": f"{tool.parent}:{here}:{os.environ['PATH']}",
            "ZXPOLICY_STORE": "sqlite:policy.db",
            "LC_ALL": "C.UTF-8",
        }
        self.environment.update({k: v for k, v in os.environ.items() if k.endswith("SAN_OPTIONS")})

    def write(self, name, text):
        Path(self.folder.name, name).write_text(text)

    def run(self, command):
        if self.is_fresh and " apply " not in command:
            self._shell("zxpolicy apply policy.yaml >applied.txt || cat applied.txt")
        self.is_fresh = False
        return self._shell(command)

    def _shell(self, command):
        done = subprocess.run(["bash", "-c", command], cwd=self.folder.name, env=self.environment, timeout=TIME_LIMIT,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        return done.stdout.decode(errors="replace")


def commands_of(block):
    """The commands of a console block, each with what it is said to print."""
    pieces = re.split(r"^\$ ", block, flags=re.M)
    if pieces[0].strip():
        raise SystemExit(f"a console block begins with output: {pieces[0].splitlines()[0]}")
    return [piece.partition("\n")[::2] for piece in pieces[1:]]


def examples_of(document, tool):
    """Runs the examples of a document; yields each command with what it should print and what it prints."""
    example = None
    for kind, block in BLOCK.findall(document.read_text()):
        if kind == "yaml" and block.startswith("zxpolicy: 1\n"):
            example = Example(block, tool)
        elif kind == "yaml" and block.startswith("zxpolicyTest: 1\n"):
            example.write("tests.yaml", block)
        elif kind == "tsv":
            example.write("mails.tsv", block)
        if kind == "console":
            for command, expected in commands_of(block):
                yield command, expected.rstrip(), example.run(command).rstrip()


def check(document, tool):
    """Prints the differences of a document; returns how many commands there were and how many of them went wrong."""
    count = wrong = 0
    for command, expected, printed in examples_of(document, tool):
        count += 1
        if printed == expected:
            continue
        wrong += 1
        print(f"{document.name}: $ {command}")
        print("\n".join(difflib.unified_diff(expected.splitlines(), printed.splitlines(), "the document says",
                                             "the tool prints", lineterm="")))
    return count, wrong


def write(document, tool):
    """Puts what is printed below each command of a document."""
    results = examples_of(document, tool)

    def renewed(match):
        if match.group(1) != "console":
            return match.group()
        ran = (next(results) for _ in commands_of(match.group(2)))
        lines = [line for command, _, printed in ran for line in ("$ " + command, printed) if line]
        return "```console\n" + "\n".join(lines) + "\n```"

    document.write_text(BLOCK.sub(renewed, document.read_text()))


def main():
    arguments = sys.argv[1:]
    is_writing = arguments[0] == "--write"
    tool, *documents = [Path(name).resolve() for name in arguments[is_writing:]]
    failed = False
    for document in documents:
        if is_writing:
            write(document, tool)
            continue
        count, wrong = check(document, tool)
        failed = failed or wrong != 0 or count == 0
        print(f"{document.name}: {count} commands, {wrong} wrong" + ("" if count else ": no example was found"))
    if failed:
        print("If the tool is right: tests/docs/check_examples.py --write TOOL DOCUMENT, and look at the difference.")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
