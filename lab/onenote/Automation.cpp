#include "lab/onenote/Automation.h"

#include <OneNoteLibrary.h>
#include <comdef.h>

#include <cstring>

namespace {

_COM_SMARTPTR_TYPEDEF(ICreateErrorInfo, __uuidof(ICreateErrorInfo));
_COM_SMARTPTR_TYPEDEF(IErrorInfo, __uuidof(IErrorInfo));

/// What a call comes to; its error information is set.
Outcome Call(AutomatedOneNote& oneNote, const std::wstring& member, const std::wstring& arguments = L"") {
    Outcome outcome = oneNote.OnCall(member, arguments);
    if (!outcome.description.empty()) {
        ICreateErrorInfoPtr error;
        CreateErrorInfo(&error);
        error->SetDescription(outcome.description.data()); // copied, not changed
        SetErrorInfo(0, IErrorInfoPtr(error));
    }
    return outcome;
}

/// By a pointer, since Wine's stub may pass an identifier that is not aligned, to which there may be no reference.
bool Is(const IID* iid, const IID& expected) {
    return std::memcmp(iid, &expected, sizeof expected) == 0;
}

/// A COM object that lives as long as it is referred to. It begins with one reference, its maker's. Members that nobody
/// calls answer E_NOTIMPL and set nothing: between processes, the proxy does.
template <typename Interface>
class Object : public Interface, public ISupportErrorInfo {
public:
    explicit Object(AutomatedOneNote& oneNote) : OneNote(oneNote) { OneNote.AddReference(); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (Is(&iid, __uuidof(Interface)) || Is(&iid, IID_IDispatch) || Is(&iid, IID_IUnknown))
            *object = static_cast<Interface*>(this);
        else if (Is(&iid, IID_ISupportErrorInfo))
            *object = static_cast<ISupportErrorInfo*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        OneNote.AddReference();
        return ++references_;
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        OneNote.ReleaseReference();
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
        return Is(&iid, __uuidof(Interface)) ? S_OK : S_FALSE;
    }

    // Calls by name, which nobody makes.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

protected:
    AutomatedOneNote& OneNote;

private:
    ULONG references_ = 1;
};

/// Lack of memory ends the process: the callers let no exception out.
template <typename T, typename... Arguments>
T* Make(AutomatedOneNote& oneNote, Arguments... arguments) {
    return new T(oneNote, arguments...);
}

class WindowObject : public Object<Window> {
public:
    WindowObject(AutomatedOneNote& oneNote, HWND handle) : Object(oneNote), handle_(handle) {}

    HRESULT STDMETHODCALLTYPE get_WindowHandle(MIDL_uhyper* handle) noexcept override {
        const Outcome outcome = Call(OneNote, L"WindowHandle");
        *handle = outcome.IsSuccess() ? reinterpret_cast<MIDL_uhyper>(handle_) : 0;
        return outcome.result;
    }

