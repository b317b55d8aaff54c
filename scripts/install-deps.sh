#!/usr/bin/env bash
# Installs what a fresh Debian machine lacks to build, test, benchmark and fuzz the project.
# Idempotent: when everything is present it prints nothing and exits 0.
set -euo pipefail

packages=(
  g++ cmake ninja-build make ccache pkg-config
  qt6-base-dev qt6-base-dev-tools libgl-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  fp-compiler fp-units-rtl fp-units-base
  clang libclang-rt-14-dev
  xvfb xauth fonts-dejavu-core fonts-wqy-microhei
  dpkg-dev file gcovr
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "install-deps: installing ${missing[*]}" >&2
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq >/dev/null
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
