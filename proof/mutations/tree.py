"""A copy of the sources in which one thing at a time is changed, built and tested."""

import hashlib
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import threading
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PLACE = ROOT / "out/proof/mutations"

# A change can let a program run wild. It must not take the machine's memory and disk: what a test needs is a fraction.
LARGEST_DATA = 4 << 30
LARGEST_FILE = 1 << 30

# A test program counts for eight (see tests/CMakeLists.txt). More of them at once, beside the builds of the other trees,
# would run into their time-outs.
TESTS_AT_ONCE = 2
TESTING = threading.Lock()

# Without the tests that wait for real, those of scripts, sources and a second build, and what has run before.
REST = ["--exclude-regex",
        r"Wait|OfAnotherVersion|^Lab\.|^Build\.|^Release\.|^Bench\.|^Sources\.|^Artwork\.|"
        r"^UnitTests$|^WindowTestsAt96Dpi$"]



def rest(reach):
    """The arguments of ctest for what runs behind the unit and window tests."""
    return [] if reach == "thorough" else REST


class Broken(Exception):
    """The sources as they are don't pass their tests: no change can be judged."""


def sources():
    """Everything that the build and the tests read."""
    for folder, names, files in os.walk(ROOT):
        if Path(folder) == ROOT:
            names[:] = [name for name in names if name not in ("out", ".git")]
        yield from (Path(folder, file).relative_to(ROOT) for file in files if not file.endswith(".pyc"))


def fingerprint(patterns):
    """One for what these files say."""
    total = hashlib.sha1()
    for path in sorted(sources()):
        if any(path.match(pattern) or str(path).startswith(pattern) for pattern in patterns):
            total.update(f"{path}\0".encode() + (ROOT / path).read_bytes())
    return total.hexdigest()[:16]


def limit():
    resource.setrlimit(resource.RLIMIT_DATA, (LARGEST_DATA, LARGEST_DATA))
    resource.setrlimit(resource.RLIMIT_FSIZE, (LARGEST_FILE, LARGEST_FILE))


