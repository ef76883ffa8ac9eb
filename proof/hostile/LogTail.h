#pragma once

#include "proof/hostile/Rules.h"

#include <ctime>
#include <fstream>
#include <string>

/// What this process writes to its log from the object's construction on.
class LogTail {
public:
    LogTail();

    /// What was written since the last question.
    std::wstring Next();

    /// A test failure unless exactly these entries were written since the last question, each with the time of now.
    void Expect(const Rules::Entries& entries);

private:
    std::ifstream file_;
    std::streamoff place_ = 0;
    std::time_t last_;
};
