#!/bin/bash
# Checks the text and the colours that the console sink writes to a terminal:
#   console_test.sh PROGRAM
# The program runs on a pseudo-terminal. It writes a line of each level and checks that the colour
# is grey again afterwards.
set -uo pipefail
tools=$(cd "$(dirname "$0")/../../tools" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() {
    echo "console_test: $*" >&2
    cat -v "$folder/typescript" >&2
    exit 1
}

# The keyboard is a pipe that stays open without input: script ends at the end of its input.
mkfifo "$folder/keyboard"
exec {keyboard}<>"$folder/keyboard"
script -qefc "stty cols 120 rows 40; $tools/wine-run $1" "$folder/typescript" >/dev/null <&$keyboard ||
    fail "the program ended with exit code $? (shows_levels.cpp explains it)"

# Removes the sequences that hide and show the cursor. A grey blank is a step of the cursor to the
# right.
shown=$(sed -e 's/\x1b\[?25[hl]//g; s/\x1b\[K//g; s/\x1b\[1C/ /g; s/\r//g' "$folder/typescript")
time='[A-Z][a-z][a-z] Nov [0-9][0-9] [0-9][0-9]:[0-9][0-9]:16\.007'
expect() { # COLOUR TEXT
    grep -qE "^"$'\033'"\\[$1m$time $2\$" <<<"$shown" ||
        fail "the line \"$2\" is missing or has the wrong colour"
}
expect 91 error
expect 93 warning
expect '' information
expect 92 detail
