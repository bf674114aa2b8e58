#!/usr/bin/env python3
"""Writes docs/voice-module-contract.md from the sources the library is built from.

What it reads:
  - command ids: the enums, #defines and constants of include/tr104/*.h and tr104/**
    (names of the form GET_..., SET_..., ..._CMD), the inbound tables (arrays of core::InboundCommand) and the
    typed-exchange table (gVoiceTr104CmdInfo);
  - which handlers use an id: every definition of tr104/** (functions, descriptors, constants)
    and the names it refers to; an exported function uses an id when the id is reachable from
    its body through definitions that are not themselves exported.  The dispatching wrappers
    (the wrapper rows of tr104/catalogue) reach their <name>Sip and <name>H248 variants;
  - records: the C structs of include/tr104/*.h and the ...Record structs of tr104/**.  The
    offsets and sizes are not read from the text: a C++ program written by this script
    (`layout-source`) is compiled against the same headers and prints offsetof/sizeof.

  voice_module_contract.py layout-source OUT.cpp         write the layout program's source
  voice_module_contract.py render PROGRAM OUT.md         write the document (PROGRAM: the built
                                                         layout program, or a file of its output)
  voice_module_contract.py check PROGRAM DOC.md CMD      exit 1 when DOC.md is not what render
                                                         writes, naming CMD, which regenerates it
"""
import difflib
import os
import re
import subprocess
import sys

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), '..', '..'))
INCLUDE = os.path.join(ROOT, 'include', 'tr104')
LIB = os.path.join(ROOT, 'tr104')

COMMAND_NAME = re.compile(
    r'^(TR104_)?(GET|SET|ADD|DEL|REG|UNREG|RESET|CREATE|BIND|ENABLE|DISABLE|REGISTER|UNREGISTER)_\w+$'
    r'|^TR104_\w+_CMD$|^k\w+Cmd$')
NOT_COMMAND = re.compile(r'_(LEN|COUNT|MAX|OFFSET|IDS)$')
ENVELOPE = ('Tr104Msg', 'Tr104WireMsg')
# Entry points that read the voice module's reply.
REPLY_READERS = ('CfgPreHandleGetParam', 'CfgPreHandleGetStringParam', 'getLineStatus', 'readRecord', 'readText',
                 'getPayload', 'getText')
KEYWORDS = {'const', 'constexpr', 'static', 'inline', 'extern', 'int', 'void', 'unsigned', 'char', 'return',
            'static_assert', 'using', 'template', 'typename', 'struct', 'enum', 'class', 'namespace',
            'sizeof', 'offsetof', 'if', 'else', 'for', 'while', 'switch', 'case', 'nullptr', 'true', 'false'}


def read(path):
    """A file's text; a source that includes a file the build writes from the catalogue is read
    with that file's text in place, as the compiler sees it."""
    with open(path, encoding='utf-8') as f:
        text = f.read()
    if path.endswith('.cpp') and INCLUDED.search(text):
        text = INCLUDED.sub(lambda m: generated()[m.group(1)], text)
    return text


INCLUDED = re.compile(r'^#include "tr104/catalogue/(\w+\.inc)"$', re.M)
GENERATED = {}


def generated():
    """The descriptors and handlers the build writes from the catalogue, by file name."""
    if not GENERATED:
        cat = catalogue()
        gen = sys.modules['gen_catalogue']
        for area, shape in cat.descriptor_files():
            GENERATED[f'{area}_{shape}.inc'] = gen.descriptor_file(cat, area, shape)
    return GENERATED


def sources(top, exts):
    out = []
    for d, dirs, files in os.walk(top):
        dirs.sort()
        if os.path.relpath(d, LIB).startswith('map'):
            continue
        out += [os.path.join(d, f) for f in sorted(files) if f.endswith(exts)]
    return out


def headers():
    return [os.path.join(INCLUDE, f) for f in sorted(os.listdir(INCLUDE)) if f.endswith('.h')]


