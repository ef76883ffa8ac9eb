#include "proof/faults/ScenarioMachine.h"

#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/Registry.h"

#include <windows.h>

#include <array>
#include <stdexcept>
#include <string_view>

namespace fs = std::filesystem;

namespace {

constexpr wchar_t InternetSettings[] = LR"(Software\Microsoft\Windows\CurrentVersion\Internet Settings)";
constexpr wchar_t Office[] = LR"(Software\Microsoft\Office\)";
constexpr wchar_t AutomationServer[] = LR"(CLSID\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}\InprocServer32)";
constexpr wchar_t PayloadName[] = L"Vellumkit Installer.exe";
constexpr DWORD SomeProtocols = 0xA0;
constexpr DWORD AllProtocols = 0xA80;

struct Setting {
    std::wstring key;
    /// Null: the whole key is to be removed.
    const wchar_t* value;
};

std::vector<Setting> DamagedSettings() {
    const std::wstring office = Office;
    return {{office + LR"(14.0\OneNote\Resiliency\DisabledItems)", nullptr},
            {office + LR"(15.0\OneNote\Resiliency\DisabledItems)", nullptr},
            {office + LR"(16.0\OneNote\Resiliency\DisabledItems)", nullptr},
            {office + LR"(14.0\OneNote\Security)", L"DisableAllAddins"},
            {office + LR"(15.0\OneNote\Security)", L"DisableAllAddins"},
            {office + LR"(16.0\OneNote\Security)", L"DisableAllAddins"},
            {office + LR"(OneNote\AddIns\Vellumkit.Addin)", L"LoadBehavior"}};
}

bool Exists(const Setting& setting) {
    return RegGetValueW(HKEY_CURRENT_USER, setting.key.c_str(), setting.value != nullptr ? setting.value : L"1",
                        RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

std::uint64_t Hash(const void* data, std::size_t size, std::uint64_t hash = 0xCBF29CE484222325) {
    for (const char byte : std::string_view(static_cast<const char*>(data), size))
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    return hash;
}

/// Whether an enumeration goes on. Throws when it can't: what it does not show could not be compared.
bool IsThere(LSTATUS status) {
    if (status != ERROR_SUCCESS && status != ERROR_NO_MORE_ITEMS)
        throw std::runtime_error("HKEY_CURRENT_USER can't be read, error " + std::to_string(status));
    return status == ERROR_SUCCESS;
}

void Collect(HKEY parent, const std::wstring& path, Settings& settings) {
    settings[path + L'\\'] = 0;
    std::array<wchar_t, 512> name{};
    std::vector<BYTE> data(0x10000);
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        auto size = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (!IsThere(RegEnumValueW(parent, index, name.data(), &length, nullptr, &type, data.data(), &size)))
            break;
        settings[path + L'\\' + name.data()] = Hash(data.data(), size, type + 1);
    }
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        if (!IsThere(RegEnumKeyExW(parent, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr)))
            break;
        UniqueRegistryKey key;
        if (RegOpenKeyExW(parent, name.data(), 0, KEY_READ, key.Receive()) == ERROR_SUCCESS)
            Collect(key.Get(), path.empty() ? name.data() : path + L'\\' + name.data(), settings);
    }
}

Settings AllSettings() {
    Settings settings;
    Collect(HKEY_CURRENT_USER, L"", settings);
    return settings;
}

/// Whether an installation may change what has that path.
bool MayChange(const std::wstring& path) {
    if (path == std::wstring(InternetSettings) + LR"(\SecureProtocols)" ||
        path == std::wstring(InternetSettings) + L'\\')
        return true;
    for (const Setting& setting : DamagedSettings()) {
        if (setting.value != nullptr ? path == setting.key + L'\\' + setting.value
                                     : path.starts_with(setting.key + L'\\'))
            return true;
    }
    // What Wine's shell writes for itself when it starts a program.
    return path.starts_with(LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\)") ||
           path.starts_with(LR"(Software\Wine\)");
}

std::vector<std::wstring> StrangeChanges(const Settings& before, const Settings& after) {
    std::vector<std::wstring> changes;
    for (const auto& [path, value] : after) {
        const auto old = before.find(path);
        if ((old == before.end() || old->second != value) && !MayChange(path))
            changes.push_back(path);
    }
    for (const auto& [path, value] : before) {
        if (!after.contains(path) && !MayChange(path))
            changes.push_back(path);
    }
    return changes;
}

} // namespace

