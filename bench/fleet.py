"""What many terminals cost a Prometheus: series, samples, processor, memory, rules, and the page. See tools/bench-fleet.

usage: fleet.py SOURCE-DIRECTORY ZELHOST TERMINALS...
"""
import os
import shutil
import subprocess
import sys
import tempfile
import time

SOURCE, ZELHOST = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
sys.path[:0] = [os.path.join(SOURCE, 'fleet/simulation'), os.path.join(SOURCE, 'tests/fleet')]
import browser  # noqa: E402
import servers  # noqa: E402

INTERVAL_S = 30
WINDOW_S = 120
# In a process of its own, so that its work is not counted.
EXPORTERS = '''
import os, sys, time
sys.path.insert(0, os.path.join(sys.argv[1], 'fleet/simulation'))
from children import Children
from terminals import Exporters, Pages
children = Children()
pages = Pages(children, sys.argv[2], os.path.join(sys.argv[1], 'chipsim/scenarios'), os.path.join(sys.argv[3], 'pages'), '15s')
Exporters(pages).write_targets(os.path.join(sys.argv[3], 'targets.json'), int(sys.argv[4]))
try:
    sys.stdin.read()  # until the benchmark ends
finally:
    children.end()
'''


def cpu_s(process):
    with open(f'/proc/{process}/stat', encoding='ascii') as file:
        fields = file.read().rsplit(')', 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf('SC_CLK_TCK')


def memory_mb(process):
    with open(f'/proc/{process}/status', encoding='ascii') as file:
        return next(int(line.split()[1]) for line in file if line.startswith('VmRSS')) / 1024


def own(prometheus):
    """Prometheus' own metrics, summed over their labels."""
    values = {}
    for line in servers.fetch(prometheus.url + '/metrics').decode().splitlines():
        if not line.startswith('#'):
            name, value = line.rsplit(' ', 1)
            name = name.split('{')[0]
            values[name] = values.get(name, 0) + float(value)
    return values


def measure(count):
    directory = tempfile.mkdtemp(prefix='zelsensors-bench-')
    exporters = subprocess.Popen([sys.executable, '-B', '-c', EXPORTERS, SOURCE, ZELHOST, directory, str(count)], stdin=subprocess.PIPE)
    prometheus = None
    try:
        targets = os.path.join(directory, 'targets.json')
        servers.wait_for(lambda: os.path.exists(targets), 'the exporters')
        prometheus = servers.Prometheus(SOURCE, directory, evaluation='30s', change=lambda rules: rules, configuration=f'''
scrape_configs:
  - job_name: terminals
    scrape_interval: {INTERVAL_S}s
    sample_limit: 500
    file_sd_configs: [{{files: [targets.json]}}]
    metric_relabel_configs: [{{source_labels: [__name__], regex: 'zelsensors_.+|node_textfile_.+', action: keep}}]
''')
        servers.wait_for(lambda: len(prometheus.query('instance:zelsensors_state')) == count, 'all terminals in the rules')
        before, cpu, began = own(prometheus), cpu_s(prometheus.process.pid), time.monotonic()
        time.sleep(WINDOW_S)
        after, seconds = own(prometheus), time.monotonic() - began
        rounds = after['prometheus_rule_group_iterations_total'] - before['prometheus_rule_group_iterations_total']
        rules = after['prometheus_rule_group_duration_seconds_sum'] - before['prometheus_rule_group_duration_seconds_sum']
        groups = 2
        print(f'{count}\t{after["prometheus_tsdb_head_series"]:.0f}\t'
              f'{(after["prometheus_tsdb_head_samples_appended_total"] - before["prometheus_tsdb_head_samples_appended_total"]) / seconds:.0f}\t'
              f'{(cpu_s(prometheus.process.pid) - cpu) / seconds * 100:.0f}\t{memory_mb(prometheus.process.pid):.0f}\t'
              f'{rules / (rounds / groups):.2f}\t', end='', flush=True)
        chromium = browser.Browser(1400, 1000)
        try:
            times = []
            for _ in range(5):
                chromium.open(prometheus.page)
                chromium.wait('performance.getEntriesByName("overview").length')
                times.append(chromium.evaluate('performance.getEntriesByName("overview")[0].duration + "/" + performance.getEntriesByName("drawn")[0].startTime'))
            queries = len([url for url in chromium.requests if '/api/' in url])
            drawing = sorted(float(text.split('/')[0]) for text in times)
            whole = sorted(float(text.split('/')[1]) for text in times)
            print(f'{queries}\t{drawing[2]:.0f}\t{whole[2]:.0f}', flush=True)
        finally:
            chromium.close()
    finally:
        if prometheus:
            prometheus.close()
        exporters.stdin.close()
        exporters.wait()
        shutil.rmtree(directory)


for number in sys.argv[3:]:
    measure(int(number))
