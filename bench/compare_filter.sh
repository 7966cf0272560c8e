#!/usr/bin/env bash
# The filters of `gridmere-bench filter` (a regular expression on the word
# column, "<500" on the price column), in gridmere (through the grid, with
# undo) and in pandas (str.contains on a frame read as text, and a numeric
# comparison on the column read as numbers) in one run.
# Usage: [RUNS=5] bench/compare_filter.sh [file] [build-dir]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
file="${1:-/tmp/gen512.csv}"
build="${2:-$root/build}"
runs="${RUNS:-5}"
bench="$build/bench/gridmere-bench"
[ -f "$file" ] || "$bench" generate "$file" --bytes 536870912

echo "# gridmere"
"$bench" filter "$file" --runs "$runs"

echo "# pandas, same columns"
/usr/bin/python3 - "$file" "$runs" <<'PY'
import sys, time, statistics
import pandas as pd
df = pd.read_csv(sys.argv[1], dtype=str, keep_default_na=False)
runs = int(sys.argv[2])
def measure(name, f):
    times = []
    shown = 0
    for _ in range(runs):
        t = time.perf_counter()
        shown = len(f())
        times.append(time.perf_counter() - t)
    print(f"pandas op={name} rows={len(df)} rows_shown={shown} "
          f"seconds_median={statistics.median(times):.3f} "
          f"seconds_min={min(times):.3f} seconds_max={max(times):.3f}")
word, price = df.columns[4], df.columns[2]
measure("regex", lambda: df[df[word].str.contains(r"^(qu|ve)", regex=True)])
measure("numeric", lambda: df[pd.to_numeric(df[price], errors="coerce") < 500])
PY
