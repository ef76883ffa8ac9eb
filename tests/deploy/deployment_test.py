#!/usr/bin/env python3
"""Runs the command lines that docs/deployment.md quotes in the prefix of `lab/machine.sh linux`. A folder stands in for
the server, from which Wine's command prompt starts no program.

    deployment_test.py BUILD_FOLDER
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(sys.argv.pop())
DRIVE = Path(os.environ["WINEPREFIX"]) / "drive_c"
TEMPORARY = DRIVE / "Temp"
SERVER = DRIVE / "server"
KIT = SERVER / "vellumkit"
LOGS = SERVER / "logs"
INTUNE_LOGS = DRIVE / "ProgramData/Microsoft/IntuneManagementExtension/Logs"
SETUP = DRIVE / "windows/VellumkitSetup"
DONE = SETUP / "rollout-1.done"
INTERNET = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings"


def quoted(language):
    """The lines of the document's blocks in that language."""
    text = (ROOT / "docs/deployment.md").read_text()
    blocks = re.findall(rf"^```{language}\n(.*?)^```$", text, re.M | re.S)
    return "".join(blocks).replace("\\\\server\\", "C:\\server\\").splitlines()


def wine(*command):
    """The exit code and what was written. It goes through a file, which Wine's services keep open."""
    with tempfile.TemporaryFile() as output:
        code = subprocess.run(("wine", *command), cwd=KIT, stdin=subprocess.DEVNULL, stdout=output,
                              stderr=subprocess.DEVNULL, check=False, timeout=120).returncode
        output.seek(0)
        return code, output.read().decode().replace("\r", "")


def run(line):
    (KIT / "line.cmd").write_text(f"@call {line}\r\n@exit /b %ERRORLEVEL%\r\n")
    return wine("cmd", "/c", "line.cmd")


def configure(exit_code):
    (KIT / "vellumkit.ini").write_text(f"[ElevatedInstaller]\nExitCode={exit_code}\n")


def install():
    return wine("VellumkitInstaller.x64.exe", "/config", r"C:\server\vellumkit\vellumkit.ini")


def log_text(name="Vellumkit_Install.log"):
    return (TEMPORARY / name).read_text(encoding="utf-16")


def empty_folders():
    if SETUP.is_file():
        SETUP.unlink()
    for folder in (SERVER, TEMPORARY, INTUNE_LOGS, SETUP):
        shutil.rmtree(folder, ignore_errors=True)
    for folder in (KIT, LOGS, TEMPORARY, INTUNE_LOGS):
        folder.mkdir(parents=True)
    for program in ("VellumkitInstaller.x64.exe", "VellumkitLog.exe"):
        shutil.copy(BUILD / program, KIT)
    for script in (ROOT / "deploy").glob("*.cmd"):
        shutil.copy(script, KIT)


def setUpModule():
    empty_folders()
    for name in ("TMP", "TEMP"):
        wine("reg", "add", r"HKCU\Environment", "/v", name, "/d", r"C:\Temp", "/f")


