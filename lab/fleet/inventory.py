#!/usr/bin/env python3
"""Makes the inventory of the machines of a table of conditions, for deploy/install.yml.

    inventory.py CONDITIONS PREFIX FOLDER

Writes FOLDER/inventory.json, FOLDER/machines.txt, a line for each machine with its condition, and the configuration
files of the elevated installer. A machine's name is that of its Wine prefix, and begins with PREFIX.
"""

import json
import sys
from pathlib import Path

sys.dont_write_bytecode = True

from conditions import read_machines  # noqa: E402

ROOT = Path(__file__).resolve().parents[2]


def main(conditions, prefix, folder):
    folder = Path(folder).resolve()
    configurations = folder / "configurations"
    configurations.mkdir()
    hosts = {}
    machines = read_machines(conditions, prefix)
    for machine in machines:
        configuration = configurations / f"{machine.condition}.ini"
        configuration.write_text(f"[ElevatedInstaller]\nExitCode={machine.payload_exit_code}\n"
                                 f"Milliseconds={machine.milliseconds}\n")
        hosts[machine.name] = {
            "fleet_condition": machine.condition,
            "fleet_drive": str(ROOT / "out/wine" / machine.name / "drive_c"),
            "vellumkit_config": str(configuration),
        }
    variables = {
        "ansible_connection": "local",
        "ansible_python_interpreter": "{{ ansible_playbook_python }}",
        "fleet_machine": str(ROOT / "lab/fleet/machine.sh"),
        "vellumkit_installer": str(ROOT / "out/release/VellumkitInstaller.x64.exe"),
        "vellumkit_delay": "false",  # a string, as one that the command line gives
        "vellumkit_collected": str(folder / "collected"),
        "vellumkit_target": str(ROOT / "lab/fleet/machine"),
    }
    inventory = {"all": {"hosts": hosts, "vars": variables}}
    (folder / "inventory.json").write_text(json.dumps(inventory, indent=2))
    (folder / "machines.txt").write_text("".join(f"{machine.name} {machine.condition}\n" for machine in machines))


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
