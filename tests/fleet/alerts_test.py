"""From the provider to the webhook with the real programs: provider, zelhost, node_exporter, Prometheus, Alertmanager.
Seven things go wrong on a terminal, one after the other; each gives its own alert at the webhook and no other, and each
alert ends when the terminal is mended. Everything waits for what has to come, at a quick pace.

usage: alerts_test.py SOURCE-DIRECTORY ZELHOST
"""
import http.server
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

import servers

SOURCE = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else os.getcwd()
ZELHOST = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else ''
sys.path.insert(0, os.path.join(SOURCE, 'fleet/simulation'))
from children import alertmanager  # noqa: E402  # found by the line above
from terminals import scenario_of  # noqa: E402

PROGRAMS = os.path.join(SOURCE, 'build/programs')


class Webhook(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        message = json.loads(self.rfile.read(int(self.headers['Content-Length'])))
        with self.server.lock:
            for alert in message['alerts']:
                self.server.told.append(
                    (alert['status'], alert['labels']['alertname'], alert['labels'].get('instance'))
                )
        self.send_response(200)
        self.end_headers()

    def log_message(self, *arguments):
        pass


class Terminal:
    """zelhost and a node_exporter; `name` is its instance."""

    def __init__(self, directory, name):
        self.directory = os.path.join(directory, name)
        self.pages = os.path.join(self.directory, 'pages')
        os.makedirs(self.pages)
        os.chmod(self.directory, 0o755)
        self.page = os.path.join(self.pages, 'zelsensors.prom')
        self.zelhost = None
        self.exporter = None
        with open(os.path.join(SOURCE, 'chipsim/scenarios/healthy.toml'), encoding='utf-8') as file:
            self.healthy = file.read()
        self.play('healthy')
        self.exporter = servers.Program(self.directory, 'node_exporter', self.exporter_command, '/metrics')

    def exporter_command(self, port):
        return [
            os.path.join(PROGRAMS, 'usr/bin/prometheus-node-exporter'),
            f'--web.listen-address=127.0.0.1:{port}',
            '--collector.disable-defaults',
            '--collector.textfile',
            '--collector.textfile.directory=' + self.pages,
        ]

    def play(self, kind):
        """Starts zelhost anew on a terminal of this kind. The page of before stays until it writes the next, or a slow
        machine would have none for a while."""
        if self.zelhost:
            self.zelhost.kill()
            self.zelhost.wait()
        scenario = os.path.join(self.directory, 'scenario.toml')
        with open(scenario, 'w', encoding='utf-8') as file:
            file.write(scenario_of(kind, 0, self.healthy))
        with open(os.path.join(self.directory, 'zelhost.log'), 'ab') as log:
            self.zelhost = subprocess.Popen(
                [ZELHOST, 'metrics', '--scenario', scenario, '--every', '0.5', '--to', self.page],
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
            )

    def close(self):
        self.zelhost.kill()
        self.zelhost.wait()
        if self.exporter:
            self.exporter.close()


def pace(rules):
    """Seconds for minutes, and looks back that hold some scrapes of one a second. What a slow machine causes too lasts
    longer than any pause of its: scrapes that come too late, and pages. As with the shipped times, a page is stale only
    after longer than a series that has ended is looked back at."""
    head, *alerts = re.split(r'(?=- alert: )', rules)
    for number, text in enumerate(alerts):
        if text.startswith('- alert: TerminalPageStale'):
            text = text.replace('for: 5m', 'for: 15s')
        elif re.match('- alert: (TerminalGone|ShopGone)', text):
            text = text.replace('for: 10m', 'for: 10s')
        alerts[number] = re.sub(
            r'(keep_firing_for|for): (\d+)m', lambda found: f'{found[1]}: {min(2, int(found[2]))}s', text
        )
    return ''.join([head, *alerts]).replace('[5m]', '[15s]').replace('[15m]', '[30s]')


class AlertsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.mkdtemp(prefix='zelsensors-alerts-')
        os.chmod(cls.directory, 0o755)
        cls.addClassCleanup(shutil.rmtree, cls.directory)
        cls.webhook = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Webhook)
        cls.webhook.told = []
        cls.webhook.lock = threading.Lock()
        threading.Thread(target=cls.webhook.serve_forever, daemon=True).start()
        cls.addClassCleanup(cls.webhook.server_close)
        cls.addClassCleanup(cls.webhook.shutdown)
        # The neighbour keeps the shop from being gone, and shows that an alert is of one terminal alone.
        cls.terminal, cls.neighbour = Terminal(cls.directory, 'till1'), Terminal(cls.directory, 'till2')
        cls.addClassCleanup(cls.neighbour.close)
        cls.addClassCleanup(cls.terminal.close)
        with open(os.path.join(SOURCE, 'fleet/alertmanager/alertmanager.yml'), encoding='utf-8') as file:
            configuration = file.read().replace(
                'http://127.0.0.1:9095/', f'http://127.0.0.1:{cls.webhook.server_port}/'
            )
        configuration = re.sub(r'^ *active_time_intervals:.*\n', '', configuration, flags=re.M)
        configuration = re.sub(r'group_(wait|interval): .*', r'group_\1: 1s', configuration)
        path = os.path.join(cls.directory, 'alertmanager.yml')
        with open(path, 'w', encoding='utf-8') as file:
            file.write(configuration)
        cls.alertmanager = servers.Program(
            cls.directory,
            'alertmanager',
            lambda port: [
                *alertmanager(PROGRAMS),
                '--config.file=' + path,
                '--storage.path=' + os.path.join(cls.directory, 'am'),
                f'--web.listen-address=127.0.0.1:{port}',
                '--cluster.listen-address=',
            ],
            '/-/ready',
        )
        cls.addClassCleanup(cls.alertmanager.close)
        targets = ', '.join(
            f"{{targets: ['127.0.0.1:{terminal.exporter.port}'], labels: {{instance: {name}, shop: '1'}}}}"
            for name, terminal in (('till1', cls.terminal), ('till2', cls.neighbour))
        )
        cls.prometheus = servers.Prometheus(
            SOURCE,
            cls.directory,
            change=pace,
            configuration=f'''
alerting: {{alertmanagers: [{{static_configs: [{{targets: ['127.0.0.1:{cls.alertmanager.port}']}}]}}]}}
scrape_configs:
  - job_name: terminals
    params: {{'collect[]': [textfile]}}
    static_configs: [{targets}]
    metric_relabel_configs: [{{source_labels: [__name__], regex: 'zelsensors_.+|node_textfile_.+', action: keep}}]
''',
        )
        cls.addClassCleanup(cls.prometheus.close)

    def settled(self):
        """Healthy, with no alert, pending or firing, and nothing that Alertmanager has still to end."""

        def calm():
            states = {
                series['metric']['instance']: series['value'][1]
                for series in self.prometheus.query('instance:zelsensors_state')
            }
            told = json.loads(servers.fetch(self.alertmanager.url + '/api/v2/alerts'))
            return states == {'till1': '0', 'till2': '0'} and not self.prometheus.alerts() and not told

        servers.wait_for(calm, 'a healthy terminal without alerts')

    def told(self):
        with self.webhook.lock:
            return list(self.webhook.told)

    def gives(self, alert, go_wrong, mend):
        self.settled()
        self.webhook.told.clear()
        go_wrong()
        servers.wait_for(
            lambda: ('firing', alert, 'till1') in self.told(), f'{alert} at the webhook; told: {self.told()}'
        )
        firing = [each['labels'] for each in self.prometheus.alerts() if each['state'] == 'firing']
        self.assertEqual(len(firing), 1, firing)
        mend()
        servers.wait_for(lambda: ('resolved', alert, 'till1') in self.told(), f'the end of {alert}')
        self.settled()
        # The end of an earlier alert may be told once more: Prometheus repeats it for a while.
        self.assertEqual({told for told in self.told() if told[0] == 'firing'}, {('firing', alert, 'till1')})

    def test_program_stopped(self):
        self.gives(
            'TerminalPageStale',
            lambda: self.terminal.zelhost.send_signal(signal.SIGSTOP),
            lambda: self.terminal.zelhost.send_signal(signal.SIGCONT),
        )

    def test_program_ended(self):
        def end():
            self.terminal.zelhost.terminate()
            self.terminal.zelhost.wait()

        self.gives('TerminalPageMissing', end, lambda: self.terminal.play('healthy'))

    def test_file_broken(self):
        def spoil():
            self.terminal.zelhost.kill()
            self.terminal.zelhost.wait()
            with open(self.terminal.page, 'a', encoding='utf-8') as page:
                page.write('zelsensors_temperature_celsius{sensor="CPU\n')

        self.gives('TerminalPageBroken', spoil, lambda: self.terminal.play('healthy'))

    def test_provider_at_status_16(self):
        self.gives(
            'TerminalProviderFailing', lambda: self.terminal.play('driverless'), lambda: self.terminal.play('healthy')
        )

    def test_log_full(self):
        self.gives('TerminalLogFull', lambda: self.terminal.play('full'), lambda: self.terminal.play('healthy'))

    def test_sensor_without_a_reading(self):
        self.gives('TerminalSensorUnread', lambda: self.terminal.play('dying'), lambda: self.terminal.play('healthy'))

    def test_terminal_gone(self):
        def go():
            self.terminal.exporter.process.terminate()
            self.terminal.exporter.process.wait()

        def answers():
            exporter = self.terminal.exporter
            # Another program may have the port for a moment.
            if exporter.process.poll() is not None:
                exporter.process = subprocess.Popen(
                    self.terminal.exporter_command(exporter.port),
                    stdin=subprocess.DEVNULL,
                    stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL,
                )
            return exporter.answers('/metrics')

        def come_back():
            servers.wait_for(answers, 'node_exporter on the port that it had')

        self.gives('TerminalGone', go, come_back)


if __name__ == '__main__':
    for program in ('prometheus', 'prometheus-alertmanager', 'prometheus-node-exporter'):
        if not os.access(os.path.join(PROGRAMS, 'usr/bin', program), os.X_OK):
            print(f'SKIPPED: no {program} under build/programs; ./check --all unpacks it')
            sys.exit(77)
    unittest.main(verbosity=2, failfast=True)
