"""foreign.py REGISTRAR GATEWAY: runs the example hosts against foreign SIP programs; see scripts/foreign."""

import contextlib
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time
from functools import partial

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "examples"))
import gateway_test  # pylint: disable=wrong-import-position
from hosts import Host, Sipp, family, free_port, loopback6  # pylint: disable=wrong-import-position

SECONDS = 20  # for each case
ALL_SECONDS = 270
END = time.monotonic() + ALL_SECONDS
REGISTRAR, GATEWAY = sys.argv[1:3]
USER, PASSWORD = "alice", "secret"


class Failure(Exception):
    pass


FAULTS = (Failure, AssertionError, OSError, subprocess.SubprocessError)


class Program:
    """A foreign program, with its output in a file. It and what it has started are ended with the context."""

    def __init__(self, folder, *command):
        self.folder = tempfile.mkdtemp(dir=folder)
        self.name = command[0]
        self.command = command

    def __enter__(self):
        with open(os.path.join(self.folder, "output"), "wb") as out:
            self.process = subprocess.Popen(self.command, cwd=self.folder, stdin=subprocess.DEVNULL, stdout=out,
                                            stderr=subprocess.STDOUT, start_new_session=True)
        try:
            self.await_start()
        except BaseException:
            self.end()
            raise
        return self

    def __exit__(self, *_):
        self.end()

    def await_start(self):
        """Waits until the program can be used."""

    def end(self, seconds=4):
        """Ends the program by SIGTERM, so that it can say good-bye, and what is left of it by SIGKILL."""
        with contextlib.suppress(ProcessLookupError):
            if self.process.poll() is None:
                self.process.terminate()
                with contextlib.suppress(subprocess.TimeoutExpired):
                    self.process.wait(seconds)
            os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()

    def output(self):
        with open(os.path.join(self.folder, "output"), encoding="latin-1") as out:
            return re.sub("\x1b\\[[0-9;]*m", "", out.read())

    def expect(self, pattern, seconds=10):
        """Waits until the output has the pattern."""
        end = time.monotonic() + seconds
        while not re.search(pattern, self.output()):
            has_ended = self.process.poll() is not None
            if has_ended and not re.search(pattern, self.output()) or time.monotonic() > end:
                raise Failure(f"{self.name} does not print \"{pattern}\" but ends with: {last(self.output())}")
            time.sleep(0.05)


def last(text):
    """The end of an output, on one line."""
    return " | ".join(line.strip() for line in text.splitlines() if line.strip())[-300:]


def run(folder, *command):
    """The output of a program that ends with 0."""
    with Program(folder, *command) as program:
        try:
            code = program.process.wait(SECONDS)
        except subprocess.TimeoutExpired:
            code = "no end"
        if code != 0:
            raise Failure(f"{program.name}: {code}, {last(program.output())}")
        return program.output()


