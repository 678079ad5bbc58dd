"""The page in a headless Chromium, served by a real Prometheus on filled-in data: what it shows against the same
queries asked directly; and by servers that answer wrongly.

usage: page_test.py SOURCE-DIRECTORY
"""
import collections
import http.server
import json
import os
import shutil
import sys
import tempfile
import threading
import time
import unittest

import backfill
import browser
import servers

SOURCE = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else os.getcwd()
STATES = ['ok', 'non-critical', 'critical', 'fatal', 'unknown', 'gone']
HOSTILE = '<script>window.broken = 1</script><b id="bold">"\\'
COUNT = 200
WHOLE_DAY = (3, 11)
SQUARES = 'document.querySelectorAll("a.square").length'


def setUpModule():
    global CHROMIUM
    CHROMIUM = browser.Browser()


def tearDownModule():
    CHROMIUM.close()


class Filled:
    """A Prometheus on filled-in terminals, whose rules have been evaluated."""

    def __init__(self, count, full_days=(), extra=None, change=servers.quick):
        self.directory = tempfile.mkdtemp(prefix='zelsensors-page-')
        data = os.path.join(self.directory, 'data.om')
        backfill.write(data, count, int(time.time()), full_days, extra)
        self.prometheus = servers.Prometheus(
            SOURCE,
            self.directory,
            data=data if count else None,
            change=change,
            evaluation='1s' if count < 1000 else '5s',
        )

    def ready(self, count):
        servers.wait_for(
            lambda: len(self.prometheus.query('instance:zelsensors_state')) == count, 'the recorded states'
        )
        wrong = any(backfill.kind_of(number) != 'healthy' for number in range(count))
        servers.wait_for(
            lambda: {alert['state'] for alert in self.prometheus.alerts()} == ({'firing'} if wrong else set()),
            'the alerts',
        )
        return self

    def close(self):
        self.prometheus.close()
        shutil.rmtree(self.directory)


