#!/usr/bin/env bash
# Runs every fuzz target for SECONDS each, starting from the seed corpus in
# fuzz/corpus/<target> and keeping what it finds in BUILD/corpus/<target>.
#   fuzz/run.sh BUILD SECONDS
# A crash, a failed check or a sanitizer report stops the run with the
# target's output and a non-zero exit; the input that caused it is left in
# BUILD as crash-* (rerun: BUILD/fuzz_<target> BUILD/crash-...).
set -euo pipefail
build=${1:?build directory}
seconds=${2:?seconds per target}
seeds="$(cd "$(dirname "$0")" && pwd)/corpus"

for target in stats_intake task_paths gpb_encoders; do
  mkdir -p "$build/corpus/$target"
  log="$build/fuzz_$target.log"
  # Leaks are checked by the targets themselves, through the framework's
  # allocator; the process-wide leak scan would only slow every input down.
  if ! (cd "$build" && "./fuzz_$target" -detect_leaks=0 -max_len=4096 -max_total_time="$seconds" \
        -print_final_stats=1 "corpus/$target" "$seeds/$target") >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "fuzz: $target failed (full output in $log)" >&2
    exit 1
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  echo "fuzz: $target: $runs inputs in ${seconds} s, no finding"
done
