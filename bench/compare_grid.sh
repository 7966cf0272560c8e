#!/usr/bin/env bash
# Filter, sort and find through the grid, as `gridmere-bench filter`,
# `sortview` and `find` run them (each with its undo), beside pandas on a
# frame read as text, in one run so the figures can be read as ratios:
# - filters: a regular expression on the word column (str.contains) and
#   "<500" on the price column (to_numeric, then <);
# - sort: the word column, stable (sort_values(kind="stable"), a lexical
#   order where gridmere's is natural);
# - "Find All" of a word in every cell, any case (str.contains per column).
# Usage: [RUNS=5] [WORD=quartz] bench/compare_grid.sh [file] [build-dir]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
file="${1:-/tmp/gen512.csv}"
build="${2:-$root/build}"
runs="${RUNS:-5}"
word="${WORD:-quartz}"
bench="$build/bench/gridmere-bench"
[ -f "$file" ] || "$bench" generate "$file" --bytes 536870912

echo "# gridmere"
"$bench" filter "$file" --runs "$runs"
"$bench" sortview "$file" --column 4 --runs "$runs"
"$bench" find "$file" --word "$word" --runs "$runs"

echo "# pandas, same columns"
PYTHONPATH="$root/bench" /usr/bin/python3 - "$file" "$runs" "$word" <<'PY'
import sys
import pandas as pd
from pandas_measure import measure
df = pd.read_csv(sys.argv[1], dtype=str, keep_default_na=False)
runs, word = int(sys.argv[2]), sys.argv[3]
rows = f"rows={len(df)}"
word_col, price = df.columns[4], df.columns[2]
measure("regex", lambda: df[df[word_col].str.contains(r"^(?:qu|ve)", regex=True)], runs, rows, len)
measure("numeric", lambda: df[pd.to_numeric(df[price], errors="coerce") < 500], runs, rows, len)
measure("sort_stable", lambda: df.sort_values(word_col, kind="stable"), runs, rows)
measure("find_all", lambda: sum(int(df[c].str.contains(word, case=False, regex=False).sum())
                                for c in df.columns), runs, rows, lambda n: n)
PY
