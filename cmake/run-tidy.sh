#!/usr/bin/env bash
# run-tidy.sh BUILD: clang-tidy over every source whose text, with all that it includes, changed since it last passed.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd)
cd "$top"
passed=$build/tidy-passed
mkdir -p "$passed"
# One stamp for all headers and the configuration: a changed header checks every source again.
base=$(git ls-files 'src/*.h' 'tests/*.h' .clang-tidy | xargs cat | sha1sum | cut -d' ' -f1)
export base passed build
git ls-files 'src/*.cpp' 'tools/*.cpp' | xargs -P "$(nproc)" -I{} bash -c '
    key=$(printf "%s %s" "$base" "$(sha1sum "{}")" | sha1sum | cut -d" " -f1)
    [ -e "$passed/$key" ] && exit 0
    out=$(clang-tidy-16 --quiet -p "$build" "{}" 2>/dev/null) || { printf "%s\n" "$out"; exit 1; }
    touch "$passed/$key"'
