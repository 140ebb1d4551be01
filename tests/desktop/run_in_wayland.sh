#!/usr/bin/env bash
# Runs an operator script in a window of a Wayland compositor without a display (weston), in real time.
#   run_in_wayland.sh PROGRAM SCRIPT DIRECTORY [ARGUMENT...]
# As run_in_window.sh; where there is no weston it says so, with exit code 77.
set -eu
program=$1 script=$2 directory=$3
shift 3
command -v weston >/dev/null || { echo "skipped: weston, the Wayland compositor, isn't installed"; exit 77; }

rm -rf "$directory"
mkdir -p "$directory"/data "$directory"/run "$directory"/home
chmod 700 "$directory/run"
cd "$directory"
# A socket's path is short: the run directory may lie deep.
runtime=$(mktemp -d)
export HOME=$directory/home XDG_RUNTIME_DIR=$runtime XDG_CONFIG_HOME=$directory/home/.config XDG_DATA_HOME=$directory/home/.local/share
export XDG_STATE_HOME=$directory/home/.local/state XDG_CACHE_HOME=$directory/home/.cache
unset DISPLAY DBUS_SESSION_BUS_ADDRESS
export LC_ALL=C.UTF-8

weston --backend=headless-backend.so --socket=kelvo-test --width=1280 --height=1024 --idle-time=0 >weston.log 2>&1 &
compositor=$!
end() { kill "$compositor" 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$runtime"; }
trap end EXIT
for _ in $(seq 200); do [ -S "$runtime/kelvo-test" ] && break; sleep 0.05; done
[ -S "$runtime/kelvo-test" ] || { cat weston.log >&2; echo "weston doesn't start" >&2; exit 99; }

export WAYLAND_DISPLAY=kelvo-test QT_QPA_PLATFORM=wayland
code=0
"$program" --data "$directory/data" --transcript "$directory/transcript.jsonl" --script "$script" "$@" || code=$?
exit $code
