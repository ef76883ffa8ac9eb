#pragma once

/// Makes the process system DPI aware, so that every size it computes is in real pixels. Windows 8.1 and later have a
/// function for it in shcore.dll; where that library lacks it, the older SetProcessDPIAware is called. Without the
/// library nothing is called. No failure is reported. Main thread, before anything asks for a size.
void SetDpiAwareness();
