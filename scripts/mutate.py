"""Mutation test of the libraries; see scripts/mutate."""

import argparse
import pathlib
import random
import re
import subprocess
import sys

FOLDERS = ("core", "util", "sipobject", "sipheaders")
WORK = pathlib.Path("build/mutate")
SOURCE = WORK / "source"
BUILD = WORK / "build"
# Not the tests of costs, packages, pages and the tool, which are not about what the libraries do.
OTHER_TESTS = r"guard|package|docs|tool|messages"
LONG_TESTS = r"exhaust|replay|loading|scans"

STATEMENT = re.compile(r"\s+(?:[\w.\[\]]|->|::)+(?:\(.*\)| (?:[-+|&]?=) .*);\s*(?://.*)?$")
STEP = re.compile(r"\s+(?:\+\+|--)[\w.]+;$")
NOT_A_STATEMENT = re.compile(r"\s+(?:return|throw|break|continue|using|static_assert|case|delete|goto|else)\b")
LOCK = re.compile(r"\s+(?:const )?(?:std::)?(?:lock_guard|scoped_lock|unique_lock|\w+Lock)\b(?!.*= delete).*;$")


def inverted(line):
    """The condition of an if or while that ends in its line."""
    match = re.search(r"\b(?:if|while) \(", line)
    if not match or "constexpr" in line:
        return None
    depth = 0
    for end in range(match.end() - 1, len(line)):
        depth += {"(": 1, ")": -1}.get(line[end], 0)
        if depth == 0:
            condition = line[match.end() : end]
            if ";" in condition or re.match(r"(const )?auto\b|const ", condition):
                return None
            return f"{line[: match.end()]}!({condition}){line[end:]}"
    return None


def replaced(pattern, by):
    def change(line):
        if re.search(r"template|operator|#include|<<|>>|static_cast<|#if", line):
            return None
        new = re.sub(pattern, by, line, count=1)
        return new if new != line else None

    return change


def removed(pattern):
    def change(line):
        return "" if pattern.match(line) and not NOT_A_STATEMENT.match(line) else None

    return change


RULES = {
    "condition inverted": inverted,
    "< is <=": replaced(r" < ", " <= "),
    "> is >=": replaced(r" > ", " >= "),
    "<= is <": replaced(r" <= ", " < "),
    ">= is >": replaced(r" >= ", " > "),
    "+ 1 is left out": replaced(r" \+ 1\b(?!\.)", ""),
    "- 1 is left out": replaced(r" - 1\b(?!\.)", ""),
    "statement removed": removed(STATEMENT),
    "step removed": removed(STEP),
    "lock removed": removed(LOCK),
}


def mutants():
    """All (file, line number, rule, new line)."""
    found = []
    names = subprocess.run(["git", "ls-files", *FOLDERS], check=True, capture_output=True, text=True).stdout.split()
    for name in names:
        if not name.endswith((".h", ".cpp")):
            continue
        in_comment = False
        for number, line in enumerate(pathlib.Path(name).read_text().split("\n")):
            in_comment = in_comment or line.lstrip().startswith("/*")
            if not in_comment and not line.lstrip().startswith("//"):
                for rule, change in RULES.items():
                    new = change(line)
                    if new is not None:
                        found.append((name, number, rule, new))
            in_comment = in_comment and "*/" not in line
    return found


def shown(name, number, rule, new):
    line = new or pathlib.Path(name).read_text().split("\n")[number]
    return f"{name}:{number + 1}: {rule}: {line.strip()}"


def run(name, *command, timeout=None):
    with open(WORK / f"{name}.log", "ab") as log:
        try:
            return subprocess.run(command, stdout=log, stderr=log, timeout=timeout, check=False).returncode
        except subprocess.TimeoutExpired:
            return "timeout"


def build():
    return run("build", "cmake", "--build", BUILD, "-j2") == 0


def tests_notice():
    """Runs the short tests, then the long ones if nothing was noticed."""
    parts = (["-E", f"^({OTHER_TESTS}|{LONG_TESTS})"], ["-R", f"^({LONG_TESTS})"])
    return any(run("tests", "ctest", "--test-dir", BUILD, "-j2", *part, "--no-tests=error", "--stop-on-failure",
                   "--timeout", "300", "--output-on-failure") != 0 for part in parts)  # fmt: skip


def prepare():
    WORK.mkdir(parents=True, exist_ok=True)
    if not SOURCE.exists():
        subprocess.run(["git", "clone", "-q", "--shared", ".", SOURCE], check=True)
    subprocess.run(["git", "-C", SOURCE, "fetch", "-q"], check=True)
    subprocess.run(["git", "-C", SOURCE, "reset", "-q", "--hard", "@{upstream}"], check=True)
    options = ["-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1", "-DKX_HARDEN=ON", "-DKX_BUILD_TOOL=OFF",
               "-DKX_BUILD_BENCH=OFF", "-DKX_BUILD_EXAMPLES=OFF", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]  # fmt: skip
    run("configure", "cmake", "-G", "Ninja", "-S", SOURCE, "-B", BUILD, *options)
    if not build() or tests_notice():
        sys.exit(f"without a mutant, the build or a test fails: see {WORK}/build.log and {WORK}/tests.log")


def judged(name, number, new):
    """Returns whether the tests notice the mutant, or None if it does not compile."""
    path = SOURCE / name
    text = path.read_text()
    lines = text.split("\n")
    lines[number] = new
    path.write_text("\n".join(lines))
    noticed = tests_notice() if build() else None
    path.write_text(text)
    return noticed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=60)
    parser.add_argument("--seed", type=int, default=20261122)
    parser.add_argument("--list", action="store_true", help="only print what would be tried")
    options = parser.parse_args()
    candidates = mutants()
    random.Random(options.seed).shuffle(candidates)
    if options.list:
        for name, number, rule, new in candidates[: options.count]:
            print(shown(name, number, rule, new))
        return
    prepare()
    tried, survivors = 0, 0
    for name, number, rule, new in candidates:
        if tried == options.count:
            break
        noticed = judged(name, number, new)
        if noticed is None:
            continue
        tried += 1
        survivors += not noticed
        print("noticed " if noticed else "SURVIVED", shown(name, number, rule, new), flush=True)
    print(f"{tried - survivors} of {tried} were noticed, of {len(candidates)} possible ones (seed {options.seed})")


main()
