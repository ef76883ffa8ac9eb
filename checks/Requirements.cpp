#include "checks/Requirements.h"

#include "checks/BitnessPrompt.h"
#include "checks/ComRegistrationReport.h"
#include "checks/TypeLibraryBitness.h"
#include "core/Launch.h"
#include "core/Log.h"
#include "core/Product.h"

#include <windows.h>

#include <string>

namespace {

void WriteHeader() {
    BOOL emulated = FALSE;
    IsWow64Process(GetCurrentProcess(), &emulated); // the answer is not used: the first entry is the same either way
    Log(true) << L"Running 64-bit Installer on 64-bit Windows";
    Log(true) << L"Version " << ProductVersion;
    Log(true) << L"Command line: " << CommandLineText;
    Log(true);
    Log(true) << L"Registry keys on the client:";
    Log(true);
}

// Type libraries. Their versions: OneNote 14.0 and 15.0 and later; Office 14.0, two of 15.0, and 16.0.
constexpr wchar_t OneNoteLibrary[] = L"{0EA692EE-BB50-4E3C-AEF0-356D91732725}";
constexpr wchar_t AddinDesignerLibrary[] = L"{AC0714F2-3D04-11D1-AE7D-00A0C90F26F4}";
constexpr wchar_t OfficeLibrary[] = L"{2DF8D04C-5BFA-101B-BDE5-00AA0044DE52}";

/// True when OneNote or Office is registered for 32-bit programs only.
bool ReportRegistrations() {
    ReportProgId(L"OneNote.Application", {L"14", L"15"});
    ReportClsid(L"OneNote.Application.14", L"{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}");
    ReportClsid(L"OneNote.Application.15", L"{DC67E480-C3CB-49F8-8232-60B0C2056C8E}");
    const std::wstring oneNoteVersion =
        ReportInterface(L"OneNote.IApplication", L"{452AC71A-B655-4967-A208-A4CC39DD7949}");
    const bool oneNoteIs32Bit =
        CheckTypeLibraryBitness(L"OneNote.IApplication", OneNoteLibrary, {L"1.0", L"1.1"}, oneNoteVersion);
    ReportClsid(L"ProxyStub for General OLE Automation", L"{00020424-0000-0000-C000-000000000046}");

    ReportInterface(L"_IDTExtensibility2", L"{B65AD801-ABAF-11D0-BB8B-00A0C90F2744}");
    // No version is wanted: the add-in interfaces are reported, and decide nothing about OneNote.
    CheckTypeLibraryBitness(L"_IDTExtensibility2", AddinDesignerLibrary, {L"1.0"}, L"");

    const std::wstring officeVersion =
        ReportInterface(L"IRibbonExtensibility", L"{000C0396-0000-0000-C000-000000000046}");
    ReportInterface(L"IRibbonControl", L"{000C0395-0000-0000-C000-000000000046}");
    ReportInterface(L"IRibbonUI", L"{000C03A7-0000-0000-C000-000000000046}");
    const bool officeIs32Bit = CheckTypeLibraryBitness(L"IRibbonExtensibility", OfficeLibrary,
                                                       {L"2.5", L"2.6", L"2.7", L"2.8"}, officeVersion);
    return oneNoteIs32Bit || officeIs32Bit;
}

} // namespace

bool CheckRequirements() {
    WriteHeader();
    const bool only32Bit = ReportRegistrations();
    return !only32Bit || UnattendedMode || ConfirmBitness();
}
