; The installer, for people and, with /S, for scripts.
; Options of the installer, besides /S and /D=FOLDER of NSIS:
;   /ROOT=FOLDER  use this firmware root if the registry names none
;   /NOSTART      do not start the supervisor again if a running one was replaced
; Option of the uninstaller:
;   /KEEPLOG      keep the log even if it began with this installation
; Exit codes:
;   0  installed
;   1  cancelled
;   2  failed. A supervisor that the installer had ended is started again. If the old supervisor did
;      not end within four minutes, it is not started again: it ends later, and somebody has to
;      start it.
;   3  installed, but the new supervisor did not answer within two minutes, or not every daemon was
;      handed over to it ("daemonctl reattach" shows why)
; The installer never changes a configuration or a log that existed before, and never ends a daemon.
Target amd64-unicode ; a 64-bit program sees the registry and System32 as the supervisor does
Unicode true
SetCompressor /SOLID lzma
AllowSkipFiles off

!include LogicLib.nsh
!include FileFunc.nsh
!include MUI2.nsh

Name "DaemonManager ${VERSION}"
OutFile "${OUTPUT}"
RequestExecutionLevel admin
ManifestDPIAware true
ShowInstDetails show
ShowUninstDetails show
BrandingText " "
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "DaemonManager"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "Installs the DaemonManager supervisor"
VIAddVersionKey LegalCopyright ""

; The key of the list of installed programs. It also holds the names of everything that this
; installation made; the uninstaller removes only that.
!define OWN_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager"
!define FIRMWARE_PRODUCT "SOFTWARE\UnitWarden"
!define FIRMWARE_KEY "${FIRMWARE_PRODUCT}\CurrentVersion"
!define OLDER_FIRMWARE_KEY "SOFTWARE\VANTORO_QRX\CurrentVersion"
!define PROXY_KEY "Software\Classes\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}\InprocServer32"

; The files are unpacked here, on the volume of their final place.
!define NEW_FILES "$INSTDIR\~new"

Var Root          ; the firmware root
Var WritePathname ; 1: no registry value names the root yet
Var WasRunning    ; 1: a running supervisor was ended; its daemons are to be handed over
Var Listing       ; name of the file that lists its daemons, or empty
Var SwapFailed    ; 1: a file could not be moved to its place
Var NoStart       ; 1: /NOSTART was given

!define MUI_ABORTWARNING
!define MUI_DIRECTORYPAGE_TEXT_TOP "The programs are installed into this folder. A supervisor that runs is replaced; its daemons keep running and are handed over to the new one."
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

!include installer/files.nsh
!include installer/supervisor.nsh
!include "${FILES}"

!insertmacro CommonFunctions ""
!insertmacro CommonFunctions "un."

; Notes the name of a thing that this installation makes. The name is noted because a later
; installation may have another firmware root. Notes of earlier installations stay.
!macro NoteMade what name
    WriteRegStr HKLM "${OWN_KEY}" "Made${what}" "${name}"
!macroend

!include installer/firmware_root.nsh

Function .onInit
    SetRegView 64
    SetShellVarContext all
    StrCpy $WasRunning 0
    Call FindRoot
    ${If} $INSTDIR == "" ; no /D=
        ReadRegStr $INSTDIR HKLM "${OWN_KEY}" "InstallLocation"
    ${EndIf}
    ${If} $INSTDIR == ""
        StrCpy $INSTDIR "$Root\App\DaemonManager"
    ${EndIf}
    StrCpy $NoStart 0
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/NOSTART" $1
    ${IfNot} ${Errors}
        StrCpy $NoStart 1
    ${EndIf}
FunctionEnd

; Makes a folder if it does not exist.
!macro MakeFolder what folder
    ${IfNot} ${FileExists} "${folder}\*.*"
        ClearErrors
        CreateDirectory "${folder}"
        ${If} ${Errors}
            !insertmacro Fail "The folder ${folder} cannot be made."
        ${EndIf}
        !insertmacro NoteMade "${what}" "${folder}"
    ${EndIf}
!macroend

Section
    ${If} $Root == ""
        !insertmacro Fail "The registry's value Pathname names no firmware root."
    ${EndIf}
    InitPluginsDir
    SetOutPath "$TEMP" ; working folder of the started programs; the others may be removed
    File "/oname=$PLUGINSDIR\daemonctl.exe" "${STAGING}/daemonctl.exe"
    !insertmacro MakeFolder Root "$Root"
    !insertmacro MakeFolder App "$Root\App"
    !insertmacro MakeFolder Logs "$Root\Logs"
    ${IfNot} ${FileExists} "$Root\Logs\DaemonManager.log"
        !insertmacro NoteMade Log "$Root\Logs\DaemonManager.log"
    ${EndIf}

    ; Unpacks the files beside the old files while the supervisor keeps running, because unpacking
    ; may fail for lack of space or rights. After that, the files only change their names.
    ClearErrors
    SetOverwrite try
    !insertmacro UnpackFiles
    SetOutPath "$TEMP"
    WriteUninstaller "${NEW_FILES}\Uninstall.exe"
    ${If} ${Errors}
        !insertmacro Fail "Not every file could be written to $INSTDIR."
    ${EndIf}
    Call EndSupervisor
    StrCpy $SwapFailed 0
    !insertmacro SwapFiles
    !insertmacro Swap "Uninstall.exe"
    ${If} $SwapFailed = 1
        !insertmacro Fail "Not every file in $INSTDIR could be replaced."
    ${EndIf}
    RMDir /r "${NEW_FILES}"

    nsExec::Exec '"$SYSDIR\regsvr32.exe" /s "$INSTDIR\DaemonMgrPS.dll"'
    Pop $0
    ${If} $0 != 0
        !insertmacro Fail "DaemonMgrPS.dll cannot be registered (regsvr32: $0)."
    ${EndIf}
    ${If} $WritePathname = 1
        Call WriteFirmwareRoot
    ${EndIf}

    WriteRegStr HKLM "${OWN_KEY}" "DisplayName" "DaemonManager"
    WriteRegStr HKLM "${OWN_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${OWN_KEY}" "DisplayIcon" "$INSTDIR\DaemonManager.exe"
    WriteRegStr HKLM "${OWN_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${OWN_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
    WriteRegStr HKLM "${OWN_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
    WriteRegDWORD HKLM "${OWN_KEY}" "NoModify" 1
    WriteRegDWORD HKLM "${OWN_KEY}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKLM "${OWN_KEY}" "EstimatedSize" $0

    ${If} $WasRunning = 1
    ${AndIf} $NoStart = 0
        Call StartSupervisor
        ${If} $0 != ${REATTACHED}
        ${AndIf} $0 != ${NOTHING_TO_REATTACH}
            DetailPrint "Not every daemon was handed over: daemonctl reattach shows why ($0)"
            SetErrorLevel 3
        ${EndIf}
    ${EndIf}
SectionEnd

!include installer/uninstall.nsh
