; What the peer and its workloads share: the log and the look for OneNote.

!include "LogicLib.nsh"

Var Log

; UTF-16 with a byte-order mark.
!macro OpenLog NAME
    FileOpen $Log "$TEMP\${NAME}" w
    FileWriteWord $Log 0xFEFF
!macroend

; An entry with the time of day, in the file when the next instruction runs: NSIS has no buffer.
!macro WriteLog TEXT
    Push $R9
    System::Call 'kernel32::GetTimeFormatW(i 0x400, i 0, p 0, p 0, w .R9, i ${NSIS_MAX_STRLEN})'
    FileWriteUTF16LE $Log "$R9 - ${TEXT}$\r$\n"
    Pop $R9
!macroend
!define WriteLog "!insertmacro WriteLog"

; The identifier of the first process that is OneNote or Datebookery, in $R0; 0 without one. A snapshot is one call for
; all processes, where asking each for its name would be three calls of the plug-in for each.
!define SnapshotOfProcesses 2
!define SizeOfProcessEntry 568
!define OffsetOfIdentifier 8
!define OffsetOfFileName 44
Function FindOneNote
    ${WriteLog} "Checking if OneNote is running"
    StrCpy $R0 0
    System::Call 'kernel32::CreateToolhelp32Snapshot(i ${SnapshotOfProcesses}, i 0) p .R1'
    System::Alloc ${SizeOfProcessEntry}
    Pop $R2
    System::Call '*$R2(i ${SizeOfProcessEntry})'
    IntPtrOp $R3 $R2 + ${OffsetOfFileName}
    System::Call 'kernel32::Process32FirstW(p R1, p R2) i .R4'
    ${While} $R4 <> 0
        System::Call '*$R3(&w260 .R5)'
        ${If} $R5 == "onenote.exe" ; in any letter case
        ${OrIf} $R5 == "datebk.exe"
            IntPtrOp $R3 $R2 + ${OffsetOfIdentifier}
            System::Call '*$R3(i .R0)'
            ${WriteLog} "Found process '$R5'"
            ${Break}
        ${EndIf}
        System::Call 'kernel32::Process32NextW(p R1, p R2) i .R4'
    ${EndWhile}
    System::Free $R2
    System::Call 'kernel32::CloseHandle(p R1)'
FunctionEnd
