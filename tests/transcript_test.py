#!/usr/bin/env python3
"""Runs the commands of transcripts and compares what they print with what the transcripts say.

    transcript_test.py [--update] CALLRECORDINGCTL TRANSCRIPT...

A transcript is a file of lines "$ COMMAND", each followed by what the command prints, standard error after
standard output, and by "[N]" for an exit status N other than 0. Lines before the first command are comments.
Commands are run by a shell in a folder of their own with a copy of the sample rules, in which $QUVA_PATH
names the folder; times and names that differ from run to run are replaced, and JSON is laid out in fewer lines.
--update writes what was printed into the transcripts instead: read the difference before it is committed.
"""
import json
import os
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile

examples = pathlib.Path(__file__).resolve().parent.parent / 'examples'
REPLACED = [  # What differs from run to run, and what stands for it.
    (r'\b20\d\d-\d\d-\d\d \d\d:\d\d:\d\d \+0000', 'NOW'),
    (r'\b202[6-9]-(?!1[01]-0)\d\d-\d\d \d\d:\d\d:\d\d', 'NOW'),
    (r'callrecordingctl \d+\.\d+\.\d+', 'callrecordingctl VERSION'),
]


def laid_out(value, before=''):
    """JSON with each part that fits on one line there."""
    line = json.dumps(value, ensure_ascii=False)
    if len(before) + len(line) <= 116 or not isinstance(value, (dict, list)) or not value:
        return line
    inner = before + '  '
    if isinstance(value, dict):
        parts = [f'{inner}{json.dumps(name)}: {laid_out(part, inner)}' for name, part in value.items()]
        return '{\n' + ',\n'.join(parts) + f'\n{before}}}'
    return '[\n' + ',\n'.join(inner + laid_out(part, inner) for part in value) + f'\n{before}]'


def in_fewer_lines(text):
    try:
        return laid_out(json.loads(text)) + '\n' if text[:1] in ('{', '[') else text
    except json.JSONDecodeError:
        return text


def play(client, commands):
    """Yields what each command prints, and its status."""
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(examples / 'sample', folder, dirs_exist_ok=True)
        shutil.copytree(examples / 'calls', f'{folder}/calls')
        environment = {'PATH': f'{client.parent}:{os.environ["PATH"]}', 'QUVA_PATH': f'{folder}/', 'TZ': 'UTC',
                       'HOME': folder, 'LC_ALL': 'C.UTF-8', 'SHELL': '/bin/sh'}
        user = subprocess.run(['id', '-un'], capture_output=True, text=True).stdout.strip()
        for command in commands:
            run = subprocess.run(['sh', '-c', command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                                 capture_output=True, text=True, errors='backslashreplace', timeout=60)
            text = (in_fewer_lines(run.stdout) + run.stderr).replace(folder + '/', '').replace(folder, '.')
            for pattern, replacement in REPLACED:
                text = re.sub(pattern, replacement, text)
            text = re.sub(rf'\b{re.escape(user)}\b', 'USER', text)
            text = text.replace(socket.gethostname(), 'HOST')
            yield text if text.endswith('\n') or not text else text + '\n', run.returncode


def main():
    update = sys.argv[1] == '--update'
    client, *files = map(pathlib.Path, sys.argv[2 if update else 1:])
    failed = 0
    for file in files:
        said = file.read_text()
        commands = re.findall(r'^\$ (.*)$', said, re.MULTILINE)
        printed = said[:said.index('$ ')]
        for command, (text, status) in zip(commands, play(client.resolve(), commands)):
            printed += f'$ {command}\n{text}' + (f'[{status}]\n' if status else '') + '\n'
        printed = printed.rstrip('\n') + '\n'
        if update:
            file.write_text(printed)
        elif printed != said:
            failed += 1
            with tempfile.NamedTemporaryFile('w') as copy:
                copy.write(printed)
                copy.flush()
                subprocess.run(['diff', '-U2', '--label', file.name, '--label', 'printed', file, copy.name])
    print(f'{len(files) - failed} passed, {failed} failed')
    return failed > 0 or not files


sys.exit(main())
