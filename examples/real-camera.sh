#!/usr/bin/env bash
# The way of a true camera, with one that stands on this machine's loopback: found by Setup > Cameras..., wired, turned on, calibrated, recorded,
# killed during the recording, back again. Prints the account of its frames. Builds what it needs; everything is left in one directory.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
[ -f CMakeLists.txt ] || { echo "This needs Kelvo's sources: the camera on the loopback isn't installed." >&2; exit 1; }
[ -x build/release/src/kelvo ] && [ -x build/release/tools/kelvo-fake-camera ] || echo "Building Kelvo. The first time this takes some minutes."
cmake --preset release >/dev/null
cmake --build --preset release --target kelvo --target kelvo-fake-camera -- --quiet

out=${1:-${XDG_DATA_HOME:-$HOME/.local/share}/kelvo-real-camera}
rm -rf "$out/data"
mkdir -p "$out/data"
# Where it doesn't come to its end, the camera is switched off here.
trap '[ ! -f "$out/camera.pid" ] || kill "$(cat "$out/camera.pid")"' EXIT
build/release/src/kelvo --offscreen --data "$out/data" --transcript "$out/real-camera.jsonl" --script examples/real-camera.lua \
    -- "$out" "$top/build/release/tools/kelvo-fake-camera"
echo "Pictures, the recording and the transcript are in $out"
