; The installer, for people and, with /S, for scripts. Options besides NSIS's own /S and /D=FOLDER:
;   /ROOT=FOLDER  the firmware root, where none is configured yet
;   /NOSTART      a supervisor that was ended to be replaced is not started again
; and of the uninstaller:
;   /KEEPLOG      the supervisor's log stays even if it began with this installation
; Exit codes: 0 done, 1 cancelled, 2 failed and nothing changed hands, 3 installed, but the daemons
; of the former supervisor were not all handed over (daemonctl reattach says why).
;
; What it does not do: touch a configuration or a log that was there before it, or end a daemon.
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

; Also holds what this installation made, so that the uninstaller takes that away and nothing else.
!define OWN_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager"
!define FIRMWARE_PRODUCT "SOFTWARE\UnitWarden"
!define FIRMWARE_KEY "${FIRMWARE_PRODUCT}\CurrentVersion"
!define OLDER_FIRMWARE_KEY "SOFTWARE\VANTORO_QRX\CurrentVersion"
!define PROXY_KEY "Software\Classes\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}\InprocServer32"

; The supervisor finishes a stop that is under way, which may take a minute, before it ends, and it
; waits for a firewall service that is about to start.
!define END_ATTEMPTS 480
!define START_ATTEMPTS 480
!define ATTEMPT_MS 250

; No daemon ever has this number: to ask for its detachment changes nothing and tells whether a
; supervisor answers. Ends with 1 if one does, with 3 if there is none.
!define ASK_FOR_SUPERVISOR "detach 4294967295"
!define SUPERVISOR_ANSWERED 1
!define NO_SUPERVISOR 3

!define REATTACHED 0
!define NOTHING_TO_REATTACH 1

!define DRIVE_FIXED 3

; Where the files are unpacked: on the volume where they are to be.
!define NEW_FILES "$INSTDIR\~new"

Var Root          ; the firmware root
Var WritePathname ; 1: no key names the root yet
Var WasRunning    ; 1: a supervisor was ended, and its daemons wait to be handed over
Var Listing       ; a file with the daemons of the supervisor that was ended, empty for none
Var SwapFailed    ; 1: a file could not take its place
Var NoStart       ; 1: whoever called this starts the supervisor

!define MUI_ABORTWARNING
!define MUI_DIRECTORYPAGE_TEXT_TOP "The programs are installed into this folder. A supervisor that runs is replaced; its daemons keep running and are handed over to the new one."
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; A file that somebody still runs or has loaded (a worker has the proxy/stub) cannot be replaced, but
; it can be renamed: it goes when Windows starts the next time.
!macro MakeWay file
    Delete "${file}"
    ${If} ${FileExists} "${file}"
        GetTempFileName $R8 "$INSTDIR"
        Delete "$R8"
        Rename "${file}" "$R8"
        Delete /REBOOTOK "$R8"
    ${EndIf}
!macroend

; An unpacked file takes its place.
!macro Swap file
    !insertmacro MakeWay "$INSTDIR\${file}"
    ClearErrors
    Rename "${NEW_FILES}\${file}" "$INSTDIR\${file}"
    ${If} ${Errors}
        StrCpy $SwapFailed 1
    ${EndIf}
!macroend

; What a failure leaves: the supervisor that was ended runs again, with its daemons.
!macro Fail text
    Push "${text}"
    !ifdef __UNINSTALL__
        Call un.Failed
    !else
        Call Failed
    !endif
!macroend

!include "${FILES}"

!macro CommonFunctions un
Function ${un}Failed
    Pop $R9
    DetailPrint $R9
    RMDir /r "${NEW_FILES}"
    RMDir "$INSTDIR" ; if there was nothing before
    ${If} $WasRunning = 1
    ${AndIf} ${FileExists} "$INSTDIR\DaemonManager.exe"
        Call ${un}StartSupervisor
    ${EndIf}
    MessageBox MB_OK|MB_ICONSTOP $R9 /SD IDOK
    SetErrorLevel 2
    Quit
FunctionEnd

