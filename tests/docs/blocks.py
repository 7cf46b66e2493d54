#!/usr/bin/env python3
"""Compiles and runs the code blocks of the documentation, and compares what they print with what the pages show.

usage: blocks.py --work FOLDER --tool-folder FOLDER --compiler C++ [--page PAGE]... [--update] -- COMPILER-OPTION...

A page is a Markdown file. A block, fenced or indented, that is none of the following fails the test. The kind of a
block is given by its language and by the marker before it, an HTML comment on a line of its own:

  ```cpp with a main()          a program: compiled and run; with <!-- fed: FILE --> it is run for each line
                                "input -> output" of that file of the source tree, and must exit with 0
  <!-- run -->                  C++ statements: run as one function. "run: NAME" puts the statements of
                                tests/docs/preludes/NAME.cpp before them
  <!-- more -->                 C++ statements that continue the block before them
  <!-- define -->               C++ declarations for the blocks that follow
  <!-- define in: SPACE -->     the same in a namespace or, for "struct NAME", as members of a class
  <!-- file: PATH -->           any language: written to PATH, which C++ can include and programs can open
  <!-- part of: PATH -->        any language: text that the file PATH of the source tree contains
  <!-- output -->               what the block before it prints; <!-- excerpt --> some lines of it
  <!-- rows: KIND -->           lines "input -> output" or "input !! error", read as tests/docs/rows.cpp does; if the RFC
                                grammar has another result, "rfc -> output" is in the next line; --update writes these
  ```sh, or indented            commands: each is run, in a folder with the source tree's files and a trace.pcap, with
                                kxsip in the path; exit codes above 2 fail the test
  ```console                    the same, with "$ " before a command and its output after it
  <!-- not run -->              what needs other programs or files than the tests have; only counted

C++ blocks can use every public header. All of them except programs share one executable. A block whose commands all
begin with a text of NOT_RUN is only counted.
"""

import argparse
import dataclasses
import difflib
import os
import pathlib
import re
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent
HERE = SOURCE / "tests" / "docs"
NOT_RUN = ("scripts/", "apt-get install ", "cmake --preset ", "cmake --build ", "cmake --install ", "bench/guard.py",
           "build/release/", "build/dev/bin/example_", "echo alice:secret > users")  # the last two run until stopped
PRIVATE = ("core/ClassLoggers.h", "core/MemRows.h")
MARKER = re.compile(r"<!-- (.*) -->$")
WARNINGS = ["-Wall", "-Wextra", "-Werror", "-Wno-unused-variable"]


class Failure(Exception):
    """A fault in a block."""


@dataclasses.dataclass
class Block:
    page: pathlib.Path
    line: int
    language: str
    marker: str
    text: str
    output: str | None = None
    excerpt: str | None = None

    @property
    def name(self):
        return f"{self.page.relative_to(SOURCE)}:{self.line}"

    @property
    def verb(self):
        return self.marker.partition(":")[0]

    @property
    def argument(self):
        return self.marker.partition(":")[2].strip()


def blocks_of(page):
    """The blocks of a page, in order."""
    lines = page.read_text(encoding="utf-8").splitlines()
    i = 0
    while i < len(lines):
        begin = i
        marker = MARKER.match(lines[begin - 1]) if begin else None
        if lines[i].startswith("```"):
            end = next((n for n in range(i + 1, len(lines)) if lines[n].startswith("```")), None)
            if end is None:
                raise Failure(f"{page}:{begin + 1}: the block is not closed")
            language, text, i = lines[i][3:].strip(), lines[i + 1 : end], end + 1
        elif lines[i].startswith("    ") and (i == 0 or not lines[i - 1].strip()) and not in_list(lines, i):
            while i < len(lines) and (lines[i].startswith("    ") or not lines[i].strip()):
                i += 1
            language, text = "sh", [line[4:] for line in lines[begin:i]]
        else:
            i += 1
            continue
        yield Block(page, begin + 1, language, marker[1] if marker else "", "\n".join(text).rstrip() + "\n")


def in_list(lines, i):
    """Whether an indented line continues an item of a list."""
    above = next((line for line in reversed(lines[:i]) if line.strip() and not line.startswith("  ")), "")
    return above.startswith(("- ", "* "))


def paired(blocks):
    """The blocks, each with its output if the page shows it."""
    kept = []
    for block in blocks:
        if block.marker not in ("output", "excerpt"):
            kept.append(block)
        elif kept and kept[-1].page == block.page:
            setattr(kept[-1], block.marker, block.text)
        else:
            raise Failure(f"{block.name}: an output without a block")
    return kept


def compare(expected, actual):
    """Fails if the texts differ, except in trailing blanks."""
    expected, actual = ([line.rstrip() for line in text.rstrip().splitlines()] for text in (expected, actual))
    if expected != actual:
        raise Failure("prints\n  " + "\n  ".join(actual) + "\nwhere the page says\n  " + "\n  ".join(expected))


