#!/usr/bin/env bash
# Runs the engine's load and save on the two generated shapes (the mixed
# 10-column file and the narrow numeric 20-column one) beside the same files
# through sqlite3 ".import" and pandas read_csv(dtype=str), in one run, so the
# figures can be read as ratios.
# Usage: [RUNS=5] [OLD=other-build-dir] [PEERS=1] bench/compare.sh [bytes] [build-dir]
# With OLD set, each load runs in that build too, alternating with this one,
# and the summary gives both.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bytes="${1:-536870912}"
build="${2:-$root/build}"
bench="$build/bench/gridmere-bench"
old="${OLD:-}"
work="${TMPDIR:-/tmp}/gridmere-bench"
runs="${RUNS:-5}"
mkdir -p "$work"
[ "${PEERS:-1}" = 1 ] && GRIDMERE_BENCH_PEERS=1 "$root/scripts/install-deps.sh"
log="$work/compare.log"
: >"$log"

# Median and range of one field over the lines that carry a tag.
summary() { # tag field
  grep "^$1 " "$log" | sed -n "s/.* $2=\([0-9.]*\).*/\1/p" | sort -g |
    awk -v t="$1" -v f="$2" '{v[NR]=$1} END {if (NR) printf "%s %s: median %s, range %s..%s (%d runs)\n", t, f, v[int((NR+1)/2)], v[1], v[NR], NR}'
}

for shape in mixed numeric; do
  file="$work/$shape-$bytes.csv"
  [ -f "$file" ] || "$bench" generate "$file" --bytes "$bytes" --shape "$shape"
  sync
  echo "# gridmere, $shape file ($(stat -c %s "$file") bytes)"
  for ((i = 0; i < runs; i++)); do
    "$bench" load "$file" | sed "s/^/new-$shape /" | tee -a "$log"
    [ -n "$old" ] && "$old/bench/gridmere-bench" load "$file" | sed "s/^/old-$shape /" | tee -a "$log"
  done
  # Each save starts with no write-back of the previous one in flight.
  for ((i = 0; i < runs; i++)); do sync; "$bench" save "$file" "$work/saved.csv"; done
  cmp -s "$file" "$work/saved.csv" && echo "save: byte-identical" || echo "save: DIFFERS"
  [ "${READ_ONLY:-1}" = 1 ] && "$bench" load "$file" --read-only 2>/dev/null || true

  if [ "${PEERS:-1}" = 1 ]; then
    echo "# sqlite3 .import (in memory), $shape"
    /usr/bin/time -f "sqlite3 seconds=%e peak_rss_bytes=%MkB" \
      sqlite3 ":memory:" ".mode csv" ".import $file t" "select count(*) from t;" 2>&1

    echo "# pandas read_csv(dtype=str), $shape"
    /usr/bin/python3 - "$file" <<'PY'
import sys, time, resource, os
import pandas as pd
t = time.perf_counter()
df = pd.read_csv(sys.argv[1], dtype=str, keep_default_na=False)
s = time.perf_counter() - t
size = os.path.getsize(sys.argv[1])
rss = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024
print(f"pandas rows={len(df)} seconds={s:.3f} mbps={size/1e6/s:.1f} peak_rss_bytes={rss}")
PY
  fi
done

echo "# summary of the editable loads"
for shape in mixed numeric; do
  for who in new old; do
    summary "$who-$shape" mbps
    summary "$who-$shape" peak_rss_bytes
  done
done
