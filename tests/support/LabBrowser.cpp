#include "tests/support/LabBrowser.h"

#include "tests/support/LabPrograms.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t CommandKey[] = L"https\\shell\\open\\command";

void SetCommand(const std::wstring& command) {
    RegisterText(CommandKey, nullptr, command);
}

} // namespace

LabBrowser::LabBrowser(std::wstring folder) : folder_(std::move(folder)), kept_(HKEY_CLASSES_ROOT, CommandKey) {
    SetCommand(L'"' + (LabFolder() / "browser.exe").wstring() + L"\" \"%1\"");
}

void LabBrowser::Unregister() {
    KeptKey::Restore(HKEY_CLASSES_ROOT, CommandKey);
}

void LabBrowser::Break() {
    SetCommand(L"\"C:\\no such folder\\browser.exe\" \"%1\"");
}

void LabBrowser::ExpectOpened(const Entries& addresses) const {
    // Whoever opens an address has started the browser's process when it goes on.
    WaitUntil("the end of the browser", [] { return ProcessesNamed(L"browser.exe").empty(); });
    Entries quoted;
    for (const std::wstring& address : addresses)
        quoted.push_back(L'"' + address + L'"');
    EXPECT_EQ(ReadLines(folder_ + L"browser.log"), quoted);
}
