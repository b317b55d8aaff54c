#!/usr/bin/env bash
# Benchmarks of the build directory $1 (built with ZELVANE_BENCH): Google Benchmark numbers
# for the object stream converters, then our converter (objconv) side by side with Free
# Pascal's (ObjectBinaryToText / ObjectTextToBinary of its Classes unit, compiled with -O2)
# on the same generated form, best of several runs, with the ratio of their times. Exits
# non-zero when ours is slower.
set -euo pipefail
build=${1:?usage: bench.sh BUILD_DIR}
root=$(cd "$(dirname "$0")/.." && pwd)
runs=${BENCH_RUNS:-5}
data=$build/bench/data
mkdir -p "$data"

"$build/bench/filer_bench" --generate "$data"
"$build/bench/filer_bench" --benchmark_min_time=1

if ! command -v fpc >/dev/null 2>&1; then
  echo "fpc is not installed: the comparison with Free Pascal's converter is skipped"
  exit 0
fi
fpdir=$build/bench/fpc
mkdir -p "$fpdir"
fpc -O2 -v0 -FU"$fpdir" -FE"$fpdir" -o"$fpdir/fpconv" "$root/tests/interop/fpconv.pas" >/dev/null

# Best wall time of $runs runs, in milliseconds.
best_ms() {
  local best=
  for _ in $(seq "$runs"); do
    local t0 t1
    t0=$(date +%s%N)
    "$@" >/dev/null
    t1=$(date +%s%N)
    local ms=$(( (t1 - t0) / 1000000 ))
    if [ -z "$best" ] || [ "$ms" -lt "$best" ]; then best=$ms; fi
  done
  echo "$best"
}

status=0
printf '\n%-16s %12s %12s %8s\n' conversion "ours (ms)" "fpc (ms)" ratio
for dir in b2t t2b; do
  if [ $dir = b2t ]; then in=$data/form.bin; to=text; else in=$data/form.txt; to=binary; fi
  ours=$(best_ms "$build/tools/objconv" --to $to "$in" "$data/ours.$dir")
  theirs=$(best_ms "$fpdir/fpconv" $dir "$in" "$data/fpc.$dir")
  ratio=$(awk -v a="$theirs" -v b="$ours" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }')
  name=$([ $dir = b2t ] && echo binary-to-text || echo text-to-binary)
  printf '%-16s %12s %12s %8s\n' "$name" "$ours" "$theirs" "${ratio}x"
  if awk -v a="$theirs" -v b="$ours" 'BEGIN { exit !(b > a) }'; then
    echo "  ours is slower than Free Pascal's"
    status=1
  fi
done
echo "(ratio: Free Pascal's time over ours; above 1 means ours is faster)"
exit $status
