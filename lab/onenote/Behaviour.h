#pragma once

#include "lab/onenote/Outcome.h"

#include <string>

/// How the stand-in behaves, as the section [OneNote] of its settings file says, which is read anew at each question;
/// lab/sample.ini explains it. For one thread.
namespace Behaviour {

/// What a window does when it is asked to close (WM_CLOSE).
enum class Closing { Obey, Ask, Ignore };

/// A whole path; without such a file everything is as usual. Comes before all others.
void SetSettingsFile(const std::wstring& path);

unsigned WindowsAtStart();
bool HasFrames();
Closing HowToClose();

/// Makes the trouble that the settings want of a client's call, the `occurrence`th to that member, counted from 1:
/// takes its time, ends the process, or returns another outcome than success.
Outcome MakeTrouble(const std::wstring& member, unsigned occurrence);

} // namespace Behaviour
