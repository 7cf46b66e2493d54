#!/usr/bin/env python3
"""gateway_test.py GATEWAY [--calls N] [--rate N] [--lost PERCENT] [--storm N]: runs the example gateway on a free port
of the loopback address against sipp, calls of each kind at once, against untrusted input, and as a client of itself;
with the RFC grammar over IPv6 too. Exits with 77 if sipp is not installed."""

import argparse
import random
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time

from hosts import PATIENCE, Host, Sipp, family, loopback6

SDP = "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\nm=audio 9 RTP/AVP 0\r\n"
TIMER = ("Supported: timer", "Session-Expires: 1800")


def scenario(steps):
    """A sipp scenario: a string (method, CSeq number, header lines) is sent, a number is a response to wait for, a
    float a pause in seconds. A request with the CSeq number of the INVITE before it has its transaction, if allowed."""
    out, asked, invite, refused, in_dialog = [], [], 0, False, False
    for index, step in enumerate(steps):
        if isinstance(step, float):
            out.append(f'<pause milliseconds="{step * 1000:.0f}"/>')
        elif isinstance(step, int):
            look = ""
            if step == 180 and any("100rel" in str(other) for other in steps):
                look = ('<action><ereg regexp="[0-9]+" search_in="hdr" header="RSeq:" assign_to="rseq"/></action>')
            optional = ' optional="true"' if step == 100 or steps[index:index + 2] == [180, 200] else ""  # may be lost
            transaction = asked[-1] if step < 200 else asked.pop()  # the last request is answered first
            out.append(f'<recv response="{step}" response_txn="{transaction}"{optional}>{look}</recv>')
            refused = refused or step >= 300
            in_dialog = in_dialog or step == 180 or step == 200
        else:
            method, number, *lines = step
            if method == "INVITE":
                invite, refused = index, False
            same = method == "CANCEL" or method == "ACK" and refused
            branch = f"[branch{invite - index if same else ''}]"
            tag = "[peer_tag_param]" if in_dialog and method != "CANCEL" else ""
            body = SDP if method == "INVITE" else ""
            head = [f"{method} sip:gateway@[remote_ip]:[remote_port] SIP/2.0",
                    f"Via: SIP/2.0/[transport] [local_ip]:[local_port];branch={branch}",
                    "From: <sip:sipp@[local_ip]:[local_port]>;tag=[call_number]",
                    f"To: <sip:gateway@[remote_ip]:[remote_port]>{tag}", "Call-ID: [call_id]",
                    f"CSeq: {number} {method}", "Contact: <sip:sipp@[local_ip]:[local_port];transport=[transport]>",
                    *([] if any("Max-Forwards" in line for line in lines) else ["Max-Forwards: 70"]), *lines,
                    *(["Content-Type: application/sdp"] if body else []), "Content-Length: [len]", "", body]
            if method == "ACK":
                how = f'ack_txn="t{invite}"'
            else:
                how = f'retrans="500" start_txn="t{index}"'
                asked.append(f"t{index}")
            out.append(f"<send {how}><![CDATA[\n" + "\n".join("\n".join(head).splitlines()) + "\n]]></send>")
    return '<?xml version="1.0"?>\n<scenario name="gateway">\n' + "\n".join(out) + "\n</scenario>\n"


CALL = [("INVITE", 1), 100, 180, 200, ("ACK", 1), 0.1, ("BYE", 2), 200]
RELIABLE = [("INVITE", 1, "Require: 100rel", *TIMER), 100, 180, ("PRACK", 2, "RAck: [$rseq] 1 INVITE"), 200, 200,
            ("ACK", 1), 0.1, ("INVITE", 3, *TIMER), 200, ("ACK", 3), ("BYE", 4), 200]
