#!/usr/bin/env python3
"""Runs callrecordingd on loopback, and looks at its answers, files and end.

    service_test.py CALLRECORDINGD CALLRECORDINGCTL
"""
import http.client
import json
import os
import pathlib
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse

service, client = map(os.path.abspath, sys.argv[1:])
sample = (pathlib.Path(__file__).resolve().parent.parent / 'examples/sample/telephony/callrecordingdb').read_text()
failures = 0


def expect(what, found, wanted):
    global failures
    if found != wanted:
        failures += 1
        print(f'FAILED: {what}: found {found!r}, not {wanted!r}')


def eventually(what, ask, wanted):
    for _ in range(50):
        if ask() == wanted:
            return
        time.sleep(.1)
    expect(what, ask(), wanted)


class Unix(http.client.HTTPConnection):
    def connect(self):
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.settimeout(5)
        self.sock.connect(self.host)


class Service:
    """One running service, in a folder of its own."""

    def __init__(self, folder, *options, descriptors=1024):
        self.folder, self.path = folder, f'{folder}/socket'
        self.rules = pathlib.Path(folder, 'telephony/callrecordingdb')
        self.notices = open(f'{folder}/notices', 'a+')
        self.process = subprocess.Popen([service, '--config-dir', folder, '--socket', self.path, *options],
                                        stderr=self.notices, preexec_fn=lambda: resource.setrlimit(
                                            resource.RLIMIT_NOFILE, (descriptors, descriptors)))
        eventually('it listens', lambda: self.get('/healthz')[0] in (200, 503), True)

    def get(self, path, connection=None, method='GET'):
        try:
            connection = connection or Unix(self.path)
            connection.request(method, path)
            response = connection.getresponse()
            return response.status, response.read().decode()
        except OSError as error:
            return None, str(error)

    def decide(self, source, target, more=''):
        quoted = urllib.parse.urlencode({'from': source, 'to': target}, quote_via=urllib.parse.quote)
        return self.get(f'/decide?{quoted}{more}')

    def line(self, source, target):
        return self.decide(source, target, '&format=text')[1].rstrip('\n').split('\t')

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        expect('exit status', self.process.wait(10), 0)
        expect('the socket is gone', os.path.exists(self.path), False)


def test_answers(it):
    rows = [('201', '0044123456', ['yes', '3', '3600', '0', 'archive:/sales']),
            ('sip:201@PBX;user=phone', 'tel:0044-123456', ['yes', '3', '3600', '0', 'archive:/sales']),
            ('', '112', ['yes', '0', '', '1', 'archive:/emergency']),
            ('500', '501', ['no', '', '', '', ''])]
    for source, target, wanted in rows:
        expect(f'{source} to {target}', it.line(source, target), wanted)
    status, body = it.get('/decide?from=alice&from_host=pbx.example.com&to=450&to_host=x')
    answer = json.loads(body)
    shown = json.loads(subprocess.run([client, 'show', '1', '--config-dir', it.folder, '--json'],
                                      capture_output=True, text=True).stdout)
    expect('state', answer['state'], shown.pop('file_state'))
    expect('the beginning of the digest', shown.pop('file_digest')[:8], answer['state'])
    expect('the rule as the client prints it', (status, answer['recorded'], answer['rule']), (200, True, shown))
    listed = json.loads(subprocess.run([client, 'list', '--config-dir', it.folder, '--json'],
                                       capture_output=True, text=True).stdout)
    expect('/rules', json.loads(it.get('/rules')[1]), listed)


def test_bad_questions(it):
    for path, reason in [('/decide?to=1', 'from is missing'), ('/decide?from=1', 'to is missing'),
                         ('/decide?from=+491&to=1', 'from begins with a blank; write a "+" as %2B'),
                         ('/decide?from=1&to=2&from=3', 'from is given twice'),
                         ('/decide?from=1&to=2&form=3', 'there is no parameter form'),
                         ('/decide?from=1&to=2&format=xml', 'format is json or text')]:
        status, body = it.get(path)
        expect(path, (status, json.loads(body)['error']), (400, reason))
    expect('an unknown path', it.get('/x')[0], 404)
    expect('POST', it.get('/decide?from=1&to=2', method='POST')[0], 405)
    expect('a long line', it.get('/decide?from=1&to=' + '2' * 1000000)[0] in (None, 414, 431), True)


def test_reloads(it):
    it.rules.write_text(sample.replace('archive:/sales', 'archive:/new'))
    eventually('new rules', lambda: it.line('201', '0044123456')[-1], 'archive:/new')
    it.rules.write_text('{\nbroken')
    eventually('a broken file is said', lambda: 'callrecording_load_failing 1' in it.get('/metrics')[1], True)
    expect('old rules stay', it.line('201', '0044123456')[-1], 'archive:/new')
    it.rules.write_text(sample.replace('archive:/sales', 'never:'))
    eventually('a ban', lambda: it.line('201', '0044123456'), ['no', '3', '3600', '0', 'never:'])
    it.rules.unlink()
    eventually('no file, no rules', lambda: it.decide('201', '0044123456')[0:1] + tuple(it.line('1', '112')[:1]),
               (200, 'no'))
    it.rules.write_text(sample)
    eventually('rules again', lambda: it.line('1', '112')[0], 'yes')


