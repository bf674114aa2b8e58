#!/usr/bin/env python3
"""The catalogue of handlers (tr104/catalogue/*.toml) and what is generated from it.

One row per exported handler says everything about it once: its shape, its descriptor's fields
(records and fields by name, commands and limits by their macros), its texts and the data-model
paths it serves.  tr104/catalogue/shapes.toml describes each shape once; this script knows no
shape beyond that schema.  docs/catalogue.md describes the rows.

  gen_catalogue.py outputs CATALOGUE_DIR                      the files `build` writes, relative
                                                              to BINARY_DIR, one a line
  gen_catalogue.py build CATALOGUE_DIR INCLUDE_DIR EXPORTS BINARY_DIR
        writes, under BINARY_DIR:
          generated/tr104/catalogue/<area>_<shape>.inc   descriptors and exported one-liners,
                                                         included by the shape's generic body
          generated/tr104/catalogue/dispatch_lists.h     the wrapper lists, one per family
          generated/tr104/catalogue/field_lists.h        the masked fields of a record, by member
          include/tr104/extension_variants.h             TR104_EXTENSION_VARIANTS (public)
          tr104/handlers.txt                             the handlers of the rows
          tr104/exports-all.txt                          EXPORTS and the handlers: the interface
  gen_catalogue.py docs CATALOGUE_DIR OUT.md                  the handler index
  gen_catalogue.py check-docs CATALOGUE_DIR DOC.md            exit 1 when DOC.md is not that
  gen_catalogue.py texts CATALOGUE_DIR OUT.txt                the rows' texts: handler, field, text
  gen_catalogue.py check-texts CATALOGUE_DIR TEXTS.txt        exit 1 when TEXTS.txt is not that

Any problem with a row stops the build with the file and the handler it is about.
"""
import glob
import os
import re
import sys
import tomllib

ROW_KEYS = {'handler', 'shape', 'family', 'extension', 'paths', 'texts', 'doc'}
# What a handler sends, for the voice-module contract (tools/docs/contract.py): `cmds` on any row
# (commands its body sends besides its descriptor's), the others on a custom row.
CUSTOM_KEYS = {'getCmd', 'setCmd', 'cmds', 'record'}
PATH_KEYS = {'path', 'locate', 'type', 'access', 'value', 'convert', 'arg', 'slot', 'note', 'hidden'}
GENERATED = '/* Generated from tr104/catalogue by cmake/gen_catalogue.py: do not edit. */\n'
ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), '..'))


class Catalogue:
    def __init__(self, directory):
        self.directory = directory
        with open(os.path.join(directory, 'shapes.toml'), 'rb') as f:
            self.shapes = tomllib.load(f)
        for shape in self.shapes.values():  # `like`: the same descriptor called another way
            if 'like' in shape:
                base = self.shapes[shape['like']]
                for key in ('type', 'namespace', 'body', 'fields'):
                    shape.setdefault(key, base[key])
        self.rows = []
        self.errors = []
        for path in sorted(glob.glob(os.path.join(directory, '*.toml'))):
            area = os.path.splitext(os.path.basename(path))[0]
            if area == 'shapes':
                continue
            with open(path, 'rb') as f:
                try:
                    data = tomllib.load(f)
                except tomllib.TOMLDecodeError as e:
                    sys.exit(f'{os.path.relpath(path, ROOT)}: {e}')
            for row in data.get('param', []):
                row['area'] = area
                self.rows.append(row)
        self.check()

    def error(self, row, text):
        self.errors.append(f"tr104/catalogue/{row['area']}.toml: {row.get('handler', '?')}: {text}")

    def check(self):
        seen = {}
        for row in self.rows:
            name = row.get('handler')
            if not isinstance(name, str) or not re.match(r'^[A-Za-z_]\w*$', name):
                self.error(row, 'a row needs its handler name')
                continue
            if name in seen:
                self.error(row, f'already a row of {seen[name]}.toml')
            seen[name] = row['area']
            shape = self.shapes.get(row.get('shape'))
            if shape is None:
                self.error(row, f"shape {row.get('shape')!r} is not in shapes.toml")
                continue
            allowed = ROW_KEYS | {field_key(f) if f['kind'] not in ('field', 'size') else f.get('key', 'field')
                                  for f in shape.get('fields', [])}
            if 'fields' in shape:
                allowed |= {'record', 'field', 'width'}
            allowed |= CUSTOM_KEYS if row['shape'] == 'custom' else {'cmds'}
            for key in row:
                if key not in allowed and key != 'area':
                    self.error(row, f'{key!r} is not a field of shape {row["shape"]}')
            if row['shape'] == 'wrapper' and row.get('family') not in shape['families']:
                self.error(row, f"family {row.get('family')!r} unknown")
            if row['shape'] != 'wrapper' and ('family' in row or 'extension' in row):
                self.error(row, 'only a wrapper has a family')
            for p in row.get('paths', []):
                for key in p:
                    if key not in PATH_KEYS:
                        self.error(row, f'{p.get("path")}: {key!r} is not a column of the map')
                if 'path' not in p or 'type' not in p or 'access' not in p:
                    self.error(row, 'a path needs its path, type and access')
            for field in shape.get('fields', []):
                given = 'record' in row if field['kind'] in ('field', 'size', 'recordsize') else field_key(field) in row
                if not given and not optional(field):
                    self.error(row, f'shape {row["shape"]} needs {field_key(field)!r}')

    def by_shape(self, shape):
        return [r for r in self.rows if r['shape'] == shape]

    def descriptor_files(self):
        """(area, shape) of every generated descriptor file, in a stable order."""
        return sorted({(r['area'], r['shape']) for r in self.rows if 'fields' in self.shapes[r['shape']]})