; Sets $0 to daemonctl's exit code. With a copy of its own: the installed one may be older, or gone.
Function ${un}Daemonctl
    Exch $R7
    nsExec::Exec '"$PLUGINSDIR\daemonctl.exe" $R7'
    Pop $0
    Pop $R7
FunctionEnd

; Ends a supervisor in order; its daemons run on. Returns when it has gone and its file is free.
Function ${un}EndSupervisor
    StrCpy $WasRunning 0
    ; What runs, for the hand-over. Without it the log tells, as far as it reaches back.
    StrCpy $Listing "$PLUGINSDIR\running.json"
    nsExec::Exec '"$SYSDIR\cmd.exe" /c ""$PLUGINSDIR\daemonctl.exe" ps --json > "$Listing""'
    Pop $0
    ${If} $0 != 0
        StrCpy $Listing ""
    ${EndIf}
    Push "exit"
    Call ${un}Daemonctl
    ${If} $0 = 0
        StrCpy $WasRunning 1
        DetailPrint "The running supervisor ends; its daemons run on"
    ${ElseIf} $0 <> ${NO_SUPERVISOR}
        !insertmacro Fail "The running supervisor cannot be ended (daemonctl exit: $0)."
    ${EndIf}

    StrCpy $1 0
    ${Do}
        StrCpy $2 1 ; it has gone
        ${If} $WasRunning = 1
            Push "${ASK_FOR_SUPERVISOR}"
            Call ${un}Daemonctl
            ${If} $0 <> ${NO_SUPERVISOR}
                StrCpy $2 0
            ${EndIf}
        ${EndIf}
        ${If} $2 = 1
        ${AndIf} ${FileExists} "$INSTDIR\DaemonManager.exe"
            ClearErrors ; a program that runs cannot be opened for writing
            FileOpen $3 "$INSTDIR\DaemonManager.exe" a
            ${If} ${Errors}
                StrCpy $2 0
            ${Else}
                FileClose $3
            ${EndIf}
        ${EndIf}
        ${If} $2 = 1
            Return
        ${EndIf}
        IntOp $1 $1 + 1
        Sleep ${ATTEMPT_MS}
    ${LoopUntil} $1 > ${END_ATTEMPTS}
    StrCpy $WasRunning 0 ; it still runs: there is nothing to start
    !insertmacro Fail "DaemonManager.exe still runs. End it, then try again."
FunctionEnd

; Starts the installed supervisor and hands the daemons of the former one over to it.
; Sets $0 to what daemonctl reattach ended with; "error" when the supervisor does not answer.
Function ${un}StartSupervisor
    DetailPrint "Starting the supervisor and handing the daemons over"
    Exec '"$INSTDIR\DaemonManager.exe"'
    StrCpy $1 0
    ${Do}
        Push "${ASK_FOR_SUPERVISOR}"
        Call ${un}Daemonctl
        ${If} $0 = ${SUPERVISOR_ANSWERED}
            ${If} $Listing == ""
                Push "reattach"
            ${Else}
                Push 'reattach --from "$Listing"'
            ${EndIf}
            Call ${un}Daemonctl
            Return
        ${EndIf}
        IntOp $1 $1 + 1
        Sleep ${ATTEMPT_MS}
    ${LoopUntil} $1 > ${START_ATTEMPTS}
    StrCpy $0 error
FunctionEnd
!macroend
!insertmacro CommonFunctions ""
!insertmacro CommonFunctions "un."

