#!/usr/bin/env python3
"""Makes calls through the Asterisk of a small system in ROOT, on loopback, and looks at which of them have a recording.
Takes root, for chroot. /etc/asterisk in ROOT is written anew.

    check_asterisk.py BUILD-DIR ROOT
"""

import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time
import wave

from loopback import (CALLS, FROM_HEADER_ONLY, IDENTIFIED_CALLS, SOURCE, Exchange, eventually, expect, fail, free_port)

build, root = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
SERVICE = build / 'tools/callrecordingd/callrecordingd'
RECORDINGS = root / 'var/spool/asterisk/monitor'
RECORDED_CALL = ('201', '0044123456', 3, FROM_HEADER_ONLY)
OTHER_CALL = ('500', '501', None, FROM_HEADER_ONLY)

PJSIP = '''[loopback]
type=transport
protocol=udp
bind=127.0.0.1:{port}
[caller]
type=endpoint
context=calls
disallow=all
allow=alaw
direct_media=no
trust_id_inbound=yes
[caller]
type=identify
endpoint=caller
match=127.0.0.1
[out]
type=aor
contact=sip:127.0.0.1:{called}
[out]
type=endpoint
aors=out
disallow=all
allow=alaw
direct_media=no
'''
MODULES = '''[modules]
autoload=yes
noload=chan_sip.so
noload=chan_skinny.so
noload=chan_unistim.so
noload=chan_iax2.so
noload=chan_mgcp.so
noload=chan_dahdi.so
noload=pbx_dundi.so
'''


class Switch(Exchange):
    """Asterisk, and somebody who answers every call."""

    def start_switch(self, listening):
        self.port, called = free_port(), free_port()
        media = free_port(200)
        configuration = root / 'etc/asterisk'
        extensions = (SOURCE / 'examples/asterisk/extensions.conf').read_text()
        (configuration / 'extensions.conf').write_text(extensions.replace('127.0.0.1:18080', listening))
        (configuration / 'pjsip.conf').write_text(PJSIP.format(port=self.port, called=called))
        (configuration / 'modules.conf').write_text(MODULES)
        (configuration / 'rtp.conf').write_text(f'[general]\nrtpstart={media}\nrtpend={media + 199}\n')
        shutil.rmtree(RECORDINGS, ignore_errors=True)
        self.start_called_side(called)
        self.start('asterisk', 'chroot', root, 'asterisk', '-f', '-n', '-vvvv')
        eventually('Asterisk is up', lambda: 'calls' in self.command('dialplan show calls') and
                   f':{self.port}' in self.command('pjsip show transports'), 30)

    def command(self, text):
        shown = subprocess.run(['chroot', root, 'asterisk', '-rx', text], capture_output=True, text=True, timeout=10)
        return shown.stdout

    def undecided(self):
        shown = re.search(r'UNDECIDED=(\d+)', self.command('dialplan show globals'))
        return int(shown[1]) if shown else 0

    def rules_and_seconds(self, calls, milliseconds=2000):
        """Makes the calls one after the other; what was recorded of each: the rule, and the seconds of sound."""
        found = []
        for call in calls:
            shutil.rmtree(RECORDINGS, ignore_errors=True)
            if not self.call(self.port, [call], milliseconds):
                fail(f'call {call} did not go through')
            time.sleep(.5)
            files = list(RECORDINGS.glob('*.wav'))
            if not files:
                found.append((None, 0))
                continue
            with wave.open(str(files[0])) as sound:
                rule = int(re.match(r'rule(\d+)-', files[0].name)[1])
                found.append((rule, sound.getnframes() / sound.getframerate()))
        return found

    def expect_rules(self, what, calls):
        found = self.rules_and_seconds(calls)
        expect(what, [rule for rule, _ in found], [rule for _, _, rule, _ in calls])
        short = [seconds for rule, seconds in found if rule is not None and seconds < 1]
        expect(f'{what}: recordings of less than a second', short, [])
        return len([rule for rule, _ in found if rule is not None])


with Switch() as switch:
    listening = f'127.0.0.1:{free_port()}'
    switch.start_service(SERVICE, '--listen', listening)
    switch.start_switch(listening)
    calls = CALLS + IDENTIFIED_CALLS
    count = switch.expect_rules('rules of the calls', calls)
    expect('undecided calls', switch.undecided(), 0)
    print(f'ok      {len(calls)} calls, {count} recordings, the ones under rules', flush=True)

    whole = switch.rules.read_text()
    switch.rules.write_text(whole.replace('recording_duration=3600', 'recording_duration=2', 1))
    time.sleep(.3)
    limited = switch.rules_and_seconds([RECORDED_CALL], 6000)[0]
    switch.rules.write_text(whole.replace('recording_duration=3600', 'recording_duration=soon', 1))
    time.sleep(.3)
    unlimited = switch.rules_and_seconds([RECORDED_CALL], 4000)[0]
    switch.rules.write_text(whole)
    expect('a warning', 'the duration of rule 3 is not a number of seconds' in switch.log('asterisk'), True)
    if limited[0] != 3 or not 1.5 <= limited[1] <= 3.5 or unlimited[1] < 3:
        fail(f'a call of 6 seconds under a rule of 2: rule and seconds: {limited}; without a limit: {unlimited}')
    print(f'ok      a duration of 2 seconds records {limited[1]:.1f} of 6 seconds', flush=True)

    switch.service.send_signal(signal.SIGSTOP)
    try:
        expect('the service hangs', switch.rules_and_seconds([RECORDED_CALL] * 2), [(None, 0)] * 2)
    finally:
        switch.service.send_signal(signal.SIGCONT)
    expect('undecided calls', switch.undecided(), 2)
    switch.end(switch.service)
    expect('the service has ended', switch.rules_and_seconds([RECORDED_CALL, OTHER_CALL]), [(None, 0)] * 2)
    expect('undecided calls', switch.undecided(), 4)
    print('ok      without an answer 4 calls go through unrecorded, and are counted as undecided', flush=True)
