#pragma once

#include <windows.h>

#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

/// What a call returns instead of being made, and the last-error value that it leaves.
struct Answer {
    ULONG_PTR value = 0;
    DWORD error = ERROR_SUCCESS;
};

/// Sees a call's first four arguments before the call is made, and may answer it instead.
using Interception = std::function<std::optional<Answer>(const std::array<ULONG_PTR, 4>& arguments)>;

/// By the names of the functions.
using Interceptions = std::map<std::string, Interception>;

/// Answers every call.
inline Interception Answering(Answer answer) {
    return [answer](const auto& /*arguments*/) { return answer; };
}

/// Does something before every call, which is then made.
inline Interception Before(std::function<void()> action) {
    return [action = std::move(action)](const auto& /*arguments*/) {
        action();
        return std::optional<Answer>();
    };
}

/// Called by an interception: this call is the last one, and the program runs on without a debugger. Under one, Wine 8
/// loses a register (rbp) on the way from where an exception is thrown to where it is caught.
void InterceptNoMore();

/// Runs a program, as `Program` does, with this process as its debugger, and returns its exit code. Its calls of the
/// imported functions that are named are intercepted; the whole program stands still meanwhile. Library functions
/// that it finds by itself are not seen. A test failure when it does not import a function.
DWORD RunIntercepted(const std::filesystem::path& file, const std::wstring& arguments,
                     const std::filesystem::path& temporaryFolder, const Interceptions& interceptions);