; Sets $1 to what stands behind an option's "=", empty if it is not there. Understands both ways to
; quote, /ROOT="C:\My Firmware" and "/ROOT=C:\My Firmware".
Function OptionValue
    Exch $R0 ; "/ROOT="
    ${GetParameters} $R1
    StrLen $R2 $R0
    StrCpy $1 ""
    StrCpy $R3 0
    ${Do}
        StrCpy $R4 $R1 $R2 $R3
        ${If} $R4 == ""
            Pop $R0
            Return
        ${EndIf}
        ${If} $R4 == $R0
            ${Break}
        ${EndIf}
        IntOp $R3 $R3 + 1
    ${Loop}
    StrCpy $R5 " " ; what ends the value
    ${If} $R3 > 0
        IntOp $R6 $R3 - 1
        StrCpy $R5 $R1 1 $R6
    ${EndIf}
    IntOp $R3 $R3 + $R2
    StrCpy $R4 $R1 1 $R3
    ${If} $R4 == '"'
        StrCpy $R5 '"'
        IntOp $R3 $R3 + 1
    ${EndIf}
    ${Do}
        StrCpy $R4 $R1 1 $R3
        ${If} $R4 == ""
        ${OrIf} $R4 == $R5
            ${Break}
        ${EndIf}
        StrCpy $1 "$1$R4"
        IntOp $R3 $R3 + 1
    ${Loop}
    Pop $R0
FunctionEnd

; Cuts $Root as the supervisor does: before the first "\App", letter case looked at.
Function CutRootAtApp
    StrCpy $0 0
    ${Do}
        StrCpy $1 $Root 4 $0
        ${If} $1 S== "\App"
            StrCpy $Root $Root $0
            Return
        ${EndIf}
        IntOp $0 $0 + 1
    ${LoopUntil} $1 == ""
FunctionEnd

; Sets $Root and $WritePathname from the registry, else from /ROOT=, else by default.
Function FindRoot
    StrCpy $WritePathname 0
    ClearErrors
    ReadRegStr $Root HKLM "${FIRMWARE_KEY}" "Pathname"
    ${IfNot} ${Errors}
        Call CutRootAtApp
        Return
    ${EndIf}
    ClearErrors
    EnumRegValue $0 HKLM "${FIRMWARE_KEY}" 0 ; an error if there is no such key
    ${If} ${Errors}
        StrCpy $1 0
    ${Else}
        StrCpy $1 1 ; where this key exists without a value, the older one is not consulted
    ${EndIf}
    ClearErrors
    ReadRegStr $Root HKLM "${OLDER_FIRMWARE_KEY}" "Pathname"
    ${IfNot} ${Errors}
        StrCpy $WritePathname $1
        Call CutRootAtApp
        Return
    ${EndIf}
    StrCpy $WritePathname 1
    Push "/ROOT="
    Call OptionValue
    StrCpy $Root $1
    ${If} $Root == ""
        System::Call 'kernel32::GetDriveType(t "D:\") i .r0'
        ${If} $0 = ${DRIVE_FIXED}
            StrCpy $Root "D:\FIRMWARE"
        ${Else}
            StrCpy $Root $WINDIR 2
            StrCpy $Root "$Root\FIRMWARE"
        ${EndIf}
    ${EndIf}
FunctionEnd

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

; Notes what this installation makes, by its name: the firmware root may be another one the next time.
; A note that an earlier one left stays where this one makes nothing.
!macro NoteMade what name
    WriteRegStr HKLM "${OWN_KEY}" "Made${what}" "${name}"
!macroend

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

Function WriteFirmwareRoot
    ClearErrors
    EnumRegKey $0 HKLM "${FIRMWARE_PRODUCT}" 0
    ${If} ${Errors}
        !insertmacro NoteMade ProductKey "${FIRMWARE_PRODUCT}"
    ${EndIf}
    ClearErrors
    EnumRegKey $0 HKLM "${FIRMWARE_KEY}" 0
    ${If} ${Errors}
        !insertmacro NoteMade FirmwareKey "${FIRMWARE_KEY}"
    ${EndIf}
    WriteRegStr HKLM "${FIRMWARE_KEY}" "Pathname" "$Root\App"
    WriteRegStr HKLM "${OWN_KEY}" "MadePathname" "$Root\App"
FunctionEnd

