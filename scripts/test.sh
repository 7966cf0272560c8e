#!/usr/bin/env bash
# Builds Gridmere and runs every test. Usage: scripts/test.sh [build-dir]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build}"
"$root/scripts/install-deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$build" --parallel "$(nproc)"
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(nproc)"
