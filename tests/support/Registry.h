#pragma once

#include "core/Unique.h"
#include "tests/support/LogText.h"

#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// Sends HKEY_CURRENT_USER and HKEY_CLASSES_ROOT of this process to empty keys as long as it lives. Ends the program
/// when it can't.
class RegistrySandbox {
public:
    RegistrySandbox();
    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;
    ~RegistrySandbox();

private:
    std::wstring path_;
    UniqueRegistryKey user_;
    UniqueRegistryKey classes_;
};

/// Puts a key with all it holds back as it was, at the object's end.
class KeptKey {
public:
    /// Begins with what an earlier test program kept that was ended. A test failure when the key can't be kept.
    KeptKey(HKEY root, std::wstring subkey);
    KeptKey(const KeptKey&) = delete;
    KeptKey& operator=(const KeptKey&) = delete;
    ~KeptKey() { Restore(root_, subkey_); }

    /// Puts the key back if it was kept.
    static void Restore(HKEY root, const std::wstring& subkey);

private:
    HKEY root_;
    std::wstring subkey_;
};

/// A test of code that changes the registry and logs what it does.
class LoggedRegistry : public testing::Test {
protected:
    Entries Logged() const { return log_.Get(); }

private:
    RegistrySandbox sandbox_;
    LoggedEntries log_;
};

// Short forms for HKEY_CURRENT_USER; a null name is the default value. A test failure when the call fails.

void SetDword(const wchar_t* subkey, const wchar_t* name, DWORD value);
void SetValue(const wchar_t* subkey, const wchar_t* name, DWORD type, const std::vector<unsigned char>& bytes);

// The same for other roots.

void SetValueOf(HKEY root, const wchar_t* subkey, const wchar_t* name, DWORD type,
                const std::vector<unsigned char>& bytes);

/// A string with its NUL under HKEY_CLASSES_ROOT.
void RegisterText(const std::wstring& subkey, const wchar_t* name, const std::wstring& text);

/// The bytes of UTF-16 text, just as many as it has characters.
std::vector<unsigned char> Bytes(const std::wstring& text);

struct StoredValue {
    DWORD type;
    std::vector<unsigned char> bytes;
    bool operator==(const StoredValue&) const = default;
    friend std::ostream& operator<<(std::ostream& stream, const StoredValue& value);
};

/// Nothing when the key or the value is missing.
std::optional<StoredValue> GetValue(const wchar_t* subkey, const wchar_t* name);
bool KeyExists(const wchar_t* subkey, HKEY root = HKEY_CURRENT_USER);

/// What `GetValue` gives for a REG_DWORD.
std::optional<StoredValue> Dword(DWORD value);
