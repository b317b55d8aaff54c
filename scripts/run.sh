#!/usr/bin/env bash
# `make run`: runs the most useful program the project has so far.
# Until the workbench exists, that is the runtime's test suite in the optimised build.
set -euo pipefail
build=${1:-build/release}
echo "make run: the workbench does not exist yet; running the runtime's tests from $build." >&2
cd "$build" && ctest --output-on-failure
