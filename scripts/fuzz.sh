#!/usr/bin/env bash
# Runs every fuzz target of the build directory $1, one after the other. By default each runs
# for FUZZ_SECONDS (60); with FUZZ_RUNS set, each runs that many executions (a campaign:
# FUZZ_RUNS=10000000), for at most FUZZ_SECONDS when that is given too. FUZZ_TARGETS, a
# space-separated list, limits the run to those targets.
#
# Each target reads its seeds (the object stream corpus of the tests, the example's forms and
# snapshot, a default settings file) and the corpus kept in fuzz/corpus/<target>, and adds what
# it finds new to the kept corpus, so that the next run starts where this one stopped. With
# FUZZ_MERGE=1 the kept corpus is minimised afterwards to the inputs that add coverage.
#
# A line per target and run (executions, new inputs, inputs kept, result) is added to
# $1/fuzz-summary.txt. Exits non-zero when a target finds a crash; the input that caused it is
# kept in $1/fuzz-artifacts.
set -euo pipefail
build=${1:?usage: fuzz.sh BUILD_DIR}
seconds=${FUZZ_SECONDS:-}
runs=${FUZZ_RUNS:-}
[ -n "$runs" ] || seconds=${seconds:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
seeds=$build/fuzz-seeds
kept=$root/fuzz/corpus
artifacts=$build/fuzz-artifacts
summary=$build/fuzz-summary.txt
mkdir -p "$seeds" "$kept" "$artifacts"

# Seeds: the text corpus for the parser; its binary and resource forms for the reader.
mkdir -p "$seeds/fuzz_binary" "$seeds/fuzz_text"
for f in "$root"/tests/interop/corpus/*.txt; do
  name=$(basename "$f" .txt)
  cp "$f" "$seeds/fuzz_text/$name.txt"
  "$build/tools/objconv" --to binary "$f" "$seeds/fuzz_binary/$name.bin"
  "$build/tools/objconv" --to resource "$f" "$seeds/fuzz_binary/$name.res"
done
# The workbench's readers start from the example's form files and snapshot, the add-in's
# settings from a default file in binary and in text form; the others from nothing.
mkdir -p "$seeds/fuzz_form_file" "$seeds/fuzz_snapshot" "$seeds/fuzz_expdata"
cp "$root"/examples/*.dfm "$seeds/fuzz_form_file/"
cp "$root"/examples/*.snapshot "$seeds/fuzz_snapshot/"
cp "$root"/fuzz/addin/seed/* "$seeds/fuzz_expdata/"

limit=()
[ -z "$runs" ] || limit+=(-runs="$runs")
[ -z "$seconds" ] || limit+=(-max_total_time="$seconds")

status=0
# Only executable files are targets: the build's CMakeFiles/fuzz_*.dir directories are not.
for exe in "$build"/fuzz/fuzz_* "$build"/fuzz/*/fuzz_*; do
  [ -f "$exe" ] && [ -x "$exe" ] || continue
  target=$(basename "$exe")
  if [ -n "${FUZZ_TARGETS:-}" ] && [[ " $FUZZ_TARGETS " != *" $target "* ]]; then continue; fi
  mkdir -p "$kept/$target" "$seeds/$target"
  echo "== $target: ${limit[*]}"
  log=$build/$target.log
  if "$exe" "${limit[@]}" -max_len=16384 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
       -artifact_prefix="$artifacts/$target-" "$kept/$target" "$seeds/$target" 2>"$log"; then
    result="no finding"
  else
    result="FINDING (see $log and $artifacts)"
    tail -n 40 "$log"
    status=1
  fi
  executed=$(awk '/stat::number_of_executed_units:/ {print $2}' "$log")
  added=$(awk '/stat::new_units_added:/ {print $2}' "$log")
  if [ "${FUZZ_MERGE:-0}" = 1 ]; then
    merged=$(mktemp -d)
    "$exe" -merge=1 -max_len=16384 -timeout=10 "$merged" "$kept/$target" 2>>"$log" >/dev/null
    rm -rf "${kept:?}/$target" && mv "$merged" "$kept/$target"
  fi
  kept_count=$(find "$kept/$target" -type f | wc -l)
  echo "$target: $executed executions, $added new inputs, $kept_count kept: $result" |
    tee -a "$summary"
done
exit $status
