@echo off
rem Installs Vellumkit once on this machine, without a window, and keeps the logs. Needs administrator rights.
rem
rem     install.cmd FOLDER
rem
rem Beside this script lie VellumkitInstaller.x64.exe and vellumkit.ini, the configuration of the elevated installer.
rem FOLDER is for the logs of all machines: NAME.log, and NAME.elevated.txt of the elevated installer. Ends with the
rem installer's exit code; with 0 at once when it has installed before; with 2 and a line when it can't begin, or can't
rem leave the mark of that. To install anew, with a later version say, change the name in "done".
rem
rem The temporary folder is one where only administrators may make files: see SECURITY.md, installations as SYSTEM.
setlocal
set "TMP=%SystemRoot%\VellumkitSetup"
set "done=%TMP%\rollout-1.done"
set "log=%TMP%\Vellumkit_Install.log"
set "elevated=%TMP%\Vellumkit_Elev.log"
set "kept=%~1\%COMPUTERNAME%"
set "trouble=needs the folder for the logs"
if "%~1"=="" goto fail
if exist "%done%" exit /b 0
if not exist "%TMP%\*" mkdir "%TMP%" 2>nul
set "trouble=can't make %TMP%, which needs administrator rights"
if not exist "%TMP%\*" goto fail
for %%f in ("%log%" "%elevated%" "%kept%.log" "%kept%.elevated.txt") do call :delete %%f
"%~dp0VellumkitInstaller.x64.exe" /config "%~dp0vellumkit.ini"
set "result=%ERRORLEVEL%"
call :keep "%log%" "%kept%.log"
call :keep "%elevated%" "%kept%.elevated.txt"
if not "%result%"=="0" exit /b %result%
echo done>"%done%"
if exist "%done%" exit /b 0
set "trouble=has installed, but can't make %done%"

:fail
echo install.cmd: %trouble% 1>&2
exit /b 2

rem Only a folder has something below it, itself at least. "del" would ask whether to empty it.
:delete
if not exist "%~1\*" if exist %1 del /f %1
exit /b

:keep
if not exist "%~1\*" if exist %1 copy /y %1 %2 >nul
exit /b
