"""What Alertmanager tells, in lines."""
import http.server
import json
import threading
import time


def lines_of(message):
    """One line for the group, one for each of its alerts."""
    firing = sum(alert['status'] == 'firing' for alert in message['alerts'])
    group = message.get('groupLabels', {}).get('shop')
    yield f'--- {"shop " + group if group else "no shop"}: {firing} firing, {len(message["alerts"]) - firing} resolved'
    for alert in message['alerts']:
        labels, annotations = alert['labels'], alert.get('annotations', {})
        yield (
            f'{"FIRING  " if alert["status"] == "firing" else "resolved"} {labels.get("severity", ""):8} '
            f'{labels.get("alertname", "")}: {annotations.get("summary", "")}. {annotations.get("description", "")}'
        )


def printable(text):
    """A label may hold what moves a terminal's cursor."""
    return ''.join(character if character.isprintable() else f'\\x{ord(character):02x}' for character in text)


class Receiver(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, say):
        self.say = say
        self.lock = threading.Lock()
        super().__init__(('127.0.0.1', 0), Webhook)
        threading.Thread(target=self.serve_forever, daemon=True).start()


class Webhook(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        message = json.loads(self.rfile.read(int(self.headers['Content-Length'])))
        with self.server.lock:
            for line in lines_of(message):
                self.server.say(time.strftime('%H:%M:%S ') + printable(line))
        self.send_response(200)
        self.send_header('Content-Length', '0')
        self.end_headers()

    def log_message(self, *arguments):
        pass
