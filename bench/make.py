#!/usr/bin/env python3
"""Makes what is measured but is no part of the product: the peer, payloads of several sizes, and the peer with those.

    make.py FOLDER ELEVATED_INSTALLER MEGABYTES...
"""

import random
import re
import struct
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
LANGUAGE_FILES = Path("/usr/share/nsis/Contrib/Language files")
STATUS_TEXTS = ("StrCheckingRequirements", "StrInstalling", "StrInstallCompleted", "StrInstallFailed")
MEGABYTE = 1 << 20


def nsis_languages():
    """NSIS's language files by the number of their language, the first line of each that has nothing else."""
    return {re.search(r"^[0-9]+$", file.read_text("utf-8-sig"), re.MULTILINE).group(): file.name
            for file in LANGUAGE_FILES.glob("*.nlf")}


def languages():
    """The languages and status texts of the window, for NSIS. The first one is its default."""
    known = nsis_languages()
    for line in (ROOT / "core/languages/languages.txt").read_text().splitlines():
        if line.startswith("#"):
            continue
        code, _, lcid, _ = line.split(maxsplit=3)
        if lcid not in known:
            sys.exit(f"make.py: NSIS does not know the language {code}")
        yield f'LoadLanguageFile "${{NSISDIR}}\\Contrib\\Language files\\{known[lcid]}"'
        texts = dict(re.findall(r'/\* (\w+) \*/\s*L"([^"]*)"', (ROOT / f"core/languages/{code}.h").read_text()))
        for name in STATUS_TEXTS:
            yield f'LangString {name} {lcid} "{texts[name].replace("$", "$$")}"'


def checksum(program):
    """That of a program file, as the linker writes it: a sum with its carries, and the size."""
    return int.from_bytes(program, "little") % 0xFFFF + len(program)


def padded(program, size):
    """A program file with random bytes behind it, so that nothing can compress them, and the checksum of that."""
    file = bytearray(program)
    file += random.Random(size).randbytes(max(0, size - len(file)))
    place = struct.unpack_from("<I", file, 0x3C)[0] + 0x58
    struct.pack_into("<I", file, place, 0)
    struct.pack_into("<I", file, place, checksum(file))
    return file


def make(script, output, **defines):
    command = ["makensis", "-V1", "-WX"] + [f"-D{name}={value}" for name, value in defines.items()]
    subprocess.run([*command, f"-DOUTPUT={output}", ROOT / "bench/peer" / script], check=True)


def main():
    folder, elevated_installer, sizes = Path(sys.argv[1]), Path(sys.argv[2]).resolve(), list(map(int, sys.argv[3:]))
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "languages.nsh").write_text("\n".join(languages()) + "\n")
    logo = folder / "logo.bmp"
    subprocess.run(["convert", ROOT / "resources/logo.png", "-background", "white", "-flatten", f"BMP3:{logo}"],
                   check=True)

    def make_peer(output, payload):
        make("Installer.nsi", output, PAYLOAD=payload, LOGO=logo, ICON=ROOT / "resources/vellumkit.ico",
             LANGUAGES=folder / "languages.nsh")

    make_peer(folder / "peer.exe", elevated_installer)
    make("Workloads.nsi", folder / "peer-workloads.exe", PAYLOAD=elevated_installer)
    for megabytes in sizes:
        payload = folder / f"payload-{megabytes}.exe"
        payload.write_bytes(padded(elevated_installer.read_bytes(), megabytes * MEGABYTE))
        make("Workloads.nsi", folder / f"peer-workloads-{megabytes}.exe", PAYLOAD=payload)
    if sizes:
        make_peer(folder / f"peer-{max(sizes)}.exe", folder / f"payload-{max(sizes)}.exe")


if __name__ == "__main__":
    main()
