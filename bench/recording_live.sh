#!/usr/bin/env bash
# A recording of the simulated 640 x 512 camera at 100 Hz, offscreen, in real time, with a data directory of its own:
#
#   bench/recording_live.sh [build/release/bench/recording_live] [busy|cost] [seconds] [any] [directory]
#
# busy: a script works as an operator meanwhile; 0 if no frame was lost, with "any" in any case. cost: processor time with and without a recording,
# three times so many seconds of each. The recordings go to a new directory in that of temporary files, or in the one that is named.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
program=${1:-$top/build/release/bench/recording_live}
what=${2:-busy}
seconds=${3:-60}

data=$(mktemp -d)
out=$(mktemp -d -p "${5:-${TMPDIR:-/tmp}}")
trap 'rm -rf "$data" "$out"' EXIT
cp -r "$top"/src/resources/defaults/* "$data"
sed -i 's/^ActiveCamera=.*/ActiveCamera=1/' "$data/kelvo.ini"
"$program" "$data" "$top/bench/recording_live.lua" "$out" "$seconds" "$what" "${4:-}"
