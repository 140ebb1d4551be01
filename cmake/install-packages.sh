#!/usr/bin/env bash
# install-packages.sh [test]: installs what packages.txt names and this machine lacks. With "test" also what the tests need.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
want=()
while read -r name mark; do
    case "$name" in ''|'#'*) continue ;; esac
    if [ "${mark:-}" = test ] && [ "${1:-}" != test ]; then continue; fi
    status=$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null || true)
    [ "$status" = installed ] || want+=("$name")
done <"$top/packages.txt"
[ ${#want[@]} -eq 0 ] && exit 0

sudo=
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Please install as root: ${want[*]}" >&2; exit 1; }
    sudo=sudo
fi
echo "Installing: ${want[*]}"
$sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq update
$sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends install "${want[@]}" >/dev/null
