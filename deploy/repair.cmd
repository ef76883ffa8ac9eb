@echo off
rem Repairs the settings of the current user as the installer does: what keeps OneNote from loading the add-in is
rem deleted, and TLS 1.0, 1.1 and 1.2 are allowed. Needs no administrator rights. Ends with 0, or with 1 when the
rem protocols can't be written.
setlocal
set "office=HKCU\Software\Microsoft\Office"
set "internet=HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings"
for %%v in (14.0 15.0 16.0) do reg delete "%office%\%%v\OneNote\Resiliency\DisabledItems" /f >nul 2>&1
for %%v in (14.0 15.0 16.0) do reg delete "%office%\%%v\OneNote\Security" /v DisableAllAddins /f >nul 2>&1
reg delete "%office%\OneNote\AddIns\Vellumkit.Addin" /v LoadBehavior /f >nul 2>&1
set protocols=0
for /f "tokens=3" %%p in ('reg query "%internet%" /v SecureProtocols 2^>nul') do set protocols=%%p
set /a "protocols=protocols | 0xA80"
reg add "%internet%" /v SecureProtocols /t REG_DWORD /d %protocols% /f >nul
