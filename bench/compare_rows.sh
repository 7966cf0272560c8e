#!/usr/bin/env bash
# The row and column commands of `gridmere-bench rows` beside the nearest
# operations of sqlite3 (an in-memory table imported from the same file)
# and, when installed, pandas (a frame read as text), in one run.
# Usage: [RUNS=5] [SKIP_GRIDMERE=1] [SKIP_SQLITE=1] bench/compare_rows.sh [FILE] [build-dir]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
file="${1:-/tmp/gen512.csv}"
build="${2:-$root/build}"
runs="${RUNS:-5}"
[ -f "$file" ] || "$build/bench/gridmere-bench" generate "$file" --bytes 536870912

if [ "${SKIP_GRIDMERE:-0}" = 0 ]; then
  echo "# gridmere"
  "$build/bench/gridmere-bench" rows "$file" --runs "$runs"
fi

if [ "${SKIP_SQLITE:-0}" = 0 ] && command -v sqlite3 >/dev/null; then
  echo "# sqlite3 (:memory:, rowid order; times from .timer, real seconds)"
  rows=$(($(wc -l <"$file")))
  mid=$((rows / 2))
  sqlite3 :memory: <<SQL 2>&1 | grep -E '^("?--|Run Time)' | sed 's/^/sqlite3 /'
.mode csv
.import $file t
.timer on
SELECT '-- insert 1,000 rows (appended: a table has no middle)';
INSERT INTO t SELECT * FROM t WHERE rowid BETWEEN $mid AND $mid + 999;
SELECT '-- remove 1,000 rows from the middle';
DELETE FROM t WHERE rowid BETWEEN $mid AND $mid + 999;
SELECT '-- insert a column';
ALTER TABLE t ADD COLUMN extra TEXT;
SELECT '-- remove a column';
ALTER TABLE t DROP COLUMN extra;
SELECT '-- remove duplicates (distinct copy)';
CREATE TABLE d AS SELECT DISTINCT * FROM t;
SQL
fi

# The first Python that has pandas (a version manager's may not).
py=""
for p in python3 /usr/bin/python3; do
  if "$p" -c "import pandas" 2>/dev/null; then py=$p; break; fi
done
if [ -n "$py" ]; then
  echo "# pandas (read_csv dtype=str, keep_default_na=False)"
  "$py" - "$file" <<'PY'
import sys, time
import pandas as pd
df = pd.read_csv(sys.argv[1], dtype=str, keep_default_na=False)
mid = len(df) // 2
def timed(name, f):
    t = time.perf_counter(); f(); print(f"pandas {name} {1000 * (time.perf_counter() - t):.1f} ms")
blank = pd.DataFrame([[""] * df.shape[1]] * 1000, columns=df.columns)
timed("insert-1000", lambda: pd.concat([df.iloc[:mid], blank, df.iloc[mid:]], ignore_index=True))
timed("remove-1000", lambda: df.drop(df.index[mid:mid + 1000]))
timed("insert-column", lambda: df.insert(5, "extra", ""))
timed("remove-column", lambda: df.drop(columns=["extra"]))
timed("transpose-100k", lambda: df.iloc[:100000].T)
timed("remove-duplicates", lambda: df.drop_duplicates())
PY
fi
