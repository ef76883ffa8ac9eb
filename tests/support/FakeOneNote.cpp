#include "tests/support/FakeOneNote.h"

#include "tests/support/ComErrors.h"

#include <gtest/gtest.h>
#include <utility>

namespace {

/// Counts its references in the fake, and lives as long as a client holds one.
template <typename Interface>
class Object : public Interface, public ISupportErrorInfo {
public:
    Object(FakeOneNote& oneNote, const IID& iid) : OneNote(oneNote), iid_(iid) {}
    virtual ~Object() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (iid == iid_ || iid == IID_IUnknown)
            *object = static_cast<Interface*>(this);
        else if (iid == IID_ISupportErrorInfo)
            *object = static_cast<ISupportErrorInfo*>(this);
        if (*object == nullptr)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        ++OneNote.References;
        return ++references_;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        --OneNote.References;
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override { return iid == iid_ ? S_OK : S_FALSE; }

protected:
    FakeOneNote& OneNote;

private:
    IID iid_;
    ULONG references_ = 0;
};

/// The dispatch half of the dual interfaces, which nobody calls.
template <typename Interface>
class DualObject : public Object<Interface> {
public:
    using Object<Interface>::Object;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
};

class FakeWindow : public DualObject<IOneNoteWindow> {
public:
    FakeWindow(FakeOneNote& oneNote, HWND handle) : DualObject(oneNote, IID_IOneNoteWindow), handle_(handle) {}

    HRESULT STDMETHODCALLTYPE get_WindowHandle(std::uint64_t* handle) override {
        *handle = reinterpret_cast<std::uint64_t>(handle_);
        return OneNote.Answer(FakeOneNote::Call::WindowHandle);
    }

private:
    HWND handle_;
};

class FakeWindows : public DualObject<IOneNoteWindows> {
public:
    explicit FakeWindows(FakeOneNote& oneNote) : DualObject(oneNote, IID_IOneNoteWindows) {}

