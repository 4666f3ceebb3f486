#!/bin/sh
# make_many_files.sh FOLDER: a folder with a hundred thousand empty files.
set -e
rm -rf "$1"
mkdir -p "$1"
cd "$1"
seq 100000 | xargs touch