class CommandLine(unittest.TestCase):
    """What becomes of each one: the table at the end."""

    def installs(self, line):
        configure(0)
        self.assertEqual(run(line)[0], 0)
        self.assertIn("State: Complete", log_text())
        self.assertIn(r'"C:\Temp\Vellumkit\Vellumkit Installer.exe" C:\Temp\ C:\server\vellumkit\vellumkit.ini',
                      log_text("Vellumkit_Elev.log"))
        self.assertIn(f"Command line: {line.partition(' ')[2]}", log_text())

    def installs_once(self, line):
        logs = LOGS if line.endswith(r"C:\server\logs") else INTUNE_LOGS
        configure(5)
        self.assertEqual(run(line)[0], 1)
        self.assertFalse(DONE.exists())
        elevated, log = sorted(logs.iterdir())
        self.assertEqual(elevated.name, f"{log.stem}.elevated.txt")
        self.assertIn("(0x5)", log.read_text(encoding="utf-16"))
        self.assertIn(r'"C:\windows\VellumkitSetup\Vellumkit\Vellumkit Installer.exe" C:\windows\VellumkitSetup\ ',
                      elevated.read_text(encoding="utf-16"))
        configure(0)
        self.assertEqual(run(line)[0], 0)
        self.assertTrue(DONE.exists())
        self.assertIn("State: Complete", log.read_text(encoding="utf-16"))
        log.unlink()
        elevated.unlink()
        configure(5)
        self.assertEqual(run(line)[0], 0)
        self.assertEqual(list(logs.iterdir()), [])

    def repairs(self, line):
        """All that the installer deletes is deleted, and the protocols are those that it allows."""
        configure(0)
        install()
        deleted = re.findall(r"Deleting registry key: HKCU\\(.*)\\(.*)", log_text())
        self.assertEqual(len(deleted), 7)
        disturbed = "".join(f'[HKEY_CURRENT_USER\\{key}]\n"{"Item" if name == "@" else name}"="x"\n'
                            for key, name in deleted)
        (KIT / "disturbed.reg").write_text(f"Windows Registry Editor Version 5.00\n\n{disturbed}")
        wine("regedit", "/S", "disturbed.reg")
        wine("reg", "add", INTERNET, "/v", "SecureProtocols", "/t", "REG_DWORD", "/d", "160", "/f")
        office = ("reg", "query", r"HKCU\Software\Microsoft\Office", "/s")
        self.assertEqual(wine(*office)[1].count("REG_SZ    x\n"), 7)
        self.assertEqual(run(line)[0], 0)
        settings = wine(*office)[1]
        self.assertEqual(settings.count("REG_SZ    x\n"), 0)
        self.assertNotIn("DisabledItems", settings)
        self.assertIn("0xaa0", wine("reg", "query", INTERNET, "/v", "SecureProtocols")[1])
        self.assertIn("0x1\n", wine("reg", "query", r"HKCU\Software\Vellumkit", "/v", "Repaired")[1])

    def copies(self, line):
        configure(0)
        install()
        self.assertEqual(run(line)[0], 0)
        log, = LOGS.iterdir()
        self.assertEqual(log.read_bytes(), (TEMPORARY / "Vellumkit_Install.log").read_bytes())

    def reads(self, line):
        for exit_code in (0, 5):
            configure(exit_code)
            install()
            shutil.copy(TEMPORARY / "Vellumkit_Install.log", LOGS / f"{exit_code}.log")
        code, shown = run(line)
        self.assertEqual(code, 1)
        if line.endswith("logs.csv"):
            shown = (KIT / "logs.csv").read_text(encoding="utf-8-sig")
            self.assertTrue(shown.startswith("file,verdict,code,step,"))
        said = {exit_code: [line for line in shown.splitlines() if f"{exit_code}.log" in line] for exit_code in (0, 5)}
        self.assertEqual([len(lines) for lines in said.values()], [1, 1], shown)
        self.assertRegex(said[0][0], r"\binstalled\b")
        self.assertRegex(said[5][0], r"\bfailed\b.*\b0x5\b")
        (LOGS / "5.log").unlink()
        self.assertEqual(run(line)[0], 0)

    COMMANDS = {
        r"C:\server\vellumkit\VellumkitInstaller.x64.exe": installs,
        r"C:\server\vellumkit\install.cmd": installs_once,
        r"C:\server\vellumkit\repair.cmd": repairs,
        "cmd /c install.cmd": installs_once,
        "cmd /c repair.cmd": repairs,
        "copy": copies,
        "VellumkitLog.exe": reads,
    }

    def test_does_what_the_document_says(self):
        empty_folders()
        lines = quoted("bat")
        for command, expect in self.COMMANDS.items():
            self.assertTrue(any(line.startswith(command) for line in lines), command)
        for line in lines:
            with self.subTest(line):
                empty_folders()
                command, = (command for command in self.COMMANDS if line.startswith(command))
                self.COMMANDS[command](self, line)


