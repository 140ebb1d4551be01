#!/usr/bin/env bash
# From the start of the process to the usable window, in real time, offscreen, with a new data directory:
#
#   bench/start_time.sh [build/release/src/kelvo]
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
"${1:-$top/build/release/src/kelvo}" --offscreen --data "$data" --script "$top/bench/start_time.lua"
