#!/usr/bin/env python3
"""Checks section 3 of the manual: a page for every function, which holds all that its header says of it, and no page
that the formatter warns of.

usage: check_man3.py FUNCTION-TABLE FOLDER-OF-MAN3 HEADER...
"""
import os
import re
import subprocess
import sys

OVERVIEW = 'zxpolicy'
faults = []


def read(path):
    with open(path, encoding='utf-8') as file:
        return file.read()


def normal(text):
    """A text without what differs between a comment and a page: line ends, marks, parentheses behind functions."""
    for mark, plain in (('\u2010', '-'), ('\u2019', "'"), ('\u2018', "'"), ('`', ''), ('#ZX', 'ZX')):
        text = text.replace(mark, plain)
    return ' '.join(re.sub(r'\b(zxpol_[A-Za-z]+)\(\)', r'\1', text).split())


def comments(header):
    """The comment before each function, by the function's name."""
    found = {}
    for comment, declaration in re.findall(r'/\*\*\n((?: \*.*\n)+?) \*/\nZXPOL_API ([^;]*);', header):
        found[re.search(r'(\w+)\(', declaration).group(1)] = re.sub(r'^ \* ?', '', comment, flags=re.M)
    return found


def statements(comment):
    """What a comment says: its paragraphs, and its arguments, results and return value without their names."""
    parts = re.split(r'\n\s*\n|^@(?=\w)', comment, flags=re.M)
    for part in parts:
        command = re.match(r'(param\[[a-z,]+\]|retval|return)\s+', part)
        text = part[command.end():] if command else part
        if command and not command.group(1).startswith('return'):
            name, text = text.split(None, 1)
            if name == 'error' and normal(text) == 'the result':
                continue  # as every function has it
            yield name
        if text.strip():
            yield text


def rendered(path):
    """The page as a reader sees it; what the formatter warns of is a fault."""
    environment = {'PATH': os.environ['PATH'], 'MANWIDTH': '100', 'LC_ALL': 'C.UTF-8'}
    run = subprocess.run(['man', '--warnings', '-E', 'UTF-8', '-l', path], capture_output=True, text=True,
                         env=environment, check=False)
    if run.returncode != 0 or run.stderr:
        faults.append(f'{path}: {run.stderr or run.returncode}')
    return run.stdout


def section(page, function):
    """What a page says of a function."""
    parts = re.split(r'^   (\S.*)\n', page, flags=re.M)
    return parts[parts.index(f'{function}()') + 1] if f'{function}()' in parts else ''


def main():
    table, folder, *headers = sys.argv[1:]
    families = dict(re.findall(r'^ZXPOL_FUNCTION\((\w+), \w+, (\w+)\)', read(table), flags=re.M))
    documented = comments(''.join(read(header) for header in headers))
    files = {name[:-2] for name in os.listdir(folder)}
    pages = {name: rendered(os.path.join(folder, f'{name}.3')) for name in files if name.startswith(OVERVIEW)}
    if len(families) < 80 or len(pages) != len(set(families.values())) + 1:
        faults.append(f'{len(pages)} pages for {len(families)} functions of {len(set(families.values()))} families')
    for name in files - set(families) - set(pages):
        faults.append(f'{name}.3: a page for no function')
    page_of_family = {}
    for function, family in families.items():
        link = read(os.path.join(folder, f'{function}.3')) if function in files else ''
        page = re.fullmatch(r'\.so man3/(zxpolicy-[a-z-]+)\.3\n', link)
        if page is None or page.group(1) not in pages:
            faults.append(f'{function}: no page that leads to its family\'s')
            continue
        if page_of_family.setdefault(family, page.group(1)) != page.group(1):
            faults.append(f'{function}: not on the page of its family')
        if f'{function}()' not in pages[OVERVIEW]:
            faults.append(f'{function}: not in the overview')
        said = normal(section(pages[page.group(1)], function))
        for statement in statements(documented.get(function, '')):
            # The page may go on where the comment's sentence ends.
            if normal(statement).rstrip('.') not in said:
                faults.append(f'{function}: the page does not say: {normal(statement)}')
        if not documented.get(function) or not said:
            faults.append(f'{function}: nothing is said of it')
    for fault in faults:
        print(f'FAULT: {fault}', file=sys.stderr)
    print(f'{len(families)} functions on {len(pages)} pages')
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main())
