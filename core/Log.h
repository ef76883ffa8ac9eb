#pragma once

#include <ostream>
#include <string>
#include <string_view>

/// The program's log: one text file in the user's temporary folder, UTF-16LE with a byte-order mark, emptied when the
/// first call opens it. The name tells which program of the product runs ("Vellumkit_Install.log" for this one).
///
/// With `withPrefix` a new entry begins: CR LF, the local time in the layout of asctime, " - "; the entry before it is
/// on disk when the call returns. Without it the text that follows continues the current entry.
///
/// `Log(true) << L"Updated to " << 2720;`
///
/// Manipulators work as on every stream, and stay set for later entries of every thread. A file that can't be opened or
/// written changes nothing for the caller: the stream fails for good and swallows what follows. It throws only when
/// there is no memory left.
/// Any thread may write. One insertion is never split, unless `std::setw` pads it; the entries of two threads may
/// interleave.
std::wostream& Log(bool withPrefix);

/// Writes what is pending and closes the file; later texts vanish, also those of a thread that is writing now. A
/// failure only marks the stream as failed. Any thread.
void CloseLog();

/// As the library's own, which would bring along everything that reads texts from streams.
inline std::wostream& operator<<(std::wostream& log, const std::wstring& text) {
    return log << std::wstring_view(text);
}