const std::vector<Scenario>& Scenarios() {
    static const std::vector<Scenario> scenarios{
        {"unattended", LR"(/config C:\settings.ini)", L"no-office", false, false, false, nullptr, Ending::Close},
        {"unattended-onenote", LR"(/config C:\settings.ini)", L"office-64-bit", true, true, false, L"1031",
         Ending::Close},
        {"window", L"", L"no-office", false, false, true, L"1033", Ending::Close},
        {"window-onenote", L"", L"office-64-bit", true, true, false, L"1033", Ending::StartOneNote},
        {"window-question", L"", L"click-to-run-32-bit", false, false, false, L"1033", Ending::Close},
    };
    return scenarios;
}

ScenarioMachine::ScenarioMachine(const Scenario& scenario, fs::path work)
    : scenario_(scenario), work_(std::move(work)), office_(scenario.office) {
    fs::create_directories(Temporary());
    fs::create_directories(Current());
    if (!scenario.oneNote)
        return;
    RegisterText(AutomationServer, nullptr, LabFolder() / L"onenote-in-process.dll");
    RegisterText(AutomationServer, L"ThreadingModel", L"Apartment");
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept -> LRESULT {
        return message == WM_CLOSE ? 0 : DefWindowProcW(window, message, wParam, lParam);
    };
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"LabOneNote"; // by which the stand-in's automation finds its windows
    RegisterClassW(&windowClass);
    window_ = CreateWindowExW(0, windowClass.lpszClassName, L"OneNote 1", WS_OVERLAPPEDWINDOW, 0, 0, 300, 100, nullptr,
                              nullptr, windowClass.hInstance, nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, 1);
}

ScenarioMachine::~ScenarioMachine() {
    if (window_ != nullptr)
        DestroyWindow(window_);
}

void ScenarioMachine::Prepare() {
    for (const fs::path& folder : {Temporary(), Current()}) {
        for (const auto& entry : fs::directory_iterator(folder))
            fs::remove_all(entry.path());
    }
    for (const wchar_t* version : {L"14.0", L"15.0", L"16.0", L"OneNote"})
        RegDeleteTreeW(HKEY_CURRENT_USER, (std::wstring(Office) + version).c_str());
    if (scenario_.noInternetSettings)
        RegDeleteTreeW(HKEY_CURRENT_USER, InternetSettings);
    else
        SetDword(InternetSettings, L"SecureProtocols", SomeProtocols);
    if (scenario_.damagedSettings) {
        for (const Setting& setting : DamagedSettings())
            SetDword(setting.key.c_str(), setting.value != nullptr ? setting.value : L"1", 1);
    }
    if (scenario_.language != nullptr) {
        const std::wstring text = std::wstring(scenario_.language) + L'\0' + L'\0';
        SetValue((std::wstring(Office) + LR"(16.0\Common\LanguageResources)").c_str(), L"UIFallback", REG_MULTI_SZ,
                 Bytes(text));
    }
    if (scenario_.oneNote)
        datebookery_.emplace(Datebookery());
    if (before_.empty()) // every preparation comes to the same
        before_ = AllSettings();
}

void ScenarioMachine::AwaitPayloads() {
    for (const DWORD id : ProcessesNamed(PayloadName)) {
        const UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, id));
        constexpr DWORD Limit = 60000;
        if (process && WaitForSingleObject(process.Get(), Limit) != WAIT_OBJECT_0)
            throw std::runtime_error("a payload does not end");
    }
}

Remains ScenarioMachine::LookAround() {
    AwaitPayloads();
    datebookery_.reset();
    Remains remains;
    constexpr wchar_t LogName[] = L"Vellumkit_Install.log";
    remains.elsewhere = !fs::is_empty(Current());
    for (const fs::path& base : {Temporary(), Current()}) {
        remains.folder = remains.folder || fs::exists(base / L"Vellumkit");
        std::error_code missing;
        const std::uintmax_t size = fs::file_size(base / L"Vellumkit" / PayloadName, missing);
        if (!missing)
            remains.payload = size;
        if (remains.log.empty())
            remains.log = ReadBytes(base / LogName);
    }
    if (scenario_.damagedSettings) {
        for (const Setting& setting : DamagedSettings())
            ++(Exists(setting) ? remains.unrepaired : remains.repaired);
    }
    DWORD protocols = 0;
    DWORD size32 = sizeof protocols;
    RegGetValueW(HKEY_CURRENT_USER, InternetSettings, L"SecureProtocols", RRF_RT_REG_DWORD, nullptr, &protocols,
                 &size32);
    ++((protocols & AllProtocols) == AllProtocols ? remains.repaired : remains.unrepaired);
    remains.strangeSettings = StrangeChanges(before_, AllSettings());
    if (!remains.strangeSettings.empty())
        before_.clear();
    return remains;
}
