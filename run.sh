#!/usr/bin/env bash
# Builds Kelvo and starts it. Arguments go to the program; without a display it runs examples/first-light.lua offscreen instead.
set -eu
top=$(cd "$(dirname "$0")" && pwd)
"$top/cmake/install-packages.sh"

kelvo=$top/build/release/src/kelvo
[ -x "$kelvo" ] || echo "Building Kelvo. The first time this takes some minutes."
(cd "$top" && cmake --preset release >/dev/null && cmake --build --preset release -- --quiet)

if [ $# -gt 0 ] || [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    exec "$kelvo" "$@"
fi

out=${XDG_DATA_HOME:-$HOME/.local/share}/kelvo-first-light
mkdir -p "$out/data"
# The bytes that go to the camera head are logged there.
[ -f "$out/data/kelvo.ini" ] || sed 's/^CommLog=0/CommLog=1/' "$top/src/resources/defaults/kelvo.ini" >"$out/data/kelvo.ini"
run() { # run SCRIPT [ARGUMENT...]
    local script=$1
    shift
    "$kelvo" --offscreen --virtual-time --data "$out/data" --transcript "$out/${script%.lua}.jsonl" \
        --script "$top/examples/$script" "$@" -- "$out"
}
echo "There is no display: Kelvo runs examples/first-light.lua offscreen, then starts again with the calibration made there."
run first-light.lua
run next-start.lua AUTOSTART last.cal
echo "Pictures, files, transcripts and the head's byte log are in $out"