class Proxy(Program):
    """Kamailio on a free port: passes REGISTER to the registrar with a Path, and other requests to the host of their
    user, "gateway" or "alice"; over TCP for "gateway-tcp" and "alice-tcp". It stays on the path of calls."""

    CONFIG = """#!KAMAILIO
debug=0
log_stderror=yes
fork=yes
children=1
tcp_children=1
auto_aliases=no
dns=no
rev_dns=no
listen=udp:{at}
listen=tcp:{at}
loadmodule "tm.so"
loadmodule "sl.so"
loadmodule "rr.so"
loadmodule "pv.so"
loadmodule "maxfwd.so"
loadmodule "siputils.so"
loadmodule "textops.so"
loadmodule "path.so"
request_route {{
    if (!mf_process_maxfwd_header("10")) {{ sl_send_reply("483", "Too Many Hops"); exit; }}
    if (is_method("CANCEL")) {{ if (t_check_trans()) t_relay(); exit; }}
    if (has_totag()) {{
        if (!loose_route() && is_method("ACK") && !t_check_trans()) exit;
        t_relay();
        exit;
    }}
    remove_hf("Route");
    if (is_method("INVITE")) record_route();
    if (is_method("REGISTER")) {{ add_path(); $du = "sip:{registrar}"; }}
    else if ($rU == "gateway") $du = "sip:{gateway}";
    else if ($rU == "gateway-tcp") $du = "sip:{gateway};transport=tcp";
    else if ($rU == "alice") $du = "sip:{alice}";
    else if ($rU == "alice-tcp") {{ $rU = "alice"; $du = "sip:{alice};transport=tcp"; }}
    else {{ sl_send_reply("404", "Not Found"); exit; }}
    if (!t_relay()) sl_reply_error();
}}
"""

    def __init__(self, folder, registrar, gateway, alice):
        self.address, self.reference = registrar.address, registrar.reference
        self.port = free_port(self.address)
        super().__init__(folder, "kamailio", "-DD", "-E", "-f", "kamailio.cfg", "-Y", ".", "-m", "16", "-M", "4")
        with open(os.path.join(self.folder, "kamailio.cfg"), "w", encoding="ascii") as out:
            out.write(self.CONFIG.format(at=self.at(), registrar=registrar.at(), gateway=gateway.at(), alice=alice))

    def at(self):
        return f"{self.reference}:{self.port}"

    def await_start(self):
        end = time.monotonic() + 10
        while True:
            with contextlib.suppress(OSError), socket.socket(family(self.address)) as connection:
                connection.connect((self.address, self.port))
                return
            if self.process.poll() is not None or time.monotonic() > end:
                raise Failure(f"kamailio does not start: {last(self.output())}")
            time.sleep(0.05)


class Phone(Program):
    """Baresip as alice, who answers each call. Her sound goes nowhere."""

    CONFIG = """sip_listen {at}
net_interface {address}
audio_source aubridge,a
audio_player aubridge,a
audio_alert aubridge,b
ausrc_srate 8000
auplay_srate 8000
rtp_ports 20000-21000
module_path /usr/lib/baresip/modules
module g711.so
module aubridge.so
{uuid}
module_tmp account.so
module_app menu.so
"""

    def __init__(self, folder, site, transport, *commands, proxy=None, registers=False):
        version = "-6" if ":" in site.address else "-4"
        executed = [part for command in commands for part in ("-e", command)]
        super().__init__(folder, "baresip", "-f", ".", "-v", "-s", version, *executed)
        with open(os.path.join(self.folder, "config"), "w", encoding="ascii") as out:
            uuid = "module_tmp uuid.so" if proxy else ""  # without it, "Supported" has no value
            out.write(self.CONFIG.format(at=site.alice, address=site.address, uuid=uuid))
        account = f"<sip:{USER}@{site.registrar.at()};transport={transport}>;auth_user={USER};auth_pass={PASSWORD}"
        if proxy:
            account += f";sipnat=outbound;outbound=\"sip:{proxy.at()};transport={transport}\""
        with open(os.path.join(self.folder, "accounts"), "w", encoding="ascii") as out:
            out.write(f"{account};answermode=auto;regint={600 if registers else 0}\n")

    def await_start(self):
        self.expect("baresip is ready")


