#!/usr/bin/env python3
"""No include of the sources runs upwards.

src/Rooms.cmake declares the rooms from the ground up, and what each may use. This checks that a room names
only rooms that come before it; that its files include headers of those only, and of the platform; that
nothing but the exported layer includes the exported layer; and that src/ knows nothing of tools/.
"""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
source = root / 'src'
problems = []

uses = {'common': set()}
declared = re.sub(r'#.*', '', (source / 'Rooms.cmake').read_text())
for words in re.findall(r'callrecordingutils_room\(([^)$]+)(?:\$[^)]*)?\)', declared):
    room, *rest = words.split()
    named = rest[rest.index('USES') + 1:] if 'USES' in rest else []
    named = named[:named.index('LIBRARIES')] if 'LIBRARIES' in named else named
    for name in named:
        if name not in uses:
            problems.append(f'src/Rooms.cmake: {room} uses {name}, which does not come before it')
    uses[room] = {room, 'common', *named}


def included(path):
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if match := re.match(r'#include "([^"]+)"', line):
            yield number, match.group(1)


for path in sorted([*source.rglob('*.h'), *source.rglob('*.cpp')]):
    folder = str(path.parent.relative_to(source))
    is_exported = folder == 'c' or path.parent.name == 'exported'
    if not is_exported and folder not in uses:
        problems.append(f'src/{folder}: is not declared in src/Rooms.cmake')
        continue
    for number, header in included(path):
        room = str(pathlib.PurePath(header).parent)
        if not (source / header).exists() and not (path.parent / header).exists():
            problems.append(f'{path.relative_to(root)}:{number}: {header} is not a header of src/')
        elif not is_exported and room not in uses[folder]:
            problems.append(f'{path.relative_to(root)}:{number}: {folder} must not include {header}')

for problem in problems:
    print(problem)
print(f'{len(uses)} rooms, {len(problems)} problems')
sys.exit(1 if problems or len(uses) < 10 else 0)
