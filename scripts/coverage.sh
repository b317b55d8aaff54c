#!/usr/bin/env bash
# Line and branch coverage of the suite, per directory of the code: a build of its own with
# gcc's --coverage (no sanitizers, no optimisation), every test run by CTest, then gcovr's
# summary of each directory's sources. Prints one table row per directory.
set -euo pipefail
build=${1:?usage: coverage.sh BUILD_DIR}
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=${JOBS:-$(nproc)}

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZELVANE_SANITIZE=OFF \
  -DCMAKE_CXX_FLAGS="--coverage -O0" -DCMAKE_EXE_LINKER_FLAGS=--coverage \
  -DCMAKE_SHARED_LINKER_FLAGS=--coverage -DCMAKE_MODULE_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$build" -j "$jobs" >/dev/null
find "$build" -name '*.gcda' -delete
(cd "$build" && ctest -j "$jobs" >/dev/null) || echo "coverage: some tests failed" >&2

# gcovr replaces its output file rather than writing into it, so the report it is made to write
# goes to a scratch file: given /dev/null, it would replace the device with a plain file.
scratch=$(mktemp)
trap 'rm -f "$scratch"' EXIT
printf '| directory | lines | branches |\n|---|---|---|\n'
for dir in rtl foundation persistence specification toolsapi editor host experts locale workbench; do
  summary=$(cd "$root" && gcovr --root . --object-directory "$build" \
    --filter "$dir/" --exclude-unreachable-branches --exclude-throw-branches \
    --print-summary -o "$scratch" 2>/dev/null || true)
  lines=$(sed -n 's/^lines: \([0-9.]*%\).*/\1/p' <<<"$summary")
  branches=$(sed -n 's/^branches: \([0-9.]*%\).*/\1/p' <<<"$summary")
  printf '| `%s/` | %s | %s |\n' "$dir" "${lines:-n/a}" "${branches:-n/a}"
done
