; The uninstaller. It removes only what this installation made.

Function un.onInit
    SetRegView 64
    SetShellVarContext all
    StrCpy $WasRunning 0
    ; Takes the folder's name from the registry, because the uninstaller may have been started with
    ; another name of this folder.
    ReadRegStr $0 HKLM "${OWN_KEY}" "InstallLocation"
    ${If} $0 != ""
    ${AndIf} ${FileExists} "$0\Uninstall.exe"
        StrCpy $INSTDIR $0
    ${EndIf}
FunctionEnd

; Begins a block that runs only if this installation made the thing; sets $R0 to its name. ${EndIf}
; ends the block.
!macro IfMade what
    ReadRegStr $R0 HKLM "${OWN_KEY}" "Made${what}"
    ${If} $R0 != ""
!macroend

; Removes the value Pathname and the keys that this installation made.
Function un.RemoveFirmwareRoot
    ReadRegStr $0 HKLM "${OWN_KEY}" "MadePathname"
    ReadRegStr $1 HKLM "${FIRMWARE_KEY}" "Pathname"
    ${If} $0 != ""
    ${AndIf} $0 S== $1 ; nobody has changed the value since
        DeleteRegValue HKLM "${FIRMWARE_KEY}" "Pathname"
        !insertmacro IfMade FirmwareKey
            DeleteRegKey /ifempty HKLM "${FIRMWARE_KEY}"
        ${EndIf}
        !insertmacro IfMade ProductKey
            DeleteRegKey /ifempty HKLM "${FIRMWARE_PRODUCT}"
        ${EndIf}
    ${EndIf}
FunctionEnd

; Removes a folder if it is empty. If a daemon works in it now, or a file in it is deleted only at the
; next start of Windows, Windows removes the folder then.
!macro RemoveFolder folder
    ${DirState} "${folder}" $0
    ${If} $0 = 0
    ${OrIf} ${RebootFlag}
        RMDir /REBOOTOK "${folder}"
    ${EndIf}
!macroend

; Removes a folder if this installation made it and it is empty.
!macro RemoveMadeFolder what
    !insertmacro IfMade ${what}
        !insertmacro RemoveFolder "$R0"
    ${EndIf}
!macroend

; Removes the log, unless /KEEPLOG was given, and the folders of the firmware root.
Function un.RemoveLogAndFolders
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/KEEPLOG" $2
    ${If} ${Errors}
        !insertmacro IfMade Log
            Delete "$R0"
            Delete "$R0.damaged"
            Delete "$R0.damaged2"
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
    ${If} $0 == "$INSTDIR\DaemonMgrPS.dll" ; a proxy/stub of another installation stays registered
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
