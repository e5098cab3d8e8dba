#!/usr/bin/env bash
# Installs what is missing, builds Debug and Release, and runs every test under Wine in one
# Xvfb display. Arguments go to ctest (for example: -R FitVideoRect).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
source "$root/scripts/build.sh"

tessaly_build Release "$root/build-release"
tessaly_build Debug "$root/build"

cd "$root/build"
xvfb-run -a -n $((100 + RANDOM % 800)) -s "-screen 0 1280x1024x24 -nolisten tcp" bash -c '
  set -u
  ./wine-run cmd /c exit >/dev/null 2>&1 || true   # makes the prefix once, before tests run in parallel
  WINEPREFIX="$PWD/wineprefix" wineserver -p
  ctest --output-on-failure -j "$(nproc)" "$@"
  rc=$?
  WINEPREFIX="$PWD/wineprefix" wineserver -k || true
  exit $rc' bash "$@"
