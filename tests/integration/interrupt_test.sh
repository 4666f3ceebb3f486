#!/bin/bash
# Ends the supervisor with an interrupt, as Ctrl+C in its terminal does, and checks that it ends in
# order:
#   interrupt_test.sh BIN plain  without a terminal, with a signal
#   interrupt_test.sh BIN typed  on a pseudo-terminal, with the key Ctrl+C
set -uo pipefail
bin=$1
kind=$2
tools=$(cd "$(dirname "$0")/../../tools" && pwd)
: "${WINEPREFIX:?run me by tools/wine-prefix --run}"
export WINEPREFIX WINEDEBUG=-all
folder=$(mktemp -d)
root=$WINEPREFIX/drive_c/dm_interrupt_test
log=$root/Logs/DaemonManager.log
notes=$folder/notes
key='HKLM\SOFTWARE\UnitWarden'
keyboard=
supervisor=

fail() {
    echo "interrupt_test: $*" >&2
    cat "$folder"/typescript "$folder"/console 2>/dev/null
    exit 1
}
windows() { timeout 60 "$tools/wine-run" "$@" >"$notes" 2>&1 </dev/null; }
clean_up() {
    [ -s "$folder/pid" ] && kill -KILL "$(cat "$folder/pid")" 2>/dev/null
    [ -n "$keyboard" ] && exec {keyboard}>&-
    windows reg delete "$key" /f
    rm -rf "$root" "$folder"
}
trap clean_up EXIT

mkdir -p "$root/App"
windows reg add "$key\\CurrentVersion" /v Pathname /d 'C:\dm_interrupt_test' /f ||
    fail "cannot write the registry key"
start="echo \$\$ >$folder/pid; exec $tools/wine-run $bin/DaemonManager.exe"
case $kind in
    plain)
        sh -c "$start" >"$folder/console" 2>&1 </dev/null &
        ;;
    *)
        # The keyboard is a pipe that stays open without input: script ends at the end of its input.
        mkfifo "$folder/keyboard"
        exec {keyboard}<>"$folder/keyboard"
        script -qefc "$start" "$folder/typescript" >/dev/null 2>&1 <&$keyboard &
        ;;
esac
supervisor=$!

# Waits until the supervisor is published. Then daemonctl finds it, even without a registered proxy.
deadline=$((SECONDS + 60))
until windows "$bin/daemonctl.exe" detach 4711; [ $? -eq 1 ] ||
    grep -q 'the supervisor runs, but' "$notes"; do
    [ $SECONDS -lt $deadline ] || fail "the supervisor was not published within 60 s"
    kill -0 $supervisor 2>/dev/null || fail "the supervisor ended before it was published"
done

if [ "$kind" = typed ]; then
    printf '\003' >&"$keyboard"
else
    kill -INT "$(cat "$folder/pid")"
fi
wait $supervisor
result=$?
[ $result -eq 0 ] || fail "the supervisor ended with exit code $result"
rm -f "$folder/pid"
[ "$(tr -d '\r' <"$log" | tail -n 1 | cut -d ';' -f 4-)" = '2;Deamon Thread is exiting...' ] ||
    fail "the log ends with a wrong line: $(tail -n 1 "$log")"
grep -q 'occured' "$log" && fail "the log shows a failure"
windows "$bin/daemonctl.exe" detach 4711
[ $? -eq 3 ] && grep -q 'no supervisor is running on this machine' "$notes" ||
    fail "the supervisor is still published after its end"
if [ "$kind" != plain ]; then
    grep -q $'\033]0;DaemonManager\a' "$folder/typescript" || fail "the console has no title"
fi
exit 0
