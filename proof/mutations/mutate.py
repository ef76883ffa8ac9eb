#!/usr/bin/env python3
"""Changes the sources one place at a time, and names the changes that no test notices."""

import argparse
import fnmatch
import re
import signal
import sys
import threading
import time
import traceback
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

sys.dont_write_bytecode = True

from changes import changes_of, digest, enumerators_of  # noqa: E402
from tree import PLACE, ROOT, Broken, Tree, fingerprint  # noqa: E402

FOLDERS = ("app", "ui", "install", "checks", "core")
BUILT = ("app/", "ui/", "install/", "checks/", "core/", "resources/", "lab/", "tests/", "proof/", "bench/",
         "cmake/", "CMake*")
REACHES = ("quick", "usual", "thorough")
RESULTS = PLACE / "results.tsv"
EXPLANATIONS = ROOT / "docs/proof.md"


@dataclass
class Result:
    key: str
    outcome: str
    noticed_by: str
    place: str
    kind: str
    seconds: str
    built: str  # a fingerprint of all that was built and tested, and the tests' reach
    description: str

    @property
    def counts(self):
        return self.outcome != "does not compile"


def mutated_files():
    patterns = ("*.cpp", "*.h", "*.h.in")
    found = [file for folder in FOLDERS for pattern in patterns for file in (ROOT / folder).rglob(pattern)]
    return sorted({str(file.relative_to(ROOT)) for file in found} | {"core/languages/languages.txt"})


def all_changes(seed):
    """For each file its changes, in an order that the seed and nothing else decides."""
    texts = {path: (ROOT / path).read_text() for path in mutated_files()}
    enumerators = {}
    for text in texts.values():
        enumerators.update(enumerators_of(text))
    changes = {path: changes_of(path, text, enumerators) for path, text in texts.items()}
    return {path: sorted(found, key=lambda change: digest(seed, change.key)) for path, found in changes.items() if found}


def quotas(changes, count, least):
    """How many of each file's changes are tried: as many as its lines that can be changed deserve. The languages are
    alike, and a test holds each of their texts: they get the least."""
    lines = {path: 0 if path.startswith("core/languages/") else len({change.line for change in found})
             for path, found in changes.items()}
    total = sum(lines.values())
    return {path: min(len(found), max(least, round(count * lines[path] / total))) for path, found in changes.items()}


def read_results():
    if not RESULTS.exists():
        return {}
    rows = (line.rstrip("\n").split("\t") for line in RESULTS.open())
    return {row[0]: Result(*row) for row in rows}


def explained():
    """The changes that the documentation explains: "- `core/Log.cpp`: `old` → `new`: reason"."""
    lines = re.findall(r"^- `([^`]+)`: (`[^`]*` → `[^`]*`):\s", EXPLANATIONS.read_text(), re.MULTILINE)
    return set(lines)


