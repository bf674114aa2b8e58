#!/usr/bin/env python3
"""The map's generator refuses a path given twice (a row and the unserved list, two rows), a row
the catalogue cannot take, a conversion no one named, a value of the map's own it cannot take, a
second-tree path whose type is not its definition's, and a parameter of the second tree in no
source; the real sources pass.

usage: merge_check_test.py GEN_VOICE_MAP.py CATALOGUE_DIR INCLUDE_DIR REFERENCE.xml REFERENCE2.xml
"""
import os
import shutil
import subprocess
import sys
import tempfile

gen, catalogue, include, xml, xml2 = sys.argv[1:6]
PATH = 'InternetGatewayDevice.Services.VoiceService.{i}.VoiceProfile.{i}.Line.{i}.Enable'
ROW = f'''
[[param]]
handler = "Tr104LineEnable"
shape = "wrapper"
family = "both"

[[param.paths]]
path = "{PATH}"
locate = [0, 1, 2]
type = "string"
access = "RW"
value = "text:16"
'''


def run(tmp, rows, unserved, values='', second=()):
    cat = os.path.join(tmp, 'catalogue')
    shutil.rmtree(cat, ignore_errors=True)
    os.makedirs(cat)
    shutil.copy(os.path.join(catalogue, 'shapes.toml'), cat)
    with open(os.path.join(cat, 'area.toml'), 'w', encoding='utf-8') as f:
        f.write(rows)
    with open(os.path.join(cat, 'unserved.tsv'), 'w', encoding='utf-8') as f:
        f.write(unserved)
    with open(os.path.join(cat, 'values.toml'), 'w', encoding='utf-8') as f:
        f.write(values)
    p = subprocess.run([sys.executable, gen, cat, include, xml,
                        os.path.join(tmp, 'out.c'), os.path.join(tmp, 'out.tsv'), *second],
                       capture_output=True, text=True, check=False)
    return p.returncode, p.stdout + p.stderr


failures = 0


def expect(name, result, ok, words=''):
    global failures  # pylint: disable=global-statement
    rc, out = result
    if (rc == 0) != ok or words not in out:
        failures += 1
        print(f'FAIL {name}: exit {rc}, wanted {"success" if ok else "failure"} naming {words!r}:\n{out}')
    else:
        print(f'ok   {name}')


with tempfile.TemporaryDirectory() as tmp:
    expect('a row alone', run(tmp, ROW, ''), True)
    expect('a row and the unserved list', run(tmp, ROW, f'{PATH}\tstring\tRW\tno reason\n'), False,
           'already mapped')
    expect('two rows', run(tmp, ROW + ROW.replace('Tr104LineEnable"', 'Tr104LineRegister"'), ''), False,
           'already mapped')
    expect('a handler given twice', run(tmp, ROW + ROW, ''), False, 'already a row')
    expect('an unknown row field', run(tmp, ROW.replace('family =', 'famly = "x"\nfamily ='), ''), False,
           "'famly'")
    expect('an unknown map column', run(tmp, ROW.replace('value =', 'valeu = "int"\nvalue ='), ''), False,
           "'valeu'")
    SECOND = ROW.replace('value = "text:16"', 'value = "text:16"\n\n[[param.paths]]\n'
                         'path = "Device.Services.VoiceService.{i}.SIP.Client.{i}.Enable"\nlocate = [0, 2]\n'
                         'type = "boolean"\naccess = "RW"\narg = "nLocate[1]=1"\nconvert = "EnableBool"')
    NAMED = '[conversions]\nEnableBool = "enum:true=Enabled,false=Disabled"\n'
    expect('a second-tree path and its conversion', run(tmp, SECOND, '', NAMED), True)
    expect('a conversion no one named', run(tmp, SECOND, ''), False, 'not named in values.toml')
    expect('a fixed value without its type', run(tmp, ROW, '', '[[fixed]]\npath = "Device.X"\nvalue = "0"\n'), False,
           'a fixed value has path, type, value')
    expect('a second-tree path of another type', run(tmp, SECOND.replace('type = "boolean"', 'type = "string"'), '',
                                                     NAMED, (xml2,)), False, 'is boolean RW in the definition')
    expect('the second tree incomplete', run(tmp, SECOND, '', NAMED, (xml2,)), False,
           'parameter(s) of the second tree in no source')
    expect('the real sources', (subprocess.run(
        [sys.executable, gen, catalogue, include, xml, os.path.join(tmp, 'real.c'),
         os.path.join(tmp, 'real.tsv'), xml2], capture_output=True, text=True, check=False).returncode, ''), True)
sys.exit(1 if failures else 0)
