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


def hides(source, target):
    """Whether the inhibit_rules of alertmanager.yml let the one alert hide the other."""
    if source['state'] != 'firing':
        return False
    one, other = source['labels'], target['labels']
    grave, name = one['alertname'], other['alertname']
    if not name.startswith('Terminal') or one['job'] != other['job']:
        return False
    if grave == 'ShopGone':
        return one.get('shop') == other.get('shop')
    if one.get('instance') != other.get('instance'):
        return False
    if grave == 'TerminalGone':
        return name != 'TerminalGone'
    if grave == 'TerminalPageStale':
        return name.startswith(('TerminalSensor', 'TerminalLog'))
    order = ['TerminalSensorNonCritical', 'TerminalSensorCritical', 'TerminalSensorFatal']
    return (
        grave in order
        and name in order
        and order.index(name) < order.index(grave)
        and one['sensor'] == other['sensor']
    )


def left_by_inhibition(alerts):
    return [alert for alert in alerts if not any(hides(source, alert) for source in alerts)]


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
        return left_by_inhibition(
            [alert for alert in self.prometheus.alerts() if alert['labels']['job'] == 'terminals']
        )

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


class AnsweredTest(unittest.TestCase):
    """A page whose questions a server answers as the test wants."""

    def setUp(self):
        CHROMIUM.errors.clear()
        CHROMIUM.resize(1280, 900)
        self.server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Answering)
        self.server.answer = healthy
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)
        self.url = f'http://127.0.0.1:{self.server.server_port}/consoles/terminals.html'

    def open(self, place=''):
        CHROMIUM.open(self.url + place)
        CHROMIUM.wait('document.querySelector("#asof").textContent.startsWith("As of")')


class WrongAnswersTest(AnsweredTest):
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


OF_A = 'instance%3D%22a%22'
GO_TO_A = 'document.querySelector("a.square").click()'
SAME = 'document.contains(window.same)'


class LeftBeforeTheAnswerTest(AnsweredTest):
    """Who leaves a terminal before the answer about it has come stays where he has gone."""

    def open_overview(self, on_text):
        """`on_text`: JavaScript that makes the promise of an answer about the terminal from the promise `text`."""
        self.server.answer = healthy
        self.open()
        CHROMIUM.evaluate(
            'window.turns = 0; addEventListener("hashchange", () => { ++window.turns; });'
            'window.same = document.querySelector("a.square");'
            'window.answered = 0; window.held = [];'
            'window.fetch = (old => (path, options) => old(path, options).then(answer => {'
            f' if (path.includes("{OF_A}")) {{'
            f'  const text = answer.text().finally(() => {{ ++window.answered; }}); answer.text = () => {on_text};'
            ' }'
            ' return answer;'
            '}))(window.fetch)'
        )

    def leave_before(self, late, leave):
        may_answer, asked = threading.Event(), threading.Semaphore(0)
        self.addCleanup(may_answer.set)
        self.open_overview('text')

        def answer(path):
            if OF_A in path:
                asked.release()
                may_answer.wait()
                return late(path)
            if 'zelsensors_state' in path:
                return vector(({'instance': 'a', 'shop': '1', 'job': 'terminals'}, '3'))
            return healthy(path)

        self.server.answer = answer
        CHROMIUM.evaluate(GO_TO_A)
        for _ in range(3):
            asked.acquire()
        leave()
        CHROMIUM.wait('window.turns === 2')
        may_answer.set()
        CHROMIUM.wait('window.answered === 3')

    def test_its_answer_or_failure_changes_nothing(self):
        for late in (healthy, lambda path: (500, '')):
            for way, leave in (
                ('back', lambda: CHROMIUM.evaluate('history.back()')),
                ('Escape', lambda: CHROMIUM.key('Escape')),
            ):
                with self.subTest(way=way, late=late('')[0]):
                    self.leave_before(late, leave)
                    self.assertTrue(CHROMIUM.evaluate(SAME))
                    self.assertEqual(
                        CHROMIUM.evaluate('[document.title, document.querySelector("#trouble").innerText]'),
                        ['Terminals', ''],
                    )
                    # What is shown is asked for again.
                    CHROMIUM.wait('document.querySelector("a.square.s3") !== null')
                    self.assertTrue(CHROMIUM.evaluate(SAME))

    def test_so_it_is_before_the_page_is_told_that_its_address_is_another(self):
        self.open_overview('text.then(found => new Promise(end => window.held.push(() => end(found))))')
        # The alerts, which are not held, are there before.
        CHROMIUM.evaluate(
            'window.alerts = (old => () => old().then(found => { window.told = true; return found; }))(window.alerts)'
        )
        CHROMIUM.evaluate(GO_TO_A)
        CHROMIUM.wait('window.held.length === 3 && window.told')
        CHROMIUM.evaluate('location.hash = ""; for (const release of window.held) release()')
        CHROMIUM.wait('window.turns === 2')
        self.assertTrue(CHROMIUM.evaluate(SAME))


