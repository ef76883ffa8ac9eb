#!/usr/bin/env python3
"""Measures the installer and its peer in the Wine prefix that it is started in, pair by pair, and writes what came of
it into FOLDER/results.tsv: a line for each number, with the measure, whose it is, and the pair. FOLDER/place.txt says
where the temporary folder was.

    measure.py FOLDER PEER PAIRS GROUP...
"""

import atexit
import functools
import hashlib
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from contextlib import contextmanager
from dataclasses import dataclass, replace
from pathlib import Path

sys.dont_write_bytecode = True

from rows import MEASURES, MAPPED, ONE_WRITE, SIZES  # noqa: E402

ROOT = Path(__file__).resolve().parents[1]
RELEASE = ROOT / "out/release"
INSTALLER = RELEASE / "VellumkitInstaller.x64.exe"
WORKLOADS = RELEASE / "bench/workloads.exe"
PAYLOAD = RELEASE / "lab/elevated-installer.exe"
OFFICE = RELEASE / "lab/office.exe"
MACHINES = RELEASE / "lab/machines"

PATIENCE = 120  # seconds
SPECIFIED_WAIT = 1.0  # seconds that every pass sleeps
NEIGHBOURS = 5000
ROOM = 1 << 30  # bytes, for the largest payload several times over


def fork():
    """With a function to call, the process begins as a copy of this program's data. Without one it would begin in this
    program's memory itself, and have all of it in its peak."""


class Run:
    """A command, and what the process was that it became: Wine's loader becomes the Windows program. What it prints and
    what Wine traces go into a file each, or nowhere."""

    def __init__(self, command, output=os.devnull, trace=os.devnull, **environment):
        start = time.perf_counter()
        with open(output, "w") as printed, open(trace, "w") as traced:
            process = subprocess.Popen([str(part) for part in command], cwd=ROOT, env={**os.environ, **environment},
                                       stdout=printed, stderr=traced, preexec_fn=fork)
            watchdog = threading.Timer(PATIENCE, process.kill)
            watchdog.start()
            _, status, usage = os.wait4(process.pid, 0)
            watchdog.cancel()
        self.seconds = time.perf_counter() - start
        self.code = process.returncode = os.waitstatus_to_exitcode(status)
        self.cpu_seconds = usage.ru_utime + usage.ru_stime
        self.peak_megabytes = usage.ru_maxrss / 1024


def succeed(command, **options):
    run = Run(command, **options)
    if run.code != 0:
        sys.exit(f"measure.py: {' '.join(map(str, command))} ended with {run.code}")
    return run


def output_of(*command):
    """Through a file: Wine's services, which the first program starts, would keep a pipe open."""
    with tempfile.NamedTemporaryFile("r") as file:
        succeed(command, output=file.name)
        return file.read().strip()


def sha256(file):
    return hashlib.sha256(file.read_bytes()).hexdigest() if file.exists() else "none"


@contextmanager
def crowd_of(count, program=WORKLOADS):
    """As many processes as that, of which the program is one. All that were started end with its input."""
    with subprocess.Popen(["wine", program, "crowd", str(count)], stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE) as process:
        there = int(process.stdout.readline() or 0)
        if there < max(count, 1):
            sys.exit(f"measure.py: {there} processes run where there should be {count}")
        yield


def temporary_folder():
    """In memory where there is room for it: a disk has other users and moments of its own. Second, where it is."""
    memory = Path("/dev/shm")
    roomy = memory.is_dir() and shutil.disk_usage(memory).free > ROOM
    folder = Path(tempfile.mkdtemp(prefix="vellumkit-bench-", dir=memory if roomy else None))
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    return folder, "in memory" if roomy else "on the disk"


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


