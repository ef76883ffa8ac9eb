@echo off
rem Installs Vellumkit once on this machine, without a window, and keeps the log.
rem
rem     install.cmd FOLDER
rem
rem Beside this script lie VellumkitInstaller.x64.exe and vellumkit.ini, the configuration of the elevated installer.
rem FOLDER is for the logs of all machines. Ends with the installer's exit code; with 0 at once when it has installed
rem before. To install anew, with a later version say, change the name in the next line.
setlocal
set "done=%ProgramData%\Vellumkit\rollout-1.done"
set "log=%TMP%\Vellumkit_Install.log"
if exist "%done%" exit /b 0
if exist "%log%" del "%log%"
"%~dp0VellumkitInstaller.x64.exe" /config "%~dp0vellumkit.ini"
set "result=%ERRORLEVEL%"
if exist "%log%" copy /y "%log%" "%~1\%COMPUTERNAME%.log" >nul
if not "%result%"=="0" exit /b %result%
if not exist "%ProgramData%\Vellumkit" mkdir "%ProgramData%\Vellumkit"
echo done>"%done%"
exit /b 0