def rel(path):
    return os.path.relpath(path, ROOT)


COMMENT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])*\'', re.S)


def strip(text):
    """Comments become blanks (newlines kept), strings become ""."""
    def repl(m):
        s = m.group(0)
        if s.startswith('"'):
            return '""'
        if s.startswith("'"):
            return "' '"
        return '\n' * s.count('\n') or ' '
    return COMMENT.sub(repl, text)


def integer(text):
    m = re.fullmatch(r'\(?\s*(0x[0-9a-fA-F]+|\d+)[uUlL]*\s*\)?', text.strip())
    return int(m.group(1), 0) if m else None


# ---- command ids ------------------------------------------------------------------------------

def command_ids():
    """name -> (value, file, comment) of every command-id name in the headers and sources."""
    ids = {}
    for path in headers() + sources(LIB, ('.h', '.cpp')):
        for line in read(path).splitlines():
            comment = ''
            cm = re.search(r'/\*\s*(.*?)\s*\*/|//\s*(.*)$', line)
            if cm:
                comment = (cm.group(1) or cm.group(2) or '').strip()
            code = strip(line)
            m = (re.match(r'\s*#\s*define\s+(\w+)\s+(.+?)\s*$', code)
                 or re.match(r'\s*(\w+)\s*=\s*([^,;]+?)\s*,?\s*$', code)
                 or re.match(r'\s*constexpr\s+\w+\s+(\w+)\s*=\s*([^;]+);', code))
            if not m or not COMMAND_NAME.match(m.group(1)) or NOT_COMMAND.search(m.group(1)):
                continue
            value = integer(m.group(2))
            if value is not None:
                ids[m.group(1)] = (value, rel(path), comment)
    return ids


def table_rows(text, table):
    body = re.search(re.escape(table) + r'\s*\[[^\]]*\]\s*=\s*\{(.*?)\n\};', text, re.S)
    rows = []
    for m in re.finditer(r'\{([^{}]*)\}\s*,?\s*(?://\s*(.*))?', body.group(1)):
        rows.append(([f.strip() for f in m.group(1).split(',')], (m.group(2) or '').strip()))
    return rows


# ---- definitions and references ---------------------------------------------------------------

TOKEN = re.compile(r'[A-Za-z_]\w*|\d[\w.]*|""|::|->|\S')


class Definition:
    def __init__(self, name, path, tokens, function, internal=False):
        self.name, self.path, self.function, self.internal = name, path, function, internal
        # Names referred to; members (after . or ->) are not.
        self.refs = {t for i, t in enumerate(tokens)
                     if re.match(r'[A-Za-z_]', t) and (i == 0 or tokens[i - 1] not in ('.', '->'))} - {name}
        # Names called (or whose address is taken): in a function body only these reach other
        # functions, so that a local variable does not stand for a function of the same name.
        self.calls = {t for i, t in enumerate(tokens) if t in self.refs and (
            (i + 1 < len(tokens) and tokens[i + 1] == '(') or (i > 0 and tokens[i - 1] == '&'))}


DIRECTIVE = re.compile(r'^[ \t]*#(?:[^\n]*\\\n)*[^\n]*', re.M)
MACRO = re.compile(r'#\s*define\s+(\w+)\(([^)]*)\)\s*(.*)', re.S)


def macros(text):
    out = {}
    for m in DIRECTIVE.finditer(text):
        d = MACRO.match(m.group(0).strip())
        if d:
            params = [p.strip() for p in d.group(2).split(',') if p.strip()]
            out[d.group(1)] = (params, d.group(3).replace('\\\n', ' '))
    return out


