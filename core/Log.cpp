#include "core/Log.h"

#include "core/TempPath.h"

#include <windows.h>

#include <share.h>
#include <strsafe.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <locale>
#include <mutex>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

namespace {

struct LogName {
    const wchar_t* module;
    const wchar_t* file;
};

/// The programs of the product that share this log, in the order in which they are looked for.
constexpr std::array LogNames{
    LogName{L"dllhost.exe", L"Vellumkit_Addin_outproc.log"},
    LogName{L"onenote.exe", L"Vellumkit_Addin_inproc.log"},
    LogName{L"Vellumkit Installer.exe", L"Vellumkit_Elev.log"},
    LogName{L"VlkUninst.exe", L"Vellumkit_Uninst.log"},
};

const wchar_t* LogFileName() {
    for (const LogName& name : LogNames) {
        if (GetModuleHandleW(name.module) != nullptr)
            return name.file;
    }
    return L"Vellumkit_Install.log";
}

/// Wide characters to file bytes as they are. The library's own wide file buffer would convert them through the locale.
class Utf16FileBuffer : public std::wstreambuf {
public:
    Utf16FileBuffer() = default;
    Utf16FileBuffer(const Utf16FileBuffer&) = delete;
    Utf16FileBuffer& operator=(const Utf16FileBuffer&) = delete;
    ~Utf16FileBuffer() override { Close(); }

    void Open(const std::wstring& path) {
        file_ = _wfsopen(path.c_str(), L"wb", _SH_DENYNO);
        if (file_ != nullptr)
            std::setvbuf(file_, reinterpret_cast<char*>(FileBuffer.data()), _IOFBF, sizeof FileBuffer);
    }

    bool Close() {
        const std::lock_guard lock(mutex_);
        std::FILE* const file = std::exchange(file_, nullptr);
        return file != nullptr && std::fclose(file) == 0;
    }

protected:
    std::streamsize xsputn(const wchar_t* text, std::streamsize count) override {
        const std::lock_guard lock(mutex_);
        if (file_ == nullptr)
            return 0;
        return static_cast<std::streamsize>(std::fwrite(text, sizeof(wchar_t), static_cast<std::size_t>(count), file_));
    }

    int_type overflow(int_type character) override {
        const wchar_t text = traits_type::to_char_type(character);
        return xsputn(&text, 1) == 1 ? character : traits_type::eof();
    }

    int sync() override {
        const std::lock_guard lock(mutex_);
        return file_ != nullptr && std::fflush(file_) == 0 ? 0 : -1;
    }

private:
    // Its size decides how much an abnormal end can lose.
    static inline std::array<wchar_t, 1024> FileBuffer{};

    std::mutex mutex_; // one insertion is one write; a thread may write while another one closes the file
    std::FILE* file_ = nullptr;
};

class LogStream : public std::wostream {
public:
    LogStream() : std::wostream(nullptr) {
        rdbuf(&buffer_);
        imbue(std::locale::classic()); // numbers without grouping, whatever the program's locale
        buffer_.Open(TempPath(LogFileName()));
        put(L'\xFEFF');
    }

    void Close() {
        if (!buffer_.Close())
            setstate(failbit);
    }

private:
    Utf16FileBuffer buffer_;
};

LogStream& TheLog() {
    static LogStream log;
    return log;
}

/// Now, as asctime lays it out. Not asctime itself: the runtimes differ in how they pad the day of the month.
std::wstring Timestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (localtime_s(&local, &now) != 0)
        return {};
    constexpr std::wstring_view Days = L"SunMonTueWedThuFriSat";
    constexpr std::wstring_view Months = L"JanFebMarAprMayJunJulAugSepOctNovDec";
    const std::wstring_view day = Days.substr(3 * static_cast<std::size_t>(local.tm_wday), 3);
    const std::wstring_view month = Months.substr(3 * static_cast<std::size_t>(local.tm_mon), 3);
    std::array<wchar_t, 64> rest{};
    StringCchPrintfW(rest.data(), rest.size(), L" %2d %02d:%02d:%02d %04d", local.tm_mday, local.tm_hour, local.tm_min,
                     local.tm_sec, 1900 + local.tm_year);
    return std::wstring(day).append(L" ").append(month).append(rest.data());
}

} // namespace

std::wostream& Log(bool withPrefix) {
    LogStream& log = TheLog();
    if (withPrefix) {
        const std::wstring now = Timestamp(); // before the flush, which may take its time
        log << L"\r\n" << std::flush << now << L" - ";
    }
    return log;
}

void CloseLog() {
    TheLog().Close();
}