def field_key(field):
    return field.get('key', field['name'].split('.')[-1])


def optional(field):
    """A row may leave the field out: it has a default, is a text (nullptr), a record's field
    (the row has none: the default), or the struct's own default member initializer."""
    return 'default' in field or field.get('optional') or field['kind'] == 'text'


def c_string(text):
    return '"' + text.replace('\\', '\\\\').replace('"', '\\"').replace('\n', '\\n').replace('\r', '\\r') \
        .replace('\t', '\\t') + '"'


def value_of(field, row, shape):
    kind = field['kind']
    key = field_key(field)
    if field.get('optional') and kind not in ('field', 'size') and key not in row:
        return None  # the struct's default member initializer
    value = row.get(key, field.get('default'))
    if kind == 'text':
        return 'nullptr' if value in (None, False) else c_string(value)
    if kind == 'expr':
        return str(value)
    if kind == 'enum':
        return f"{field['enum']}::{value}"
    if kind in ('field', 'size'):
        member = row.get(field.get('key', 'field'))
        if 'record' not in row or member is None:
            return str(field.get('default'))
        if kind == 'field':
            return f"offsetof({row['record']}, {member})"
        if 'width' in row and 'key' not in field:
            return str(row['width'])
        return f"sizeof({row['record']}::{member})"
    if kind == 'recordsize':
        return f"sizeof({row['record']})"
    if kind == 'count':
        return f'sizeof({value}) / sizeof({value}[0])'
    if kind == 'int':
        if not isinstance(value, int) or isinstance(value, bool):
            raise ValueError(f'{key} must be an integer')
        return str(value)
    if kind == 'bool':
        return 'true' if value else 'false'
    raise ValueError(f"kind {kind!r} of shape field {field['name']} unknown")


def initializer(fields, row, shape, indent):
    """Designated initializers in declaration order; a dotted name opens a nested aggregate."""
    out, i = [], 0
    while i < len(fields):
        head = fields[i]['name'].split('.', 1)
        if len(head) == 1:
            value = value_of(fields[i], row, shape)
            if value is not None:
                out.append(f".{head[0]} = {value}")
            i += 1
            continue
        inner = []
        while i < len(fields) and fields[i]['name'].split('.', 1)[0] == head[0]:
            f = dict(fields[i])
            f['name'] = f['name'].split('.', 1)[1]
            f.setdefault('key', field_key(fields[i]))
            inner.append(f)
            i += 1
        out.append(f".{head[0]} = {{{initializer(inner, row, shape, indent)}}}")
    return ', '.join(out)


def descriptor_file(cat, area, shape_name):
    shape = cat.shapes[shape_name]
    rows = [r for r in cat.rows if r['area'] == area and r['shape'] == shape_name]
    out = [GENERATED, f'// {shape_name} rows of tr104/catalogue/{area}.toml; included after the body\'s tables.\n']
    out.append(f"namespace {shape['namespace']} {{\nnamespace {{\n")
    for row in rows:
        try:
            init = initializer(shape['fields'], row, shape, '    ')
        except (KeyError, ValueError) as e:
            cat.error(row, f'{e}')
            continue
        out.append(f"const {shape['type']} k{row['handler']}{{{init}}};\n")
    out.append(f"}}  // namespace\n}}  // namespace {shape['namespace']}\n\nextern \"C\" {{\n")
    for row in rows:
        out.append(f"TR104_API int {row['handler']}({shape['params']}) {{\n"
                   f"    return {shape['body']}({shape['namespace']}::k{row['handler']}, {shape['args']});\n}}\n")
    out.append('}\n')
    return ''.join(out)


