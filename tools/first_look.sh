#!/usr/bin/env bash
# Makes the pictures of docs/first-look.md, at 100 % and at 200 %: the steps of tests/desktop/first_look.lua in a real window.
#   tools/first_look.sh [PROGRAM]      kelvo of build/dev where none is named
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
program=$(realpath "${1:-$top/build/dev/src/kelvo}")
images=$top/docs/images/first-look
run=/tmp/kelvo-first-look  # its name stands in the report's picture
trap 'rm -rf "$run"' EXIT
mkdir -p "$images"
for scale in 1 2; do
    "$top/tests/desktop/run_in_window.sh" "$program" "$top/tests/desktop/first_look.lua" "$run/$scale" --first-start --scale $scale --size $((1280 * scale))x$((1024 * scale)) -- typed
    for picture in "$run/$scale"/*.png; do
        cp "$picture" "$images/$(basename "$picture" .png)-$((100 * scale)).png"
    done
done
