#!/usr/bin/env python3
"""Holds the pages for demo makers: the catalogues are those of the engine, links lead somewhere, and the
whole document is that of its example; sections have one name each, and render modes do
what their table says.

    test_docs.py ROOT
"""
import ast
import os
import re
import sys

PAGES = ['documents.md', 'packs.md', 'making-a-show.md', 'language.md', 'behaviours.md']
TABLE = re.compile(r'<!-- catalogue: (\w+) ?(\d*) -->\n((?:\|.*\n)+)')
CATALOGUE = re.compile(r'constexpr \w+_entry (\w+)\[\]\s*=\s*(\{.*?\});', re.S)
LISTING = re.compile(r'^```xml\n(.*?)^```', re.S | re.M)


# ---- catalogues ----------------------------------------------------------------------------------

def catalogues(source):
    """name -> entries as nested lists, from the initialisers of C++."""
    return {name: ast.literal_eval(text.replace('{', '[').replace('}', ']')) for name, text in CATALOGUE.findall(source)}


def quoted(cell):
    return re.findall(r'"([^"]*)"', cell)


def rows(table):
    """The rows of a table of ours as dictionaries by column."""
    lines = [[cell.strip() for cell in line.strip().strip('|').split('|')] for line in table.splitlines()]
    return [dict(zip(lines[0], cells)) for cells in lines[2:]]


def check_table(name, first, table, entries):
    written = rows(table)
    wrong = []
    if len(written) != len(entries):
        return ['%s: %d rows for %d entries' % (name, len(written), len(entries))]
    for number, (row, entry) in enumerate(zip(written, entries)):
        where = '%s, entry %d: ' % (name, number)
        if row['number'] != str(first + number):
            wrong.append(where + 'is called number ' + row['number'])
        if quoted(row['name']) != [entry[0]]:
            wrong.append(where + 'is called %s, not "%s"' % (row['name'], entry[0]))
        if 'parameters' in row:
            if quoted(row['parameters']) != entry[-1]:
                wrong.append(where + 'has the parameters %s, not %s' % (row['parameters'], entry[-1]))
        if 'formula' in row and quoted(row['formula']) != [entry[1]]:
            wrong.append(where + 'has the formula ' + row['formula'])
        if name == 'texture_generators' and [int(row['colours']), int(row['numbers'])] != entry[1:3]:
            wrong.append(where + 'has other numbers of colours and numbers')
    return wrong


def check_catalogues(page, source):
    known = catalogues(source)
    wrong = []
    seen = set()
    for name, first, table in TABLE.findall(page):
        seen.add(name)
        wrong += check_table(name, int(first or 0), table, known[name]) if name in known else ['no catalogue ' + name]
    return wrong + ['the catalogue %s is missing' % name for name in sorted(set(known) - seen)]


EXPLAINED = ['manipulators', 'texture_generators']   # "- **Maze**: ..." below the table


def check_explanations(page, source):
    """What no column tells stands below the table, for every entry."""
    known = catalogues(source)
    return ['%s: what "%s" does is not explained' % (name, entry[0]) for name in EXPLAINED for entry in known[name]
            if '\n- **%s**: ' % entry[0] not in page]


# ---- render modes --------------------------------------------------------------------------------

MODE = re.compile(r'^ +\{render_\w+, (mode_\w+), (\w+), (\w+), (\w+), (\w+), (\w+)\},$', re.M)
TARGETS = {('mode_draws_to_screen', False): 'the screen', ('mode_draws_on', False): 'that of the layer before',
           ('mode_draws_to_texture', False): '`rtex`, in its own size',
           ('mode_draws_to_texture', True): '`rtex`, half the screen wide and high'}
CLEARS = {(False, False): 'only after a copy', (False, True): 'depth; after a copy all',   # draws on, clears depth
          (True, False): 'nothing', (True, True): 'depth'}


def modes(source):
    """(target, clears, aspect, whether it holds the clear back) of each mode, as the page says it."""
    aspects = dict(re.findall(r'constexpr float (\w+) = ([\d.]+)f;', source))
    for target, quarter, aspect, depth, holds, keeps in MODE.findall(source):
        yield (TARGETS[target, quarter == 'true'], CLEARS[target == 'mode_draws_on', depth == 'true'],
               '(keeps the projection)' if keeps == 'true' else aspects.get(aspect, "the viewer's"), holds == 'true')


def check_render_modes(page, source):
    tables = dict((name, table) for name, _, table in TABLE.findall(page))
    written = [(row['target'], row['clears, on tracks above 1'], row['aspect']) for row in rows(tables['render_modes'])]
    known = list(modes(source))
    wrong = ['render mode %d: the page says %s of what does %s' % (number, said, does[:3])
             for number, (said, does) in enumerate(zip(written, known)) if said != does[:3]]
    if len(written) != len(known):
        wrong.append('%d rows for %d render modes' % (len(written), len(known)))
    holding = ' and '.join(str(number) for number, does in enumerate(known) if does[3])
    return wrong + ([] if 'Only mode %s,' % holding in page else ['the page lacks "Only mode %s," holds back' % holding])


