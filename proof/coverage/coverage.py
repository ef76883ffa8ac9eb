#!/usr/bin/env python3
"""Names the lines of the program that no test has reached, and compares them with those that docs/proof.md explains."""

import json
import re
import subprocess
import sys
from collections import Counter, defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("app", "ui", "install", "checks", "core")


def counts_of(build):
    """How often each line has run, for each file: the sum over the objects that its code is in."""
    counts = defaultdict(Counter)
    for notes in sorted(build.rglob("*.gcno")):
        report = subprocess.run(["x86_64-w64-mingw32-gcov-posix", "--json-format", "--stdout", notes],
                                cwd=build, capture_output=True, text=True, check=True).stdout
        for line in report.splitlines():
            for file in json.loads(line)["files"]:
                path = Path(build, file["file"]).resolve()
                for entry in file["lines"]:
                    counts[path][entry["line_number"]] += entry["count"]
    return counts


def unreached(counts):
    """The lines, as a file, a number and their text without its comment."""
    for path, lines in sorted(counts.items()):
        if path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in FOLDERS:
            texts = path.read_text().split("\n")
            for number in sorted(number for number, count in lines.items() if count == 0):
                yield str(path.relative_to(ROOT)), number, texts[number - 1].split(" // ")[0].strip()


def explained():
    """The lines that the documentation explains: "- `core/Log.cpp`: `return {};`: reason"."""
    text = (ROOT / "docs/proof.md").read_text()
    return Counter(re.findall(r"^- `([^`]+)`: `([^`]*)`: ", text, re.MULTILINE))


def main():
    counts = counts_of(Path(sys.argv[1]).resolve())
    found = list(unreached(counts))
    unknown = Counter((path, text) for path, _, text in found)
    known = explained()
    for path, number, text in found:
        word = "explained" if (path, text) in known else "unexplained"
        print(f"{path}:{number}: {text} ({word})")
    for path, text in unknown - known:
        print(f"There is no explanation, or one too few, of a line of {path} that no test reaches: {text}")
    for path, text in known - unknown:
        print(f"There is an explanation, or one too many, of a line of {path} that tests reach: {text}")
    lines = [count for path, file in counts.items() if path.is_relative_to(ROOT) for count in file.values()]
    print(f"{sum(count > 0 for count in lines)} of {len(lines)} lines with code are reached")
    return 0 if lines and unknown == known else 1


if __name__ == "__main__":
    sys.exit(main())
