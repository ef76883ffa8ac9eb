#pragma once

/// Reads the options from the command line, which is without the program's name: "/config" <path> sets `ConfigPath`,
/// "/delay" sets `DelayOption`, both to the letter and case-sensitive. The last element is never an option, so a
/// "/delay" at the end has no effect; the argument of "/config" is itself examined; the last "/config" wins.
/// Throws a `_com_error` when Windows can't split the text, which takes memory: taken for one without options, it would
/// open a window in an installation that shall have none. Main thread, at start-up.
void ReadCommandLine(const wchar_t* commandLine);
