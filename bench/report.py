#!/usr/bin/env python3
"""Makes the table and the chart of what was measured, and writes them into a document.

    report.py FOLDER [DOCUMENT PICTURE]

FOLDER/results.tsv becomes FOLDER/results.md and FOLDER/ratios.svg. With a document, the table stands in it, dated,
between two comments, and the chart is PICTURE. Then there must be a result of every measure; else there may be some.
"""

import os
import re
import shutil
import subprocess
import sys
from collections import defaultdict
from datetime import date
from pathlib import Path
from statistics import median, quantiles

sys.dont_write_bytecode = True

from rows import MEASURES, NSIS  # noqa: E402

MARKERS = ("<!-- results of bench.sh -->", "<!-- end of results -->")
CORES = ("no", "one core", "two cores", "three cores", "four cores")


def read_results(file):
    """The numbers of each measure and side, in the order of the pairs."""
    results = defaultdict(lambda: defaultdict(list))
    for line in file.read_text().splitlines():
        measure, side, _, value = line.split("\t")
        results[measure][side].append(float(value))
    return results


def number(value):
    return f"{value:,.0f}" if value >= 100 or value == int(value) else f"{value:.3g}"


def quartiles(values):
    return quantiles(values, n=4, method="inclusive")[::2] if len(values) > 1 else [values[0]] * 2


def spread(values, text):
    """The median, and the quartiles where they differ."""
    low, high = map(text, quartiles(values))
    return text(median(values)) + (f" ({low} to {high})" if low != high else "")


def title(measure):
    return measure.title + (f", {measure.unit}" if measure.unit else "")


def other_side(measure):
    return "peer" if measure.against == NSIS else measure.against


def ratios(measure, sides):
    """Those of the pairs."""
    return [mine / other for mine, other in zip(sides["installer"], sides[other_side(measure)], strict=True)]


def check(results, measures):
    """Ends the program when a number is missing, or is none of these measures'."""
    for measure in measures:
        for side in {"installer", other_side(measure)} - {None}:
            if not results[measure.name][side]:
                sys.exit(f"report.py: there is no result of '{measure.name}' for '{side}'")
    unknown = set(results) - {measure.name for measure in MEASURES}
    if unknown:
        sys.exit(f"report.py: there is no measure {', '.join(sorted(unknown))}")


def table(results, measures):
    yield "| What | Installer | Compared with | | Ratio |"
    yield "|---|---:|---|---:|---:|"
    for measure in measures:
        sides = results[measure.name]
        row = [title(measure), spread(sides["installer"], number)]
        if measure.against:
            row += [measure.against, spread(sides[other_side(measure)], number)]
            row += [spread(ratios(measure, sides), "{:.2f}".format)]
        else:
            row += ["nothing", "", ""]
        yield "| " + " | ".join(row) + " |"


def draw(results, measures, folder):
    """All but the counts, of which more is not worse: most of the log is specified."""
    compared = [measure for measure in measures if measure.against and measure.group != "counts"]
    if not compared:
        return
    with (folder / "ratios.dat").open("w") as data:
        for measure in compared:
            values = ratios(measure, results[measure.name])
            print(f'"{measure.title} / {measure.against}"', median(values), *quartiles(values), file=data)
    subprocess.run(["gnuplot", Path(__file__).with_name("ratios.gnuplot")], cwd=folder, check=True)


def conditions(folder):
    """The machine in words: no name, no path."""
    cores = os.cpu_count()
    words = CORES[cores] if cores < len(CORES) else f"{cores} cores"
    virtual = re.search(r"^flags.*\bhypervisor\b", Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    system = dict(re.findall(r'^(\w+)="?([^"\n]*)', Path("/etc/os-release").read_text(), re.MULTILINE))
    name = system["ID"].title() + " " + system.get("VERSION_ID", "testing")
    wine = subprocess.run(["wine", "--version"], env={**os.environ, "WINEDEBUG": "-all"}, capture_output=True,
                          text=True, check=True).stdout.split()[0].removeprefix("wine-")
    nsis = subprocess.run(["makensis", "-VERSION"], capture_output=True, text=True, check=True).stdout.strip()
    place = (folder / "place.txt").read_text().strip()
    return (f"{words} of a {'virtual ' if virtual else ''}machine, {name}, Wine {wine}, NSIS {nsis.removeprefix('v')}, "
            f"temporary folder {place}")


def rewrite(document, lines):
    begin, end = MARKERS
    before, _, rest = document.read_text().partition(begin)
    _, found, after = rest.partition(end)
    if not found:
        sys.exit(f"report.py: {document.name} lacks '{begin}' or '{end}'")
    document.write_text("\n".join([before + begin, "", *lines, "", end + after]))


def main():
    folder, *target = map(Path, sys.argv[1:])
    results = read_results(folder / "results.tsv")
    measured = {measure.group for measure in MEASURES if measure.name in results}
    measures = [measure for measure in MEASURES if target or measure.group in measured]
    check(results, measures)
    today = date.today()
    pairs = max(len(values) for sides in results.values() for values in sides.values())
    lines = [f"{today.day} {today:%B %Y}, {conditions(folder)}, {pairs} pairs:", "", *table(results, measures)]
    (folder / "results.md").write_text("\n".join(lines) + "\n")
    draw(results, measures, folder)
    if target:
        document, picture = target
        rewrite(document, lines)
        shutil.copyfile(folder / "ratios.svg", picture)
    print("\n".join(lines))


if __name__ == "__main__":
    main()
