#include "tests/support/LabOneNote.h"

#include "core/Unique.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Registry.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/Watchdog.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <sstream>

namespace {

constexpr wchar_t AutomationClass[] = L"CLSID\\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}";

void Run(const std::wstring& arguments) {
    EXPECT_EQ(Program(LabFolder() / "onenote.exe", arguments).ExitCode(), 0U);
}

std::wstring Trouble(const LabOneNote::Call& call, const wchar_t* trouble) {
    return std::wstring(L"Call=") + call.member + L"\nOccurrence=" + std::to_wstring(call.occurrence) + L"\nTrouble=" +
           trouble;
}

void EndPrograms() {
    for (const DWORD id : ProcessesNamed(L"onenote.exe")) {
        const UniqueHandle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
        TerminateProcess(process.Get(), 1);
        WaitForSingleObject(process.Get(), INFINITE);
    }
}

struct ServiceHandleTraits {
    using Handle = SC_HANDLE;
    static constexpr Handle None = nullptr;
    static bool IsOpen(Handle handle) { return handle != nullptr; }
    static void Close(Handle handle) { CloseServiceHandle(handle); }
};
using UniqueServiceHandle = Unique<ServiceHandleTraits>;

/// Wine's service keeps the class object of a server that was terminated, and gives it to the next client; started
/// again on demand, it knows of none. Windows notices, and does not let the service be stopped.
void ForgetClassObjects() {
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const UniqueServiceHandle service(OpenServiceW(manager.Get(), L"RpcSs", SERVICE_STOP | SERVICE_QUERY_STATUS));
    SERVICE_STATUS status{};
    if (!ControlService(service.Get(), SERVICE_CONTROL_STOP, &status))
        return;
    const Watchdog::Waiting waiting("the end of the service that keeps class objects");
    while (QueryServiceStatus(service.Get(), &status) && status.dwCurrentState != SERVICE_STOPPED)
        Sleep(20);
}

} // namespace

LabOneNote::LabOneNote(std::wstring folder) : folder_(std::move(folder)) {}

LabOneNote::~LabOneNote() {
    EndPrograms();
    if (registered_)
        Run(L"/unregister");
    const Entries record = Record();
    const auto ended = std::ranges::count(record, L"Ended");
    const auto started =
        std::ranges::count_if(record, [](const std::wstring& line) { return line.starts_with(L"Started"); });
    if (started != ended)
        ForgetClassObjects();
}

void LabOneNote::Set(std::wstring settings) const {
    settings += L'\n';
    std::ranges::replace(settings, L'\n', L'\0'); // as the function wants them
    EXPECT_TRUE(WritePrivateProfileSectionW(L"OneNote", settings.c_str(), (folder_ + L"lab.ini").c_str()));
}

std::wstring LabOneNote::Failing(const Call& call, HRESULT result, const std::wstring& description) {
    std::wostringstream settings;
    settings << Trouble(call, L"fail") << L"\nResult=0x" << std::hex << static_cast<DWORD>(result) << L"\nDescription="
             << description;
    return settings.str();
}

std::wstring LabOneNote::GivingNull(const Call& call) {
    return Trouble(call, L"null");
}

void LabOneNote::Register() {
    Run(L"/register /settings \"" + folder_ + L"lab.ini\"");
    registered_ = true;
}

void LabOneNote::RegisterInProcess() {
    Register();
    RegisterText(std::wstring(AutomationClass) + L"\\InprocServer32", nullptr, LabFolder() / "onenote-in-process.dll");
}

void LabOneNote::Unregister() {
    if (KeyExists(AutomationClass, HKEY_CLASSES_ROOT))
        Run(L"/unregister");
}

void LabOneNote::Start() {
    started_.emplace(LabFolder() / "onenote.exe", L"/settings \"" + folder_ + L"lab.ini\"");
    WaitUntil("the windows of the lab's OneNote", [this] { return std::ranges::count(Record(), L"Started") > 0; });
}

std::vector<HWND> LabOneNote::Windows() {
    const auto collect = [](HWND window, LPARAM collected) -> BOOL {
        std::array<wchar_t, 32> name{};
        GetClassNameW(window, name.data(), static_cast<int>(name.size()));
        if (std::wstring(name.data()).starts_with(L"LabOneNote"))
            reinterpret_cast<std::vector<HWND>*>(collected)->push_back(window);
        return TRUE;
    };
    std::vector<HWND> windows;
    EnumWindows(collect, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

void LabOneNote::Close() {
    for (HWND window : Windows())
        PostMessageW(window, WM_CLOSE, 0, 0);
}

void LabOneNote::ExpectRecord(const Entries& expected) const {
    ExpectLines(folder_ + L"onenote.log", expected);
}

Entries LabOneNote::Record() const {
    return ReadLines(folder_ + L"onenote.log");
}