def alert(name, instance='', shop='', sensor='', state='firing', job='terminals', severity='warning'):
    labels = {'alertname': name, 'job': job, 'severity': severity, 'instance': instance, 'shop': shop, 'sensor': sensor}
    return {
        'labels': {label: value for label, value in labels.items() if value},
        'annotations': {'summary': f'{name} {sensor}'.strip(), 'description': state},
        'state': state,
        'activeAt': '2001-09-09T01:00:00Z',
        'value': '1',
    }


def answering(alerts, terminals=(), sensors=()):
    """All terminals are of the shop 1; each has the sensors."""

    def answer(path):
        if 'api/v1/alerts' in path:
            return 200, json.dumps({'status': 'success', 'data': {'alerts': list(alerts)}})
        if 'zelsensors_state' in path:
            return vector(*(({'instance': name, 'shop': '1', 'job': 'terminals'}, '0') for name in terminals))
        if OF_A in path and 'query_range' not in path:
            return vector(*(({'__name__': 'zelsensors_temperature_celsius', 'sensor': name}, '40') for name in sensors))
        return vector()

    return answer


class InhibitionTest(AnsweredTest):
    CASES = (  # of one shop each: the alerts, and how many of them, from the first, are left
        (
            'a terminal that is gone hides its others, and no other terminal\'s',
            [
                ('TerminalGone', 'one'),
                ('TerminalLogFull', 'two'),
                ('TerminalPageStale', 'one'),
                ('TerminalProviderFailing', 'one'),
                ('TerminalLogNewLines', 'one'),
                ('TerminalSensorFatal', 'one', 'x'),
                ('TerminalLogFull', 'one', '', 'pending'),
            ],
            2,
        ),
        (
            'a shop that is gone hides all of its terminals',
            [
                ('ShopGone', ''),
                ('TerminalGone', 'one'),
                ('TerminalPageMissing', 'two'),
                ('TerminalSensorCritical', 'two', 'x'),
                ('TerminalGone', 'two', '', 'pending'),
            ],
            1,
        ),
        (
            'old readings hide those of the sensors and of the log',
            [
                ('TerminalPageStale', 'one'),
                ('TerminalProviderFailing', 'one'),
                ('TerminalPageBroken', 'one'),
                ('TerminalLogFull', 'two'),
                ('TerminalSensorUnread', 'one'),
                ('TerminalSensorFatal', 'one', 'x'),
                ('TerminalLogFull', 'one'),
                ('TerminalLogNewLines', 'one'),
            ],
            4,
        ),
        (
            'the gravest of each sensor',
            [
                ('TerminalSensorFatal', 'one', 'x'),
                ('TerminalSensorCritical', 'one', 'y'),
                ('TerminalSensorCritical', 'two', 'x'),
                ('TerminalSensorNonCritical', 'one', 'z'),
                ('TerminalSensorUnread', 'one'),
                ('TerminalSensorCritical', 'one', 'x'),
                ('TerminalSensorNonCritical', 'one', 'x'),
                ('TerminalSensorNonCritical', 'one', 'y', 'pending'),
            ],
            5,
        ),
        (
            'what does not fire hides nothing',
            [
                ('ShopGone', '', '', 'pending'),
                ('TerminalGone', 'one', '', 'pending'),
                ('TerminalPageStale', 'one', '', 'pending'),
                ('TerminalSensorFatal', 'one', 'x', 'pending'),
                ('TerminalSensorCritical', 'one', 'x', 'pending'),
                ('TerminalSensorNonCritical', 'one', 'x'),
                ('TerminalLogFull', 'one'),
            ],
            7,
        ),
    )

    def test_it_hides_what_alertmanager_hides(self):
        alerts, left = [], []
        for number, (_, given, count) in enumerate(self.CASES):
            made = [
                alert(name, instance and f'{instance}.{number}', f'shop{number}', *more)
                for name, instance, *more in given
            ]
            alerts += made
            left += made[:count]
        # Of another job: no terminal's.
        others = [alert('ShopGone', shop='shop4', job='other'), alert('TerminalGone', 'one.4', job='other')]
        self.assertEqual(left_by_inhibition(alerts + others), left + others)
        for order in (alerts + others, (alerts + others)[::-1]):
            self.server.answer = answering(order)
            self.open('#pending=yes')
            rows = CHROMIUM.evaluate(
                '[...document.querySelectorAll("tbody tr")]'
                '.map(row => [row.cells[2].innerText, row.cells[1].innerText, ...row.cells[3].innerText.split("\\n")])'
            )
            self.maxDiff = None
            self.assertEqual(
                sorted([shop, terminal, what, state] for shop, terminal, what, state in rows),
                sorted(
                    [
                        one['labels']['shop'],
                        one['labels'].get('instance', 'all of shop ' + one['labels']['shop']),
                        one['annotations']['summary'],
                        one['state'],
                    ]
                    for one in left
                ),
            )


