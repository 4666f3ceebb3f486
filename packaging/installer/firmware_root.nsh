; The firmware root: where the registry names it, and how the installer chooses one.

!define DRIVE_FIXED 3 ; winbase.h

; Sets $1 to the value of the option on the stack ("/ROOT="), or to an empty text if the command
; line does not have this option. The value may be quoted in two ways: /ROOT="C:\My Firmware" and
; "/ROOT=C:\My Firmware".
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
    StrCpy $R5 " " ; the character after the value
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

; Cuts $Root before the first "\App", as the supervisor does. "\app" does not count.
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

; Sets $Root and $WritePathname. Looks for the root in the registry, then for the option /ROOT=, and
; then takes the default.
Function FindRoot
    StrCpy $WritePathname 0
    ClearErrors
    ReadRegStr $Root HKLM "${FIRMWARE_KEY}" "Pathname"
    ${IfNot} ${Errors}
        Call CutRootAtApp
        Return
    ${EndIf}
    ClearErrors
    EnumRegValue $0 HKLM "${FIRMWARE_KEY}" 0 ; an error if the key does not exist
    ${If} ${Errors}
        StrCpy $1 0
    ${Else}
        StrCpy $1 1 ; the supervisor does not read the older key if this key exists
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

; Writes $Root into the registry and notes which keys did not exist before.
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
