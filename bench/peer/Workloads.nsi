; Does one piece of the peer's work, and writes into workloads.txt in the temporary folder how many ticks of how many a
; second it took.
;
;   Workloads.exe /S /extract        writes the payload to a new file
;   Workloads.exe /S /log=COUNT      writes entries to the log
;   Workloads.exe /S /find           looks for OneNote among the running processes
;
; makensis gets OUTPUT and PAYLOAD.

Unicode true
Target amd64-unicode
Name "Workloads"
OutFile "${OUTPUT}"
RequestExecutionLevel user
CRCCheck off

Page instfiles

!include "FileFunc.nsh"
!include "Steps.nsh"

Var Parameters
Var Start
Var End
Var Frequency

Function Extract
    System::Call 'kernel32::QueryPerformanceCounter(*l .s)'
    Pop $Start
    SetCompress off
    File "/oname=$TEMP\extracted.bin" "${PAYLOAD}"
    SetCompress auto
    System::Call 'kernel32::QueryPerformanceCounter(*l .s)'
    Pop $End
FunctionEnd

Function WriteEntries
    System::Call 'kernel32::QueryPerformanceCounter(*l .s)'
    Pop $Start
    ${For} $1 1 $0
        ${WriteLog} "Entry $1 of a log that is written to the disk at each of them"
    ${Next}
    System::Call 'kernel32::QueryPerformanceCounter(*l .s)'
    Pop $End
FunctionEnd

Function Find
    System::Call 'kernel32::QueryPerformanceCounter(*l .s)'
    Pop $Start
    Call FindOneNote
    System::Call 'kernel32::QueryPerformanceCounter(*l .s)'
    Pop $End
FunctionEnd

Section
    !insertmacro OpenLog "Vellumkit_Peer.log"
    ${GetParameters} $Parameters
    System::Call 'kernel32::QueryPerformanceFrequency(*l .s)' ; also loads the plug-in
    Pop $Frequency
    ClearErrors
    ${GetOptions} $Parameters "/extract" $0
    ${IfNot} ${Errors}
        Call Extract
    ${EndIf}
    ClearErrors
    ${GetOptions} $Parameters "/log=" $0
    ${IfNot} ${Errors}
        Call WriteEntries
    ${EndIf}
    ClearErrors
    ${GetOptions} $Parameters "/find" $0
    ${IfNot} ${Errors}
        Call Find
    ${EndIf}
    IntPtrOp $1 $End - $Start
    FileOpen $0 "$TEMP\workloads.txt" w
    FileWrite $0 "$1 $Frequency"
    FileClose $0
SectionEnd
