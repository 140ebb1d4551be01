#!/usr/bin/env bash
# Live video of the simulated 640 x 512 camera at 100 Hz, offscreen, in real time, with a data directory of its own, and traces of sixteen regions:
#
#   bench/traces_live.sh [build/release/src/kelvo] [rounds] [seconds] [any]
#
# Prints what the traces cost. 0 if that is less than 10 % of a core; with "any" 0 in any case.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
kelvo=${1:-$top/build/release/src/kelvo}

data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
cp -r "$top"/src/resources/defaults/* "$data"
sed -i 's/^ActiveCamera=.*/ActiveCamera=1/' "$data/kelvo.ini"
"$kelvo" --offscreen --data "$data" --script "$top/bench/traces_live.lua" -- "${2:-5}" "${3:-4}" "${4:-}"
