#!/usr/bin/env bash
# Builds Kelvo and runs every test: format check, the tests as released (GCC), the tests under address and undefined-behaviour sanitizers
# (clang), what several threads touch under the thread sanitizer, and clang-tidy. "./test.sh quick" runs the released tests alone. What repeats a kill or a race (ctest label "long") does a tenth of
# its rounds; "./test.sh long" does them all.
set -eu
top=$(cd "$(dirname "$0")" && pwd)
cd "$top"
mode=${1:-}
case "$mode" in '' | quick) ;; long) export KELVO_LONG=full ;; *) echo "test.sh [quick|long]" >&2; exit 2 ;; esac
cmake/install-packages.sh test
jobs=$(nproc)
# What ccache has compiled for one checkout serves the next one, wherever it lies.
export CCACHE_BASEDIR=$top CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_MAXSIZE=${CCACHE_MAXSIZE:-20G}

build() { # build PRESET: the preset as it stands now, also where an earlier one was configured
    cmake --preset "$1" >/dev/null
    cmake --build --preset "$1" -- --quiet
}

if [ "$mode" != quick ]; then
    git ls-files '*.h' '*.cpp' | xargs clang-format-16 --dry-run --Werror
fi

build dev
[ "$mode" = quick ] && exec ctest --preset dev -j "$jobs"
ctest --preset dev -j "$jobs"
# A report, of a machine with nothing else to do: what is lost in ten seconds of recording while the operator works. It fails nothing.
bench/recording_live.sh build/dev/bench/recording_live busy 10 any

build asan
cmake/run-tidy.sh build/asan
ctest --preset asan -j "$jobs"

build threads
ctest --preset threads
