#!/usr/bin/env python3
"""Every standard parameter the map serves, in both trees, reads back from a fresh emulator as a
value its syntax in the standard's definition allows: a member of its enumeration (each item of a
list), an integer inside its range and its type's, a text within its maximum length, a boolean.

The values the library reads but the standard does not allow are listed, with why, in
docs/data-model.md ("Values outside the standard's syntax"): a listed pattern that reads an allowed
value, or an unlisted one that does not, fails the test.

usage: values_test.py MAP.tsv REFERENCE.xml REFERENCE2.xml DATA-MODEL.md TR104CTL
"""
import json
import re
import subprocess
import sys
import xml.etree.ElementTree as ET

TREES = (('InternetGatewayDevice.Services.', 'InternetGatewayDevice.Services.VoiceService.'),
         ('Device.Services.', 'Device.Services.VoiceService.'))
LIMITS = {'int': (-2**31, 2**31 - 1), 'unsignedInt': (0, 2**32 - 1), 'long': (-2**63, 2**63 - 1),
          'unsignedLong': (0, 2**64 - 1)}


def tag(element):
    return element.tag.split('}')[-1]


class Syntax:
    """What a parameter's value may be."""

    def __init__(self):
        self.base, self.is_list, self.enum, self.ranges = 'string', False, None, []
        self.max_length = self.list_length = None
        self.vendor = False

    def facets(self, element):
        """Facets of a type element (or a data type's definition) added to this syntax."""
        for f in element:
            if tag(f) == 'size' and f.get('maxLength'):
                self.max_length = int(f.get('maxLength'))
            elif tag(f) == 'range':
                self.ranges.append((int(f.get('minInclusive', LIMITS.get(self.base, (-2**63, 0))[0])),
                                    int(f.get('maxInclusive', LIMITS.get(self.base, (0, 2**64))[1]))))
            elif tag(f) == 'enumeration':
                self.enum = (self.enum or set()) | {f.get('value')}

    def allows(self, value):
        items = value.split(',') if self.is_list and value != '' else [value]
        if self.is_list and self.list_length is not None and len(value) > self.list_length:
            return False
        return all(self.allows_one(item.strip() if self.is_list else item) for item in items)

    def allows_one(self, value):
        if self.base == 'boolean':
            return value in ('true', 'false', '1', '0')
        if self.base in LIMITS:
            if not re.fullmatch(r'-?[0-9]+', value):
                return False
            low, high = LIMITS[self.base]
            number = int(value)
            return low <= number <= high and (not self.ranges or any(a <= number <= b for a, b in self.ranges))
        if self.max_length is not None and len(value) > self.max_length:
            return False
        return self.enum is None or value in self.enum


def definitions(xml_path, root):
    """Pattern -> Syntax of every parameter of a reference definition."""
    document = ET.parse(xml_path).getroot()
    types = {d.get('name'): d for d in document.iter() if tag(d) == 'dataType' and d.get('name')}
    params, refs = {}, {}
    for obj in document.iter():
        if tag(obj) != 'object' or obj.get('name') is None:
            continue
        for p in obj:
            if tag(p) != 'parameter' or not p.get('name'):
                continue
            name = obj.get('name') + p.get('name')
            s = Syntax()
            description = ''.join(d.text or '' for d in p if tag(d) == 'description')
            s.vendor = 'vendor-specific' in description or 'Vendor-specific' in description
            for syntax in (x for x in p if tag(x) == 'syntax'):
                for t in syntax:
                    kind = tag(t)
                    if kind == 'list':
                        s.is_list = True
                        s.list_length = next((int(z.get('maxLength')) for z in t if tag(z) == 'size'), None)
                    elif kind == 'dataType':
                        definition_of(types, t.get('ref') or t.get('base'), s)
                        s.facets(t)
                    elif kind not in ('default', 'units'):
                        s.base = kind
                        s.facets(t)
                        for r in t:
                            if tag(r) == 'enumerationRef':
                                refs[name] = r
            params[name] = s
    # An enumeration taken from another parameter of the voice service, with its null value.
    for name, r in refs.items():
        service = name[:name.index('}.') + 2]
        target = params.get(service + r.get('targetParam').lstrip('.'))
        if target is not None and target.enum:
            params[name].enum = set(target.enum) | ({r.get('nullValue')} if r.get('nullValue') is not None else set())
    return {root + name: s for name, s in params.items()}


def definition_of(types, name, syntax):
    """A data type's base and facets, through the types it is derived from."""
    d = types.get(name)
    if d is None:
        return
    if d.get('base'):
        definition_of(types, d.get('base'), syntax)
    for t in d:
        if tag(t) in ('string', 'int', 'unsignedInt', 'long', 'unsignedLong', 'boolean', 'dateTime', 'hexBinary',
                      'base64'):
            syntax.base = tag(t)
            syntax.facets(t)
    syntax.facets(d)


def exceptions(doc_path):
    """The documented exceptions: pattern -> why (rows of the table under the heading)."""
    listed, inside = {}, False
    for line in open(doc_path, encoding='utf-8'):
        if line.startswith('#'):
            inside = 'Values outside the standard' in line
        elif inside:
            m = re.match(r'^\| `([^`]+)` \|', line)
            if m:
                listed[m.group(1)] = line
    return listed


def main():
    map_path, xml1, xml2, doc, ctl = sys.argv[1:6]
    syntax = definitions(xml1, TREES[0][0])
    syntax.update(definitions(xml2, TREES[1][0]))
    entries = {}
    for line in open(map_path, encoding='utf-8'):
        if not line.startswith('#') and line.strip():
            f = line.rstrip('\n').split('\t')
            entries[f[0]] = f
    listed = exceptions(doc)
    failures, checked, outside = [], 0, set()
    for _, prefix in TREES:
        run = subprocess.run([ctl, '--emulate', 'dump', prefix, '--json'], capture_output=True, text=True,
                             timeout=120, check=False)
        for item in json.loads(run.stdout):
            pattern = re.sub(r'\.[0-9]+(?=\.|$)', '.{i}', item['path'])
            e, s = entries.get(pattern), syntax.get(pattern)
            if e is None or s is None:
                continue  # a vendor parameter: the standard says nothing of its values
            note = e[8]
            if 'value' not in item:
                # Only a SIP variant the embedding process may define, or a value the voice module
                # does not provide, may fail to read.
                if 'embedding process' not in note and 'not provided' not in note:
                    failures.append(f'{item["path"]}: fault {item["fault"]}')
                continue
            checked += 1
            value = item['value']
            own = set(re.findall(r'"([^"]*)"', note)) if s.vendor else set()
            if not s.allows(value) and value not in own:
                outside.add(pattern)
                if pattern not in listed:
                    failures.append(f'{item["path"]} = {value!r}: not allowed ({s.base}'
                                    f'{", list" if s.is_list else ""}, enumeration {sorted(s.enum or [])}, '
                                    f'ranges {s.ranges}, max length {s.max_length})')
    for pattern in sorted(set(listed) - outside):
        failures.append(f'{pattern}: listed as outside the standard\'s syntax, but reads a value it allows')
    for f in failures:
        print('FAIL ' + f)
    print(f'{checked} standard values read in both trees, {len(outside)} parameters outside the standard\'s '
          f'syntax (documented), {len(failures)} failures')
    sys.exit(1 if failures or checked == 0 else 0)


if __name__ == '__main__':
    main()
