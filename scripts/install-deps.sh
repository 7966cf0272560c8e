#!/usr/bin/env bash
# Installs what a bare Debian 12 machine lacks for building and testing
# Gridmere. Only missing packages are fetched; safe to run again.
set -euo pipefail

packages=(
  build-essential cmake ninja-build ccache pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-5compat-dev libgl-dev
  clang libclang-rt-14-dev
  xvfb xclip
)
if [ "${GRIDMERE_BENCH_PEERS:-0}" = 1 ]; then
  packages+=(sqlite3 python3-pandas time)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "Installing: ${missing[*]}"
$sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
