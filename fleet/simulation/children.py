"""Programs that run beside this one and end with it, whatever becomes of it."""
import ctypes
import os
import signal
import socket
import subprocess

PR_SET_PDEATHSIG = 1  # of prctl(2)
LIMIT_S = 20  # how long an end may take before it is forced


def free_port(wanted):
    """That port if it is free, else any."""
    for port in (wanted, 0):
        with socket.socket() as listener:
            # As servers do: a port whose connections of before are closing is free.
            listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            try:
                listener.bind(('127.0.0.1', port))
                return listener.getsockname()[1]
            except OSError:
                pass
    raise OSError('no port is free on 127.0.0.1')


def alertmanager(unpacked):
    """The beginning of the command that starts Debian's Alertmanager as it is unpacked there. It reads a template at a
    fixed place under /usr/share, so it gets a view of its own of that directory, with the unpacked files in it."""
    program = os.path.join(unpacked, 'usr/bin/prometheus-alertmanager')
    if os.path.exists('/usr/share/prometheus/alertmanager/default.tmpl'):
        return [program]
    as_root = [] if os.geteuid() == 0 else ['--map-root-user']
    script = (
        'mount -t overlay overlay -o "lowerdir=$0/usr/share:/usr/share" /usr/share && '
        'exec setpriv --pdeathsig TERM "$@"'
    )
    return ['unshare', '--mount', *as_root, 'sh', '-c', script, unpacked, program]


class Children:
    def __init__(self):
        self.running = []
        self.libc = ctypes.CDLL(None)

    def start(self, command, log, **options):
        """Its output goes to the file `log`. Ctrl-C does not reach it: who started it ends it."""
        libc = self.libc

        def end_with_parent():
            libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM)

        with open(log, 'ab') as output:
            child = subprocess.Popen(
                command,
                stdin=subprocess.DEVNULL,
                stdout=output,
                stderr=output,
                start_new_session=True,
                preexec_fn=end_with_parent,
                **options
            )
        self.running.append(child)
        return child

    def end(self):
        for child in self.running:
            child.terminate()
        for child in self.running:
            try:
                child.wait(LIMIT_S)
            except subprocess.TimeoutExpired:
                child.kill()
                child.wait()
        self.running.clear()
