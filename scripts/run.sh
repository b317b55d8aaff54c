#!/usr/bin/env bash
# `make run`: opens the workbench on the example project (examples/Example.dpr).
# With a display the workbench opens there. Without one it runs under Xvfb, takes a screenshot
# of the screen once its windows are up, with the add-in's menu open, quits, and says where the
# picture is.
set -euo pipefail
build=${1:-build/release}
root=$(cd "$(dirname "$0")/.." && pwd)
exe="$build/bin/workbench"
if [ ! -x "$exe" ]; then
  echo "make run: $exe is missing; build it first (make build)" >&2
  exit 1
fi
args=(--open Utils.pas --open Main.pas "$root/examples/Example.dpr")

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec "$exe" "${args[@]}"
fi

shot=${WORKBENCH_SCREENSHOT:-$build/workbench.png}
shot=$(cd "$(dirname "$shot")" && pwd)/$(basename "$shot")
if ! command -v xvfb-run >/dev/null; then
  echo "make run: no display and no xvfb-run (scripts/install-deps.sh installs it)" >&2
  exit 1
fi
xvfb-run -a -s "-screen 0 1280x800x24" "$exe" --screenshot "$shot" --menu ZelvaneMenu "${args[@]}"
echo "make run: there is no display, so the workbench ran under Xvfb; its screenshot is $shot"