def milliseconds_run(process):
    try:
        return int((process / "schedstat").read_text().split()[0]) / 1e6
    except FileNotFoundError:  # a kernel without it knows hundredths of a second
        user, system = (process / "stat").read_text().rpartition(")")[2].split()[11:13]
        return (int(user) + int(system)) * 1e3 / os.sysconf("SC_CLK_TCK")


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
        self.temporary, place = temporary_folder()
        (folder / "place.txt").write_text(place + "\n")
        self.windows_temporary = output_of("winepath", "-w", self.temporary)
        for name in ("TEMP", "TMP"):
            succeed(["wine", "reg", "add", r"HKCU\Environment", "/v", name, "/d", self.windows_temporary, "/f"])
        self.installer = Installer("installer", INSTALLER, ("/config", "{}"), "Vellumkit_Install.log")
        self.peer = Installer("peer", peer, ("/S", "/config={}"), "Vellumkit_Peer.log")
        self.extracted = self.temporary / "Vellumkit/Vellumkit Installer.exe"
        self.called = self.temporary / "Vellumkit_Elev.log"
        self.logo_colour = commonest_colour("resources/logo.png")
        self.results = (folder / "results.tsv").open("w")
        for name, code in (("succeeds", 0), ("fails", 5)):
            (self.temporary / f"{name}.ini").write_text(f"[ElevatedInstaller]\r\nExitCode={code}\r\n")

    def configuration(self, name):
        return f"{self.windows_temporary}\\{name}.ini"

    def note(self, measure, side, pair, value):
        if value <= 0:
            sys.exit(f"measure.py: {value} can't be the '{measure}' of '{side}'")
        print(measure, side, pair, f"{value:.10g}", sep="\t", file=self.results, flush=True)

    def alternate(self, measure_once, *sides):
        """Measures each side as often as there are pairs. They take turns in going first, and the first pair is thrown
        away."""
        for pair in range(-1, self.pairs):
            if sys.stdout.isatty():
                print(f"\r  pair {pair + 1} of {self.pairs} ", end="", flush=True)
            first = pair % len(sides)
            for side in (*sides[first:], *sides[:first]):
                for measure, value in measure_once(side):
                    if pair >= 0:
                        self.note(measure, getattr(side, "side", side), pair, value)
        if sys.stdout.isatty():
            print("\r\033[K", end="", flush=True)

    # That both do the same.

    def prepare(self):
        """The machine as each pass finds it: settings to be repaired, nothing extracted."""
        succeed(["wine", "reg", "import", ROOT / "bench/settings.reg"])
        for file in (self.extracted, self.called):
            file.unlink(missing_ok=True)

    def effects(self, installer):
        """What a pass has changed: the user's settings, the payload and how it was called, and how the pass ended."""
        self.prepare()
        run = Run(installer.unattended_pass(self.configuration("succeeds")))
        exported = self.temporary / "settings.reg"
        succeed(["wine", "reg", "export", r"HKCU\Software", exported, "/y"])
        settings = exported.read_text("utf-16")
        log = self.temporary / installer.log
        return {
            "exit code": run.code,
            "waits for the payload": run.seconds > SPECIFIED_WAIT,
            "settings": settings,
            "repairs the settings": re.search("DisabledItems|DisableAllAddins|LoadBehavior", settings) is None
            and '"SecureProtocols"=dword:00000aa0' in settings,
            "payload": sha256(self.extracted),
            "payload's command line": re.findall("Command line: (.*)", self.called.read_text("utf-16"))
            if self.called.exists() else "none",
            "log in UTF-16": log.exists() and log.read_bytes().startswith(b"\xff\xfe"),
            "exit code after a payload that failed": Run(installer.unattended_pass(self.configuration("fails"))).code,
            "waits for OneNote": self.waits_for(installer, "onenote.exe"),
            "waits for Datebookery": self.waits_for(installer, "datebk.exe"),
        }

    def waits_for(self, installer, name):
        """Whether nothing is extracted as long as a process of that name runs, and all goes well afterwards."""
        program = self.folder / name
        shutil.copyfile(WORKLOADS, program)
        self.prepare()
        with crowd_of(0, program):
            started = subprocess.Popen(installer.unattended_pass(self.configuration("succeeds")))
            time.sleep(2.5)  # more than a pass takes
            waits = started.poll() is None and not self.extracted.exists()
        return waits and started.wait(PATIENCE) == 0 and self.extracted.exists()

    def refuse_unequal(self):
        mine, theirs = self.effects(self.installer), self.effects(self.peer)
        expected = {
            "exit code": 0,
            "waits for the payload": True,
            "repairs the settings": True,
            "payload": sha256(PAYLOAD),
            "log in UTF-16": True,
            "exit code after a payload that failed": 1,
            "waits for OneNote": True,
            "waits for Datebookery": True,
        }
        wrong = [name for name in expected if mine[name] != expected[name]]
        if wrong:
            sys.exit("measure.py: the installer does not do what it should: " + ", ".join(wrong))
        different = [name for name in mine if mine[name] != theirs[name]]
        for name in different:
            print(f"{name}: {str(mine[name])[:300]!r} is the installer's, {str(theirs[name])[:300]!r} the peer's",
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

    def measured_pass(self, installer):
        run = succeed(installer.unattended_pass(self.configuration("succeeds")))
        if run.peak_megabytes <= Run(["true"]).peak_megabytes:
            sys.exit("measure.py: the peak memory may be that of this program before it became another one")
        return run

    def passes(self, name, *installers):
        server = server_process()

        def measure_once(installer):
            self.prepare()
            before = milliseconds_run(server)
            run = self.measured_pass(installer)
            yield f"{name}-cpu", run.cpu_seconds * 1e3
            yield f"{name}-server", milliseconds_run(server) - before
            yield f"{name}-wall", (run.seconds - SPECIFIED_WAIT) * 1e3
            yield f"{name}-memory", run.peak_megabytes

        self.alternate(measure_once, *installers)

    def measure_pass(self):
        self.passes("pass", self.installer, self.peer)

    def with_payload(self, installer, megabytes):
        return replace(installer, program=self.folder / f"{installer.side}-{megabytes}.exe")

    def measure_payload(self):
        small, *_, large = SIZES
        self.passes("large", *(self.with_payload(installer, large) for installer in (self.installer, self.peer)))

        def measure_memory(side):
            megabytes, mapped = (large, 0) if side == "installer" else (small, large)
            self.prepare()
            run = self.measured_pass(self.with_payload(self.installer, megabytes))
            yield "mapped-memory", run.peak_megabytes + mapped

        self.alternate(measure_memory, "installer", MAPPED)

    def workload(self, *arguments):
        """The times that it prints."""
        return map(float, output_of("wine", WORKLOADS, *arguments).split())

    def peer_workload(self, argument, program="peer-workloads.exe"):
        file = self.temporary / "workloads.txt"
        file.unlink(missing_ok=True)
        succeed(["wine", self.folder / program, "/S", argument])
        ticks, frequency = map(int, file.read_text().split())
        return 1e3 * ticks / frequency

    def measure_extraction(self):
        file = self.temporary / "extracted.bin"

        def measure_once(side, size):
            for written in (file, self.extracted):
                written.unlink(missing_ok=True)
            if side == "peer":
                yield f"extraction-{size}", self.peer_workload("/extract", f"peer-workloads-{size}.exe")
            elif side == ONE_WRITE:
                yield f"write-{size}", *self.workload("single-write", f"{self.windows_temporary}\\{file.name}", size)
            else:
                extraction, comparison = self.workload("extract", self.folder / f"installer-{size}.exe")
                yield f"extraction-{size}", extraction
                yield f"write-{size}", extraction
                yield f"comparison-{size}", comparison

        for size in SIZES:
            self.alternate(functools.partial(measure_once, size=size), "installer", "peer", ONE_WRITE)

    def alternate_work(self, measure, *arguments, peer=None):
        def measure_once(side):
            yield measure, *([self.peer_workload(peer)] if side == "peer" else self.workload(*arguments))

        self.alternate(measure_once, "installer", *["peer"] * (peer is not None))

    def measure_log(self):
        self.alternate_work("log", "log", 10_000, peer="/log=10000")

    def measure_report(self):
        def remove_neighbours():  # also those that an interrupted run has left
            succeed(["wine", WORKLOADS, "remove-neighbours", NEIGHBOURS])

        remove_neighbours()
        succeed(["wine", OFFICE, MACHINES / "office-64-bit.ini"])
        try:
            self.alternate_work("report-0", "report")
            succeed(["wine", WORKLOADS, "add-neighbours", NEIGHBOURS])
            self.alternate_work("report-5000", "report")
        finally:
            remove_neighbours()
            succeed(["wine", OFFICE, MACHINES / "no-office.ini"])

    def measure_processes(self):
        for count in (1, 100, 1000):
            with crowd_of(count):
                self.alternate_work(f"find-{count}", "find", peer="/find")

    def measure_counts(self):
        """Each two times, which shows what noise moves them."""
        trace = self.folder / "trace.txt"
        for pair in range(2):
            for installer in (self.installer, self.peer):
                for measure, count in self.counts_of(installer, trace):
                    self.note(measure, installer.side, pair, count)
        trace.unlink()

    def counts_of(self, installer, trace):
        command = installer.unattended_pass(self.configuration("succeeds"))
        self.prepare()
        succeed(command, trace=trace, WINEDEBUG="-all,+pid,+loaddll,+reg")
        lines = lines_of(installer, trace)
        yield "libraries", libraries_in(lines)
        yield "keys", sum(re.search(r":Nt(Open|Create)Key(Ex)? \(", line) is not None for line in lines)
        yield "log-bytes", (self.temporary / installer.log).stat().st_size
        self.prepare()
        succeed(self.pass_with_window(installer), trace=trace, WINEDEBUG="-all,+pid,+loaddll")
        yield "window-libraries", libraries_in(lines_of(installer, trace))
        self.prepare()
        succeed(["strace", "-f", "-y", "-qq", "-e", "signal=none", "-o", trace, *command])
        calls = calls_of_first_process(trace)
        yield "calls", len(calls)
        write = re.compile(rf"p?write\w*\(\d+<[^>]*/{installer.log}>")
        yield "log-writes", sum(write.match(call) is not None for call in calls)


def lines_of(installer, trace):
    """The lines of Wine's trace that the installer's process has written. They begin with the process."""
    lines = trace.read_text(errors="replace").splitlines()
    process = next((line.split(":")[0] for line in lines
                    if re.search(rf'Loaded L".*\\{re.escape(installer.program.name)}"', line)), None)
    if process is None:
        sys.exit(f"measure.py: Wine's trace does not tell that {installer.program.name} was loaded")
    return [line for line in lines if line.startswith(process + ":")]


def libraries_in(lines):
    """All that is loaded but the program itself, each once."""
    loaded = re.findall(r'Loaded L"([^"]*)"', "\n".join(lines))
    return len({name.lower() for name in loaded}) - 1


def calls_of_first_process(trace):
    """The system calls of all threads of the process that the command became, from the last program on that it became:
    Debian's "wine" is a script. Its children are others."""
    creator, begun, calls, first = {}, {}, [], None
    with trace.open(errors="replace") as lines:
        for line in lines:
            thread, _, call = line.rstrip("\n").partition(" ")
            call = call.lstrip()
            first = first or thread
            if call.startswith("<... "):
                call = begun.pop(thread, "") + call
            elif not call.startswith(("+++", "---")):
                calls.append((thread, call))
            if call.endswith("<unfinished ...>"):
                begun[thread] = call
            elif thread == first and call.startswith("execve(") and call.endswith(" = 0"):
                calls = calls[-1:]
            elif "CLONE_THREAD" in call:
                creator[call.rpartition("= ")[2]] = thread

    def is_of_first(thread):  # which may have made calls before its creator was told of it
        while thread in creator:
            thread = creator[thread]
        return thread == first

    return [call for thread, call in calls if is_of_first(thread)]


def main():
    folder, peer, pairs, *groups = sys.argv[1:]
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit("measure.py: was ended"))
    if "counts" in groups and subprocess.run(["strace", "-qq", "-o", "/dev/null", "true"]).returncode != 0:
        sys.exit("measure.py: strace can't trace here, which the group 'counts' needs")
    bench = Bench(Path(folder).resolve(), Path(peer).resolve(), int(pairs))
    bench.refuse_unequal()
    for group in dict.fromkeys(measure.group for measure in MEASURES):
        if group not in groups:
            continue
        titles = dict.fromkeys(measure.title for measure in MEASURES if measure.group == group)
        print(f"{group}:", ", ".join(titles), flush=True)
        getattr(bench, f"measure_{group}")()


if __name__ == "__main__":
    main()