class Runner:
    """Compiles and runs the blocks."""

    def __init__(self, options):
        self.compiler = [options.compiler, "-std=c++20", "-O0", *WARNINGS]
        self.libraries = options.options
        self.work = pathlib.Path(options.work).resolve()
        self.work.mkdir(parents=True, exist_ok=True)
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8"}
        self.environment["PATH"] = f"{options.tool_folder}:{self.environment['PATH']}"
        self.counts = {}

    def count(self, what):
        self.counts[what] = self.counts.get(what, 0) + 1

    def run(self, command, folder, given=""):
        """Returns what a command prints to both outputs, and its exit code."""
        done = subprocess.run(command, cwd=folder, env=self.environment, timeout=120, input=given.encode("latin-1"),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        return done.stdout.decode(errors="replace").replace("\r\n", "\n").replace("\r", "\n"), done.returncode

    def compile(self, source, program):
        output, code = self.run([*self.compiler, f"-I{self.work}", f"-I{SOURCE}", str(source), "-o", str(program),
                                 *self.libraries], self.work)
        if code:
            raise Failure("does not compile\n" + "\n".join(output.splitlines()[:40]))


def source_of(blocks, work):
    """One program of all C++ blocks except programs, and the number of the function of each block."""
    headers = [path.relative_to(SOURCE).as_posix() for folder in ("core", "util", "sipobject", "sipheaders")
               for path in sorted((SOURCE / folder).rglob("*.h"))]
    top = [f"#include {header}\n" for header in ("<cstdlib>", "<fstream>", "<iostream>", "<string>", "<vector>")]
    top += [f'#include "{header}"\n' for header in headers if header not in PRIVATE]
    body, functions, names = [], [], {}
    for block in blocks:
        verb, line = block.verb, f'#line {block.line + 1} "{block.page}"\n'
        if verb == "file":
            path = work / block.argument
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(block.text, encoding="utf-8")
            continue
        if block.language != "cpp":
            continue
        lines = block.text.splitlines(keepends=True)
        body += [text for text in lines if text.startswith("#include")]
        text = "".join(text if not text.startswith("#include") else "\n" for text in lines)
        if verb == "define":
            body.append(line + text)
        elif verb == "define in":
            space = block.argument if block.argument.startswith("struct ") else f"namespace {block.argument}"
            body.append(f"{space} {{\n{line}{text}}};\n")
        elif verb == "run":
            prelude = (HERE / "preludes" / f"{block.argument}.cpp").read_text() if block.argument else ""
            functions.append([prelude + line + text])
        elif verb == "more" and functions:
            functions[-1].append('std::cout << "\\f";\n' + line + text)
        names[block.name] = len(functions) - 1
    for number, parts in enumerate(functions):
        body.append(f"static void block{number}() {{\n{''.join(parts)}}}\n")
    table = ", ".join(f"block{number}" for number in range(len(functions)))
    main = (HERE / "main.cpp").read_text(encoding="utf-8").replace("BLOCKS", table)
    path = work / "blocks.cpp"
    path.write_text("".join(top + body) + main, encoding="utf-8")
    return path, names


def run_blocks(blocks, runner):
    """Runs the C++ blocks that share a program; yields each with a function that raises its fault."""
    source, names = source_of(blocks, runner.work)
    program = runner.work / "blocks"
    runner.compile(source, program)
    outputs = {}
    for number in sorted({names[block.name] for block in blocks if block.verb in ("run", "more") and
                          block.language == "cpp"}):
        outputs[number] = runner.run([str(program), str(number)], runner.work)
    place = {}
    for block in blocks:
        if block.verb in ("run", "more") and block.language == "cpp":
            number = names[block.name]
            output, code = outputs[number]
            part = place[number] = place.get(number, -1) + 1
            yield block, lambda: check_part(block, output, code, part)
        elif block.verb in ("define", "define in", "file"):
            yield block, lambda: None


def check_part(block, output, code, part):
    if code:
        raise Failure(f"ends with {code}\n{output}")
    parts = output.split("\f")
    if block.output is not None:
        compare(block.output, parts[part] if part < len(parts) else "")


def run_single(block, runner, rows):
    """Checks a block of any other kind; returns what was done with it."""
    if block.verb == "part of":
        if block.text not in (SOURCE / block.argument).read_text(encoding="utf-8"):
            raise Failure(f"{block.argument} has other lines")
        return "in a file"
    if block.verb == "rows":
        rows.check(block)
        return "rows"
    if block.language == "cpp" and "int main(" in block.text and block.verb in ("", "fed"):
        source = runner.work / "program.cpp"
        source.write_text(f'#line {block.line + 1} "{block.page}"\n{block.text}', encoding="utf-8")
        runner.compile(source, runner.work / "program")
        for given, expected in fed_to(block):
            output, code = runner.run([str(runner.work / "program")], runner.work, given)
            check_part(dataclasses.replace(block, output=expected), output, code, 0)
        return "programs"
    if block.verb == "not run":
        return "not run"
    if block.language in ("sh", "console") and not block.marker:
        return run_shell(block, runner)
    raise Failure("nobody runs this block: it has no marker, or one that is not known")


def fed_to(block):
    """The inputs of a program with the expected outputs, from the file, or from the page if there is no file."""
    if not block.argument:
        return [("", block.output)]
    rows = [re.match("(.+) -> (.+)$", line) for line in (SOURCE / block.argument).read_text().splitlines()]
    if not rows or None in rows:
        raise Failure(f"{block.argument} has no rows, or a line that is none")
    return [(row[1].encode().decode("unicode_escape"), row[2].replace(" | ", "\n")) for row in rows]


def run_shell(block, runner):
    folder = runner.work / "shell"
    if not folder.exists():
        folder.mkdir()
        for entry in (path for path in SOURCE.iterdir() if path.name != ".git"):
            (folder / entry.name).symlink_to(entry)
        (folder / "trace.pcap").symlink_to(SOURCE / "samples" / "captures" / "call_udp.pcap")
    if block.language == "sh":
        commands = [line for line in re.sub(r"\s+#.*", "", block.text).splitlines() if line]
        if all(command.startswith(NOT_RUN) for command in commands):
            return "not run"
        steps = [(command, None) for command in commands]
    else:
        steps = [split_command(step) for step in re.split(r"^\$ ", block.text, flags=re.M)[1:]]
    printed = ""
    for command, expected in steps:
        output, code = runner.run(["bash", "-uo", "pipefail", "-c", command], folder)
        if code > 2:
            raise Failure(f"{command}\nends with {code}\n{output}")
        if expected is not None:
            compare(expected, output)
        printed += output
    if block.output is not None:
        compare(block.output, printed)
    if block.excerpt is not None and block.excerpt not in printed:
        raise Failure(f"prints\n{printed}\nwithout the excerpt that is shown")
    return "shell"


def split_command(step):
    """The command after a prompt with its continuation lines, and the output after it."""
    lines = step.splitlines()
    end = next(n for n, line in enumerate(lines) if not line.endswith("\\")) + 1
    return "\n".join(lines[:end]), "\n".join(lines[end:])


class Rows:
    """The program that reads rows, compiled for the first of them."""

    def __init__(self, runner, update):
        self.runner = runner
        self.update = update
        self.program = None
        self.count = 0

    def result(self, *arguments):
        return self.runner.run([str(self.program), *arguments], self.runner.work)[0].rstrip()

    def check(self, block):
        if self.program is None:
            self.program = self.runner.work / "rows"
            self.runner.compile(HERE / "rows.cpp", self.program)
        lines = []
        for line in block.text.splitlines():
            row = re.match(r"(.*?)\s+(->|!!)", line)
            if row is None:
                raise Failure(f"no row: {line}")
            if row[1].lstrip() == "rfc" and lines:
                continue
            first = self.result(block.argument, row[1])
            second = self.result("--grammar=rfc", block.argument, row[1])
            lines.append(line if self.update else line[: row.start(2)] + first)
            if second != first:
                lines.append("rfc ".rjust(row.start(2) if row.start(2) < 40 else 8) + second)
            self.count += 1
        text = "\n".join(lines) + "\n"
        if self.update:
            page = block.page.read_text(encoding="utf-8")
            block.page.write_text(page.replace(block.text, text, 1), encoding="utf-8")
        elif text != block.text:
            changes = difflib.ndiff(block.text.splitlines(), lines)
            raise Failure("page (-) and code (+)\n" + "\n".join(line for line in changes if line[0] in "+-"))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--work", required=True)
    parser.add_argument("--tool-folder", required=True)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--page", action="append", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("--update", action="store_true")
    parser.add_argument("options", nargs="*")
    options = parser.parse_args()

    runner = Runner(options)
    rows = Rows(runner, options.update)
    failed = 0

    def attempt(block, what):
        nonlocal failed
        try:
            runner.count(what() or "C++")
        except (Failure, OSError, subprocess.TimeoutExpired) as failure:
            failed += 1
            print(f"{block.name}: {failure}\n")

    try:
        blocks = []
        for page in options.page or [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))]:
            blocks += paired(blocks_of(page))
        shared = [block for block in blocks if block.verb in ("run", "more", "define", "define in", "file")]
        for block, what in run_blocks(shared, runner):
            attempt(block, what)
    except Failure as failure:
        print(failure)
        return 1
    for block in blocks:
        if block not in shared:
            attempt(block, lambda block=block: run_single(block, runner, rows))
    counts = ", ".join(f"{count} {what}" for what, count in sorted(runner.counts.items()))
    print(f"{len(blocks)} blocks: {counts}; {rows.count} rows; {failed} failed")
    return 1 if failed or not blocks else 0


if __name__ == "__main__":
    sys.exit(main())
