#pragma once

#include <windows.h>

#include <string>

/// How the stand-in behaves, as the section [OneNote] of its settings file says, which is read anew at each question;
/// lab/sample.ini explains it. For one thread.
namespace Behaviour {

/// What a window does when it is asked to close (WM_CLOSE).
enum class Closing { Obey, Ask, Ignore };

/// `settingsFile` is a whole path; without such a file everything is as usual. Comes before all others.
void ReadFrom(const std::wstring& settingsFile);

unsigned WindowsAtStart();
bool HasFrames();
Closing HowToClose();

/// Records a client's call and makes the trouble that the settings want of it: takes its time, or ends the process.
/// Returns what the client shall get: S_OK for what it asked for, S_FALSE for S_OK and nothing, or a failure, whose
/// error information is set.
HRESULT OnCall(const std::wstring& member, const std::wstring& arguments = L"");

} // namespace Behaviour
