#!/usr/bin/env python3
"""Compares what commands print as JSON with the document that describes it.

  check_json.py TOOL DOCUMENT EXAMPLES

Runs the commands of each section of the document on a store with the example policies. Each member of each object that
they print must stand in that section, in a table or as "`name`, a number", with a type that fits; and each member that
the section has must have been printed. Names of outcomes and settings are free.
"""
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

FREE = {"outcomes", "setting"}
COMMANDS = {
    "apply, rule, task, classification": [
        "apply --dry-run policy.yaml", "rule add '\\New' --condition '*,new@example.com'", "rule move '\\New' --position 1",
        "rule set '\\New' --comment c", "rule remove '\\New'", "task set '\\scan' --comment c",
        "classification add New --dry-run"],
    "match": ["match --sender a@b.example --receiver ann@example.com x@y.example"],
    "explain": ["explain --sender a@b.example --receiver ann@example.com x@y.example" + way
                for way in ("", " --best", " --best --priority sender")],
    "refs": ["refs list Staff", "refs list Nosuch", "refs classification Infected"],
    "list": ["list", "list show"],
    "list show": ["list show Partners"],
    "list check": ["list check Partners ann@corp.example", "list check Partners x@y.example"],
    "list add, list remove": ["list add Partners new@a.example bad", "list remove Partners new@a.example bad@b.example"],
    "list import": ["list import Partners new.txt"],
    "tree, rule show, task show": ["tree", "rule show '\\'", "rule show '\\Sales'", "task show '\\Sales\\scan'"],
    "classification show": ["classification show", "classification show Infected",
                            "classification show 'Infected\\hold'"],
    "test": ["test tests.yaml", "test tests.yaml --store $FAILING"],
    "replay": ["replay --envelopes mails.tsv", "replay --envelopes mails.tsv --store $FAILING"],
    "replay --against": ["replay --envelopes mails.tsv --against policy.yaml",
                         "replay --envelopes mails.tsv --against $FAILING",
                         "replay --envelopes mails.tsv --store $FAILING --against policy.yaml"],
    "lint": ["lint"],
    "diff": ["diff $ZXPOLICY_STORE policy.yaml"],
    "diff --decisions": ["diff --decisions $ZXPOLICY_STORE changed.yaml"],
}
# No mail can be matched.
FAILING = """zxpolicy: 1
lists: [{name: Far, type: directory, server: a.example}]
root: {conditions: [{sender: "*", receiver: (Far)}]}
"""
TESTS = """zxpolicyTest: 1
tests:
  - name: first
    sender: a@b.example
    expect: [{receiver: ann@example.com, rule: \\Sales, tasks: [\\scan]}, {receiver: x@y.example, rule: none}]
  - name: best
    sender: a@b.example
    mode: best
    expect: [{receiver: ann@example.com, rule: \\Sales}]
"""
TYPES = {
    "number": lambda value: isinstance(value, (int, float)) and not isinstance(value, bool),
    "text": lambda value: isinstance(value, str),
    "truth value": lambda value: isinstance(value, bool),
    "array": lambda value: isinstance(value, list),
    "object": lambda value: isinstance(value, dict),
    "failure": lambda value: isinstance(value, dict),
    "null": lambda value: value is None,
}
TYPE = re.compile("|".join(TYPES))
ROW = re.compile(r"^\| (`[^|]*`) \| ([^|]*) \| ", re.M)
IN_WORDS = re.compile(r"(`\w+`(?: and `\w+`)*), (?:an? |which are )(" + TYPE.pattern + ")")


def documented(section):
    """The members that a section tells, each with the names of its types."""
    members = {}
    for names, types in ROW.findall(section) + IN_WORDS.findall(section):
        for name in re.findall(r"`(\w+)`", names):
            members.setdefault(name, set()).update(TYPE.findall(types))
    return members


def members_of(value, name=None):
    """Each member of each object within a value, with what it holds."""
    if isinstance(value, list):
        for item in value:
            yield from members_of(item, name)
    elif isinstance(value, dict) and name not in FREE:
        for key, below in value.items():
            yield key, below
            yield from members_of(below, key)


class Examples:
    """A folder with a store that holds the example of lint, and files to compare it with."""

    def __init__(self, tool, examples):
        self.tool = tool
        self.folder = tempfile.TemporaryDirectory()
        self.environment = dict(os.environ, ZXPOLICY_STORE="sqlite:" + self.folder.name + "/policy.db")
        policy = (examples / "lint.yaml").read_text()
        changed = policy.replace("- name: Infected\n", "- {name: Infected, actions: [{name: hold, actionType: 3}]}\n")
        self.write("lint.yaml", changed)
        self.write("changed.yaml", changed.replace("receiver: sales@", "receiver: other@").replace("enable: false",
                                                                                                  "enable: true"))
        self.write("policy.yaml", (examples / "policy.yaml").read_text())
        self.write("tests.yaml", TESTS)
        self.write("mails.tsv", "<>\tann@example.com,x@y.example\na line without a TAB\n")
        self.write("new.txt", "new@a.example\nbad\n")
        self.write("failing.yaml", FAILING)
        self.environment["FAILING"] = "sqlite:" + self.folder.name + "/failing.db"
        self.shell('"$TOOL" apply --store $FAILING failing.yaml')
        self.shell('"$TOOL" apply --allow-dangling lint.yaml 2>/dev/null')

    def write(self, name, text):
        Path(self.folder.name, name).write_text(text)

    def shell(self, command):
        return subprocess.run(["bash", "-c", command], cwd=self.folder.name, timeout=60, check=False,
                              env=dict(self.environment, TOOL=self.tool), stdout=subprocess.PIPE).stdout.decode()

    def run(self, command):
        lines = self.shell('"$TOOL" ' + command + " --json 2>/dev/null").splitlines()
        if not lines:
            raise SystemExit(f"nothing is printed by: {command}")
        return [json.loads(line) for line in lines]


def faults_of(title, section, examples):
    members = documented(section)
    seen = set()
    for command in COMMANDS[title]:
        for report in examples.run(command):
            if next(iter(report)) != "version":
                yield f"{command}: it does not begin with its version"
            for name, value in members_of(report):
                seen.add(name)
                if not any(TYPES[kind](value) for kind in members.get(name, ())):
                    yield f"{command}: {name} is {json.dumps(value)[:60]}, and documented as {members.get(name)}"
    for name in sorted(set(members) - seen):
        yield f"{name} is documented, and never printed"


def main(tool, document, folder):
    text = Path(document).read_text()
    sections = dict(re.findall(r"^## (.*)\n((?:(?!## ).*\n)*)", text, re.M))
    faults = [f"{title}: not both documented and run" for title in sections.keys() ^ COMMANDS.keys()]
    examples = Examples(str(Path(tool).resolve()), Path(folder))
    for title in sections.keys() & COMMANDS.keys():
        faults += [f"{title}: {fault}" for fault in faults_of(title, sections[title], examples)]
    for fault in sorted(set(faults)):
        print(f"check_json: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    if len(sys.argv) != 4:
        raise SystemExit(__doc__)
    sys.exit(main(*sys.argv[1:]))
