#!/usr/bin/env bash
# Builds Kelvo and runs every test: format check, the tests as released (GCC), the tests under address and undefined-behaviour sanitizers
# (clang), and clang-tidy. "./test.sh quick" runs the released tests alone.
set -eu
top=$(cd "$(dirname "$0")" && pwd)
cd "$top"
cmake/install-packages.sh test
jobs=$(nproc)

configure() {
    [ -f "build/$1/build.ninja" ] || cmake --preset "$1" >/dev/null
}

if [ "${1:-}" != quick ]; then
    git ls-files '*.h' '*.cpp' | xargs clang-format-16 --dry-run --Werror
fi

configure dev
ninja -C build/dev --quiet
[ "${1:-}" = quick ] && exec ctest --test-dir build/dev -j "$jobs" --output-on-failure
ctest --test-dir build/dev -j "$jobs" --output-on-failure

configure asan
ninja -C build/asan --quiet
export ASAN_OPTIONS=detect_leaks=0:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1
cmake/run-tidy.sh build/asan
ctest --test-dir build/asan -j "$jobs" --output-on-failure
