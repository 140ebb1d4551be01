#!/usr/bin/env bash
# Runs an operator script in a real window: an X server of its own (Xvfb) with a small window manager (openbox), in real time.
#   run_in_window.sh PROGRAM SCRIPT DIRECTORY [--first-start] [--scale N] [--size WxH] [ARGUMENT...]
# A SCRIPT that ends in .py is run in the program's place, with PROGRAM and DIRECTORY, and starts the program itself.
# DIRECTORY is emptied; Xvfb_screen0 in it is the screen as it is at the moment (XWD); what the run leaves (data, transcript, pictures, logs) stays there until the next one. The exit code is
# that of the program. ARGUMENTs go to the program. --first-start: the bench opens by itself, as without a script.
set -eu
program=$1 script=$2 directory=$3
shift 3
size=1280x1024 first=
if [ "${1:-}" = --first-start ]; then first=1; shift; fi
if [ "${1:-}" = --scale ]; then export QT_SCALE_FACTOR=$2; shift 2; fi
if [ "${1:-}" = --size ]; then size=$2; shift 2; fi

rm -rf "$directory"
mkdir -p "$directory"/data "$directory"/run "$directory"/home
chmod 700 "$directory/run"
if [ -n "$first" ]; then printf '[Bench]\nShown=0\n' >"$directory/data/window.ini"; fi
cd "$directory"
# Nothing of the machine's own desktop reaches the program, nor the program's files it.
export HOME=$directory/home XDG_RUNTIME_DIR=$directory/run XDG_CONFIG_HOME=$directory/home/.config XDG_DATA_HOME=$directory/home/.local/share
export XDG_STATE_HOME=$directory/home/.local/state XDG_CACHE_HOME=$directory/home/.cache
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS QT_QPA_PLATFORM
export QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8

children=()
end() { for child in "${children[@]}"; do kill "$child" 2>/dev/null || true; done; wait 2>/dev/null || true; }
trap end EXIT

exec 3>display
Xvfb -displayfd 3 -screen 0 "${size}x24" -nolisten tcp -noreset -fbdir "$directory" >xvfb.log 2>&1 &
children+=($!)
exec 3>&-
for _ in $(seq 200); do [ -s display ] && break; sleep 0.05; done
[ -s display ] || { cat xvfb.log >&2; echo "the X server doesn't start" >&2; exit 99; }
export DISPLAY=:$(cat display)

openbox --sm-disable >openbox.log 2>&1 &
children+=($!)
for _ in $(seq 200); do xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break; sleep 0.05; done

code=0
if [[ $script == *.py ]]; then
    python3 "$script" "$program" "$directory" "$@" || code=$?
    exit $code
fi
"$program" --data "$directory/data" --transcript "$directory/transcript.jsonl" --script "$script" "$@" || code=$?
exit $code
