#!/usr/bin/env python3
"""Makes calls through Kamailio and rtpengine on loopback, and looks at which of them have a recording.

    check_kamailio.py BUILD-DIR [--quick]
"""

import collections
import json
import pathlib
import re
import signal
import struct
import subprocess
import sys
import time
import urllib.parse

from loopback import (CALLS, FROM_HEADER_ONLY, IDENTIFIED_CALLS, SOURCE, Exchange, eventually, expect, fail, free_port,
                      is_taken, sample_rule)

EXAMPLE = SOURCE / 'examples/kamailio'
build = pathlib.Path(sys.argv[1]).resolve()
SERVICE = build / 'tools/callrecordingd/callrecordingd'
CLIENT = build / 'tools/callrecordingctl/callrecordingctl'
LIBRARY = build / 'src/libcallrecordingutils.so.1'
RECORDED_CALL = ('201', '0044123456', 3, FROM_HEADER_ONLY)
OTHER_CALL = ('500', '501', None, FROM_HEADER_ONLY)


def packets_of_flows(pcap):
    """How many packets of each direction a recording has; its frames are Ethernet, IPv4 and UDP."""
    data, at, flows = pcap.read_bytes(), 24, collections.Counter()
    while at + 16 <= len(data):
        length = struct.unpack_from('<I', data, at + 8)[0]
        ip = data[at + 30:at + 16 + length]
        flows[struct.unpack_from('>HH', ip, (ip[0] & 15) * 4)] += 1
        at += 16 + length
    return sorted(flows.values())


class Proxy(Exchange):
    """Kamailio with rtpengine, and somebody who answers every call."""

    def start_proxy(self, decider, *defines):
        self.recordings = self.folder / 'recordings'
        self.recordings.mkdir(exist_ok=True)
        self.port, control, called = free_port(), free_port(), free_port()
        first = free_port(500)
        self.control = f'unix:{self.folder}/kamailio_ctl'
        self.start('rtpengine', 'rtpengine', '--config-file=none', '--table=-1', '--interface=127.0.0.1',
                   f'--listen-ng=127.0.0.1:{control}', f'--port-min={first}', f'--port-max={first + 499}',
                   '--recording-method=pcap', '--recording-format=eth', f'--recording-dir={self.recordings}',
                   '--foreground', '--log-stderr', '--log-level=5', '--num-threads=2', '--delete-delay=0')
        self.start_called_side(called)
        eventually('rtpengine is up', lambda: is_taken(control))
        settings = {'LISTEN': f'udp:127.0.0.1:{self.port}', 'RTPENGINE': f'"udp:127.0.0.1:{control}"',
                    'NEXT_HOP': f'"sip:127.0.0.1:{called}"', 'DECIDER': f'"{EXAMPLE / decider}"',
                    'CONTROL': f'"{self.control}"'}
        arguments = [part for name, value in settings.items() for part in ('-A', f'{name}={value}')]
        arguments += [part for name in defines for part in ('-A', name)]
        self.start('kamailio', 'kamailio', '-DD', '-E', '-f', EXAMPLE / 'kamailio.cfg', '-Y', self.folder, *arguments,
                   env={'PATH': '/usr/sbin:/usr/bin:/sbin:/bin', 'QUVA_PATH': f'{self.folder}/',
                        'CALLRECORDINGUTILS_LIBRARY': str(LIBRARY),
                        'CALLRECORDINGD_SOCKET': str(self.folder / 'callrecordingd.sock'),
                        'PYTHONDONTWRITEBYTECODE': '1'})
        eventually('Kamailio is up', lambda: len(self.counts()) == 3)

    def counts(self):
        """How many calls Kamailio says were recorded, not recorded and undecided."""
        shown = subprocess.run(['kamcmd', '-s', self.control, 'stats.get_statistics', 'script:'],
                               capture_output=True, text=True, timeout=10).stdout
        return {name: int(count) for name, count in re.findall(r'script:calls_(\w+) = (\d+)', shown)}

    def recorded(self):
        """By number of the call in its table: metadata, and the packets of each direction."""
        found = {}
        for path in (self.recordings / 'metadata').glob('*.txt'):
            number = int(re.match(r'rtpengine-meta-(\d+)', path.name)[1])
            lines = path.read_text().splitlines()
            fields = next(line for line in lines if line.startswith('rule:')).split('|')
            metadata = {key: urllib.parse.unquote(value) for key, value in (field.split(':', 1) for field in fields)}
            found[number] = (metadata, packets_of_flows(pathlib.Path(lines[0])))
        return found

    def forget_recordings(self):
        for path in self.recordings.glob('*/*'):
            path.unlink()

    def rules_of(self, calls, peer='127.0.0.1', milliseconds=1000):
        """Makes the calls, and returns the rule under which each was recorded."""
        self.forget_recordings()
        if not self.call(self.port, calls, milliseconds, peer):
            fail('a call did not go through')
        time.sleep(.3)  # rtpengine writes the metadata after the call.
        recorded = self.recorded()
        for number, (_, flows) in recorded.items():
            if len(flows) != 2 or flows[0] < milliseconds / 20 * .4:
                fail(f'call {calls[number]}: packets of each direction: {flows}')
        return [int(recorded[number][0]['rule']) if number in recorded else None for number in range(len(calls))]

    def expect_decided(self, what, calls, **options):
        expect(what, self.rules_of(calls, **options), [rule for _, _, rule, _ in calls])

    def edit(self, *command):
        subprocess.run([CLIENT, *command, '--config-dir', self.folder], check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=20)
        time.sleep(.2)  # For the service, which watches the directory.


