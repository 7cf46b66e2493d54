#!/usr/bin/env python3
"""The guard: counts what a few operations cost and fails where a count is above its ceiling.

Runs kx_guard under callgrind and compares with bench/ceilings.tsv, whose ceilings are 5 % above the values reached, and
for the RFC grammar (rows "rfc ...") 10 % above those of the classic one, if it has the row. It measures no times, so a
busy machine changes nothing. The counts are for the build of the tests (preset dev: -O2, assertions on) by one major
version of one compiler on one architecture, which the file names. For other builds, and without valgrind, the guard is
skipped (exit status 77).

  bench/guard.py             compares
  bench/guard.py --update    writes the values reached now, and their ceilings, into bench/ceilings.tsv

A change that makes an operation cheaper should update the ceilings, so that the gain is kept.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CEILINGS = ROOT / "bench" / "ceilings.tsv"
SKIPPED = 77
MARGIN = 1.05
RFC = "rfc "  # before the names of operations in the RFC grammar
RFC_MARGIN = 1.10
# Here the RFC grammar has to look at every value that it quotes; the classic one writes them as they are.
RFC_LOOKS_AT_VALUES = {"rfc serialise register": 1.25}
# The C library chooses its string functions by the processor's features; without these, they are always the same.
PLAIN_PROCESSOR = "glibc.cpu.hwcaps=-AVX2,-AVX,-AVX512F,-AVX512VL,-AVX512BW,-ERMS,-FSRM"

# A message whose headers are those of sipheaders/ may cost so much more a byte than the other one.
PER_BYTE = ("ims_invite", "carrier_invite", 1.6)

Counts = dict[tuple[str, str], float]


def run(command: list[str], folder: str) -> str:
    """Runs the command; returns what it prints."""
    done = subprocess.run(command, env={**os.environ, "GLIBC_TUNABLES": PLAIN_PROCESSOR}, cwd=folder, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if done.returncode != 0:
        sys.exit(f"guard: {' '.join(command)} failed\n{done.stdout}{done.stderr}")
    return done.stdout


def count_run(program: Path, arguments: list[str]) -> Counts:
    """Returns the cost of each operation of one run of the program, by operation and unit."""
    counts: Counts = {}
    with tempfile.TemporaryDirectory() as folder:
        # threads are counted separately: those of the logging library run at unpredictable times
        valgrind = ["valgrind", "-q", "--tool=callgrind", "--separate-threads=yes",
                    f"--callgrind-out-file={folder}/out"]
        is_held = "hold" in arguments  # counts bytes only
        for line in run(([] if is_held else valgrind) + [str(program), *arguments], folder).splitlines():
            name, unit, runs, total = line.split("\t")
            counts[name, unit] = int(total) / int(runs)
        for dump in Path(folder).glob("out.*-01"):
            text = dump.read_text()
            label = re.search(r"^desc: Trigger: Client Request: ([^\t\n]+)\t([^\t\n]+)\t(\d+)$", text, re.M)
            total = re.search(r"^summary: (\d+)$", text, re.M)
            if label and total:
                counts[label[1], label[2]] = int(total[1]) / int(label[3])
    return counts


def count(program: Path) -> Counts:
    """As above, for all runs. What is held is counted in processes of their own: memory that another operation left would
    be reused and not counted."""
    counts: Counts = {}
    for arguments in ([], ["rfc"], ["headers"], ["hold", "invite"], ["hold", "carrier_invite"]):
        counts |= count_run(program, arguments)
    return counts


def write(counts: Counts, build: str) -> None:
    lines = ["# What the guard allows: see bench/guard.py, which writes this file.", f"# build: {build}",
             "# operation\tunit\treached\tceiling"]
    for (name, unit), value in sorted(counts.items(), key=lambda row: (row[0][1], row[0][0])):
        classic = counts.get((name.removeprefix(RFC), unit)) if name.startswith(RFC) else None
        ceiling = value * MARGIN if classic is None else classic * RFC_LOOKS_AT_VALUES.get(name, RFC_MARGIN)
        lines.append(f"{name}\t{unit}\t{value:.1f}\t{ceiling:.1f}")
    CEILINGS.write_text("\n".join(lines) + "\n")
    print(f"{len(counts)} ceilings in {CEILINGS.relative_to(ROOT)}")


def read() -> tuple[str, Counts]:
    """Returns the build for which the ceilings were made, and the ceilings."""
    build = ""
    ceilings: Counts = {}
    for line in CEILINGS.read_text().splitlines():
        if line.startswith("# build: "):
            build = line.removeprefix("# build: ")
        elif not line.startswith("#"):
            name, unit, _, ceiling = line.split("\t")
            ceilings[name, unit] = float(ceiling)
    return build, ceilings


def compare(counts: Counts, ceilings: Counts) -> int:
    """Prints every count beside its ceiling; returns how many are above, are no longer counted or have no ceiling."""
    failures = 0
    for key in sorted(counts.keys() | ceilings.keys(), key=lambda row: (row[1], row[0])):
        name, unit = key
        if key not in counts:
            verdict, failures = "no longer counted", failures + 1
        elif key not in ceilings:
            verdict, failures = "has no ceiling yet", failures + 1
        elif counts[key] > ceilings[key]:
            verdict, failures = "ABOVE ITS CEILING", failures + 1
        else:
            verdict = "ok"
        shown = [f"{table[key]:,.1f}" if key in table else "-" for table in (counts, ceilings)]
        print(f"{name:<27}{unit:<14}{shown[0]:>12}{shown[1]:>12}  {verdict}")
    return failures


def compare_per_byte(counts: Counts) -> int:
    """Prints the ratio of PER_BYTE; returns 1 if it is too high."""
    cost = [counts[f"{RFC}parse {name}", "instructions"] / (ROOT / "samples" / f"{name}.sip").stat().st_size
            for name in PER_BYTE[:2]]
    is_high = cost[0] > PER_BYTE[2] * cost[1]
    print(f"{PER_BYTE[0]}: {cost[0]:.2f} instructions a byte, {cost[0] / cost[1]:.2f} times {PER_BYTE[1]}'s;"
          f" at most {PER_BYTE[2]}  {'TOO HIGH' if is_high else 'ok'}")
    return int(is_high)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", type=Path, default=ROOT / "build" / "dev" / "bin" / "kx_guard")
    parser.add_argument("--build", help="the build of the program, as the ceilings' file names it; any if not given")
    parser.add_argument("--update", action="store_true", help="make what is reached now the measure")
    arguments = parser.parse_args()
    if not shutil.which("valgrind"):
        print("skipped: valgrind is not installed")
        return SKIPPED
    if arguments.update:
        build = arguments.build or read()[0]
        write(count(arguments.program.resolve()), build)
        return 0
    build, ceilings = read()
    if arguments.build not in (None, build):
        print(f"skipped: the ceilings are of {build}, this is {arguments.build}")
        return SKIPPED
    counts = count(arguments.program.resolve())
    failures = compare(counts, ceilings) + compare_per_byte(counts)
    if failures:
        print(f"{failures} of {len(ceilings)} fail. A cost that is meant: bench/guard.py --update, and say why.")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
