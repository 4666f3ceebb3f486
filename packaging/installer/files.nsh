; Replacing of files.

; Makes a file's name free. Windows does not delete a program that runs or a library that is loaded
; (workers load the proxy/stub), but it renames them. Windows deletes the renamed file at its next
; start.
!macro MakeWay file
    Delete "${file}"
    ${If} ${FileExists} "${file}"
        GetTempFileName $R8 "$INSTDIR"
        Delete "$R8"
        Rename "${file}" "$R8"
        Delete /REBOOTOK "$R8"
    ${EndIf}
!macroend

; Moves an unpacked file to its place. Sets $SwapFailed if that fails.
!macro Swap file
    !insertmacro MakeWay "$INSTDIR\${file}"
    ClearErrors
    Rename "${NEW_FILES}\${file}" "$INSTDIR\${file}"
    ${If} ${Errors}
        StrCpy $SwapFailed 1
    ${EndIf}
!macroend
