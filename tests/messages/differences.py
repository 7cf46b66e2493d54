#!/usr/bin/env python3
"""What the RFC grammar makes of the messages of the tree that the classic one reads with status 0, where that differs.

usage: differences.py KXSIP [--update]: compares with differences.txt, or writes it
"""

import difflib
import json
import pathlib
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent
LIST = SOURCE / "tests" / "messages" / "differences.txt"


def messages(tool, grammar):
    """Each message by its place: its status and its lines."""
    files = [path.relative_to(SOURCE).as_posix() for folder in ("samples", "tests/messages")
             for pattern in ("*.sip", "*.pcap*") for path in sorted((SOURCE / folder).rglob(pattern))]
    done = subprocess.run([tool, "show", "--json", "--grammar", grammar, *files], cwd=SOURCE, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    for line in done.stdout.splitlines():
        read = json.loads(line)
        place = read["line"] or f"message {read['index']}"
        if read["error"]:
            lines = ["! " + read["error"]["text"]]
        else:
            lines = [f"{read['method'] or read['code']} {read['uri'] or read['reason']}", f"status {read['status']}"]
            lines += [f"{header['name']}: {header['value']}" for header in read["headers"]]
            lines.append(f"{read['body_bytes']} bytes of body")
        yield f"{read['file']}:{place}", (read["status"], lines)


def differences(tool):
    """One line for each."""
    others = dict(messages(tool, "rfc"))
    for place, (status, lines) in messages(tool, "classic"):
        other = others.get(place, (None, ["! no message"]))[1]
        if status == 0 and other[0].startswith("! "):
            yield f"{place}: {other[0]}"
            continue
        for tag, i, i_end, j, j_end in difflib.SequenceMatcher(None, lines, other, autojunk=False).get_opcodes():
            if tag != "equal" and status == 0:
                both = [json.dumps(" | ".join(part))[1:-1] for part in (lines[i:i_end], other[j:j_end])]
                yield f"{place}: {both[0]} -> {both[1]}"


def main():
    found = list(differences(sys.argv[1]))
    if "--update" in sys.argv:
        LIST.write_text("".join(line + "\n" for line in found))
    changes = [line for line in difflib.ndiff(LIST.read_text().splitlines(), found) if line[0] in "+-"]
    print(f"{len(found)} differences", *changes, sep="\n")
    return 1 if changes or not found else 0


if __name__ == "__main__":
    sys.exit(main())
