#!/bin/bash
# Checks the completions of bash: sources the script that daemonctl prints for bash, and calls its
# function as bash does.
#   completion_test.sh FOLDER_OF_DAEMONCTL
set -u
cd "$(dirname "$0")/../.."
script=$(mktemp)
trap 'rm -f "$script"' EXIT
# Standard error goes nowhere: a server of Wine that starts now would keep it open after the test.
tools/wine-run "$1/daemonctl.exe" completion bash </dev/null >"$script" 2>/dev/null || exit 1
if grep -q $'\r' "$script"; then
    echo "the script contains carriage returns, which bash treats as parts of words" >&2
    exit 1
fi
# shellcheck disable=SC1090
source "$script" || exit 1
# Stands for the program that the function asks for the ids.
daemonctl() {
    [ "$1" = --daemon-ids ] && printf '3 C:\\a.exe --in 1\n14 C:\\b c.exe\n' | grep "^$2"
}
export DAEMONCTL_COMPLETION_SECONDS=30 # this machine may be busy

failures=0
expect() { # OFFERED_WORDS TYPED_WORD...: the last typed word is to be completed
    local offered=$1
    shift
    COMP_WORDS=(daemonctl "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    _daemonctl
    if [ "${COMPREPLY[*]}" != "$offered" ]; then
        echo "daemonctl $*: offers '${COMPREPLY[*]}', expected '$offered'" >&2
        failures=$((failures + 1))
    fi
}
expect 'reattach restart report record' re
expect '--help --version' --
expect 'running restarted' wait 3 --for r
expect 'supervisor' wait --for s
expect '--for' wait 3 --f
expect '--timeout' wait 3 --t
expect '--help --for --timeout 3 14' wait ''
expect '14' stop 1
expect '14' restart 3 1
expect '--help bash powershell' completion ''
expect '--prune' doctor --p
expect '' wait 3 --timeout ''
expect 'always' log --color al
expect 'auto ansi windows-1252 utf-8' log --encoding ''
COMP_TYPE=63 # bash lists what it offers
expect '3  (C:\a.exe --in 1)' stop 3
expect '14  (C:\b c.exe)' detach 1
# A program that hangs: the ids are given up, the options are offered.
hang=$(mktemp -u)
mkfifo "$hang" && exec 3<>"$hang"
rm "$hang"
daemonctl() { echo 3; read -r _ <&3; }
unset COMP_TYPE DAEMONCTL_COMPLETION_SECONDS
expect '--help --for --timeout' wait ''
echo go on >&3
exit $((failures != 0))
