#!/usr/bin/env python3
"""Compares docs/headers.md, the table of all typed headers, with what the program header_list finds in the registries
and with the public getters and the RFCs in the header files of the classes.

  headers.py PROGRAM            compares
  headers.py PROGRAM --update   writes the page
"""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
PAGE = ROOT / "docs" / "headers.md"
MESSAGES = [("tests/messages/every_kind.sip", "KxSipObject"), ("tests/sipheaders/every_header.sip", "KxSipHeaders")]
FOLDERS = ["sipobject/headers", "sipheaders"]
# Every header has these; the page says so once.
EVERY = {"getNext", "getToken", "getHeaderID", "getValueText", "getExpandedToken", "getCompactToken"}
PARAMETERS = {"getParameters", "getParameter", "isParameterPresent"}

TOP = """# Headers

The typed headers, and what can be asked of each. Every header also has `getToken`, `getExpandedToken`,
`getCompactToken`, `getHeaderID`, `getNext` and `getValueText`; those with parameters, marked with ";", have
`getParameters`, `getParameter` and `isParameterPresent`. Setters are in the header files. Lines of other names are
`KxSipUnknownHeader`, with `getValue`.

The headers of the library KxSipHeaders are unknown headers until a host calls `KxSipHeaderLibrary::sEnable()`, and have
`getReceived` too. Compact names are those of the RFC grammar. The page is made from the registries of the libraries:
`cmake --build build/dev --target update_expected` writes it.
"""


def public_parts(text: str) -> tuple[str, str]:
    """The bases and the public members of the only class of a header file that the others are for."""
    found = re.search(r"^class (?:KX_\w+_API )?KxSip\w+(?: final)?\s*(?::\s*public (.*?))?\s*\{$(.*?)^\};", text, re.M | re.S)
    if not found:
        return "", ""
    public, visible = "", False
    for line in found[2].splitlines():
        label = re.match(r"(public|protected|private):", line)
        visible = label[1] == "public" if label else visible
        public += line + "\n" if visible else ""
    return found[1] or "", public


def classes(text: str) -> dict[str, str]:
    """The classes of a file, by name."""
    parts = re.split(r"(?m)^(?=class (?:KX_\w+_API )?KxSip\w+)", text)
    return {re.match(r"class (?:KX_\w+_API )?(KxSip\w+)", part)[1]: part for part in parts[1:]}


SOURCES = {name: part for folder in FOLDERS for path in sorted((ROOT / folder).glob("*.h"))
           for name, part in classes(path.read_text()).items()}


def getters(name: str, seen: set[str]) -> list[str]:
    """The getters of a class and of the families it is of, each once."""
    if name not in SOURCES or name in seen or name in ("KxSipHeader", "KxSipHeaderOf"):
        return []
    seen.add(name)
    bases, public = public_parts(SOURCES[name])
    if re.search(r"^    using Base = ", SOURCES[name], re.M):
        bases += " ".join(re.findall(r"^    using Base = (.*?);", SOURCES[name], re.M))
    found = re.findall(r"^    (?! )(?:[^({\n]*[ &*])?((?:get|is|has|matches|lists)(?:[A-Z]\w*)?)\(", public, re.M)
    for base in re.findall(r"KxSip\w+", bases):
        found += getters(base, seen)
    return list(dict.fromkeys(found))


def comment(name: str) -> str:
    for folder in FOLDERS:
        path = ROOT / folder / f"{name}.h"
        if path.exists():
            return re.search(r"/\*\*.*?\*/\s*class (?:KX_\w+_API )?" + name, path.read_text(), re.S)[0]
    sys.exit(f"{name} is in no header file")


def rfcs(name: str) -> str:
    text = comment(name)
    found = re.search(r"\[(RFC \d+ [\d.]+)", text) or re.search(r"\[(RFC \d+|draft-[\w-]+(?: [\d.]+)?)", text)
    return found[1] if found else "none"


def page(rows: list[list[str]]) -> str:
    text = TOP
    for _, library in MESSAGES:
        text += f"\n## {library}\n\n| Header | Class | From | Getters |\n|---|---|---|---|\n"
        for name, compact, theClass, of in sorted(rows):
            if of == library:
                found = [getter for getter in getters(theClass, set()) if getter not in EVERY | {"getReceived"}]
                mark = " ;" if PARAMETERS & set(found) else ""
                asked = ", ".join(f"`{getter}`" for getter in found if getter not in PARAMETERS)
                short = f", {compact}" if compact else ""
                text += f"| {name}{short}{mark} | `{theClass}` | {rfcs(theClass)} | {asked} |\n"
    return text


def main() -> int:
    program = sys.argv[1]
    arguments = [part for path, library in MESSAGES for part in (str(ROOT / path), library)]
    listed = subprocess.run([program, *arguments], check=True, stdout=subprocess.PIPE, text=True).stdout
    text = page([line.split("\t") for line in listed.splitlines()])
    if "--update" in sys.argv[2:]:
        PAGE.write_text(text)
        return 0
    now = PAGE.read_text() if PAGE.exists() else ""
    for line in sorted(set(now.splitlines()) ^ set(text.splitlines())):
        print(line)
    print("as it should be" if now == text else "docs/headers.md is not what the libraries have: update_expected")
    return 0 if now == text else 1


if __name__ == "__main__":
    sys.exit(main())