Section
    ${If} $Root == ""
        !insertmacro Fail "The registry's value Pathname names no firmware root."
    ${EndIf}
    InitPluginsDir
    SetOutPath "$TEMP" ; what is started must have no folder for its own that is to go
    File "/oname=$PLUGINSDIR\daemonctl.exe" "${STAGING}/daemonctl.exe"
    !insertmacro MakeFolder Root "$Root"
    !insertmacro MakeFolder App "$Root\App"
    !insertmacro MakeFolder Logs "$Root\Logs"
    ${IfNot} ${FileExists} "$Root\Logs\DaemonManager.log"
        !insertmacro NoteMade Log "$Root\Logs\DaemonManager.log"
    ${EndIf}

    ; All that can fail for want of room or rights is done beside the old files, while the supervisor
    ; runs on. Then the files only change their names.
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
            DetailPrint "Not every daemon was handed over: daemonctl reattach says why ($0)"
            SetErrorLevel 3
        ${EndIf}
    ${EndIf}
SectionEnd

Function un.onInit
    SetRegView 64
    SetShellVarContext all
    StrCpy $WasRunning 0
    ; However this was called, the folder's name is the one that was installed to.
    ReadRegStr $0 HKLM "${OWN_KEY}" "InstallLocation"
    ${If} $0 != ""
    ${AndIf} ${FileExists} "$0\Uninstall.exe"
        StrCpy $INSTDIR $0
    ${EndIf}
FunctionEnd

; Goes on with what follows only if this installation made it.
; $R0 is what it made.
!macro IfMade what
    ReadRegStr $R0 HKLM "${OWN_KEY}" "Made${what}"
    ${If} $R0 != ""
!macroend

Function un.RemoveFirmwareRoot
    ReadRegStr $0 HKLM "${OWN_KEY}" "MadePathname"
    ReadRegStr $1 HKLM "${FIRMWARE_KEY}" "Pathname"
    ${If} $0 != ""
    ${AndIf} $0 S== $1 ; nobody has changed it since
        DeleteRegValue HKLM "${FIRMWARE_KEY}" "Pathname"
        !insertmacro IfMade FirmwareKey
            DeleteRegKey /ifempty HKLM "${FIRMWARE_KEY}"
        ${EndIf}
        !insertmacro IfMade ProductKey
            DeleteRegKey /ifempty HKLM "${FIRMWARE_PRODUCT}"
        ${EndIf}
    ${EndIf}
FunctionEnd

; Only an empty folder goes. When Windows starts the next time, if it is a daemon's working folder now
; or if what it holds goes then.
!macro RemoveFolder folder
    ${DirState} "${folder}" $0
    ${If} $0 = 0
    ${OrIf} ${RebootFlag}
        RMDir /REBOOTOK "${folder}"
    ${EndIf}
!macroend

!macro RemoveMadeFolder what
    !insertmacro IfMade ${what}
        !insertmacro RemoveFolder "$R0"
    ${EndIf}
!macroend

Function un.RemoveLogAndFolders
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/KEEPLOG" $2
    ${If} ${Errors}
        !insertmacro IfMade Log
            Delete "$R0"
        ${EndIf}
    ${EndIf}
    !insertmacro RemoveMadeFolder Logs
    !insertmacro RemoveMadeFolder App
    !insertmacro RemoveMadeFolder Root
FunctionEnd

Section Uninstall
    InitPluginsDir
    SetOutPath "$TEMP"
    CopyFiles /SILENT "$INSTDIR\daemonctl.exe" "$PLUGINSDIR\daemonctl.exe"
    Call un.EndSupervisor

    ReadRegStr $0 HKLM "${PROXY_KEY}" ""
    ${If} $0 == "$INSTDIR\DaemonMgrPS.dll" ; another installation's stays
        nsExec::Exec '"$SYSDIR\regsvr32.exe" /s /u "$INSTDIR\DaemonMgrPS.dll"'
        Pop $0
    ${EndIf}
    !insertmacro MakeWayForFiles
    Delete "$INSTDIR\Uninstall.exe"
    !insertmacro RemoveFolders
    !insertmacro RemoveFolder "$INSTDIR"
    Call un.RemoveFirmwareRoot
    Call un.RemoveLogAndFolders
    DeleteRegKey HKLM "${OWN_KEY}"
SectionEnd
