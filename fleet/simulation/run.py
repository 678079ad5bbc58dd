"""What fleet/try starts, once everything is built: terminals, Prometheus, Alertmanager, receiver, on the loopback."""
import os
import re
import shutil
import signal
import sys
import threading
import time
import urllib.request

from children import Children, alertmanager, free_port
from receiver import Receiver
from terminals import Exporters, Pages

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAMS = os.path.join(SOURCE, 'build/programs/usr/bin')
DIRECTORY = os.path.join(SOURCE, 'build/fleet')
TERMINALS = 200
START_S = 120  # only ends what hangs


def say(text):
    print(text, flush=True)


def read(*path):
    with open(os.path.join(SOURCE, 'fleet', *path), encoding='utf-8') as file:
        return file.read()


def write(name, text):
    with open(os.path.join(DIRECTORY, name), 'w', encoding='utf-8') as file:
        file.write(text)


def quick(rules):
    """The same rules twenty times as quick: nobody waits ten minutes to see an alert. Pages come every 5 seconds, so
    the looks back are half a minute and more."""
    rules = re.sub(r'(for): (\d+)m', lambda found: f'{found[1]}: {3 * int(found[2])}s', rules)
    return rules.replace('[5m]', '[30s]').replace('[15m]', '[90s]')


def configure(alertmanager_port, receiver_port):
    """The shipped examples, with this machine's ports and a quicker pace. Here shops never close."""
    for name in ('zelsensors-recording.yml', 'zelsensors-alerting.yml'):
        write('rules/' + name, quick(read('prometheus', name)))
    prometheus = read('prometheus/prometheus.yml').replace('127.0.0.1:9093', f'127.0.0.1:{alertmanager_port}')
    prometheus = prometheus.replace('scrape_interval: 60s', 'scrape_interval: 5s').replace(
        'evaluation_interval: 30s', 'evaluation_interval: 5s'
    )
    write('prometheus.yml', prometheus.replace('global:\n', 'global:\n  scrape_timeout: 5s\n'))
    alertmanager = read('alertmanager/alertmanager.yml').replace(
        'http://127.0.0.1:9095/', f'http://127.0.0.1:{receiver_port}/'
    )
    alertmanager = re.sub(r'^ *active_time_intervals:.*\n', '', alertmanager, flags=re.M)
    for slow, quicker in (('group_wait: 30s', 'group_wait: 5s'), ('group_wait: 2m', 'group_wait: 15s')):
        alertmanager = alertmanager.replace(slow, quicker)
    write('alertmanager.yml', re.sub(r'group_interval: .*', 'group_interval: 10s', alertmanager))


def wait_until_ready(url, child, log):
    end = time.monotonic() + START_S
    while True:
        if child.poll() is not None:
            raise RuntimeError(f'a program has ended at once; see {log}')
        try:
            with urllib.request.urlopen(url, timeout=5):
                return
        except OSError:
            if time.monotonic() > end:
                raise RuntimeError(f'{url} is not answered; see {log}') from None
        time.sleep(0.1)


def start(children):
    shutil.rmtree(DIRECTORY, ignore_errors=True)
    for name in ('rules', 'terminals', 'pages'):
        os.makedirs(os.path.join(DIRECTORY, name))
    zelhost = os.environ.get('ZELHOST') or os.path.join(SOURCE, 'build/release/host/zelhost')
    pages = Pages(children, zelhost, os.path.join(SOURCE, 'chipsim/scenarios'), os.path.join(DIRECTORY, 'pages'), '5s')
    receiver = Receiver(say)
    exporters = Exporters(pages)
    exporters.write_targets(os.path.join(DIRECTORY, 'terminals/all.json'), TERMINALS)
    alertmanager_port, prometheus_port = free_port(9093), free_port(9090)
    configure(alertmanager_port, receiver.server_port)
    log = os.path.join(DIRECTORY, 'alertmanager.log')
    teller = children.start(
        [
            *alertmanager(os.path.join(SOURCE, 'build/programs')),
            '--config.file=' + os.path.join(DIRECTORY, 'alertmanager.yml'),
            '--storage.path=' + os.path.join(DIRECTORY, 'alertmanager'),
            f'--web.listen-address=127.0.0.1:{alertmanager_port}',
            '--cluster.listen-address=',
        ],
        log,
    )
    wait_until_ready(f'http://127.0.0.1:{alertmanager_port}/-/ready', teller, log)
    log = os.path.join(DIRECTORY, 'prometheus.log')
    prometheus = children.start(
        [
            os.path.join(PROGRAMS, 'prometheus'),
            '--config.file=' + os.path.join(DIRECTORY, 'prometheus.yml'),
            '--storage.tsdb.path=' + os.path.join(DIRECTORY, 'prometheus'),
            f'--web.listen-address=127.0.0.1:{prometheus_port}',
            '--web.console.templates=' + os.path.join(SOURCE, 'fleet/page'),
            '--web.console.libraries=' + os.path.join(SOURCE, 'fleet/page'),
        ],
        log,
    )
    wait_until_ready(f'http://127.0.0.1:{prometheus_port}/-/ready', prometheus, log)
    # Its page has to be written once before its program stops.
    stopped = pages.path(next(number for number in range(TERMINALS) if 'stopped' in (pages.path(number) or '')))
    end = time.monotonic() + START_S
    while not os.path.exists(stopped) and time.monotonic() < end:
        time.sleep(0.1)
    pages.stop_one()
    return prometheus_port, [teller, prometheus, *pages.programs.values()]


def main():
    asked_to_end = threading.Event()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: asked_to_end.set())
    children = Children()
    try:
        port, servers = start(children)
        say(f'{TERMINALS} simulated terminals in {TERMINALS // 10} shops. Open')
        say(f'    http://127.0.0.1:{port}/consoles/terminals.html')
        say(
            'The rules are those of fleet/prometheus, twenty times as quick. What Alertmanager tells comes here;'
            ' Ctrl-C ends.'
        )
        while not asked_to_end.wait(1):
            if any(server.poll() is not None for server in servers):
                raise RuntimeError(f'a program has ended; see the logs in {DIRECTORY}')
    except (RuntimeError, OSError) as error:
        if not asked_to_end.is_set():
            print(f'try: {error}', file=sys.stderr)
            return 1
    finally:
        children.end()
    say(f'Ended. What was recorded is in {os.path.relpath(DIRECTORY, SOURCE)}.')
    return 0


if __name__ == '__main__':
    sys.exit(main())
