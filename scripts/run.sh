#!/usr/bin/env bash
# Builds Gridmere and starts it with the given files and folders.
# Usage: scripts/run.sh [FILE|FOLDER ...] [-w WIDTH] [-h HEIGHT] [-x X] [-y Y]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build"
"$root/scripts/install-deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target gridmere
exec "$build/src/gridmere" "$@"
