#include "ui/Announcement.h"

#include <comdef.h>
#include <oleacc.h>

#include <algorithm>
#include <array>

namespace {

using AnnotationServicePtr = _com_ptr_t<_com_IIID<IAccPropServices, &IID_IAccPropServices>>;

// Windows 8 and later have them; the headers are told that the program runs on 7.
constexpr MSAAPROPID LiveSetting = {0xC12BCD8E, 0x2A8E, 0x4950, {0x8A, 0xE7, 0x36, 0x25, 0x11, 0x1D, 0x58, 0xEB}};
constexpr DWORD LiveRegionChanged = 0x8019; // EVENT_OBJECT_LIVEREGIONCHANGED

constexpr LONG Polite = 1; // is read after what is being read, as the button that has just got the focus
constexpr auto ClientArea = static_cast<DWORD>(OBJID_CLIENT);

/// Null where there is none.
AnnotationServicePtr AnnotationService() {
    AnnotationServicePtr service;
    service.CreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER);
    return service;
}

/// Longer ones are cut. The window has no place for so much either, and an array needs no memory that may be short.
using Line = std::array<wchar_t, 1024>;

/// The empty line in the text of a failure is for the eye.
Line InOneLine(std::wstring_view text) {
    Line line{};
    wchar_t* const begin = line.data();
    const auto isBreak = [](wchar_t letter) { return letter == L'\r' || letter == L'\n'; };
    const auto areBlanks = [](wchar_t left, wchar_t right) { return left == L' ' && right == L' '; };
    const std::wstring_view head = text.substr(0, line.size() - 1);
    wchar_t* const end = std::replace_copy_if(head.begin(), head.end(), begin, isBreak, L' ');
    std::fill(std::unique(begin, end, areBlanks), end, L'\0');
    return line;
}

/// Narrator reads a change only of what says that it is a live region. A Windows that does not know the property does
/// not know the event either.
void MakeLiveRegion(IAccPropServices& service, HWND window) {
    VARIANT polite{};
    polite.vt = VT_I4;
    polite.lVal = Polite;
    service.SetHwndProp(window, ClientArea, CHILDID_SELF, LiveSetting, polite);
}

} // namespace

void Announce(HWND window, std::wstring_view text) noexcept {
    const AnnotationServicePtr service = AnnotationService();
    if (!service)
        return;
    MakeLiveRegion(*service, window);
    const Line line = InOneLine(text);
    if (FAILED(service->SetHwndPropStr(window, ClientArea, CHILDID_SELF, PROPID_ACC_NAME, line.data())))
        return; // no name has changed: Wine's service implements nothing
    // Not EVENT_OBJECT_NAMECHANGE: Narrator and NVDA read a changed name only of what has the focus, which is a button
    // when an installation is over. With both events they would read it twice while the window has the focus. Windows 7
    // does not know this one; there the name is read when it is asked for.
    NotifyWinEvent(LiveRegionChanged, window, OBJID_CLIENT, CHILDID_SELF);
}

void ForgetAnnouncement(HWND window) noexcept {
    const AnnotationServicePtr service = AnnotationService();
    if (!service)
        return;
    const std::array properties{PROPID_ACC_NAME, LiveSetting};
    service->ClearHwndProps(window, ClientArea, CHILDID_SELF, properties.data(), properties.size());
}
