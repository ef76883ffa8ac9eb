#pragma once

/// Decodes the logo embedded in the executable into `LogoBitmap`, which replaces an earlier one. Without memory for it
/// `LogoBitmap` stays as it was. Throws a `_com_error` when the resource can't be read; an image that GDI+ can't decode
/// is only empty. Main thread, after `StartGraphics`.
void LoadLogo();
