#!/usr/bin/env python3
"""Fails, naming the file and the line, where a header of the client (tools/ctl) declares a
variable at namespace scope that is not a constant: the client's state lives in its commands
(Context and what each command's define() binds), never in a header.

usage: check-client-state.py SOURCE_DIR
"""
import pathlib
import re
import sys

NOT_A_VARIABLE = re.compile(r'^(using|typedef|template|struct|class|enum|union|namespace|friend|static_assert)\b')
CONSTANT = re.compile(r'\b(constexpr|const)\b')


def statements(text):
    """(line, statement) for every statement at namespace scope (outside types and functions)."""
    text = re.sub(r'//[^\n]*|/\*.*?\*/', lambda m: re.sub(r'[^\n]', ' ', m.group(0)), text, flags=re.S)
    text = re.sub(r'^[ \t]*#[^\n]*', '', text, flags=re.M)
    stack, current, start, line = [], '', 1, 1
    for ch in text:
        if ch == '\n':
            line += 1
        if all(kind == 'ns' for kind in stack):
            if ch == '{':
                stack.append('ns' if re.search(r'\bnamespace\b[\w:\s]*$|extern\s+"C"\s*$', current) else 'other')
                current = ''
                continue
            if ch == '}':
                if stack:
                    stack.pop()
                current = ''
                continue
            if ch == ';':
                if current.strip():
                    yield start, ' '.join(current.split())
                current = ''
                continue
            if not current.strip():
                start = line
            current += ch
        else:
            if ch == '{':
                stack.append('other')
            elif ch == '}':
                stack.pop()
                if all(kind == 'ns' for kind in stack):
                    current = ''  # end of a type or a function body


def main():
    source_dir = pathlib.Path(sys.argv[1]).resolve()
    faults = []
    for path in sorted((source_dir / 'tools' / 'ctl').rglob('*.h')):
        rel = path.relative_to(source_dir).as_posix()
        for line, statement in statements(path.read_text()):
            if NOT_A_VARIABLE.match(statement) or '(' in statement or CONSTANT.search(statement):
                continue
            faults.append(f'{rel}:{line}: "{statement}": a variable in a header (state belongs to a command)')
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main())
