"""What the checks of telephone systems share: programs on loopback in a folder of their own, and calls by SIPp."""

import http.client
import os
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parent.parent
SAMPLE = SOURCE / 'examples/sample/telephony/callrecordingdb'
FROM_HEADER_ONLY = 'Subject: a call'  # Instead of an asserted identity.


def identity(user):
    return f'P-Asserted-Identity: <sip:{user}@pbx.example.com>'


# Caller, called, the rule of the sample that records the call (None: it is not recorded), a further header.
CALLS = [(caller, called, rule, FROM_HEADER_ONLY) for caller, called, rule in [
    ('201', '0044123456', 3), ('213', '0044123456', 4), ('213', '0041123456', None), ('alice', '450', 1),
    ('bob', 'board1', 8), ('500', '501', None), ('249', '0171', 3), ('250', '0171', None), ('450', '0301234567', 2),
    ('0170555', '112', 0), ('0170555', '113', None), ('100', '*72123', 10), ('100', '72123', None),
    ('0228777', '080055507', 5), ('0228777', '080055550', None), ('%2B4930', '*69', None), ('alice2', '700', None),
    ('72', '12', None)]]
IDENTIFIED_CALLS = [('anonymous', '0171', 3, identity('201')), ('201', '0171', None, identity('500'))]


class Exchange:
    """A folder, and the programs that were started in it; they end with it."""

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix='telephony-'))
        self.processes = []
        (self.folder / 'telephony').mkdir()
        self.rules = self.folder / 'telephony/callrecordingdb'
        shutil.copy(SAMPLE, self.rules)
        (self.folder / 'silence.pcma').write_bytes(b'\xd5' * 8000 * 60)
        return self

    def __exit__(self, kind, error, trace):
        for process in reversed(self.processes):
            self.end(process)
        if kind is not None and kind is not KeyboardInterrupt:
            for log in sorted(self.folder.glob('*.log')):
                print(f'--- the end of {log.name}', *log.read_text(errors='replace').splitlines()[-15:], sep='\n')
        shutil.rmtree(self.folder)

    def start(self, name, *command, **options):
        log = open(self.folder / f'{name}.log', 'a')
        process = subprocess.Popen([str(part) for part in command], cwd=self.folder, stdin=subprocess.DEVNULL,
                                   stdout=log, stderr=log, **options)
        self.processes.append(process)
        return process

    def end(self, process, seconds=10):
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(seconds)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait(seconds)
        if process in self.processes:
            self.processes.remove(process)

    def log(self, name):
        return (self.folder / f'{name}.log').read_text(errors='replace')

    def start_service(self, program, *options):
        self.socket = self.folder / 'callrecordingd.sock'
        self.service = self.start('callrecordingd', program, '--config-dir', self.folder, '--socket', self.socket,
                                  *options)
        eventually('the service answers', lambda: self.get('/healthz') == 'ok\n')

    def get(self, path):
        """What the service answers, or an empty text."""
        connection = http.client.HTTPConnection('localhost')
        connection.sock = socket.socket(socket.AF_UNIX)
        connection.sock.settimeout(2)
        try:
            connection.sock.connect(str(self.socket))
            connection.request('GET', path)
            return connection.getresponse().read().decode()
        except OSError:
            return ''
        finally:
            connection.close()

    def start_called_side(self, port):
        self.start('called', 'sipp', '-sf', HERE / 'called.xml', '-i', '127.0.0.1', '-p', port, '-mi', '127.0.0.1',
                   '-mp', free_port(2), '-rtp_echo', '-nostdin')

    def call(self, port, calls, milliseconds=1000, peer='127.0.0.1'):
        """Makes the calls side by side, and returns whether all of them went through."""
        table = self.folder / 'calls.csv'
        lines = [f'{caller};{called};{number};{header}\n' for number, (caller, called, _, header) in enumerate(calls)]
        table.write_text('SEQUENTIAL\n' + ''.join(lines))
        caller = self.start('caller', 'sipp', '-sf', HERE / 'caller.xml', '-inf', table, '-i', peer, '-p', free_port(),
                            '-mi', '127.0.0.1', '-mp', free_port(2),
                            '-d', milliseconds, '-m', len(calls), '-r', 10, '-recv_timeout', 10000, '-nostdin',
                            '-timeout', '60s', '-timeout_error', f'127.0.0.1:{port}')
        try:
            return caller.wait(70) == 0
        finally:
            self.end(caller)


def free_port(count=1):
    """The first of some UDP ports that are free on loopback, the first one even."""
    for _ in range(100):
        first = int.from_bytes(os.urandom(2), 'big') % 20000 + 10000 & ~1
        held = []
        try:
            for port in range(first, first + count):
                held.append(socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
                held[-1].bind(('127.0.0.1', port))
            return first
        except OSError:
            continue
        finally:
            for one in held:
                one.close()
    raise RuntimeError('no free ports')


def is_taken(port):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        try:
            probe.bind(('127.0.0.1', port))
            return False
        except OSError:
            return True


def fail(text):
    print(f'FAILED  {text}', flush=True)
    sys.exit(1)


def expect(what, found, wanted):
    if found != wanted:
        fail(f'{what}: found {found!r}, not {wanted!r}')


def eventually(what, ask, seconds=10):
    end = time.monotonic() + seconds
    while not ask():
        if time.monotonic() > end:
            fail(f'{what}: not within {seconds} seconds')
        time.sleep(.05)


def sample_rule(rule):
    """The texts of one rule of the sample."""
    block = next(text for text in re.findall(r'\{\n(.*?)\n\}', SAMPLE.read_text(), re.S)
                 if text.startswith(f'callrecordingrule_id={rule}\n'))
    return dict(line.split('=', 1) for line in block.splitlines())
