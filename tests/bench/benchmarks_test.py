#!/usr/bin/env python3
"""What the benchmark makes of the numbers, and of what it traces. Neither Wine nor NSIS is needed."""

import re
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench"))

import make  # noqa: E402
import measure  # noqa: E402
import report  # noqa: E402
from rows import MEASURES  # noqa: E402


def made_up_results(left_out=None):
    """Three pairs of each measure: 3, 1 and 2 where the other side has 4, 4 and 2."""
    lines = []
    for row in MEASURES:
        for side, values in (("installer", (3, 1, 2)), (report.other_side(row), (4, 4, 2))):
            if side and (row.name, side) != left_out:
                lines += [f"{row.name}\t{side}\t{pair}\t{value}" for pair, value in enumerate(values)]
    with tempfile.NamedTemporaryFile("w") as file:
        file.write("\n".join(lines) + "\n")
        file.flush()
        return report.read_results(Path(file.name))


class Report(unittest.TestCase):
    def test_tells_medians_and_quartiles_of_both_and_of_the_ratios(self):
        visible = [measure for measure in MEASURES if measure.name == "visible"]
        row = list(report.table(made_up_results(), visible))[2]
        self.assertEqual(row, "| First window visible, ms | 2 (1.5 to 2.5) | NSIS | 4 (3 to 4) | 0.75 (0.50 to 0.88) |")

    def test_names_what_was_not_measured(self):
        report.check(made_up_results(), MEASURES)
        for row in MEASURES:
            for side in filter(None, ("installer", report.other_side(row))):
                with self.assertRaisesRegex(SystemExit, re.escape(f"no result of '{row.name}' for '{side}'")):
                    report.check(made_up_results((row.name, side)), MEASURES)

    def test_names_what_is_no_measure(self):
        results = made_up_results()
        results["speed"]["installer"].append(1)
        with self.assertRaisesRegex(SystemExit, "no measure speed"):
            report.check(results, MEASURES)

    def test_takes_the_place_of_the_one_before(self):
        with tempfile.TemporaryDirectory() as folder:
            document = Path(folder, "document.md")
            begin, end = report.MARKERS
            document.write_text(f"Before\n{begin}\nold\n{end}\nAfter\n")
            report.rewrite(document, ["new"])
            self.assertEqual(document.read_text(), f"Before\n{begin}\n\nnew\n\n{end}\nAfter\n")
            document.write_text("Before\n")
            with self.assertRaisesRegex(SystemExit, "document.md lacks"):
                report.rewrite(document, ["new"])
            self.assertEqual(document.read_text(), "Before\n")

    def test_stands_in_the_documentation_with_a_row_for_every_measure(self):
        text = (measure.ROOT / "docs/benchmarks.md").read_text()
        self.assertEqual([text.count(marker) for marker in report.MARKERS], [1, 1])
        results = text.partition(report.MARKERS[0])[2].partition(report.MARKERS[1])[0]
        rows = [line.strip("| ").split(" | ") for line in results.splitlines() if line.startswith("| ")][1:]
        self.assertEqual([(row[0], row[2]) for row in rows],
                         [(report.title(row), row.against or "nothing") for row in MEASURES])


class Trace(unittest.TestCase):
    def test_counts_the_calls_of_all_threads_of_the_program_that_the_process_became(self):
        text = """10 execve("script", []) = 0
10 read(3, "", 1) = 0
10 execve("program", []) = 0
10 openat(AT_FDCWD, "x") = 3
10 clone3({flags=CLONE_VM|CLONE_THREAD} <unfinished ...>
11 set_robust_list(0x1, 24) = 0
10 <... clone3 resumed> => {parent_tid=[11]}, 88) = 11
11 write(3</Log>, "ab", 2 <unfinished ...>
10 clone(flags=SIGCHLD) = 12
12 execve("payload", []) = 0
11 <... write resumed>) = 2
12 +++ exited with 0 +++
"""
        with tempfile.NamedTemporaryFile("w") as file:
            file.write(text)
            file.flush()
            calls = measure.calls_of_first_process(Path(file.name))
        self.assertEqual([call.split("(")[0] for call in calls],
                         ["execve", "openat", "clone3", "set_robust_list", "write", "clone"])


class Payload(unittest.TestCase):
    def test_has_the_checksum_of_a_program(self):
        program = bytearray(range(256)) * 5
        program[0x3C:0x40] = (0x80).to_bytes(4, "little")
        padded = make.padded(program, 3001)
        self.assertEqual(len(padded), 3001)
        place = 0x80 + 0x58
        expected = int.from_bytes(padded[place:place + 4], "little")
        padded[place:place + 4] = bytes(4)
        total = 0
        for at in range(0, len(padded), 2):
            total += int.from_bytes(padded[at:at + 2], "little")
            total = (total & 0xFFFF) + (total >> 16)
        self.assertEqual(expected, total + 3001)


if __name__ == "__main__":
    unittest.main()
