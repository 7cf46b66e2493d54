#!/usr/bin/env python3
"""Makes tables of the results and prints them. With --write, puts them into docs/performance.md, between the lines that
mark their places, and draws docs/performance.svg. Called by scripts/bench.

  --own FILE         the output of kx_bench (--benchmark_out, with repetitions: the best one counts)
  --peers FILE       the raw lines of the comparison with other libraries (results.tsv)
  --floor FILE       the same for the floor: lines and colons found, bytes copied, nothing typed
  --callgrind DIR    the folder with the callgrind dumps of that comparison
"""
import argparse
import json
import platform
import re
import subprocess
import sys
from collections.abc import Iterable
from pathlib import Path
from xml.sax.saxutils import escape

ROOT = Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs" / "performance.md"
PLOT = ROOT / "docs" / "performance.svg"
OURS = "kx"
RFC = "kx-rfc"  # ours, in the RFC grammar
LIBRARIES = {"sofia": "libsofia-sip-ua-dev", "osip": "libosip2-dev", "re": "libre-dev", "re-norng": "libre-dev",
             "bellesip": "libbellesip-dev"}
# If a library has two ways to do the same, the cheaper one counts.
OPERATIONS = {"parse": ["parse"], "parse and serialise": ["roundtrip"], "serialise": ["serialise", "serialise-into"],
              "200, as an object": ["response"], "200 with its bytes": ["response+bytes"],
              "SIP URL from text": ["uri", "uri-alt"], "digest response": ["digest"]}
METRICS = {"instr": "Instructions", "ns_min": "Nanoseconds, best of all passes", "allocs": "Allocations, warm"}
# Our cost, relative to that of the best other library. Every library has to compute five MD5 blocks for a digest, and
# the best reader of URLs keeps the text in place, with one copy of it.
GOALS = {"instr": {"": 0.5, "SIP URL from text": 0.6, "digest response": 0.93},
         "ns_min": {"": 0.6, "SIP URL from text": 0.75, "digest response": 1.0}, "allocs": {"": 0.5}}
FLOOR = "floor"
HELD_GOAL = {"05_invite": 3000, "06_invite_carrier": 5800}  # bytes
HOSTILE_AIM = 20

Measured = dict[tuple[str, str, str, str], float]  # library, message, operation, metric
Scaled = dict[tuple[str, str, int], float]         # library, kind, number of values -> ns a value


def show(value: float | None, digits: int = 0) -> str:
    return "-" if value is None else f"{value:,.{digits}f}"


def table(head: list[str], rows: Iterable[list[str]]) -> str:
    """Returns a table in Markdown that is readable as plain text: aligned columns, numbers to the right."""
    lines = [head, *rows]
    width = [max(len(line[i]) for line in lines) for i in range(len(head))]
    words = [any(re.search("[A-Za-z]", line[i]) for line in lines[1:]) for i in range(len(head))]

    def row(cells: list[str]) -> str:
        padded = [cell.ljust(w) if left else cell.rjust(w) for cell, w, left in zip(cells, width, words)]
        return "| " + " | ".join(padded) + " |"

    rule = ["-" * (w + 1) + ("-" if left else ":") for w, left in zip(width, words)]
    return "\n".join([row(head), "|" + "|".join(rule) + "|", *map(row, lines[1:])])


