#!/bin/bash
# Looks at what the console sink writes to a terminal, on a pseudo-terminal:
#   console_test.sh PROGRAM
# The program writes a line of each level and checks that the colour is grey again afterwards.
set -uo pipefail
tools=$(cd "$(dirname "$0")/../../tools" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() {
    echo "console_test: $*" >&2
    cat -v "$folder/typescript" >&2
    exit 1
}

# The keyboard is open and silent: at the end of its input script would not rest.
mkfifo "$folder/keyboard"
exec {keyboard}<>"$folder/keyboard"
script -qefc "stty cols 120 rows 40; $tools/wine-run $1" "$folder/typescript" >/dev/null <&$keyboard ||
    fail "the screen is not as it should be: $?"

# Without the cursor's hiding and showing; a blank in grey comes as a step to the right.
shown=$(sed -e 's/\x1b\[?25[hl]//g; s/\x1b\[K//g; s/\x1b\[1C/ /g; s/\r//g' "$folder/typescript")
time='[A-Z][a-z][a-z] Nov [0-9][0-9] [0-9][0-9]:[0-9][0-9]:16\.007'
expect() { # COLOUR TEXT
    grep -qE "^"$'\033'"\\[$1m$time $2\$" <<<"$shown" || fail "$2 is not shown in its colour"
}
expect 91 error
expect 93 warning
expect '' information
expect 92 detail