SCENARIOS = {
    "call, UDP": (CALL, []),
    "call, TCP, one connection": (CALL, ["-t", "t1"]),
    "call, UDP, RFC grammar": (CALL, []),
    "call, TCP, RFC grammar": (CALL, ["-t", "t1"]),
    "call, TCP, one each": (CALL, ["-t", "tn", "-max_socket", "400"]),
    "reliable, re-INVITE with session timer": (RELIABLE, []),
    "reliable, re-INVITE, TCP": (RELIABLE, ["-t", "t1"]),
    "CANCEL": ([("INVITE", 1), 100, 180, ("CANCEL", 1), 200, 487, ("ACK", 1)], []),
    "session too short": ([("INVITE", 1, "x: 60"), 422, ("ACK", 1)], []),
    "malformed, unknown, used up": (
        [("OPTIONS", 1), 200, ("OPTIONS", 2, "no colon"), 400, ("OPTIONS", 3, "To: <sip:another@h>"), 400,
         ("FROB", 4), 501, ("OPTIONS", 5, "Max-Forwards: 0"), 483, ("BYE", 6), 481], []),
}


class Client:
    """Sends and reads messages, over a connection or in datagrams."""

    def __init__(self, host, kind=socket.SOCK_DGRAM):
        self.socket = socket.socket(family(host.address), kind)
        self.socket.settimeout(PATIENCE)
        self.socket.connect((host.address, host.port))
        self.host = host
        self.transport = "UDP" if kind == socket.SOCK_DGRAM else "TCP"
        self.number = 0
        self.read = ""

    def request(self, *more, method="OPTIONS", uri=None, number=1, branch=None, to="", without="none", body=""):
        self.number += 1
        lines = [f"{method} {uri or f'sip:g@{self.host.at()}'} SIP/2.0",
                 f"Via: SIP/2.0/{self.transport} 192.0.2.1:9;rport;branch={branch or f'z9hG4bK{self.number}'}",
                 "From: <sip:a@h>;tag=1", f"To: <sip:g@h>{to}", f"Call-ID: raw{id(self)}", f"CSeq: {number} {method}",
                 "Contact: <sip:a@192.0.2.1>", *more, f"Content-Length: {len(body)}", "", body]
        return "\r\n".join(line for line in lines if not line.startswith(without)).encode("latin-1")

    def send(self, message):
        self.socket.sendall(message)

    def answer(self, seconds=PATIENCE):
        """The next message; "" if none arrives in time or the connection ends."""
        self.socket.settimeout(seconds)
        try:
            while "\r\n\r\n" not in self.read or len(self.read) < self.length():
                got = self.socket.recv(65536).decode("latin-1")
                if not got:
                    return ""
                self.read += got
        except (socket.timeout, ConnectionError):
            return ""
        length = self.length()
        message, self.read = self.read[:length], self.read[length:]
        return message

    def call(self, acknowledge=True):
        """Makes a call, and returns the tag of the peer."""
        self.send(self.request(method="INVITE"))
        while not (answer := self.answer()).startswith("SIP/2.0 200 "):
            assert answer.startswith("SIP/2.0 1"), answer
        tag = re.search(r"\r\nTo: .*(;tag=\S+)", answer)[1]
        if acknowledge:
            self.send(self.request(method="ACK", to=tag))
        return tag

    def length(self):
        body = re.search(r"\r\nContent-Length: (\d+)\r\n", self.read)
        return self.read.index("\r\n\r\n") + 4 + int(body[1])

    def fresh(self, *old):
        """The next message that is no retransmission of an old one."""
        while (message := self.answer()) in old and message:
            pass
        return message

    def ask(self, message):
        """The answer to a message, or "" if there is none: then the answer to a request after it arrives first. What is
        lost, as datagrams are on a busy machine, is sent again."""
        text = message.decode("latin-1")
        branch, cseq = (re.findall(part, text) or ["none"] for part in (r";branch=\w+", r"\r\nCSeq: .*\r\n"))
        for _ in range(3):
            self.send(message)
            self.send(self.request(method="LAST"))
            while (answer := self.answer(2)) and f"branch=z9hG4bK{self.number};" not in answer:
                if branch[0] + ";" in answer and cseq[0] in answer:
                    return answer
        return ""


