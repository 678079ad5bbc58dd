"""The real programs, on free ports of the loopback, with everything in a directory of the caller."""
import json
import os
import re
import socket
import subprocess
import time
import urllib.parse
import urllib.request

LIMIT_S = 900  # only ends what hangs


def free_port():
    with socket.socket() as listener:
        listener.bind(('127.0.0.1', 0))
        return listener.getsockname()[1]


def wait_for(condition, what):
    """Until the condition is true; returns its value."""
    end = time.monotonic() + LIMIT_S
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise TimeoutError(f'{what}: not within {LIMIT_S} seconds')
        time.sleep(0.1)


def fetch(url):
    with urllib.request.urlopen(url, timeout=LIMIT_S) as answer:
        return answer.read()


class Program:
    """A server; ready when `ready`, a path of its own, is answered. Another program may have taken the port since it
    was found free: then it ends, and another port is tried."""

    def __init__(self, directory, name, command, ready):
        self.name = name
        for _ in range(10):
            self.port = free_port()
            self.log = open(os.path.join(directory, name + '.log'), 'wb')
            self.process = subprocess.Popen(
                command(self.port), stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log
            )
            if (
                wait_for(lambda: self.process.poll() is not None or self.answers(ready), name) is True
                and self.process.poll() is None
            ):
                return
            self.close()
        raise RuntimeError(f'{name} does not start; see {self.log.name}')

    def answers(self, path):
        try:
            fetch(self.url + path)
            return True
        except OSError:
            return False

    @property
    def url(self):
        return f'http://127.0.0.1:{self.port}'

    def close(self):
        self.process.terminate()
        try:
            self.process.wait(LIMIT_S)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.log.close()


def quick(rules):
    """The rules at another pace: what takes minutes takes seconds, and what takes no time stays so."""
    rules = re.sub(r'\bfor: \d+m', 'for: 1s', rules)
    return re.sub(r'keep_firing_for: \d+m', 'keep_firing_for: 1s', rules)


class Prometheus(Program):
    """`configuration`: the text below `global`; `data`: an OpenMetrics file that is there from the start."""

    def __init__(self, source, directory, configuration='', data=None, evaluation='1s', change=quick):
        self.source = source
        programs = os.path.join(source, 'build/programs/usr/bin')
        rules = os.path.join(source, 'fleet/prometheus')
        names = ('zelsensors-recording.yml', 'zelsensors-alerting.yml')
        for name in names:
            with open(os.path.join(rules, name), encoding='utf-8') as old, open(
                os.path.join(directory, name), 'w', encoding='utf-8'
            ) as new:
                new.write(change(old.read()))
        with open(os.path.join(directory, 'prometheus.yml'), 'w', encoding='utf-8') as file:
            file.write(
                f'global: {{scrape_interval: 1s, scrape_timeout: 1s, evaluation_interval: {evaluation}}}\n'
                f'rule_files: [{", ".join(names)}]\n{configuration}'
            )
        store = os.path.join(directory, 'data')
        if data:
            subprocess.run(
                [os.path.join(programs, 'promtool'), 'tsdb', 'create-blocks-from', 'openmetrics', data, store],
                check=True,
                stdout=subprocess.DEVNULL,
            )
        super().__init__(
            directory,
            'prometheus',
            lambda port: [
                os.path.join(programs, 'prometheus'),
                '--config.file=' + os.path.join(directory, 'prometheus.yml'),
                '--storage.tsdb.path=' + store,
                f'--web.listen-address=127.0.0.1:{port}',
                '--web.enable-lifecycle',
                '--web.console.templates=' + os.path.join(source, 'fleet/page'),
                '--web.console.libraries=' + os.path.join(source, 'fleet/page'),
                # What was filled in beforehand is no older for a slow machine.
                *(['--query.lookback-delta=1h'] if data else []),
            ],
            '/-/ready',
        )

    def query(self, query):
        answer = json.loads(fetch(self.url + '/api/v1/query?' + urllib.parse.urlencode({'query': query})))
        return answer['data']['result']

    def alerts(self):
        return json.loads(fetch(self.url + '/api/v1/alerts'))['data']['alerts']

    @property
    def page(self):
        return self.url + '/consoles/terminals.html'