    HRESULT STDMETHODCALLTYPE get_CurrentPageId(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_CurrentSectionId(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_CurrentSectionGroupId(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_CurrentNotebookId(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE NavigateTo(BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FullPageView(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_FullPageView(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Active(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Active(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_DockedLocation(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_DockedLocation(LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Application(IOneNoteApplication**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_SideNote(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE NavigateToUrl(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDockedLocation(LONG, POINT) override { return E_NOTIMPL; }

private:
    HWND handle_;
};

class WindowsObject : public Object<Windows> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE get_Item(ULONG index, Window** window) noexcept override {
        const Outcome outcome = Call(OneNote, L"Item", L'(' + std::to_wstring(index) + L')');
        const std::vector<HWND> windows = OneNote.WindowsByIndex();
        *window = nullptr;
        if (!outcome.IsSuccess())
            return outcome.result;
        if (index >= windows.size())
            return E_INVALIDARG;
        *window = MakeWindow(windows[index]);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Count(ULONG* count) noexcept override {
        const Outcome outcome = Call(OneNote, L"Count");
        *count = outcome.IsSuccess() ? static_cast<ULONG>(OneNote.WindowsByIndex().size()) : 0;
        return outcome.result;
    }
    HRESULT STDMETHODCALLTYPE get_CurrentWindow(Window** window) noexcept override {
        const Outcome outcome = Call(OneNote, L"CurrentWindow");
        *window = outcome.IsSuccess() ? MakeWindow(OneNote.CurrentWindow()) : nullptr;
        return outcome.result;
    }

    // NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the library's property is called _NewEnum
    HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown**) override { return E_NOTIMPL; }

private:
    Window* MakeWindow(HWND handle) const { return handle == nullptr ? nullptr : Make<WindowObject>(OneNote, handle); }
};

/// As the record shows it; a null text is none.
std::wstring Quoted(BSTR text) {
    return text == nullptr ? L"null" : L'"' + std::wstring(text, SysStringLen(text)) + L'"';
}

class ApplicationObject : public Object<IOneNoteApplication> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const Outcome outcome = Is(&iid, __uuidof(IOneNoteApplication)) ? OneNote.OnQueryApplication() : Outcome{};
        if (outcome.IsSuccess())
            return Object::QueryInterface(iid, object);
        *object = nullptr;
        return outcome.result;
    }
    HRESULT STDMETHODCALLTYPE get_Windows(Windows** windows) noexcept override {
        const Outcome outcome = Call(OneNote, L"Windows");
        *windows = outcome.IsSuccess() ? Make<WindowsObject>(OneNote) : nullptr;
        return outcome.result;
    }
    HRESULT STDMETHODCALLTYPE NavigateTo(BSTR hierarchyObject, BSTR object, VARIANT_BOOL newWindow) noexcept override {
        const Outcome outcome =
            Call(OneNote, L"NavigateTo",
                 L'(' + Quoted(hierarchyObject) + L", " + Quoted(object) + L", " + std::to_wstring(newWindow) + L')');
        if (outcome.IsSuccess())
            OneNote.Navigate(newWindow != VARIANT_FALSE);
        return outcome.result;
    }

    HRESULT STDMETHODCALLTYPE GetHierarchy(BSTR, LONG, BSTR*, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UpdateHierarchy(BSTR, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenHierarchy(BSTR, BSTR, BSTR*, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteHierarchy(BSTR, DATE, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateNewPage(BSTR, BSTR*, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CloseNotebook(BSTR, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHierarchyParent(BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPageContent(BSTR, BSTR*, LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UpdatePageContent(BSTR, DATE, LONG, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetBinaryPageContent(BSTR, BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeletePageContent(BSTR, BSTR, DATE, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE NavigateToUrl(BSTR, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Publish(BSTR, BSTR, LONG, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenPackage(BSTR, BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHyperlinkToObject(BSTR, BSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindPages(BSTR, BSTR, BSTR*, VARIANT_BOOL, VARIANT_BOOL, LONG) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindMeta(BSTR, BSTR, BSTR*, VARIANT_BOOL, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSpecialLocation(LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MergeFiles(BSTR, BSTR, BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QuickFiling(IDispatch**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SyncHierarchy(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetFilingLocation(LONG, LONG, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Dummy1(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MergeSections(BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_COMAddIns(IDispatch**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_LanguageSettings(IDispatch**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWebHyperlinkToObject(BSTR, BSTR, BSTR*) override { return E_NOTIMPL; }
};

} // namespace

HRESULT AutomatedOneNote::QueryInterface(REFIID iid, void** object) {
    const bool known = iid == IID_IClassFactory || iid == IID_IUnknown;
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
}

HRESULT AutomatedOneNote::CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept {
    *object = nullptr;
    if (outer != nullptr)
        return CLASS_E_NOAGGREGATION;
    const Outcome outcome = Call(*this, L"CreateInstance");
    if (!outcome.IsSuccess())
        return outcome.result;
    auto* const application = Make<ApplicationObject>(*this);
    const HRESULT result = application->QueryInterface(iid, object);
    application->Release();
    return result;
}

void AutomatedOneNote::ReleaseReference() {
    if (--references_ == 0)
        OnLastReferenceReleased();
}