def check_strangers(client):
    request = client.request
    rows = [  # name, message, start of its answer (or a pattern in it)
        ("keep-alive", b"\r\n\r\n", ""),
        ("a response", b"SIP/2.0 200 OK\r\n" + request().split(b"\r\n", 1)[1], ""),
        ("ACK", request(method="ACK"), ""),
        ("unreadable ACK", request(method="ACK", without="CSeq"), ""),
        ("no Via", request(without="Via"), ""),
        ("no Call-ID", request(without="Call-ID"), "SIP/2.0 400 "),
        ("another scheme", request(uri="sips:g@h"), r"SIP/2.0 416 .*;branch=z9hG4bK\d+;received="
         + re.escape(client.host.address) + r"\r\n"),
        ("another version", request().replace(b"SIP/2.0\r", b"SIP/3.0\r", 1), "SIP/2.0 505 "),
        ("a bell in To", request('To: "\a" <sip:g@h>', "CSeq: 2 ACK", without="To: <"), "SIP/2.0 400 "),
        ("two To headers", request("To: <sip:b@h>"), "SIP/2.0 400 "),
        ("another method in CSeq", request().replace(b"1 OPTIONS", b"1 BYE"), "SIP/2.0 400 "),
        ("its own type not accepted", request("Accept: a/b", "Content-Type: c/d"),
         f"SIP/2.0 {200 if client.host.is_rfc else 400} "),
        ("a header without a value", request("Supported: "), "SIP/2.0 200 "),
        ("long URI", request(uri="sip:" + "x" * 1100), "SIP/2.0 414 "),
        ("an extension", request("Require: foo,timer,bar"), r"SIP/2.0 420 .*Unsupported: foo\r\nUnsupported: bar\r\n"),
        ("a body of another type", request("Content-Type: c/d", method="INVITE", body="x"), "SIP/2.0 415 "),
        ("REGISTER", request(method="REGISTER"), r"SIP/2.0 405 .*\r\nAllow: PRACK\r\n"),
        ("PRACK of no call", request(method="PRACK", to=";tag=x"), "SIP/2.0 481 "),
        ("CANCEL of nothing", request(method="CANCEL"), "SIP/2.0 481 "),
    ]
    for name, message, expected in rows:
        answer = client.ask(message)
        assert re.search(expected, answer, re.DOTALL) if expected else answer == "", f"{name}: {answer!r}"


def check_repeats(client):
    """A retransmission is answered as before, and what is not acknowledged is retransmitted."""
    invite = client.request("Supported: 100rel", method="INVITE", branch="z9hG4bKsame")
    client.send(invite)
    trying, ringing = client.answer(), client.answer()
    assert (trying[8:11], ringing[8:11]) == ("100", "180"), (trying, ringing)
    client.send(invite)
    for _ in range(2):  # for the retransmission, and by its timer
        assert client.answer() == ringing
    rseq, tag = (re.search(pattern, ringing)[1] for pattern in (r"\r\nRSeq: (\d+)\r\n", r"\r\nTo: .*(;tag=\S+)"))
    assert tag + "\r\n" in trying, "one dialog"
    client.send(client.request(f"RAck: {rseq} 2 INVITE", method="PRACK", number=2, to=tag))
    assert client.fresh(ringing).startswith("SIP/2.0 481 ")
    prack = client.request(f"RAck: {rseq} 1 INVITE", method="PRACK", number=3, to=tag)
    client.send(prack)
    pracked = client.fresh(ringing)
    ok = client.fresh(ringing)
    assert "\r\nCSeq: 3 PRACK\r\n" in pracked and re.match("SIP/2.0 200 .*a=inactive\r\n", ok, re.DOTALL), (pracked, ok)
    client.send(prack)
    assert client.fresh(ok, ringing) == pracked
    assert client.fresh(ringing) == ok, "2xx without an ACK"
    client.send(client.request(method="ACK", to=tag))
    old = [ringing, pracked, ok]
    for seconds, expected in ((60, "422 .*\r\nMin-SE: 90\r\n"),
                              (1800, "200 .*\r\nSession-Expires: 1800;refresher=uac\r\nRequire: timer\r\n")):
        client.send(client.request("Supported: timer", f"Session-Expires: {seconds}", method="INVITE", number=seconds,
                                   to=tag))
        old.append(client.fresh(*old))
        assert re.match("SIP/2.0 " + expected, old[-1], re.DOTALL), old
        client.send(client.request(method="ACK", to=tag, number=seconds, branch=f"z9hG4bK{client.number}"))
    for number, code in ((1800, 500), (1801, 200), (1802, 481)):  # used, new, over
        client.send(client.request(method="BYE", number=number, to=tag))
        old.append(client.fresh(*old))
        assert old[-1].startswith(f"SIP/2.0 {code} "), old


