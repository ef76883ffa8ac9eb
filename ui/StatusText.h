#pragma once

#include "install/ScreenState.h"

#include <string_view>

/// What the window says in this state: in the loaded language, for `Failed` the `ErrorText`, and nothing for a value
/// that is no `ScreenStatus`. Lives as long as the process. Any thread.
std::wstring_view StatusText(ScreenStatus status);
