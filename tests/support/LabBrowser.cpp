#include "tests/support/LabBrowser.h"

#include "tests/support/LabPrograms.h"

#include <array>
#include <gtest/gtest.h>

namespace {

constexpr wchar_t CommandKey[] = L"https\\shell\\open\\command";

void SetCommand(const std::wstring& command) {
    const auto size = static_cast<DWORD>((command.size() + 1) * sizeof(wchar_t));
    EXPECT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, CommandKey, nullptr, REG_SZ, command.c_str(), size), ERROR_SUCCESS);
}

std::wstring Command() {
    std::array<wchar_t, 1024> command{};
    DWORD size = sizeof command;
    EXPECT_EQ(
        RegGetValueW(HKEY_CLASSES_ROOT, CommandKey, nullptr, RRF_RT_ANY | RRF_NOEXPAND, nullptr, command.data(), &size),
        ERROR_SUCCESS);
    return command.data();
}

} // namespace

LabBrowser::LabBrowser(std::wstring folder) : folder_(std::move(folder)), formerCommand_(Command()) {
    SetCommand(L'"' + (LabFolder() / "browser.exe").wstring() + L"\" \"%1\"");
}

LabBrowser::~LabBrowser() {
    SetCommand(formerCommand_);
}

void LabBrowser::Break() {
    SetCommand(L"\"C:\\no such folder\\browser.exe\" \"%1\"");
}

void LabBrowser::ExpectOpened(const Entries& addresses) const {
    Entries quoted;
    for (const std::wstring& address : addresses)
        quoted.push_back(L'"' + address + L'"');
    ExpectLines(folder_ + L"browser.log", quoted);
}