def check_calls(proxy, calls):
    begin = time.monotonic()
    proxy.expect_decided('rules of the calls', calls)
    for number, (metadata, _) in proxy.recorded().items():
        rule = sample_rule(calls[number][2])
        expect('metadata', (metadata['to'], metadata['for'], metadata['about']),
               (rule['record_to'], rule['recording_duration'], rule['description']))
    count = len(proxy.recorded())
    expect('counts', proxy.counts(), {'recorded': count, 'not_recorded': len(calls) - count, 'undecided': 0})
    print(f'ok      {len(calls)} calls, {count} recordings, the ones under rules, with media of both sides '
          f'({time.monotonic() - begin:.0f} s)', flush=True)


def check_replay(proxy, calls):
    """A replay finds the recordings of these calls, which were just made, and misses one without media."""
    table = proxy.folder / 'made.csv'
    host = 'pbx.example.com'
    table.write_text('id,from,to\n' + ''.join(f'meta-{number},sip:{caller}@{host},sip:{called}@{host}\n'
                                              for number, (caller, called, *_) in enumerate(calls)))

    def outcomes():
        report = subprocess.run([CLIENT, 'replay', table, '--recordings', proxy.recordings / 'metadata', '--id-column',
                                 'id', '--json', '--config-dir', proxy.folder], capture_output=True, check=True).stdout
        found = json.loads(report)['reconciliation']
        return [found[name] for name in ('recorded', 'missing', 'unexpected')] + [found['lost']['calls']]

    count = sum(rule is not None for _, _, rule, _ in calls)
    expect('a replay with the recordings', outcomes(), [count, 0, 0, 0])
    pcap = next((proxy.recordings / 'pcaps').iterdir())
    pcap.write_bytes(pcap.read_bytes()[:24])  # What rtpengine writes of a call without media.
    expect('a replay without the packets of one', outcomes(), [count - 1, 1, 0, 1])
    print(f'ok      a replay finds {count} recordings, and misses the one whose packets are taken away', flush=True)


def check_untrusted_peer(proxy):
    stranger = [(caller, called, {'anonymous': None, '201': 3}[caller], header)
                for caller, called, _, header in IDENTIFIED_CALLS]
    proxy.expect_decided('identity asserted by a stranger', stranger, peer='127.0.0.2')
    print('ok      a stranger\'s P-Asserted-Identity is not believed', flush=True)


def check_durations(proxy):
    """Of two calls of 5 seconds one may be recorded for a second, the other for a duration that is no number."""
    odd_text = 'a|b c; record-call=off %41 "ü" $ru'
    for caller, called, text, duration in [('701', '702', odd_text, '1'), ('703', '704', 'plain', 'soon')]:
        proxy.edit('add', '--from', caller, '--to', called, '--record-to', text, '--description', text,
                   '--duration', duration)
    calls = [('701', '702', None, FROM_HEADER_ONLY), ('703', '704', None, FROM_HEADER_ONLY)]
    proxy.forget_recordings()
    if not proxy.call(proxy.port, calls, 5000):
        fail('a call did not go through')
    time.sleep(.3)
    recorded = proxy.recorded()
    limited, unlimited = (recorded[number][1] for number in (0, 1))
    if not (len(limited) == len(unlimited) == 2 and 40 <= limited[0] <= limited[1] <= 170 and unlimited[0] >= 200):
        fail(f'packets of a second: {limited}, of all 5 seconds: {unlimited}')
    metadata = recorded[0][0]
    expect('odd texts', (metadata['to'], metadata['about']), (odd_text, odd_text))
    expect('a warning', "the duration 'soon' is not a number of seconds" in proxy.log('kamailio'), True)
    print(f'ok      a duration of 1 second records {limited} packets, "soon" {unlimited} and a warning', flush=True)


