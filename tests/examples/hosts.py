"""Common parts of the tests of the example hosts: starting and ending a host, and sipp."""

import csv
import itertools
import os
import re
import selectors
import signal
import socket
import subprocess
import tempfile

PATIENCE = 60  # seconds; much longer than any step takes on a slow machine


class Host:
    """The program under test, on a free port of a loopback address, with its log in a file. It has the RFC grammar if
    that is asked for or the address is IPv6. It is ended by SIGTERM, and killed if it does not end."""

    def __init__(self, program, folder, *options, address="127.0.0.1", is_rfc=False):
        self.address = address
        self.reference = f"[{address}]" if ":" in address else address  # as in a URL
        self.is_rfc = is_rfc or ":" in address
        self.options = f"--address {address} --grammar {'rfc' if self.is_rfc else 'classic'}"
        self.name = os.path.basename(program).removeprefix("example_")
        folder = tempfile.mkdtemp(dir=folder)
        self.log = os.path.join(folder, "host.log")
        properties = os.path.join(folder, "log.properties")
        with open(properties, "w", encoding="ascii") as out:
            out.write("log4cplus.rootLogger=DEBUG, F\nlog4cplus.appender.F=log4cplus::FileAppender\n"
                      f"log4cplus.appender.F.File={self.log}\n")
        self.process = subprocess.Popen([program, *self.options.split(), "--port", "0", "--log", properties, *options],
                                        stdout=subprocess.PIPE)

    def __enter__(self):
        with selectors.DefaultSelector() as selector:
            selector.register(self.process.stdout, selectors.EVENT_READ)
            line = self.process.stdout.readline() if selector.select(PATIENCE) else b""
        started = re.fullmatch(rf"\w+: listening on {re.escape(self.reference)}:(\d+)\n", line.decode())
        if started is None:
            self.process.kill()
            raise AssertionError(f"{self.name} does not start, but prints {line}")
        self.port = int(started[1])
        return self

    def __exit__(self, failure, *_):
        is_alive = self.process.poll() is None
        self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(PATIENCE)
        finally:
            self.process.kill()
        if failure is None:
            assert is_alive and self.process.returncode == 0, f"ended with {self.process.returncode}"

    def at(self):
        """Address and port as in a URL."""
        return f"{self.reference}:{self.port}"

    def log_text(self):
        with open(self.log, encoding="latin-1") as log:
            return log.read()


def family(address):
    return socket.AF_INET6 if ":" in address else socket.AF_INET


def loopback6():
    """The IPv6 loopback address; the IPv4 one where there is no IPv6."""
    try:
        with socket.socket(socket.AF_INET6, socket.SOCK_DGRAM) as probe:
            probe.bind(("::1", 0))
            return "::1"
    except OSError:
        print("there is no IPv6: over IPv4 instead")
        return "127.0.0.1"


ports = itertools.count(10000 + os.getpid() % 20000)  # below the ports that the kernel assigns


def free_port(address):
    """A free port. Several sipp processes that start at the same time may otherwise choose the same one."""
    for port in ports:
        with socket.socket(family(address), socket.SOCK_DGRAM) as udp, socket.socket(family(address)) as tcp:
            try:
                udp.bind((address, port))
                tcp.bind((address, port))
                return port
            except OSError:
                pass


class Sipp:
    """sipp, playing a scenario against the host."""

    def __init__(self, host, folder, name, scenario, calls, rate, *options):
        self.stats = os.path.join(folder, f"{name}.csv")
        self.errors = os.path.join(folder, f"{name}.err")
        path = os.path.join(folder, f"{name}.xml")
        with open(path, "w", encoding="ascii") as out:
            out.write(scenario)
        self.process = subprocess.Popen(
            ["sipp", host.at(), "-sf", path, "-i", host.reference, "-p",
             str(free_port(host.address)),
             "-m", str(calls), "-r", str(rate), "-recv_timeout", str(PATIENCE * 1000), "-nostdin",
             "-trace_stat", "-stf", self.stats, "-trace_err", "-error_file", self.errors, *options],
            cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def result(self, timeout=2 * PATIENCE):
        """(calls that ended as the scenario says, other calls, retransmissions by sipp)"""
        try:
            self.process.wait(timeout)
        finally:
            self.process.kill()
        with open(self.stats, encoding="ascii") as rows:
            total = list(csv.DictReader(rows, delimiter=";"))[-1]
        return tuple(int(total[f"{column}(C)"]) for column in ("SuccessfulCall", "FailedCall", "Retransmissions"))

    def why(self):
        """The beginning of the errors that sipp reported."""
        return self.errors_text()[:3000] or f"ended with {self.process.returncode}"

    def errors_text(self):
        if not os.path.exists(self.errors):
            return ""
        with open(self.errors, encoding="latin-1") as errors:
            return errors.read()
