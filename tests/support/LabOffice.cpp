#include "tests/support/LabOffice.h"

#include "tests/support/LabPrograms.h"
#include "tests/support/Registry.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

/// There while the registry holds what this program wrote.
constexpr wchar_t Mark[] = L"VellumkitLabOffice";

bool Write(const std::wstring& machine) {
    const std::wstring description = LabFolder() / L"machines" / (machine + L".ini");
    return Program(LabFolder() / "office.exe", L'"' + description + L'"').ExitCode() == 0;
}

} // namespace

LabOffice::LabOffice(const std::wstring& machine) {
    EXPECT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, Mark, nullptr, REG_SZ, nullptr, 0), ERROR_SUCCESS);
    if (!Write(machine)) {
        Remove();
        throw std::runtime_error("cannot register Office");
    }
}

LabOffice::~LabOffice() {
    Remove();
}

void LabOffice::Remove() {
    if (!KeyExists(Mark, HKEY_CLASSES_ROOT))
        return;
    const bool removed = Write(L"no-office");
    EXPECT_TRUE(removed);
    if (removed)
        RegDeleteKeyW(HKEY_CLASSES_ROOT, Mark);
}
