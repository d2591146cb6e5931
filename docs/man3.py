#!/usr/bin/env python3
"""Makes section 3 of the manual from what Doxygen read in the header: one page per family of functions, one overview,
and for each function a page that leads to its family's.

usage: man3.py XML-FOLDER OUTPUT-FOLDER VERSION
"""
import os
import sys
import textwrap
import xml.etree.ElementTree as ElementTree

LIBRARY = 'libzxpolicy'
OVERVIEW = 'zxpolicy'
COMMONS = 'What every function shares (the argument \\fIerror\\fP, handles, texts, enumerations, threads) is in ' \
          '\\fBzxpolicy\\fP(3).'


def escape(text, code=False):
    """Plain text as roff takes it; in code, characters that are typed stay what they are."""
    for character, escaped in (('\\', '\\(rs'), ('~', '\\(ti'), ('^', '\\(ha'), ('`', '\\(ga')):
        text = text.replace(character, escaped)
    return text.replace('-', '\\-').replace("'", '\\(aq').replace('"', '\\(dq') if code else text


def page_of(title):
    return f'{OVERVIEW}-{title.lower().replace(" ", "-")}'


class Text:
    """Turns the paragraphs of a description into roff."""

    def __init__(self, pages):
        self.pages = pages  # of the families, by the ids that references have

    def inline(self, element):
        parts = [escape(element.text or '')]
        for child in element:
            parts.append(self.element(child))
            parts.append(escape(child.tail or ''))
        return ''.join(parts)

    def element(self, child):
        if child.tag == 'computeroutput':
            return f'\\fB{escape("".join(child.itertext()), code=True)}\\fP'
        if child.tag in ('emphasis', 'bold'):
            return f'\\fI{self.inline(child)}\\fP'
        if child.tag == 'ref':
            if child.get('kindref') == 'compound' and child.get('refid') in self.pages:
                return f'\\fB{escape(self.pages[child.get("refid")], code=True)}\\fP(3)'
            return f'\\fB{escape("".join(child.itertext()), code=True)}\\fP'
        if child.tag in ('itemizedlist', 'simplesect', 'parameterlist', 'sect1'):
            return ''
        raise SystemExit(f'man3.py: what Doxygen calls <{child.tag}> is not known here')

    def lines(self, text):
        """A filled paragraph, one sentence or part of one a line, none of which roff takes for a request."""
        text = ' '.join(text.split())
        return [('\\&' if line[0] in ".'" else '') + line
                for line in textwrap.wrap(text, 110, break_long_words=False, break_on_hyphens=False)]

    def paragraph(self, para):
        """A paragraph, with the lists in it behind its own text."""
        found = self.lines(self.inline(para))
        for items in para.iter('itemizedlist'):
            for item in items:
                found += ['.IP \\(bu 2'] + [line for para in item for line in self.paragraph(para)]
        return found

    def blocks(self, description):
        """All paragraphs of a description that are no lists of arguments or results."""
        found = []
        for para in description.findall('para'):
            lines = self.paragraph(para)
            if lines:
                found += ['.P'] + lines
        return found


