#!/usr/bin/env python3
"""Turns the data-model map into the C table of libtr104map.

The map has two sources: the paths of the catalogue's rows (tr104/catalogue/*.toml) and the paths
no handler serves (tr104/catalogue/unserved.tsv).  A path is in one of them only.  The table lists
the standard's parameters in the order of its definition, then the vendor parameters by path.

Every served entry is checked against the public headers: the handler must be declared with
TR104_API and take (nFlag, pValue) or (nFlag, pValue, nLocate); a handler with nLocate maps every
instance number of the path to an nLocate index.  Paths are unique.  Any problem stops the build
with the line it is on.

Some attributes of each entry are derived rather than written in the map, so that no caller reads
the note or the value text at run time: the value's kind and size (from "int", "text:N", ...), its
deferred-buffer slot (from "deferred slot N" in its note), whether a get blocks the caller ("blocks
the caller ..."), the one protocol it belongs to (a note starting "H.248" or "SIP", but not "SIP
variant") and whether its value is hidden.  A parameter of the standard
is hidden when the standard's reference definition marks its syntax hidden="true" (the passwords);
a vendor parameter (not in the definition) follows the same rule by name: a "...Password" is
hidden.

The map holds two trees of the standard: issue 1 under InternetGatewayDevice.Services. (REFERENCE.xml)
and issue 2 under Device.Services. (REFERENCE2.xml, VoiceService:2.0).  A parameter of issue 2 may
also be served by the map itself (tr104/catalogue/values.toml: references and instance counts),
and its conversions may be named there.

usage: gen_voice_map.py CATALOGUE_DIR INCLUDE_DIR REFERENCE.xml OUT.c OUT.tsv [REFERENCE2.xml]

OUT.tsv is the whole map, one parameter a line in the columns COLUMNS describes (installed with
the library, read by the tools).
"""
import os
import re
import sys
import xml.etree.ElementTree as ET

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_catalogue  # noqa: E402

TYPES = {'string', 'int', 'unsignedInt', 'boolean', 'dateTime', 'base64', 'float', 'long', 'unsignedLong',
         'hexBinary'}
ACCESS = {'R', 'W', 'RW'}
VALUE = re.compile(r'^(int|float|byte|addr|text:[1-9][0-9]*)$')
ARG = re.compile(r'^(-|nLocate\[[0-3]\]=[0-9]+(,nLocate\[[0-3]\]=[0-9]+)*)$')
CONVERT = re.compile(r'^(-|bool01|dotted|enum:[A-Za-z0-9_]+=-?[0-9]+(,[A-Za-z0-9_]+=-?[0-9]+)*)$')
# A named conversion of values.toml: the data model's texts to the handler's (texts or numbers).
NAMED_CONVERT = re.compile(r'^enum:[^=,]*=[^=,]*(,[^=,]*=[^=,]*)*$')


def arity(args):
    """2 for (nFlag, pValue), 3 for (nFlag, pValue, nLocate), else None."""
    if len(args) == 2 and args[0].endswith('nFlag'):
        return 2
    if len(args) == 3 and args[0].endswith('nFlag') and args[2].replace(' ', '').endswith('*nLocate'):
        return 3
    return None


# The columns of the whole map as text.
COLUMNS = '''#
#   path      the parameter's path pattern ({i} an instance number)
#   handler   the exported handler that serves it, or - when no handler can (the note says why)
#   locate    which nLocate index each {i} of the path goes to, in order ("0,1,2": voice service,
#             profile, line); - for a handler that takes no nLocate
#   type      the TR-069 type: string, int, unsignedInt, boolean, dateTime, base64, float
#   access    R, W or RW
#   value     what the handler's pValue holds: int (32-bit), text:N (a buffer of N bytes), float,
#             byte, addr (a 32-bit IPv4 address word)
#   convert   - (none), bool01 (boolean <-> 0/1), dotted (dotted text <-> address word),
#             enum:TEXT=N,... (text <-> number)
#   arg       - or nLocate[K]=N: a fixed instance number the handler takes (a profile value kept
#             per line is read and written through line 1)
#   note      the deferred group, the protocol it belongs to, or why a parameter is not served
'''
ROOT = 'InternetGatewayDevice.Services.'
ROOT2 = 'Device.Services.'
SLOT = re.compile(r'deferred slot ([0-9]+)')
VALUE_KINDS = {'int': ('TR104_MAP_VALUE_INT', 4), 'float': ('TR104_MAP_VALUE_FLOAT', 4),
               'byte': ('TR104_MAP_VALUE_BYTE', 1), 'addr': ('TR104_MAP_VALUE_ADDR', 4)}


