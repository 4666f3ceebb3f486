#!/bin/bash
# Checks `daemonctl ps --watch` on a terminal and without one:
#   watch_test.sh FOLDER_OF_THE_PROGRAMS
# On a terminal the table stands in a screen of its own, a restart is marked, and Ctrl+C restores the
# screen. Without one, each look is a table. Runs in a Wine prefix of the pool.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tools=$here/../../tools
bin=$1
folder=$(mktemp -d)
export WINEDEBUG=-all
root=$WINEPREFIX/drive_c/WATCH
fail() {
    echo "watch_test: $*" >&2
    [ -f "$folder/typescript" ] && tail -c 3000 "$folder/typescript" | cat -v >&2
    [ -f "$folder/plain" ] && cat "$folder/plain" >&2
    exit 1
}
clean_up() {
    trap - EXIT
    # The next program of the prefix may belong to another build.
    windows regsvr32 /u /s "$bin/DaemonMgrPS.dll"
    windows reg delete 'HKLM\SOFTWARE\UnitWarden' /f
    wineserver -k >/dev/null 2>&1
    wineserver -w >/dev/null 2>&1
    wait
    rm -rf "$folder" "$root"
}
trap clean_up EXIT
windows() { "$tools/wine-run" "$@" >"$folder/output" 2>&1 </dev/null; }
wait_for() { # FILE TEXT COUNT: until the file holds this text so often
    for ((attempt = 0; attempt < 1200; ++attempt)); do
        [ "$(grep -ao -- "$2" "$1" 2>/dev/null | wc -l)" -ge "$3" ] && return
        sleep 0.1
    done
    fail "\"$2\" does not appear $3 times in $(basename "$1")"
}

rm -rf "$root"
mkdir -p "$root/App" "$root/Logs"
windows reg add 'HKLM\SOFTWARE\UnitWarden\CurrentVersion' /v Pathname /d 'C:\WATCH\App' /f &&
    windows regsvr32 /s "$bin/DaemonMgrPS.dll" || fail "cannot prepare the prefix"
"$tools/wine-run" "$bin/DaemonManager.exe" >/dev/null 2>&1 </dev/null &
wait_for "$root/Logs/DaemonManager.log" 'Deamon Thread started' 1
windows "$bin/daemonctl.exe" launch --wait 60 'C:\windows\system32\notepad.exe' || fail "cannot launch"

# Without a terminal.
"$tools/wine-run" "$bin/daemonctl.exe" ps --watch 1 >"$folder/plain" 2>&1 </dev/null &
plain=$!
wait_for "$folder/plain" 'ID  STATE' 3
wait_for "$folder/plain" ' 0  running .*notepad.exe' 3
kill "$plain"

# On a terminal. The keyboard is a pipe that stays open, because script ends at the end of its input.
mkfifo "$folder/keyboard"
exec {keyboard}<>"$folder/keyboard"
script -qefc "stty cols 100 rows 30; $tools/wine-run $bin/daemonctl.exe ps --watch; echo ended with \$?" \
    "$folder/typescript" >/dev/null <&$keyboard &
wait_for "$folder/typescript" 'Ctrl+C ends' 1
wait_for "$folder/typescript" 'notepad.exe' 2 # in the table, and in a record below it
windows taskkill /f /im notepad.exe || fail "cannot kill the daemon"
wait_for "$folder/typescript" 'exit code' 1 # the record of the end
printf '\003' >&$keyboard
wait_for "$folder/typescript" 'ended with 0' 1
echo "ps --watch: no problems found"
