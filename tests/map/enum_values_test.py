#!/usr/bin/env python3
"""Every enumerated or boolean standard parameter the map serves (an enumeration of its own or one
it refers to) reads back, through the client against a fresh emulator, as a value the standard
allows (taken from the reference definition).

usage: enum_values_test.py MAP.tsv REFERENCE.xml TR104CTL
"""
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'cmake'))
from datamodel import ROOT, parameters, tsv_lines  # noqa: E402


def allowed_values(xml_path):
    """Pattern -> set of allowed values (enumerations, referenced enumerations and booleans), and
    the patterns whose enumeration admits vendor-specific values."""
    params = {obj + name: p for obj, name, p in parameters(xml_path)}
    enums, refs, vendor = {}, {}, set()
    for name, p in params.items():
        description = ''.join(d.text or '' for d in p if d.tag.endswith('description'))
        for syntax in p:
            if not syntax.tag.endswith('syntax'):
                continue
            for t in syntax:
                tag = t.tag.split('}')[-1]
                if tag == 'boolean':
                    enums[name] = {'true', 'false', '1', '0'}
                elif tag == 'string':
                    values = {e.get('value') for e in t if e.tag.endswith('enumeration')}
                    if values:
                        enums[name] = values
                        if 'vendor-specific' in description:
                            vendor.add(ROOT + name)
                    for r in t:
                        if r.tag.endswith('enumerationRef'):
                            refs[name] = r
    out = {ROOT + name: values for name, values in enums.items()}
    # A reference names a parameter of the voice service (".Capabilities.SIP.Transports"): its
    # enumeration, and the null value where the reference has one.
    for name, r in refs.items():
        service = name[:name.index('}.') + 2]
        values = set(enums.get(service + r.get('targetParam').lstrip('.'), ()))
        if values:
            if r.get('nullValue') is not None:
                values.add(r.get('nullValue'))
            out[ROOT + name] = values
    return out, vendor


def main():
    map_path, xml_path, ctl = sys.argv[1:4]
    allowed, vendor = allowed_values(xml_path)
    failures = checked = 0
    for _, f in tsv_lines(map_path):
        pattern, handler, access, note = f[0], f[1], f[4], f[8]
        if handler == '-' or 'R' not in access or pattern not in allowed:
            continue
        if 'embedding process' in note or 'not provided' in note or note.startswith('H.248'):
            continue  # no value to check under SIP without the embedding process's variant
        path = pattern.replace('{i}', '1')
        empty_allowed = 'empty while' in note
        # Where the standard admits the device's own values, the map's note quotes them.
        own = set(re.findall(r'"([^"]*)"', note)) if pattern in vendor else set()
        run = subprocess.run([ctl, '--emulate', 'get', path], capture_output=True, text=True, timeout=60)
        value = run.stdout.strip()
        checked += 1
        if run.returncode != 0 or (value not in allowed[pattern] | own and not (empty_allowed and value == '')):
            failures += 1
            print(f'FAIL {path}: exit {run.returncode}, value {value!r} not in {sorted(allowed[pattern])}'
                  f' {run.stderr.strip()}')
    print(f'{checked} enumerated or boolean parameters checked, {failures} failed')
    sys.exit(1 if failures or checked == 0 else 0)


if __name__ == '__main__':
    main()
