#include "lab/onenote/Automation.h"

#include "lab/onenote/Behaviour.h"
#include "lab/onenote/OpenWindows.h"
#include "lab/onenote/Record.h"

#include <OneNoteLibrary.h>

#include <string>

namespace {

bool Asked = false;

/// To all objects together.
unsigned References = 0;

void OnReferenceReleased() {
    if (--References == 0)
        Record(L"No references");
}

/// What a client gets for an answer of `Behaviour`.
HRESULT Result(HRESULT answer) {
    return FAILED(answer) ? answer : S_OK;
}

/// A COM object that lives as long as it is referred to. It begins with one reference, its maker's. Members that nobody
/// calls answer E_NOTIMPL and set nothing: between processes, the proxy does.
template <typename Interface>
class Object : public Interface, public ISupportErrorInfo {
public:
    Object() { ++References; }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (iid == __uuidof(Interface) || iid == IID_IDispatch || iid == IID_IUnknown)
            *object = static_cast<Interface*>(this);
        else if (iid == IID_ISupportErrorInfo)
            *object = static_cast<ISupportErrorInfo*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        ++References;
        return ++references_;
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        OnReferenceReleased();
        return left;
    }
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == __uuidof(Interface) ? S_OK : S_FALSE;
    }

    // Calls by name, which nobody makes.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

private:
    ULONG references_ = 1;
};

/// Lack of memory ends the process: the callers let no exception out.
template <typename T, typename... Arguments>
T* Make(Arguments... arguments) {
    return new T(arguments...);
}

class WindowObject : public Object<Window> {
public:
    explicit WindowObject(HWND handle) : handle_(handle) {}

    HRESULT STDMETHODCALLTYPE get_WindowHandle(MIDL_uhyper* handle) noexcept override {
        const HRESULT answer = Behaviour::OnCall(L"WindowHandle");
        *handle = answer == S_OK ? reinterpret_cast<MIDL_uhyper>(handle_) : 0;
        return Result(answer);
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
    HRESULT STDMETHODCALLTYPE get_Application(IApplication**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_SideNote(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE NavigateToUrl(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDockedLocation(LONG, POINT) override { return E_NOTIMPL; }

private:
    HWND handle_;
};

class WindowsObject : public Object<Windows> {
public:
    HRESULT STDMETHODCALLTYPE get_Item(ULONG index, Window** window) noexcept override {
        const HRESULT answer = Behaviour::OnCall(L"Item", L'(' + std::to_wstring(index) + L')');
        const std::vector<HWND> windows = WindowsInOrder();
        *window = nullptr;
        if (answer == S_OK && index >= windows.size())
            return E_INVALIDARG;
        if (answer == S_OK)
            *window = Make<WindowObject>(windows[index]);
        return Result(answer);
    }
    HRESULT STDMETHODCALLTYPE get_Count(ULONG* count) noexcept override {
        const HRESULT answer = Behaviour::OnCall(L"Count");
        *count = answer == S_OK ? static_cast<ULONG>(WindowsInOrder().size()) : 0;
        return Result(answer);
    }
    HRESULT STDMETHODCALLTYPE get_CurrentWindow(Window** window) noexcept override {
        const HRESULT answer = Behaviour::OnCall(L"CurrentWindow");
        HWND current = CurrentWindow();
        *window = answer == S_OK && current != nullptr ? Make<WindowObject>(current) : nullptr;
        return Result(answer);
    }

    // NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the library's property is called _NewEnum
    HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown**) override { return E_NOTIMPL; }
};

/// As the record shows it; a null text is none.
std::wstring Quoted(BSTR text) {
    return text == nullptr ? L"null" : L'"' + std::wstring(text, SysStringLen(text)) + L'"';
}

class ApplicationObject : public Object<IApplication> {
public:
    HRESULT STDMETHODCALLTYPE get_Windows(Windows** windows) noexcept override {
        const HRESULT answer = Behaviour::OnCall(L"Windows");
        *windows = answer == S_OK ? Make<WindowsObject>() : nullptr;
        return Result(answer);
    }
    HRESULT STDMETHODCALLTYPE NavigateTo(BSTR hierarchyObject, BSTR object, VARIANT_BOOL newWindow) noexcept override {
        const HRESULT answer =
            Behaviour::OnCall(L"NavigateTo", L'(' + Quoted(hierarchyObject) + L", " + Quoted(object) + L", " +
                                                 std::to_wstring(newWindow) + L')');
        if (answer == S_OK && (newWindow != VARIANT_FALSE || WindowsInOrder().empty()))
            OpenWindow();
        return Result(answer);
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

/// Lives as long as the program, and is not counted: COM keeps references of its own to it.
class Factory : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IClassFactory || iid == IID_IUnknown;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept override {
        *object = nullptr;
        if (outer != nullptr)
            return CLASS_E_NOAGGREGATION;
        Asked = true;
        const HRESULT answer = Behaviour::OnCall(L"CreateInstance");
        if (answer != S_OK)
            return Result(answer);
        auto* const application = Make<ApplicationObject>();
        const HRESULT result = application->QueryInterface(iid, object);
        application->Release();
        return result;
    }
    /// Locks nothing, on purpose: it ends when nobody uses it.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

} // namespace

IClassFactory* ClassObject() {
    static Factory factory;
    return &factory;
}

bool HadClients() {
    return Asked;
}

bool HasClients() {
    return References != 0;
}
