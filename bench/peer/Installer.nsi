; The peer: does with NSIS what the front-end does, but for the report of registrations and the question.
;
;   Installer.exe                  with a window
;   Installer.exe /S /config=PATH  unattended; the exit code is 0 or 1
;
; makensis gets OUTPUT, PAYLOAD, ICON, LOGO (a bitmap) and LANGUAGES, a file made from core/languages.

Unicode true
Target amd64-unicode
Name "Vellumkit"
OutFile "${OUTPUT}"
Icon "${ICON}"
RequestExecutionLevel user ; the payload alone is elevated
ManifestDPIAware true
XPStyle on
ShowInstDetails nevershow
AddBrandingImage left 48u

Page instfiles
!include "${LANGUAGES}"

!include "FileFunc.nsh"
!include "Steps.nsh"

!define Office "Software\Microsoft\Office"
!define InternetSettings "Software\Microsoft\Windows\CurrentVersion\Internet Settings"
!define InternetPolicies "Software\Policies\Microsoft\Windows\CurrentVersion\Internet Settings"
!define RequiredProtocols 0xA80 ; TLS 1.0, 1.1 and 1.2

Var Config
Var Process

; The language of Office, else what NSIS has taken from Windows.
!macro TakeLanguageOfOffice VERSION
    ${If} $0 == ""
        ReadRegDWORD $0 HKCU "${Office}\${VERSION}\Common\LanguageResources" "UILanguage"
    ${EndIf}
!macroend

Function .onInit
    StrCpy $0 ""
    !insertmacro TakeLanguageOfOffice 16.0
    !insertmacro TakeLanguageOfOffice 15.0
    !insertmacro TakeLanguageOfOffice 14.0
    ${If} $0 != ""
        StrCpy $LANGUAGE $0
    ${EndIf}
FunctionEnd

Function .onGUIInit
    InitPluginsDir
    File "/oname=$PLUGINSDIR\logo.bmp" "${LOGO}"
    SetBrandingImage "$PLUGINSDIR\logo.bmp"
FunctionEnd

!macro ShowStatus TEXT
    SetDetailsPrint both
    DetailPrint "${TEXT}"
    SetDetailsPrint none ; NSIS would show each instruction
!macroend
!define ShowStatus "!insertmacro ShowStatus"

!macro Fail TEXT
    ${WriteLog} "ERROR: ${TEXT}"
    ${ShowStatus} "$(StrInstallFailed)"
    SetErrorLevel 1
    Abort
!macroend
!define Fail "!insertmacro Fail"

Function WaitForOneNote
    ${For} $1 1 60
        Call FindOneNote
        ${If} $R0 = 0
            Return
        ${EndIf}
        Sleep 1000
    ${Next}
    ${Fail} "OneNote is still running"
FunctionEnd

; Not compressed: the payload is an installer, and compressed itself.
Function ExtractPayload
    CreateDirectory "$TEMP\Vellumkit"
    ${WriteLog} "Extracting installer to $TEMP\Vellumkit\Vellumkit Installer.exe"
    ClearErrors
    SetCompress off
    File "/oname=$TEMP\Vellumkit\Vellumkit Installer.exe" "${PAYLOAD}"
    SetCompress auto
    ${If} ${Errors}
        ${Fail} "The payload can't be written"
    ${EndIf}
    ${WriteLog} "Done."
FunctionEnd

; Through the shell, since ExecWait can't start a program that asks for administrator rights and ExecShellWait tells no
; exit code. Each SHELLEXECUTEINFOW has two gaps, which the plug-in does not make.
!define SizeOfExecution 112
!define KeepProcessOpenAndDoNotReturnEarly 0x140
Function RunPayload
    System::Call '*(i ${SizeOfExecution}, i ${KeepProcessOpenAndDoNotReturnEarly}, p $HWNDPARENT, p 0, \
        w "$TEMP\Vellumkit\Vellumkit Installer.exe", w "$TEMP\ $Config", p 0, i 0, i 0, p 0, p 0, p 0, p 0, i 0, i 0, \
        p 0, p 0) p .r1'
    System::Call 'shell32::ShellExecuteExW(p r1) i .r2'
    System::Call '*$1(i, i, p, p, p, p, p, i, i, p, p, p, p, i, i, p, p .s)'
    Pop $Process
    System::Free $1
    ${If} $2 = 0
        ${Fail} "The payload can't be started"
    ${EndIf}
FunctionEnd

Function AwaitPayload
    ${WriteLog} "Waiting for installer to finish"
    Sleep 1000
    System::Call 'kernel32::WaitForSingleObject(p $Process, i -1)'
    System::Call 'kernel32::GetExitCodeProcess(p $Process, *i .r0)'
    System::Call 'kernel32::CloseHandle(p $Process)'
    ${If} $0 <> 0
        ${Fail} "Installer reported failure: $0"
    ${EndIf}
FunctionEnd

!macro RepairOffice VERSION
    ${WriteLog} "Deleting registry key: HKCU\${Office}\${VERSION}\OneNote\Resiliency\DisabledItems"
    DeleteRegKey HKCU "${Office}\${VERSION}\OneNote\Resiliency\DisabledItems"
    ${WriteLog} "Deleting registry value: HKCU\${Office}\${VERSION}\OneNote\Security\DisableAllAddins"
    DeleteRegValue HKCU "${Office}\${VERSION}\OneNote\Security" "DisableAllAddins"
!macroend

Function UpdateSecureProtocols
    ReadRegDWORD $0 HKCU "${InternetSettings}" "SecureProtocols"
    ${WriteLog} "HKCU\${InternetSettings}\SecureProtocols - $0"
    IntOp $1 $0 | ${RequiredProtocols}
    ${If} $0 <> $1
        WriteRegDWORD HKCU "${InternetSettings}" "SecureProtocols" $1
        ${WriteLog} "Updated to $1"
    ${EndIf}
    ReadRegDWORD $0 HKCU "${InternetPolicies}" "SecureProtocols"
    ${WriteLog} "HKCU\${InternetPolicies}\SecureProtocols - $0"
FunctionEnd

Section
    !insertmacro OpenLog "Vellumkit_Peer.log"
    ${GetParameters} $0
    ${GetOptions} $0 "/config=" $Config
    ${WriteLog} "Command line: $0"
    ${ShowStatus} "$(StrCheckingRequirements)"
    Call WaitForOneNote
    ${ShowStatus} "$(StrInstalling)"
    Call ExtractPayload
    Call RunPayload
    Call AwaitPayload
    !insertmacro RepairOffice 14.0
    !insertmacro RepairOffice 15.0
    !insertmacro RepairOffice 16.0
    ${WriteLog} "Deleting registry value: HKCU\${Office}\OneNote\AddIns\Vellumkit.Addin\LoadBehavior"
    DeleteRegValue HKCU "${Office}\OneNote\AddIns\Vellumkit.Addin" "LoadBehavior"
    Call UpdateSecureProtocols
    ${WriteLog} "State: Complete"
    ${ShowStatus} "$(StrInstallCompleted)"
SectionEnd