class Site:
    """The hosts on one address with one grammar, and the proxy before them."""

    def __init__(self, stack, folder, address, is_rfc):
        users = os.path.join(folder, "users")
        with open(users, "w", encoding="ascii") as out:
            out.write(f"{USER}:{PASSWORD}\n")

        def host(program, *options):
            return stack.enter_context(Host(program, folder, *options, address=address, is_rfc=is_rfc))

        self.folder, self.address = folder, address
        self.registrar = host(REGISTRAR, "--realm", "kx.example", "--users", users)
        self.gateway = host(GATEWAY)
        self.alice = f"{self.gateway.reference}:{free_port(address)}"
        free_port(address)  # the port after it, which baresip wants for TLS
        self.proxy = stack.enter_context(Proxy(folder, self.registrar, self.gateway, self.alice))

    # Each case raises what is wrong.

    def sipp_registers(self, through=None):
        with open(os.path.join(os.path.dirname(gateway_test.__file__), "register.xml"), encoding="ascii") as steps:
            host = through or self.registrar
            self.play(host, "register", steps.read(), "-au", USER, "-ap", PASSWORD, "-auth_uri", host.at())

    def sipp_calls(self, transport, through=None):
        steps = gateway_test.scenario(gateway_test.CALL)
        if through:  # follows the Record-Route
            steps = steps.replace("<recv response=\"200\"", "<recv response=\"200\" rrs=\"true\"")
            for method in ("ACK", "BYE"):
                steps = steps.replace(f"{method} sip:gateway@[remote_ip]:[remote_port] SIP/2.0\n",
                                      f"{method} [next_url] SIP/2.0\n[routes]\n")
        self.play(through or self.gateway, "call", steps, "-t", "t1" if transport == "tcp" else "u1")

    def play(self, host, name, steps, *options):
        folder = tempfile.mkdtemp(dir=self.folder)
        sipp = Sipp(host, folder, name, steps, 3, 10, *options)
        try:
            good, bad, _ = sipp.result(SECONDS - 2)
        except subprocess.TimeoutExpired as error:
            raise Failure("sipp does not end") from error
        if (good, bad) != (3, 0):
            raise Failure(f"sipp: {good} of 3 calls as expected, {last(sipp.why())}")

    def sipsak_asks(self, host, transport, user="", code=200):
        where = f"sip:{user}{host.at()}"
        with Program(self.folder, "sipsak", "-vv", "-E", transport, "-s", where) as sipsak:
            sipsak.expect(f"(?s)SIP/2.0 {code} .*\nAllow: .*final received")

    def sipsak_registers(self, host, transport):
        contact = f"sip:{USER}@{self.alice}"
        output = run(self.folder, "sipsak", "-vv", "-U", "-i", "-E", transport, "-u", USER, "-a", PASSWORD, "-x", "60",
                     "-C", contact, "-s", f"sip:{USER}@{host.at()}")
        if "completed successful" not in output:
            raise Failure(last(output))

    def phone_registers(self, transport, through=None):
        with Phone(self.folder, self, transport, proxy=through, registers=True) as phone:
            phone.expect(r"200 O[Kk] \(.*\) \[\d bindings?\]")

    def phone_calls(self, transport, through=None):
        with Phone(self.folder, self, transport, f"/dial sip:gateway@{self.gateway.at()}", proxy=through) as phone:
            phone.expect(f"(?s){transport.upper()} [^ ]* -> [^ ]*\nINVITE .*Call established")
            self.hang_up(phone)

    def hang_up(self, phone):
        """Ends the phone, which ends its call."""
        before = self.gateway.log_text().count("200 to BYE")
        phone.end()
        if self.gateway.log_text().count("200 to BYE") != before + 1:
            raise Failure(f"the BYE was not answered: {last(phone.output())}")

    def phone_answers(self, transport, through=None):
        user = "alice-tcp" if through and transport == "tcp" else "alice"
        where = f"sip:{user}@{through.at() if through else self.alice}"
        with Phone(self.folder, self, transport) as phone:
            self.gateway_calls(where, transport, "as planned")
            phone.expect(f"(?s){transport.upper()} [^ ]* -> [^ ]*\nINVITE .*Call established.*session closed")

    def gateway_calls(self, url, transport, expected, *options):
        flags = ("--tcp",) if transport == "tcp" else ()
        output = run(self.folder, os.path.abspath(GATEWAY), *self.gateway.options.split(), "--port", "0", "call", url,
                     "--duration", "300", *flags, *options)
        if f"call: {expected}" not in output:
            raise Failure(last(output))


