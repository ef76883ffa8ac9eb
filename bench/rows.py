"""What is measured: the rows of the table, in their order."""

from dataclasses import dataclass

NSIS = "NSIS"
ONE_WRITE = "one write"
MAPPED = "1 MB + 256 MB"


@dataclass(frozen=True)
class Measure:
    group: str
    name: str
    title: str
    unit: str
    # What the installer is compared with; None where there is nothing of the kind.
    against: str | None = NSIS


SIZES = (1, 16, 64, 256)

MEASURES = (
    Measure("size", "size", "Executable beyond its payload", "bytes"),
    Measure("window", "visible", "First window visible", "ms"),
    Measure("window", "painted", "First window painted", "ms"),
    Measure("pass", "pass-cpu", "Unattended pass: CPU time", "ms"),
    Measure("pass", "pass-server", "Unattended pass: CPU time of Wine's server", "ms"),
    Measure("pass", "pass-wall", "Unattended pass: time beyond the specified second", "ms"),
    Measure("pass", "pass-memory", "Unattended pass: peak memory", "MB"),
    Measure("payload", "large-cpu", "Pass with 256 MB: CPU time", "ms"),
    Measure("payload", "large-server", "Pass with 256 MB: CPU time of Wine's server", "ms"),
    Measure("payload", "large-wall", "Pass with 256 MB: time beyond the specified second", "ms"),
    Measure("payload", "large-memory", "Pass with 256 MB: peak memory", "MB"),
    Measure("payload", "mapped-memory", "Pass with 256 MB: peak memory", "MB", MAPPED),
    *(Measure("extraction", f"extraction-{size}", f"Extraction of {size} MB", "ms") for size in SIZES),
    *(Measure("extraction", f"write-{size}", f"Extraction of {size} MB", "ms", ONE_WRITE) for size in SIZES),
    *(Measure("extraction", f"comparison-{size}", f"Comparison of {size} MB written", "ms", None) for size in SIZES),
    Measure("log", "log", "10,000 entries of the log", "ms"),
    Measure("report", "report-0", "Report of registrations", "ms", None),
    Measure("report", "report-5000", "Report of registrations, 5,000 keys beside each", "ms", None),
    Measure("processes", "find-1", "Search for OneNote among Windows' own processes", "ms"),
    Measure("processes", "find-100", "Search for OneNote among 100 processes", "ms"),
    Measure("processes", "find-1000", "Search for OneNote among 1,000 processes", "ms"),
    Measure("counts", "libraries", "Unattended pass: libraries loaded", ""),
    Measure("counts", "window-libraries", "Pass with a window: libraries loaded", ""),
    Measure("counts", "keys", "Unattended pass: registry keys opened", ""),
    Measure("counts", "log-bytes", "Unattended pass: bytes of the log", ""),
    Measure("counts", "log-writes", "Unattended pass: writes to the log", ""),
    Measure("counts", "calls", "Unattended pass: system calls", ""),
)