def value_kind(value):
    """The value's kind and the bytes pValue points to."""
    if value.startswith('text:'):
        return 'TR104_MAP_VALUE_TEXT', int(value[5:])
    return VALUE_KINDS.get(value, ('TR104_MAP_VALUE_NONE', 0))


def typed_note(note):
    """What the note says that callers decide on: (blocks the caller, protocol type or 0)."""
    protocol = 2 if note.startswith('H.248') else 4 if note.startswith('SIP') and not note.startswith('SIP variant') else 0
    return int(note.startswith('blocks the caller')), protocol


def standard_parameters(xml_path, root=ROOT):
    """Every parameter path of the standard's definition, in its order: whether its value is hidden."""
    params = {}
    for obj in ET.parse(xml_path).getroot().iter():
        if not obj.tag.endswith('object') or obj.get('name') is None:
            continue
        for p in obj:
            if p.tag.endswith('parameter') and p.get('name'):
                # The first tree marks a password's syntax hidden, the second secured.
                hidden = any(s.tag.endswith('syntax') and 'true' in (s.get('hidden'), s.get('secured')) for s in p)
                params[root + obj.get('name') + p.get('name')] = hidden
    return params


def second_tree_syntax(xml_path):
    """Path -> (type, access) of every parameter of the second tree's definition: the base type of
    its syntax (a list is a string; a data type resolved to its base) and R or RW."""
    document = ET.parse(xml_path).getroot()
    local = lambda e: e.tag.split('}')[-1]  # noqa: E731
    bases = {}
    for d in document.iter():
        if local(d) == 'dataType' and d.get('name'):
            kinds = [local(k) for k in d if local(k) in TYPES]
            bases[d.get('name')] = d.get('base') or (kinds[0] if kinds else 'string')

    def resolve(name):
        while name in bases and name not in TYPES:
            name = bases[name]
        return name

    out = {}
    for obj in document.iter():
        if local(obj) != 'object' or obj.get('name') is None:
            continue
        for p in obj:
            if local(p) != 'parameter' or not p.get('name'):
                continue
            syntax = next(s for s in p if local(s) == 'syntax')
            kinds = [t for t in syntax if local(t) not in ('default', 'units')]
            if any(local(t) == 'list' for t in kinds):
                typ = 'string'
            elif local(kinds[0]) == 'dataType':
                typ = resolve(kinds[0].get('ref') or kinds[0].get('base'))
            else:
                typ = local(kinds[0])
            out[ROOT2 + obj.get('name') + p.get('name')] = (typ, 'RW' if p.get('access') == 'readWrite' else 'R')
    return out


def check_second_tree_syntax(syntax, path, typ, access, where, errors):
    """A path of the second tree has its definition's type, and no access its definition does not
    give (a handler may serve less: R of an RW parameter)."""
    if path in syntax:
        want, allowed = syntax[path]
        if typ != want or not set(access) <= set(allowed):
            errors.append(f'{where}: {path} is {want} {allowed} in the definition, not {typ} {access}')


def hidden(path, standard):
    if path in standard:
        return standard[path]
    return path.rsplit('.', 1)[-1].endswith('Password')


def c_string(text):
    return '"' + text.replace('\\', '\\\\').replace('"', '\\"') + '"'


