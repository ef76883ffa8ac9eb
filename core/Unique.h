#pragma once

#include <windows.h>

#include <utility>

/// Owns one handle and closes it when it goes. `Traits` names the handle's type (`Handle`), the value that stands for
/// none (`None`), which values are open ones (`IsOpen`) and how one is closed (`Close`).
/// Closing leaves the thread's last-error value as it was.
template <typename Traits>
class Unique {
public:
    using Handle = typename Traits::Handle;

    Unique() = default;
    explicit Unique(Handle handle) : handle_(handle) {}
    Unique(Unique&& other) noexcept : handle_(other.Release()) {}
    Unique& operator=(Unique&& other) noexcept {
        Reset(other.Release());
        return *this;
    }
    Unique(const Unique&) = delete;
    Unique& operator=(const Unique&) = delete;
    ~Unique() { Reset(); }

    Handle Get() const { return handle_; }
    explicit operator bool() const { return Traits::IsOpen(handle_); }

    /// Gives the handle up without closing it.
    Handle Release() { return std::exchange(handle_, Traits::None); }

    /// Closes what is owned and owns `handle` instead.
    void Reset(Handle handle = Traits::None) {
        const Handle old = std::exchange(handle_, handle);
        if (!Traits::IsOpen(old) || old == handle)
            return;
        const DWORD lastError = GetLastError();
        Traits::Close(old);
        SetLastError(lastError);
    }

    /// Closes what is owned; the function that is given the result stores a new handle there.
    Handle* Receive() {
        Reset();
        return &handle_;
    }

private:
    Handle handle_ = Traits::None;
};

/// Kernel objects: processes, events, files.
struct KernelHandleTraits {
    using Handle = HANDLE;
    static constexpr Handle None = nullptr;
    static bool IsOpen(Handle handle) { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) { CloseHandle(handle); }
};
using UniqueHandle = Unique<KernelHandleTraits>;

struct RegistryKeyTraits {
    using Handle = HKEY;
    static constexpr Handle None = nullptr;
    static bool IsOpen(Handle key) { return key != nullptr; }
    static void Close(Handle key) { RegCloseKey(key); }
};
using UniqueRegistryKey = Unique<RegistryKeyTraits>;
