; The running supervisor, for the installer and the uninstaller: end it, start it again, hand its
; daemons over. Functions of the uninstaller must have a name that begins with "un.", so the macro
; CommonFunctions defines every function twice.

; The supervisor finishes a stop that is under way before it ends, which may take a minute: "daemonctl
; exit" waits for it, at most two minutes, and the loop below waits two minutes more. At its start it
; waits for a firewall service that is starting, also two minutes.
!define END_ATTEMPTS 480
!define START_ATTEMPTS 480
!define ATTEMPT_MS 250

; Asks whether a supervisor answers. No daemon has this number, so the request changes nothing.
; daemonctl ends with 1 if a supervisor answers, and with 3 if none does.
!define ASK_FOR_SUPERVISOR "detach 4294967295"
!define SUPERVISOR_ANSWERED 1
!define NO_SUPERVISOR 3

; Exit code of "daemonctl exit" if the supervisor has not ended within two minutes
!define STILL_ENDS 4

; Exit codes of "daemonctl reattach"
!define REATTACHED 0
!define NOTHING_TO_REATTACH 1

; Ends the installation with a message. A supervisor that the installation ended is started again
; and gets its daemons back.
!macro Fail text
    Push "${text}"
    !ifdef __UNINSTALL__
        Call un.Failed
    !else
        Call Failed
    !endif
!macroend

!macro CommonFunctions un
Function ${un}Failed
    Pop $R9
    DetailPrint $R9
    RMDir /r "${NEW_FILES}"
    RMDir "$INSTDIR" ; only if it is empty
    ${If} $WasRunning = 1
    ${AndIf} ${FileExists} "$INSTDIR\DaemonManager.exe"
        Call ${un}StartSupervisor
    ${EndIf}
    MessageBox MB_OK|MB_ICONSTOP $R9 /SD IDOK
    SetErrorLevel 2
    Quit
FunctionEnd

; Runs daemonctl with the arguments on the stack and sets $0 to its exit code. Runs the copy in
; $PLUGINSDIR, because the installed daemonctl may be older or missing.
Function ${un}Daemonctl
    Exch $R7
    nsExec::Exec '"$PLUGINSDIR\daemonctl.exe" $R7'
    Pop $0
    Pop $R7
FunctionEnd

; Ends the supervisor with "daemonctl exit"; its daemons keep running. Returns after the process has
; ended and DaemonManager.exe can be written.
Function ${un}EndSupervisor
    StrCpy $WasRunning 0
    ; Lists the running daemons for the hand-over. Without the list, "daemonctl reattach" reads the
    ; log, which may not reach back to the start of every daemon.
    StrCpy $Listing "$PLUGINSDIR\running.json"
    nsExec::Exec '"$SYSDIR\cmd.exe" /c ""$PLUGINSDIR\daemonctl.exe" ps --json > "$Listing""'
    Pop $0
    ${If} $0 != 0
        StrCpy $Listing ""
    ${EndIf}
    Push "exit"
    Call ${un}Daemonctl
    ${If} $0 = 0
    ${OrIf} $0 = ${STILL_ENDS} ; the loop below waits for it once more
        StrCpy $WasRunning 1
        DetailPrint "The running supervisor ends; its daemons run on"
    ${ElseIf} $0 <> ${NO_SUPERVISOR}
        !insertmacro Fail "The running supervisor cannot be ended (daemonctl exit: $0)."
    ${EndIf}

    StrCpy $1 0
    ${Do}
        StrCpy $2 1 ; 1: the supervisor has ended
        ${If} $WasRunning = 1
            Push "${ASK_FOR_SUPERVISOR}"
            Call ${un}Daemonctl
            ${If} $0 <> ${NO_SUPERVISOR}
                StrCpy $2 0
            ${EndIf}
        ${EndIf}
        ${If} $2 = 1
        ${AndIf} ${FileExists} "$INSTDIR\DaemonManager.exe"
            ClearErrors ; Windows refuses to open a running program for writing
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
    StrCpy $WasRunning 0 ; the supervisor still runs, so it must not be started
    !insertmacro Fail "DaemonManager.exe still runs. End it, then try again."
FunctionEnd

; Starts the installed supervisor and hands the daemons of the former supervisor over to it.
; Sets $0 to the exit code of "daemonctl reattach", or to "error" if the supervisor does not answer.
Function ${un}StartSupervisor
    DetailPrint "Starting the supervisor and handing the daemons over"
    Exec '"$INSTDIR\DaemonManager.exe"'
    StrCpy $1 0
    ${Do}
        Push "${ASK_FOR_SUPERVISOR}"
        Call ${un}Daemonctl
        ${If} $0 = ${SUPERVISOR_ANSWERED}
            ; No daemon may be lost, and nobody is there to answer a question. The installer gives \Logs no
            ; rights, so on many machines every user may write there, and without --trust no daemon would
            ; be handed over.
            ${If} $Listing == ""
                Push "reattach --trust --outside"
            ${Else}
                Push 'reattach --trust --outside --from "$Listing"'
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