def arguments(text, start):
    """The arguments of the call whose '(' is at start, and the index after its ')'."""
    args, level, cur, i = [], 0, '', start
    while i < len(text):
        ch = text[i]
        if ch == '(':
            level += 1
            if level == 1:
                i += 1
                continue
        elif ch == ')':
            level -= 1
            if level == 0:
                args.append(cur.strip())
                return args, i + 1
        elif ch == ',' and level == 1:
            args.append(cur.strip())
            cur = ''
            i += 1
            continue
        cur += ch
        i += 1
    return None, start


def expand(text, defs):
    """Expands the function-like macros of defs in text (what generates handlers)."""
    if not defs:
        return text
    call = re.compile(r'\b(%s)\s*\(' % '|'.join(map(re.escape, defs)))
    for _ in range(6):
        out, pos, changed = [], 0, False
        for m in call.finditer(text):
            if m.start() < pos:
                continue
            args, end = arguments(text, m.end() - 1)
            if args is None:
                continue
            params, body = defs[m.group(1)]
            values = dict(zip(params, args))
            body = re.sub(r'\s*##\s*', '\0', body)
            body = re.sub(r'#\s*(\w+)', lambda x: '""' if x.group(1) in values else x.group(0), body)
            body = re.sub(r'\w+', lambda x: values.get(x.group(0), x.group(0)), body)
            out += [text[pos:m.start()], ' ', body.replace('\0', ''), ' ']
            pos, changed = end, True
        text = ''.join(out) + text[pos:]
        if not changed:
            break
    return text


HEADER_MACROS = {}


def definitions(path):
    """Top-level definitions of a source (namespaces and extern "C" blocks are transparent)."""
    if not HEADER_MACROS:
        for h in sources(LIB, ('.h',)):
            HEADER_MACROS.update(macros(strip(read(h))))
    text = strip(read(path))
    defs_ = dict(HEADER_MACROS)
    defs_.update(macros(text))
    text = expand(DIRECTIVE.sub('', text), defs_)
    tokens = TOKEN.findall(text)
    defs, stmt, depth, transparent, i = [], [], 0, [], 0
    while i < len(tokens):
        t = tokens[i]
        if t == '{' and depth == 0 and (stmt == ['extern', '""'] or (
                stmt[:1] == ['namespace'] and all(re.match(r'\w+$|::$', x) for x in stmt))):
            transparent.append(len(stmt) == 1)  # an anonymous namespace
            stmt = []
        elif t == '}' and depth == 0 and transparent:
            transparent.pop()
            stmt = []
        else:
            stmt.append(t)
            if t == '{':
                depth += 1
            elif t == '}':
                depth -= 1
                if depth == 0 and not (i + 1 < len(tokens) and tokens[i + 1] in (';', ',')) \
                        and '=' not in head(stmt):
                    defs.append(make(stmt, path, any(transparent)))
                    stmt = []
            elif t == ';' and depth == 0:
                defs.append(make(stmt, path, any(transparent)))
                stmt = []
        i += 1
    return [d for d in defs if d]


def head(stmt):
    """The tokens before the first brace, outside parentheses."""
    out, level = [], 0
    for t in stmt:
        if t == '{' and level == 0:
            break
        level += (t == '(') - (t == ')')
        if level == 0:
            out.append(t)
    return out


def make(stmt, path, internal):
    level = 0
    name = None
    function = False
    for t in stmt:
        if level == 0 and t in ('(', '{', '=', '['):
            function = t == '(' and stmt[-1] == '}'
            break
        if t in ('<',):
            level += 1
        elif t in ('>',):
            level -= 1
        elif level == 0 and re.match(r'[A-Za-z_]\w*$', t) and t not in KEYWORDS:
            name = t
    if stmt[:1] and stmt[0] in ('struct', 'class', 'enum', 'union'):
        stmt = []  # a type: its members refer to nothing
    return Definition(name, path, stmt, function, internal) if name else None


def catalogue():
    sys.path.insert(0, os.path.join(ROOT, 'cmake'))
    import gen_catalogue  # pylint: disable=import-outside-toplevel
    return gen_catalogue.Catalogue(os.path.join(LIB, 'catalogue'))


