@echo off
rem Repairs the settings of the current user as the installer does: what keeps OneNote from loading the add-in is
rem deleted, and TLS 1.0, 1.1 and 1.2 are allowed. A list of allowed protocols that is no number counts as an empty one;
rem one that has them all stays as it is. Needs no administrator rights. Leaves the value "Repaired" in
rem HKCU\Software\Vellumkit, for a detection rule. Ends with 0, or with 1 when the protocols or that can't be written.
setlocal
set "office=HKCU\Software\Microsoft\Office"
set "internet=HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings"
for %%v in (14.0 15.0 16.0) do reg delete "%office%\%%v\OneNote\Resiliency\DisabledItems" /f >nul 2>&1
for %%v in (14.0 15.0 16.0) do reg delete "%office%\%%v\OneNote\Security" /v DisableAllAddins /f >nul 2>&1
reg delete "%office%\OneNote\AddIns\Vellumkit.Addin" /v LoadBehavior /f >nul 2>&1
set protocols=0
for /f "tokens=2,3" %%t in ('reg query "%internet%" /v SecureProtocols 2^>nul') do if %%t==REG_DWORD set protocols=%%u
set /a "allowed=protocols & 0xA80"
if "%allowed%"=="2688" goto repaired
set /a "protocols=protocols | 0xA80"
reg add "%internet%" /v SecureProtocols /t REG_DWORD /d %protocols% /f >nul
if errorlevel 1 exit /b 1
:repaired
reg add HKCU\Software\Vellumkit /v Repaired /t REG_DWORD /d 1 /f >nul