class InstallScript(unittest.TestCase):
    CALL = ("cmd", "/c", "install.cmd")

    def setUp(self):
        empty_folders()
        configure(0)

    def test_refuses_to_install_without_a_folder_for_the_logs(self):
        self.assertEqual(wine(*self.CALL)[0], 2)
        self.assertFalse(SETUP.exists())

    def test_fails_where_it_can_not_make_its_folder(self):
        SETUP.write_text("")
        self.assertEqual(wine(*self.CALL, r"C:\server\logs")[0], 2)
        self.assertEqual(list(LOGS.iterdir()), [])

    def test_fails_where_it_can_not_leave_its_mark(self):
        SETUP.mkdir()
        DONE.symlink_to(SETUP / "missing" / "mark")
        self.assertEqual(wine(*self.CALL, r"C:\server\logs")[0], 2)
        self.assertIn("State: Complete", (SETUP / "Vellumkit_Install.log").read_text(encoding="utf-16"))

    def test_installs_where_a_folder_has_the_name_of_the_log_and_leaves_no_older_log_on_the_server(self):
        self.assertEqual(wine(*self.CALL, r"C:\server\logs")[0], 0)
        elevated, log = sorted(LOGS.iterdir())
        DONE.unlink()
        (SETUP / "Vellumkit_Install.log").unlink()
        (SETUP / "Vellumkit_Install.log").mkdir()
        elevated.write_text("older")
        self.assertEqual(wine(*self.CALL, r"C:\server\logs")[0], 0)
        self.assertFalse(log.exists())
        self.assertNotEqual(elevated.read_bytes(), b"older")


class RepairScript(unittest.TestCase):
    def test_keeps_the_protocols_where_it_need_not_add_any_and_takes_a_text_for_none(self):
        empty_folders()
        for kind, before, after in (("REG_DWORD", "0x80000aa0", "0x80000aa0"), ("REG_SZ", "0x20", "0xa80")):
            with self.subTest(before):
                wine("reg", "add", INTERNET, "/v", "SecureProtocols", "/t", kind, "/d", before, "/f")
                self.assertEqual(run("repair.cmd")[0], 0)
                self.assertRegex(wine("reg", "query", INTERNET, "/v", "SecureProtocols")[1], rf"REG_DWORD +{after}\n")


class Playbook(unittest.TestCase):
    def test_is_called_as_the_document_says(self):
        line, = quoted("sh")
        self.assertIn(f"#     {line}\n", (ROOT / "deploy/install.yml").read_text())
        with tempfile.TemporaryDirectory() as folder:
            os.symlink(ROOT / "deploy", f"{folder}/deploy")
            shutil.copy(ROOT / "deploy/inventory.example.yml", f"{folder}/inventory.yml")
            environment = os.environ | {"LC_ALL": "C.UTF-8", "ANSIBLE_HOME": folder, "ANSIBLE_LOCAL_TEMP": folder}
            shown = subprocess.run([*line.split(), "--list-hosts"], cwd=folder, env=environment, check=True,
                                   capture_output=True, text=True).stdout
        self.assertIn("pc-0001.example.com", shown)

    def test_report_names_each_machine_when_nothing_came_of_any(self):
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "logs.csv").write_text("")
            result = subprocess.run(
                ["python3", ROOT / "lab/fleet/report.py", ROOT / "tests/deploy/conditions.txt", "pc", folder],
                check=False, capture_output=True, text=True)
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, 1)
        self.assertIn("5 machines: 5 none\n", result.stdout)
        self.assertIn("pc-01 absent: -, none, -, -, -, - instead of 0, installed, -, -, not-registered, -\n",
                      result.stdout)


if __name__ == "__main__":
    unittest.main()
