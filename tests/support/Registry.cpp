#include "tests/support/Registry.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace {

/// Without its sandbox a test would change the user's own settings, so the program ends.
void EndUnlessSucceeded(LSTATUS status) {
    if (status == ERROR_SUCCESS)
        return;
    std::fprintf(stderr, "cannot make a sandbox in the registry, error %ld\n", status);
    std::_Exit(3);
}

UniqueRegistryKey OpenKey(HKEY root, const std::wstring& subkey) {
    UniqueRegistryKey key;
    RegOpenKeyExW(root, subkey.c_str(), 0, KEY_READ, key.Receive());
    return key;
}

/// Beside the key.
std::wstring PlaceOfKept(const std::wstring& subkey) {
    return subkey + L" before the test";
}

void CopyKey(HKEY root, const std::wstring& from, const std::wstring& to) {
    UniqueRegistryKey copy;
    EXPECT_EQ(RegCreateKeyExW(root, to.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, copy.Receive(), nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(RegCopyTreeW(OpenKey(root, from).Get(), nullptr, copy.Get()), ERROR_SUCCESS);
}

} // namespace

KeptKey::KeptKey(HKEY root, std::wstring subkey) : root_(root), subkey_(std::move(subkey)) {
    Restore(root_, subkey_);
    CopyKey(root_, subkey_, PlaceOfKept(subkey_));
}

void KeptKey::Restore(HKEY root, const std::wstring& subkey) {
    const std::wstring kept = PlaceOfKept(subkey);
    if (!KeyExists(kept.c_str(), root))
        return;
    RegDeleteTreeW(root, subkey.c_str());
    CopyKey(root, kept, subkey);
    EXPECT_EQ(RegDeleteTreeW(root, kept.c_str()), ERROR_SUCCESS);
}

RegistrySandbox::RegistrySandbox() : path_(L"Software\\VellumkitTest" + std::to_wstring(GetCurrentProcessId())) {
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str()); // what a test program that was ended left behind
    EndUnlessSucceeded(RegCreateKeyExW(HKEY_CURRENT_USER, (path_ + L"\\User").c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                       nullptr, user_.Receive(), nullptr));
    EndUnlessSucceeded(RegCreateKeyExW(HKEY_CURRENT_USER, (path_ + L"\\Classes").c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                       nullptr, classes_.Receive(), nullptr));
    EndUnlessSucceeded(RegOverridePredefKey(HKEY_CURRENT_USER, user_.Get()));
    EndUnlessSucceeded(RegOverridePredefKey(HKEY_CLASSES_ROOT, classes_.Get()));
}

RegistrySandbox::~RegistrySandbox() {
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
}

void SetDword(const wchar_t* subkey, const wchar_t* name, DWORD value) {
    EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, subkey, name, REG_DWORD, &value, sizeof value), ERROR_SUCCESS);
}

void SetValue(const wchar_t* subkey, const wchar_t* name, DWORD type, const std::vector<unsigned char>& bytes) {
    SetValueOf(HKEY_CURRENT_USER, subkey, name, type, bytes);
}

void SetValueOf(HKEY root, const wchar_t* subkey, const wchar_t* name, DWORD type,
                const std::vector<unsigned char>& bytes) {
    std::vector<unsigned char> guarded = bytes;
    guarded.resize(bytes.size() + 4, 0xFF); // Windows adds to a string a NUL that stands right behind it
    EXPECT_EQ(RegSetKeyValueW(root, subkey, name, type, guarded.data(), static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
}

void RegisterText(const std::wstring& subkey, const wchar_t* name, const std::wstring& text) {
    SetValueOf(HKEY_CLASSES_ROOT, subkey.c_str(), name, REG_SZ, Bytes(text + L'\0'));
}

std::vector<unsigned char> Bytes(const std::wstring& text) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    return {bytes, bytes + text.size() * sizeof(wchar_t)};
}

std::optional<StoredValue> GetValue(const wchar_t* subkey, const wchar_t* name) {
    UniqueRegistryKey key;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, subkey, 0, KEY_QUERY_VALUE, key.Receive()) != ERROR_SUCCESS)
        return std::nullopt;
    StoredValue value{0, std::vector<unsigned char>(1024)};
    auto size = static_cast<DWORD>(value.bytes.size());
    if (RegQueryValueExW(key.Get(), name, nullptr, &value.type, value.bytes.data(), &size) != ERROR_SUCCESS)
        return std::nullopt;
    value.bytes.resize(size);
    return value;
}

std::ostream& operator<<(std::ostream& stream, const StoredValue& value) {
    return stream << "type " << value.type << ": " << testing::PrintToString(value.bytes);
}

std::optional<StoredValue> Dword(DWORD value) {
    std::vector<unsigned char> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return StoredValue{REG_DWORD, bytes};
}

bool KeyExists(const wchar_t* subkey, HKEY root) {
    return static_cast<bool>(OpenKey(root, subkey));
}
