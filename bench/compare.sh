#!/usr/bin/env bash
# Runs the engine's load and save on one generated file beside the same file
# through sqlite3 ".import" and pandas read_csv(dtype=str), in one run, so the
# figures can be read as ratios. Usage: [RUNS=5] bench/compare.sh [bytes] [build-dir]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bytes="${1:-536870912}"
build="${2:-$root/build}"
bench="$build/bench/gridmere-bench"
work="${TMPDIR:-/tmp}/gridmere-bench"
mkdir -p "$work"
file="$work/mixed-$bytes.csv"
GRIDMERE_BENCH_PEERS=1 "$root/scripts/install-deps.sh"
[ -f "$file" ] || "$bench" generate "$file" --bytes "$bytes"
sync

echo "# gridmere"
runs="${RUNS:-5}"
for ((i = 0; i < runs; i++)); do "$bench" load "$file"; done
# Each save starts with no write-back of the previous one in flight.
for ((i = 0; i < runs; i++)); do sync; "$bench" save "$file" "$work/saved.csv"; done
cmp -s "$file" "$work/saved.csv" && echo "save: byte-identical" || echo "save: DIFFERS"
[ "${READ_ONLY:-1}" = 1 ] && "$bench" load "$file" --read-only 2>/dev/null || true

echo "# sqlite3 .import (in memory)"
rm -f "$work/peer.db"
/usr/bin/time -f "sqlite3 seconds=%e peak_rss_bytes=%MkB" \
  sqlite3 ":memory:" ".mode csv" ".import $file t" "select count(*) from t;" 2>&1

echo "# pandas read_csv(dtype=str)"
/usr/bin/python3 - "$file" <<'PY'
import sys, time, resource
import pandas as pd
t = time.perf_counter()
df = pd.read_csv(sys.argv[1], dtype=str, keep_default_na=False)
s = time.perf_counter() - t
import os
size = os.path.getsize(sys.argv[1])
rss = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024
print(f"pandas rows={len(df)} seconds={s:.3f} mbps={size/1e6/s:.1f} peak_rss_bytes={rss}")
PY
