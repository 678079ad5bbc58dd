"""Simulated terminals: what `zelhost metrics` writes of a few dozen simulated ones, served as if each of many had a
node_exporter of its own. One node_exporter takes 18 MB, so 200 real ones would fill this machine.

Ten terminals make a shop. Which one has which trouble follows from its number: see KINDS.
"""
import asyncio
import json
import os
import re
import socket
import threading

VARIANTS = 16  # healthy terminals that differ
SHOP_SIZE = 10

# Of so many terminals these have trouble; the others are healthy. The terminals of shop 8 are all gone.
PERIOD = 60
KINDS = {
    4: 'overheating',
    15: 'dying',
    22: 'gone',
    31: 'driverless',
    38: 'full',
    43: 'open',
    50: 'silent',
    57: 'stopped',
}
GONE_SHOP = 8


def kind_of(number):
    return 'gone' if number // SHOP_SIZE == GONE_SHOP else KINDS.get(number % PERIOD, 'healthy')


def name_of(number):
    return f'till{number % SHOP_SIZE + 1}.shop{number // SHOP_SIZE:04}'


def scenario_of(kind, variant, healthy):
    """The text of a scenario, made of that of the healthy terminal."""
    text = re.sub(r'^seed = \d+', f'seed = {variant + 11}', healthy, flags=re.M)
    # Each terminal is somewhat warmer or colder than the others.
    shift = variant % 8 - 3
    text = re.sub(r'middle = 38, amplitude = 3', f'middle = {38 + shift}, amplitude = 3', text)
    text = re.sub(
        r'start = 52, step = 2, min = 46, max = 61',
        f'start = {52 + shift}, step = 2, min = {46 + shift}, max = {61 + shift}',
        text,
    )
    if kind == 'full':
        text = re.sub(r'^full = false', 'full = true', text, flags=re.M)
    if kind == 'open':
        head, cover = text.split('name = "Cabinet Cover"', 1)
        text = head + 'name = "Cabinet Cover"' + re.sub(r'^reading = .*$', 'reading = 1', cover, count=1, flags=re.M)
    if kind == 'dying':
        text += '\n[[fault]]\noperation = "read"\nhandle = 0x41\nfrom-call = 4\nstatus = 0x00010005\n'
    if kind == 'driverless':
        text = 'model = "none"\n\n[[fault]]\noperation = "initialise"\nstatus = 0x00010002\n'
    return text


class Pages:
    """The programs that write the pages, under `directory`; each plays one scenario."""

    def __init__(self, children, zelhost, scenarios, directory, every):
        with open(os.path.join(scenarios, 'healthy.toml'), encoding='utf-8') as file:
            healthy = file.read()
        self.directory = directory
        self.programs = {}
        for kind, variant in [('healthy', number) for number in range(VARIANTS)] + [
            (kind, VARIANTS) for kind in ('overheating', 'dying', 'driverless', 'full', 'open', 'stopped')
        ]:
            own = os.path.join(directory, f'{kind}-{variant % VARIANTS}')
            os.makedirs(own)
            scenario = os.path.join(own, 'scenario.toml')
            if kind == 'overheating':
                scenario = os.path.join(scenarios, 'overheating.toml')
            else:
                with open(scenario, 'w', encoding='utf-8') as file:
                    file.write(scenario_of(kind, variant, healthy))
            self.programs[kind, variant % VARIANTS] = children.start(
                [
                    zelhost,
                    'metrics',
                    '--scenario',
                    scenario,
                    '--every',
                    every,
                    '--to',
                    os.path.join(own, 'zelsensors.prom'),
                ],
                os.path.join(own, 'zelhost.log'),
            )

    def path(self, number):
        """Where the page of this terminal is; of one without a page, none."""
        kind = kind_of(number)
        if kind == 'silent':
            return None
        return os.path.join(
            self.directory, f'{kind}-{number % VARIANTS if kind == "healthy" else 0}', 'zelsensors.prom'
        )

    def stop_one(self):
        """Ends the program of the terminals whose program is to be found stopped; the page stays, as after a crash."""
        self.programs.pop(('stopped', 0)).kill()


class Exporters:
    """Answers /terminals/N as the node_exporter of terminal N would, of which only the textfile collector is asked.

    One thread serves all: with one for each of 5,000 connections Python answers more and more of them too late.
    """

    def __init__(self, pages):
        self._pages = pages
        listener = socket.create_server(('127.0.0.1', 0), backlog=4096)
        self._port = listener.getsockname()[1]
        threading.Thread(target=lambda: asyncio.run(self._serve(listener)), daemon=True).start()

    def write_targets(self, path, count):
        """For file_sd_configs: instance, shop, and the path here in place of a host."""
        targets = [
            {
                'targets': [f'127.0.0.1:{self._port}'],
                'labels': {
                    'instance': name_of(number) + ':9100',
                    'shop': f'{number // SHOP_SIZE:04}',
                    '__metrics_path__': f'/terminals/{number}',
                },
            }
            for number in range(count)
        ]
        with open(path, 'w', encoding='utf-8') as file:
            json.dump(targets, file)

    async def _serve(self, listener):
        server = await asyncio.start_server(self._answer, sock=listener)
        await server.serve_forever()

    async def _answer(self, reader, writer):
        try:
            while True:
                head = await reader.readuntil(b'\r\n\r\n')
                path = head.split(b' ', 2)[1].split(b'?')[0]
                writer.write(self._response(int(path.rsplit(b'/', 1)[1])))
                await writer.drain()
        except (asyncio.IncompleteReadError, ConnectionError):
            pass  # Prometheus has gone
        finally:
            writer.close()

    def _response(self, number):
        if kind_of(number) == 'gone':
            return b'HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\n\r\n'
        page = '# TYPE node_textfile_scrape_error gauge\nnode_textfile_scrape_error 0\n'
        path = self._pages.path(number)
        try:
            if path:
                with open(path, encoding='utf-8') as file:
                    content = file.read()
                    written = os.fstat(file.fileno()).st_mtime
                page += content + (
                    '# TYPE node_textfile_mtime_seconds gauge\n'
                    f'node_textfile_mtime_seconds{{file="/run/zelsensors/zelsensors.prom"}} {written}\n'
                )
        except FileNotFoundError:
            pass
        data = page.encode()
        head = f'HTTP/1.1 200 OK\r\nContent-Type: text/plain; version=0.0.4\r\nContent-Length: {len(data)}\r\n\r\n'
        return head.encode() + data
