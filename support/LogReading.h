#pragma once

#include "support/EntryOrder.h"
#include "support/Findings.h"
#include "support/LogParser.h"
#include "support/MachineReading.h"

#include <chrono>
#include <string>
#include <string_view>

/// Gathers what the entries of one log say. What it keeps does not grow with their number. Throws only when there is no
/// memory left.
class LogReading {
public:
    /// The entries come one after the other.
    void Take(const LogEntry& entry);

    /// What they have said. `isEmpty`: there was nothing in the file, or the beginning of a first entry.
    Findings Finish(bool isEmpty);

private:
    bool IsMixedUp(const LogEntry& entry) const;
    bool TakeOne(const LogEntry& entry);
    void BeginRun(const LogRule& rule, const LogEntry& entry);
    void BeginPass();
    void ForgetPasses();
    void GoBack(Says says);
    void PassTime(const LogRule& rule, std::chrono::local_seconds time);
    void Act(const LogRule& rule, const std::wstring& text);
    void TakeRepair(Says says);
    void TakeFailure(const LogRule* behind, const std::wstring& text);
    void Note(std::wstring text);
    void NoteOneNoteError(const wchar_t* what, std::wstring_view text);
    RunStep StepBehindTheReport() const;
    Verdict FindVerdict(bool isEmpty) const;
    void NoteTheFile();

    EntryOrder order_;
    MachineReading machine_;
    Findings findings_;
    /// The last entry that was believed, and its time.
    const LogRule* last_ = nullptr;
    bool lastIsWhole_ = false;
    std::chrono::local_seconds lastTime_{};
    /// How many unknown entries had come before it.
    std::size_t unknownSoFar_ = 0;
    /// The first entry is cut off.
    bool isAtItsBeginning_ = false;
    int runs_ = 0;
    bool beginningIsMissing_ = false;
    bool wereInterleaved_ = false;
    bool clockWentBack_ = false;
    bool isComplete_ = false;
    bool hasFailed_ = false;
    std::wstring process_;
    std::wstring deletion_;
};
