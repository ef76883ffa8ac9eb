#pragma once

#include "ui/UnknownImpl.h"

#include <objidl.h>

#include <cstddef>
#include <cstdint>

/// A read-only stream over the logo image embedded in the executable (resource "FILE" 101), so that GDI+ can decode it
/// in place. One reader at a time; only the reference count is atomic.
class ResourceStream final : public UnknownImpl<IStream> {
public:
    /// Throws a `_com_error` with E_FAIL when the resource is missing or can't be loaded.
    ResourceStream();

    /// Copies what is left, at most `count` bytes. S_OK always, also at the end, where it reads 0 bytes.
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* bytesRead) override;
    /// E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* bytesWritten) override;
    /// E_FAIL, and no move, for a target before the start or behind the end, or a `move` or target beyond signed 32
    /// bits, also in an image that is larger than that. An unknown `origin` counts from the start.
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;
    /// E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    /// Copies at most `count` bytes to `target` and stores the same sum in both results. E_FAIL, with the results not
    /// set, when `target` writes another number of bytes than it was given. The failure of a write is thrown as a
    /// `_com_error`, not returned: that is deliberate.
    HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* bytesRead,
                                     ULARGE_INTEGER* bytesWritten) override;
    /// E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
    /// E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE Revert() override;
    /// S_OK, and does nothing.
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
    /// S_OK, and does nothing.
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
    /// Type and size; never a name, whatever `flag` asks for.
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD flag) override;
    /// A stream over the same bytes at the same position. Its reference count begins at what this one's is, not at 1.
    /// E_OUTOFMEMORY, with `*clone` null.
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override;

private:
    ResourceStream(const ResourceStream&) = default;
    ~ResourceStream() override = default; // by the last Release

    const std::byte* data_ = nullptr; // the module's, never freed
    std::uint32_t size_ = 0;
    std::uint32_t position_ = 0;
};