def dispatch_variants():
    """Wrapper name -> its protocol variants, from the catalogue's wrapper rows."""
    return {r['handler']: [r['handler'] + 'Sip', r['handler'] + 'H248'] for r in catalogue().by_shape('wrapper')}


def exported():
    """The interface: the names of cmake/exports.txt and the catalogue's handlers."""
    names = [r['handler'] for r in catalogue().rows]
    for line in read(os.path.join(ROOT, 'cmake', 'exports.txt')).splitlines():
        line = line.split('#')[0].strip()
        if line:
            names.append(line)
    return set(names)


class Graph:
    def __init__(self):
        self.by_name = {}
        for path in sources(LIB, ('.cpp', '.h')):
            for d in definitions(path):
                self.by_name.setdefault(d.name, []).append(d)
        for wrapper, variants in dispatch_variants().items():
            d = Definition(wrapper, 'dispatch', variants, True)
            self.by_name.setdefault(wrapper, []).append(d)

    def resolve(self, name, path):
        defs = self.by_name.get(name, [])
        local = [d for d in defs if d.path == path]
        return local or [d for d in defs if not d.internal]

    def reach(self, start, stop, through_functions=True):
        """Definitions reachable from start, not entering names in stop."""
        seen, todo, out = set(), list(start), []
        while todo:
            d = todo.pop()
            if id(d) in seen:
                continue
            seen.add(id(d))
            out.append(d)
            for r in d.refs:
                if r in stop:
                    continue
                for n in self.resolve(r, d.path):
                    if n.function and d.function and r not in d.calls:
                        continue
                    if through_functions or (not n.function and n.path == d.path):
                        todo.append(n)
        return out


# ---- records ----------------------------------------------------------------------------------

FIELD = re.compile(r'^\s*([A-Za-z_][\w\s\*]*?)\s*\b(\w+)\s*((?:\[[^\]]*\])*)\s*;\s*(?:/\*\s*(.*?)\s*\*/|//\s*(.*))?$')


def records():
    """name -> (qualified name, file, [(field, type, comment)])."""
    out = {}
    for path in headers():
        text = read(path)
        for m in re.finditer(r'typedef struct (\w+)\s*\{[^\n]*\n(.*?)\n\}\s*(\w+);', text, re.S):
            out[m.group(3)] = (m.group(3), rel(path), fields(m.group(2)))
    for path in sources(LIB, ('.h',)):
        text = read(path)
        ns = re.search(r'^namespace ([\w:]+) \{', text, re.M)
        for m in re.finditer(r'^struct (\w+Record) \{\n(.*?)\n\};', text, re.S | re.M):
            qual = (ns.group(1) + '::' if ns else '') + m.group(1)
            out[m.group(1)] = (qual, rel(path), fields(m.group(2)))
    return out


def fields(body):
    out = []
    for line in body.splitlines():
        m = FIELD.match(line)
        if m:
            comment = (m.group(4) or m.group(5) or '').strip()
            comment = re.sub(r'^\d+\s*:?\s*', '', comment)
            out.append((m.group(2), (m.group(1) + m.group(3)).replace(' ', ' '), comment))
    return out


