#!/usr/bin/env python3
"""Writes the voice-module contract (docs/voice-module-contract.md) from the catalogue's rows.

Which handler sends which command, with which record, is what its row says: the command fields
of its shape (`getCmd`, `setCmd` and the other command macros a descriptor names) and its
`record`; a custom row names them in the same keys (docs/catalogue.md).  The headers give the
rest: the command macros' values and comments (include/tr104/*.h) and the records' members.  The
offsets and sizes are the compiled ones: a program written by this script (`layout-source`) is
compiled against the same headers and prints offsetof/sizeof.

  contract.py layout-source OUT.cpp         write the layout program's source
  contract.py render PROGRAM OUT.md         write the document (PROGRAM: the built layout
                                            program, or a file of its output)
  contract.py check PROGRAM DOC.md CMD      exit 1 when DOC.md is not what render writes,
                                            naming CMD, which regenerates it
"""
import difflib
import os
import re
import subprocess
import sys
import tomllib

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), '..', '..'))
sys.path.insert(0, os.path.join(ROOT, 'cmake'))
import gen_catalogue  # noqa: E402  pylint: disable=wrong-import-position

INCLUDE = os.path.join(ROOT, 'include', 'tr104')
LIB = os.path.join(ROOT, 'tr104')
ENVELOPE = 'Tr104Msg'
# The descriptor fields that hold a command id.
COMMAND_FIELDS = ('getCmd', 'setCmd', 'cmd')


def read(path):
    with open(path, encoding='utf-8') as f:
        return f.read()


def rel(path):
    return os.path.relpath(path, ROOT)


def headers():
    out = [os.path.join(INCLUDE, f) for f in sorted(os.listdir(INCLUDE)) if f.endswith('.h')]
    for d, dirs, files in os.walk(LIB):
        dirs.sort()
        out += [os.path.join(d, f) for f in sorted(files) if f.endswith('.h')]
    return out


# ---- the headers: command macros and records --------------------------------------------------

DEFINE = re.compile(r'^\s*#\s*define\s+(\w+)\s+\(?(0x[0-9a-fA-F]+|\d+)[uUlL]*\)?\s*(?:/\*\s*(.*?)\s*\*/|//\s*(.*))?$')


ENUMERATOR = re.compile(r'^\s*(\w+)\s*=\s*\(?(0x[0-9a-fA-F]+|\d+)[uUlL]*\)?\s*,?\s*(?:/\*\s*(.*?)\s*\*/|//\s*(.*))?$')


def command_macros():
    """name -> (value, comment) of every integer macro and enumerator of the headers."""
    out = {}
    for path in headers():
        for line in read(path).splitlines():
            m = DEFINE.match(line) or ENUMERATOR.match(line)
            if m:
                out[m.group(1)] = (int(m.group(2), 0), (m.group(3) or m.group(4) or '').strip())
    return out


FIELD = re.compile(r'^\s*([A-Za-z_][\w\s\*]*?)\s*\b(\w+)\s*((?:\[[^\]]*\])*)\s*;\s*(?:/\*\s*(.*?)\s*\*/|//\s*(.*))?$')


def records():
    """name -> (qualified name, file, [(member, type, comment)]) of the headers' structs."""
    out = {}
    for path in headers():
        text = read(path)
        ns = re.search(r'^namespace ([\w:]+) \{', text, re.M)
        if path.startswith(INCLUDE):  # the C records of the interface
            for m in re.finditer(r'typedef struct (\w+)\s*\{[^\n]*\n(.*?)\n\}\s*(\w+);', text, re.S):
                out[m.group(3)] = (m.group(3), rel(path), members(m.group(2)))
        else:  # the library's own records
            for m in re.finditer(r'^struct (\w+Record) \{\n(.*?)\n\};', text, re.S | re.M):
                qual = (ns.group(1) + '::' if ns else '') + m.group(1)
                out[m.group(1)] = (qual, rel(path), members(m.group(2)))
    return out


def members(body):
    out = []
    for line in body.splitlines():
        m = FIELD.match(line)
        if m:
            comment = re.sub(r'^\d+\s*:?\s*', '', (m.group(4) or m.group(5) or '').strip())
            out.append((m.group(2), m.group(1) + m.group(3), comment))
    return out


# ---- the rows ---------------------------------------------------------------------------------

def reads(name):
    """A command whose name says get is read back."""
    return bool(re.search(r'(^|_)GET(_|$)', name))


def where(entry):
    if 'handler' in entry:
        return f"tr104/catalogue/{entry['area']}.toml: {entry['handler']}"
    return f"tr104/catalogue/contract.toml: {entry['name']}"


