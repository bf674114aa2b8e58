#!/usr/bin/env python3
"""Reads the #include "..." lines under tr104/ and fails, naming the file and the include, where
an arrow points up or sideways.

A folder of tr104/ is a layer.  Core is the ground floor; the areas stand on it; the dispatching
wrappers (framework), which choose between the SIP and the H.248 variants, stand on the areas;
the assembled library, the map and the catalogue stand on top.  A file may include its own layer
and the floors below it, never a neighbour on its own floor.  A public header under
include/tr104/ belongs to the layer that defines what it declares.  Tables the build writes from
the catalogue (tr104/catalogue/*.inc, *.h under the build tree) are data for the file that
includes them.

usage: check-layers.py SOURCE_DIR
"""
import pathlib
import re
import sys

FLOORS = {
    'core': 0,
    'sip': 1, 'h248': 1, 'linetest': 1, 'netcfg': 1, 'device': 1, 'stats': 1,
    'framework': 2,
    'library': 3, 'map': 3, 'catalogue': 3,
}

# include/tr104/<header>: the layer whose folder defines its names.
PUBLIC = {
    'channel.h': 'core', 'common.h': 'core', 'export.h': 'core', 'framework.h': 'core',
    'notify.h': 'core', 'startup.h': 'core', 'protocol.h': 'core', 'codec.h': 'core',
    'version.h': 'core', 'voice_profile.h': 'core',
    'sip.h': 'sip', 'sip_identity.h': 'sip', 'sip_servers.h': 'sip',
    'sip_call_stats.h': 'sip', 'h248.h': 'h248',
    'linetest.h': 'linetest', 'netcfg.h': 'netcfg', 'device.h': 'device', 'statistics.h': 'stats',
    'handlers.h': 'framework', 'map.h': 'map',
}

# Arrows that still point sideways, each with the reason it stays.  An entry that no longer
# occurs fails the check too, so the list only shrinks.
KNOWN = {
    ('tr104/device/capabilities.cpp', 'tr104/sip.h'):
        'the capabilities answer from the SIP variants',
}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def layer_of(include, source_dir):
    """The layer of an included file, or None for a file outside the layering."""
    parts = include.split('/')
    if len(parts) == 3 and parts[0] == 'tr104' and parts[1] in FLOORS:
        if parts[1] == 'catalogue' and not (source_dir / include).exists():
            return None  # a table the build writes from the catalogue
        return parts[1]
    if len(parts) == 2 and parts[0] == 'tr104':
        return PUBLIC.get(parts[1], '?')
    return None


def allowed(source, target):
    return source == target or FLOORS[target] < FLOORS[source]


def main():
    source_dir = pathlib.Path(sys.argv[1]).resolve()
    faults = []
    seen = set()
    for path in sorted((source_dir / 'tr104').rglob('*')):
        if path.suffix not in ('.cpp', '.h', '.c', '.inc'):
            continue
        rel = path.relative_to(source_dir).as_posix()
        source = rel.split('/')[1]
        if source not in FLOORS:
            faults.append(f'{rel}: folder "{source}" is not a layer')
            continue
        for number, line in enumerate(path.read_text().splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            target = layer_of(match.group(1), source_dir)
            if target is None:
                continue
            if target == '?':
                faults.append(f'{rel}:{number}: #include "{match.group(1)}": public header of no layer')
            elif not allowed(source, target):
                if (rel, match.group(1)) in KNOWN:
                    seen.add((rel, match.group(1)))
                    continue
                way = 'up' if FLOORS[target] > FLOORS[source] else 'sideways'
                faults.append(f'{rel}:{number}: #include "{match.group(1)}": {source} -> {target} points {way}')
    for (rel, include) in sorted(set(KNOWN) - seen):
        faults.append(f'{rel}: #include "{include}" is listed as a known exception but no longer occurs')
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main())