class Peers:
    """The comparison with other libraries."""

    def __init__(self, path: Path, floor: Path | None) -> None:
        self.values: Measured = {}
        self.scaled: Scaled = {}
        self.libraries: list[str] = []
        self.read(path)
        if floor:
            self.read(floor)
        self.libraries = [name for name in self.libraries if name != FLOOR]
        self.others = [name for name in self.libraries if name not in (OURS, RFC)]

    def read(self, path: Path) -> None:
        for line in path.read_text().splitlines():
            cells = line.split("\t")
            if cells[0] == "scale":
                if cells[4] == "ns":
                    self.scaled[cells[1], cells[2], int(cells[3])] = float(cells[7])
                continue
            if cells[0] not in self.libraries:
                self.libraries.append(cells[0])
            key = (cells[0], cells[1], cells[2], cells[3])
            self.values[key] = min(float(cells[4]), self.values.get(key, float("inf")))

    def columns(self) -> list[str]:
        return [name for name in (OURS, RFC) if name in self.libraries] + self.others

    def titles(self) -> list[str]:
        return [{OURS: "ours", RFC: "ours, RFC"}.get(name, name) for name in self.columns()]

    def value(self, library: str, message: str, operation: str, metric: str) -> float | None:
        found = [self.values[key] for way in OPERATIONS[operation]
                 if (key := (library, message, way, metric)) in self.values]
        return min(found) if found else None

    def rows(self, metric: str) -> list[tuple[str, str, dict[str, float | None]]]:
        """Returns operation, message and each library's value, for the rows in which this library has a value."""
        messages = sorted({key[1] for key in self.values if key[1] != "-"}) + ["-"]
        rows = []
        for operation in OPERATIONS:
            for message in messages:
                values = {name: self.value(name, message, operation, metric) for name in self.libraries}
                if values.get(OURS) is not None:
                    rows.append((operation, message, values))
        return rows

    def best(self, values: dict[str, float | None]) -> float | None:
        return min((value for name in self.others if (value := values[name]) is not None), default=None)

    def ratio(self, values: dict[str, float | None]) -> float | None:
        ours, best = values[OURS], self.best(values)
        return ours / best if ours is not None and best else None

    def comparison(self, metric: str) -> str:
        def cells(operation: str, message: str, values: dict[str, float | None]) -> list[str]:
            digits = 1 if metric == "allocs" else 0
            ratio = self.ratio(values)
            return [operation, message, *(show(values[name], digits) for name in self.columns()), show(ratio, 2)]
        head = ["operation", "message", *self.titles(), "ours / best"]
        return table(head, (cells(*row) for row in self.rows(metric)))

    def floor(self) -> str:
        """Returns what a parse costs, as a multiple of the floor."""
        def multiple(message: str, metric: str) -> list[str]:
            floor, ours = (self.values.get((name, message, "parse", metric)) for name in (FLOOR, OURS))
            return [show(floor), show(ours), show(ours / floor, 1) if floor and ours else "-"]
        messages = sorted({key[1] for key in self.values if key[0] == FLOOR and key[2] == "parse"})
        return table(["parse", "floor", "ours, instructions", "times", "floor", "ours, nanoseconds", "times"],
                     ([message, *multiple(message, "instr"), *multiple(message, "ns_min")] for message in messages))

    def verdict(self) -> str:
        """Returns how many rows reach the goal, and which miss it."""
        lines = []
        for metric, name in METRICS.items():
            rows = [(operation, message, ratio) for operation, message, values in self.rows(metric)
                    if (ratio := self.ratio(values)) is not None]
            goals = GOALS[metric]
            missed = [row for row in rows if row[2] > goals.get(row[0], goals[""]) + 0.0005]
            lines.append(f"- {name}: {len(rows) - len(missed)} of {len(rows)} rows reach their goal"
                         + ("." if not missed else "; not yet: " + ", ".join(
                             f"{operation}{'' if message == '-' else ' ' + message} ({ratio:.3f})"
                             for operation, message, ratio in missed) + "."))
        held = {message: value for message in HELD_GOAL
                if (value := self.values.get((OURS, message, "held", "heap_bytes"))) is not None}
        lines += [f"- Bytes held, {message}: {show(value)}, the goal being {show(HELD_GOAL[message])}."
                  for message, value in held.items()]
        return "\n".join(lines)

    def held(self) -> str:
        messages = sorted({key[1] for key in self.values if key[2] == "held"})
        rows = []
        for message in messages:
            values = {name: self.values.get((name, message, "held", "heap_bytes")) for name in self.libraries}
            rows.append([message, *(show(values[name]) for name in self.columns()), show(self.ratio(values), 2)])
        return table(["message", *self.titles(), "ours / best"], rows)

    def growth(self) -> str:
        names = {"route": "one comma-separated line", "routelines": "own lines", "via": "Vias",
                 "unknown": "unknown headers"}
        few, many = 100, 10000

        def cell(library: str, kind: str) -> str:
            at_few, at_many = self.scaled.get((library, kind, few)), self.scaled.get((library, kind, many))
            if at_few is None or at_many is None:
                return "failed"
            return f"{at_few:,.0f} / {at_many:,.0f} ({at_many / at_few:.1f})"
        return table(["ns a value, 100 / 10,000 (ratio)", *self.titles()],
                     ([names[kind], *(cell(name, kind) for name in self.columns())] for kind in names))


