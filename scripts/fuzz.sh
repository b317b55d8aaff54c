#!/usr/bin/env bash
# Runs each fuzz target of the build directory $1 for a bounded time (FUZZ_SECONDS, 60 by
# default) on a seed corpus made from the object stream corpus of the tests. Exits non-zero
# when a target finds a crash; the input that caused it is kept in $1/fuzz-artifacts.
set -euo pipefail
build=${1:?usage: fuzz.sh BUILD_DIR}
seconds=${FUZZ_SECONDS:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
corpus_src=$root/tests/interop/corpus
work=$build/fuzz-corpus
artifacts=$build/fuzz-artifacts
mkdir -p "$work/fuzz_binary" "$work/fuzz_text" "$artifacts"

# Seeds: the text corpus for the parser; its binary and resource forms for the reader.
for f in "$corpus_src"/*.txt; do
  name=$(basename "$f" .txt)
  cp "$f" "$work/fuzz_text/$name.txt"
  "$build/tools/objconv" --to binary "$f" "$work/fuzz_binary/$name.bin"
  "$build/tools/objconv" --to resource "$f" "$work/fuzz_binary/$name.res"
done

status=0
for target in fuzz_binary fuzz_text; do
  echo "== $target: ${seconds}s"
  if ! "$build/fuzz/$target" -max_total_time="$seconds" -max_len=16384 -timeout=10 \
       -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$artifacts/$target-" \
       "$work/$target" 2>"$build/$target.log"; then
    echo "$target: FINDING (see $build/$target.log and $artifacts)"
    tail -n 40 "$build/$target.log"
    status=1
  else
    grep -E "stat::number_of_executed_units|stat::new_units_added" "$build/$target.log" || true
    echo "$target: no finding"
  fi
done
# The targets of other layers (in subdirectories of the fuzz build). The workbench's readers
# start from the example's form files and snapshot, the add-in's settings from a default file;
# the others from an empty corpus.
mkdir -p "$work/fuzz_form_file" "$work/fuzz_snapshot"
cp "$root"/examples/*.dfm "$work/fuzz_form_file/"
cp "$root"/examples/*.snapshot "$work/fuzz_snapshot/"
# The add-in's settings file starts from a default one, in binary and in text form.
mkdir -p "$work/fuzz_expdata"
cp "$root"/fuzz/addin/seed/* "$work/fuzz_expdata/"
for exe in "$build"/fuzz/*/fuzz_*; do
  [ -f "$exe" ] && [ -x "$exe" ] || continue
  target=$(basename "$exe")
  mkdir -p "$work/$target"
  echo "== $target: ${seconds}s"
  if ! "$exe" -max_total_time="$seconds" -max_len=16384 -timeout=10 -rss_limit_mb=2048 \
       -print_final_stats=1 -artifact_prefix="$artifacts/$target-" "$work/$target" \
       2>"$build/$target.log"; then
    echo "$target: FINDING (see $build/$target.log and $artifacts)"
    tail -n 40 "$build/$target.log"
    status=1
  else
    echo "$target: no finding"
  fi
done
exit $status
