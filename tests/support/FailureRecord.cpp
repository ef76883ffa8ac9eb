#include "tests/support/FailureRecord.h"

#include "lab/gallery/ScreenPicture.h"

#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

/// Not every test program has started GDI+.
void SaveWholeScreen(const fs::path& file) {
    ULONG_PTR token = 0;
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok)
        return;
    SaveScreen({0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}, file.wstring());
    Gdiplus::GdiplusShutdown(token);
}

void SaveLog(const fs::path& file) {
    std::error_code ignored;
    fs::recursive_directory_iterator entry(fs::temp_directory_path(), ignored);
    for (; !ignored && entry != fs::recursive_directory_iterator(); entry.increment(ignored))
        if (entry->path().filename() == "Vellumkit_Install.log")
            fs::copy_file(entry->path(), file, fs::copy_options::overwrite_existing, ignored);
}

class Listener : public testing::EmptyTestEventListener {
public:
    explicit Listener(fs::path folder) : folder_(std::move(folder)) {}

private:
    void OnTestPartResult(const testing::TestPartResult& result) override {
        const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
        if (!result.failed() || test == nullptr)
            return;
        std::string name = std::string(test->test_suite_name()) + '.' + test->name();
        std::ranges::replace(name, '/', '_');
        if (fs::exists(folder_ / (name + ".png")))
            return;
        SaveWholeScreen(folder_ / (name + ".png"));
        SaveLog(folder_ / (name + ".log"));
    }

    fs::path folder_;
};

} // namespace

void RecordFailures() {
    std::array<wchar_t, MAX_PATH> folder{};
    const DWORD length =
        GetEnvironmentVariableW(L"VELLUMKIT_RESULTS", folder.data(), static_cast<DWORD>(folder.size()));
    if (length != 0 && length < folder.size())
        testing::UnitTest::GetInstance()->listeners().Append(new Listener(folder.data())); // owned by the list
}
