#pragma once

/// Makes the process system DPI aware, so that every size it computes is in real pixels. Windows 8.1 and later have a
/// function for it in shcore.dll; Windows without that library is left as it is. No failure is reported.
void SetDpiAwareness();