def dispatch_lists(cat):
    out = [GENERATED, '// The dispatching wrappers by family: X(<exported name>).\n#pragma once\n']
    for family, rules in cat.shapes['wrapper']['families'].items():
        names = [r['handler'] for r in cat.by_shape('wrapper') if r['family'] == family]
        out.append(f"\n// {family}: {rules['rule']}\n#define {rules['list']}(X)")
        out.append(''.join(f' \\\n    X({n})' for n in names) + '\n')
    return ''.join(out)


def field_lists(cat):
    """For a shape with `fieldList`: per record, its rows' fields with their bits, X(bit, record,
    member), in the rows' order (the emulator keeps the records by these)."""
    out = [GENERATED, '// The masked fields of the rows, per record: X(<bit>, <record>, <member>).\n#pragma once\n']
    for name, shape in cat.shapes.items():
        if 'fieldList' not in shape:
            continue
        records = {}
        for row in cat.by_shape(name):
            bit = row.get(shape['fieldListBit'], '0')  # a row without a bit: a field a set always carries
            records.setdefault(row['record'], []).append(f"X({bit}, {row['record']}, {row['field']})")
        for record, fields in records.items():
            out.append(f"\n#define {shape['fieldList']}_{record}(X)" + ''.join(f' \\\n    {f}' for f in fields) + '\n')
    return ''.join(out)


def inbound_lists(directory):
    """Per layer, the inbound commands of contract.toml: X(<command>, <handler or nullptr>)."""
    with open(os.path.join(directory, 'contract.toml'), 'rb') as f:
        inbound = tomllib.load(f).get('inbound', [])
    out = [GENERATED, '// The inbound commands each layer registers with core: X(<command>, <handler>).\n#pragma once\n']
    for layer in sorted({e['layer'] for e in inbound}):
        entries = [f"X({e['cmd']}, {e.get('handler', 'nullptr')})" for e in inbound if e['layer'] == layer]
        out.append(f'\n#define TR104_INBOUND_{layer.upper()}(X)' + ''.join(f' \\\n    {e}' for e in entries) + '\n')
    return ''.join(out)


def extension_variants(cat):
    names = [r['handler'] for r in cat.by_shape('wrapper') if r.get('extension')]
    return (GENERATED + '/* SIP variants the library leaves to the embedding process (include/tr104/device.h):\n'
            ' * X(<wrapper name>). */\n#ifndef TR104_EXTENSION_VARIANTS_H\n#define TR104_EXTENSION_VARIANTS_H\n'
            '#define TR104_EXTENSION_VARIANTS(X)' + ''.join(f' \\\n    X({n})' for n in names) + '\n#endif\n')


def declarations(include_dir):
    """Handler name -> its parameter list, for every TR104_API function of the public headers."""
    found = {}
    for header in glob.glob(include_dir + '/**/*.h', recursive=True):
        with open(header, encoding='utf-8') as f:
            text = f.read()
        for m in re.finditer(r'TR104_API\s+int\s+(\w+)\s*\(([^)]*)\)', text):
            args = [a.strip() for a in m.group(2).split(',') if a.strip() and a.strip() != 'void']
            found[m.group(1)] = args
    return found


def path_note(p):
    """The map's note of a path: its deferred slot first, then its own note."""
    note = p.get('note')
    if 'slot' in p:
        return f"deferred slot {p['slot']}" + (f' {note}' if note else '')
    return '-' if note is None else note


def with_first_path(row, p):
    """A path of the second tree (Device.Services.) takes what the handler's value is (value, slot,
    note) from the row's first path unless it gives its own."""
    if not p['path'].startswith('Device.') or p is row['paths'][0]:
        return p
    return {**{k: v for k, v in row['paths'][0].items() if k in ('value', 'slot', 'note')}, **p}


def map_entries(cat):
    """The rows' paths as the map's columns: (where, path, handler, locate, type, access, value,
    convert, arg, note, slot or -1, hidden or None)."""
    for row in cat.rows:
        for p in map(lambda p: with_first_path(row, p), row.get('paths', [])):
            locate = ','.join(str(i) for i in p['locate']) if 'locate' in p else '-'
            yield (f"tr104/catalogue/{row['area']}.toml ({row['handler']})", p['path'], row['handler'], locate,
                   p['type'], p['access'], p.get('value', '-'), p.get('convert', '-'), p.get('arg', '-'),
                   path_note(p), p.get('slot', -1), p.get('hidden'))