# ---- sections --------------------------------------------------------------------------------------

def check_sections(page, source):
    """The headings of the sections are the names that messages call them by."""
    written = re.findall(r'^## (\d+) (.*)$', page, re.M)
    names = re.findall(r'^ +\{section_\w+, "([^"]+)",', source, re.M)
    if not names:
        return ['no names of sections were found']
    expected = [(str(n), name.capitalize()) for n, name in enumerate(names, 1)]
    return ['section %s is called "%s" in messages' % pair for pair in sorted(set(expected) - set(written))]


# ---- links -----------------------------------------------------------------------------------------

def anchor(heading):
    return re.sub(r'[^\w\- ]', '', heading.lower()).replace(' ', '-')


def anchors(text):
    return {anchor(heading) for heading in re.findall(r'^#+ (.*)$', text, re.M)}


def check_links(root, pages):
    """Of pages by their path below `root`."""
    wrong = []
    for name, text in pages.items():
        for target in re.findall(r'\]\(([^)]+)\)', re.sub(r'^```.*?^```', '', text, flags=re.S | re.M)):
            file, _, part = target.partition('#')
            path = os.path.normpath(os.path.join(root, os.path.dirname(name), file)) if file else os.path.join(root, name)
            if not os.path.exists(path):
                wrong.append('%s: %s does not exist' % (name, target))
            elif part and part not in anchors(open(path, encoding='utf-8').read()):
                wrong.append('%s: %s has no such heading' % (name, target))
    return wrong


def check_front_page(readme, names):
    """From the README a reader finds every page."""
    return ['README.md does not lead to docs/' + name for name in names if '](docs/%s)' % name not in readme]


def check_contents(page):
    """Every chapter is in the list of contents at the top."""
    contents = page[:page.index('\n## ')]
    return ['the contents do not lead to "%s"' % heading for heading in re.findall(r'^## (.*)$', page, re.M)
            if '(#%s)' % anchor(heading) not in contents]


# ---- the preview ----------------------------------------------------------------------------------

REQUEST = re.compile(r'^ +\{command_\w+, "(\w+)",\s*\{(.*?)\}\},$', re.M | re.S)
KEY_NAMES = {' ': 'Space', 'key_left': 'Left', 'key_right': 'Right', 'key_home': 'Home', 'key_end': 'End',
             'key_tab': 'Tab', 'key_f1': 'F1', 'key_escape': 'Escape'}


def check_requests(page, source):
    """The page has every request of the control socket with its fields, and no other."""
    known = {name: re.findall(r'\{"(\w+)"', fields) for name, fields in REQUEST.findall(source)}
    written = {}
    for names, fields in re.findall(r'^\| ((?:`\w+`(?:, )?)+) \| ((?:`\w+`(?:, )?)*) ?\| ', page, re.M):
        for name in re.findall(r'`(\w+)`', names):
            written[name] = re.findall(r'`(\w+)`', fields)
    if not known:
        return ['no requests of the preview were found']
    return ['preview.md: the request "%s" takes %s, and the page says %s' % (name, known.get(name), written.get(name))
            for name in sorted(set(known) | set(written)) if known.get(name) != written.get(name)]


def check_keys(pages, source):
    """Every key that does something is told, on each page (name -> text)."""
    body = source[source.index('void do_key('):]
    keys = re.findall(r"case (?:'(.)'|(key_\w+)):", body[:body.index('\n}\n')])
    keys = [KEY_NAMES.get(sign or name, sign or name) for sign, name in keys]
    return (['no keys of the preview were found'] if not keys else []) + [
        '%s does not tell what the key %s does' % (name, key) for name, text in pages.items() for key in keys
        if not re.search(r'(?<![\w\-])%s(?![\w\-])' % re.escape(key), text)]


# ---- listings --------------------------------------------------------------------------------------

def commands_of(page):
    """The scripts of ours that a table's rows begin with."""
    return re.findall(r'^\| `((?:scripts|bench)/[\w.-]+)', page, re.M)


def check_commands(root, page):
    """Commands are typed as they stand there, so each is a program."""
    return ['CONTRIBUTING.md: %s cannot be run as it stands there' % name for name in commands_of(page)
            if not os.access(os.path.join(root, name), os.X_OK)]


def bare(document):
    """Without comments and blanks between elements."""
    return re.sub(r'>\s+<', '><', re.sub(r'<!--.*?-->', '', document, flags=re.S)).strip()


def check_whole_document(page, example):
    """The page's whole document is that of the example."""
    documents = [listing for listing in LISTING.findall(page) if listing.startswith('<production>')]
    return [] if [bare(document) for document in documents] == [bare(example)] \
        else ['the whole document is not that of the example']