def shown(instance):
    return instance.removesuffix(':9100')


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.filled = Filled(COUNT, WHOLE_DAY, [(HOSTILE, 'temperature', 99, 1, [('upper', 'critical', 95)])]).ready(
            COUNT
        )
        cls.prometheus = cls.filled.prometheus

    @classmethod
    def tearDownClass(cls):
        cls.filled.close()

    def setUp(self):
        CHROMIUM.errors.clear()
        CHROMIUM.resize(1280, 900)
        self.open()

    def tearDown(self):
        self.assertEqual(CHROMIUM.errors, [], 'exceptions in the page')

    def open(self, place=''):
        CHROMIUM.open(self.prometheus.page + place)
        CHROMIUM.wait('document.querySelector("#asof").textContent.startsWith("As of")')

    def evaluate(self, expression):
        return CHROMIUM.evaluate(expression)

    def rows(self):
        return self.evaluate(
            '[...document.querySelectorAll("tbody tr")].map(row => [...row.cells].map(cell => cell.innerText))'
        )

    def expected_alerts(self):
        """What Alertmanager's inhibition leaves of the alerts."""
        alerts = [alert for alert in self.prometheus.alerts() if alert['labels']['job'] == 'terminals']
        order = ['TerminalSensorNonCritical', 'TerminalSensorCritical', 'TerminalSensorFatal']
        gravest = {}
        for alert in alerts:
            if alert['labels']['alertname'] in order:
                key = alert['labels']['instance'], alert['labels']['sensor']
                gravest[key] = max(gravest.get(key, 0), order.index(alert['labels']['alertname']))
        gone = {alert['labels']['shop'] for alert in alerts if alert['labels']['alertname'] == 'ShopGone'}
        return [
            alert
            for alert in alerts
            if not (alert['labels']['alertname'] == 'TerminalGone' and alert['labels']['shop'] in gone)
            and not (
                alert['labels']['alertname'] in order
                and order.index(alert['labels']['alertname'])
                < gravest[alert['labels']['instance'], alert['labels']['sensor']]
            )
        ]

    def test_counts_are_those_of_the_query(self):
        direct = collections.Counter(
            int(series['value'][1]) for series in self.prometheus.query('instance:zelsensors_state')
        )
        self.assertEqual(
            self.evaluate('[...document.querySelectorAll(".count b")].map(b => Number(b.textContent))'),
            [direct[state] for state in range(6)],
        )
        self.assertEqual(
            direct,
            collections.Counter(backfill.state_of(number) if number != WHOLE_DAY[0] else 2 for number in range(COUNT)),
        )

    def test_squares_show_the_state_of_each_terminal(self):
        direct = {
            shown(series['metric']['instance']) + ', ' + STATES[int(series['value'][1])]: 's' + series['value'][1]
            for series in self.prometheus.query('instance:zelsensors_state')
        }
        squares = self.evaluate(
            'Object.fromEntries([...document.querySelectorAll("a.square")].map(square => '
            '[square.getAttribute("aria-label"), square.className.split(" ")[1]]))'
        )
        self.assertEqual(squares, direct)
        # By the sign too, not by colour alone.
        self.assertEqual(
            self.evaluate('[...Array(6).keys()].map(state => document.querySelector("a.s" + state).textContent)'),
            ['', '·', '!', '✕', '?', '–'],
        )

    def test_attention_lists_the_alerts_that_are_left_by_inhibition(self):
        self.evaluate('document.querySelector(".more").click()')
        direct = sorted(
            (
                alert['labels']['severity'],
                alert['labels'].get('shop', ''),
                alert['annotations']['summary'].removeprefix(alert['labels'].get('instance', ' ') + ': '),
                alert['annotations']['description'],
            )
            for alert in self.expected_alerts()
        )
        self.assertEqual(sorted((row[0].split()[-1], row[2], *row[3].split('\n', 1)) for row in self.rows()), direct)
        self.assertIn('alerts', CHROMIUM.text('.card .head'))

    def test_names_never_become_markup(self):
        self.open('#find=broken')
        self.assertIn(HOSTILE, self.rows()[0][3])
        self.open('#terminal=' + backfill.instance_of(WHOLE_DAY[0]))
        self.assertIn(HOSTILE, CHROMIUM.text())
        self.assertEqual(
            self.evaluate('[document.scripts.length, document.getElementById("bold"), window.broken || null]'),
            [1, None, None],
        )

    def test_only_prometheus_is_asked_and_at_most_twelve_times(self):
        requests = [url for url in CHROMIUM.requests if not url.startswith('data:')]
        self.assertTrue(all(url.startswith(self.prometheus.url + '/') for url in requests), requests)
        self.assertLessEqual(len([url for url in requests if '/api/' in url]), 12)
        self.open('#terminal=' + backfill.instance_of(3))
        requests = [url for url in CHROMIUM.requests if not url.startswith('data:')]
        self.assertTrue(all(url.startswith(self.prometheus.url + '/') for url in requests), requests)

    def test_the_page_may_ask_no_other_server(self):
        self.evaluate('fetch("//127.0.0.2:9/").then(() => null, () => null)')
        self.assertEqual([url for url in CHROMIUM.requests if '127.0.0.2' in url], [])

    def test_the_file_names_no_other_address(self):
        with open(os.path.join(SOURCE, 'fleet/page/terminals.html'), encoding='utf-8') as file:
            page = file.read()
        self.assertEqual(
            [line for line in page.split('\n') if '://' in line and 'http://www.w3.org/2000/svg' not in line], []
        )
        self.assertNotIn('{{', page)

    def test_a_terminal_has_all_its_sensors_as_read(self):
        for number in (*WHOLE_DAY, 37):
            instance = backfill.instance_of(number)
            self.open('#terminal=' + instance)
            cards = self.evaluate(
                '[...document.querySelectorAll(".sensor")].map(card => ({'
                'name: card.querySelector("h3").textContent.replace(/ (?=[(]0)/, ""),'
                'value: card.querySelector(".value").innerText,'
                'word: card.querySelector(".level").innerText.split("\\n").pop(),'
                'bar: !!card.querySelector(".bar"),'
                'points: (card.querySelector(".curve") || {getAttribute: () => ""}).getAttribute("d")'
                '.split(/[ML]/).length - 1}))'
            )
            readings = {
                series['metric']['sensor']: float(series['value'][1])
                for series in self.prometheus.query(
                    '{instance="'
                    + instance
                    + '",__name__=~"zelsensors_'
                    + '(temperature_celsius|voltage_volts|current_amperes|fan_speed_rpm|sensor_value)"}'
                )
            }
            severities = {
                series['metric']['sensor']: STATES[int(series['value'][1])]
                for series in self.prometheus.query('zelsensors_sensor_severity{instance="' + instance + '"}')
            }
            self.assertEqual(
                {
                    card['name']: card['word'].split(' ', 1)[-1] if card['value'] != '— °C' else 'unread'
                    for card in cards
                    if card['value'] != '— °C'
                },
                severities,
            )
            for card in cards:
                self.assertTrue(card['bar'] or card['name'] not in readings, card)
                if card['name'] in readings:
                    self.assertAlmostEqual(float(card['value'].split()[0]), readings[card['name']], places=4)
                else:
                    self.assertEqual((number, card['value'][0], card['word']), (37, '—', 'no reading'))
                if number in WHOLE_DAY:
                    # One for each five minutes of the day; its ends fall outside or not.
                    self.assertIn(card['points'], range(287, 290), card)
            self.assertEqual(
                len(self.rows()),
                len([alert for alert in self.expected_alerts() if alert['labels'].get('instance') == instance]),
            )

    def test_a_terminal_that_is_not_there_is_said_in_words(self):
        self.open('#terminal=till99')
        self.assertIn('No such terminal', CHROMIUM.text())

    def test_a_gone_terminal_has_its_state_and_no_readings(self):
        self.open('#terminal=' + backfill.instance_of(17))
        self.assertIn('Gone', CHROMIUM.text('.terminal'))
        self.assertIn('no readings of the terminal now', CHROMIUM.text())

    def test_every_view_has_an_address(self):
        self.evaluate('[...document.querySelectorAll(".count")][3].click()')
        self.evaluate('[...document.querySelectorAll("th button")][1].click()')
        CHROMIUM.key('/')
        CHROMIUM.type('shop00')
        rows = [row[:4] for row in self.rows()]
        self.assertEqual({row[0].split()[-1] for row in rows}, {'critical', 'warning', 'info'})
        self.assertEqual(
            sorted({row[1] for row in rows}),
            sorted(
                {shown(backfill.instance_of(number)) for number in range(COUNT) if backfill.kind_of(number) == 'fatal'}
            ),
        )
        squares = self.evaluate('document.querySelectorAll("a.square:not(.out)").length')
        place = self.evaluate('location.hash')
        self.open(place)
        self.assertEqual(
            (
                [row[:4] for row in self.rows()],
                self.evaluate('document.querySelectorAll("a.square:not(.out)").length'),
                self.evaluate('document.querySelector("#find").value'),
            ),
            (rows, squares, 'shop00'),
        )
        self.open('#shop=0007')
        self.assertEqual(self.evaluate('document.querySelectorAll("a.square:not(.out)").length'), 10)
        self.assertEqual([row[1] for row in self.rows()], ['all of shop 0007'])

    def test_the_table_sorts_both_ways(self):
        for column, name in ((1, 'terminal'), (2, 'shop'), (3, 'what')):
            self.open()
            self.evaluate(
                f'document.querySelectorAll("th button")[{column}].click(); document.querySelector(".more").click()'
            )
            up = [row[column] for row in self.rows()]
            self.assertEqual(
                self.evaluate(f'document.querySelectorAll("th")[{column}].getAttribute("aria-sort")'), 'ascending'
            )
            self.evaluate(f'document.querySelectorAll("th button")[{column}].click()')
            down = [row[column] for row in self.rows()]
            self.assertEqual(self.evaluate('location.hash'), f'#sort=-{name}')
            self.assertNotEqual(up, down)
            self.assertEqual([up[0], up[-1]], [down[-1], down[0]])

    def test_everything_is_reached_and_done_by_keyboard(self):
        reached = []
        for _ in range(40):
            CHROMIUM.key('Tab')
            at = self.evaluate(
                '(e => e.id || e.className.split(" ")[0] || e.textContent || e.ariaLabel)(document.activeElement)'
            )
            if at == 'BODY' or (reached and at == reached[0]):
                break
            reached.append(at)
            if at == 'square':
                break
        for control in (
            'skip',
            'home',
            'theme',
            'count',
            'find',
            'pending',
            'Shops by nameWorst shops first',
            'Severity',
            'Terminal',
            'Shop',
            'What',
            'Since',
        ):
            self.assertIn(control, reached)
        self.evaluate('document.querySelector("a.square").focus()')
        place = 'document.activeElement.getAttribute("aria-label")'
        first = self.evaluate(place)
        CHROMIUM.key('ArrowRight')
        self.assertEqual(self.evaluate(place), 'till2.shop0000, ok')
        self.assertIn('till2.shop0000', CHROMIUM.text('#tip'))
        self.assertEqual(self.evaluate('document.querySelectorAll(".squares a[tabindex=\\"0\\"]").length'), 1)
        CHROMIUM.key('ArrowLeft')
        self.assertEqual(self.evaluate(place), first)
        CHROMIUM.key('ArrowDown')
        below = self.evaluate(place)
        self.assertNotEqual(below, first)
        CHROMIUM.key('ArrowUp')
        self.assertEqual(self.evaluate(place), first)
        CHROMIUM.key('End')
        self.assertEqual(self.evaluate(place).split(',')[0], shown(backfill.instance_of(COUNT - 1)))
        CHROMIUM.key('Home')
        for _ in range(3):
            CHROMIUM.key('ArrowRight')
        CHROMIUM.key('Enter')
        CHROMIUM.wait('document.querySelectorAll(".sensor").length > 10')
        self.assertIn('till4.shop0000', CHROMIUM.text('.terminal'))
        CHROMIUM.key('Escape')
        CHROMIUM.wait(SQUARES)
        self.evaluate('document.querySelectorAll("th button")[4].focus()')
        CHROMIUM.key('Enter')
        self.assertEqual(self.evaluate('location.hash'), '#sort=since')
        self.evaluate('document.querySelectorAll(".count")[5].focus()')
        CHROMIUM.key('Enter')
        self.assertEqual(self.evaluate('document.querySelectorAll(".count")[5].getAttribute("aria-pressed")'), 'true')
        CHROMIUM.key('/')
        CHROMIUM.type('no such till')
        self.assertIn('No alert fits the filter', CHROMIUM.text())
        CHROMIUM.key('Escape')
        self.assertEqual(self.evaluate('document.querySelector("#find").value'), '')

    def test_hovering_says_what_a_square_is(self):
        box = self.evaluate('(b => [b.x + 5, b.y + 5])(document.querySelector("a.s3").getBoundingClientRect())')
        CHROMIUM.command('Input.dispatchMouseEvent', type='mouseMoved', x=box[0], y=box[1])
        self.assertIn('fatal', CHROMIUM.wait('document.querySelector("#tip").innerText'))
        self.assertIn('is past a fatal threshold', CHROMIUM.text('#tip'))

    def test_light_and_dark(self):
        ground = 'getComputedStyle(document.body).backgroundColor'
        light = self.evaluate(ground)
        self.evaluate('document.querySelector("#theme").click()')
        dark = self.evaluate(ground)
        self.assertNotEqual(light, dark)
        self.open()
        self.assertEqual(self.evaluate(ground), dark)
        self.evaluate('document.querySelector("#theme").click()')
        self.assertEqual(self.evaluate(ground), light)

    def test_narrow_screens_need_no_scrolling_sideways(self):
        for place in ('', '#terminal=' + backfill.instance_of(WHOLE_DAY[0])):
            for width in (320, 390, 768, 1024, 2560):
                CHROMIUM.resize(width, 800)
                self.open(place)
                self.assertLessEqual(self.evaluate('document.documentElement.scrollWidth'), width, (place, width))

    def test_a_changed_state_is_shown_without_a_new_page(self):
        self.evaluate(
            'window.same = document.querySelector("a.square");'
            'window.fetch = (old => (path, options) => old(path, options)'
            '.then(answer => path.includes("zelsensors_state")'
            ' ? answer.text().then(text => new Response(text.replace(/"0"/, "\\"3\\""))) : answer))(window.fetch)'
        )
        before = self.evaluate('Number(document.querySelectorAll(".count b")[3].textContent)')
        self.evaluate('document.dispatchEvent(new Event("visibilitychange"))')
        CHROMIUM.wait(f'Number(document.querySelectorAll(".count b")[3].textContent) === {before + 1}')
        self.assertTrue(self.evaluate('document.contains(window.same)'))