class Campaign:
    """What is to be tried, and what has come of it; shared by all who try."""

    def __init__(self, arguments):
        self.reach = arguments.reach
        self.changes = all_changes(arguments.seed)
        self.wanted = quotas(self.changes, arguments.count, arguments.least)
        patterns = arguments.files or ["*"]
        self.wanted = {path: quota for path, quota in self.wanted.items()
                       if any(fnmatch.fnmatch(path, pattern) for pattern in patterns)}
        self.built = fingerprint(BUILT)
        self.retries = not arguments.report  # survivors, when something that is built has changed since
        self.results = read_results()
        self.lock = threading.Lock()
        self.checking = threading.Lock()
        self.next = dict.fromkeys(self.wanted, 0)
        self.counted = {path: [] for path in self.wanted}
        self.running = Counter()
        self.failure = None

    def check(self, tree):
        """That the unchanged sources pass their tests; in one tree, they all have the same."""
        mark = PLACE / f"checked-{self.reach}"
        with self.checking:
            if not mark.exists() or mark.read_text() != self.built:
                tree.check(self.reach)
                mark.write_text(self.built)

    def is_settled(self, change):
        result = self.results.get(change.key)
        if result is None:
            return False
        if result.outcome != "survived" or not self.retries:
            return True
        built, reach = result.built.split()
        return built == self.built and REACHES.index(reach) >= REACHES.index(self.reach)

    def take(self):
        """The next change that has to be tried, of the file that has most of its changes ahead; none at the end."""
        with self.lock:
            while self.failure is None:
                open_files = [path for path in self.wanted if self.missing(path) > 0
                              and self.next[path] < len(self.changes[path])]
                if not open_files:
                    return None
                path = max(open_files, key=lambda path: self.missing(path) / self.wanted[path])
                change = self.changes[path][self.next[path]]
                self.next[path] += 1
                if not self.is_settled(change):
                    self.running[path] += 1
                    return change
                self.count(change)
            return None

    def missing(self, path):
        return self.wanted[path] - len(self.counted[path]) - self.running[path]

    def count(self, change):
        if self.results[change.key].counts:
            self.counted[change.path].append(change)

    def stop(self, reason):
        self.failure = reason

    def settle(self, change, outcome, noticed_by, seconds):
        with self.lock:
            result = Result(change.key, outcome, noticed_by, f"{change.path}:{change.line}", change.kind,
                            f"{seconds:.0f}", f"{self.built} {self.reach}", change.description)
            self.results[change.key] = result
            with RESULTS.open("a") as file:
                print(*vars(result).values(), sep="\t", file=file)
            self.running[change.path] -= 1
            self.count(change)
            self.tell(result)

    def outcomes(self):
        return Counter(self.results[change.key].outcome for found in self.counted.values() for change in found)

    def tell(self, result):
        outcomes = self.outcomes()
        done, total = sum(outcomes.values()), sum(self.wanted.values())
        what = f"{result.outcome}{' by ' * bool(result.noticed_by)}{result.noticed_by}"
        print(f"{done}/{total}, {outcomes['survived']} survived: {result.place} {result.description}: {what}"
              f" ({result.seconds} s)", flush=True)

    def report(self):
        """Whether every survivor is explained."""
        outcomes = self.outcomes()
        survivors = [change for found in self.counted.values() for change in found
                     if self.results[change.key].outcome == "survived"]
        known = explained()
        unexplained = [change for change in survivors if (change.path, change.description) not in known]
        for change in sorted(unexplained, key=lambda change: (change.path, change.line)):
            print(f"Survived: {change.path}:{change.line} {change.description}")
        everything = {(change.path, change.description) for found in self.changes.values() for change in found}
        stale = [place for place in known if place not in everything and place[0] in self.changes]
        for path, description in stale:
            print(f"Explained, but there is no such change: {path} {description}")
        effective = sum(outcomes.values()) - len(survivors) + len(unexplained)
        killed = effective - len(unexplained)
        print(f"{sum(outcomes.values())} changes that compile, {killed} killed ({outcomes['killed by time-out']} by"
              f" time-out), {len(survivors)} survived, {len(survivors) - len(unexplained)} of them explained:"
              f" {100 * killed / max(1, effective):.1f} % of those with an effect are killed")
        return not unexplained and not stale


def work(campaign, number):
    try:
        tree = Tree(number)
        tree.prepare()
        campaign.check(tree)
        while (change := campaign.take()) is not None:
            begin = time.monotonic()
            outcome, noticed_by = tree.judge(change, campaign.reach)
            campaign.settle(change, outcome, noticed_by, time.monotonic() - begin)
    except Broken as failure:
        campaign.stop(str(failure))
    except Exception:
        campaign.stop(traceback.format_exc())


def arguments_of_command_line():
    parser = argparse.ArgumentParser(prog="./prove.sh mutations", description=__doc__)
    parser.add_argument("--seed", default="1", help="which of the possible changes are tried (default: 1)")
    parser.add_argument("--count", type=int, default=300, help="how many, about (default: 300)")
    parser.add_argument("--least", type=int, default=2, help="and at least so many of each file (default: 2)")
    parser.add_argument("--jobs", type=int, default=2, help="copies of the tree, which work side by side (default: 2)")
    parser.add_argument("--reach", choices=REACHES, default="usual",
                        help="quick: the unit and window tests; thorough: also those of the program that wait for real,"
                             " and those of the lab's scripts")
    parser.add_argument("--list", action="store_true", help="list the changes in their order, and try none")
    parser.add_argument("--report", action="store_true", help="say what has come of those that were tried; try none")
    parser.add_argument("files", nargs="*", metavar="PATTERN", help="only of these files: 'core/*'")
    return parser.parse_args()


def main():
    arguments = arguments_of_command_line()
    PLACE.mkdir(parents=True, exist_ok=True)
    campaign = Campaign(arguments)
    if arguments.list:
        for path, quota in campaign.wanted.items():
            for change in campaign.changes[path][:quota]:
                print(f"{path}:{change.line} {change.kind} {change.description}")
        return 0
    if arguments.report:
        complete = True
        while (change := campaign.take()) is not None:
            campaign.running[change.path] -= 1
            complete = False
        if not complete:
            print("Not all have been tried.")
        return 0 if campaign.report() and complete else 1
    for ending in (signal.SIGINT, signal.SIGTERM):
        signal.signal(ending, lambda *_: campaign.stop("Interrupted: those that are being tried come to their end."))
    workers = [threading.Thread(target=work, args=(campaign, number)) for number in range(1, arguments.jobs + 1)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    complete = campaign.report()
    if campaign.failure is not None:
        print(campaign.failure, file=sys.stderr)
    return 0 if complete and campaign.failure is None else 1


if __name__ == "__main__":
    sys.exit(main())