def test_slow_clients(it):
    idle = []
    for _ in range(300):
        idle.append(socket.socket(socket.AF_UNIX))
        idle[-1].connect(it.path)
        idle[-1].send(b'GET /dec')
    kept = Unix(it.path)
    begin = time.monotonic()
    connections = set()
    for path in ['/decide?from=1&to=112&format=text', '/state'] * 100:
        expect('beside slow clients', it.get(path, kept)[0], 200)
        connections.add(kept.sock)
    expect('one connection for all', len(connections), 1)
    expect('nobody is held up', time.monotonic() - begin < 5, True)


def test_answer_file(it, file):
    it.decide('anonymous', '112', '&id=call-1')
    eventually('a line', lambda: file.exists() and 'call-1' in file.read_text(), True)
    line = json.loads(file.read_text().splitlines()[-1])
    expect('its fields', [line[key] for key in ('id', 'from', 'to', 'recorded', 'rule')],
           ['call-1', 'anonymous', '112', True, 0])
    file.rename(f'{file}.1')
    eventually('rotated', lambda: (it.decide('1', '2', '&id=call-2'), file.exists() and 'call-2' in file.read_text())[1], True)


def test_page(it):
    status, page = it.get('/?from=500&to=501')
    for part in ['Emergency calls', 'Not recorded: no enabled rule takes the call.', 'id="misses"', '<data value=']:
        expect(f'{part} on the page', part in page, True)
    expect('no scripts', (status, '<script' in page), (200, False))
    status, page = it.get('/?from=%3Cscript%3E&to=1')
    expect('escaped', '<script' in page, False)


def test_full_table(it):
    """More silent clients than the service has descriptors do not keep out a new one."""
    kept = Unix(it.path)
    it.get('/healthz', kept)
    before = kept.sock
    silent = []
    for _ in range(200):
        silent.append(socket.socket(socket.AF_UNIX))
        silent[-1].connect(it.path)
        silent[-1].send(b'GET /dec')
    expect('beside a full table', it.decide('1', '112')[0], 200)
    expect('a kept connection is not closed', (it.get('/healthz', kept)[0], kept.sock is before), (200, True))


def test_status(it):
    def run(*words):
        done = subprocess.run([client, *words, '--config-dir', it.folder], capture_output=True, text=True,
                              env={**os.environ, 'CALLRECORDINGD_SOCKETS': it.folder})
        return done.returncode, done.stdout, done.stderr

    expect('an edit waits', run('up', '3')[2],
           f'callrecordingctl: note: the service at {it.path} decides by the new rules\n')
    code, text, _ = run('status', '--json')
    expect('current', (code, [each['state'] for each in json.loads(text)['services']]), (0, ['current']))
    it.process.send_signal(signal.SIGSTOP)
    code, text, _ = run('status', '--json')
    expect('stopped', (code, json.loads(text)['services'][0]['problem']), (1, 'no answer in time'))
    it.process.send_signal(signal.SIGCONT)
    good = it.rules.read_text()
    it.rules.write_text('{\nbroken')
    eventually('old', lambda: json.loads(run('status', '--json')[1])['services'][0]['last_load_failed'], True)
    expect('state', json.loads(run('status', '--json')[1])['services'][0]['state'], 'old')
    it.rules.write_text(good)


with tempfile.TemporaryDirectory() as folder:
    os.mkdir(f'{folder}/telephony')
    file = pathlib.Path(folder, 'answers')
    it = Service(folder, '--answers', str(file))
    it.rules.write_text(sample)
    eventually('a file that comes later', lambda: it.line('1', '112')[0], 'yes')
    expect('mode of the socket', oct(os.stat(it.path).st_mode & 0o777), '0o660')
    for test in (test_answers, test_bad_questions, test_reloads, test_slow_clients, test_page):
        test(it)
    test_answer_file(it, file)
    expect('a second one', subprocess.run([service, '--config-dir', folder, '--socket', it.path],
                                          stderr=subprocess.PIPE).returncode, 1)
    it.process.kill()
    it.process.wait()
    again = Service(folder, descriptors=64)  # The socket of the one that was killed is replaced.
    expect('answers', 'callrecording_answers_total{answer="yes",rule="0"} 1\n' in
           (again.decide('1', '112'), again.get('/metrics')[1])[1], True)
    state = json.loads(again.get('/state')[1])
    expect('who decides since when', (f'digest="{state["digest"]}"' in again.get('/metrics')[1],
                                      f'rules_timestamp_seconds {state["loaded"]}\n' in again.get('/metrics')[1]),
           (True, True))
    test_full_table(again)
    test_status(again)
    again.end()
    os.rename(f'{folder}/telephony', f'{folder}/elsewhere')
    without = Service(folder)
    expect('no directory: undecided', without.decide('1', '112')[0], 503)
    os.rename(f'{folder}/elsewhere', f'{folder}/telephony')
    eventually('the directory is back', lambda: without.decide('1', '112')[0], 200)
    without.end()
print(f'{failures} failures')
sys.exit(failures > 0)
