#pragma once

#include <windows.h>

#include <comdef.h>
#include <oaidl.h>

#include <cstdint>

// OneNote's automation interfaces as its type library 1.1 publishes them (OneNote 2013 and later). They are declared
// here because the program is built without that library. The order of the members is the order of the slots that a
// call goes through: nothing may be moved or left out. Each interface ends with the last member that the program calls.
// All calls are synchronous and cross to OneNote's process; COM must be initialised on the calling thread.

inline constexpr CLSID CLSID_OneNoteApplication = {
    0xD7FAC39E, 0x7FF1, 0x49AA, {0x98, 0xCF, 0xA1, 0xDD, 0xD3, 0x16, 0x33, 0x7E}};
inline constexpr IID IID_IApplication = {0x452AC71A, 0xB655, 0x4967, {0xA2, 0x08, 0xA4, 0xCC, 0x39, 0xDD, 0x79, 0x49}};
inline constexpr IID IID_IOneNoteWindows = {
    0x6D4B9C3E, 0xCC05, 0x493F, {0x85, 0xE2, 0x43, 0xD1, 0x00, 0x6D, 0xF9, 0x6A}};
inline constexpr IID IID_IOneNoteWindow = {
    0x8E8304B8, 0xCBD1, 0x44F8, {0xB0, 0xE8, 0x89, 0xC6, 0x25, 0xB2, 0x00, 0x2E}};

/// One window of OneNote.
struct IOneNoteWindow : IDispatch {
    /// A window handle, which may belong to a window embedded in a frame.
    virtual HRESULT STDMETHODCALLTYPE get_WindowHandle(std::uint64_t* handle) = 0;
};

/// The open windows of OneNote; `index` counts from 0.
struct IOneNoteWindows : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_Item(std::uint32_t index, IOneNoteWindow** window) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Count(std::uint32_t* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_NewEnum(IUnknown** enumerator) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CurrentWindow(IOneNoteWindow** window) = 0;
};

/// OneNote itself. The enumerations of the type library stand as 4-byte integers here.
struct IApplication : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE GetHierarchy(BSTR startNodeId, std::int32_t scope, BSTR* xml,
                                                   std::int32_t schema) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdateHierarchy(BSTR changesXml, std::int32_t schema) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenHierarchy(BSTR path, BSTR relativeToObjectId, BSTR* objectId,
                                                    std::int32_t ifNotExist) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteHierarchy(BSTR objectId, DATE expectedLastModified,
                                                      VARIANT_BOOL deletePermanently) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateNewPage(BSTR sectionId, BSTR* pageId, std::int32_t style) = 0;
    virtual HRESULT STDMETHODCALLTYPE CloseNotebook(BSTR notebookId, VARIANT_BOOL force) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHierarchyParent(BSTR objectId, BSTR* parentId) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPageContent(BSTR pageId, BSTR* xml, std::int32_t pageInfo,
                                                     std::int32_t schema) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdatePageContent(BSTR changesXml, DATE expectedLastModified, std::int32_t schema,
                                                        VARIANT_BOOL force) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBinaryPageContent(BSTR pageId, BSTR callbackId, BSTR* base64) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeletePageContent(BSTR pageId, BSTR objectId, DATE expectedLastModified,
                                                        VARIANT_BOOL force) = 0;
    virtual HRESULT STDMETHODCALLTYPE NavigateTo(BSTR hierarchyObjectId, BSTR objectId, VARIANT_BOOL newWindow) = 0;
    virtual HRESULT STDMETHODCALLTYPE NavigateToUrl(BSTR url, VARIANT_BOOL newWindow) = 0;
    virtual HRESULT STDMETHODCALLTYPE Publish(BSTR hierarchyId, BSTR targetFilePath, std::int32_t format,
                                              BSTR exporterClsid) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenPackage(BSTR packagePath, BSTR destinationPath, BSTR* outPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHyperlinkToObject(BSTR hierarchyId, BSTR pageContentObjectId, BSTR* link) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPages(BSTR startNodeId, BSTR searchString, BSTR* xml,
                                                VARIANT_BOOL includeUnindexed, VARIANT_BOOL display,
                                                std::int32_t schema) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindMeta(BSTR startNodeId, BSTR searchStringName, BSTR* xml,
                                               VARIANT_BOOL includeUnindexed, std::int32_t schema) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSpecialLocation(std::int32_t location, BSTR* path) = 0;
    virtual HRESULT STDMETHODCALLTYPE MergeFiles(BSTR baseFile, BSTR clientFile, BSTR serverFile, BSTR targetFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE QuickFiling(IDispatch** dialog) = 0;
    virtual HRESULT STDMETHODCALLTYPE SyncHierarchy(BSTR hierarchyId) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFilingLocation(std::int32_t location, std::int32_t locationType,
                                                        BSTR sectionId) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Windows(IOneNoteWindows** windows) = 0;
};

using OneNoteWindowPtr = _com_ptr_t<_com_IIID<IOneNoteWindow, &IID_IOneNoteWindow>>;
using OneNoteWindowsPtr = _com_ptr_t<_com_IIID<IOneNoteWindows, &IID_IOneNoteWindows>>;
using OneNoteApplicationPtr = _com_ptr_t<_com_IIID<IApplication, &IID_IApplication>>;

/// Connects to OneNote, which COM starts when it is not running. On failure the HRESULT is returned
/// (REGDB_E_CLASSNOTREG where desktop OneNote is absent) and `application` is null, as it is when a server answers
/// success without an object; what it held before is released in any case.
HRESULT CreateOneNoteApplication(OneNoteApplicationPtr& application);

/// Throws the `_com_error` of a failed call, with the error information that `object` gave for its interface.
template <typename Interface>
void ThrowIfCallFailed(HRESULT result, const Interface& object) {
    if (FAILED(result))
        _com_issue_errorex(result, object.GetInterfacePtr(), Interface::GetIID());
}

// The calls that are made from more than one place. Each throws the `_com_error` of a failing HRESULT, and E_POINTER
// when the pointer it is given is null: that is what _com_ptr_t does when a null one is followed.

/// Connects as `CreateOneNoteApplication` does. The result may be null though the call succeeded.
OneNoteApplicationPtr ConnectToOneNote();

OneNoteWindowsPtr WindowsOf(const OneNoteApplicationPtr& application);
std::uint32_t CountOf(const OneNoteWindowsPtr& windows);
HWND HandleOf(const OneNoteWindowPtr& window);
