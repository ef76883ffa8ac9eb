#include "tests/support/LabOffice.h"

#include "tests/support/LabPrograms.h"

#include <gtest/gtest.h>

namespace {

void Write(const std::wstring& machine) {
    const std::wstring description = LabFolder() / L"office" / (machine + L".ini");
    EXPECT_EQ(Program(LabFolder() / "office.exe", L'"' + description + L'"').ExitCode(), 0U);
}

} // namespace

LabOffice::LabOffice(const std::wstring& machine) {
    Write(machine);
}

void LabOffice::Remove() {
    Write(L"no-office");
}
