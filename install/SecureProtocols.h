#pragma once

/// Reports the current user's "SecureProtocols" value under `subkey` to the log and, with `update`, adds the bits of
/// TLS 1.0, 1.1 and 1.2 that it lacks. Other bits stay; a missing key or value is created.
/// Throws a `_com_error` when the key can't be opened for writing or the value can't be set.
void UpdateSecureProtocols(const wchar_t* subkey, bool update);
