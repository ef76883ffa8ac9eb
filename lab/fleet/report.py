#!/usr/bin/env python3
"""Compares what came of the machines with what was expected.

    report.py CONDITIONS PREFIX FOLDER

Reads FOLDER/collected/results.csv, which deploy/install.yml has written, and FOLDER/logs.csv of the log reader. Writes
FOLDER/results.md, a line for each machine, and FOLDER/timeline.dat, from which timeline.gnuplot makes a chart. Names
each machine of which something else came than was expected, and ends with 1 when there is one.
"""

import csv
import sys
from collections import Counter
from datetime import datetime
from pathlib import Path, PureWindowsPath

sys.dont_write_bytecode = True

from conditions import NONE, Outcome, read_machines  # noqa: E402

NO_RUN = {"exit_code": "", "begun": "", "ended": "", "trouble": "not rolled out to"}
NO_LOG = {"verdict": "none", "code": "", "step": "", "oneNote": "", "terminated": ""}


def read_rows(file, key):
    """No rows where there is no file: none is made when no machine is left."""
    if not file.exists():
        return {}
    with open(file, newline="", encoding="utf-8-sig") as text:
        return {key(row): row for row in csv.DictReader(text)}


def outcome(run, log):
    """With the bitness of OneNote in one word."""
    onenote = log["oneNote"].replace(" ", "-")
    found = run["exit_code"], log["verdict"], log["code"], log["step"], onenote, log["terminated"]
    return Outcome(*(text or NONE for text in found))


def seconds(run, origin):
    """From when to when the installer ran, None when nobody knows."""
    if not run["begun"]:
        return None
    return [(datetime.fromisoformat(run[name]) - origin).total_seconds() for name in ("begun", "ended")]


def table(rows):
    lines = ["| Machine | Condition | Seconds | Exit code | Verdict | Code | Step | OneNote | Terminated | Expected |",
             "|---|---|---|---|---|---|---|---|---|---|"]
    for machine, found, time in rows:
        expected = "as found" if found == machine.expected else "**" + ", ".join(machine.expected) + "**"
        lasted = f"{time[1] - time[0]:.0f}" if time else NONE
        lines.append(f"| {' | '.join((machine.name, machine.condition, lasted, *found, expected))} |")
    return "\n".join(lines) + "\n"


def timeline(rows):
    return "".join(f'"{machine.name} {machine.condition}"\t{time[0]}\t{time[1]}\t{found.verdict}\n'
                   for machine, found, time in rows if time)


def main(conditions, prefix, folder):
    folder = Path(folder)
    runs = read_rows(folder / "collected/results.csv", lambda row: row["host"])
    logs = read_rows(folder / "logs.csv", lambda row: PureWindowsPath(row["file"]).stem)
    origin = min((datetime.fromisoformat(run["begun"]) for run in runs.values() if run["begun"]), default=None)
    rows = []
    for machine in read_machines(conditions, prefix):
        run = runs.get(machine.name, NO_RUN)
        rows.append((machine, outcome(run, logs.get(machine.name, NO_LOG)), seconds(run, origin)))

    verdicts = Counter(found.verdict for _, found, _ in rows)
    wrong = [(machine, found) for machine, found, _ in rows if found != machine.expected]
    summary = f"{len(rows)} machines: " + ", ".join(f"{count} {verdict}" for verdict, count in verdicts.most_common())
    (folder / "results.md").write_text(f"{summary}.\n\n{table(rows)}")
    (folder / "timeline.dat").write_text(timeline(rows))
    print(summary)
    for machine, found in wrong:
        print(f"{machine.name} {machine.condition}: {', '.join(found)} instead of {', '.join(machine.expected)}")
    print("Each as expected" if not wrong else f"{len(wrong)} not as expected")
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
