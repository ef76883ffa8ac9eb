#include "ui/ResourceStream.h"

#include <comdef.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>

namespace {

constexpr WORD LogoResource = 101;

[[noreturn]] void ThrowUnreadable() {
    throw _com_error(E_FAIL);
}

} // namespace

ResourceStream::ResourceStream() {
    const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(LogoResource), L"FILE");
    if (resource == nullptr)
        ThrowUnreadable();
    size_ = SizeofResource(nullptr, resource);
    const HGLOBAL loaded = LoadResource(nullptr, resource);
    if (loaded == nullptr)
        ThrowUnreadable();
    data_ = static_cast<const std::byte*>(LockResource(loaded));
    if (data_ == nullptr)
        ThrowUnreadable();
}

HRESULT ResourceStream::Read(void* buffer, ULONG count, ULONG* bytesRead) {
    const std::uint32_t available = std::min(size_ - position_, std::uint32_t{count});
    std::copy_n(data_ + position_, available, static_cast<std::byte*>(buffer));
    if (bytesRead != nullptr)
        *bytesRead = available;
    position_ += available;
    return S_OK;
}

HRESULT ResourceStream::Write(const void* /*buffer*/, ULONG /*count*/, ULONG* /*bytesWritten*/) {
    return E_NOTIMPL;
}

HRESULT ResourceStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    using Limits = std::numeric_limits<std::int32_t>;
    std::int64_t target = move.QuadPart;
    if (target < Limits::min() || target > Limits::max())
        return E_FAIL;
    if (origin == STREAM_SEEK_CUR)
        target += position_;
    else if (origin == STREAM_SEEK_END)
        target += size_;
    if (target < 0 || target > Limits::max() || target > size_)
        return E_FAIL;
    position_ = static_cast<std::uint32_t>(target);
    if (newPosition != nullptr)
        newPosition->QuadPart = position_;
    return S_OK;
}

HRESULT ResourceStream::SetSize(ULARGE_INTEGER /*size*/) {
    return E_NOTIMPL;
}

HRESULT ResourceStream::CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* bytesRead,
                               ULARGE_INTEGER* bytesWritten) {
    std::array<std::byte, 1024> chunk{};
    ULONGLONG total = 0;
    while (total < count.QuadPart) {
        ULONG read = 0;
        const auto wanted = static_cast<ULONG>(std::min<ULONGLONG>(count.QuadPart - total, chunk.size()));
        _com_util::CheckError(Read(chunk.data(), wanted, &read));
        if (read == 0)
            break;
        ULONG written = 0;
        _com_util::CheckError(target->Write(chunk.data(), read, &written));
        if (written != read)
            return E_FAIL;
        total += written;
    }
    for (ULARGE_INTEGER* const result : {bytesRead, bytesWritten}) {
        if (result != nullptr)
            result->QuadPart = total;
    }
    return S_OK;
}

HRESULT ResourceStream::Commit(DWORD /*flags*/) {
    return E_NOTIMPL;
}

HRESULT ResourceStream::Revert() {
    return E_NOTIMPL;
}

HRESULT ResourceStream::LockRegion(ULARGE_INTEGER /*offset*/, ULARGE_INTEGER /*count*/, DWORD /*type*/) {
    return S_OK;
}

HRESULT ResourceStream::UnlockRegion(ULARGE_INTEGER /*offset*/, ULARGE_INTEGER /*count*/, DWORD /*type*/) {
    return S_OK;
}

HRESULT ResourceStream::Stat(STATSTG* status, DWORD /*flag*/) {
    *status = {};
    status->type = STGTY_STREAM;
    status->cbSize.QuadPart = size_;
    return S_OK;
}

HRESULT ResourceStream::Clone(IStream** clone) {
    *clone = new (std::nothrow) ResourceStream(*this);
    return *clone != nullptr ? S_OK : E_OUTOFMEMORY;
}
