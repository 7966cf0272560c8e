"""Times one pandas operation the way the compare scripts time gridmere's:
RUNS runs, then one line with the median and the range. Imported by the
bench/compare_*.sh scripts (run with bench/ on PYTHONPATH)."""
import statistics
import time


def measure(name, f, runs, fields="", count=None):
    """Runs f() `runs` times. `fields` goes into the line as it stands;
    `count`, given the last result, adds rows_shown."""
    times = []
    result = None
    for _ in range(runs):
        t = time.perf_counter()
        result = f()
        times.append(time.perf_counter() - t)
    shown = f" rows_shown={count(result)}" if count else ""
    print(f"pandas op={name} {fields}{shown} seconds_median={statistics.median(times):.3f} "
          f"seconds_min={min(times):.3f} seconds_max={max(times):.3f}", flush=True)
