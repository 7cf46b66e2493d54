#!/usr/bin/env python3
"""registrar_test.py REGISTRAR: runs the example registrar on a free port of the loopback addresses, with the classic
grammar over IPv4 and with the RFC grammar over IPv6, against sipp, which registers 100 times with the right and with a
wrong password, and against untrusted input. Exits with 77 if sipp is not installed."""

import hashlib
import os
import re
import shutil
import socket
import sys
import tempfile

from hosts import PATIENCE, Host, Sipp, family, loopback6

REALM = "kx.example"
PASSWORD = "correct horse"
CALLS = 100
HERE = os.path.dirname(os.path.abspath(__file__))


def md5(text):
    return hashlib.md5(text.encode() if isinstance(text, str) else text)


def weak_user():
    """A user whose raw A1 begins with a zero byte: the MD5-sess response does not depend on the password."""
    names = (f"u{number}" for number in range(100000))
    return next(name for name in names if md5(f"{name}:{REALM}:{PASSWORD}").digest()[0] == 0)


WEAK = weak_user()


class Client:
    """Sends datagrams and reads the answers."""

    def __init__(self, host):
        self.socket = socket.socket(family(host.address), socket.SOCK_DGRAM)
        self.socket.settimeout(PATIENCE)
        self.socket.connect((host.address, host.port))
        self.host = host
        self.uri = f"sip:{host.at()}"
        self.number = 0

    def message(self, *more, method="REGISTER", user="alice", without="none", hops=70):
        self.number += 1
        lines = [f"{method} {self.uri} SIP/2.0", f"Max-Forwards: {hops}",
                 f"Via: SIP/2.0/UDP 192.0.2.1:9;rport;branch=z9hG4bK{self.number}",
                 f"From: <sip:{user}@{REALM}>;tag=1", f"To: <sip:{user}@{REALM}>", "Call-ID: raw",
                 f"CSeq: {self.number} {method}", *more, "Content-Length: 0", "", ""]
        return "\r\n".join(line for line in lines if not line.startswith(without)).encode()

    def ask(self, datagram):
        """The answer to the datagram, or "" if there is none: then the answer to a request after it arrives first."""
        probe = self.message(method="OPTIONS")
        answers = []
        for sent in (datagram, probe):
            self.socket.send(sent)
        while not answers or f"CSeq: {self.number} OPTIONS\r\n" not in answers[-1]:
            answers.append(self.socket.recv(65536).decode("latin-1"))
        assert answers[-1].startswith("SIP/2.0 405 ") and "\r\nAllow: REGISTER\r\n" in answers[-1], answers
        return "".join(answers[:-1])

    def nonce(self):
        return re.search('nonce="([^"]+)"', self.ask(self.message()))[1]

    def credentials(self, user="alice", password=PASSWORD, nonce=None, uri=None, nc="00000001", algorithm="MD5",
                    qop="auth", a1=None):
        nonce, uri = nonce or self.nonce(), uri or self.uri
        a1 = a1 or md5(f"{user}:{REALM}:{password}").hexdigest()
        middle = f"{nc}:c:{qop}:" if qop else ""
        response = md5(f"{a1}:{nonce}:{middle}" + md5(f"REGISTER:{uri}").hexdigest()).hexdigest()
        return (f'Authorization: Digest username="{user}",realm="{REALM}",nonce="{nonce}",uri="{uri}",'
                + (f"algorithm={algorithm}," if algorithm else "") + (f"qop={qop}," if qop else "")
                + f'nc={nc},cnonce="c",response="{response}"')


def sipp(host, folder, password, last):
    """(calls that ended as expected, other calls), if the second REGISTER must be answered with `last`."""
    with open(os.path.join(HERE, "register.xml"), encoding="ascii") as template:
        steps = template.read().replace('response="200"', f'response="{last}"')
    # By itself, sipp writes an IPv6 address without brackets into the digest.
    options = ["-au", "alice", "-ap", password, "-auth_uri", host.at(), "-l", "20"]
    return Sipp(host, folder, f"{password} {last}", steps, CALLS, 100, *options).result()[:2]


