#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>

/// How many objects of `UnknownImpl` live in the process.
inline std::atomic<LONG> LiveObjectCount = 0;

/// Reference counting and interface lookup for a COM object that implements `Interface`, which derives from IUnknown.
/// The count begins at 1: the creator's own reference. The last `Release` deletes the object. Any thread.
template <typename Interface>
class UnknownImpl : public Interface {
public:
    UnknownImpl& operator=(const UnknownImpl&) = delete;

    /// S_OK, or E_NOINTERFACE with `*object` null.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override {
        *object = FindInterface(interfaceId);
        if (*object == nullptr)
            return E_NOINTERFACE;
        this->AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override {
        IUnknown* const controller = ControllingObject();
        return controller == this ? ++references_ : controller->AddRef();
    }

    ULONG STDMETHODCALLTYPE Release() override {
        IUnknown* const controller = ControllingObject();
        if (controller != this)
            return controller->Release();
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    UnknownImpl() { ++LiveObjectCount; }

    /// A copy begins with the references of the original and is not counted as live, though its end is counted. That is
    /// deliberate; `ResourceStream::Clone` hands out such copies.
    UnknownImpl(const UnknownImpl& original) : Interface(original), references_(original.references_.load()) {}

    virtual ~UnknownImpl() { --LiveObjectCount; }

    /// This object's pointer for the interface, without a reference, or null.
    virtual void* FindInterface(REFIID interfaceId) {
        const bool known = interfaceId == __uuidof(Interface) || interfaceId == __uuidof(IUnknown);
        return known ? static_cast<Interface*>(this) : nullptr;
    }

    /// The object whose reference count is used: this one, unless a derived class makes it a part of another.
    virtual IUnknown* ControllingObject() { return this; }

private:
    std::atomic<ULONG> references_ = 1;
};
