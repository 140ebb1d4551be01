#!/usr/bin/env bash
# build_twice.sh [DIRECTORY]: builds the package twice from nothing, without a compiler's cache, with the same SOURCE_DATE_EPOCH, and compares the two byte
# for byte. It takes two whole builds; no test runs it.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
out=${1:-$top/build/twice}
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$top" log -1 --format=%ct)} CCACHE_DISABLE=1

for round in first second; do
    rm -rf "$out/$round"
    cmake -S "$top" -B "$out/$round" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKELVO_TESTS=OFF >/dev/null
    cmake --build "$out/$round" --target package -- --quiet
done
first=("$out"/first/kelvo_*.deb)
second=("$out"/second/kelvo_*.deb)
sha256sum "${first[0]}" "${second[0]}"
cmp "${first[0]}" "${second[0]}"
echo "The two builds gave one package."
