#!/usr/bin/env bash
# Builds Gridmere and reads a delimited file with its engine, printing the
# cells it finds as JSON (one array per row). Until the main window exists this
# is how to run the program by hand.
# Usage: scripts/run.sh [FILE [--delimiter D] [--encoding NAME] [--standard NAME] [--read-only]]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build"
"$root/scripts/install-deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target gridmere-bench
if [ "$#" -eq 0 ]; then set -- "$root/tests/fixtures/contacts.csv"; fi
exec "$build/bench/gridmere-bench" cells "$@"