class NumberOfTerminalsTest(unittest.TestCase):
    def shown_by(self, count, ready=True, **options):
        filled = Filled(count, **options)
        self.addCleanup(filled.close)
        if ready and count:
            filled.ready(count)
        CHROMIUM.open(filled.prometheus.page)
        CHROMIUM.wait('document.querySelector("#asof").textContent.startsWith("As of")')
        return filled

    def test_none(self):
        self.shown_by(0)
        self.assertIn('No terminals.', CHROMIUM.text())
        self.assertIn('No alert fires', CHROMIUM.text())

    def test_one(self):
        self.shown_by(1)
        self.assertEqual(CHROMIUM.evaluate(SQUARES), 1)
        self.assertIn('1 terminal in 1 shop', CHROMIUM.text())

    def test_five_thousand(self):
        filled = self.shown_by(5000)
        direct = collections.Counter(
            int(series['value'][1]) for series in filled.prometheus.query('instance:zelsensors_state')
        )
        self.assertEqual(CHROMIUM.evaluate(SQUARES), 5000)
        self.assertEqual(
            CHROMIUM.evaluate(
                '[...document.querySelectorAll(".count b")].map(b => Number(b.textContent.replace(",", "")))'
            ),
            [direct[state] for state in range(6)],
        )
        # Not all of the alerts at once.
        self.assertEqual(CHROMIUM.evaluate('document.querySelectorAll("tbody tr").length'), 25)
        CHROMIUM.evaluate('document.querySelector("a.square").focus()')
        CHROMIUM.key('End')
        self.assertIn('till10.shop0499', CHROMIUM.text('#tip'))

    def test_missing_rules_are_said_in_words(self):
        self.shown_by(1, ready=False, change=lambda rules: 'groups: []')
        self.assertIn('The rules are missing', CHROMIUM.text())


