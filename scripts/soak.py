"""soak.py REGISTRAR GATEWAY [--calls N] [--rate N]: the example hosts under load, as days of service in minutes.

Valid traffic is calls and registrations by sipp, over UDP and TCP, with both grammars. At the same time messages with
changed bytes come, connections are cut at every byte of a message, log levels change, and twice INVITEs come that
nobody ends until there is no more room. Laws: no valid call fails but those that got 503; in the second half memory
does not grow; at the end no host has more open handles than before."""

import argparse
import collections
import contextlib
import os
import re
import socket
import struct
import sys
import tempfile
import threading
import time

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "examples"))
import gateway_test  # pylint: disable=wrong-import-position
from hosts import Host, Sipp, loopback6  # pylint: disable=wrong-import-position

USER, PASSWORD, REALM = "alice", "secret", "kx.example"
GROWTH = 40  # bytes of memory for each call, above which it is not flat: a lost header object is larger
LEVELS = ("WARN", "DEBUG", "WARN", "INFO", "WARN", "OFF")
# Times in milliseconds such that a transaction is over in 6 seconds, not in 32.
QUICK = ("--timer-t1", "100", "--ring", "20")

Sample = collections.namedtuple("Sample", "time memory handles")


class Watched:
    """A host with what it uses, once a second."""

    def __init__(self, name, host):
        self.name, self.host = name, host
        self.samples = [self.look()]

    def look(self):
        folder = f"/proc/{self.host.process.pid}"
        with open(f"{folder}/statm", encoding="ascii") as numbers:
            memory = int(numbers.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
        return Sample(time.monotonic(), memory, len(os.listdir(f"{folder}/fd")))

    def sample(self):
        self.samples.append(self.look())

    def slope(self):
        """Bytes per second, by least squares, in the second half."""
        later = self.samples[len(self.samples) // 2:]
        times, memory = [s.time for s in later], [s.memory for s in later]
        middle, level = sum(times) / len(times), sum(memory) / len(memory)
        return (sum((t - middle) * (m - level) for t, m in zip(times, memory))
                / max(1e-9, sum((t - middle) ** 2 for t in times)))  # fmt: skip


class Background:
    """Does something again and again in a thread, until it is ended; keeps what it throws."""

    def __init__(self, work):
        self.work, self.rounds, self.fault, self.ended = work, 0, None, threading.Event()
        self.thread = threading.Thread(target=self.run)
        self.thread.start()

    def run(self):
        try:
            while not self.ended.is_set():
                self.work(self.rounds)
                self.rounds += 1
        except Exception as fault:  # pylint: disable=broad-except # reported by end()
            self.fault = fault

    def end(self):
        self.ended.set()
        self.thread.join()
        if self.fault:
            raise self.fault
        return self.rounds


def change_level(hosts, number):
    """Gives all hosts the next log level; they notice it within a second."""
    level = LEVELS[number % len(LEVELS)]
    for host in hosts:
        path = os.path.join(os.path.dirname(host.log), "log.properties")
        with open(path, "w", encoding="ascii") as out:
            out.write(f"log4cplus.rootLogger={level}, F\nlog4cplus.appender.F=log4cplus::RollingFileAppender\n"
                      f"log4cplus.appender.F.MaxFileSize=8MB\nlog4cplus.appender.F.File={host.log}\n")
    time.sleep(3)


def cut_connection(host, number):
    """Connections that end after each byte of an INVITE, by a FIN or a reset."""
    maker = gateway_test.Client(host)
    message = maker.request(method="INVITE", branch=f"z9hG4bKcut{number}", body="v=0\r\n")
    for length in range(len(message)):
        with socket.create_connection((host.address, host.port)) as stream:
            if length % 2:
                stream.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            stream.sendall(message[:length])
        time.sleep(0.002)


def fill(host, most=20000):
    """INVITEs that nobody acknowledges, until one is refused for want of room; returns how many were sent."""
    client = gateway_test.Client(host)
    for number in range(most):
        client.send(client.request(method="INVITE", branch=f"z9hG4bKfill{time.monotonic_ns()}"))
        client.socket.setblocking(False)
        try:
            while answer := client.socket.recv(65536):
                if answer.startswith(b"SIP/2.0 503 "):
                    return number + 1
        except BlockingIOError:
            pass
        time.sleep(0.0002)
    raise AssertionError(f"there is still room after {most} INVITEs")


def load(site, calls, rate):
    """The runs of sipp: (name, number of calls, run)."""
    path = os.path.join(os.path.dirname(gateway_test.__file__), "register.xml")
    with open(path, encoding="ascii") as steps:
        register = steps.read()
    call = gateway_test.scenario(gateway_test.CALL)
    reliable = gateway_test.scenario(gateway_test.RELIABLE)
    rows = [("call, UDP", "gateway", call, []), ("call, TCP", "gateway", call, ["-t", "t1"]),
            ("call, UDP, RFC grammar", "gateway rfc", call, []),
            ("call, TCP, RFC grammar", "gateway rfc", call, ["-t", "t1"]),
            ("reliable, with session timer", "gateway", reliable, []),
            ("reliable, with session timer, RFC grammar", "gateway rfc", reliable, []),
            ("register", "registrar", register, ["-au", USER, "-ap", PASSWORD]),
            ("register, RFC grammar", "registrar rfc", register, ["-au", USER, "-ap", PASSWORD])]
    patient = ["-default_behaviors", "all,-abortunexp", "-l", "2000"]
    for name, where, steps, options in rows:
        host = site[where].host
        at = ["-auth_uri", host.at()] if "-au" in options else []
        count = calls // len(rows)
        yield name, count, Sipp(host, site["folder"], name, steps, count, rate, *options, *at, *patient)


def start(stack, registrar, gateway, folder):
    users = os.path.join(folder, "users")
    with open(users, "w", encoding="ascii") as out:
        out.write(f"{USER}:{PASSWORD}\n")
    hosts = {}
    for name, program, options in (("registrar", registrar, ("--realm", REALM, "--users", users)),
                                   ("gateway", gateway, QUICK)):
        for suffix, address in (("", "127.0.0.1"), (" rfc", loopback6())):
            host = stack.enter_context(Host(program, folder, *options, address=address, is_rfc=bool(suffix)))
            hosts[name + suffix] = Watched(name + suffix, host)
    return hosts


def check(watched, calls):
    """Prints what the host used; returns whether that is too much."""
    first, last = watched.samples[0], watched.samples[-1]
    seconds = last.time - first.time
    per_call = watched.slope() * seconds / calls
    peak = max(sample.memory for sample in watched.samples)
    print(f"{watched.name}: memory {first.memory >> 10} KiB at first, {peak >> 10} at most, {last.memory >> 10} at "
          f"last, slope {watched.slope():.0f} bytes a second, {per_call:.1f} a call; handles {first.handles}, at most "
          f"{max(sample.handles for sample in watched.samples)}, at last {last.handles}")
    return per_call > GROWTH or last.handles > first.handles


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("registrar")
    parser.add_argument("gateway")
    parser.add_argument("--calls", type=int, default=200000)
    parser.add_argument("--rate", type=int, default=60, help="of each of the eight runs, a second")
    options = parser.parse_args()
    failed = False
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        hosts = start(stack, options.registrar, options.gateway, folder)
        gateways = [hosts["gateway"].host, hosts["gateway rfc"].host]
        levels = Background(lambda number: change_level([watched.host for watched in hosts.values()], number))
        storms = Background(lambda number: gateway_test.storm(gateways[number % 2], 2000, seed=number))
        cuts = Background(lambda number: cut_connection(gateways[number % 2], number))
        runs = list(load({**hosts, "folder": folder}, options.calls, options.rate))
        filled, begin = [], time.monotonic()
        expected = options.calls / 8 / options.rate
        while any(run.process.poll() is None for _, _, run in runs):
            time.sleep(1)
            for watched in hosts.values():
                watched.sample()
            if len(filled) < 2 and time.monotonic() - begin > expected * (1 + len(filled)) / 8:
                filled.append(fill(gateways[len(filled)]))
        print(f"{storms.end()} storms of 2,000 messages, {cuts.end()} times a connection cut at every byte, "
              f"{levels.end()} changes of log levels, full after {' and '.join(map(str, filled))} INVITEs")
        time.sleep(10)  # until the last transactions are over
        for name, count, run in runs:
            done, lost, repeats = run.result()
            refused = len(re.findall(r"SIP/2\.0 503 ", run.errors_text()))
            print(f"{name}: {done} of {count} calls as expected, {lost} not, {repeats} retransmissions, "
                  f"503 {refused} times")
            failed = failed or done + min(lost, refused) != count
        for watched in hosts.values():
            watched.sample()
            failed = check(watched, options.calls / 4) or failed
        if len(filled) != 2:
            print("the calls were over before the table was filled twice")
            failed = True
    return failed


if __name__ == "__main__":
    sys.exit(main())
