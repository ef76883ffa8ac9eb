#pragma once

#include "support/EntryOrder.h"
#include "support/Findings.h"
#include "support/LogParser.h"

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
    void TakeValue(std::wstring_view text);
    void TakeRepair(Says says);
    void TakeFailure(const LogRule* behind, const std::wstring& text);
    void TakeBitness(Registration::Bitness bitness);
    void Note(std::wstring text);
    void NoteOneNoteError(const wchar_t* what, std::wstring_view text);
    Registration* Reported();
    bool EndsWithTheReport() const;
    RunStep StepBehindTheReport() const;
    void FindWhatIsNotRegistered();
    Verdict FindVerdict(bool isEmpty) const;
    void NoteTheMachine();
    void NoteTheFile();

    EntryOrder order_;
    Findings findings_;
    /// The last entry that was believed, and its time.
    const LogRule* last_ = nullptr;
    bool lastIsWhole_ = false;
    std::chrono::local_seconds lastTime_{};
    /// How many unknown entries had come before it.
    std::size_t unknownSoFar_ = 0;
    /// It is the last line of a type library's block.
    bool lastValueOfBlock_ = false;
    /// Paths of the block for which no line has come that tells of a file.
    int files_ = 0;
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
    std::wstring oneNoteVersion_;
    std::wstring officeVersion_;
    bool proxyIsMissing_ = false;
};
