#!/bin/sh
# make_many_files.sh FOLDER: makes the folder "many" with a hundred thousand empty files, and the
# folder "deep" with a thousand levels of folders.
set -e
rm -rf "$1"
mkdir -p "$1/many" "$1/deep/$(printf 'd/%.0s' $(seq 1000))"
cd "$1/many"
seq 100000 | xargs touch
