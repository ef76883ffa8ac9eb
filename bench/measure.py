#!/usr/bin/env python3
"""Measures the installer and its peer in the Wine prefix that it is started in, pair by pair, and writes what came of
it into FOLDER/results.tsv: a line for each number, with the measure, whose it is, and the pair.

    measure.py FOLDER PEER PAIRS GROUP...
"""

import atexit
import functools
import hashlib
import os
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import threading
import time
from contextlib import contextmanager
from dataclasses import dataclass, replace
from pathlib import Path

sys.dont_write_bytecode = True

from measures import MEASURES, ONE_WRITE, SIZES  # noqa: E402

ROOT = Path(__file__).resolve().parents[1]
RELEASE = ROOT / "out/release"
INSTALLER = RELEASE / "VellumkitInstaller.x64.exe"
WORKLOADS = RELEASE / "bench/workloads.exe"
PAYLOAD = RELEASE / "lab/elevated-installer.exe"

PATIENCE = 120  # seconds
SPECIFIED_WAIT = 1.0  # seconds that every pass sleeps
NEIGHBOURS = 5000
ROOM = 1 << 30  # bytes, for the largest payload several times over


class Ended:
    """What the process was that a command became: Wine's loader becomes the Windows program."""

    def __init__(self, command, output=None, **environment):
        start = time.perf_counter()
        with open(output or os.devnull, "w") as target:
            process = subprocess.Popen([str(part) for part in command], cwd=ROOT, env={**os.environ, **environment},
                                       stdout=target, stderr=target)
            watchdog = threading.Timer(PATIENCE, process.kill)
            watchdog.start()
            _, status, usage = os.wait4(process.pid, 0)
            watchdog.cancel()
        self.seconds = time.perf_counter() - start
        self.code = process.returncode = os.waitstatus_to_exitcode(status)
        self.cpu_seconds = usage.ru_utime + usage.ru_stime
        self.peak_kilobytes = usage.ru_maxrss


def succeed(command, **options):
    ended = Ended(command, **options)
    if ended.code != 0:
        sys.exit(f"measure.py: {' '.join(map(str, command))} ended with {ended.code}")
    return ended


def output_of(*command):
    """Through a file: Wine's services, which the first program starts, would keep a pipe open."""
    with tempfile.NamedTemporaryFile("r") as file:
        succeed(command, output=file.name)
        return file.read().strip()