def tsv_lines(tsv, columns):
    """(where, fields) of each line of a tab-separated file, comments left out."""
    for number, line in enumerate(open(tsv, encoding='utf-8'), 1):
        line = line.rstrip('\n')
        if line and not line.startswith('#'):
            f = line.split('\t')
            if len(f) != columns:
                sys.exit(f'{tsv}:{number}: {len(f)} columns, not {columns}')
            yield f'{os.path.basename(tsv)}:{number}', f


def entries(catalogue_dir):
    """Every entry of the sources, as the catalogue gives them (slot -1: from the note; fixed None:
    not a value of the map's own)."""
    cat = gen_catalogue.Catalogue(catalogue_dir)
    if cat.errors:
        sys.exit('\n'.join(cat.errors))
    for entry in gen_catalogue.map_entries(cat):
        yield (*entry, None)
    for name in ('unserved.tsv', 'unserved-2.tsv'):
        listed = os.path.join(catalogue_dir, name)
        if os.path.exists(listed):
            for where, (path, typ, access, reason) in tsv_lines(listed, 4):
                yield (where, path, '-', '-', typ, access, '-', '-', '-', reason, -1, None, None)
    yield from fixed_entries(model_values(catalogue_dir))


def model_values(catalogue_dir):
    """values.toml: the named conversions and the values the map serves itself."""
    path = os.path.join(catalogue_dir, 'values.toml')
    if not os.path.exists(path):
        return {}
    with open(path, 'rb') as f:
        return gen_catalogue.tomllib.load(f)


def fixed_entries(values):
    """The values the map serves itself: a reference (a constant path, {N} the path's N-th instance
    number) or an instance count ({#Object}: the instances gTr104MapRanges gives the object)."""
    for item in values.get('fixed', []):
        where = f"values.toml ({item.get('path', '?')})"
        if not {'path', 'type', 'value'} <= set(item) or set(item) - {'path', 'type', 'value', 'note'}:
            sys.exit(f'{where}: a fixed value has path, type, value and an optional note')
        yield (where, item['path'], '-', '-', item['type'], 'R', '-', '-', '-', item.get('note', 'the map\'s own value'),
               -1, None, item['value'])


def conversion(convert, named, where, errors):
    """A row's conversion: its text, or the named conversion's."""
    if convert in named:
        text = named[convert]
        if not NAMED_CONVERT.match(text):
            errors.append(f'{where}: conversion {convert} is not enum:TEXT=VALUE,...')
        return text
    if not CONVERT.match(convert):
        errors.append(f'{where}: conversion {convert!r} unknown (and not named in values.toml)')
    return convert


def check_complete(standard, seen, errors):
    """Every parameter of the second tree is in the map, served or listed with its reason."""
    missing = [p for p in standard if p.startswith(ROOT2) and p not in seen]
    if missing:
        errors.append(f'{len(missing)} parameter(s) of the second tree in no source (unserved-2.tsv lists the '
                      f'ones no handler serves): ' + ', '.join(missing[:5]))