class Function:
    """One function: its declaration and its contract."""

    def __init__(self, member, text):
        self.name = member.findtext('name')
        self.result = ''.join(member.find('type').itertext()).replace(' *', '*')
        self.arguments = [(''.join(param.find('type').itertext()), param.findtext('declname'))
                          for param in member.findall('param')]
        self.brief, self.detailed = member.find('briefdescription'), member.find('detaileddescription')
        self.text = text

    def synopsis(self):
        words = []
        for index, (kind, name) in enumerate(self.arguments):
            kind = kind.replace(' *', '*').replace('( *)', '(*)')
            end = ');' if index == len(self.arguments) - 1 else ','
            words.append((f'{kind} {name}{end}', f'\\fB{escape(kind, True)}\\fP \\fI{name}\\fP\\fB{end}\\fP'))
        opening = f'{self.result} {self.name}('
        lines, width, line = [], len(opening), f'\\fB{escape(opening, True)}\\fP'
        indent = min(len(opening), 8)
        if len(opening) + max((len(plain) for plain, _ in words), default=0) > 76 - 5 and words:
            lines.append(line)
            width, line = 8, ' ' * 8
            indent = 8
        for index, (plain, marked) in enumerate(words):
            space = 0 if line.strip() == '' or line.endswith('(\\fP') else 1
            if width + space + len(plain) > 71 and line.strip():
                lines.append(line)
                width, line, space = indent, ' ' * indent, 0
            line += ' ' * space + marked
            width += space + len(plain)
        return lines + [line if words else line + '\\fB);\\fP']

    def contract(self):
        found = [f'.SS {self.name}()']
        found += self.text.lines(self.text.inline(self.brief.find('para')))
        rest = self.text.blocks(self.detailed)
        # The summary and what follows it in the first paragraph belong together.
        found += rest[1:] if rest and self._goes_on() else rest
        found += self._list('param', '', lambda name: f'\\fI{escape(name, True)}\\fP')
        for section in self.detailed.iter('simplesect'):
            if section.get('kind') == 'return':
                found += ['.P', 'Returns'] + self.text.lines(self.text.inline(section.find('para')).strip() + '.')
        found += self._list('exception', 'Results:', lambda name: f'\\fB{escape(name, True)}\\fP')
        return found

    def _goes_on(self):
        first = self.detailed.find('para')
        return first is not None and bool(''.join(first.itertext()).strip())

    def _list(self, kind, heading, mark):
        found = []
        for parameters in self.detailed.iter('parameterlist'):
            if parameters.get('kind') != kind:
                continue
            for item in parameters:
                name = item.find('parameternamelist/parametername')
                if kind == 'param' and name.text == 'error' and name.get('direction') == 'inout' \
                        and ''.join(item.find('parameterdescription').itertext()).strip() == 'the result':
                    continue  # as every function has it
                text = self.text.inline(item.find('parameterdescription/para'))
                found += ['.TP', mark(name.text)] + self.text.lines(text)
        return (['.P', heading] if found and heading else []) + found


class Family:
    """The functions of one family, with its records and constants."""

    def __init__(self, folder, compound, text):
        self.folder, self.compound, self.text = folder, compound, text
        self.title = compound.findtext('title')
        self.page = page_of(self.title)
        self.brief = ' '.join(''.join(compound.find('briefdescription').itertext()).split()).rstrip('.')
        self.functions = [Function(member, text) for member in compound.iter('memberdef')
                          if member.get('kind') == 'function']

    def lines(self, families):
        names = ', '.join([self.page] + [function.name for function in self.functions])
        found = ['.SH NAME', f'{escape(names, True)} \\- {escape(self.brief[0].lower() + self.brief[1:])}']
        found += ['.SH LIBRARY', f'Mail-filtering policy ({LIBRARY}, \\-lzxpolicy)']
        found += ['.SH SYNOPSIS', '.nf', f'\\fB#include <{self._header()}>\\fP']
        for function in self.functions:
            found += ['.P'] + function.synopsis()
        found += ['.fi', '.SH DESCRIPTION']
        found += self.text.blocks(self.compound.find('detaileddescription'))[1:]
        found += ['.P', COMMONS]
        found += ['.SH FUNCTIONS']
        for function in self.functions:
            found += function.contract()
        found += self._records() + self._constants()
        found += ['.SH SEE ALSO'] + see_also(page for page in [OVERVIEW] + [f.page for f in families]
                                             if page != self.page)
        return found

    def _header(self):
        place = self.compound.find("sectiondef/memberdef[@kind='function']/location")
        return os.path.basename(place.get('file'))

    def _records(self):
        found = []
        for reference in self.compound.findall('innerclass'):
            record = parse(self.folder, reference.get('refid')).find('compounddef')
            found += [f'.SS {record.findtext("compoundname")}'] + self._description(record)
            for field in record.iter('memberdef'):
                kind = ''.join(field.find('type').itertext()).replace(' *', '*')
                declaration = f'{kind} {field.findtext("name")}{field.findtext("argsstring") or ""}'
                found += ['.TP', f'\\fB{escape(declaration, True)}\\fP'] + self._description(field)
        return ['.SH RECORDS'] + found if found else []

    def _constants(self):
        found = []
        for section in self.compound.findall('sectiondef'):
            if section.get('kind') == 'user-defined':
                found += [f'.SS {section.findtext("header")}']
                found += self.text.lines(self.text.inline(section.find('description/para')))
                for member in section.findall('memberdef'):
                    if member.get('kind') == 'define':
                        value = ''.join(member.find('initializer').itertext())
                        found += self._constant(member, value)
            for member in section.findall('memberdef'):
                if member.get('kind') == 'enum':
                    found += [f'.SS {member.findtext("name")}'] + self._description(member)
                    for value in member.findall('enumvalue'):
                        found += self._constant(value, value.findtext('initializer').lstrip('= '))
                elif member.get('kind') == 'typedef':
                    kind = ''.join(member.find('type').itertext())
                    declaration = f'typedef {kind} {member.findtext("name")}{member.findtext("argsstring")}'
                    found += [f'.SS {member.findtext("name")}', f'\\fB{escape(declaration, True)};\\fP', '.P']
                    found += self._description(member)
        return ['.SH CONSTANTS AND TYPES'] + found if found else []

    def _constant(self, member, value):
        head = f'\\fB{escape(member.findtext("name"), True)}\\fP = {escape(value, True)}'
        return ['.TP', head] + self._description(member)

    def _description(self, member):
        paras = [para for name in ('briefdescription', 'detaileddescription')
                 for para in member.find(name).findall('para')]
        return [line for para in paras for line in self.text.paragraph(para)]


