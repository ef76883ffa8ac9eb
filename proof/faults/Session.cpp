#include "proof/faults/Session.h"

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace {

/// What an undisturbed installation takes a small part of, in milliseconds.
constexpr DWORD EndLimit = 30000;
/// From when on somebody looks for windows that should not be there.
constexpr ULONGLONG Patience = 400;
/// How often it looks for windows while it waits for nothing in particular.
constexpr ULONGLONG LookInterval = 50;
/// The time that a window is given to show what the worker has posted.
constexpr UINT ScreenLimit = 5000;

constexpr wchar_t InstallerClass[] = L"WC_VELLUMKIT_INSTALLER";
constexpr wchar_t DialogClass[] = L"#32770";
constexpr wchar_t QuestionTitle[] = L"Vellumkit Installer";

[[noreturn]] void ThrowLastError(const char* what) {
    throw std::runtime_error(std::string(what) + ", error " + std::to_string(GetLastError()));
}

/// The first thread that runs in the process loads the library: the executable's imports are bound then, and nothing of
/// it has run.
void Inject(HANDLE process, const std::filesystem::path& library) {
    const std::wstring path = library.wstring();
    const SIZE_T size = (path.size() + 1) * sizeof(wchar_t);
    void* const place = VirtualAllocEx(process, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    if (place == nullptr || !WriteProcessMemory(process, place, path.c_str(), size, nullptr))
        ThrowLastError("cannot write into the installer");
    auto* const load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "LoadLibraryW")));
    const UniqueHandle thread(CreateRemoteThread(process, nullptr, 0, load, place, 0, nullptr));
    if (!thread)
        ThrowLastError("cannot start a thread in the installer");
    WaitForSingleObject(thread.Get(), EndLimit);
    DWORD loaded = 0;
    if (!GetExitCodeThread(thread.Get(), &loaded) || loaded == 0)
        ThrowLastError("the installer does not load the library");
}

struct OpenWindows {
    DWORD process;
    HWND installer = nullptr;
    HWND question = nullptr;
    std::vector<HWND> others{};
};

std::wstring ClassOf(HWND window) {
    std::array<wchar_t, 64> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return name.data();
}

/// Without asking the window, which may not answer.
std::wstring TitleOf(HWND window) {
    std::array<wchar_t, 128> title{};
    InternalGetWindowText(window, title.data(), static_cast<int>(title.size()));
    return title.data();
}

BOOL CALLBACK Sort(HWND window, LPARAM parameter) noexcept {
    auto& windows = *reinterpret_cast<OpenWindows*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner != windows.process || !IsWindowVisible(window))
        return TRUE;
    const std::wstring name = ClassOf(window);
    if (name.empty()) // it is gone
        return TRUE;
    if (name == InstallerClass)
        windows.installer = window;
    else if (name == DialogClass && TitleOf(window) == QuestionTitle)
        windows.question = window;
    else if (name != L"LabOneNote") // a window that the stand-in opened in the installer's process
        windows.others.push_back(window);
    return TRUE;
}

/// The user in front of one installer.
class ScenarioUser {
public:
    ScenarioUser(const Scenario& scenario, HANDLE process, Exchange& exchange, Conduct& conduct)
        : scenario_(scenario), process_(process), exchange_(exchange), conduct_(conduct) {}

    /// Looks at what is there, and does at most one thing.
    void Act(ULONGLONG age) {
        MSG message{};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) // of OneNote's window
            DispatchMessageW(&message);
        const bool isAwaited = !scenario_.IsUnattended() && exchange_.waits != answeredWaits_;
        if ((scenario_.IsUnattended() && age < Patience) || (!isAwaited && age < lastLook_ + LookInterval))
            return;
        lastLook_ = age;
        OpenWindows windows{.process = GetProcessId(process_)};
        EnumWindows(Sort, reinterpret_cast<LPARAM>(&windows));
        for (HWND const other : windows.others)
            CloseDialog(other);
        if (windows.question != nullptr)
            Answer(windows.question);
        if (windows.installer != nullptr && scenario_.IsUnattended())
            CloseDialog(windows.installer);
        else if (windows.installer != nullptr)
            Operate(windows.installer, age);
    }

