#!/bin/sh
# make_links.sh FOLDER: makes a folder "target" with a file, and a folder "t" with links to both.
set -e
rm -rf "$1"
mkdir -p "$1/target" "$1/t"
printf x > "$1/target/precious"
printf x > "$1/t/a"
ln -s ../target "$1/t/link"
ln -s ../target/precious "$1/t/file_link"
