#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing of tools/packages.txt. Usage: install_packages.sh run|test|quality
# Each of the three has what those before it have.
# An optional package that could not be had is noted in build/packages-not-had.txt and not asked for again.
set -euo pipefail
cd "$(dirname "$0")"
case ${1:-} in
    run) groups=' run ' ;;
    test) groups=' run test ' ;;
    quality) groups=' run test quality ' ;;
    *) echo 'Usage: install_packages.sh run|test|quality' >&2 && exit 2 ;;
esac
not_had=../build/packages-not-had.txt

required=() optional=()
while read -r name when kind; do
    case "$name" in '' | '#'*) continue ;; esac
    [[ $groups == *" $when "* ]] || continue
    if command -v dpkg-query > /dev/null; then
        [ "$(dpkg-query -W -f='${Status}' "$name" 2> /dev/null || true)" = 'install ok installed' ] && continue
    fi
    if [ "${kind:-}" != optional ]; then
        required+=("$name")
    elif ! grep -qsx "$name" "$not_had"; then
        optional+=("$name")
    fi
done < packages.txt

[ ${#required[@]} -gt 0 ] || [ ${#optional[@]} -gt 0 ] || exit 0

if ! command -v apt-get > /dev/null; then
    # Another system: packages cannot be checked by Debian's names, but the tools can.
    missing=()
    for tool in cmake ninja pkg-config c++; do command -v "$tool" > /dev/null || missing+=("$tool"); done
    [ ${#missing[@]} -eq 0 ] && exit 0
    echo "Missing, and no apt-get to install them: ${missing[*]} (libraries: see tools/packages.txt)" >&2
    exit 1
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if [ ${#required[@]} -eq 0 ]; then
        exit 0 # no password is asked for what the work can do without
    fi
    if ! command -v sudo > /dev/null; then
        echo "Missing packages, and neither root nor sudo to install them: ${required[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

apt() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@" > /dev/null; }

echo "Installing: ${required[*]} ${optional[*]}" >&2
apt update || echo "The package lists could not be refreshed; going on with those at hand." >&2
if [ ${#required[@]} -gt 0 ] && ! apt install -y --no-install-recommends "${required[@]}"; then
    echo "These packages could not be installed: ${required[*]}" >&2
    exit 1
fi
for name in "${optional[@]}"; do
    apt install -y --no-install-recommends "$name" && continue
    echo "Going on without $name." >&2
    mkdir -p ../build
    echo "$name" >> "$not_had"
done