def check_strangers(client):
    message, credentials = client.message, client.credentials
    a1_of_nothing = md5(b"").hexdigest()
    rows = [  # name, datagram, start of its answer (or a pattern in it)
        ("nothing", b"", ""),
        ("keep-alive", b"\r\n\r\n", ""),
        ("bad bytes", bytes(range(255, 0, -1)) * 20, ""),
        ("a response", b"SIP/2.0 200 OK\r\n" + message().split(b"\r\n", 1)[1], ""),
        ("no Call-ID", message(without="Call-ID"), "SIP/2.0 400 "),
        ("no Via", message("no colon", without="Via"), ""),
        ("ACK", message(method="ACK"), ""),
        ("a line without colon", message("no colon"), "SIP/2.0 400 "),
        ("another scheme", message("Authorization: Basic YTpi"), "SIP/2.0 40[01] "),
        ("sips without TLS", message().replace(b"sip:", b"sips:", 1), "SIP/2.0 416 "),
        ("no hops left", message(hops=0), "SIP/2.0 483 "),
        ("too large", message("Subject: " + "x" * 5000), "SIP/2.0 513 "),
        ("INVITE", message(method="INVITE"), "SIP/2.0 405 "),
        ("unheard of", message(method="FROB"), "SIP/2.0 501 "),
        ("an extension", message("Require: foo"), r"SIP/2.0 420 .*\r\nUnsupported: foo\r\n"),
        ("rport", message(), r"rport=\d+;branch=z9hG4bK\d+;received="
         + re.escape(client.host.address) + r"\r\n"),
        ("no response", message(f'Authorization: Digest username="alice",realm="{REALM}"'), "SIP/2.0 401 "),
        ("wrong password", message(credentials(password="x")), r"SIP/2.0 401 (?!.*stale)"),
        ("no such user", message(credentials(user="eve", password=""), user="eve"), "SIP/2.0 401 "),
        ("wrong password, no algorithm", message(credentials(password="x", algorithm="")), r"SIP/2.0 401 (?!.*stale)"),
        ("right password, no algorithm", message(credentials(algorithm="")), "SIP/2.0 200 "),
        ("other URI", message(credentials(uri="sip:elsewhere")), "SIP/2.0 401 "),
        ("no URI", message(credentials(uri="sip:")), "SIP/2.0 401 "),
        ("a count the response does not cover", message(credentials(qop="")), "SIP/2.0 401 "),
        ("qop not offered", message(credentials(qop="auth-int")), "SIP/2.0 401 "),
        ("other letter case", message(credentials(algorithm="md5")), f"SIP/2.0 {200 if client.host.is_rfc else 401} "),
        ("MD5-sess, forged", message(credentials(user=WEAK, algorithm="MD5-sess", a1=a1_of_nothing), user=WEAK),
         "SIP/2.0 401 "),
        ("nonce made up", message(credentials(nonce="x")), r"SIP/2.0 401 .*,stale=TRUE,"),
        ("no count", message(credentials(nc="0000000x")), r"SIP/2.0 401 .*,stale=TRUE,"),
        ("somebody else's address", message(credentials(), user="bob"), "SIP/2.0 403 "),
        ("all and nothing", message(credentials(), "Contact: *"), "SIP/2.0 400 "),
    ]
    if client.host.is_rfc:
        same = credentials(uri=client.uri.replace("::1", "0:0::1"))
        escaped = message(same).replace(b"o: <sip:a", b"o: <sip:%61")
        rows.append(("URI and user, the same by meaning", escaped, "SIP/2.0 200 "))
    for name, datagram, expected in rows:
        answer = client.ask(datagram)
        assert re.search(expected, answer, re.DOTALL) if expected else answer == "", f"{name}: {answer!r}"