def layout_source(out):
    recs = records()
    lines = ['// Written by tools/docs/voice_module_contract.py: prints the compiled layout of the',
             '// records exchanged with the voice module.',
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

def collect():
    ids = command_ids()
    graph = Graph()
    exports = exported()
    recs = records()
    convention = read(os.path.join(LIB, 'core', 'convention.cpp'))

    # Ids passed to a function that reads the reply.
    read_by_reply = set()
    for path in sources(LIB, ('.cpp', '.h')):
        for m in re.finditer(r'\b(?:%s)\s*\(([^;]*)' % '|'.join(REPLY_READERS), strip(read(path))):
            read_by_reply |= set(re.findall(r'\w+', m.group(1))) & ids.keys()
    # Definitions that name each id directly.
    direct = {}
    for defs in graph.by_name.values():
        for d in defs:
            for r in d.refs & ids.keys():
                direct.setdefault(r, []).append(d)
    # Handlers: exported functions reaching those definitions.
    # A generic body shared by many handlers (a template body) may name ids of some of its
    # descriptors' shapes only (a register command in the line-value body): a handler whose
    # descriptors name their own ids is not credited with the ids of such a body.
    reached = {}
    fan_in = {}
    for name in sorted(exports):
        for top in graph.by_name.get(name, []):
            if top.function:
                # The layers' registrations with core lead to other layers' handlers, not to
                # what the function itself sends; the inbound tables are read below.
                reached.setdefault(name, []).extend(graph.reach([top], (exports - {name}) | {'kRegistrations'}))
        for d in reached.get(name, []):
            fan_in[id(d)] = fan_in.get(id(d), 0) + 1
    # Functions that build descriptors count as descriptors.
    builders = {(d.path, r) for defs in graph.by_name.values() for d in defs if not d.function for r in d.refs}
    def shared(d, handler):
        return d.function and d.name != handler and (d.path, d.name) not in builders and fan_in[id(d)] > 3
    users = {}
    for name, defs in reached.items():
        own = set().union(*[d.refs & ids.keys() for d in defs if not shared(d, name)])
        for d in defs:
            if shared(d, name) and own and not d.refs & own:
                continue
            for r in d.refs & ids.keys():
                users.setdefault(r, set()).add(name)
    users_of = {}
    for defs in graph.by_name.values():
        for d in defs:
            for r in d.refs:
                users_of.setdefault((d.path, r), []).append(d)
    commands = {}
    for name, (value, path, comment) in ids.items():
        if name not in direct:
            continue  # declared, not used by the library
        c = commands.setdefault(value, {'names': set(), 'comments': set(), 'handlers': set(), 'records': set(),
                                        'reply': False, 'inbound': None})
        c['names'].add(name)
        if comment and not re.match(r'^\d+$', comment):
            c['comments'].add(comment)
        c['handlers'] |= users.get(name, set())
        for d in direct[name]:
            near = graph.reach([d], exports, through_functions=False)
            if not d.function:
                # The functions of the file that use the descriptor fill its record.
                near += [f for f in users_of.get((d.path, d.name), []) if f.function]
            for n in near:
                c['records'] |= (n.refs & recs.keys()) - set(ENVELOPE)
        if name in read_by_reply or re.search(r'(^|_)GET(_|$)|Get', name):
            c['reply'] = True
    for fields_, comment in table_rows(convention, 'gVoiceTr104CmdInfo'):
        value, wait = int(fields_[0]), fields_[3] == '0'
        c = commands.setdefault(value, {'names': set(), 'comments': {comment}, 'handlers': {'Tr104SetSimplyDataType'},
                                        'records': {'Tr104SimpleDataBlock'}, 'reply': wait, 'inbound': None})
    inbound = {}
    # Every layer's inbound table (an array of core::InboundCommand) registered with core.
    for path in sources(LIB, ('.cpp',)):
        text = read(path)
        for table in re.findall(r'\bInboundCommand\s+(\w+)\s*\[\]\s*=', text):
            for fields_, _ in table_rows(text, table):
                inbound[int(fields_[0])] = None if fields_[1] == 'nullptr' else fields_[1]
    return commands, inbound, recs, ids


def md_escape(s):
    return s.replace('|', '\\|')


def render(layout):
    sizes, offsets = read_layout(layout)
    commands, inbound, recs, ids = collect()
    names_by_value = {}
    for name, (value, _, _) in ids.items():
        names_by_value.setdefault(value, set()).add(name)
    out = []
    w = out.append
    w('# The voice-module contract')
    w('')
    w('<!-- Generated by tools/docs/voice_module_contract.py from the library\'s sources; do not edit.')
    w('     Regenerate: cmake --build --preset host --target voice-module-contract -->')
    w('')
    w('Every exchange between the library and the voice module is one `Tr104Msg`: the module number')
    w('(`cmd_type`, 1 in a reply), the command id (`cmd`), the request payload (`cfgBuffer`) and the')
    w('reply area (`rspBuffer`). The tables below list every command id the library uses, the record')
    w('its payload holds and the exported functions that send it (or, for inbound commands, handle')
    w('it). They are written by `tools/docs/voice_module_contract.py` from the same headers, descriptor')
    w('tables and record definitions the library is compiled from; the offsets and sizes are printed')
    w('by a program compiled against those headers (`offsetof`, `sizeof`), so they are the compiled')
    w('ones. The CTest test `docs.voice_module_contract` fails when this file is out of date.')
    w('')
    w('- **Direction**: requests (first table) go from the library to the voice module on the send')
    w('  queue (key 30); inbound commands (second table) come from the voice module unasked, on the')
    w('  process\'s inbound queue, and the inbound thread hands each to the function named.')
    w('- **Reply** "yes": the library waits for the voice module\'s answer (type 1, the same command')
    w('  id) in its reply queue and reads the record from `rspBuffer`; "no": sent without waiting.')
    w('- **Record** "—": the payload is not one of the record structs below: a single word or text,')
    w('  or a block whose offsets the handler\'s source names.')
    w('- **Handlers** are the exported functions that reach the command id, not counting the')
    w('  dispatching wrappers, which call `<name>Sip` or `<name>H248` by the current protocol.')
    w('- Integers in records are in the platform\'s byte order (the voice module shares it); records')
    w('  are zero-filled before use.')
    w('')
    w('## The envelope')
    w('')
    envelope_table(w, 'Tr104Msg', recs, sizes, offsets)
    w('')
    w('## Requests from the library')
    w('')
    w('| id | name | reply | record | handlers |')
    w('|---:|---|---|---|---|')
    for value in sorted(commands):
        c = commands[value]
        name = ', '.join('`%s`' % n for n in sorted(c['names'])) or '(number)'
        if c['comments']:
            name += ': ' + '; '.join(sorted(c['comments']))
        rec = ', '.join('[`%s`](#%s)' % (r, r.lower()) for r in sorted(c['records'])) or '—'
        handlers = ', '.join('`%s`' % h for h in sorted(c['handlers'])) or '—'
        w('| %d | %s | %s | %s | %s |' % (value, md_escape(name), 'yes' if c['reply'] else 'no', rec, handlers))
    w('')
    w('## Inbound commands (voice module to library)')
    w('')
    w('| id | name | handled by |')
    w('|---:|---|---|')
    for value in sorted(inbound):
        name = ', '.join('`%s`' % n for n in sorted(names_by_value.get(value, ()))) or '—'
        w('| %d | %s | %s |' % (value, name, '`%s`' % inbound[value] if inbound[value] else 'dropped'))
    w('')
    w('## Records')
    w('')
    used = set()
    for c in commands.values():
        used |= c['records']
    for name in sorted(used):
        qual, path, _ = recs[name]
        w('### %s' % name)
        w('')
        w('`%s` in `%s`: %d bytes. Used by command%s %s.' % (qual, path, sizes[name],
          's' if sum(name in c['records'] for c in commands.values()) > 1 else '',
          ', '.join(str(v) for v in sorted(commands) if name in commands[v]['records'])))
        w('')
        field_table(w, name, recs, offsets)
        w('')
    return '\n'.join(out)


def envelope_table(w, name, recs, sizes, offsets):
    w('`%s` (%s): %d bytes.' % (name, recs[name][1], sizes[name]))
    w('')
    field_table(w, name, recs, offsets)


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
