#!/usr/bin/env python3
"""The voice-module contract is what the rows say: a descriptor's commands and record, its shape's
`sends` (a `like` shape's too), a row's own `cmds` (a name, or a table with its reply and record),
a custom row's keys and the exported functions of contract.toml; a command that is not a macro of
the headers, or a record that is not one of their structs, stops the generator naming the row.

usage: contract_check_test.py CONTRACT.py CATALOGUE_DIR
"""
import os
import shutil
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(sys.argv[1])))
import contract  # noqa: E402  pylint: disable=wrong-import-position

CATALOGUE = sys.argv[2]
MACROS = contract.command_macros()
RECORDS = contract.records()
CUSTOM = '[[param]]\nhandler = "Tr104Probe"\nshape = "custom"\n'
VLAN = ('[[param]]\nhandler = "Tr104SipVlanId"\nshape = "VlanValue"\nvalueName = "p"\nvlanClass = "kSip"\n'
        'member = "VlanId"\nfold = "Id"\n')
WIDE = ('[[param]]\nhandler = "Tr104Wide"\nshape = "BlockValueWide"\nvalueName = "p"\nblock = "&kStats"\n'
        'record = "Tr104H248StatsBlock"\nfield = "unRcvdReqs"\n')


def run(tmp, rows, functions=''):
    """(commands by value, or the generator's complaint)."""
    cat_dir = os.path.join(tmp, 'catalogue')
    shutil.rmtree(cat_dir, ignore_errors=True)
    os.makedirs(cat_dir)
    shutil.copy(os.path.join(CATALOGUE, 'shapes.toml'), cat_dir)
    for name, text in (('area.toml', rows), ('contract.toml', functions)):
        with open(os.path.join(cat_dir, name), 'w', encoding='utf-8') as f:
            f.write(text)
    cat = contract.gen_catalogue.Catalogue(cat_dir)
    if cat.errors:
        return '\n'.join(cat.errors)
    try:
        return contract.collect(cat, MACROS, RECORDS)
    except SystemExit as e:
        return str(e)


def sent(cmd, reply, records, handler='Tr104Probe'):
    """A check that the command went out as described."""
    def check(result):
        c = result.get(MACROS[cmd][0]) if isinstance(result, dict) else None
        return c is not None and handler in c['handlers'] and c['reply'] == reply and c['records'] == set(records)
    return check


def refused(*words):
    return lambda result: isinstance(result, str) and all(w in result for w in words)


# name, rows, contract.toml, expected
CASES = [
    ('a custom row\'s get and set share its record',
     CUSTOM + 'getCmd = "GET_PROXY_CFG_ID"\nsetCmd = "SET_PROXY_CFG_ID"\nrecord = "ServerRecord"\n', '',
     [sent('GET_PROXY_CFG_ID', True, ['ServerRecord']), sent('SET_PROXY_CFG_ID', False, ['ServerRecord'])]),
    ('cmds tables keep each command\'s own record and reply',
     CUSTOM + 'cmds = [{ cmd = "GET_OUTER_LINE_TEST_ID", record = "Tr104OuterLineResult" },\n'
     '        { cmd = "TR104_RTP_STATS_CMD", reply = true }]\n', '',
     [sent('GET_OUTER_LINE_TEST_ID', True, ['Tr104OuterLineResult']), sent('TR104_RTP_STATS_CMD', True, [])]),
    ('a shape\'s body sends its command with its record', VLAN, '',
     [sent('TR104_GET_VLAN_ID', True, ['Tr104VlanPayload'], 'Tr104SipVlanId')]),
    ('a like shape sends what its base sends', WIDE, '',
     [sent('GET_H248_STATISTICS_ID', True, ['Tr104H248StatsBlock'], 'Tr104Wide')]),
    ('a shaped row adds cmds of its own', VLAN + 'cmds = ["UNREGISTER_LINE_ID"]\n', '',
     [sent('UNREGISTER_LINE_ID', False, [], 'Tr104SipVlanId')]),
    ('an exported function that is no handler', '',
     '[[function]]\nname = "setProbe"\nsetCmd = "SET_SMULT_TEST_ID"\nrecord = "Tr104SmultParam"\n',
     [sent('SET_SMULT_TEST_ID', False, ['Tr104SmultParam'], 'setProbe')]),
    ('a command that is no macro', CUSTOM + 'getCmd = "GET_NOTHING_ID"\n', '',
     [refused('area.toml: Tr104Probe', "'GET_NOTHING_ID'")]),
    ('a record that is no struct', CUSTOM + 'setCmd = "SET_PROXY_CFG_ID"\nrecord = "NoRecord"\n', '',
     [refused('area.toml: Tr104Probe', "'NoRecord'")]),
    ('a function\'s unknown command', '', '[[function]]\nname = "setProbe"\ncmds = ["SET_NOTHING"]\n',
     [refused('contract.toml: setProbe', "'SET_NOTHING'")]),
    ('getCmd on a shaped row is not a key of its shape', VLAN + 'getCmd = "GET_PROXY_CFG_ID"\n', '',
     [refused('Tr104SipVlanId', "'getCmd'")]),
]

failures = 0
with tempfile.TemporaryDirectory() as tmp:
    for name, rows, functions, checks in CASES:
        result = run(tmp, rows, functions)
        if all(check(result) for check in checks):
            print(f'ok   {name}')
        else:
            failures += 1
            print(f'FAIL {name}: {result if isinstance(result, str) else sorted(result.items())[:4]}')
sys.exit(1 if failures else 0)
