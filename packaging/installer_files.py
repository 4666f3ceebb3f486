"""The installer's lists of files: what it brings, and what its uninstaller takes away."""


def _windows(path):
    return str(path).replace("/", "\\")


def write_installer_files(target, staging, files):
    """Writes four NSIS macros. Every file is named: the uninstaller never empties a folder of what
    is not its own."""
    folders = sorted({parent for name in files for parent in name.parents if parent.name},
                     key=lambda path: (-len(path.parts), path.as_posix()))
    lines = ["!macro MakeWayForFiles"]
    lines += [f'    !insertmacro MakeWay "$INSTDIR\\{_windows(name)}"' for name in files]
    lines += ["!macroend", "", "!macro UnpackFiles"]
    for folder in sorted({name.parent for name in files}, key=lambda path: path.as_posix()):
        lines.append(f'    SetOutPath "${{NEW_FILES}}\\{_windows(folder)}"' if folder.name
                     else '    SetOutPath "${NEW_FILES}"')
        lines += [f'    File "{staging / name}"' for name in files if name.parent == folder]
    lines += ["!macroend", "", "!macro SwapFiles"]
    lines += [f'    CreateDirectory "$INSTDIR\\{_windows(folder)}"' for folder in reversed(folders)]
    lines += [f'    !insertmacro Swap "{_windows(name)}"' for name in files]
    lines += ["!macroend", "", "!macro RemoveFolders"]
    lines += [f'    RMDir "$INSTDIR\\{_windows(folder)}"' for folder in folders]
    lines += ["!macroend", ""]
    target.write_text("\n".join(lines))
