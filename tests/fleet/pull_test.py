#!/usr/bin/env python3
"""What a pull takes, what it refuses, and what is there when it was stopped on the way.

    pull_test.py CALLRECORDINGCTL CLIENT-FAULTS [--all]

With --all it is stopped at each of its system calls, else at some of them.
"""
import itertools
import os
import pathlib
import resource
import shutil
import sys
import tempfile

import fleet
from fleet import Machine, Writer, environment, expect, rules

client, faults = map(os.path.abspath, sys.argv[1:3])
stride = 1 if '--all' in sys.argv else 9


def number(count):
    """Rules of which each is told from the others by a duration."""
    return rules.replace('=7200', f'={count}')


def pulls(machine, what, code, part, text, *options):
    """One pull: its status, what it says, and the rules afterwards."""
    found, out, said = machine.pull(*options)
    expect(what, (found, part in out + said, machine.text() == text), (code, True, True))
    if not (found == code and part in out + said):
        print(out, said)
    expect(f'{what}: the metric', machine.metric('callrecording_pull_status'), [float(code)])


def test_what_is_taken(folder):
    repository = fleet.repository(folder)
    ada, eve = Writer(folder, 'ada', repository), Writer(folder, 'eve', repository)
    pathlib.Path(folder, 'signers').write_text(ada.signer)
    pathlib.Path(folder, 'policy').write_text('--to-type number --to 290 --not-recorded\n'
                                              '--to-type number --to 450 --by 3\n')
    it = Machine(f'{folder}/it', client, repository, '--signers', f'{folder}/signers', '--policy', f'{folder}/policy')
    pulls(it, 'no branch', 3, 'has no branch main', '')
    first = ada.publish(number(1))
    pulls(it, 'the first', 0, 'taken: commit ' + first[:12], number(1))
    pulls(it, 'again', 0, 'nothing new', number(1))

    def refused(what, code, part, text, *options, **more):
        good = ada.git('rev-parse', 'HEAD')
        ada.publish(text, *options, **more)
        pulls(it, what, code, part, number(1))
        ada.git('reset', '-q', '--hard', good)
        assert ada.push('--force')

    refused('unsigned', 1, 'not signed', number(2), '--no-gpg-sign')
    refused('malformed', 3, ':1:', '{{\n')
    refused('a pattern that is malformed', 1, 'check finds faults', rules.replace('<200-249>', '<20'))
    refused('against the policy', 1, 'the call from 0 to 290 is recorded by', rules.replace('never:', 'archive:/x'))
    refused('without a rule that the policy names', 1, 'policy:2: there is no rule 3', rules.replace('_id=3', '_id=9'))
    eve.git('pull', '-q', repository, 'main')
    eve.publish(number(2))
    pulls(it, 'of a stranger', 1, 'of none of the keys', number(1))
    assert ada.push('--force')
    ada.folder.joinpath('callrecordingdb').unlink()
    refused('no file', 3, 'no such file', '', name='other')
    ada.folder.joinpath('callrecordingdb').unlink(missing_ok=True)
    ada.folder.joinpath('callrecordingdb').symlink_to('/etc/passwd')
    refused('a link', 3, 'not a regular file', '', name='other')

    kept = ada.publish('', name='README')
    pulls(it, 'other files', 0, 'the rule file is the same', number(1))
    ada.git('reset', '-q', '--hard', first)
    ada.commit(number(3))
    assert ada.push('--force')
    pulls(it, 'forced back', 1, f'does not come after commit {kept[:12]}', number(1))
    ada.git('reset', '-q', '--hard', kept)
    assert ada.push('--force')
    it.run('delete', '3')
    edited = it.text()
    pulls(it, 'an edit here', 7, 'rule 3 "Complaint desk" deleted', edited)
    pulls(it, 'over it', 0, 'rule 3 "Complaint desk" added', number(1), '--over')
    expect('undo', (it.run('undo')[0], it.text()), (0, edited))
    pulls(it, 'over that', 0, 'taken', number(1), '--over')
    assert ada.push(to='other')
    pulls(it, 'another branch', 7, 'those of branch main', number(1), '--branch', 'other')

    # What somebody has put into the copy, and what is left of it.
    copy = next(pathlib.Path(it.folder, 'cache').glob('*.git'))
    copy.joinpath('hooks').mkdir()
    for hook in ('reference-transaction', 'post-checkout', 'pre-auto-gc'):
        copy.joinpath('hooks', hook).write_text(f'#!/bin/sh\ntouch {folder}/obeyed\n')
        copy.joinpath('hooks', hook).chmod(0o755)
    copy.joinpath('config').write_text(f'[core]\nfsmonitor = touch {folder}/obeyed\n[url "/nowhere"]\n'
                                       f'insteadOf = {repository}\n')
    ada.publish(number(4))
    pulls(it, 'a copy with a will of its own', 0, 'taken', number(4))
    expect('it was not obeyed', os.path.exists(f'{folder}/obeyed'), False)
    for count, file in enumerate(sorted(path for path in copy.rglob('*') if path.is_file())[:stride * 6:3]):
        if file.exists():
            file.chmod(0o600)
            file.write_bytes(file.read_bytes()[:5])
        ada.publish(number(5 + count))
        pulls(it, f'a copy with a broken {file.name}', 0, 'taken', number(5 + count))
    last = it.text()
    copy.parent.chmod(0o777)
    pulls(it, 'a copy for everybody', 3, 'others may write there', last)
    copy.parent.chmod(0o700)
    os.rename(repository, f'{repository}.gone')
    pulls(it, 'cut off', 3, 'cannot be asked', last)
    os.rename(f'{repository}.gone', repository)
    entry = it.log()[0]
    expect('the history', ('signed by ada@example.com' in entry['origin'], entry['message']), (True, 'a change'))
    new = Machine(f'{folder}/new', client, repository)
    new.file.write_text(rules)
    pulls(new, 'rules from nowhere', 7, 'taken from no commit', rules)
    new.file.write_text(last)
    pulls(new, 'the same rules from nowhere', 0, 'the rule file is the same', last)
    expect('a branch that is none', new.pull('--branch', 'x y')[0], 3)


