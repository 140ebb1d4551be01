#!/usr/bin/env bash
# Live video of the simulated 640 x 512 camera at 100 Hz, offscreen, in real time, with a data directory of its own:
#
#   bench/live_bench.sh [build/release/src/kelvo] [seconds] [any]
#
# Prints the frame account. 0 if no frame was lost and each command was answered in time; with "any" 0 in any case.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
kelvo=${1:-$top/build/release/src/kelvo}
seconds=${2:-60}

data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
cp -r "$top"/src/resources/defaults/* "$data"
sed -i 's/^ActiveCamera=.*/ActiveCamera=1/' "$data/kelvo.ini"
"$kelvo" --offscreen --data "$data" --script "$top/bench/live_bench.lua" -- "$seconds" "${3:-}"