def check_bindings(client):
    one = "<sip:bob@[2001:db8::1]>" if client.host.is_rfc else "<sip:bob@192.0.2.1>"
    same = one.replace("bob@[2001:db8", "%62ob@[2001:DB8:0")
    contacts = [f"Contact: {one};expires=60, <sip:bob@192.0.2.2>", "Expires: 99999999"]
    nonce = client.nonce()
    first = client.message(client.credentials(user="bob", nonce=nonce), *contacts, user="bob")
    answer = client.ask(first)
    listed = (rf"200 O[Kk]\r\n.*\r\nContact: {re.escape(one)};expires=(60|[345]\d)\r\n"
              r"Contact: <sip:bob@192.0.2.2>;expires=7[12]\d\d\r\nExpires: 7[12]\d\d\r\n")
    assert re.search(listed, answer, re.DOTALL), answer
    assert client.ask(first) == answer, "sent again, it is answered as before"
    replayed = client.message(client.credentials(user="bob", nonce=nonce), "Contact: <sip:eve@192.0.2.3>", user="bob")
    assert ",stale=TRUE," in client.ask(replayed)

    def then(count, *more):
        credentials = client.credentials(user="bob", nonce=nonce, nc=f"{count:08x}")
        return client.ask(client.message(credentials, *more, user="bob"))

    many = "Contact: " + ",".join(f"<sip:bob{number}@192.0.2.4>" for number in range(7))
    assert then(2, many).startswith("SIP/2.0 403 ")
    answer = then(3)
    assert answer.startswith("SIP/2.0 200 ") and answer.count("\r\nContact: ") == 2, answer
    answer = then(0xA0, f"Contact: {same};expires=0")
    assert answer.startswith("SIP/2.0 200 ") and answer.count("\r\nContact: ") == 1, answer
    answer = then(0xA1, "Contact: *", "Expires: 0")
    assert answer.startswith("SIP/2.0 200 ") and answer.count("\r\nContact: ") == 0, answer
    for _ in range(4096):  # as many as are kept
        client.nonce()
    assert ",stale=TRUE," in then(0xA2), "a flood of requests pushes out the oldest nonces"


def check(folder, address, is_rfc, *options):
    with Host(sys.argv[1], folder, *options, address=address, is_rfc=is_rfc) as registrar:
        client = Client(registrar)
        with Host(sys.argv[1], folder, *options, address=address, is_rfc=is_rfc) as other:
            tags = [re.search(r"\r\nTo: .*;tag=([^-\r]+)", one.ask(one.message()))[1]  # the random half
                    for one in (client, Client(other))]
        assert tags[0] != tags[1], f"the first tag is the same in each run: {tags}"
        for name, password, last, expected in (("right password", PASSWORD, 200, (CALLS, 0)),
                                               ("wrong password", "wrong", 200, (0, CALLS)),
                                               ("wrong password, refused again", "wrong", 401, (CALLS, 0))):
            calls = sipp(registrar, folder, password, last)
            print(f"{name}, {address}: {calls[0]} of {CALLS} calls as expected, {calls[1]} not")
            assert calls == expected, name
        check_strangers(client)
        check_bindings(client)
    text = registrar.log_text()
    assert f"REGISTER of {registrar.reference}" in text and PASSWORD not in text and "wrong" not in text


def main():
    if shutil.which("sipp") is None:
        print("sipp is not installed")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        users = os.path.join(folder, "users")
        with open(users, "w", encoding="ascii") as out:
            out.write(f"# a comment\nalice:{PASSWORD}\n\nbob:{PASSWORD}\r\n{WEAK}:{PASSWORD}\n")
        for address, is_rfc in (("127.0.0.1", False), (loopback6(), True)):
            check(folder, address, is_rfc, "--realm", REALM, "--users", users)
    return 0


if __name__ == "__main__":
    sys.exit(main())
