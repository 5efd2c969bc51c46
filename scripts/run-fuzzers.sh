#!/usr/bin/env bash
# Runs every fuzz target in DIR for SECONDS on a scratch copy of its seed corpus. Fails when a
# target finds a crash; the reproducer is left in the current directory (crash-*), to become a
# regression test.
set -euo pipefail
dir=$1
seconds=${2:-60}
root="$(cd "$(dirname "$0")/.." && pwd)"
status=0
for target in "$dir"/fuzz_*; do
  [ -x "$target" ] || continue
  name=$(basename "$target")
  work=$(mktemp -d)
  echo "== $name: ${seconds}s"
  # A fixed seed makes the short CI runs repeatable; longer runs still explore further.
  if ! ASAN_OPTIONS=detect_leaks=1 LSAN_OPTIONS="suppressions=$root/tests/sanitizers/lsan-gdal.supp" \
      "$target" -seed=1 -max_total_time="$seconds" -timeout=10 \
      -rss_limit_mb=2048 -print_final_stats=0 "$work" "$root/fuzz/corpus/$name" \
      > "$work.log" 2>&1; then
    echo "$name FAILED"; tail -40 "$work.log"; status=1
  else
    grep -E '^Done [0-9]+ runs' "$work.log" | tail -1 || true
  fi
  rm -rf "$work" "$work.log"
done
exit $status
