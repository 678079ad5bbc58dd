"""What many terminals cost a Prometheus: series, samples, processor, memory, rules, and the page.
See tools/bench-fleet.

usage: fleet.py SOURCE-DIRECTORY ZELHOST TERMINALS...
"""
import os
import shutil
import subprocess
import sys
import tempfile
import time
import urllib.request

SOURCE, ZELHOST = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
sys.path[:0] = [os.path.join(SOURCE, 'fleet/simulation'), os.path.join(SOURCE, 'tests/fleet')]
import browser  # noqa: E402
import servers  # noqa: E402

INTERVAL_S = 30
EVALUATION_S = 30
WINDOW_S = 90  # whole rounds of both
WINDOWS = 3  # of each kind, in turns: the collector of garbage comes seldom, and a machine is not always as quick
# In a process of its own, so that its work is not counted. One terminal in thirty has trouble.
EXPORTERS = '''
import os, sys, time
sys.path.insert(0, os.path.join(sys.argv[1], 'fleet/simulation'))
import terminals
from children import Children
from terminals import Exporters, Pages
terminals.PERIOD = 240
children = Children()
pages = Pages(children, sys.argv[2], os.path.join(sys.argv[1], 'chipsim/scenarios'),
              os.path.join(sys.argv[3], 'pages'), '15s')
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


def window(prometheus):
    """Per second of some rounds: samples and processor time. After them: series, and the rules' last time."""
    before, cpu, began = own(prometheus), cpu_s(prometheus.process.pid), time.monotonic()
    time.sleep(WINDOW_S)
    after, seconds = own(prometheus), time.monotonic() - began
    name = 'prometheus_tsdb_head_samples_appended_total'
    return {
        'samples': (after[name] - before[name]) / seconds,
        'cpu': (cpu_s(prometheus.process.pid) - cpu) / seconds,
        'series': after['prometheus_tsdb_head_series'],
        'rules': after.get('prometheus_rule_group_last_duration_seconds', 0),
    }


def slow(times):
    """What nineteen of twenty do not exceed."""
    return sorted(times)[len(times) * 19 // 20]


def with_and_without(prometheus, directory):
    """What the rules cost is what the processor has less to do without them: the windows of both kinds, in turns."""
    configuration = os.path.join(directory, 'prometheus.yml')
    with open(configuration, encoding='utf-8') as file:
        lines = file.readlines()
    texts = {True: ''.join(lines), False: ''.join(line for line in lines if not line.startswith('rule_files'))}
    windows = {True: [], False: []}
    for _ in range(WINDOWS):
        for has_rules, text in texts.items():
            with open(configuration, 'w', encoding='utf-8') as file:
                file.write(text)
            urllib.request.urlopen(urllib.request.Request(prometheus.url + '/-/reload', method='POST')).close()
            windows[has_rules].append(window(prometheus))
    return windows[True], windows[False]


def mean(windows, name):
    return sum(one[name] for one in windows) / len(windows)


def hovering(chromium):
    """Milliseconds until the page has dealt with the pointer on another square."""
    places = chromium.evaluate(
        '[...document.querySelectorAll("a.square")].map(square => square.getBoundingClientRect())'
        '.filter(box => box.bottom < innerHeight).filter((_, place) => place % 10 === 0).slice(0, 100)'
        '.map(box => [box.x + box.width / 2, box.y + box.height / 2])'
    )
    times = []
    for x, y in places:
        began = time.monotonic()
        chromium.command('Input.dispatchMouseEvent', type='mouseMoved', x=x, y=y)
        times.append((time.monotonic() - began) * 1000)
    return slow(times)


def scrolling(chromium):
    """Milliseconds from one frame to the next while the wheel turns."""
    chromium.evaluate(
        'window.frames = []; requestAnimationFrame(function look(now) {'
        ' frames.push(now); requestAnimationFrame(look); })'
    )
    for _ in range(100):
        chromium.command('Input.dispatchMouseEvent', type='mouseWheel', x=700, y=500, deltaX=0, deltaY=100)
    if not chromium.evaluate('scrollY > 0'):
        raise RuntimeError('the page does not scroll')
    frames = chromium.evaluate('frames')
    return slow([after - before for before, after in zip(frames, frames[1:])])


def page(prometheus):
    """Queries of the overview; milliseconds from the last answer, and from the start of all, to the drawn page, to the
    answer to the pointer, and between two frames of scrolling."""
    chromium = browser.Browser(1400, 1000)
    try:
        drawing, whole = [], []
        for _ in range(5):
            chromium.open(prometheus.page)
            chromium.wait('performance.getEntriesByName("overview").length')
            drawing.append(chromium.evaluate('performance.getEntriesByName("overview")[0].duration'))
            whole.append(chromium.evaluate('performance.getEntriesByName("drawn")[0].startTime'))
        queries = len([url for url in chromium.requests if '/api/' in url])
        return [queries] + [
            f'{figure:.0f}'
            for figure in (sorted(drawing)[2], sorted(whole)[2], hovering(chromium), scrolling(chromium))
        ]
    finally:
        chromium.close()


def measure(count):
    directory = tempfile.mkdtemp(prefix='zelsensors-bench-')
    exporters = subprocess.Popen(
        [sys.executable, '-B', '-c', EXPORTERS, SOURCE, ZELHOST, directory, str(count)], stdin=subprocess.PIPE
    )
    prometheus = None
    try:
        targets = os.path.join(directory, 'targets.json')
        servers.wait_for(lambda: os.path.exists(targets), 'the exporters')
        prometheus = servers.Prometheus(
            SOURCE,
            directory,
            evaluation=f'{EVALUATION_S}s',
            change=lambda rules: rules,
            configuration=f'''
scrape_configs:
  - job_name: terminals
    scrape_interval: {INTERVAL_S}s
    sample_limit: 500
    file_sd_configs: [{{files: [targets.json]}}]
    metric_relabel_configs: [{{source_labels: [__name__], regex: 'zelsensors_.+|node_textfile_.+', action: keep}}]
''',
        )
        servers.wait_for(
            lambda: len(prometheus.query('instance:zelsensors_state')) == count, 'all terminals in the rules'
        )
        # Of a terminal that is new, one page alone cannot be told from one that never changes.
        stale = 'ALERTS{alertname="TerminalPageStale"}'
        servers.wait_for(lambda: len(prometheus.query(stale)) <= count // 240 + 1, 'pages that have changed')
        chromium_figures = page(prometheus)
        with_rules, without_rules = with_and_without(prometheus, directory)
        figures = [
            count,
            f'{with_rules[-1]["series"]:.0f}',
            f'{mean(with_rules, "samples"):.0f}',
            f'{mean(with_rules, "cpu") * 100:.0f}',
            f'{memory_mb(prometheus.process.pid):.0f}',
            f'{(mean(with_rules, "cpu") - mean(without_rules, "cpu")) * EVALUATION_S:.2f}',
            f'{mean(with_rules, "rules"):.2f}',
            *chromium_figures,
        ]
        print(*figures, sep='\t', flush=True)
    finally:
        if prometheus:
            prometheus.close()
        exporters.stdin.close()
        exporters.wait()
        shutil.rmtree(directory)


for number in sys.argv[3:]:
    measure(int(number))