class RedrawingTest(AnsweredTest):
    """What is asked again every 30 seconds moves neither the keyboard nor the window."""

    ALERTS = [alert(f'TerminalLog{number}', instance, '1') for number in range(10) for instance in 'ab'] + [
        alert('ShopGone', shop='2')
    ]

    def refresh(self, alerts=None, terminals='ab', redrawn='document.querySelector("tbody a, #back")'):
        """Until the element is another one."""
        self.server.answer = answering(
            self.ALERTS if alerts is None else alerts, terminals, [f'sensor {number}' for number in range(40)]
        )
        CHROMIUM.evaluate(
            f'window.old = {redrawn}; document.dispatchEvent(new Event("visibilitychange"))'
        )
        CHROMIUM.wait('!document.contains(window.old)')

    def open(self, place=''):
        self.server.answer = answering(self.ALERTS, 'ab', [f'sensor {number}' for number in range(40)])
        super().open(place)

    def focused(self):
        return CHROMIUM.evaluate(
            '(at => [at.matches(":focus-visible"), at.getAttribute("href"), (at.closest("tr") || at).innerText])'
            '(document.activeElement)'
        )

    def test_the_keyboard_stays_on_its_row(self):
        self.open()
        CHROMIUM.evaluate('[...document.querySelectorAll("th button")].pop().focus()')
        for _ in range(len(self.ALERTS) - 1):
            CHROMIUM.key('Tab')
            at = self.focused()
            self.assertTrue(at[0])
            self.refresh()
            self.assertEqual(self.focused(), at)
        # b's tenth alert moves down by a row.
        self.assertEqual(at[1], '#terminal=b')
        self.refresh([*self.ALERTS, alert('ShopGone', shop='3', severity='critical')])
        self.assertEqual(self.focused(), at)
        # That alert ends: the same terminal's next one.
        self.refresh([one for one in self.ALERTS if one['annotations']['summary'] not in at[2]])
        self.assertEqual(self.focused()[:2], at[:2])
        CHROMIUM.key('Enter')
        CHROMIUM.wait('document.querySelector("#back") !== null')
        self.assertEqual(CHROMIUM.text('.terminal h2'), 'b')

    def test_the_keyboard_goes_on_at_the_first_row_that_show_all_brings(self):
        alerts = [alert(f'TerminalLog{number}', 'a', '1') for number in range(60)]
        self.server.answer = answering(alerts, 'ab', [])
        super().open()
        CHROMIUM.evaluate('document.querySelector("button.more").focus()')
        before = CHROMIUM.evaluate('document.querySelectorAll("tbody tr").length')
        self.assertLess(before, 60)
        CHROMIUM.key('Enter')
        CHROMIUM.wait('document.querySelectorAll("tbody tr").length === 60')
        self.assertEqual(
            CHROMIUM.evaluate(
                '[...document.querySelectorAll("tbody tr")].indexOf(document.activeElement.closest("tr"))'
            ),
            before,
        )

    def test_the_keyboard_stays_on_its_square(self):
        self.open()
        CHROMIUM.evaluate('document.querySelector("a.square").focus()')
        CHROMIUM.key('ArrowRight')
        self.refresh(terminals='abc', redrawn='document.querySelector("a.square")')
        self.assertEqual(self.focused()[:2], [True, '#terminal=b'])
        self.assertEqual(
            CHROMIUM.evaluate(
                '[...document.querySelectorAll(".squares a[tabindex=\\"0\\"]")].map(square => square.terminal)'
            ),
            ['b'],
        )

    def test_the_keyboard_stays_in_the_view_of_a_terminal(self):
        self.open('#terminal=a')
        CHROMIUM.evaluate('document.querySelector("#theme").focus()')
        CHROMIUM.key('Tab')
        at = self.focused()
        self.assertEqual(at[:2], [True, '#'])
        self.refresh()
        self.assertEqual(self.focused(), at)
        CHROMIUM.key('Enter')
        CHROMIUM.wait(SQUARES)

    def test_the_window_stays_where_it_was_scrolled_to(self):
        CHROMIUM.resize(600, 400)
        for place, control in (('', 'tbody a'), ('#terminal=a', '#back')):
            with self.subTest(place=place):
                self.open(place)
                CHROMIUM.evaluate(f'document.querySelector("{control}").focus(); scrollTo(0, 700)')
                at = self.focused()
                self.assertEqual(CHROMIUM.evaluate('scrollY'), 700)
                self.refresh()
                self.assertEqual((CHROMIUM.evaluate('scrollY'), self.focused()), (700, at))


if __name__ == '__main__':
    for program in ('prometheus', 'promtool'):
        if not os.access(os.path.join(SOURCE, 'build/programs/usr/bin', program), os.X_OK):
            print(f'SKIPPED: no {program} under build/programs; ./check unpacks it')
            sys.exit(77)
    if not shutil.which('chromium'):
        print('SKIPPED: there is no chromium here')
        sys.exit(77)
    unittest.main(verbosity=2)
