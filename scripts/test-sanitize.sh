#!/usr/bin/env bash
# Builds with clang under AddressSanitizer and UndefinedBehaviorSanitizer, runs
# the tests that need no window, then gives every fuzz target a short run.
# Usage: scripts/test-sanitize.sh [build-dir] (FUZZ_SECONDS, default 20)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build-asan}"
seconds="${FUZZ_SECONDS:-20}"
"$root/scripts/install-deps.sh"
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DGRIDMERE_SANITIZE=address,undefined -DGRIDMERE_FUZZ=ON -DGRIDMERE_BENCH=OFF
# Only what runs here is built: the tests that need no window and the fuzzers.
# The window code is compiled and tested by the plain build.
nogui_tests=$(cd "$build" && ctest -N -L nogui | awk '/Test +#/ {print $3}')
cmake --build "$build" --parallel "$(nproc)" --target fuzzers $nogui_tests
cd "$build"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(nproc)" -L nogui

shopt -s nullglob
for f in fuzz/fuzz_*; do
  [ -f "$f" ] && [ -x "$f" ] || continue
  name=$(basename "$f")
  corpus="$build/fuzz-corpus/$name"
  mkdir -p "$corpus"
  seeds="$root/fuzz/seeds/$name"
  echo "fuzz smoke: $name for ${seconds}s"
  args=(-max_total_time="$seconds" -max_len=4096 -timeout=10 "$corpus")
  [ -d "$seeds" ] && args+=("$seeds")
  if ! "$f" "${args[@]}" >"$build/$name.log" 2>&1; then
    tail -n 60 "$build/$name.log"
    echo "fuzz target $name failed"
    exit 1
  fi
  tail -n 1 "$build/$name.log"
done
