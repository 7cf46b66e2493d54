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
PROGRAMS = {"core": "kxcore_tests", "util": "kxutil_tests", "sipobject": "kxsip_tests", "sipheaders": "kxheaders_tests"}

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


def mutants(root):
    """All (file, line number, rule, new line)."""
    found = []
    names = subprocess.run(["git", "-C", root, "ls-files", *FOLDERS], check=True, capture_output=True,
                           text=True).stdout.split()  # fmt: skip
    for name in names:
        if not name.endswith((".h", ".cpp")):
            continue
        in_comment = False
        for number, line in enumerate((root / name).read_text().split("\n")):
            in_comment = in_comment or line.lstrip().startswith("/*")
            if not in_comment and not line.lstrip().startswith("//"):
                for rule, change in RULES.items():
                    new = change(line)
                    if new is not None:
                        found.append((name, number, rule, new))
            in_comment = in_comment and "*/" not in line
    return found


def shown(root, name, number, rule, new):
    line = new or (root / name).read_text().split("\n")[number]
    return f"{name}:{number + 1}: {rule}: {line.strip()}"


def run(name, *command, timeout=None):
    with open(WORK / f"{name}.log", "ab") as log:
        try:
            return subprocess.run(command, stdout=log, stderr=log, timeout=timeout, check=False).returncode
        except subprocess.TimeoutExpired:
            return "timeout"


def build(*targets):
    return run("build", "cmake", "--build", BUILD, "-j2", "--target", *(targets or ["all"])) == 0


def tests_pass(which):
    return run("tests", "ctest", "--test-dir", BUILD, "-j2", *which, "--no-tests=error",
               "--stop-on-failure", "--timeout", "150", "--output-on-failure") == 0  # fmt: skip


def noticed_by(folder, is_header):
    """Whose tests notice the mutant: first those that are built and run in a short time. None if it does not compile."""
    if not build("replay_lives"):
        return None
    for grammar in ("classic", "rfc"):
        if run("tests", f"{BUILD.absolute()}/bin/replay_lives", f"--grammar={grammar}", SOURCE / "fuzz/seeds/lives",
               timeout=30) != 0:  # fmt: skip
            return "replay_lives"
    program = PROGRAMS[folder]
    if not build(program):
        return None
    if run("tests", f"{BUILD.absolute()}/bin/{program}", "--gtest_brief=1", "--gtest_fail_fast", timeout=300) != 0:
        return program
    if is_header:  # nearly all is built anew: not the tests of other folders
        targets, tests = ["faults", "replay_digest", "kxrfc_tests"], ["-R", "^(faults|replay.*digest|RFC)"]
    else:
        targets, tests = [], ["-E", f"^({OTHER_TESTS})"]
    if not build(*targets):
        return None
    return "" if tests_pass(tests) else "another test"


def prepare(is_new):
    WORK.mkdir(parents=True, exist_ok=True)
    if not SOURCE.exists():
        subprocess.run(["git", "clone", "-q", "--shared", ".", SOURCE], check=True)
    if is_new:
        subprocess.run(["git", "-C", SOURCE, "fetch", "-q"], check=True)
    subprocess.run(["git", "-C", SOURCE, "reset", "-q", "--hard", "@{upstream}" if is_new else "HEAD"], check=True)
    options = ["-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1", "-DKX_HARDEN=ON", "-DKX_BUILD_TOOL=OFF",
               "-DKX_BUILD_BENCH=OFF", "-DKX_BUILD_EXAMPLES=OFF", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]  # fmt: skip
    run("configure", "cmake", "-G", "Ninja", "-S", SOURCE, "-B", BUILD, *options)
    if not build() or is_new and not tests_pass(["-E", f"^({OTHER_TESTS})"]):
        sys.exit(f"without a mutant, the build or a test fails: see {WORK}/build.log and {WORK}/tests.log")


def judged(name, number, new):
    """As noticed_by, for the mutant."""
    path = SOURCE / name
    text = path.read_text()
    lines = text.split("\n")
    lines[number] = new
    path.write_text("\n".join(lines))
    result = noticed_by(name.split("/")[0], name.endswith(".h"))
    path.write_text(text)
    return result


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=60)
    parser.add_argument("--seed", type=int, default=20261122)
    parser.add_argument("--list", action="store_true", help="only print what would be tried")
    parser.add_argument("--after", type=int, default=0, help="how many to leave out, to continue a run")
    options = parser.parse_args()
    if not options.list:
        prepare(options.after == 0)
    root = pathlib.Path() if options.list else SOURCE
    candidates = mutants(root)
    random.Random(options.seed).shuffle(candidates)
    tried, survivors = 0, 0
    for at, mutant in enumerate(candidates):
        if tried == options.count:
            break
        if at < options.after:
            continue
        if options.list:
            by = "possible"
        else:
            by = judged(*mutant[:2], mutant[3])
        if by is None:
            continue
        tried += 1
        survivors += not by
        print(f"{at}:", by or "SURVIVED", shown(root, *mutant), flush=True)
    if not options.list:
        print(f"{tried - survivors} of {tried} were noticed, of {len(candidates)} possible ones (seed {options.seed})")


main()
