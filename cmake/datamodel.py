"""The voice data model as the build's scripts and checks read it: the parameters of the standard's
reference definition (the XML under third_party/bbf) and the lines of the map's tab-separated
files.  The map's generator (gen_voice_map.py), its coverage report (tools/map_coverage.py) and its
checks (tests/map) import it.  Standard library only: the build runs it with the host's Python.
"""
import os
import sys
import xml.etree.ElementTree as ET

# Every path of the voice service starts with it; the definition's object names do not.
ROOT = 'InternetGatewayDevice.Services.'
# The second tree's (issue 2, VoiceService:2.0) paths start with it.
ROOT2 = 'Device.Services.'


def parameters(xml_path):
    """(object name, parameter name, parameter element) of every parameter of the reference
    definition, in its order."""
    for obj in ET.parse(xml_path).getroot().iter():
        if not obj.tag.endswith('object') or obj.get('name') is None:
            continue
        for p in obj:
            if p.tag.endswith('parameter') and p.get('name'):
                yield obj.get('name'), p.get('name'), p


def tsv_lines(tsv, columns=None):
    """(where, fields) of each line of a tab-separated file, comments and blank lines left out.  With
    columns, a line with another number of fields stops the program, saying where it is."""
    with open(tsv, encoding='utf-8') as f:
        for number, line in enumerate(f, 1):
            line = line.rstrip('\n')
            if not line.strip() or line.startswith('#'):
                continue
            fields = line.split('\t')
            if columns is not None and len(fields) != columns:
                sys.exit(f'{tsv}:{number}: {len(fields)} columns, not {columns}')
            yield f'{os.path.basename(tsv)}:{number}', fields
