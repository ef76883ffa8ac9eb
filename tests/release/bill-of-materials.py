#!/usr/bin/env python3
"""Looks at the bill of materials and the licences of a release: that the document is SPDX 2.3, tells what it is about,
names for each executable just those libraries whose functions its symbols show, and that the texts are there.

    tests/release/bill-of-materials.py BUILD
"""

import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

TOOLS = "x86_64-w64-mingw32-"
LIBRARIES = {
    "libgcc": ("libgcc.a", "libgcc_eh.a"),
    "libstdc++": ("libstdc++.a",),
    "mingw-w64-runtime": ("libmingw32.a", "libmingwex.a"),
    "winpthreads": ("libpthread.a",),
}
# Of SPDX' list of licences and exceptions.
LISTED_LICENCES = {"GPL-3.0-or-later", "GCC-exception-3.1", "MIT", "BSD-3-Clause", "ZPL-2.1"}
PURPOSES = {"APPLICATION", "FRAMEWORK", "LIBRARY", "CONTAINER", "OPERATING-SYSTEM", "DEVICE", "FIRMWARE", "SOURCE",
            "ARCHIVE", "FILE", "INSTALL", "OTHER"}

BUILD = pathlib.Path(sys.argv[1])
ASSEMBLE = pathlib.Path(__file__).parent / "../../release/assemble.sh"


