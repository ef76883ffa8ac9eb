#include "proof/hostile/LogTail.h"

#include "core/Log.h"
#include "core/TempPath.h"
#include "proof/hostile/HostileText.h"
#include "tests/support/LogText.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>

LogTail::LogTail() : last_(std::time(nullptr)) {
    Log(false).flush(); // opens it
    file_.open(std::filesystem::path(TempPath(L"Vellumkit_Install.log")), std::ios::binary);
    Next();
}

std::wstring LogTail::Next() {
    Log(false).flush();
    file_.seekg(place_); // a file that came to its end does not go on by itself
    const std::string bytes(std::istreambuf_iterator<char>(file_), {});
    place_ += static_cast<std::streamoff>(bytes.size());
    return Utf16(bytes);
}

void LogTail::Expect(const Rules::Entries& entries) {
    constexpr std::wstring_view Break = L"\r\n";
    constexpr std::wstring_view Separator = L" - ";
    const std::wstring log = Next();
    const std::time_t now = std::time(nullptr);
    std::wstring_view left = log;
    const auto take = [&left](std::wstring_view expected) {
        const bool same = left.starts_with(expected);
        left.remove_prefix(same ? expected.size() : 0);
        return same;
    };
    for (const std::wstring& entry : entries) {
        const bool begins = take(Break) && Rules::IsTimestamp(left.substr(0, Rules::TimestampLength), last_, now) &&
                            take(left.substr(0, Rules::TimestampLength)) && take(Separator);
        if (!begins || !take(entry)) {
            ADD_FAILURE() << "Expected in the log: " << Literal(entry) << "\nbut it goes on: " << Literal(left);
            break;
        }
    }
    if (!testing::Test::HasFailure() && !left.empty())
        ADD_FAILURE() << "Nothing more was expected in the log: " << Literal(left);
    last_ = now;
}