class Answering(http.server.BaseHTTPRequestHandler):
    """Serves the page, and to questions whatever the test has put into `answer`."""

    answer = staticmethod(lambda path: (200, '{}'))

    def do_GET(self):
        if self.path.startswith('/consoles/'):
            with open(os.path.join(SOURCE, 'fleet/page/terminals.html'), 'rb') as file:
                self.send(200, file.read())
            return
        found = self.server.answer(self.path)
        if found is None:
            self.close_connection = True
            self.connection.shutdown(2)
            return
        self.send(found[0], found[1].encode())

    def send(self, status, content):
        self.send_response(status)
        self.send_header('Content-Type', 'text/html')
        self.send_header('Content-Length', str(len(content)))
        self.end_headers()
        self.wfile.write(content)

    def log_message(self, *arguments):
        pass


def vector(*series):
    return 200, json.dumps(
        {
            'status': 'success',
            'data': {
                'resultType': 'vector',
                'result': [{'metric': metric, 'value': [1e9, value]} for metric, value in series],
            },
        }
    )


def healthy(path):
    if 'api/v1/alerts' in path:
        return 200, json.dumps({'status': 'success', 'data': {'alerts': []}})
    if 'zelsensors_state' in path:
        return vector(({'instance': 'a', 'shop': '1', 'job': 'terminals'}, '0'))
    return vector()


