#pragma once

#include <windows.h>

#include <string>

/// Saves what the screen shows in an area (pixels) as a PNG file. False when that fails. Any thread, with GDI+ started.
bool SaveScreen(const RECT& area, const std::wstring& file);
