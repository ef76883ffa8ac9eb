@echo off
rem Runs the tests of the Vellumkit Installer on this machine, and leaves in the folder "results" beside this file what
rem came of them: reports, output, logs and pictures of the screen.
rem
rem     run-tests.cmd /throw-away [FILTER]
rem
rem They change the settings of the current user, remove the registration of Office, register a COM server and a
rem browser, and use keyboard and mouse. So the machine must be one that can be thrown away, which /throw-away states.
rem A FILTER runs these tests only: names with * and ?, a colon between two of them. Ends with 0 when all tests have
rem passed, with 1 when one has failed, and with 2 when nothing was run.
setlocal
set "kit=%~dp0"
set "results=%~dp0results"
set "languages=@LANGUAGES@"
set "filter=%~2"
if "%filter%"=="" set "filter=*"

set "refusal=These tests damage the machine. On one that can be thrown away: run-tests.cmd /throw-away"
if /i not "%~1"=="/throw-away" goto refuse
set "refusal=There are results already. Send or move them away: %results%"
if exist "%results%" goto refuse
set "refusal=The tests need the rights of an administrator: start this file from a prompt that has them."
reg add HKLM\SOFTWARE\VellumkitTests /f >nul 2>nul
if errorlevel 1 goto refuse
reg delete HKLM\SOFTWARE\VellumkitTests /f >nul 2>nul
set "refusal=This machine has Microsoft Office, whose registration the tests would remove."
for %%k in (HKCR\OneNote.Application HKCR\Word.Application HKLM\SOFTWARE\Microsoft\Office\ClickToRun\Configuration) do (
    reg query %%k >nul 2>nul
    if not errorlevel 1 goto refuse
)
set documents=0
for %%d in (Desktop Documents Pictures OneDrive) do call :count "%USERPROFILE%\%%d"
set "refusal=Somebody works here: %USERPROFILE% has %documents% documents. The tests need a user who has none."
if %documents% gtr 50 goto refuse

rem Where Windows has it, the resolution of the screen.
set "metrics=HKCU\Control Panel\Desktop\WindowMetrics"
if not defined VELLUMKIT_DPI for /f "tokens=2,3" %%t in ('reg query "%metrics%" /v AppliedDPI 2^>nul') do (
    if "%%t"=="REG_DWORD" set /a VELLUMKIT_DPI=%%u
)

mkdir "%results%\failures"
mkdir "%results%\screens"
set "VELLUMKIT_RESULTS=%results%\failures"
ver >"%results%\machine.txt"
systeminfo >>"%results%\machine.txt" 2>&1
set failed=0
call :test unit-tests
call :test window-tests -TextFit.NoGlyphIsMissing/zh*
call :test program-tests -WindowWithoutFonts.*:*LanguageOnA*:LibraryPlantingBeside.*
set ran=0
for %%p in (unit window program) do (
    "%SystemRoot%\System32\find.exe" "<testcase " "%results%\%%p-tests.xml" >nul 2>nul
    if not errorlevel 1 set ran=1
)
if %ran%==0 echo No test of this name has run: "%filter%"
if %ran%==0 set failed=1

rem What the installer says of this machine, and how it looks.
if not "%filter%"=="*" set languages=en
start "" /wait "%kit%VellumkitInstaller.x64.exe" /config "%kit%no-configuration.ini"
call :note VellumkitInstaller
copy "%TMP%\Vellumkit_Install.log" "%results%" >nul
if not exist "%results%\Vellumkit_Install.log" set failed=1
start "" /wait "%kit%lab\gallery.exe" "%results%\screens" %languages%
call :note gallery
echo Please send back: %results%
exit /b %failed%

rem The folder of such a loop can't be the variable of another one.
:count
for /r %1 %%f in (*) do set /a documents+=1
exit /b 0

rem What this program does not run on Windows follows its name.
:test
echo %1
"%kit%tests\%1.exe" "--gtest_filter=%filter%%~2" "--gtest_output=xml:%results%\%1.xml" >"%results%\%1.txt" 2>&1
:note
set code=%errorlevel%
echo %1 ends with %code%
echo %1 ends with %code% >>"%results%\summary.txt"
if not %code%==0 set failed=1
exit /b 0

:refuse
echo "%refusal%"
exit /b 2
