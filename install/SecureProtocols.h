#pragma once

/// Reports the current user's "SecureProtocols" value under `subkey` to the log and, with `update`, adds the bits of
/// TLS 1.0, 1.1 and 1.2 that it lacks. Other bits stay; a missing key or value is created.
/// Throws a `_com_error` with the HRESULT of the registry call when the key can't be opened for writing or created, or
/// the value can't be set. Any thread.
void UpdateSecureProtocols(const wchar_t* subkey, bool update);
