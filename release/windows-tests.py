#!/usr/bin/env python3
"""Packs what tests a build on Windows: the executables, the lab, the tests and the file that runs them.

    release/windows-tests.py BUILD ZIP

The same build makes the same bytes at the same SOURCE_DATE_EPOCH.
"""

import os
import pathlib
import re
import sys
import time
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDER = "vellumkit-windows-tests"
FILES = ("VellumkitInstaller.x64.exe", "VellumkitLog.exe", "lab/*.exe", "lab/*.dll", "lab/machines/*.ini",
         "tests/log-writer.exe", "tests/planted-library.dll", "tests/program-tests.exe", "tests/uncaught-error.exe",
         "tests/unit-tests.exe", "tests/window-tests.exe", "tests/log.md", "tests/reports/*.txt")


def batch_file():
    languages = re.findall(r"^([a-z][\w-]*) ", (ROOT / "core/languages/languages.txt").read_text(encoding="utf-8"),
                           re.MULTILINE)
    text = (ROOT / "release/windows-tests/run-tests.cmd").read_text(encoding="ascii")
    return text.replace("@LANGUAGES@", " ".join(languages)).replace("\n", "\r\n").encode("ascii")


def contents(build):
    """Name in the kit to its bytes."""
    files = {"run-tests.cmd": batch_file()}
    for pattern in FILES:
        found = list(build.glob(pattern))
        if not found:
            sys.exit(f"windows-tests.py: {build} has no {pattern}")
        files.update((str(file.relative_to(build)), file.read_bytes()) for file in found)
    return sorted(files.items())


def main():
    build, file = (pathlib.Path(argument) for argument in sys.argv[1:])
    moment = time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))[:6]
    file.unlink(missing_ok=True)
    with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as kit:
        for name, content in contents(build):
            entry = zipfile.ZipInfo(f"{FOLDER}/{name}", max(moment, (1980, 1, 1, 0, 0, 0))) # a zip knows no other
            entry.external_attr = 0o644 << 16
            kit.writestr(entry, content, zipfile.ZIP_DEFLATED)
    print(file)


main()