def check_changes(proxy, all_processes_follow):
    """A process that decides by itself, and had no call since a change, still has the rules from before it when the
    file breaks: only rules that did not change are sure then."""
    new = OTHER_CALL[:2]
    proxy.edit('add', '--from', new[0], '--to', new[1], '--record-to', 'archive:/new', '--description', 'New')
    rule = proxy.rules_of([OTHER_CALL])[0]
    if rule is None:
        fail('the call after a rule was added is not recorded')
    proxy.edit('disable', str(rule))
    expect('after the rule was disabled', proxy.rules_of([OTHER_CALL]), [None])
    proxy.edit('enable', str(rule))
    expect('after the rule was enabled', proxy.rules_of([OTHER_CALL]), [rule])
    whole = proxy.rules.read_text()
    proxy.rules.write_text('{\n')
    time.sleep(.2)
    calls = [RECORDED_CALL] * 4 + [(*new, rule, FROM_HEADER_ONLY)] * (4 if all_processes_follow else 0)
    proxy.expect_decided('while the file is broken', calls)
    proxy.rules.write_text(whole)
    proxy.edit('delete', str(rule))
    expect('after the rule was deleted', proxy.rules_of([OTHER_CALL]), [None])
    print('ok      the next call follows each change; while the file is broken the old rules decide', flush=True)


def expect_undecided(proxy, what, calls):
    before = proxy.counts()['undecided']
    expect(what, proxy.rules_of(calls), [None] * len(calls))
    expect(f'{what}: counted as undecided', proxy.counts()['undecided'] - before, len(calls))
    print(f'ok      {what}: {len(calls)} calls go through unrecorded, and are counted as undecided', flush=True)


def check_outages(proxy, calls):
    proxy.service.send_signal(signal.SIGSTOP)
    try:
        expect_undecided(proxy, 'the service hangs', calls)
    finally:
        proxy.service.send_signal(signal.SIGCONT)
    time.sleep(1.1)  # Each process of Kamailio asks again after a second.
    proxy.expect_decided('after the service hung', [RECORDED_CALL])
    proxy.service.kill()
    proxy.end(proxy.service)
    expect_undecided(proxy, 'the service has ended', calls)
    proxy.start_service(SERVICE)
    time.sleep(1.1)
    proxy.expect_decided('after the service was started again', [RECORDED_CALL])
    print('ok      decided again once the service is back', flush=True)


def check_by_service():
    with Proxy() as proxy:
        proxy.start_service(SERVICE)
        proxy.start_proxy('record_by_service.py')
        check_calls(proxy, CALLS + IDENTIFIED_CALLS)
        proxy.expect_decided('calls to replay', CALLS)
        check_replay(proxy, CALLS)
        check_untrusted_peer(proxy)
        check_durations(proxy)
        check_changes(proxy, all_processes_follow=True)
        check_outages(proxy, [RECORDED_CALL, OTHER_CALL] * 4)


def check_by_library():
    with Proxy() as proxy:
        proxy.start_proxy('record_by_library.py')
        check_calls(proxy, CALLS + IDENTIFIED_CALLS)
        check_changes(proxy, all_processes_follow=False)


def check_fail_closed():
    with Proxy() as proxy:
        proxy.start_proxy('record_by_service.py', 'FAIL_CLOSED')
        expect('calls without a decision, failing closed', proxy.call(proxy.port, [RECORDED_CALL]), False)
        expect('counts', proxy.counts(), {'recorded': 0, 'not_recorded': 0, 'undecided': 1})
        proxy.start_service(SERVICE)
        time.sleep(1.1)
        proxy.expect_decided('with the service, failing closed', [RECORDED_CALL, OTHER_CALL])
        print('ok      failing closed, a call without a decision is refused', flush=True)


def check_quickly():
    with Proxy() as proxy:
        proxy.start_service(SERVICE)
        proxy.start_proxy('record_by_service.py')
        check_calls(proxy, CALLS[:6] + IDENTIFIED_CALLS)
        proxy.expect_decided('calls to replay', CALLS[:6])
        check_replay(proxy, CALLS[:6])
        check_outages(proxy, [RECORDED_CALL, OTHER_CALL])


for check in [check_quickly] if '--quick' in sys.argv else [check_by_service, check_by_library, check_fail_closed]:
    print(check.__name__.replace('_', ' '), flush=True)
    check()