private:
    enum Button : WPARAM { Continue = 101 };

    void CloseDialog(HWND dialog) {
        const std::wstring what = ClassOf(dialog) + L' ' + TitleOf(dialog);
        if (what != L" " && std::ranges::find(conduct_.dialogs, what) == conduct_.dialogs.end())
            conduct_.dialogs.push_back(what);
        PostMessageW(dialog, WM_CLOSE, 0, 0);
    }

    void Answer(HWND question) {
        if (scenario_.office != std::wstring_view(L"click-to-run-32-bit"))
            conduct_.dialogs.emplace_back(L"the question");
        PostMessageW(question, TDM_CLICK_BUTTON, Continue, 0);
    }

    void Operate(HWND window, ULONGLONG age) {
        if (closed_)
            return;
        const LONG waits = exchange_.waits;
        if (waits == answeredWaits_) {
            if (age > EndLimit / 2) {
                conduct_.gaveUp = !clicked_;
                Close(window);
            }
            return;
        }
        if (waitBegan_ == 0)
            waitBegan_ = age;
        const auto [screen, primary, secondary] = Look(window);
        if (screen == "no button" && age - waitBegan_ < ScreenLimit)
            return;
        // The window's thread shows one button after the other. It answers when it is done.
        DWORD_PTR answer = 0;
        SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, ScreenLimit, &answer);
        if (Look(window).name != screen)
            return;
        answeredWaits_ = waits;
        waitBegan_ = 0;
        conduct_.screens.push_back(screen);
        if (screen == "Failed" && conduct_.screens.size() == 1) {
            ScenarioMachine::AwaitPayloads(); // the user is slow
            PostMessageW(primary, BM_CLICK, 0, 0);
        } else if (screen == "Completed" && !clicked_) {
            Finish(primary, secondary);
        } else {
            Close(window);
        }
    }

    void Finish(HWND primary, HWND secondary) {
        clicked_ = true;
        PostMessageW(scenario_.ending == Ending::StartOneNote ? secondary : primary, BM_CLICK, 0, 0);
    }

    void Close(HWND window) {
        closed_ = true;
        PostMessageW(window, WM_CLOSE, 0, 0);
    }

    struct Screen {
        std::string name;
        HWND primary;
        HWND secondary;
    };

    /// The buttons tell it: the primary one is on the right.
    static Screen Look(HWND window) {
        Screen screen{"no button", nullptr, nullptr};
        RECT whole{};
        GetWindowRect(window, &whole);
        for (HWND button = nullptr; (button = FindWindowExW(window, button, L"Button", nullptr)) != nullptr;) {
            RECT area{};
            GetWindowRect(button, &area);
            const bool isRight = area.left + area.right > whole.left + whole.right;
            (isRight ? screen.primary : screen.secondary) = button;
        }
        const auto isUsable = [](HWND button) {
            RECT area{};
            return button != nullptr && IsWindowVisible(button) && IsWindowEnabled(button) &&
                   GetWindowRect(button, &area) && !IsRectEmpty(&area);
        };
        if (isUsable(screen.primary) && isUsable(screen.secondary))
            screen.name = "Completed";
        else if (isUsable(screen.primary))
            screen.name = TitleOf(screen.primary) == L"&Close" ? "Completed, without the left button" : "Failed";
        else if (isUsable(screen.secondary))
            screen.name = "Completed, without the right button";
        return screen;
    }

    const Scenario& scenario_;
    HANDLE process_;
    Exchange& exchange_;
    Conduct& conduct_;
    LONG answeredWaits_ = 0;
    ULONGLONG lastLook_ = 0;
    ULONGLONG waitBegan_ = 0;
    bool clicked_ = false;
    bool closed_ = false;
};

std::wstring SectionName() {
    return L"VellumkitFault-" + std::to_wstring(GetCurrentProcessId());
}

} // namespace

ExchangeSection::ExchangeSection()
    : section_(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Exchange),
                                  SectionName().c_str())),
      exchange_(static_cast<Exchange*>(MapViewOfFile(section_.Get(), FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Exchange)))) {
    if (exchange_ == nullptr)
        ThrowLastError("cannot make a section");
    SetEnvironmentVariableW(ExchangeVariable, SectionName().c_str());
}

ExchangeSection::~ExchangeSection() {
    UnmapViewOfFile(exchange_);
}

Conduct RunInstaller(const std::filesystem::path& installer, const std::filesystem::path& library,
                     const Scenario& scenario, const ScenarioMachine& machine, Exchange& exchange) {
    for (const wchar_t* variable : {L"TMP", L"TEMP"})
        SetEnvironmentVariableW(variable, machine.Temporary().c_str());
    std::wstring commandLine = L'"' + installer.wstring() + L"\" " + scenario.arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION information{};
    if (!CreateProcessW(installer.c_str(), commandLine.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr,
                        machine.Current().c_str(), &startup, &information))
        ThrowLastError("cannot start the installer");
    const UniqueHandle process(information.hProcess);
    const UniqueHandle thread(information.hThread);
    exchange.mainThread = information.dwThreadId;
    try {
        Inject(process.Get(), library);
    } catch (...) {
        TerminateProcess(process.Get(), 1);
        throw;
    }
    const ULONGLONG start = GetTickCount64();
    ResumeThread(thread.Get());

    Conduct conduct;
    ScenarioUser user(scenario, process.Get(), exchange, conduct);
    constexpr DWORD Interval = 4;
    while (WaitForSingleObject(process.Get(), Interval) == WAIT_TIMEOUT) {
        const ULONGLONG age = GetTickCount64() - start;
        user.Act(age);
        if (age > EndLimit) {
            conduct.hung = true;
            TerminateProcess(process.Get(), 1);
            WaitForSingleObject(process.Get(), INFINITE);
        }
    }
    GetExitCodeProcess(process.Get(), &conduct.exitCode);
    return conduct;
}