def see_also(pages):
    marked = [f'\\fB{escape(page, True)}\\fP(3)' for page in pages]
    return [f'{page},' for page in marked[:-1]] + marked[-1:]


def overview(folder, families, text):
    compound = parse(folder, 'indexpage').find('compounddef')
    found = ['.SH NAME', f'{OVERVIEW} \\- the flat interface of {LIBRARY}']
    found += ['.SH LIBRARY', f'Mail-filtering policy ({LIBRARY}, \\-lzxpolicy)']
    found += ['.SH SYNOPSIS', '.nf', '\\fB#include <zxpolicy.h>\\fP', '.fi', '.SH DESCRIPTION']
    description = compound.find('detaileddescription')
    found += text.blocks(description)[1:]
    for section in description.findall('sect1'):
        if section.findtext('title') == 'Families':
            continue  # they are below, with their functions
        found += [f'.SH {section.findtext("title").upper()}'] + text.blocks(section)[1:]
    found += ['.SH FUNCTIONS']
    for family in families:
        names = ', '.join(f'\\fB{function.name}\\fP()' for function in family.functions)
        found += ['.TP', f'\\fB{escape(family.page, True)}\\fP(3)'] + text.lines(f'{escape(family.brief)}.')
        found += ['.br'] + text.lines(names)
    found += ['.SH SEE ALSO', '\\fBzxpolicy\\fP(1),', '\\fBzxpolicy\\-policy\\fP(5),']
    return found + see_also(family.page for family in families)


def parse(folder, name):
    return ElementTree.parse(os.path.join(folder, f'{name}.xml'))


def write(folder, page, lines):
    with open(os.path.join(folder, f'{page}.3'), 'w', encoding='utf-8') as file:
        file.write('\n'.join(lines) + '\n')


def write_page(folder, page, version, lines):
    title = f'.TH {page.upper()} 3 "" "{LIBRARY} {version}" "Mail-filtering policy"'
    write(folder, page, [title, '.nh', '.ad l'] + lines)


def main():
    if len(sys.argv) != 4:
        raise SystemExit(__doc__)
    folder, output, version = sys.argv[1:]
    groups = [compound.get('refid') for compound in parse(folder, 'index').iter('compound')
              if compound.get('kind') == 'group']
    compounds = [parse(folder, group).find('compounddef') for group in groups]
    text = Text({compound.get('id'): page_of(compound.findtext('title')) for compound in compounds})
    families = [Family(folder, compound, text) for compound in compounds]
    families = [family for family in families if family.functions]
    os.makedirs(output, exist_ok=True)
    for old in os.listdir(output):
        os.remove(os.path.join(output, old))
    write_page(output, OVERVIEW, version, overview(folder, families, text))
    for family in families:
        write_page(output, family.page, version, family.lines(families))
        for function in family.functions:
            write(output, function.name, [f'.so man3/{family.page}.3'])


if __name__ == '__main__':
    main()
