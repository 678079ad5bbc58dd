"""fleet/try from start to end: it says which address to open, what is there shows each kind of trouble, Alertmanager
reports to the receiver, everything listens on the loopback alone, and Ctrl-C leaves no process.

usage: try_test.py SOURCE-DIRECTORY
"""
import json
import os
import re
import signal
import subprocess
import sys
import threading
import unittest
import urllib.parse

import servers

SOURCE = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else os.getcwd()
# By what fleet/simulation/terminals.py gives to 200 terminals.
EXPECTED = {
    'TerminalSensorFatal',
    'TerminalSensorCritical',
    'TerminalSensorUnread',
    'TerminalPageStale',
    'TerminalPageMissing',
    'TerminalProviderFailing',
    'TerminalLogFull',
    'TerminalGone',
    'ShopGone',
}


def processes_here():
    """The processes that name build/fleet of this tree in their command lines."""
    found = []
    for name in os.listdir('/proc'):
        try:
            with open(f'/proc/{name}/cmdline', 'rb') as file:
                if os.path.join(SOURCE, 'build/fleet/').encode() in file.read():
                    found.append(int(name))
        except OSError:
            pass
    return found


def listeners_of(processes):
    """The local addresses, in the kernel's hexadecimal, on which these processes listen."""
    inodes = set()
    for process in processes:
        for descriptor in os.listdir(f'/proc/{process}/fd'):
            try:
                target = os.readlink(f'/proc/{process}/fd/{descriptor}')
            except OSError:
                continue
            if target.startswith('socket:['):
                inodes.add(target[8:-1])
    addresses = []
    for table in ('tcp', 'tcp6'):
        with open(f'/proc/net/{table}', encoding='ascii') as file:
            for line in list(file)[1:]:
                fields = line.split()
                if fields[3] == '0A' and fields[9] in inodes:
                    addresses.append(fields[1].split(':')[0])
    return addresses


class TryTest(unittest.TestCase):
    def test_from_start_to_end(self):
        self.assertEqual(processes_here(), [], 'an earlier one runs still')
        run = subprocess.Popen(
            [os.path.join(SOURCE, 'fleet/try')],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            encoding='utf-8',
            start_new_session=True,
        )
        lines = []
        reader = threading.Thread(target=lambda: lines.extend(iter(run.stdout.readline, '')))
        reader.start()
        try:
            url = servers.wait_for(lambda: run.poll() is not None or self.address(lines), 'the address')
            self.assertIsInstance(url, str, ''.join(lines))
            self.assertIn(b'<title>Terminals</title>', servers.fetch(url))
            base = url.split('/consoles')[0]

            def firing():
                alerts = json.loads(servers.fetch(base + '/api/v1/alerts'))['data']['alerts']
                return {alert['labels']['alertname'] for alert in alerts if alert['state'] == 'firing'}

            servers.wait_for(lambda: EXPECTED <= firing(), 'the alerts')
            query = base + '/api/v1/query?' + urllib.parse.urlencode({'query': 'count(instance:zelsensors_state)'})
            self.assertEqual(json.loads(servers.fetch(query))['data']['result'][0]['value'][1], '200')
            servers.wait_for(
                lambda: {name for name in EXPECTED if f' {name}: ' in ''.join(lines)} == EXPECTED, 'the receiver'
            )
            servers.wait_for(
                lambda: 'resolved' in ''.join(line for line in lines if ' --- ' not in line), 'something resolved'
            )
            addresses = listeners_of([run.pid, *processes_here()])
            self.assertGreaterEqual(len(addresses), 4)
            self.assertEqual(set(addresses), {'0100007F'}, 'something listens beyond 127.0.0.1')
        finally:
            # What a terminal's Ctrl-C does.
            os.killpg(run.pid, signal.SIGINT)
            status = run.wait(servers.LIMIT_S)
            reader.join()
        self.assertEqual(status, 0, ''.join(lines))
        self.assertTrue(lines[-1].startswith('Ended.'), lines[-1])
        self.assertEqual(processes_here(), [])
        # Of the shop that is gone, from then on, Alertmanager keeps each terminal to itself.
        told = ''.join(lines).split(' --- ')
        first = next(number for number, message in enumerate(told) if 'ShopGone' in message)
        self.assertNotIn('shop0008:9100: does not answer', ''.join(told[first:]))

    @staticmethod
    def address(lines):
        found = re.search(r'http://127\.0\.0\.1:\d+/consoles/terminals\.html', ''.join(lines))
        return found[0] if found else None


if __name__ == '__main__':
    if not os.access(os.path.join(SOURCE, 'build/programs/usr/bin/prometheus-alertmanager'), os.X_OK):
        print('SKIPPED: no prometheus-alertmanager under build/programs; ./check --all unpacks it')
        sys.exit(77)
    unittest.main(verbosity=2)