def handler_index(cat):
    shapes = cat.shapes
    out = ['# Handler index\n\n',
           'Generated from `tr104/catalogue/*.toml` by `cmake/gen_catalogue.py` (`cmake --build --preset host '
           '--target handler-index`): do not edit. One line per handler of the catalogue: its area, its shape '
           '(for a wrapper, its family and what it calls), and the data-model paths it serves. '
           'How rows are written: [catalogue.md](catalogue.md).\n']
    for area in sorted({r['area'] for r in cat.rows}):
        out.append(f'\n## {area}\n\n| handler | shape | paths |\n|---|---|---|\n')
        for row in sorted((r for r in cat.rows if r['area'] == area), key=lambda r: r['handler']):
            if row['shape'] == 'wrapper':
                what = f"wrapper, {row['family']}: {shapes['wrapper']['families'][row['family']]['rule']}"
                if row.get('extension'):
                    what += ' (SIP variant: the embedding process)'
            else:
                what = row['shape'] + (f": {row['doc']}" if 'doc' in row else '')
            paths = '<br>'.join(f"`{p['path']}` ({p['access']})" for p in row.get('paths', [])) or '-'
            what = what.replace('|', '\\|')
            out.append(f"| `{row['handler']}` | {what} | {paths} |\n")
    return ''.join(out)


def escape(text):
    return text.replace('\\', '\\\\').replace('\n', '\\n').replace('\r', '\\r').replace('\t', '\\t')


def texts(cat):
    """handler, field, text: every text a row gives its handler, one a line (\\n for a newline)."""
    out = ['# The texts of the catalogue\'s rows: handler, field, text (tab-separated, \\n a newline).\n',
           '# Written by cmake/gen_catalogue.py texts; the test catalogue.texts_list fails when it differs.\n']
    for row in cat.rows:
        shape = cat.shapes[row['shape']]
        for field in shape.get('fields', []):
            key = field_key(field)
            if field['kind'] == 'text' and key != 'handler' and isinstance(row.get(key), str):
                out.append(f"{row['handler']}\t{field['name']}\t{escape(row[key])}\n")
        for i, text in enumerate(row.get('texts', [])):
            out.append(f"{row['handler']}\ttexts[{i}]\t{escape(text)}\n")
    return ''.join(out)


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    old = None
    if os.path.exists(path):
        with open(path, encoding='utf-8') as f:
            old = f.read()
    if old != text:  # an unchanged file keeps its time: nothing that includes it is rebuilt
        with open(path, 'w', encoding='utf-8') as f:
            f.write(text)


def outputs(cat):
    files = [f'generated/tr104/catalogue/{a}_{s}.inc' for a, s in cat.descriptor_files()]
    return files + ['generated/tr104/catalogue/dispatch_lists.h', 'generated/tr104/catalogue/field_lists.h',
                    'generated/tr104/catalogue/inbound_lists.h',
                    'include/tr104/extension_variants.h', 'tr104/handlers.txt', 'tr104/exports-all.txt']


def build(cat, include_dir, exports, bindir):
    decl = declarations(include_dir)
    for row in cat.rows:
        if row['handler'] not in decl:
            cat.error(row, 'is not declared with TR104_API in the public headers')
    files = {f'generated/tr104/catalogue/{a}_{s}.inc': descriptor_file(cat, a, s) for a, s in cat.descriptor_files()}
    files['generated/tr104/catalogue/dispatch_lists.h'] = dispatch_lists(cat)
    files['generated/tr104/catalogue/field_lists.h'] = field_lists(cat)
    files['generated/tr104/catalogue/inbound_lists.h'] = inbound_lists(cat.directory)
    files['include/tr104/extension_variants.h'] = extension_variants(cat)
    handlers = ''.join(r['handler'] + '\n' for r in cat.rows)
    files['tr104/handlers.txt'] = handlers
    with open(exports, encoding='utf-8') as f:
        listed = f.read()
    listed_names = {line.split('#')[0].strip() for line in listed.splitlines()}
    for row in cat.rows:
        if row['handler'] in listed_names:
            cat.error(row, f'is a handler of the catalogue: remove it from {os.path.basename(exports)}')
    files['tr104/exports-all.txt'] = listed + '# The handlers of tr104/catalogue\n' + handlers
    if cat.errors:
        sys.exit('\n'.join(cat.errors))
    for rel, text in files.items():
        write(os.path.join(bindir, rel), text)


def main(argv):
    cmd, directory = argv[1], argv[2]
    cat = Catalogue(directory)
    if cat.errors:
        sys.exit('\n'.join(cat.errors))
    if cmd == 'outputs':
        print(';'.join(outputs(cat)))
    elif cmd == 'build':
        build(cat, argv[3], argv[4], argv[5])
    elif cmd == 'docs':
        write(argv[3], handler_index(cat))
    elif cmd == 'texts':
        write(argv[3], texts(cat))
    elif cmd in ('check-docs', 'check-texts'):
        want, target = (handler_index(cat), 'handler-index') if cmd == 'check-docs' else (texts(cat), 'catalogue-texts')
        with open(argv[3], encoding='utf-8') as f:
            if f.read() != want:
                sys.exit(f'{argv[3]} is not what the catalogue gives: cmake --build --preset host --target {target}')
    else:
        sys.exit(__doc__)


if __name__ == '__main__':
    main(sys.argv)
