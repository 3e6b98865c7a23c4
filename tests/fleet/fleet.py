"""A repository with rules, and machines that pull them: all in folders of their own."""
import json
import os
import pathlib
import shutil
import socket
import subprocess
import time
import urllib.request

source = pathlib.Path(__file__).resolve().parents[2]
example = source / 'examples/rules-as-code'
rules = (example / 'callrecordingdb').read_text()
failures = 0
environment = {**os.environ, 'GIT_CONFIG_NOSYSTEM': '1', 'GIT_CONFIG_GLOBAL': '/dev/null', 'LC_ALL': 'C.UTF-8',
               'CALLRECORDINGD_SOCKETS': '/nonexistent'}


def expect(what, found, wanted):
    global failures
    if found != wanted:
        failures += 1
        print(f'FAILED: {what}: found {found!r}, not {wanted!r}')


def run(*words, **more):
    done = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          **{'env': environment, **more})
    return done.returncode, done.stdout, done.stderr


def must(*words, **more):
    code, out, said = run(*words, **more)
    assert code == 0, (words, said)
    return out.strip()


class Writer:
    """Somebody with a clone, who signs with a key of his own."""

    def __init__(self, folder, name, repository):
        self.folder, self.repository = pathlib.Path(folder, name), str(repository)
        must('git', 'init', '-q', '-b', 'main', self.folder)
        must('ssh-keygen', '-q', '-t', 'ed25519', '-N', '', '-C', name, '-f', f'{self.folder}.key')
        for key, value in {'user.name': name, 'user.email': f'{name}@example.com', 'gpg.format': 'ssh',
                           'user.signingKey': f'{self.folder}.key.pub', 'commit.gpgSign': 'true'}.items():
            self.git('config', key, value)
        self.signer = f'{name}@example.com namespaces="git" ' + pathlib.Path(f'{self.folder}.key.pub').read_text()

    def git(self, *words):
        return must('git', '-C', self.folder, *words)

    def commit(self, text, *options, name='callrecordingdb', message='a change'):
        self.folder.joinpath(name).write_text(text)
        self.git('add', '.')
        self.git('commit', '-q', '--allow-empty', '-m', message, *options)
        return self.git('rev-parse', 'HEAD')

    def push(self, *options, to='main'):
        return run('git', '-C', self.folder, 'push', '-q', *options, self.repository, f'HEAD:{to}')[0] == 0

    def publish(self, text, *options, **more):
        commit = self.commit(text, *options, **more)
        assert self.push()
        return commit


class Machine:
    def __init__(self, folder, client, repository, *options):
        self.folder, self.client = pathlib.Path(folder), client
        self.file = self.folder / 'conf/telephony/callrecordingdb'
        self.file.parent.mkdir(parents=True)
        self.words = ['pull', str(repository), '--cache', str(self.folder / 'cache'), '--metrics', str(self.folder),
                      '--config-dir', str(self.folder / 'conf'), *map(str, options)]

    def pull(self, *more, **how):
        return run(self.client, *self.words, *more, **how)

    def run(self, *words):
        return run(self.client, *words, '--config-dir', self.folder / 'conf')

    def text(self):
        return self.file.read_text() if self.file.exists() else ''

    def metric(self, name):
        lines = (self.folder / 'callrecording.prom').read_text().splitlines()
        return [float(line.split()[-1]) for line in lines if line.startswith(name)]

    def keep(self):
        shutil.copytree(self.folder, f'{self.folder}.kept', symlinks=True)

    def restore(self):
        shutil.rmtree(self.folder)
        shutil.copytree(f'{self.folder}.kept', self.folder, symlinks=True)

    def log(self):
        return json.loads(self.run('log', '--json')[1])


def free_port():
    with socket.socket() as free:
        free.bind(('127.0.0.1', 0))
        return free.getsockname()[1]


def eventually(what, ask, wanted, seconds=30):
    end = time.monotonic() + seconds
    while ask() != wanted and time.monotonic() < end:
        time.sleep(.1)
    expect(what, ask(), wanted)


def ask(port, path):
    try:
        with urllib.request.urlopen(f'http://127.0.0.1:{port}{path}', timeout=5) as answer:
            return answer.read().decode()
    except OSError:
        return ''


class Service:
    """callrecordingd for the rules of a machine."""

    def __init__(self, program, machine):
        self.port = free_port()
        self.process = subprocess.Popen([program, '--config-dir', machine.folder / 'conf', '--socket',
                                         machine.folder / 'socket', '--listen', f'127.0.0.1:{self.port}'],
                                        stderr=subprocess.DEVNULL)
        eventually('a service answers', lambda: ask(self.port, '/healthz') != '', True)

    def digest(self):
        return json.loads(ask(self.port, '/state') or '{}').get('digest')

    def end(self):
        self.process.terminate()
        self.process.wait()


def repository(folder):
    must('git', 'init', '-q', '--bare', '-b', 'main', pathlib.Path(folder, 'rules.git'))
    return pathlib.Path(folder, 'rules.git')
