#!/usr/bin/env bash
# The main job, for a newcomer: installs what is missing, builds, registers the engine in the
# build's own Wine prefix, makes a short sample video and audio file, plays them one after the
# other in the host player (its event log on this terminal), writes a screenshot of the player
# while the video plays and says where it is, then probes the samples.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
source "$root/scripts/build.sh"
source "$root/scripts/targets.sh"
# The product is the 32-bit engine; a machine that cannot execute 32-bit code runs the 64-bit one.
if tessaly_can_run_win32; then target=i686; else target=x86_64; fi
echo "run: the $target engine (Debug), under $([ $target = i686 ] && echo 32 || echo 64)-bit Wine"
build=${TESSALY_BUILD_DIR:-$root/build/$target-debug}   # another Debug build tree of $target can be named here
tessaly_build "$target" Debug "$build"

samples=$build/samples
mkdir -p "$samples"
ff() { ffmpeg -hide_banner -loglevel error -nostdin -y "$@"; }
if [ ! -f "$build/samples.done" ]; then
  echo "run: writing sample media into $samples"
  ff -f lavfi -i "testsrc=size=320x240:rate=25:duration=3" -f lavfi -i "sine=frequency=660:duration=3" \
    -ac 2 -c:v wmv2 -b:v 1M -c:a wmav2 "$samples/sample-video.wmv"
  ff -f lavfi -i "sine=frequency=440:duration=3" -ac 2 -c:a libmp3lame -b:a 128k \
    -metadata title="Tessaly sample tone" "$samples/sample-audio.mp3"
  # The player shows a folder's picture as the cover of the audio files in it.
  ff -f lavfi -i "mandelbrot=size=256x256" -frames:v 1 "$samples/folder.jpg"
  touch "$build/samples.done"
fi

winpath() { printf 'Z:%s' "${1//\//\\}"; }
screenshot=$build/screenshot.png
rm -f "$screenshot"
xvfb-run -a -n $((100 + RANDOM % 800)) -s "-screen 0 1280x1024x24 -nolisten tcp" bash -c '
  set -eu
  cd "$1"
  ./wine-run cmd /c exit >/dev/null 2>&1 || true   # makes the prefix once
  ./wine-run --wineserver -p || true   # one server for every step below
  trap "./wine-run --wineserver -k || true" EXIT
  ./wine-run regsvr32 /s "$2"
  echo "== the host player: the video sample (the screenshot is taken while it plays), then the audio sample (information panel with its cover)"
  played=0
  ./wine-run hosts/player.exe --log --exit-after-complete --screenshot "$3" --screenshot-after 1.5 \
    "$4" "$5" 2>/dev/null || played=$?
  echo "== the media probe, on the samples folder"
  ./wine-run hosts/probe.exe "$6" 2>/dev/null || echo "(the probe lists above the files it could not answer for)"
  exit $played
' bash "$build" "$(winpath "$build/server/tessaly.dll")" "$(winpath "$screenshot")" \
  "$(winpath "$samples/sample-video.wmv")" "$(winpath "$samples/sample-audio.mp3")" "$(winpath "$samples")"
echo "screenshot of the player: $screenshot"
