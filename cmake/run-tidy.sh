#!/usr/bin/env bash
# run-tidy.sh BUILD: clang-tidy over every source that changed since it last passed, by its own text or by that of a header that it reaches. BUILD is a
# finished build: its records tell what a source includes.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd)
cd "$top"
passed=${XDG_CACHE_HOME:-${HOME:-/tmp}/.cache}/kelvo-tidy-passed  # checkouts share it
mkdir -p "$passed"
export passed build
git ls-files -z 'src/*.cpp' 'tools/*.cpp' | xargs -0 cmake/tidy_keys.py "$build" | while read -r key source; do
    [ -e "$passed/$key" ] || printf '%s %s\n' "$key" "$source"
done | xargs -r -P "$(nproc)" -L1 bash -c '
    # The optionals of this source alone take the check many minutes.
    case $1 in src/platform/files.cpp) set -- "$1" --checks=-bugprone-unchecked-optional-access ;; esac
    out=$(clang-tidy-16 --quiet -p "$build" "$@" 2>&1) || { printf "%s: clang-tidy ended with %d\n%s\n" "$1" $? "$out"; exit 1; }
    [ "$0" = - ] || touch "$passed/$0"'