def check_stream(host):
    """Messages in odd pieces, several at once, a ping, and messages after which the connection is closed."""
    client = Client(host, socket.SOCK_STREAM)
    folded = b"Content-Length:\r\n  4\r\nContent-Type: application/sdp\r\n\r\nv=0\n"
    first, second = client.request(number=1), client.request(number=2, without="Content-Length").rstrip(b"\r\n")
    client.send(b"\r\n\r\n")
    assert client.socket.recv(9) == b"\r\n", "the answer to the ping"
    for byte in b"\r\n" + first:
        client.send(bytes([byte]))
    client.send(second + b"\r\n" + folded + client.request(number=3))
    for number in (1, 2, 3):
        answer = client.answer()
        assert answer.startswith("SIP/2.0 200 ") and f"CSeq: {number} OPTIONS" in answer, answer
    client.send(b"X-Endless: " + b"x" * 70000)
    assert client.answer() == "", "the connection is closed"
    for length, code in ((70000, 513), ("5, 5", 400)):
        client = Client(host, socket.SOCK_STREAM)
        client.send(client.request(f"l: {length}", without="Content-Length"))
        assert client.answer().startswith(f"SIP/2.0 {code} ")
        client.send(client.request())
        assert client.answer() == "", "the connection is closed"


def check_full(program, folder):
    """When all places are in use, open transactions are served and new ones refused, until one ends."""
    places = 8
    with Host(program, folder, "--transactions", str(places), "--timer-t1", "100", "--ring", "50") as gateway:
        live, flood = Client(gateway), Client(gateway)
        tag = live.call()

        def invite():
            message = flood.request("Require: 100rel", method="INVITE", body="")
            return message, f"z9hG4bK{flood.number}", flood.ask(message)

        answers = [flood.ask(flood.request(method=method)) for method in ("OPTIONS", "FROB", "MESSAGE", "BYE") * 50]
        assert {answer[8:11] for answer in answers} == {"200", "501", "405", "481"}, "none of them takes room"
        asked = [invite() for _ in range(5 * places)]
        taken = [(message, branch) for message, branch, answer in asked if answer.startswith("SIP/2.0 100 ")]
        later = r"SIP/2\.0 503 .*\r\nRetry-After: 7\r\n"
        assert 0 < len(taken) <= places and all(" 100 " in answer or re.match(later, answer, re.DOTALL)
                                                for _, _, answer in asked), asked
        assert re.match(later, flood.ask(flood.request()), re.DOTALL), "OPTIONS as INVITE"
        (first, _), (second, branch) = taken[-2:]
        ringing = flood.ask(first)
        assert ringing.startswith("SIP/2.0 180 ") and flood.ask(first) == ringing
        assert live.ask(live.request(method="INVITE", number=2, to=tag)).startswith("SIP/2.0 200 ")
        live.send(live.request(method="ACK", number=2, to=tag))
        pings = [live.ask(live.request(number=number, to=tag)) for number in range(3, 43)]
        assert [ping[8:11] for ping in pings] == ["200"] * 31 + ["500"] * 9, pings  # one place has the INVITE
        assert "\r\nRetry-After: 7\r\n" in pings[-1], pings[-1]
        bye = live.request(method="BYE", number=99, to=tag)
        done = live.ask(bye)
        assert done.startswith("SIP/2.0 200 ") and live.ask(bye) == done
        cancel = second.replace(b"INVITE", b"CANCEL").replace(b"Require: 100rel\r\n", b"")
        assert flood.ask(cancel).startswith("SIP/2.0 200 ")
        while (answer := flood.ask(second)).startswith("SIP/2.0 180 "):  # sent before the CANCEL arrived
            pass
        assert answer.startswith("SIP/2.0 487 "), answer
        flood.send(flood.request(method="ACK", branch=branch))
        full, again = time.monotonic(), []
        while len(again) < places - 2:  # more places than the messages above have freed
            if invite()[2].startswith("SIP/2.0 100 "):
                again.append(time.monotonic() - full)
            assert time.monotonic() - full < PATIENCE, again
            time.sleep(0.1)
        print(f"full with {places} transactions: of 200 small requests none took room; of {len(asked)} INVITEs "
              f"{len(taken)} taken, {len(asked) - len(taken)} refused; re-INVITE, 31 OPTIONS, BYE and its repeat, "
              f"CANCEL and the repeats of two INVITEs served; first room {again[0]:.1f} s later, for {len(again)} "
              f"after {again[-1]:.1f} s")


