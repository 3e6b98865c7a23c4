#!/usr/bin/env python3
"""Five machines with services, and two writers who race: nothing is lost, and no file is ever half.

    check_fleet.py BUILD-DIR [--quick]
"""
import hashlib
import os
import pathlib
import random
import re
import resource
import subprocess
import sys
import tempfile
import threading
import time

import fleet
from fleet import Machine, Service, Writer, environment, eventually, expect, must, rules, run

build = pathlib.Path(sys.argv[1]).resolve()
client, daemon = build / 'tools/callrecordingctl/callrecordingctl', build / 'tools/callrecordingd/callrecordingd'
pushes = 10 if '--quick' in sys.argv else 100  # Of each writer.
chance = random.Random(1)


def number(text):
    return rules.replace('Complaint desk', f'Complaint desk {text}')


class Race:
    """Writers push, machines pull and are killed, and somebody looks at the files all the time."""

    def __init__(self, machines, writers):
        self.machines, self.writers = machines, writers
        self.texts, self.over, self.kills, self.pulls, self.looks = {'', rules}, False, 0, 0, 0

    def write(self, writer):
        for count in range(pushes):
            while True:
                writer.git('fetch', '-q', writer.repository, 'main')
                writer.git('reset', '-q', '--hard', 'FETCH_HEAD')
                text = number(f'{writer.folder.name} {count}')
                self.texts.add(text)
                writer.commit(text)
                if writer.push():
                    break

    def follow(self, machine):
        while not self.over:
            process = subprocess.Popen([str(client), *machine.words], env=environment, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            self.pulls += 1
            if chance.random() < .3:
                time.sleep(chance.random() / 10)
                self.kills += process.poll() is None
                process.kill()
            process.wait()

    def look(self):
        while not self.over:
            for machine in self.machines:
                self.looks += 1
                expect(f'{machine.folder.name} has whole rules', machine.text() in self.texts, True)
            time.sleep(.005)

    def run(self):
        writing = [threading.Thread(target=self.write, args=(writer,)) for writer in self.writers]
        others = [threading.Thread(target=self.follow, args=(machine,)) for machine in self.machines]
        others.append(threading.Thread(target=self.look))
        for thread in writing + others:
            thread.start()
        for thread in writing:
            thread.join()
        self.over = True
        for thread in others:
            thread.join()


def check_race(folder):
    bare = fleet.repository(folder)
    port = fleet.free_port()
    server = subprocess.Popen(['git', 'daemon', '--reuseaddr', '--listen=127.0.0.1', f'--port={port}', '--export-all',
                               f'--base-path={folder}', folder], stderr=subprocess.DEVNULL, start_new_session=True)
    ada, bob, eve = (Writer(folder, name, bare) for name in ('ada', 'bob', 'eve'))
    pathlib.Path(folder, 'signers').write_text(ada.signer + bob.signer)
    machines = [Machine(f'{folder}/m{i}', client, f'git://127.0.0.1:{port}/rules.git', '--signers',
                        f'{folder}/signers', '--policy', fleet.example / 'policy') for i in range(5)]
    services = [Service(daemon, machine) for machine in machines]
    try:
        ada.publish(rules)
        race = Race(machines, (ada, bob))
        race.run()
        expect('no push is lost', int(must('git', '-C', bare, 'rev-list', '--count', 'main')), 2 * pushes + 1)
        print(f'{2 * pushes} pushes; {race.pulls} pulls, {race.kills} of them killed; {race.looks} looks at files')

        def all_pull(what, code, text):
            expect(what, [(machine.pull()[0], machine.text() == text) for machine in machines],
                   [(code, True)] * len(machines))

        ada.git('fetch', '-q', bare, 'main')
        ada.git('reset', '-q', '--hard', 'FETCH_HEAD')
        good = ada.folder.joinpath('callrecordingdb').read_text()
        all_pull('after the race', 0, good)
        ada.git('reset', '-q', '--hard', 'HEAD~2')
        assert ada.push('--force')
        all_pull('forced back', 1, good)
        ada.git('reset', '-q', '--hard', 'FETCH_HEAD')
        for what, code, text, writer, options in [
                ('unsigned', 1, number('unsigned'), ada, ['--no-gpg-sign']), ('a stranger', 1, number('eve'), eve, []),
                ('malformed', 3, rules + '{\n', ada, []),
                ('against the policy', 1, rules.replace('archive:/emergency', 'archive:/x'), ada, [])]:
            writer.git('fetch', '-q', ada.folder, 'main')
            writer.git('reset', '-q', '--hard', 'FETCH_HEAD')
            writer.commit(text, *options)
            assert writer.push('--force')
            all_pull(what, code, good)
            ada.git('reset', '-q', '--hard', 'FETCH_HEAD')
        machines[3].run('delete', '3')
        bob.git('fetch', '-q', ada.folder, 'main')
        bob.git('reset', '-q', '--hard', 'FETCH_HEAD')
        bob.commit(number('last'))
        assert bob.push('--force')
        expect('a local edit', [machine.pull()[0] for machine in machines], [0, 0, 0, 7, 0])
        expect('over it', machines[3].pull('--over')[0], 0)
        all_pull('in the end', 0, number('last'))
        last = hashlib.sha256(number('last').encode()).hexdigest()
        eventually('all services decide by the last rules', lambda: {service.digest() for service in services}, {last})
    finally:
        os.killpg(server.pid, 15)
        for service in services:
            service.end()


def check_readme(folder):
    """The ten lines of the example, in folders instead of machines."""
    text = (fleet.example / 'README.md').read_text()
    first, each = re.search(r'```sh\n(.*?)# On each machine[^\n]*\n(.*?)```', text, re.S).groups()
    variables = {**environment, 'HOME': folder, 'SERVER': f'{folder}/r.git', 'REPOSITORY': f'{folder}/r.git',
                 'PATH': f'{client.parent}:{os.environ["PATH"]}'}
    code, _, said = run('sh', '-ec', first, cwd=fleet.example, env=variables)
    expect('the first lines', (code, '3 of 3 claims are proved' in said), (0, True))
    for machine in ('one', 'two'):
        os.makedirs(f'{folder}/{machine}/telephony')
        lines = each.replace('/etc/callrecording', f'{folder}/{machine}/callrecording').replace(
            'pull "$REPOSITORY"', f'pull "$REPOSITORY" --cache {folder}/{machine}/cache')
        code, out, said = run('sh', '-ec', lines, cwd=f'{folder}/rules',
                              env={**variables, 'QUVA_PATH': f'{folder}/{machine}/'})
        expect(f'machine {machine}', (code, 'signed by ada@example.com: The first rules' in out), (0, True))
    # Two pushes that the hook refuses.
    here = {'cwd': f'{folder}/rules', 'env': variables}
    for change, option, part in [('s/never:/archive:/', '--allow-empty', 'call from `0` to `290`'),
                                 ('s/450/451/', '--amend', 'forced back')]:
        must('sed', '-i', change, 'callrecordingdb', **here)
        must('git', 'commit', '-q', option, '-a', '-m', 'worse', **here)
        code, _, said = run('git', 'push', '--force', 'origin', 'main', **here)
        expect(f'a push with {option}', (code != 0, part in said), (True, True))
        must('git', 'reset', '-q', '--hard', 'origin/main', **here)


def processor(function):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    function()
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def check_figures(folder):
    """What a pull takes, beside what git takes."""
    def rule(i):
        return (f'{{\ncallrecordingrule_id={i}\ncaller_pattern={10000 + i}<10-40>?\ncaller_call_type=0\n'
                f'called_pattern=0{i % 7}*\ncalled_call_type=0\ncall_recording_type=0\nrecord_to=archive:/{i % 9}\n'
                f'recording_duration=3600\nrecording_rule_state=1\ndescription=Rule {i}\n}}\n')
    many = rules + ''.join(rule(i) for i in range(4, 10000))
    bare = fleet.repository(folder)
    ada = Writer(folder, 'ada', bare)
    pathlib.Path(folder, 'signers').write_text(ada.signer)
    it = Machine(f'{folder}/it', client, bare, '--signers', f'{folder}/signers', '--policy', fleet.example / 'policy')
    ada.publish(many)
    expect('the first', it.pull()[0], 0)
    ada.publish(many.replace('description=Rule 77\n', 'description=Rule 77\n# a comment\n').replace('archive:/5', 'archive:/x', 10))
    print(f'10,000 rules with all checks: {processor(lambda: expect("a new commit", it.pull()[0], 0)):.2f} s of processor')
    copy = next(pathlib.Path(it.folder, 'cache').glob('*.git'))

    def best(*words):
        times = []
        for _ in range(20):
            begin = time.monotonic()
            must(*words)
            times.append(time.monotonic() - begin)
        return 1000 * sorted(times)[len(times) // 2]
    fetch = best('git', f'--git-dir={copy}', 'fetch', '-q', str(bare), '+refs/heads/main:refs/pull/head')
    pull = best(client, *it.words)
    print(f'nothing new: {pull:.1f} ms, a bare git fetch {fetch:.1f} ms, {pull / fetch:.2f} times')


for check in (check_readme, check_race, check_figures):
    with tempfile.TemporaryDirectory() as folder:
        check(folder)
print(f'{fleet.failures} failures')
sys.exit(fleet.failures > 0)