class WrongAnswersTest(unittest.TestCase):
    def setUp(self):
        self.server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Answering)
        self.server.answer = healthy
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)
        self.url = f'http://127.0.0.1:{self.server.server_port}/consoles/terminals.html'

    def trouble(self, answer, place=''):
        self.server.answer = answer
        CHROMIUM.open(self.url + place)
        return CHROMIUM.wait('document.querySelector("#trouble").innerText')

    def test_each_is_said_in_words(self):
        for answer, words in (
            (lambda path: (500, 'Internal Server Error'), 'answered with the error 500'),
            (lambda path: (502, '<h1>Bad Gateway</h1>'), 'answered with the error 502'),
            (lambda path: (404, ''), 'answered with the error 404'),
            (lambda path: (200, ''), 'The answer is empty'),
            (lambda path: (200, '<html>Please log in</html>'), 'not what Prometheus sends'),
            (lambda path: (200, '{"status": "success"'), 'not what Prometheus sends'),
            (lambda path: (200, '[1, 2]'), 'not what Prometheus sends'),
            (lambda path: (200, 'null'), 'not what Prometheus sends'),
            (
                lambda path: (200, '{"status": "success", "data": {"resultType": "matrix", "result": []}}'),
                'not what Prometheus sends',
            ),
            (
                lambda path: (
                    200,
                    '{"status": "success", "data": {"resultType": "vector", "result": [1, null], "alerts": [7]}}',
                ),
                'not what Prometheus sends',
            ),
            (
                lambda path: (422, '{"status": "error", "error": "query timed out"}'),
                'refuses a question: query timed out',
            ),
            (lambda path: None, 'Prometheus does not answer'),
        ):
            for place in ('', '#terminal=a'):
                with self.subTest(words=words, place=place):
                    text = self.trouble(answer, place)
                    self.assertIn(words, text)
                    self.assertIn('asks again', text)

    def test_what_was_shown_stays_and_is_called_old(self):
        CHROMIUM.open(self.url)
        CHROMIUM.wait(SQUARES)
        self.server.answer = lambda path: (500, '')
        CHROMIUM.evaluate('document.dispatchEvent(new Event("visibilitychange"))')
        self.assertIn('What you see is from', CHROMIUM.wait('document.querySelector("#trouble").innerText'))
        self.assertEqual(CHROMIUM.evaluate(SQUARES), 1)
        self.assertIn('Old', CHROMIUM.text('#asof'))
        self.server.answer = healthy
        CHROMIUM.evaluate('document.dispatchEvent(new Event("visibilitychange"))')
        CHROMIUM.wait('document.querySelector("#trouble").innerText === ""')

    def test_no_label_becomes_markup_or_an_address(self):
        bad = '<img src="http://other.example/x" onerror="window.broken = 1"><b class="bold">'

        def answer(path):
            if 'api/v1/alerts' in path:
                return 200, json.dumps(
                    {
                        'status': 'success',
                        'data': {
                            'alerts': [
                                {
                                    'labels': {
                                        'alertname': bad,
                                        'job': 'terminals',
                                        'instance': bad,
                                        'shop': bad,
                                        'severity': '__proto__',
                                    },
                                    'annotations': {'summary': bad, 'description': bad},
                                    'state': 'firing',
                                    'activeAt': bad,
                                    'value': '1',
                                }
                            ]
                        },
                    }
                )
            if 'zelsensors_state' in path:
                return vector(({'instance': bad, 'shop': bad, 'job': 'terminals', bad: bad}, bad))
            if 'query_range' in path:
                return 200, json.dumps({'status': 'success', 'data': {'resultType': 'matrix', 'result': []}})
            return vector(
                ({'__name__': 'zelsensors_temperature_celsius', 'sensor': bad}, bad),
                ({'__name__': 'zelsensors_sensor_value', 'unit': bad, 'sensor': 'x'}, '1'),
                ({'__name__': 'zelsensors_build_info', 'version': bad, 'chip': bad}, '1'),
            )

        self.server.answer = answer
        for place in ('', '#terminal=' + bad.replace(' ', '%20')):
            CHROMIUM.open(self.url + place)
            CHROMIUM.wait('document.querySelector("#asof").textContent.startsWith("As of")')
            self.assertIn(bad, CHROMIUM.text())
            self.assertEqual(
                CHROMIUM.evaluate(
                    '[document.images.length, document.querySelectorAll(".bold").length, window.broken || null]'
                ),
                [0, 0, None],
            )
            self.assertFalse(
                [
                    url
                    for url in CHROMIUM.requests
                    if not url.startswith((f'http://127.0.0.1:{self.server.server_port}/', 'data:'))
                ]
            )

    def test_simulated_terminals_are_called_so(self):
        self.server.answer = lambda path: vector(({}, '3')) if 'build_info' in path else healthy(path)
        CHROMIUM.open(self.url)
        CHROMIUM.wait(SQUARES)
        self.assertIn('3 terminals are simulated', CHROMIUM.text())


if __name__ == '__main__':
    for program in ('prometheus', 'promtool'):
        if not os.access(os.path.join(SOURCE, 'build/programs/usr/bin', program), os.X_OK):
            print(f'SKIPPED: no {program} under build/programs; ./check unpacks it')
            sys.exit(77)
    if not shutil.which('chromium'):
        print('SKIPPED: there is no chromium here')
        sys.exit(77)
    unittest.main(verbosity=2)