def check_gone(program, folder):
    """Calls of peers that do not answer end, and others do not."""
    with Host(program, folder, "--calls", "3", "--session-expires", "2", "--timer-t1", "50", "--ring", "10") as gateway:
        live, gone, deaf, late, *new = (Client(gateway) for _ in range(6))
        tag, _, _ = live.call(), gone.call(), deaf.call(acknowledge=False)
        refused = late.ask(late.request(method="INVITE"))
        assert re.match(r"SIP/2\.0 503 .*\r\nRetry-After: 4\r\n", refused, re.DOTALL), refused
        begin, refreshes = time.monotonic(), 0
        while refreshes < 6:
            refresh = live.answer()
            assert re.match("(INVITE|ACK) ", refresh), refresh
            if refresh.startswith("INVITE"):
                refreshes += 1
                copied = re.findall(r"(?:Via|From|To|Call-ID|CSeq): .*\r\n", refresh)
                live.send(("SIP/2.0 200 OK\r\n" + "".join(copied) + "Content-Length: 0\r\n\r\n").encode())
        assert time.monotonic() - begin < PATIENCE / 2
        for client in new:
            assert client.call()
        assert live.ask(live.request(method="BYE", number=2, to=tag)).startswith("SIP/2.0 200 ")
        ends = re.findall("hanging up: (.*)", gateway.log_text())
        assert sorted(ends) == ["a refresh was refused", "no ACK came"], ends


def storm(host, count, seed=9):
    """Messages with a few bytes changed, as datagrams and in pieces of a stream."""
    rng = random.Random(seed)
    client, stream, maker = Client(host), None, Client(host)
    for number in range(count):
        method = rng.choice(["INVITE", "ACK", "BYE", "CANCEL", "PRACK", "OPTIONS", "REFER"])
        lines = rng.sample(["Supported: 100rel", "Session-Expires: 90;refresher=uas", "RAck: 1 1 INVITE",
                            "Require: timer", "Record-Route: <sip:h;lr>", "k: timer", "Accept: a/b"], 2)
        uri = rng.choice([None, "tel:+1", "sip:h?Subject=x"])
        message = bytearray(maker.request(*lines, method=method, number=rng.randrange(3), uri=uri,
                                          to=rng.choice(["", ";tag=1"]), branch=f"z9hG4bK{rng.randrange(count)}"))
        for _ in range(rng.randrange(4)):
            place = rng.randrange(len(message))
            change = rng.randrange(3)
            if change == 0:
                message[place] = rng.choice(b"\r\n \0;:<>\",?=\xff" + bytes(range(48, 58)))
            elif change == 1:
                del message[place:place + rng.randrange(20)]
            else:
                message[place:place] = message[place:place + rng.randrange(20)] * rng.randrange(3)
            message = message or bytearray(b"\0")
        client.send(bytes(message))
        if number % 4 == 0:
            try:
                stream = stream or Client(host, socket.SOCK_STREAM)
                cut = rng.randrange(len(message))
                stream.send(bytes(message[:cut]))
                stream.send(bytes(message[cut:]))
                stream.socket.setblocking(False)
                stream = None if not stream.socket.recv(65536) else stream
            except BlockingIOError:
                stream = None if rng.randrange(20) == 0 else stream
            except ConnectionError:
                stream = None
        if number % 50 == 0:
            time.sleep(0.01)  # so that the buffer of the socket does not overflow
    for _ in range(PATIENCE):
        client.send(client.request(branch="z9hG4bKlast"))  # may be lost too, or its answer comes after many others
        while answer := client.answer(1):
            if "z9hG4bKlast" in answer:
                return
    assert False, "no longer serving"