class Tree:
    def __init__(self, number):
        self.place = PLACE / f"tree-{number}"
        self.build = self.place / "out/release"
        self.scratch = PLACE / f"scratch-{number}"
        self.log = PLACE / f"tree-{number}.log"
        self.environment = os.environ | {"VELLUMKIT_PREFIX": "mutations"}
        self.checked = set()
        self.durations = {}

    # The copy

    def prepare(self):
        self.place.mkdir(parents=True, exist_ok=True)
        wanted = set(sources())
        for path in wanted:
            self._copy(path)
        for folder, names, files in os.walk(self.place):
            names[:] = [name for name in names if Path(folder, name) != self.place / "out"]
            for path in (Path(folder, file) for file in files):
                if path.relative_to(self.place) not in wanted:
                    path.unlink()
        if not (self.build / "build.ninja").exists():
            self._need(["cmake", "--preset", "release"])
        self._need(["cmake", "--build", "--preset", "release", "--target", "unit-tests", "window-tests"])

    def _copy(self, path):
        target = self.place / path
        if not target.exists() or target.read_bytes() != (ROOT / path).read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / path, target)

    def _need(self, command):
        if self._run(command, 3600) != 0:
            raise Broken(f"{shlex.join(command)} fails; see {self.log}")

    # Judging a change

    def judge(self, change, reach):
        """What comes of it, and what noticed it. `reach` is one of "quick", "usual" and "thorough"."""
        self._check_near(change.path)
        file = self.place / change.path
        text = file.read_text()  # not that of the sources, which may have changed meanwhile
        file.write_text(change.apply(text))
        try:
            return self._judge_changed(change.path, reach)
        finally:
            file.write_text(text)

    def _judge_changed(self, path, reach):
        for program, tests in near_tests(path).items():
            if self.durations[program, path] is None:
                continue
            if not self._link_near(program, tests):
                return "does not compile", ""
            noticed = self._red(self.build / "tests/near.exe", self.durations[program, path])
            if noticed:
                return noticed
        for program in ("unit-tests", "window-tests"):
            if not self._builds(["ninja", program]):
                return "does not compile", ""
            noticed = self._red(self.build / f"tests/{program}.exe", 60)
            if noticed:
                return noticed
        if reach == "quick":
            return "survived", ""
        if not self._builds(["ninja"]):
            return "does not compile", ""
        return self._rest_is_red(rest(reach)) or ("survived", "")

    def check(self, reach):
        """That the unchanged sources pass what judges a change when nothing near it has."""
        for program in ("unit-tests", "window-tests"):
            noticed = self._red(self.build / f"tests/{program}.exe", 60)
            if noticed:
                raise Broken(f"without a change, {program} fails: {noticed}; see {self.log}")
        if reach == "quick":
            return
        self._need(["cmake", "--build", "--preset", "release"])
        noticed = self._rest_is_red(rest(reach))
        if noticed:
            raise Broken(f"without a change, ctest fails: {noticed}; see {self.log}")

    def _check_near(self, path):
        """Whether the tests nearest to a file pass alone, and how long they take. Some replace a function that only
        others import."""
        for program, tests in near_tests(path).items():
            if (program, path) in self.durations:
                continue
            if not self._link_near(program, tests):
                raise Broken(f"the tests of {path} don't build; see {self.log}")
            begin = time.monotonic()
            passed = not self._red(self.build / "tests/near.exe", 60)
            self.durations[program, path] = time.monotonic() - begin if passed else None

    # Building

    def _link_near(self, program, tests):
        """A program of these tests alone, since linking all of them takes longer than to compile the change."""
        kept = {f"tests/CMakeFiles/{program}.dir/{test}.obj" for test in tests}
        query = self._output(["ninja", "-t", "query", f"tests/{program}.exe"])
        inputs = re.findall(r"^    \|* ?(\S+)$", query.split("  outputs:")[0], re.MULTILINE)
        others = {name for name in inputs if re.search(r"\.dir/\w+/\w+Test\.cpp\.obj$", name)} - kept
        if not self._builds(["ninja", *(name for name in inputs if name not in others)]):
            return False
        link = self._output(["ninja", "-t", "commands", f"tests/{program}.exe"]).splitlines()[-1]
        words = [word for word in shlex.split(link)[2:-2]
                 if word not in others and not word.startswith("-Wl,--out-implib")]
        words[words.index("-o") + 1] = "tests/near.exe"
        return self._builds(words)

    def _builds(self, command):
        result = self._run(command, 1800, self.build)
        if result is None:
            raise Broken(f"{command[0]} does not end; see {self.log}")
        return result == 0

    def _output(self, command):
        return subprocess.run(command, cwd=self.build, capture_output=True, text=True, check=True).stdout

    # Running

    def _red(self, program, seconds):
        """What fails in a test program, twice: once may be chance. Nothing when it passes."""
        output = self.scratch / "output.txt"
        for _ in range(2):
            shutil.rmtree(self.scratch, ignore_errors=True)
            self.scratch.mkdir()
            result = self._on_display([program, "--gtest_fail_fast", "--gtest_filter=-*zh*:*RealWait*"],
                                      240 + 10 * seconds, output)
            self._renew_prefix(result == 0)
            if result == 0:
                return None
        text = output.read_text(errors="replace")
        if program.name == "near.exe" and "does not import" in text:  # the whole program may
            return None
        failed = re.search(r"\[  FAILED  \] ([\w/.]+)|^(\S+ hangs)|\[ RUN      \] (\S+)\s*\Z", text, re.MULTILINE)
        if failed is None and self._on_display(["cmd", "/c", "exit", "0"], 600) != 0:
            raise Broken(f"no program runs in {self.place}; see {self.log}")
        name = next(filter(None, failed.groups())) if failed else f"{program.name} ({result})"
        return ("killed", name) if result is not None else ("killed by time-out", name)

    def _on_display(self, program, seconds, output=None):
        machine = self.place / "lab/machine.sh"
        return self._run([machine, "display", machine, "wine", *program], seconds, self.scratch, output)

    def _renew_prefix(self, passed):
        """What a changed program did to registry and files must not stay. The first to pass is an unchanged one."""
        prefix = self.place / "out/wine/mutations"
        kept = PLACE / f"registry-of-{self.place.name}"
        if passed and not kept.exists():
            kept.mkdir()
            for file in prefix.glob("*.reg"):
                shutil.copy(file, kept)
        elif kept.exists():
            for file in kept.iterdir():
                shutil.copy(file, prefix)
            for folder in prefix.glob("drive_c/users/*/Temp"):
                shutil.rmtree(folder)
                folder.mkdir()

    def _rest_is_red(self, arguments):
        failed_before = []
        for again in (["--stop-on-failure"], ["--rerun-failed"]):
            output = self.scratch / "output.txt"
            command = ["ctest", "--preset", "release", "--parallel", str(8 * TESTS_AT_ONCE), *arguments, *again]
            with TESTING:
                result = self._run(command, 3600, self.place, output)
            if result == 0:
                return None
            failed_before = re.findall(r"\d+ - (\S+) \(", output.read_text(errors="replace")) or failed_before
            for made in (self.place / "out/wine").glob("*.made"):
                if made.stem != "base":
                    made.unlink()  # made anew: what a changed program did there must not stay
        return ("killed" if result is not None else "killed by time-out"), ", ".join(failed_before) or "ctest"

    def _run(self, command, seconds, folder=None, output=None):
        """The exit code; none after the time-out, when everything that it started has been ended."""
        with open(self.log, "a") as log, open(output or os.devnull, "w") as file:
            print(f"\n$ {shlex.join(map(str, command))}", file=log, flush=True)
            process = subprocess.Popen(command, cwd=folder or self.place, env=self.environment, preexec_fn=limit,
                                       stdin=subprocess.DEVNULL, stdout=file if output else log,
                                       stderr=subprocess.STDOUT, start_new_session=True)
            try:
                return process.wait(timeout=seconds)
            except subprocess.TimeoutExpired:
                return None
            finally:
                self._end(process)

    def _end(self, process):
        if process.poll() is not None:
            return
        subprocess.run([self.place / "lab/machine.sh", "stop"], env=self.environment, capture_output=True, timeout=60)
        try:
            process.wait(timeout=20)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


# The tests nearest to a source

def near_tests(path):
    """For each test program the files of its tests that stand for this source: those that its name names, or else that
    include its header, directly or through one other header."""
    header = re.sub(r"\.(cpp|h\.in)$", ".h", path)
    files = {str(file.relative_to(ROOT / "tests")): file.read_text() for file in (ROOT / "tests").glob("*/*Test.cpp")}
    name = Path(header).stem
    if path.startswith("core/languages/"):
        name = "LocalizedStrings"
    near = [file for file in files if Path(file).stem == f"{name}Test"]
    near = near or [file for file, text in files.items() if f'"{header}"' in text]
    programs = test_programs()
    found = {}
    for file in sorted(near):
        program = next((program for program, listed in programs.items() if file in listed), None)
        if program is not None:
            found.setdefault(program, []).append(file)
    return found


def test_programs():
    text = (ROOT / "tests/CMakeLists.txt").read_text()
    return {program: re.findall(r"\w+/\w+\.cpp", body)
            for program, body in re.findall(r"add_executable\(([\w-]+)(.*?)\)", text, re.DOTALL)}
