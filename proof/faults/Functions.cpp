#include "proof/faults/Functions.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace {

constexpr std::uint64_t Minus1 = 0xFFFFFFFFFFFFFFFF;

// Functions that say why they failed by GetLastError.

constexpr Way Zero(const char* name, DWORD error) {
    return {name, 0, error, 0, {}, false};
}
constexpr Way Result(const char* name, std::uint64_t result, DWORD error = 0) {
    return {name, result, error, 0, {}, false};
}

/// One of the C runtime; `cause` is what Windows told it.
constexpr Way Crt(const char* name, std::uint64_t result, int error, DWORD cause = 0) {
    return {name, result, cause, error, {}, false};
}

/// One that gives no object through that parameter.
constexpr Way Clears(const char* name, std::uint64_t result, std::size_t parameter) {
    return {name, result, 0, 0, {parameter, sizeof(void*)}, false};
}

constexpr Way Afterwards(Way way) {
    way.afterwards = true;
    return way;
}

constexpr Function Fails(const char* name, const Way& way) {
    return {name, {way}, nullptr};
}
constexpr Function Fails(const char* name, const Way& way, const Way& other) {
    return {name, {way, other}, nullptr};
}
constexpr Function Safe(const char* name, const char* reason) {
    return {name, {}, reason};
}

constexpr Way NoMemory = Zero("ERROR_NOT_ENOUGH_MEMORY", ERROR_NOT_ENOUGH_MEMORY);
constexpr Way InvalidHandle = Zero("ERROR_INVALID_HANDLE", ERROR_INVALID_HANDLE);
constexpr Way AccessDenied = Zero("ERROR_ACCESS_DENIED", ERROR_ACCESS_DENIED);
constexpr Way NoResource = Zero("ERROR_RESOURCE_NAME_NOT_FOUND", ERROR_RESOURCE_NAME_NOT_FOUND);
constexpr Way StatusAccessDenied = Result("ERROR_ACCESS_DENIED", ERROR_ACCESS_DENIED);
constexpr Way StatusNoResources = Result("ERROR_NO_SYSTEM_RESOURCES", ERROR_NO_SYSTEM_RESOURCES);
constexpr Way StatusInvalidHandle = Result("ERROR_INVALID_HANDLE", ERROR_INVALID_HANDLE);
constexpr Way OutOfMemory = Result("E_OUTOFMEMORY", 0x8007000E);
constexpr Way GraphicsOutOfMemory = Result("OutOfMemory", 3);
constexpr Way GraphicsGenericError = Result("GenericError", 1);
constexpr Way CrtNoMemory = Crt("null, ENOMEM", 0, ENOMEM);
constexpr Way CrtRefused = Crt("null, EACCES", 0, EACCES, ERROR_ACCESS_DENIED);
constexpr Way CrtTooManyFiles = Crt("null, EMFILE", 0, EMFILE);
constexpr Way DiskFullMinus1 = Crt("-1, ENOSPC", Minus1, ENOSPC, ERROR_DISK_FULL);
constexpr Way BadFileMinus1 = Crt("-1, EBADF", Minus1, EBADF);
constexpr Way JustNull = Zero("null", 0);

// Why a function does not fail.
constexpr const char* NoFailure = "documents no failure";
constexpr const char* AnswerNoFailure = "its answer tells a state, not a failure";
constexpr const char* WrongArguments = "fails for wrong arguments only, which are constants here";
constexpr const char* Pure = "computes from its arguments alone";
constexpr const char* Data = "is a variable, not a function";
constexpr const char* Unwinding = "belongs to how exceptions travel and does not return a failure";
constexpr const char* Start = "is called by the C runtime's start, which ends the process itself when it fails";
constexpr const char* Debugging = "is called for a debugger only";
constexpr const char* Raises = "raises an exception instead of returning a failure, and only for a damaged object";

