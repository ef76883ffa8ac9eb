#!/usr/bin/env python3
"""Writes which libraries are linked into the executables, as SPDX 2.3, and the texts of their licences.

    release/bill-of-materials.py BUILD FOLDER

The folder has the executables, as they are shipped. What is in them is read from the linker's maps in the build's
folder. The document tells the time of SOURCE_DATE_EPOCH. Fails when something is linked in that no known component
brings.
"""

import collections
import datetime
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

RUN_TIME_LIBRARY = "GPL-3.0-or-later WITH GCC-exception-3.1"

# What is shipped: identifier in the document, name, file, purpose.
PROGRAMS = (
    ("Installer", "VellumkitInstaller", "VellumkitInstaller.x64.exe", "INSTALL"),
    ("LogReader", "VellumkitLog", "VellumkitLog.exe", "APPLICATION"),
)

# What is known to be linked in: pattern of its files, Debian's source package, component, its makers, its licence.
COMPONENTS = (
    (r"libstdc\+\+.*\.a", "gcc-mingw-w64", "libstdc++", "Free Software Foundation", RUN_TIME_LIBRARY),
    (r"libgcc(_eh)?\.a|crt(begin|end)\.o", "gcc-mingw-w64", "libgcc", "Free Software Foundation", RUN_TIME_LIBRARY),
    (r"lib(win)?pthread\.a", "mingw-w64", "winpthreads", "mingw-w64 project", "MIT AND BSD-3-Clause"),
    (r"lib.*\.a|crt2u?\.o", "mingw-w64", "mingw-w64-runtime", "mingw-w64 project",
     "ZPL-2.1 AND LicenseRef-mingw-w64-files"),
)


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def sha256(*files):
    return hashlib.sha256(b"".join(file.read_bytes() for file in files)).hexdigest()


def cached(build, name):
    """A value of CMake's cache."""
    return re.search(rf"^{name}:\w+=(.*)$", (build / "CMakeCache.txt").read_text(encoding="utf-8"), re.MULTILINE)[1]


def linked_files(linker_map):
    """The files that have given an executable at least one byte. Symbols for the debugger are not shipped in it."""
    files = set()
    section = ""
    contents = linker_map.partition("\nLinker script and memory map\n")[2]
    if not contents:
        sys.exit("bill-of-materials.py: the linker's map has no contents, or tells them in another language")
    for line in contents.splitlines():
        if start := re.match(r"[./]\S+", line):
            section = start[0]
        # The name of an input section stands on the line before when it is long.
        part = re.match(r"(?: \S+)? +0x([0-9a-f]+) +0x([0-9a-f]+) (.+?)(?:\([^()]*\))?$", line)
        if part and int(part[1], 16) and int(part[2], 16) and not section.startswith((".debug", "/")):
            files.add(part[3])
    return files


def debian_package(file):
    name = output_of("dpkg-query", "--search", file).partition(": ")[0].partition(":")[0]
    version, source, architecture = output_of(
        "dpkg-query", "--show", "--showformat=${Version}\n${source:Package}\n${Architecture}", name).splitlines()
    return {"name": name, "version": version, "source": source, "architecture": architecture}


def linked_components(build, program):
    """Component to its makers, its licence and the Debian package that it comes from."""
    components = {}
    linker_map = (build / f"{program}.map").read_text(encoding="utf-8")
    for file in sorted(linked_files(linker_map)):
        path = (build / file).resolve()
        if path.is_relative_to(build.resolve()):
            continue # our own
        package = debian_package(path)
        for pattern, source, component, makers, licence in COMPONENTS:
            if package["source"] == source and re.fullmatch(pattern, path.name):
                components[component] = (makers, licence, package)
                break
        else:
            sys.exit(f"bill-of-materials.py: {path.resolve()} is linked in, and its licence is not known here")
    return components


def licence_of(package):
    return pathlib.Path("/usr/share/doc", package["name"], "copyright").read_text(encoding="utf-8")