def given(entry, macros):
    """(command, read back, None) of what a custom row or an exported function names itself."""
    out = [(entry[k], k == 'getCmd', None) for k in ('getCmd', 'setCmd') if k in entry]
    for c in entry.get('cmds', []):  # a name, or { cmd, reply, record } where they differ
        c = {'cmd': c} if isinstance(c, str) else c
        out.append((c['cmd'], c.get('reply', reads(c['cmd'])), c.get('record')))
    for name, _, _ in out:
        if name not in macros:
            sys.exit(f'{where(entry)}: {name!r} is not a command macro of the headers')
    return out


def row_commands(cat, row, macros):
    """(command macro, read back, record or None: the row's) of what a row's handler sends: its
    descriptor's command fields, what its shape's body sends, and what the row names itself."""
    shape = cat.shapes[row['shape']]
    out = []
    for f in shape.get('fields', []):
        key = gen_catalogue.field_key(f)
        value = row.get(key, f.get('default'))
        if f['kind'] == 'expr' and key in COMMAND_FIELDS and value in macros:
            out.append((value, key == 'getCmd', None))
    body = shape['sends'] if 'sends' in shape else cat.shapes.get(shape.get('like'), {}).get('sends', [])
    out += [(s['cmd'], s.get('reply', False), s.get('record')) for s in body]
    return out + given({k: v for k, v in row.items() if k == 'cmds' or row['shape'] == 'custom'} | {
        'handler': row['handler'], 'area': row['area']}, macros)


def contract(cat, key):
    """The exported functions that are not handlers, with what they send (`function`), or the
    inbound commands (`inbound`), of the catalogue's contract.toml."""
    path = os.path.join(cat.directory, 'contract.toml')
    if not os.path.exists(path):
        return []
    with open(path, 'rb') as f:
        return tomllib.load(f).get(key, [])


def collect(cat, macros, recs):
    commands = {}
    senders = [(row, row_commands(cat, row, macros)) for row in cat.rows]
    senders += [(fn, given(fn, macros)) for fn in contract(cat, 'function')]
    for entry, sends in senders:
        for name, get, own in sends:
            value, comment = macros[name]
            c = commands.setdefault(value, {'names': set(), 'comments': set(), 'handlers': set(),
                                            'records': set(), 'reply': False})
            c['names'].add(name)
            if comment and not re.match(r'^\d+$', comment):
                c['comments'].add(comment)
            c['handlers'].add(entry.get('handler') or entry['name'])
            records = own if own is not None else entry.get('record', [])
            for record in [records] if isinstance(records, str) else records:
                record = record.split('::')[-1]
                if record not in recs:
                    sys.exit(f'{where(entry)}: no record {record!r} in the headers')
                c['records'].add(record)
            c['reply'] |= get or reads(name)
    return commands


# ---- the layout program -----------------------------------------------------------------------

def layout_source(out):
    recs = records()
    lines = ['// Written by tools/docs/contract.py: prints the compiled layout of the records',
             '// exchanged with the voice module.',
             '#include <cstddef>', '#include <cstdio>']
    files = sorted({r[1] for r in recs.values()})
    lines += ['#include "%s"' % (f[len('include/'):] if f.startswith('include/') else f) for f in files]
    lines += ['', 'int main() {']
    for name in sorted(recs):
        qual, _, flds = recs[name]
        lines.append('    std::printf("%s|-|0|%%zu\\n", sizeof(%s));' % (name, qual))
        for f, _, _ in flds:
            lines.append('    std::printf("%s|%s|%%zu|%%zu\\n", offsetof(%s, %s), sizeof(%s::%s));'
                         % (name, f, qual, f, qual, f))
    lines += ['    return 0;', '}', '']
    with open(out, 'w', encoding='utf-8') as f:
        f.write('\n'.join(lines))


def read_layout(program):
    """Runs the compiled layout program (a text file of its output is taken as it is)."""
    if os.access(program, os.X_OK):
        text = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    else:
        text = read(program)
    sizes, offsets = {}, {}
    for line in text.splitlines():
        rec, field, off, size = line.split('|')
        if field == '-':
            sizes[rec] = int(size)
        else:
            offsets[(rec, field)] = (int(off), int(size))
    return sizes, offsets


# ---- the document -----------------------------------------------------------------------------