def check_the_checker():
    """The rules must catch what they are for."""
    assert check_front_page('[a](docs/a.md)', ['a.md', 'b.md']) == ['README.md does not lead to docs/b.md']
    assert check_contents('[1](#1-meshes)\n\n## 1 Meshes\n') == []
    assert check_contents('[1](#1-mesh)\n\n## 1 Meshes\n[1](#1-meshes)\n') != []
    both = ''.join('constexpr x_entry %s[] = {{"Row"}};\n' % name for name in EXPLAINED)
    assert check_explanations('\n- **Row**: one.\n', both) == []
    assert len(check_explanations('\n- **Rows**: some.\n', both)) == len(EXPLAINED)
    entries = catalogues('constexpr name_entry modes[] = {{"Off"}, {"Loop"}};')['modes']
    table = '| number | name |\n|---|---|\n| 0 | "Off" |\n| 1 | "%s" |\n'
    assert check_table('modes', 0, table % 'Loop', entries) == []
    assert check_table('modes', 0, table % 'Lop', entries) != []
    assert check_table('modes', 1, table % 'Loop', entries) != []
    names = '    {section_meshes, "meshes", read_mesh, nullptr},\n    {section_fonts, "fonts", read_font, nullptr},\n'
    assert check_sections('## 1 Meshes\n## 2 Fonts\n', names) == []
    assert check_sections('## 1 Meshes\n## 2 Letters\n', names) != []
    assert check_sections('## 1 Meshes\n## 2 Fonts\n', '') != []
    row = '    {render_a, mode_draws_on, false, 0, true, true, false},\n'
    page = ('<!-- catalogue: render_modes -->\n| target | clears, on tracks above 1 | aspect |\n|---|---|---|\n'
            '| that of the layer before | %s | the viewer\'s |\n\nOnly mode 0, so.')
    assert check_render_modes(page % 'depth', row) == []
    assert len(check_render_modes(page % 'nothing', row)) == 1
    assert len(check_render_modes(page % 'depth', row + row)) == 2
    requests = '    {command_go, "go", {{"time", field_number}, {"by", field_number}}},\n    {command_play, "play", {}},\n'
    assert check_requests('| `go` | `time`, `by` | x |\n| `play` | | y |\n', requests) == []
    assert len(check_requests('| `go` | `time` | x |\n| `pause` | | y |\n', requests)) == 3
    keys = "void do_key(int key)\n{\n    case 'a':\n    case key_left:\n    case '.':\n}\n"
    assert check_keys({'a': 'a Left `.`'}, keys) == []
    assert len(check_keys({'a': 'as Lefty'}, keys)) == 3
    whole = '```xml\n<production>\n  <a/>  <!-- 1 -->\n</production>\n```\n'
    assert check_whole_document(whole, '<production><a/></production>') == []
    assert check_whole_document(whole, '<production><b/></production>') != []
    assert check_whole_document('', '<production/>') != []
    assert commands_of('| `bench/run`, or `bench/run X` | a |\n| `scripts/a-b.py --c` | `scripts/d` |\n') \
        == ['bench/run', 'scripts/a-b.py']


def main():
    root = sys.argv[1]

    def read(*path):
        with open(os.path.join(root, *path), encoding='utf-8') as f:
            return f.read()

    check_the_checker()
    pages = {name: read('docs', name) for name in PAGES}
    wrong = check_catalogues(pages['documents.md'], read('src', 'engine', 'model', 'catalogues.cpp'))
    wrong += check_render_modes(pages['documents.md'], read('src', 'engine', 'model', 'render_modes.h'))
    wrong += check_sections(pages['documents.md'], read('src', 'engine', 'model', 'sections.cpp'))
    names = sorted(name for name in os.listdir(os.path.join(root, 'docs')) if name.endswith('.md'))
    wrong += check_links(root, {name: read(name) for name in ['README.md', 'CONTRIBUTING.md']
                                + ['docs/' + name for name in names]})
    wrong += check_front_page(read('README.md'), names)
    wrong += check_commands(root, read('CONTRIBUTING.md'))
    wrong += check_explanations(pages['documents.md'], read('src', 'engine', 'model', 'catalogues.cpp'))
    wrong += check_contents(pages['documents.md'])
    wrong += check_whole_document(pages['documents.md'], read('productions', 'examples', 'document', 'demo.xml'))
    preview, manual = read('docs', 'preview.md'), read('docs', 'man', 'brimlow-preview.1')
    wrong += check_contents(preview)
    wrong += check_requests(preview, read('src', 'tools', 'preview', 'control_request.cpp'))
    wrong += check_keys({'preview.md': preview.split('\n## Keys\n')[1].split('\n## ')[0],
                         'brimlow-preview.1': manual.split('.SH KEYS')[1].split('.SH ')[0]},
                        read('src', 'tools', 'preview', 'actions.cpp'))
    for line in wrong:
        print(line)
    print('%d pages checked, %d faults' % (len(pages), len(wrong)))
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
