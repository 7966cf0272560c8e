#!/usr/bin/env bash
# "Column Lookup" of one column (insert and overwrite, with undo) in gridmere
# and pandas' merge on the same pair of files in one run, so the figures can
# be read as ratios. The pair is written by gridmere-bench lookup when
# missing: a source "key,name,amount" of ROWS unique keys and a destination
# "id,key,city" of ROWS rows, 90% of whose keys the source holds.
# Usage: [RUNS=5] [ROWS=1000000] bench/compare_lookup.sh [build-dir] [dir]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build}"
dir="${2:-/tmp}"
runs="${RUNS:-5}"
rows="${ROWS:-1000000}"
bench="$build/bench/gridmere-bench"
source="$dir/lookup_source_$rows.csv"
destination="$dir/lookup_destination_$rows.csv"

echo "# gridmere: source column 1 (name) by key column 0 into the destination by its key column 1"
"$bench" lookup --rows "$rows" --runs "$runs" --dir "$dir"

echo "# pandas, same files read as text: left merge on the key (insert), then the"
echo "# column written over 'city' where a key matched (overwrite)"
PYTHONPATH="$root/bench" /usr/bin/python3 - "$source" "$destination" "$runs" <<'PY'
import sys, time
import pandas as pd
from pandas_measure import measure
t = time.perf_counter()
src = pd.read_csv(sys.argv[1], dtype=str, keep_default_na=False)
dst = pd.read_csv(sys.argv[2], dtype=str, keep_default_na=False)
load = time.perf_counter() - t
runs = int(sys.argv[3])
fields = f"source_rows={len(src)} destination_rows={len(dst)} load_seconds={load:.2f}"
values = src[["key", "name"]]
measure("merge_left", lambda: dst.merge(values, on="key", how="left"), runs, fields)
def overwrite():
    merged = dst.merge(values, on="key", how="left")
    return merged["name"].where(merged["name"].notna(), merged["city"])
measure("merge_left_overwrite", overwrite, runs, fields)
PY