def functions_of(*files):
    listed = subprocess.run((f"{TOOLS}gcc-nm-posix", "--extern-only", "--defined-only", *files), check=True,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
    return set(re.findall(r"^[0-9a-f]+ T (\S+)$", listed, re.MULTILINE))


def library_file(name):
    return pathlib.Path(subprocess.run((f"{TOOLS}g++-posix", f"-print-file-name={name}"), check=True,
                                       stdout=subprocess.PIPE, text=True).stdout.strip())


def linked_libraries(symbols):
    """Those that have a function in the executable that neither another one nor our own code has."""
    functions = {component: functions_of(*filter(pathlib.Path.exists, map(library_file, files)))
                 if any(library_file(file).exists() for file in files) else set()
                 for component, files in LIBRARIES.items()}
    functions["ours"] = functions_of(*BUILD.glob("*/libvellumkit_*.a"))
    executable = functions_of(symbols)
    return {component for component, own in functions.items() if component != "ours" and executable & own.difference(
        *(others for name, others in functions.items() if name != component))}


def linked_with_symbols(program, folder):
    """The program, which is linked without symbols, linked anew with them."""
    link = subprocess.run(("ninja", "-t", "commands", "-s", program), check=True, cwd=BUILD, stdout=subprocess.PIPE,
                          text=True).stdout
    arguments = [argument for argument in shlex.split(link)[2:-2] # between ": &&" and "&& :"
                 if argument != "-s" and not argument.startswith("-Wl,-Map=")]
    arguments[arguments.index("-o") + 1] = folder / program
    subprocess.run(arguments, check=True, cwd=BUILD)
    return folder / program


def sha256(file):
    return hashlib.sha256(file.read_bytes()).hexdigest()


class BillOfMaterials(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.temporary = pathlib.Path(temporary.name)
        cls.folder = cls.temporary / "product"
        subprocess.run((ASSEMBLE, BUILD, cls.folder), check=True, env=dict(os.environ, SOURCE_DATE_EPOCH="1700000000"))
        cls.document = json.loads((cls.folder / "VellumkitInstaller.x64.spdx.json").read_text(encoding="utf-8"))
        cls.packages = {package["name"]: package for package in cls.document["packages"]}

    def test_is_a_document_of_spdx(self):
        document = self.document
        self.assertEqual((document["spdxVersion"], document["dataLicense"], document["SPDXID"]),
                         ("SPDX-2.3", "CC0-1.0", "SPDXRef-DOCUMENT"))
        self.assertRegex(document["documentNamespace"], r"^https://[^#\s]+$")
        self.assertEqual(document["creationInfo"]["created"], "2023-11-14T22:13:20Z")
        for creator in document["creationInfo"]["creators"]:
            self.assertRegex(creator, r"^(Person|Organization|Tool): \S")
        for package in document["packages"]:
            with self.subTest(package["name"]):
                self.assertRegex(package["SPDXID"], r"^SPDXRef-[A-Za-z0-9.-]+$")
                self.assertEqual(package["downloadLocation"], "NOASSERTION")
                self.assertIs(package["filesAnalyzed"], False)
                self.assertIn(package["primaryPackagePurpose"], PURPOSES)
                for checksum in package.get("checksums", []):
                    self.assertRegex(checksum["checksumValue"], r"^[0-9a-f]{64}$")
                for reference in package.get("externalRefs", []):
                    self.assertEqual(reference["referenceCategory"], "PACKAGE-MANAGER")
                    self.assertRegex(reference["referenceLocator"], r"^pkg:deb/debian/[a-z0-9.%B-]+@[^\s+]+$")

    def test_relates_everything_to_an_executable(self):
        identifiers = [package["SPDXID"] for package in self.document["packages"]]
        self.assertEqual(len(identifiers), len(set(identifiers)))
        related = {(entry["spdxElementId"], entry["relationshipType"], entry["relatedSpdxElement"])
                   for entry in self.document["relationships"]}
        links = {relation for relation in related if relation[1] == "STATIC_LINK"}
        self.assertEqual(related - links, {("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Installer"),
                                           ("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-LogReader"),
                                           ("SPDXRef-Installer", "CONTAINS", "SPDXRef-ElevatedInstaller")})
        executables = {"SPDXRef-Installer", "SPDXRef-LogReader"}
        self.assertEqual({program for program, _, _ in links}, executables)
        self.assertEqual({library for _, _, library in links},
                         set(identifiers) - executables - {"SPDXRef-ElevatedInstaller"})

    def test_names_licences_that_it_or_spdx_defines(self):
        defined = {licence["licenseId"] for licence in self.document["hasExtractedLicensingInfos"]}
        used = {part for package in self.document["packages"]
                for part in re.split(" AND | OR | WITH ", package["licenseDeclared"])} - {"NOASSERTION"}
        self.assertEqual({licence for licence in used if licence.startswith("LicenseRef-")}, defined)
        self.assertLessEqual(used - defined, LISTED_LICENCES)
        for licence in self.document["hasExtractedLicensingInfos"]:
            self.assertTrue(licence["extractedText"].strip())

    def test_is_about_the_executables_and_what_is_embedded(self):
        for name, file in (("VellumkitInstaller", self.folder / "VellumkitInstaller.x64.exe"),
                           ("VellumkitLog", self.folder / "VellumkitLog.exe"),
                           ("elevated installer", BUILD / "lab/elevated-installer.exe")):
            self.assertEqual(self.packages[name]["checksums"], [{"algorithm": "SHA256", "checksumValue": sha256(file)}])

    def test_names_the_libraries_whose_functions_are_in_an_executable(self):
        names = {package["SPDXID"]: name for name, package in self.packages.items()}
        for program, symbols in (("VellumkitInstaller", self.folder / "VellumkitInstaller.x64.exe.debug"),
                                 ("VellumkitLog", linked_with_symbols("VellumkitLog.exe", self.temporary))):
            with self.subTest(program):
                named = {names[entry["relatedSpdxElement"]] for entry in self.document["relationships"]
                         if entry["relationshipType"] == "STATIC_LINK" and names[entry["spdxElementId"]] == program}
                linked = linked_libraries(symbols)
                self.assertIn("libstdc++", linked)
                self.assertEqual(named, linked)

    def test_tells_the_versions_that_are_installed(self):
        for name, files in LIBRARIES.items():
            if name in self.packages:
                owner = subprocess.run(("dpkg-query", "--search", library_file(files[0]).resolve()), check=True,
                                       stdout=subprocess.PIPE, text=True).stdout.partition(":")[0]
                version = subprocess.run(("dpkg-query", "--show", "--showformat=${Version}", owner), check=True,
                                         stdout=subprocess.PIPE, text=True).stdout
                self.assertEqual(self.packages[name]["versionInfo"], version)
                self.assertIn(f"from the Debian package {owner},", self.packages[name]["sourceInfo"])

    def test_comes_with_the_texts_of_the_licences(self):
        for file, texts in {
                "GPL-3.txt": ["GNU GENERAL PUBLIC LICENSE", "Version 3, 29 June 2007"],
                "gcc-mingw-w64.txt": ["GCC RUNTIME LIBRARY EXCEPTION", "Version 3.1, 31 March 2009"],
                "mingw-w64.txt": ["ZPL-2.1", "mingw-w64-libraries/winpthreads", "Permission is hereby granted"],
        }.items():
            text = (self.folder / "licenses" / file).read_text(encoding="utf-8")
            for part in texts:
                self.assertIn(part, text, file)


unittest.main(argv=sys.argv[:1])
