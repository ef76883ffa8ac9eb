#pragma once

#include "support/Findings.h"

#include <string>
#include <string_view>

/// Gathers what the report at the head of a log says of the machine: OneNote, Office's ribbon, and what both need of
/// Windows.
class MachineReading {
public:
    /// An entry of the report, in a block of that title: null before the first one. They come one after the other.
    void Take(const LogRule& rule, const LogRule* title, std::wstring_view text);

    /// OneNote or Office is a 32-bit one, so that a user is asked.
    bool Is32Bit() const { return is32Bit_; }

    /// The report may be over with an entry of its last block, although a further one is not on disk.
    bool EndsWith(Says last) const;

    /// Hands over what was found. Of a report that is not whole nothing is said to be missing.
    void Tell(bool isWhole, Findings& findings) const;

private:
    void TakeValue(std::wstring_view text);
    Registration* Reported(const LogRule* title);

    Registration oneNote_;
    Registration office_;
    std::wstring oneNoteVersion_;
    std::wstring officeVersion_;
    bool is32Bit_ = false;
    bool proxyIsMissing_ = false;
    /// The block is about the type library of Office that counts.
    bool isOfficeBlock_ = false;
    /// Paths of the block for which no line has come that tells of a file.
    int files_ = 0;
    /// The entry is the last value of a type library.
    bool isLastValue_ = false;
};