constexpr Function Table[] = {
    // advapi32
    Fails("RegCloseKey", StatusInvalidHandle),
    Fails("RegCreateKeyExW", StatusAccessDenied),
    Fails("RegDeleteTreeW", StatusAccessDenied),
    Fails("RegDeleteValueW", StatusAccessDenied),
    Fails("RegOpenKeyExW", StatusAccessDenied),
    Fails("RegQueryValueExW", StatusAccessDenied, StatusNoResources),
    Fails("RegSetValueExW", StatusAccessDenied),

    // comctl32
    Fails("TaskDialogIndirect", OutOfMemory),

    // gdi32
    Fails("CreateFontIndirectW", JustNull),
    Fails("GetDeviceCaps", Result("0", 0)),

    // gdiplus
    Fails("GdipAlloc", JustNull),
    Fails("GdipCloneBrush", GraphicsOutOfMemory),
    Fails("GdipCloneImage", GraphicsOutOfMemory),
    Fails("GdipCreateBitmapFromScan0", GraphicsOutOfMemory),
    Fails("GdipCreateBitmapFromStream", GraphicsOutOfMemory),
    Fails("GdipCreateFont", GraphicsOutOfMemory),
    Fails("GdipCreateFontFamilyFromName", Result("FontFamilyNotFound", 14)),
    Fails("GdipCreateFromHDC", GraphicsOutOfMemory),
    Fails("GdipCreateSolidFill", GraphicsOutOfMemory),
    Fails("GdipCreateStringFormat", GraphicsOutOfMemory),
    Fails("GdipDeleteBrush", GraphicsGenericError),
    Fails("GdipDeleteFont", GraphicsGenericError),
    Fails("GdipDeleteFontFamily", GraphicsGenericError),
    Fails("GdipDeleteGraphics", GraphicsGenericError),
    Fails("GdipDeleteStringFormat", GraphicsGenericError),
    Fails("GdipDisposeImage", GraphicsGenericError),
    Fails("GdipDrawImageRectI", GraphicsOutOfMemory),
    Fails("GdipDrawImageRectRect", GraphicsOutOfMemory),
    Fails("GdipDrawString", GraphicsOutOfMemory),
    Fails("GdipFillRectangleI", GraphicsOutOfMemory),
    Safe("GdipFree", NoFailure),
    Fails("GdipGetGenericFontFamilySansSerif", Result("FontFamilyNotFound", 14)),
    Fails("GdipGetImageGraphicsContext", GraphicsOutOfMemory),
    Fails("GdipGetLogFontW", GraphicsOutOfMemory),
    Fails("GdipGraphicsClear", GraphicsOutOfMemory),
    Fails("GdipSetClipRectI", GraphicsOutOfMemory),
    Fails("GdipSetCompositingQuality", GraphicsGenericError),
    Fails("GdiplusStartup", GraphicsOutOfMemory),

    // kernel32
    Fails("AddVectoredExceptionHandler", JustNull),
    Fails("ActivateActCtx", InvalidHandle),
    Fails("CloseHandle", InvalidHandle),
    Fails("CreateActCtxW",
          Result("INVALID_HANDLE_VALUE, ERROR_SXS_CANT_GEN_ACTCTX", Minus1, ERROR_SXS_CANT_GEN_ACTCTX)),
    Fails("DeactivateActCtx", InvalidHandle),
    Fails("CreateDirectoryW", AccessDenied, Zero("ERROR_SUCCESS", 0)),
    Fails("CreateEventA", NoMemory),
    Fails("CreateEventW", NoMemory),
    Fails("CreateFileW", Result("INVALID_HANDLE_VALUE, ERROR_SHARING_VIOLATION", Minus1, ERROR_SHARING_VIOLATION)),
    Fails("CreateSemaphoreA", NoMemory),
    Safe("DeleteCriticalSection", NoFailure),
    Fails("DuplicateHandle", InvalidHandle),
    Safe("EnterCriticalSection", Raises),
    Safe("ExitProcess", NoFailure),
    Fails("FindActCtxSectionStringW", Zero("ERROR_SXS_KEY_NOT_FOUND", ERROR_SXS_KEY_NOT_FOUND)),
    Fails("FindResourceW", NoResource),
    Fails("FormatMessageA", Zero("ERROR_MR_MID_NOT_FOUND", ERROR_MR_MID_NOT_FOUND)),
    Fails("FormatMessageW", Zero("ERROR_MR_MID_NOT_FOUND", ERROR_MR_MID_NOT_FOUND)),
    Fails("FreeLibrary", InvalidHandle),
    Safe("GetCurrentProcess", NoFailure),
    Safe("GetCurrentProcessId", NoFailure),
    Safe("GetCurrentThread", NoFailure),
    Safe("GetCurrentThreadId", NoFailure),
    Fails("GetExitCodeProcess", InvalidHandle),
    Fails("GetFileSize", Result("INVALID_FILE_SIZE, ERROR_IO_DEVICE", 0xFFFFFFFF, ERROR_IO_DEVICE)),
    Fails("GetFileSizeEx", Zero("ERROR_IO_DEVICE", ERROR_IO_DEVICE)),
    Fails("GetHandleInformation", InvalidHandle),
    Safe("GetLastError", NoFailure),
    Fails("GetModuleHandleA", Zero("ERROR_MOD_NOT_FOUND", ERROR_MOD_NOT_FOUND)),
    Fails("GetModuleHandleW", Zero("ERROR_MOD_NOT_FOUND", ERROR_MOD_NOT_FOUND)),
    Fails("GetModuleFileNameW", NoMemory),
    Fails("GetProcAddress", Zero("ERROR_PROC_NOT_FOUND", ERROR_PROC_NOT_FOUND)),
    Fails("GetProcessAffinityMask", InvalidHandle),
    Fails("GetModuleHandleExW", Zero("ERROR_MOD_NOT_FOUND", ERROR_MOD_NOT_FOUND)),
    Safe("GetProcessHeap", NoFailure),
    Safe("GetStartupInfoW", NoFailure),
    Fails("GetSystemDirectoryW", NoMemory),
    Safe("GetSystemTimeAsFileTime", NoFailure),
    Safe("GetSystemTimePreciseAsFileTime", NoFailure),
    Fails("GetTempPathW", NoMemory),
    Fails("GetThreadContext", InvalidHandle),
    Fails("GetThreadPriority", Result("THREAD_PRIORITY_ERROR_RETURN", 0x7FFFFFFF, ERROR_INVALID_HANDLE)),
    Safe("GetTickCount", NoFailure),
    Safe("GetTickCount64", NoFailure),
    Fails("GetUserDefaultLocaleName", Zero("ERROR_INSUFFICIENT_BUFFER", ERROR_INSUFFICIENT_BUFFER)),
    Fails("HeapAlloc", JustNull),
    Fails("HeapFree", InvalidHandle),
    Fails("WerSetFlags", OutOfMemory),
    Fails("HeapSetInformation", Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Safe("InitializeCriticalSection", "has not failed since Windows Vista"),
    Safe("IsDBCSLeadByteEx", AnswerNoFailure),
    Safe("IsDebuggerPresent", AnswerNoFailure),
    Fails("IsWow64Process", InvalidHandle),
    Fails("K32EnumProcesses", NoMemory),
    Fails("K32GetProcessImageFileNameW", Zero("ERROR_GEN_FAILURE", ERROR_GEN_FAILURE)),
    Fails("EnumProcesses", NoMemory),
    Fails("GetProcessImageFileNameW", Zero("ERROR_GEN_FAILURE", ERROR_GEN_FAILURE)),
    Fails("LCIDToLocaleName", Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Safe("LeaveCriticalSection", NoFailure),
    Fails("LoadLibraryA", Zero("ERROR_MOD_NOT_FOUND", ERROR_MOD_NOT_FOUND)),
    Fails("LoadLibraryW", Zero("ERROR_MOD_NOT_FOUND", ERROR_MOD_NOT_FOUND)),
    Fails("LoadLibraryExA", Zero("ERROR_MOD_NOT_FOUND", ERROR_MOD_NOT_FOUND)),
    Fails("LoadLibraryExW", Zero("ERROR_MOD_NOT_FOUND", ERROR_MOD_NOT_FOUND),
          Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Fails("LoadResource", NoMemory),
    Fails("LocalAlloc", NoMemory),
    Fails("LocalFree", InvalidHandle),
    Fails("LockResource", JustNull),
    Fails("MultiByteToWideChar", Zero("ERROR_NO_UNICODE_TRANSLATION", ERROR_NO_UNICODE_TRANSLATION)),
    Fails("OpenProcess", AccessDenied),
    Safe("OutputDebugStringA", Debugging),
    Fails("QueueUserWorkItem", NoMemory),
    Safe("QueryPerformanceCounter", "has not failed since Windows XP"),
    Safe("QueryPerformanceFrequency", "has not failed since Windows XP"),
    Safe("RaiseException", Unwinding),
    Fails("ReadFile", Zero("ERROR_IO_DEVICE", ERROR_IO_DEVICE)),
    Fails("ReleaseSemaphore", InvalidHandle),
    Fails("RemoveVectoredExceptionHandler", Result("0", 0)),
    Fails("ResetEvent", InvalidHandle),
    Fails("ResumeThread", Result("-1, ERROR_INVALID_HANDLE", 0xFFFFFFFF, ERROR_INVALID_HANDLE)),
    Safe("RtlCaptureContext", Unwinding),
    Safe("RtlLookupFunctionEntry", Unwinding),
    Safe("RtlUnwindEx", Unwinding),
    Safe("RtlVirtualUnwind", Unwinding),
    Safe("RtlUnwind", Unwinding),
    Fails("SetDefaultDllDirectories", Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Fails("SetDllDirectoryW", NoMemory),
    Safe("SetErrorMode", NoFailure),
    Fails("SetEvent", InvalidHandle),
    Safe("SetLastError", NoFailure),
    Fails("SetProcessAffinityMask", InvalidHandle),
    Fails("SetThreadContext", InvalidHandle),
    Fails("SetThreadErrorMode", Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Fails("SetThreadDescription", OutOfMemory),
    Fails("SetThreadPriority", InvalidHandle),
    Safe("SetUnhandledExceptionFilter", NoFailure),
    Fails("SizeofResource", NoResource),
    Safe("Sleep", NoFailure),
    Fails("SuspendThread", Result("-1, ERROR_INVALID_HANDLE", 0xFFFFFFFF, ERROR_INVALID_HANDLE)),
    Fails("TerminateProcess", AccessDenied),
    Fails("TlsAlloc", Result("TLS_OUT_OF_INDEXES", 0xFFFFFFFF, ERROR_NOT_ENOUGH_MEMORY)),
    Fails("TlsFree", Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Safe("TlsGetValue", WrongArguments),
    Fails("TlsSetValue", NoMemory),
    Safe("TryEnterCriticalSection", AnswerNoFailure),
    Fails("VirtualAlloc", NoMemory),
    Fails("VirtualFree", Zero("ERROR_INVALID_ADDRESS", ERROR_INVALID_ADDRESS)),
    Fails("VirtualProtect", AccessDenied),
    Fails("VirtualQuery", Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Fails("WaitForMultipleObjects", Result("WAIT_FAILED, ERROR_INVALID_HANDLE", WAIT_FAILED, ERROR_INVALID_HANDLE)),
    Fails("WaitForSingleObject", Result("WAIT_FAILED, ERROR_INVALID_HANDLE", WAIT_FAILED, ERROR_INVALID_HANDLE)),
    Fails("WideCharToMultiByte", Zero("ERROR_INSUFFICIENT_BUFFER", ERROR_INSUFFICIENT_BUFFER)),
    Fails("WriteFile", Zero("ERROR_DISK_FULL", ERROR_DISK_FULL)),
    Safe("__C_specific_handler", Unwinding),
    Safe("lstrlenW", Pure),

    // msvcrt
    Safe("___lc_codepage_func", NoFailure),
    Safe("___mb_cur_max_func", NoFailure),
    Safe("__iob_func", NoFailure),
    Safe("__acrt_iob_func", NoFailure),
    Safe("__set_app_type", NoFailure),
    Safe("__setusermatherr", NoFailure),
    Safe("__getmainargs", Start),
    Safe("__wgetmainargs", Start),
    Safe("__initenv", Data),
    Safe("__winitenv", Data),
    Safe("_amsg_exit", Start),
    Safe("_assert", NoFailure),
    Fails("_beginthreadex", Crt("0, EAGAIN", 0, EAGAIN)),
    Safe("_cexit", NoFailure),
    Safe("_acmdln", Data),
    Safe("_commode", Data),
    Safe("_endthreadex", NoFailure),
    Safe("_errno", NoFailure),
    Safe("_exit", NoFailure),
    Safe("_fmode", Data),
    Safe("_initterm", Start),
    Fails("_localtime64", Crt("null, EINVAL", 0, EINVAL)),
    Fails("_localtime64_s", Crt("EINVAL", EINVAL, EINVAL)),
    Safe("_lock", NoFailure),
    Fails("_onexit", JustNull),
    Safe("_setjmp", NoFailure),
    Safe("_setjmpex", NoFailure),
    Fails("_time64", Result("-1", Minus1)),
    Safe("_ultoa", Pure),
    Safe("_unlock", NoFailure),
    Safe("_wcmdln", Data),
    Fails("_wfsopen", CrtRefused, CrtTooManyFiles),
    Safe("_wtoi", Pure),
    Safe("abort", NoFailure),
    Fails("calloc", CrtNoMemory),
    Safe("exit", NoFailure),
    Fails("fclose", Afterwards(DiskFullMinus1)),
    Fails("fflush", DiskFullMinus1),
    Fails("fprintf", DiskFullMinus1),
    Fails("fputc", DiskFullMinus1),
    Safe("free", NoFailure),
    Fails("fread", Crt("0, EIO", 0, EIO)),
    Fails("fseek", BadFileMinus1),
    Fails("fwrite", Crt("0, ENOSPC", 0, ENOSPC, ERROR_DISK_FULL)),
    Fails("getenv", JustNull),
    Safe("iswctype", Pure),
    Safe("localeconv", NoFailure),
    Safe("longjmp", NoFailure),
    Fails("malloc", CrtNoMemory),
    Safe("memchr", Pure),
    Safe("memcmp", Pure),
    Safe("memcpy", Pure),
    Safe("memmove", Pure),
    Safe("memset", Pure),
    Fails("printf", DiskFullMinus1),
    Fails("realloc", CrtNoMemory),
    Fails("setlocale", JustNull),
    Fails("setvbuf", Result("-1", Minus1)),
    Fails("signal", Crt("SIG_ERR, EINVAL", Minus1, EINVAL)),
    Safe("strchr", Pure),
    Safe("strcmp", Pure),
    Safe("strcoll", Pure),
    Safe("strerror", NoFailure),
    Safe("strftime", Pure),
    Safe("strlen", Pure),
    Safe("strnlen", Pure),
    Safe("strncmp", Pure),
    Safe("strtoul", Pure),
    Safe("strxfrm", Pure),
    Fails("swprintf_s", Crt("-1, EINVAL", Minus1, EINVAL)),
    Fails("_snwprintf", Result("-1", Minus1)),
    Fails("_snprintf", Result("-1", Minus1)),
    Fails("_vscprintf", Result("-1", Minus1)),
    Fails("_vsnprintf", Result("-1", Minus1)),
    Safe("_vsnwprintf", WrongArguments),
    Safe("tolower", Pure),
    Safe("towlower", Pure),
    Safe("towupper", Pure),
    Fails("vfprintf", DiskFullMinus1),
    Safe("wcscoll", Pure),
    Safe("wcscpy", Pure),
    Safe("wcsftime", Pure),
    Safe("wcslen", Pure),
    Safe("wcsnlen", Pure),
    Safe("wcsxfrm", Pure),
    Fails("_strdup", CrtNoMemory),
    Fails("_read", BadFileMinus1),
    Fails("_close", Afterwards(BadFileMinus1)),

    // ole32, oleaut32
    Fails("CoAllowSetForegroundWindow", Result("E_ACCESSDENIED", 0x80070005)),
    Fails("CoCreateInstance", Clears("REGDB_E_CLASSNOTREG", 0x80040154, 4),
          Clears("CO_E_SERVER_EXEC_FAILURE", 0x80080005, 4)),
    Fails("CoInitialize", OutOfMemory),
    Fails("GetErrorInfo", Clears("S_FALSE", 1, 1)),
    Fails("OleRun", OutOfMemory),
    Fails("SysAllocString", JustNull),
    Fails("SysAllocStringLen", JustNull),
    Safe("SysFreeString", NoFailure),
    Safe("SysStringLen", Pure),

    // shell32, shlwapi, shcore
    Fails("CommandLineToArgvW", NoMemory),
    Fails("ShellExecuteExW", Zero("ERROR_CANCELLED", ERROR_CANCELLED),
          Zero("ERROR_FILE_NOT_FOUND", ERROR_FILE_NOT_FOUND)),
    Fails("ShellExecuteW", Result("SE_ERR_FNF", 2)),
    Safe("PathFindFileNameW", Pure),
    Safe("PathIsDirectoryW", AnswerNoFailure),
    Fails("SetProcessDpiAwareness", Result("E_ACCESSDENIED", 0x80070005)),

    // user32
    Fails("AdjustWindowRectEx", Zero("ERROR_INVALID_PARAMETER", ERROR_INVALID_PARAMETER)),
    Fails("BeginPaint", NoMemory),
    Fails("CreateWindowExW", NoMemory),
    Safe("DefWindowProcW", NoFailure),
    Fails("DestroyWindow", AccessDenied),
    Safe("DispatchMessageW", NoFailure),
    Safe("EnableWindow", AnswerNoFailure),
    Safe("EndPaint", NoFailure),
    Fails("GetAncestor", Zero("ERROR_INVALID_WINDOW_HANDLE", ERROR_INVALID_WINDOW_HANDLE)),
    Fails("GetClientRect", Zero("ERROR_INVALID_WINDOW_HANDLE", ERROR_INVALID_WINDOW_HANDLE)),
    Fails("GetDC", JustNull),
    Safe("GetDesktopWindow", NoFailure),
    Safe("GetFocus", AnswerNoFailure),
    Fails("GetMessageW", Result("-1, ERROR_INVALID_WINDOW_HANDLE", 0xFFFFFFFF, ERROR_INVALID_WINDOW_HANDLE)),
    Fails("GetSystemMetrics", Result("0", 0)),
    Fails("GetWindowRect", Zero("ERROR_INVALID_WINDOW_HANDLE", ERROR_INVALID_WINDOW_HANDLE)),
    Fails("InvalidateRect", JustNull),
    Safe("IsDialogMessageW", AnswerNoFailure),
    Fails("LoadCursorW", NoMemory),
    Fails("LoadImageW", NoMemory),
    Safe("NotifyWinEvent", NoFailure),
    Fails("PostMessageW", Zero("ERROR_NOT_ENOUGH_QUOTA", ERROR_NOT_ENOUGH_QUOTA)),
    Safe("PostQuitMessage", NoFailure),
    Fails("RegisterClassExW", NoMemory),
    Fails("ReleaseDC", Result("0", 0)),
    Safe("SendMessageW", "the window that answers it is the program's own"),
    Fails("SetFocus", Zero("ERROR_ACCESS_DENIED", ERROR_ACCESS_DENIED)),
    Fails("SetForegroundWindow", Result("0", 0)),
    Fails("SetProcessDPIAware", Result("0", 0)),
    Fails("SetWindowTextW", NoMemory),
    Safe("ShowWindow", AnswerNoFailure),
    Safe("TranslateMessage", AnswerNoFailure),
};

} // namespace

std::span<const Function> Functions() {
    return Table;
}

const Function* FindFunction(const char* name) {
    const auto* const found = std::ranges::find_if(
        Table, [name](const Function& function) { return std::string_view(name) == function.name; });
    return found != std::end(Table) ? found : nullptr;
}