def check_client(program, gateway, ringing, sixth):
    rows = [  # peer, options, what it prints
        (gateway, "", "100 Trying|180 Ringing|200 Ok|as planned"),
        (gateway, "--tcp --reliable --session 60", "422 .*|100 Trying|180 Ringing|200 Ok|as planned"),
        (ringing, "--cancel-after 10 --reliable", "100 Trying|180 Ringing|487 .*|refused"),
        (sixth, "--tcp --reliable", "100 Trying|180 Ringing|200 OK|as planned"),
    ]
    for peer, options, expected in rows:
        arguments = f"{peer.options} --port 0 call --duration 100 sip:b@{peer.at()} {options}".split()
        run = subprocess.run([program, *arguments], stdout=subprocess.PIPE, timeout=PATIENCE, text=True, check=False)
        said = "|".join(line[6:] for line in run.stdout.splitlines() if line.startswith("call: "))
        assert run.returncode == 0 and re.fullmatch(expected.replace("|", r"\|"), said), f"{options}: {run}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("gateway")
    parser.add_argument("--calls", type=int, default=100)
    parser.add_argument("--rate", type=int, default=50)
    parser.add_argument("--lost", type=int, default=0)
    parser.add_argument("--storm", type=int, default=1000)
    options = parser.parse_args()
    if shutil.which("sipp") is None:
        print("sipp is not installed")
        return 77
    scenarios = SCENARIOS
    if options.lost:  # over UDP only; without CANCEL, which waits for a 180 that is not retransmitted
        scenarios = {name: (steps, ["-lost", str(options.lost)]) for name, (steps, how) in SCENARIOS.items()
                     if not how and name != "CANCEL"}
    with tempfile.TemporaryDirectory() as folder, Host(options.gateway, folder) as gateway, \
            Host(options.gateway, folder, "--ring", "60000") as ringing, \
            Host(options.gateway, folder, address=loopback6(), is_rfc=True) as sixth:
        patient = ["-default_behaviors", "all,-abortunexp"]  # retransmissions may arrive in between
        hosts = {"CANCEL": ringing, "call, UDP, RFC grammar": sixth, "call, TCP, RFC grammar": sixth}
        runs = {name: Sipp(hosts.get(name, gateway), folder, name, scenario(steps), options.calls, options.rate, *how,
                           *patient)
                for name, (steps, how) in scenarios.items()}
        for client in (Client(gateway), Client(gateway, socket.SOCK_STREAM), Client(sixth)):
            check_strangers(client)
        for host in (gateway, sixth):
            check_repeats(Client(host))
        check_stream(gateway)
        check_client(options.gateway, gateway, ringing, sixth)
        check_full(options.gateway, folder)
        check_gone(options.gateway, folder)
        failed = 0
        for name, run in runs.items():
            done, lost, repeats = run.result()
            print(f"{name}: {done} of {options.calls} calls as expected, {lost} not, {repeats} retransmissions")
            if done != options.calls:
                failed += 1
                print(run.why())
        assert failed == 0
        for host in (gateway, sixth):
            storm(host, options.storm)
        text = gateway.log_text()
        assert "200 to INVITE of 127.0.0.1" in text and not re.search("^(ERROR|FATAL)", text, re.MULTILINE)
    return 0


if __name__ == "__main__":
    sys.exit(main())
