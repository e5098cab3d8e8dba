#!/usr/bin/env bash
# Installs what is missing, builds Release and Debug, and runs every test of both under Wine in
# one Xvfb display. Arguments go to ctest (for example: -R FitVideoRect).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
source "$root/scripts/build.sh"

tessaly_build Release "$root/build-release"
tessaly_build Debug "$root/build"

xvfb-run -a -n $((100 + RANDOM % 800)) -s "-screen 0 1280x1024x24 -nolisten tcp" bash -c '
  set -u
  rc=0
  dirs=("$1" "$2")
  shift 2
  for dir in "${dirs[@]}"; do
    cd "$dir"
    # Makes the prefix and starts its services before tests run in parallel; test discovery
    # would otherwise wait on services that inherited its output pipe.
    ./wine-run cmd /c exit >/dev/null 2>&1 || true
    WINEPREFIX="$PWD/wineprefix" wineserver -p
    echo "== tests of $dir"
    ctest --output-on-failure -j "$(nproc)" "$@" || rc=1
    WINEPREFIX="$PWD/wineprefix" wineserver -k || true
  done
  exit $rc' bash "$root/build-release" "$root/build" "$@"