def main():
    catalogue_dir, include_dir, xml_path, out, out_tsv = sys.argv[1:6]
    decl = gen_catalogue.declarations(include_dir)
    standard = standard_parameters(xml_path)
    if len(sys.argv) > 6:
        standard.update(standard_parameters(sys.argv[6], ROOT2))
    named = model_values(catalogue_dir).get('conversions', {})
    syntax2 = second_tree_syntax(sys.argv[6]) if len(sys.argv) > 6 else {}
    rows, seen, errors = [], {}, []
    for where, path, handler, locate, typ, access, value, convert, arg, note, row_slot, row_hidden, fixed in \
            entries(catalogue_dir):
        if path in seen:
            errors.append(f'{where}: {path} already mapped in {seen[path]}')
        seen[path] = where
        if typ not in TYPES or access not in ACCESS:
            errors.append(f'{where}: type {typ!r} or access {access!r} unknown')
        check_second_tree_syntax(syntax2, path, typ, access, where, errors)
        instances = path.count('{i}')
        n = 0
        indexes = []
        if handler != '-':
            if handler not in decl:
                errors.append(f'{where}: {handler} is not declared in the public headers')
                continue
            n = arity(decl[handler])
            if n is None:
                errors.append(f'{where}: {handler} does not take (nFlag, pValue[, nLocate])')
                continue
            if not ARG.match(arg) or (arg != '-' and n != 3):
                errors.append(f'{where}: argument {arg!r} unknown, or {handler} takes no nLocate')
            if not VALUE.match(value):
                errors.append(f'{where}: value {value!r} unknown')
            convert = conversion(convert, named, where, errors)
            if n == 3 and instances and locate == '-':
                errors.append(f'{where}: {handler} takes nLocate: say where each instance number goes')
            if locate != '-':
                indexes = [int(x) for x in locate.split(',')]
                if n != 3 or len(indexes) != instances or any(not 0 <= x <= 3 for x in indexes):
                    errors.append(f'{where}: locate {locate!r} does not fit {instances} instance(s) and {handler}')
        slot = SLOT.search(note)
        rows.append((path, handler, n, indexes, instances, typ, access, value, convert, arg, note,
                     int(slot.group(1)) if slot else row_slot,
                     hidden(path, standard) if row_hidden is None else row_hidden, fixed))
    if len(sys.argv) > 6:
        check_complete(standard, seen, errors)
    if errors:
        sys.exit('\n'.join(errors))
    order = {p: i for i, p in enumerate(standard)}
    rows.sort(key=lambda r: (0, order[r[0]], '') if r[0] in order else (1, 0, r[0]))
    served = sorted({r[1] for r in rows if r[1] != '-'})
    header = '# The TR-104 data model as this library serves it: one line per parameter, tab-separated.\n' + \
        COLUMNS + '#   A value the map serves itself (a reference, an instance count) has the handler (map)\n' + \
        '#   and the value fixed:TEXT ({N}: the path\'s N-th instance number, {#Object}: its instances).\n'
    with open(out_tsv, 'w', encoding='utf-8') as t:
        t.write(header)
        for path, handler, _, indexes, _, typ, access, value, convert, arg, note, _, _, fixed in rows:
            locate = ','.join(map(str, indexes)) or '-'
            if fixed is not None:
                handler, value = '(map)', 'fixed:' + fixed
            t.write('\t'.join((path, handler, locate, typ, access, value, convert, arg, note)) + '\n')
    with open(out, 'w', encoding='utf-8') as c:
        c.write('/* Generated from tr104/catalogue by cmake/gen_voice_map.py: do not edit. */\n')
        c.write("#include \"tr104.h\"\n#include \"tr104/map.h\"\n\n")
        c.write('#define FN(f) ((Tr104MapFunction)(f))\n\n')
        c.write('const Tr104MapEntry gTr104Map[] = {\n')
        for path, handler, n, indexes, instances, typ, access, value, convert, arg, note, slot, secret, fixed in rows:
            loc = (indexes + [-1] * 4)[:4]
            fn = f'FN({handler})' if handler != '-' else 'NULL'
            name = c_string(handler) if handler != '-' else 'NULL'
            kind, size = value_kind(value) if handler != '-' else ('TR104_MAP_VALUE_NONE', 0)
            blocks, protocol = typed_note(note)
            c.write('    {%s, %s, %s, %d, {%s}, %d, %s, %s, %s, %u, %s, %s, %s, %d, %d, %d, %d, %s},\n' % (
                c_string(path), name, fn, n, ', '.join(map(str, loc)), instances, c_string(typ), c_string(access),
                kind, size, c_string(convert), c_string(arg), c_string(note), slot, int(secret), blocks, protocol,
                'NULL' if fixed is None else c_string(fixed)))
        c.write('};\n')
        c.write('const unsigned int gTr104MapCount = sizeof(gTr104Map) / sizeof(gTr104Map[0]);\n')
    print(f'{len(rows)} parameters, {sum(1 for r in rows if r[1] != "-")} served by {len(served)} handlers, '
          f'{sum(1 for r in rows if r[13] is not None)} by the map itself, {sum(1 for r in rows if r[12])} hidden')


if __name__ == '__main__':
    main()