INTRO = '''\
# The voice-module contract

<!-- Generated by tools/docs/contract.py from the catalogue's rows and the headers; do not edit.
     Regenerate: cmake --build --preset host --target voice-module-contract -->

Every exchange between the library and the voice module is one `Tr104Msg`: the module number
(`cmd_type`, 1 in a reply), the command id (`cmd`), the request payload (`cfgBuffer`) and the
reply area (`rspBuffer`). The tables below list every command id the library uses, the record
its payload holds and the exported functions that send it (or, for inbound commands, handle
it). They are written by `tools/docs/contract.py` from the catalogue's rows (tr104/catalogue)
and the headers the library is compiled from; the offsets and sizes are printed by a program
compiled against those headers (`offsetof`, `sizeof`), so they are the compiled ones. The CTest
test `docs.voice_module_contract` fails when this file is out of date.

- **Direction**: requests (first table) go from the library to the voice module on the send
  queue (key 30); inbound commands (second table) come from the voice module unasked, on the
  process's inbound queue, and the inbound thread hands each to the function named.
- **Reply** "yes": the library waits for the voice module's answer (type 1, the same command
  id) in its reply queue and reads the record from `rspBuffer`; "no": sent without waiting.
- **Record** "—": the payload is not one of the record structs below: a single word or text,
  or a block whose offsets the handler's source names.
- **Handlers** are the exported functions that send the command id, by their rows (and, for the
  functions that are not handlers, tr104/catalogue/contract.toml), not counting the dispatching
  wrappers, which call `<name>Sip` or `<name>H248` by the current protocol.
- Integers in records are in the platform's byte order (the voice module shares it); records
  are zero-filled before use.
'''


def md_escape(s):
    return s.replace('|', '\\|')


def render(layout):
    sizes, offsets = read_layout(layout)
    cat = gen_catalogue.Catalogue(os.path.join(LIB, 'catalogue'))
    if cat.errors:
        sys.exit('\n'.join(cat.errors))
    recs = records()
    macros = command_macros()
    commands = collect(cat, macros, recs)
    out = INTRO.splitlines()
    w = out.append
    w('')
    w('## The envelope')
    w('')
    w('`%s` (%s): %d bytes.' % (ENVELOPE, recs[ENVELOPE][1], sizes[ENVELOPE]))
    w('')
    field_table(w, ENVELOPE, recs, offsets)
    w('')
    w('## Requests from the library')
    w('')
    w('| id | name | reply | record | handlers |')
    w('|---:|---|---|---|---|')
    for value in sorted(commands):
        c = commands[value]
        name = ', '.join('`%s`' % n for n in sorted(c['names']))
        if c['comments']:
            name += ': ' + '; '.join(sorted(c['comments']))
        rec = ', '.join('[`%s`](#%s)' % (r, r.lower()) for r in sorted(c['records'])) or '—'
        handlers = ', '.join('`%s`' % h for h in sorted(c['handlers']))
        w('| %d | %s | %s | %s | %s |' % (value, md_escape(name), 'yes' if c['reply'] else 'no', rec, handlers))
    w('')
    w('## Inbound commands (voice module to library)')
    w('')
    w('| id | name | handled by |')
    w('|---:|---|---|')
    inbound = []
    for e in contract(cat, 'inbound'):
        if isinstance(e['cmd'], str) and e['cmd'] not in macros:
            sys.exit(f"tr104/catalogue/contract.toml: inbound {e['cmd']!r} is not a command macro of the headers")
        inbound.append((macros[e['cmd']][0] if isinstance(e['cmd'], str) else e['cmd'], e))
    for value, e in sorted(inbound, key=lambda x: x[0]):
        name = '`%s`' % e['cmd'] if isinstance(e['cmd'], str) else '—'
        w('| %d | %s | %s |' % (value, name, '`%s`' % e['handler'] if 'handler' in e else 'dropped'))
    w('')
    w('## Records')
    w('')
    for name in sorted({r for c in commands.values() for r in c['records']}):
        qual, path, _ = recs[name]
        used = [str(v) for v in sorted(commands) if name in commands[v]['records']]
        w('### %s' % name)
        w('')
        w('`%s` in `%s`: %d bytes. Used by command%s %s.' % (qual, path, sizes[name], 's' if len(used) > 1 else '',
                                                             ', '.join(used)))
        w('')
        field_table(w, name, recs, offsets)
        w('')
    return '\n'.join(out)


def field_table(w, name, recs, offsets):
    w('| offset | size | field | type | meaning |')
    w('|---:|---:|---|---|---|')
    for f, typ, comment in recs[name][2]:
        off, size = offsets[(name, f)]
        w('| %d | %d | `%s` | `%s` | %s |' % (off, size, f, typ, md_escape(comment)))


def main(argv):
    if len(argv) == 3 and argv[1] == 'layout-source':
        layout_source(argv[2])
    elif len(argv) == 4 and argv[1] == 'render':
        with open(argv[3], 'w', encoding='utf-8') as f:
            f.write(render(argv[2]) + '\n')
    elif len(argv) == 5 and argv[1] == 'check':
        want = render(argv[2]) + '\n'
        have = read(argv[3]) if os.path.exists(argv[3]) else ''
        if want != have:
            sys.stdout.writelines(list(difflib.unified_diff(have.splitlines(True), want.splitlines(True),
                                                            argv[3], 'generated', n=1))[:60])
            print('%s is out of date: regenerate it with `%s`' % (rel(argv[3]), argv[4]))
            return 1
        print('%s is up to date' % rel(argv[3]))
    else:
        print(__doc__)
        return 2
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))
