"""The table of conditions, and the machines that it makes."""

from collections import namedtuple
from pathlib import Path

NONE = "-"

# What is expected of a machine, and what is found.
Outcome = namedtuple("Outcome", "exit_code verdict code step onenote terminated")
Machine = namedtuple("Machine", "name condition payload_exit_code milliseconds expected")


def read_machines(file, prefix):
    """Named in the order of the table: `prefix`-01 and so on."""
    machines = []
    for line in Path(file).read_text().splitlines():
        if line and not line.startswith("#"):
            condition, count, payload_exit_code, milliseconds, *outcome = line.split()
            for _ in range(int(count)):
                name = f"{prefix}-{len(machines) + 1:02}"
                machines.append(Machine(name, condition, payload_exit_code, milliseconds, Outcome(*outcome)))
    return machines
