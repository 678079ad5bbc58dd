"""A headless Chromium, driven by its DevTools protocol through a pipe: no port, no further library."""
import base64
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

LIMIT_S = 900  # only ends what hangs


class Browser:
    """Starts with the object and ends with close(). `requests` has the address of every request of the page."""

    def __init__(self, width=1280, height=900, dark=False):
        self.directory = tempfile.mkdtemp(prefix='zelsensors-browser-')
        to_read, self.to_browser = os.pipe()
        self.from_browser, to_write = os.pipe()

        def at_three_and_four():
            commands, answers = os.dup(to_read), os.dup(to_write)
            # Out of the way of 3 and 4 first.
            commands, answers = os.dup2(commands, 100), os.dup2(answers, 101)
            os.dup2(commands, 3)
            os.dup2(answers, 4)

        self.process = subprocess.Popen(
            [
                'chromium',
                '--headless=new',
                '--no-sandbox',
                '--disable-gpu',
                '--disable-dev-shm-usage',
                '--disable-background-networking',
                '--disable-component-update',
                '--no-first-run',
                '--user-data-dir=' + self.directory,
                '--remote-debugging-pipe',
                'about:blank',
            ],
            preexec_fn=at_three_and_four,
            close_fds=False,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            start_new_session=True,
        )
        os.close(to_read)
        os.close(to_write)
        self.buffer = b''
        self.number = 0
        self.requests = []
        self.errors = []
        target = self.command('Target.createTarget', url='about:blank')['targetId']
        self.session = None
        self.session = self.command('Target.attachToTarget', targetId=target, flatten=True)['sessionId']
        for domain in ('Page', 'Network', 'Runtime', 'Log'):
            self.command(domain + '.enable')
        self.resize(width, height)
        self.command(
            'Emulation.setEmulatedMedia',
            features=[{'name': 'prefers-color-scheme', 'value': 'dark' if dark else 'light'}],
        )

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.to_browser)
        os.close(self.from_browser)
        shutil.rmtree(self.directory, ignore_errors=True)

    def receive(self):
        end = time.monotonic() + LIMIT_S
        while b'\0' not in self.buffer:
            if not select.select([self.from_browser], [], [], max(0, end - time.monotonic()))[0]:
                raise TimeoutError('the browser says nothing')
            data = os.read(self.from_browser, 1 << 20)
            if not data:
                raise EOFError('the browser has ended')
            self.buffer += data
        message, self.buffer = self.buffer.split(b'\0', 1)
        message = json.loads(message)
        if message.get('method') == 'Network.requestWillBeSent':
            self.requests.append(message['params']['request']['url'])
        if message.get('method') == 'Runtime.exceptionThrown':
            self.errors.append(message['params']['exceptionDetails'])
        return message

    def command(self, method, **parameters):
        self.number += 1
        message = {'id': self.number, 'method': method, 'params': parameters}
        if getattr(self, 'session', None):
            message['sessionId'] = self.session
        data = json.dumps(message).encode() + b'\0'
        while data:
            data = data[os.write(self.to_browser, data) :]
        while True:
            answer = self.receive()
            if answer.get('id') == self.number:
                if 'error' in answer:
                    raise RuntimeError(f'{method}: {answer["error"]}')
                return answer['result']

    def resize(self, width, height):
        self.command(
            'Emulation.setDeviceMetricsOverride', width=width, height=height, deviceScaleFactor=1, mobile=False
        )

    def open(self, url):
        self.command('Page.navigate', url='about:blank')
        self.requests.clear()
        self.command('Page.navigate', url=url)

    def evaluate(self, expression):
        answer = self.command('Runtime.evaluate', expression=expression, returnByValue=True, awaitPromise=True)
        if 'exceptionDetails' in answer:
            raise RuntimeError(f'{expression}: {answer["exceptionDetails"]}')
        return answer['result'].get('value')

    def wait(self, expression):
        """Until the expression is true in the page; returns its value."""
        end = time.monotonic() + LIMIT_S
        while True:
            try:
                value = self.evaluate(expression)
            except RuntimeError as error:
                # The page of before has gone, the next is not there.
                if 'context' not in str(error) and 'null' not in str(error) and 'defined' not in str(error):
                    raise
                value = None
            if value:
                return value
            if time.monotonic() > end:
                raise TimeoutError(f'{expression} stays false; the page:\n' + self.text())
            time.sleep(0.05)

    def text(self, selector='body'):
        return self.evaluate(f'(document.querySelector({json.dumps(selector)}) || {{}}).innerText || ""')

    def key(self, key, text=None):
        codes = {
            'Enter': 13,
            'Escape': 27,
            'Tab': 9,
            'ArrowLeft': 37,
            'ArrowUp': 38,
            'ArrowRight': 39,
            'ArrowDown': 40,
            'Home': 36,
            'End': 35,
            ' ': 32,
        }
        if key == 'Enter':
            text = '\r'
        elif len(key) == 1:
            text = key
        parameters = {'key': key, 'windowsVirtualKeyCode': codes.get(key, ord(key[0].upper()))}
        self.command('Input.dispatchKeyEvent', type='keyDown', **parameters, **({'text': text} if text else {}))
        self.command('Input.dispatchKeyEvent', type='keyUp', **parameters)

    def type(self, text):
        for character in text:
            self.key(character)

    def screenshot(self, path):
        picture = self.command('Page.captureScreenshot', format='png')['data']
        with open(path, 'wb') as file:
            file.write(base64.b64decode(picture))
