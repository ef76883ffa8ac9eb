#pragma once

#include "lab/onenote/Outcome.h"

#include <unknwn.h>

#include <string>
#include <vector>

/// A OneNote that clients can automate: its class object, which makes application objects, from which clients get the
/// others. What stands behind them is left to derived classes. Outlives them, and COM's use of it; for one thread.
class AutomatedOneNote : public IClassFactory {
public:
    AutomatedOneNote() = default;
    AutomatedOneNote(const AutomatedOneNote&) = delete;
    AutomatedOneNote& operator=(const AutomatedOneNote&) = delete;
    virtual ~AutomatedOneNote() = default;

    // The class object is not counted: COM keeps references of its own to it. Nor can it be locked: references to the
    // other objects tell whether it is in use.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    /// References that clients hold, to all objects together.
    int References() const { return references_; }

    // The rest is for the objects.

    void AddReference() { ++references_; }
    void ReleaseReference();

    /// What a call comes to. The arguments are as a record shows them, in parentheses.
    virtual Outcome OnCall(const std::wstring& member, const std::wstring& arguments) = 0;
    /// What a query of an application object for its own interface comes to. Between processes COM makes some of these.
    virtual Outcome OnQueryApplication() { return {}; }
    virtual void OnLastReferenceReleased() {}

    /// A null handle is a null window.
    virtual std::vector<HWND> WindowsByIndex() const = 0;
    /// Null when there is none.
    virtual HWND CurrentWindow() const = 0;
    virtual void Navigate(bool inNewWindow) = 0;

private:
    int references_ = 0;
};
