#!/usr/bin/env python3
"""Looks at the built libraries from outside.

  libraries.py FOLDER exports              compares what they export with tests/package/exports.txt
  libraries.py FOLDER exports --update     writes that file, to be looked at before it is committed
  libraries.py FOLDER hardening [canary]   demands what the linker can do against misuse, and the stack protector

Exports are listed by class (with its nested ones) or free function. What the compiler may leave out, copies of inline
functions and of the standard library's templates, is not listed, but has to be of a class that is.
"""
import argparse
import re
import subprocess
import sys
from pathlib import Path

LIBRARIES = ["kxcore", "kxutil", "kxsipobject", "kxsipheaders"]
LIST = Path(__file__).with_name("exports.txt")
NAMESPACES = {"Oskan", "Sip", "KxSipObject"}


def run(*command: str, text: str | None = None) -> list[str]:
    return subprocess.run(command, input=text, check=True, capture_output=True, text=True).stdout.splitlines()


def owner(symbol: str) -> str:
    """The outermost class of a demangled symbol, or the free function."""
    symbol = re.sub(r"\[abi:\w+\]", "", symbol)
    symbol = re.sub(r"^(.* )?(for|to) ", "", symbol)  # "vtable for X", "non-virtual thunk to X::f"
    operators = re.sub(r"operator([<>=-]+)", lambda found: "operator" + "@" * len(found[1]), symbol)
    plain = ""
    depth = 0
    for at, c in enumerate(operators):  # without template arguments
        depth += c == "<"
        if depth == 0:
            plain += symbol[at]
        depth -= c == ">"
    parts = plain.split("::")
    parts[0] = parts[0] if parts[0].startswith("operator") else parts[0].split(" ")[-1]  # without the result's type
    while parts[0] == "Oskan" and len(parts) > 2 and parts[1] in NAMESPACES:
        parts[:2] = ["::".join(parts[:2])]
    inner = parts[0] in NAMESPACES or "::" in parts[0]
    return "::".join(parts[:2]) if inner else parts[0]


def exports(folder: Path) -> tuple[set[str], set[str]]:
    """The owners of what the libraries export, as lines of the list, and those of mere copies."""
    own: set[str] = set()
    copies: set[str] = set()
    for library in LIBRARIES:
        symbols = [line.split()[1:3] for line in run("nm", "-D", "--defined-only", str(folder / f"lib{library}.so"))]
        names = run("c++filt", "-p", text="\n".join(name for _, name in symbols))
        for (kind, _), name in zip(symbols, names):
            if owner(name) == "std":
                continue
            if kind in "Ww":
                copies.add(owner(name))
            else:
                own.add(f"{library} {owner(name)}")
    return own, copies


def check_exports(folder: Path, update: bool) -> list[str]:
    own, copies = exports(folder)
    if update:
        LIST.write_text("\n".join(sorted(own)) + "\n")
    listed = set(LIST.read_text().splitlines())
    known = {line.split()[1] for line in listed}
    return ([f"exported, but not in {LIST.name}: {name}" for name in sorted(own - listed)]
            + [f"no longer exported: {name}" for name in sorted(listed - own)]
            + [f"a copy of something that is not exported: {name}" for name in sorted(copies - known)])


def check_hardening(folder: Path, canary: bool) -> list[str]:
    failures = []
    for library in LIBRARIES:
        path = str(folder / f"lib{library}.so")
        headers = "\n".join(run("readelf", "-lW", path))
        flags = "\n".join(run("readelf", "-dW", path))
        imports = "\n".join(run("nm", "-D", "--undefined-only", path))
        demands = {
            "tables that cannot be written to (GNU_RELRO)": "GNU_RELRO" in headers,
            "functions bound at load (BIND_NOW)": "BIND_NOW" in flags or "Flags: NOW" in flags,
            "no code on the stack (GNU_STACK RW)": re.search(r"GNU_STACK\s.*\sRW\s", headers) is not None,
            "no memory both writable and executable": re.search(r"LOAD\s.*\sRWE\s", headers) is None,
            "no relocations of code (TEXTREL)": "TEXTREL" not in flags,
            "no search path of its own (RPATH)": re.search(r"\(RPATH\)", flags) is None,
            "the stack protector": not canary or "__stack_chk_fail" in imports,
        }
        failures += [f"{library} lacks: {what}" for what, met in demands.items() if not met]
    return failures


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path)
    parser.add_argument("what", choices=["exports", "hardening"])
    parser.add_argument("canary", nargs="?", choices=["canary"])
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    if arguments.what == "exports":
        failures = check_exports(arguments.folder, arguments.update)
    else:
        failures = check_hardening(arguments.folder, arguments.canary is not None)
    print("\n".join(failures) if failures else "ok")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
