#!/usr/bin/env python3
"""A real Prometheus looks at three machines with services, of which one stays behind. Usage: check_alerts.py BUILD-DIR"""
import functools
import http.server
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading

import fleet
from fleet import Machine, Service, Writer, ask, eventually, expect, must, rules

build = pathlib.Path(sys.argv[1]).resolve()
client, daemon = build / 'tools/callrecordingctl/callrecordingctl', build / 'tools/callrecordingd/callrecordingd'
example = fleet.source / 'examples/prometheus'


class Quiet(http.server.SimpleHTTPRequestHandler):
    """In the place of a node exporter: it shows the text file."""

    def log_message(self, *_):
        pass


def exporter(machine):
    server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), functools.partial(Quiet, directory=str(machine.folder)))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


def configure(folder, services, exporters):
    """The example with loopback ports, and seconds for minutes."""
    def job(name, path, ports):
        targets = [{'targets': [f'127.0.0.1:{port}'], 'labels': {'machine': machine}} for machine, port in ports.items()]
        return {'job_name': name, 'metrics_path': path, 'static_configs': targets}
    alerts = re.sub(r'for: \d+m', 'for: 3s', (example / 'alerts.yml').read_text())
    pathlib.Path(folder, 'alerts.yml').write_text(alerts)
    pathlib.Path(folder, 'prometheus.yml').write_text(json.dumps({
        'global': {'scrape_interval': '1s', 'evaluation_interval': '1s'}, 'rule_files': ['alerts.yml'],
        'scrape_configs': [job('callrecordingd', '/metrics', services), job('node', '/callrecording.prom', exporters)]}))


def main(folder):
    for name in example.glob('*.yml'):
        shutil.copy(name, folder)
    must('promtool', 'check', 'config', example / 'prometheus.yml')
    must('promtool', 'test', 'rules', example / 'alerts_test.yml')
    json.loads((example / 'dashboard.json').read_text())
    bare = fleet.repository(folder)
    ada = Writer(folder, 'ada', bare)
    ada.publish(rules)
    machines = {name: Machine(f'{folder}/{name}', client, bare) for name in ('pbx1', 'pbx2', 'pbx3')}
    for machine in machines.values():
        expect('a pull', machine.pull()[0], 0)
    services = {name: Service(daemon, machine) for name, machine in machines.items()}
    configure(folder, {name: service.port for name, service in services.items()},
              {name: exporter(machine) for name, machine in machines.items()})
    port = fleet.free_port()
    prometheus = subprocess.Popen(['prometheus', f'--config.file={folder}/prometheus.yml', f'--storage.tsdb.path={folder}/data',
                                   f'--web.listen-address=127.0.0.1:{port}'], stderr=subprocess.DEVNULL)

    def firing():
        found = json.loads(ask(port, '/api/v1/alerts') or '{"data": {"alerts": []}}')['data']['alerts']
        return {(each['labels']['alertname'], each['labels'].get('machine')) for each in found if each['state'] == 'firing'}

    def seen():
        found = json.loads(ask(port, '/api/v1/query?query=callrecording_rules_info') or '{"data": {"result": []}}')
        return len(found['data']['result'])
    try:
        eventually('three machines are seen', seen, 3, 60)
        expect('nothing fires', firing(), set())
        ada.publish(rules.replace('7200', '7300'))
        for name in ('pbx1', 'pbx2'):
            expect('a pull', machines[name].pull()[0], 0)
        eventually('one is behind', firing, {('CallRecordingMachineBehind', 'pbx3')}, 60)
        machines['pbx3'].pull()
        eventually('and has caught up', firing, set(), 60)
        services.pop('pbx2').end()
        machines['pbx1'].run('delete', '3')
        machines['pbx1'].pull()
        wanted = {('CallRecordingNotHeardOf', 'pbx2'), ('CallRecordingPullFails', 'pbx1')}
        eventually('one is silent, and one was edited', lambda: wanted <= firing(), True, 60)
    finally:
        prometheus.terminate()
        prometheus.wait()
        for service in services.values():
            service.end()


with tempfile.TemporaryDirectory() as folder:
    main(folder)
print(f'{fleet.failures} failures')
sys.exit(fleet.failures > 0)