    HRESULT STDMETHODCALLTYPE get_Item(std::uint32_t index, IOneNoteWindow** window) override {
        const bool last = index + 1 == OneNote.Windows.size();
        return GiveWindow(index, last ? OneNote.Answer(FakeOneNote::Call::Item) : S_OK, window);
    }
    HRESULT STDMETHODCALLTYPE get_Count(std::uint32_t* count) override {
        *count = static_cast<std::uint32_t>(OneNote.Windows.size());
        return OneNote.Answer(FakeOneNote::Call::Count);
    }
    HRESULT STDMETHODCALLTYPE get_NewEnum(IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_CurrentWindow(IOneNoteWindow** window) override {
        return GiveWindow(0, OneNote.Answer(FakeOneNote::Call::CurrentWindow), window);
    }

private:
    HRESULT GiveWindow(std::size_t index, HRESULT answer, IOneNoteWindow** window) const {
        *window = nullptr;
        if (SUCCEEDED(answer) && index < OneNote.Windows.size() && OneNote.Windows[index] != nullptr) {
            *window = new FakeWindow(OneNote, OneNote.Windows[index]);
            (*window)->AddRef();
        }
        return answer;
    }
};

class FakeApplication : public DualObject<IOneNoteApplication> {
public:
    explicit FakeApplication(FakeOneNote& oneNote) : DualObject(oneNote, IID_IOneNoteApplication) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const HRESULT answer = OneNote.Answer(FakeOneNote::Call::QueryApplication);
        if (iid != IID_IOneNoteApplication ||
            (SUCCEEDED(answer) && OneNote.Null != FakeOneNote::Call::QueryApplication))
            return DualObject::QueryInterface(iid, object);
        *object = nullptr;
        return answer;
    }
    HRESULT STDMETHODCALLTYPE get_Windows(IOneNoteWindows** windows) override {
        *windows = nullptr;
        const auto call =
            std::exchange(askedForWindows_, true) ? FakeOneNote::Call::WindowsAgain : FakeOneNote::Call::Windows;
        const HRESULT answer = OneNote.Answer(call);
        if (SUCCEEDED(answer) && OneNote.Null != call) {
            *windows = new FakeWindows(OneNote);
            (*windows)->AddRef();
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE NavigateTo(BSTR hierarchyObjectId, BSTR objectId, VARIANT_BOOL newWindow) override {
        OneNote.Navigations.push_back({Text(hierarchyObjectId), Text(objectId), newWindow});
        const HRESULT answer = OneNote.Answer(FakeOneNote::Call::NavigateTo);
        if (SUCCEEDED(answer) && OneNote.OpenedByNavigation != nullptr)
            OneNote.Windows.push_back(OneNote.OpenedByNavigation);
        return answer;
    }

    HRESULT STDMETHODCALLTYPE GetHierarchy(BSTR, std::int32_t, BSTR*, std::int32_t) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UpdateHierarchy(BSTR, std::int32_t) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenHierarchy(BSTR, BSTR, BSTR*, std::int32_t) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteHierarchy(BSTR, DATE, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateNewPage(BSTR, BSTR*, std::int32_t) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CloseNotebook(BSTR, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHierarchyParent(BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPageContent(BSTR, BSTR*, std::int32_t, std::int32_t) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UpdatePageContent(BSTR, DATE, std::int32_t, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetBinaryPageContent(BSTR, BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeletePageContent(BSTR, BSTR, DATE, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE NavigateToUrl(BSTR, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Publish(BSTR, BSTR, std::int32_t, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenPackage(BSTR, BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHyperlinkToObject(BSTR, BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindPages(BSTR, BSTR, BSTR*, VARIANT_BOOL, VARIANT_BOOL, std::int32_t) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindMeta(BSTR, BSTR, BSTR*, VARIANT_BOOL, std::int32_t) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSpecialLocation(std::int32_t, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MergeFiles(BSTR, BSTR, BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QuickFiling(IDispatch**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SyncHierarchy(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetFilingLocation(std::int32_t, std::int32_t, BSTR) override { return E_NOTIMPL; }

private:
    static std::optional<std::wstring> Text(BSTR text) {
        return text == nullptr ? std::nullopt : std::optional<std::wstring>(std::in_place, text, SysStringLen(text));
    }

    bool askedForWindows_ = false;
};

class FakeFactory : public Object<IClassFactory> {
public:
    explicit FakeFactory(FakeOneNote& oneNote) : Object(oneNote, IID_IClassFactory) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* /*outer*/, REFIID iid, void** object) override {
        *object = nullptr;
        const HRESULT answer = OneNote.Answer(FakeOneNote::Call::CreateInstance);
        if (FAILED(answer))
            return answer;
        auto* const application = new FakeApplication(OneNote);
        application->AddRef();
        const HRESULT result = application->QueryInterface(iid, object);
        application->Release(); // a client that got nothing leaves nothing behind
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

} // namespace

FakeOneNote::FakeOneNote() : factory_(new FakeFactory(*this)) {
    factory_->AddRef();
    --References; // this one is the fake's own
}

FakeOneNote::~FakeOneNote() {
    if (registration_ != 0)
        CoRevokeClassObject(registration_);
    factory_->Release();
}

void FakeOneNote::Register() {
    CoRegisterClassObject(CLSID_OneNoteApplication, factory_, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_);
    References = 0; // COM holds some on the factory; from now on they are the clients'
}

void FakeOneNote::Fail(Call call, HRESULT result, const wchar_t* description) {
    failure_ = {call, result, description};
}

HRESULT FakeOneNote::Answer(Call call) const {
    if (!failure_ || failure_->call != call)
        return S_OK;
    if (failure_->description != nullptr) {
        IErrorInfo* const information = MakeErrorInformation(failure_->description);
        SetErrorInfo(0, information);
        information->Release();
    }
    return failure_->result;
}

std::ostream& operator<<(std::ostream& stream, const FakeOneNote::Navigation& navigation) {
    return stream << "NavigateTo(" << testing::PrintToString(navigation.hierarchyObjectId) << ", "
                  << testing::PrintToString(navigation.objectId) << ", " << navigation.newWindow << ')';
}
