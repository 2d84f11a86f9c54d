#!/usr/bin/env bash
# Instructions per record of each benchmark, counted by callgrind: only the
# work inside MDTLM_BenchOneRecord (one record per call) is collected, and its
# instruction count is divided by its calls. Unlike time, the figure does not
# move with the load of a shared machine, so ratios between neighbouring
# lines hold on any machine.
#   bench/instructions.sh [BUILD_DIR] [FILTER]     (defaults: build, all)
set -euo pipefail
build=${1:-build}
filter=${2:-.}
bin=$build/bench/mdtlm_bench
command -v valgrind >/dev/null || { echo "instructions.sh: valgrind missing (scripts/install-deps.sh bench)" >&2; exit 2; }
out=$(mktemp)
trap 'rm -f "$out"' EXIT
printf '%-44s %14s\n' benchmark instructions/record
for name in $("$bin" --benchmark_list_tests --benchmark_filter="$filter"); do
  valgrind --tool=callgrind --compress-strings=no --compress-pos=no --callgrind-out-file="$out" \
    --toggle-collect='*MDTLM_BenchOneRecord*' "$bin" --benchmark_filter="^${name}\$" \
    --benchmark_min_time=0.01 >/dev/null 2>&1 || true
  awk -v name="$name" '
    /^totals:/ { total = $2 }
    /^cfn=/ { counting = ($0 ~ /MDTLM_BenchOneRecord/) ; next }
    /^calls=/ { if (counting) { split($1, c, "="); calls += c[2] } counting = 0 }
    END { if (calls > 0) printf "%-44s %14.0f\n", name, total / calls; else printf "%-44s %14s\n", name, "n/a" }
  ' "$out"
done
