#!/usr/bin/env bash
# "Upper Case" and a date reformat of one whole column, in gridmere (through
# the grid, with undo) and in pandas (str.upper, to_datetime + dt.strftime on
# a frame read as text) in one run, so the figures can be read as ratios.
# Usage: [RUNS=5] bench/compare_transform.sh [file] [build-dir]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
file="${1:-/tmp/gen512.csv}"
build="${2:-$root/build}"
runs="${RUNS:-5}"
bench="$build/bench/gridmere-bench"
[ -f "$file" ] || "$bench" generate "$file" --bytes 536870912

echo "# gridmere: name column (5) upper case, date column (3) ISO date to dd/MM/yyyy"
"$bench" transform "$file" --column 5 --date-column 3 --runs "$runs"

echo "# pandas, same columns"
PYTHONPATH="$root/bench" /usr/bin/python3 - "$file" "$runs" <<'PY'
import sys
import pandas as pd
from pandas_measure import measure
df = pd.read_csv(sys.argv[1], dtype=str, keep_default_na=False)
runs = int(sys.argv[2])
rows = f"rows={len(df)}"
name, date = df.columns[5], df.columns[3]
measure("upper_case", lambda: df[name].str.upper(), runs, rows)
measure("date_iso_to_custom",
        lambda: pd.to_datetime(df[date], format="%Y-%m-%d", errors="coerce").dt.strftime("%d/%m/%Y"),
        runs, rows)
PY