def test_what_is_left(folder):
    """A pull that is stopped leaves the old rules or the new ones, and the next one puts all right."""
    repository = fleet.repository(folder)
    ada = Writer(folder, 'ada', repository)
    it = Machine(f'{folder}/it', client, repository)
    ada.publish(number(1))
    it.pull()
    it.keep()
    ada.publish(number(2))

    def stopped(what, more=None, **how):
        it.pull(env={**environment, **(more or {})}, **how)
        expect(f'{what}: old or new', it.text() in (number(1), number(2)), True)
        code, out, said = it.pull()
        expect(f'{what}: put right', (code, it.text() == number(2), said if code else ''), (0, True, ''))
        expect(f'{what}: the history', [entry['outside'] for entry in it.log()], [False] * 2)
        it.restore()

    hit = pathlib.Path(folder, 'hit')
    for kind in ('kill', 'fail'):
        for call in itertools.count(1, stride):
            hit.unlink(missing_ok=True)
            stopped(f'{kind} {call}', {'LD_PRELOAD': faults, 'FAULT_CALL': str(call), 'FAULT_KIND': kind,
                                       'FAULT_HIT': str(hit)})
            if not hit.exists():
                break
        expect('there are many calls', call > 50, True)

    # Each run of git in turn: it fails, or takes the pull with it, or is killed half way.
    programs = pathlib.Path(folder, 'bin')
    programs.mkdir()
    real = shutil.which('git')
    for action in ('exit 1', 'kill -9 $PPID', f'timeout -s KILL 0.004 {real} "$@"; exit 1'):
        for turn in range(1, 20):
            count = pathlib.Path(folder, 'count')
            count.write_text('')
            programs.joinpath('git').write_text(f'#!/bin/sh\necho >>{count}\n'
                                                f'[ $(wc -l <{count}) -ne {turn} ] || {{ {action}; }}\n'
                                                f'exec {real} "$@"\n')
            programs.joinpath('git').chmod(0o755)
            stopped(f'git run {turn}: {action}', {'PATH': f'{programs}:{os.environ["PATH"]}'})
            if len(count.read_text()) < turn:
                break
    stopped('a full disk', preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096)))


for test in (test_what_is_taken, test_what_is_left):
    with tempfile.TemporaryDirectory() as folder:
        test(folder)
print(f'{fleet.failures} failures')
sys.exit(fleet.failures > 0)