def described_package(identifier, name, **fields):
    return {"SPDXID": f"SPDXRef-{identifier}", "name": name, "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseConcluded": "NOASSERTION", "copyrightText": "NOASSERTION", **fields}


def checksums(file):
    return [{"algorithm": "SHA256", "checksumValue": sha256(file)}]


def document(build, folder, linked):
    version = cached(build, "CMAKE_PROJECT_VERSION")
    host = cached(build, "VELLUMKIT_WEB_HOST")
    payload = pathlib.Path(cached(build, "VELLUMKIT_ELEVATED_INSTALLER") or build / "lab/elevated-installer.exe")
    created = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    sums = sha256(*(folder / file for _, _, file, _ in PROGRAMS))
    licence = (folder / "LICENSE").read_text(encoding="utf-8")
    packages = [
        described_package(identifier, name, versionInfo=version, packageFileName=file,
                          checksums=checksums(folder / file), supplier="Organization: Vellumkit",
                          licenseDeclared="LicenseRef-Vellumkit", copyrightText=licence.splitlines()[0],
                          primaryPackagePurpose=purpose)
        for identifier, name, file, purpose in PROGRAMS]
    packages.append(described_package("ElevatedInstaller", "elevated installer", checksums=checksums(payload),
                                      licenseDeclared="NOASSERTION", primaryPackagePurpose="INSTALL"))
    relationships = [("DOCUMENT", "DESCRIBES", program) for program in linked]
    relationships.append(("Installer", "CONTAINS", "ElevatedInstaller"))
    licences = {"LicenseRef-Vellumkit": licence}
    for component, (makers, declared, package) in sorted(collections.ChainMap(*linked.values()).items()):
        identifier = component.replace("+", "x")
        packages.append(described_package(
            identifier, component, versionInfo=package["version"], licenseDeclared=declared,
            supplier="Organization: Debian", originator=f"Organization: {makers}", primaryPackagePurpose="LIBRARY",
            sourceInfo=f"from the Debian package {package['name']}, built from {package['source']}",
            externalRefs=[{
                "referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                "referenceLocator": f"pkg:deb/debian/{package['name'].replace('+', '%2B')}@"
                                    f"{package['version'].replace('+', '%2B')}?arch={package['architecture']}"}]))
        relationships += [(program, "STATIC_LINK", identifier) for program in linked if component in linked[program]]
        if "LicenseRef-mingw-w64-files" in declared:
            licences["LicenseRef-mingw-w64-files"] = licence_of(package)
    return {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"VellumkitInstaller-{version}",
        "documentNamespace": f"https://{host}/spdx/VellumkitInstaller-{version}-{sums}",
        "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": ["Organization: Vellumkit", "Tool: release.sh"]},
        "packages": packages,
        "relationships": [{"spdxElementId": f"SPDXRef-{element}", "relationshipType": kind,
                           "relatedSpdxElement": f"SPDXRef-{related}"} for element, kind, related in relationships],
        "hasExtractedLicensingInfos": [{"licenseId": identifier, "name": identifier.partition("-")[2],
                                        "extractedText": text} for identifier, text in sorted(licences.items())],
    }


def write_licences(folder, linked):
    folder.mkdir()
    for _, licence, package in collections.ChainMap(*linked.values()).values():
        (folder / f"{package['source']}.txt").write_text(licence_of(package), encoding="utf-8")
        if licence.startswith("GPL-3"):
            shutil.copyfile("/usr/share/common-licenses/GPL-3", folder / "GPL-3.txt")


def main():
    build, folder = (pathlib.Path(argument) for argument in sys.argv[1:])
    linked = {program: linked_components(build, file) for program, _, file, _ in PROGRAMS}
    text = json.dumps(document(build, folder, linked), indent=2, ensure_ascii=False)
    (folder / "VellumkitInstaller.x64.spdx.json").write_text(text + "\n", encoding="utf-8")
    write_licences(folder / "licenses", linked)


main()
