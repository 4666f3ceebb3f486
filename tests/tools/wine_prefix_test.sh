#!/bin/bash
# What tools/wine-prefix promises of the pool of Wine prefixes.
set -uo pipefail
tools=$(cd "$(dirname "$0")/../../tools" && pwd)
pool=$(mktemp -d)
unset WINEPREFIX
pattern=${DM_WINE_POOL:-${1:?the pool whose pattern to use}}/pattern
export DM_WINE_POOL=$pool
trap '"$tools/wine-prefix" --stop; rm -rf "$pool"' EXIT
ln -s "$pattern" "$pool/pattern"
failed=0

promise() { # TEXT CONDITION...
    local text=$1
    shift
    if "$@"; then echo "ok: $text"; else
        echo "FAILED: $text"
        failed=1
    fi
}
lend() { "$tools/wine-prefix" --run sh -c "$1"; }

# The first command waits until the second one has run.
mkfifo "$pool/go"
lend "echo \$WINEPREFIX >$pool/first; read -r _ <$pool/go" &
until [ -s "$pool/first" ]; do sleep 0.1; done
lend "echo \$WINEPREFIX >$pool/second"
echo >"$pool/go"
wait
promise "two commands at a time have two prefixes" \
    test "$(cat "$pool/first")" != "$(cat "$pool/second")"

lend "echo \$WINEPREFIX >$pool/third; touch \$WINEPREFIX/mark"
promise "a prefix is lent again after its command has ended" \
    test "$(cat "$pool/third")" = "$(cat "$pool/first")"
lend "test -e \$WINEPREFIX/mark"
promise "a prefix stays as a command left it that passed" test $? = 0
lend "exit 3"
promise "the exit code is the command's" test $? = 3
lend "test ! -e \$WINEPREFIX/mark"
promise "after a command that failed the prefix is made again" test $? = 0
promise "Wine's own libraries are shared with the pattern" \
    test "$pool/1/drive_c/windows/system32/kernel32.dll" -ef \
    "$pool/pattern/drive_c/windows/system32/kernel32.dll"
promise "the registry is not shared with the pattern" \
    test ! "$pool/1/system.reg" -ef "$pool/pattern/system.reg"
exit $failed