def cases(site):
    """(name, what is to be done) for each case."""
    proxy, registrar, gateway = site.proxy, site.registrar, site.gateway
    yield "sipp registers, UDP", site.sipp_registers
    yield "sipp registers through kamailio, UDP", partial(site.sipp_registers, proxy)
    yield "baresip registers, UDP", partial(site.phone_registers, "udp")
    if ":" not in site.address:  # sipsak has no IPv6
        yield "sipsak asks registrar for options, UDP", partial(site.sipsak_asks, registrar, "udp", code=405)
        yield "sipsak registers, UDP", partial(site.sipsak_registers, registrar, "udp")
        for kind in ("udp", "tcp"):
            name = kind.upper()
            yield f"sipsak registers through kamailio, {name}", partial(site.sipsak_registers, proxy, kind)
            yield f"sipsak asks gateway for options, {name}", partial(site.sipsak_asks, gateway, kind)
            yield (f"sipsak asks gateway through kamailio, {name}",
                   partial(site.sipsak_asks, proxy, kind, "gateway@"))
    for kind in ("udp", "tcp"):
        name = kind.upper()
        yield f"sipp calls, {name}", partial(site.sipp_calls, kind)
        yield f"sipp calls through kamailio, {name}", partial(site.sipp_calls, kind, proxy)
        yield f"baresip registers through kamailio, {name}", partial(site.phone_registers, kind, proxy)
        yield f"baresip calls, {name}", partial(site.phone_calls, kind)
        yield f"baresip calls through kamailio, {name}", partial(site.phone_calls, kind, proxy)
        yield f"baresip is called, {name}", partial(site.phone_answers, kind)
        yield f"baresip is called through kamailio, {name}", partial(site.phone_answers, kind, proxy)
        url = f"sip:gateway{'-tcp' if kind == 'tcp' else ''}@{proxy.at()}"
        yield (f"gateway calls gateway through kamailio, {name}, reliable",
               partial(site.gateway_calls, url, kind, "as planned", "--reliable", "--session", "1800"))
        yield (f"gateway cancels a call through kamailio, {name}",
               partial(site.gateway_calls, url, kind, "487 ", "--cancel-after", "10"))


def interrupt(*_):
    raise Failure(f"not done in {SECONDS} seconds, or {ALL_SECONDS} for all")


def attempt(case):
    """ "ok", or why the case fails."""
    signal.alarm(max(1, min(SECONDS, round(END - time.monotonic()))))
    try:
        case()
        return "ok"
    except FAULTS as failure:
        return f"FAILED: {failure}"
    finally:
        signal.alarm(0)


def examine(address, is_rfc, report):
    """Does all cases on one address with one grammar."""
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        site = Site(stack, folder, address, is_rfc)
        for name, case in cases(site):
            report(name, attempt(case))


def main():
    signal.signal(signal.SIGALRM, interrupt)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    table = {}
    columns = list(dict.fromkeys([("classic", "127.0.0.1"), ("rfc", "127.0.0.1"), ("rfc", loopback6())]))
    for column in columns:
        def report(name, outcome, column=column):
            print(f"{', '.join(column)}: {name}: {outcome}", flush=True)
            table.setdefault(name, {})[column] = outcome.split(":")[0]

        grammar, address = column
        whole = "hosts and kamailio start, hosts end well"
        try:
            examine(address, grammar == "rfc", report)
            report(whole, "ok")
        except FAULTS as failure:
            report(whole, f"FAILED: {failure}")
    print(f"\n{'':55}" + "".join(f"{' '.join(column):>20}" for column in columns))
    for name, outcomes in table.items():
        print(f"{name:55}" + "".join(f"{outcomes.get(column, '-'):>20}" for column in columns))
    return any("FAILED" in outcomes.values() for outcomes in table.values())


if __name__ == "__main__":
    sys.exit(main())