@contextmanager
def running_until_closed(*command):
    """A program that writes a line when it is ready, and ends with its input, which is closed in the end."""
    with subprocess.Popen(["wine", *command], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
        process.stdout.readline()
        yield


def temporary_folder():
    """In memory where there is room for it: a disk has other users and moments of its own."""
    memory = Path("/dev/shm")
    roomy = memory.is_dir() and shutil.disk_usage(memory).free > ROOM
    folder = Path(tempfile.mkdtemp(prefix="vellumkit-bench-", dir=memory if roomy else None))
    atexit.register(shutil.rmtree, folder)
    return folder


def server_process():
    """Wine's server of this prefix: its directory is named by the prefix's."""
    prefix = os.stat(os.environ["WINEPREFIX"])
    folder = f"server-{prefix.st_dev:x}-{prefix.st_ino:x}"
    for process in Path("/proc").glob("[0-9]*"):
        try:
            if Path(os.readlink(process / "cwd")).name == folder:
                return process
        except OSError:
            continue  # has ended, or is another user's
    sys.exit("measure.py: there is no server of this prefix")


def nanoseconds_run(process):
    return int((process / "schedstat").read_text().split()[0])


def commonest_colour(picture):
    histogram = output_of("convert", picture, "-format", "%c", "-depth", "8", "histogram:info:")
    return max((int(count), colour) for count, colour in re.findall(r"(\d+): .*#([0-9A-F]{6})FF", histogram))[1]


@dataclass(frozen=True)
class Installer:
    """One of the two programs that are compared."""

    side: str
    program: Path
    unattended: tuple
    log: str

    def unattended_pass(self, configuration):
        return ["wine", self.program, *(argument.format(configuration) for argument in self.unattended)]


class Bench:
    def __init__(self, folder, peer, pairs):
        self.folder, self.pairs = folder, pairs
        self.temporary = temporary_folder()
        self.windows_temporary = output_of("winepath", "-w", self.temporary)
        for name in ("TEMP", "TMP"):
            succeed(["wine", "reg", "add", r"HKCU\Environment", "/v", name, "/d", self.windows_temporary, "/f"])
        self.installer = Installer("installer", INSTALLER, ("/config", "{}"), "Vellumkit_Install.log")
        self.peer = Installer("peer", peer, ("/S", "/config={}"), "Vellumkit_Peer.log")
        self.logo_colour = commonest_colour("resources/logo.png")
        self.results = (folder / "results.tsv").open("w")
        for name, code in (("succeeds", 0), ("fails", 5)):
            (self.temporary / f"{name}.ini").write_text(f"[ElevatedInstaller]\r\nExitCode={code}\r\n")

    def configuration(self, name):
        return f"{self.windows_temporary}\\{name}.ini"

    def note(self, measure, side, pair, value):
        print(measure, side, pair, f"{value:.10g}", sep="\t", file=self.results, flush=True)

    def alternate(self, measure_once, *sides):
        """Measures each side once, as often as there are pairs, who begins in turn. A first pair does not count."""
        for pair in range(-1, self.pairs):
            if sys.stdout.isatty():
                print(f"\r  pair {pair + 1} of {self.pairs} ", end="", flush=True)
            for side in sides if pair % 2 else reversed(sides):
                for measure, value in measure_once(side):
                    if pair >= 0:
                        self.note(measure, getattr(side, "side", side), pair, value)
        if sys.stdout.isatty():
            print("\r\033[K", end="", flush=True)

    # That both do the same.

    def prepare(self):
        """The machine as each pass finds it: settings to be repaired, nothing extracted."""
        succeed(["wine", "reg", "import", ROOT / "bench/settings.reg"])
        for file in ("Vellumkit/Vellumkit Installer.exe", "Vellumkit_Elev.log"):
            (self.temporary / file).unlink(missing_ok=True)

    def effects(self, installer):
        """What a pass has changed: the user's settings, the payload and how it was called, and how the pass ended."""
        self.prepare()
        ended = Ended(installer.unattended_pass(self.configuration("succeeds")))
        settings = self.temporary / "settings.reg"
        succeed(["wine", "reg", "export", r"HKCU\Software", settings, "/y"])
        target = self.temporary / "Vellumkit/Vellumkit Installer.exe"
        called = self.temporary / "Vellumkit_Elev.log"
        log = self.temporary / installer.log
        return {
            "exit code": ended.code,
            "waits for the payload": ended.seconds > SPECIFIED_WAIT,
            "settings": settings.read_text("utf-16"),
            "payload": hashlib.sha256(target.read_bytes()).hexdigest() if target.exists() else "none",
            "payload's command line": re.findall("Command line: (.*)", called.read_text("utf-16"))
            if called.exists() else "none",
            "log in UTF-16": log.exists() and log.read_bytes().startswith(b"\xff\xfe"),
            "exit code after a payload that failed": Ended(installer.unattended_pass(self.configuration("fails"))).code,
            "waits for OneNote": self.waits_for_onenote(installer),
        }

    def waits_for_onenote(self, installer):
        onenote = self.folder / "onenote.exe"
        onenote.write_bytes(WORKLOADS.read_bytes())
        with running_until_closed(onenote, "crowd", "0"):
            started = subprocess.Popen(installer.unattended_pass(self.configuration("succeeds")))
            time.sleep(2.5)  # more than a pass takes
            waits = started.poll() is None
        started.wait(PATIENCE)
        return waits

    def refuse_unequal(self):
        mine, others = self.effects(self.installer), self.effects(self.peer)
        different = [name for name in mine if mine[name] != others[name]]
        for name in different:
            print(f"{name}: {str(mine[name])[:300]!r} is the installer's, {str(others[name])[:300]!r} the peer's",
                  file=sys.stderr)
        if different:
            sys.exit("measure.py: the peer does not do what the installer does: " + ", ".join(different))

    # The measurements, a method for each group.

    def measure_size(self):
        payload = PAYLOAD.stat().st_size
        for installer in (self.installer, self.peer):
            self.note("size", installer.side, 0, installer.program.stat().st_size - payload)

    def pass_with_window(self, installer):
        program = f'"{installer.program.relative_to(ROOT)}"'
        return ["wine", RELEASE / "bench/window-times.exe", self.logo_colour, program]

    def measure_window(self):
        def measure_once(installer):
            self.prepare()
            return zip(("visible", "painted"), map(float, output_of(*self.pass_with_window(installer)).split()))

        self.alternate(measure_once, self.installer, self.peer)

    def passes(self, name, *installers):
        server = server_process()

        def measure_once(installer):
            self.prepare()
            before = nanoseconds_run(server)
            ended = succeed(installer.unattended_pass(self.configuration("succeeds")))
            if ended.peak_kilobytes <= resource.getrusage(resource.RUSAGE_SELF).ru_maxrss:
                sys.exit("measure.py: the peak memory may be that of this program before it became another one")
            yield f"{name}-cpu", ended.cpu_seconds * 1e3
            yield f"{name}-server", (nanoseconds_run(server) - before) / 1e6
            yield f"{name}-wall", (ended.seconds - SPECIFIED_WAIT) * 1e3
            yield f"{name}-memory", ended.peak_kilobytes / 1024

        self.alternate(measure_once, *installers)

    def measure_pass(self):
        self.passes("pass", self.installer, self.peer)

    def measure_payload(self):
        self.passes("large", *(replace(installer, program=self.folder / f"{installer.side}-256.exe")
                               for installer in (self.installer, self.peer)))
        for size in SIZES:
            program = self.folder / f"installer-{size}.exe" if size > 1 else INSTALLER
            self.alternate_work(f"comparison-{size}", "compare", program)

    def workload(self, measure, *arguments):
        return measure, float(output_of("wine", WORKLOADS, *arguments))

    def peer_workload(self, measure, argument, size=1):
        file = self.temporary / "workloads.txt"
        file.unlink(missing_ok=True)
        succeed(["wine", self.folder / f"peer-workloads-{size}.exe", "/S", argument])
        ticks, frequency = map(int, file.read_text().split())
        return measure, 1e3 * ticks / frequency

    def measure_extraction(self):
        file = self.temporary / "extracted.bin"
        target = f"{self.windows_temporary}\\{file.name}"

        def measure_once(side, size):
            if side == "peer":
                yield self.peer_workload(f"extraction-{size}", "/extract", size)
            elif side == ONE_WRITE:
                yield self.workload(f"write-{size}", "single-write", target, size)
            else:
                extraction, value = self.workload(f"extraction-{size}", "write", target, size)
                yield extraction, value
                yield f"write-{size}", value
            file.unlink()

        for size in SIZES:
            self.alternate(functools.partial(measure_once, size=size), "installer", "peer", ONE_WRITE)

    def alternate_work(self, measure, *arguments, peer=None):
        self.alternate(lambda side: [self.peer_workload(measure, peer) if side == "peer" else
                                     self.workload(measure, *arguments)], "installer", *["peer"] * (peer is not None))

    def measure_log(self):
        self.alternate_work("log", "log", 10_000, peer="/log=10000")

    def measure_report(self):
        self.alternate_work("report-0", "report")
        try:
            succeed(["wine", WORKLOADS, "add-neighbours", NEIGHBOURS])
            self.alternate_work("report-5000", "report")
        finally:
            succeed(["wine", WORKLOADS, "remove-neighbours", NEIGHBOURS])

    def measure_processes(self):
        for count in (1, 100, 1000):
            with running_until_closed(WORKLOADS, "crowd", str(count)):
                self.alternate_work(f"find-{count}", "find", peer="/find")

    def measure_counts(self):
        trace = self.folder / "trace.txt"
        for installer in (self.installer, self.peer):
            command = installer.unattended_pass(self.configuration("succeeds"))
            self.prepare()
            succeed(command, output=trace, WINEDEBUG="-all,+pid,+loaddll,+reg")
            lines = lines_of(installer, trace)
            self.note("libraries", installer.side, 0, libraries_in(lines))
            self.note("keys", installer.side, 0, sum(re.search(r":Nt(Open|Create)Key(Ex)? \(", line) is not None
                                                     for line in lines))
            self.note("log-bytes", installer.side, 0, (self.temporary / installer.log).stat().st_size)
            self.prepare()
            succeed(self.pass_with_window(installer), output=trace, WINEDEBUG="-all,+pid,+loaddll")
            self.note("window-libraries", installer.side, 0, libraries_in(lines_of(installer, trace)))
            self.prepare()
            succeed(["strace", "-f", "-y", "-qq", "-e", "signal=none", "-o", trace, *command])
            calls = calls_of_first_process(trace)
            self.note("calls", installer.side, 0, len(calls))
            self.note("log-writes", installer.side, 0,
                      sum(re.match(rf"p?write\w*\(\d+<[^>]*/{installer.log}>", call) is not None for call in calls))
        trace.unlink()


def lines_of(installer, trace):
    """The lines of Wine's trace that the installer's process has written. They begin with the process."""
    lines = trace.read_text(errors="replace").splitlines()
    process = next(line.split(":")[0] for line in lines
                   if re.search(rf'Loaded L".*\\{re.escape(installer.program.name)}"', line))
    return [line for line in lines if line.startswith(process + ":")]


def libraries_in(lines):
    """All that is loaded but the program itself, each once."""
    loaded = re.findall(r'Loaded L"([^"]*)"', "\n".join(lines))
    return len({name.lower() for name in loaded}) - 1


def calls_of_first_process(trace):
    """The system calls of all threads of the process that the command became: its children are others."""
    process, begun, calls = {}, {}, []
    with trace.open(errors="replace") as lines:
        for line in lines:
            thread, _, call = line.rstrip("\n").partition(" ")
            call = call.lstrip()
            process.setdefault(thread, thread if process else "first")
            if call.startswith("<... "):
                call = begun.pop(thread, "") + call
            elif process[thread] == "first" and not call.startswith(("+++", "---")):
                calls.append(call)
            if call.endswith("<unfinished ...>"):
                begun[thread] = call
            elif "CLONE_THREAD" in call:
                process[call.rpartition("= ")[2]] = process[thread]
    return calls


def main():
    folder, peer, pairs, *groups = sys.argv[1:]
    bench = Bench(Path(folder).resolve(), Path(peer).resolve(), int(pairs))
    bench.refuse_unequal()
    for group in groups:
        print(f"{group}:", ", ".join(measure.title for measure in MEASURES if measure.group == group), flush=True)
        getattr(bench, f"measure_{group}")()


if __name__ == "__main__":
    main()