class Own:
    """The results of kx_bench; the best repetition of each."""

    def __init__(self, path: Path) -> None:
        self.best: dict[str, dict] = {}
        for run in json.loads(path.read_text())["benchmarks"]:
            if run.get("run_type") == "iteration" and "error_occurred" not in run:
                name = run["run_name"]
                if name not in self.best or run["real_time"] < self.best[name]["real_time"]:
                    self.best[name] = run

    def growth(self) -> str:
        kinds: dict[str, dict[int, float]] = {}
        for name, run in self.best.items():
            if match := re.fullmatch(r"grow/(\w+)/(\d+)", name):
                kinds.setdefault(match[1], {})[int(match[2])] = run["per_item"] * 1e9
        sizes = sorted({size for kind in kinds.values() for size in kind})
        return table(["ns a value: parse, write, free", *map(show, sizes), "10,000 / 100"],
                     ([kind.replace("_", " "), *(show(values.get(size)) for size in sizes),
                       show(values[10000] / values[100], 2) if {100, 10000} <= values.keys() else "-"]
                      for kind, values in sorted(kinds.items())))

    def threads(self) -> str:
        speed = {int(match[1]): run["items_per_second"] for name, run in self.best.items()
                 if (match := re.search(r"^threads/.*threads:(\d+)$", name))}
        if not {1, 2} <= speed.keys():
            return "not measured"
        return (f"Messages a second: one thread {show(speed[1])}, two threads {show(speed[2])}: "
                f"**{speed[2] / speed[1]:.2f}** times as many.")

    def hostile(self) -> str:
        times = {name.removeprefix("hostile/"): run["real_time"] / 1e3 for name, run in self.best.items()
                 if name.startswith("hostile/")}
        if "well_formed" not in times:
            return "not measured"
        base = times["well_formed"]
        ordered = sorted(times.items(), key=lambda item: -item[1])
        over = sum(time > HOSTILE_AIM * base for time in times.values())
        shown = [item for item in ordered if item[1] > 2 * base or item[0] == "well_formed"]
        return (f"{over} of {len(times)} messages cost more than {HOSTILE_AIM} times the well-formed one; the "
                f"{len(times) - len(shown)} that are not shown cost at most twice as much.\n\n"
                + table(["64 KB of", "microseconds", "times well-formed"],
                        ([name.replace("_", " "), show(time), show(time / base, 1)] for name, time in shown)))


def costs_by_function(dump: str) -> dict[str, int]:
    """Returns the cost of each function of a callgrind dump, without the functions that it called."""
    names: dict[str, str] = {}
    costs: dict[str, int] = {}
    inside, objects, library, is_call = "", {}, "", False
    for line in dump.splitlines():
        if match := re.match(r"(c?ob|c?fn)=(\(\d+\))(?: (.*))?$", line):
            known = objects if match[1].endswith("ob") else names
            if match[3]:
                known[match[2]] = match[3]
            if match[1] == "ob":
                library = Path(known[match[2]]).name
            elif match[1] == "fn":
                inside = known[match[2]]
                inside = f"(no name) in {library}" if inside.startswith("0x") else inside
        elif line.startswith("calls="):
            is_call = True  # the next line is the cost of the called function
        elif re.match(r"[+*\-\d]", line):
            cells = line.split()
            if not is_call and len(cells) == 2:
                costs[inside] = costs.get(inside, 0) + int(cells[1])
            is_call = False
    return costs


def functions(folder: Path, message: str, count: int = 15) -> str:
    """Returns a table of the instructions of a parse, by function."""
    label = re.compile(rf"^desc: Trigger: Client Request: {OURS}\|{message}\|parse\|(\d+)$", re.M)
    found = next(((text, int(match[1])) for dump in folder.glob(f"{OURS}.out*")
                  if (match := label.search(text := dump.read_text()))), None)
    if found is None:
        return "not measured"
    costs: dict[str, float] = {}
    for name, cost in costs_by_function(found[0]).items():
        short = re.sub(r"(?<=[\w>])\(.*", "", name.replace("(anonymous namespace)::", ""))  # without the arguments
        short = re.sub(r"'\d+$", "", short)
        costs[short] = costs.get(short, 0) + cost / found[1]
    total = sum(costs.values())
    top = sorted(costs.items(), key=lambda item: -item[1])[:count]
    return table([f"{message}: function", "instructions", "share"],
                 ([f"`{name[:100]}`", show(cost), f"{100 * cost / total:.1f} %"] for name, cost in top))


def machine(libraries: list[str]) -> str:
    def first_line(*command: str) -> str:
        done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        return done.stdout.splitlines()[0] if done.stdout else "?"
    processor = next((line.split(":", 1)[1].strip() for line in Path("/proc/cpuinfo").read_text().splitlines()
                      if line.startswith("model name")), platform.machine())
    versions = [f"{name} is {LIBRARIES[name]} " + first_line("dpkg-query", "-W", "-f", "${Version}", LIBRARIES[name])
                for name in libraries if name in LIBRARIES]
    commit = first_line("git", "-C", str(ROOT), "rev-parse", "--short", "HEAD")
    return f"{processor}; {first_line('g++', '--version')}; commit {commit}. " + "; ".join(versions) + "."


