"""Lists the files that the installer installs and the uninstaller removes."""


def _windows(path):
    return str(path).replace("/", "\\")


def write_installer_files(target, staging, files):
    """Writes four NSIS macros that name every file. The uninstaller removes only these files, so it
    leaves files of others in the folder."""
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