def plot(peers: Peers) -> str:
    """Draws one bar for each row and metric: our cost relative to that of the best other library."""
    shades = {"instr": "#2a6f97", "ns_min": "#89c2d9"}
    labels = {"instr": "instructions", "ns_min": "time"}
    ratios = {metric: {(operation, message): peers.ratio(values) for operation, message, values in peers.rows(metric)}
              for metric in shades}
    keys = [key for key in dict.fromkeys(key for metric in shades for key in ratios[metric])
            if any(ratios[metric].get(key) for metric in shades)]
    largest = max((value for metric in shades for value in ratios[metric].values() if value), default=1.0)
    top = max(1.1, min(largest, 3.0) * 1.05)
    left, width, row, head = 250, 560, 26, 56
    height = head + row * len(keys) + 40

    def x(value: float) -> float:
        return left + width * min(value, top) / top

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {left + width + 60} {height}" '
             f'width="{left + width + 60}" height="{height}" font-family="sans-serif" font-size="12">',
             '<rect width="100%" height="100%" fill="white"/>',
             f'<text x="{left}" y="20" font-size="14" font-weight="bold">Cost against the best other library '
             '(less is better)</text>']
    for i, (metric, shade) in enumerate(shades.items()):
        parts.append(f'<rect x="{left + 130 * i}" y="30" width="12" height="12" fill="{shade}"/>'
                     f'<text x="{left + 130 * i + 18}" y="40">{labels[metric]}</text>')
    bottom = head + row * len(keys)
    for value, text in ((GOALS["instr"][""], "half"), (1.0, "level")):
        parts.append(f'<line x1="{x(value):.1f}" y1="{head - 4}" x2="{x(value):.1f}" y2="{bottom + 4}" '
                     f'stroke="#b23a48" stroke-dasharray="{"none" if value == 1 else "4 3"}"/>'
                     f'<text x="{x(value):.1f}" y="{bottom + 20}" text-anchor="middle" fill="#b23a48">{text}</text>')
    for i, (operation, message) in enumerate(keys):
        y = head + row * i
        title = operation if message == "-" else f"{operation}: {message}"
        parts.append(f'<text x="{left - 8}" y="{y + 15}" text-anchor="end">{escape(title)}</text>')
        for j, (metric, shade) in enumerate(shades.items()):
            value = ratios[metric].get((operation, message))
            if value is not None:
                parts.append(f'<rect x="{left}" y="{y + 2 + 10 * j}" width="{x(value) - left:.1f}" '
                             f'height="10" fill="{shade}"/><text x="{x(value) + 4:.1f}" y="{y + 11 + 10 * j}" '
                             f'font-size="9" stroke="white" stroke-width="3" paint-order="stroke">{value:.2f}</text>')
    return "\n".join([*parts, "</svg>", ""])


def replace_sections(text: str, sections: dict[str, str]) -> str:
    """Returns the text with the content between the marks of each section replaced."""
    for name, content in sections.items():
        begin, end = f"<!-- begin {name} -->", f"<!-- end {name} -->"
        if begin not in text or end not in text:
            sys.exit(f"report: {DOCUMENT.name} has no place for {name}")
        text = text[:text.index(begin) + len(begin)] + f"\n{content}\n" + text[text.index(end):]
    return text


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--own", type=Path, required=True)
    parser.add_argument("--peers", type=Path)
    parser.add_argument("--floor", type=Path)
    parser.add_argument("--callgrind", type=Path)
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()

    own = Own(arguments.own)
    sections: dict[str, str] = {}
    peers = Peers(arguments.peers, arguments.floor) if arguments.peers else None
    if peers:
        sections["machine"] = machine(peers.libraries)
        sections["verdict"] = peers.verdict()
        for metric in METRICS:
            sections[metric] = peers.comparison(metric)
        sections["held"] = peers.held()
        if arguments.floor:
            sections["floor"] = peers.floor()
        if peers.scaled:
            sections["growth-compared"] = peers.growth()
    if arguments.callgrind:
        sections["functions"] = "\n\n".join(functions(arguments.callgrind, message)
                                            for message in ("05_invite", "06_invite_carrier"))
    sections |= {"growth": own.growth(), "threads": own.threads(), "hostile": own.hostile()}
    titles = {**METRICS, "floor": "The floor", "held": "Bytes held by a message", "growth-compared": "Growth, parse",
              "growth": "Growth, ours", "threads": "Two threads", "hostile": "Hostile messages",
              "functions": "Where the instructions go",
              "machine": "Measured on", "verdict": "Against the goal: half of the best (SIP URL, digest: see GOALS)"}
    for name, content in sections.items():
        print(f"\n{titles[name]}\n\n{content}")
    if arguments.write:
        DOCUMENT.write_text(replace_sections(DOCUMENT.read_text(), sections))
        written = DOCUMENT.name
        if peers:
            PLOT.write_text(plot(peers))
            written += f" and {PLOT.name}"
        print(f"\nwritten: {written}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
