#!/usr/bin/env bash
# Writes the media files the ASF header tests read into the directory given: real WMA, WMV and
# ASF files from ffmpeg, a WAV, and files too small to be anything. With --large it adds a longer
# video, so that the benchmark can show how little of a big file the parser touches.
set -euo pipefail
out=$1
large=${2:-}
mkdir -p "$out"
ff() { ffmpeg -hide_banner -loglevel error -nostdin -y "$@"; }

ff -f lavfi -i "sine=frequency=440:sample_rate=44100:duration=2" -ac 2 -c:a wmav2 -b:a 64k "$out/stereo.wma"
ff -f lavfi -i "sine=frequency=330:sample_rate=22050:duration=2" -ac 1 -c:a wmav1 "$out/mono.wma"
ff -f lavfi -i "testsrc=size=320x240:rate=25:duration=2" -f lavfi -i "sine=sample_rate=44100:duration=2" \
  -ac 2 -c:v wmv2 -c:a wmav2 "$out/clip.wmv"
ff -f lavfi -i "testsrc=size=176x144:rate=15:duration=2" -metadata title=Fixture -c:v msmpeg4 "$out/clip.asf"
ff -f lavfi -i "sine=duration=1" "$out/tone.wav"
: >"$out/empty.wma"
printf 'x' >"$out/one-byte.wma"
if [ "$large" = --large ]; then
  ff -f lavfi -i "testsrc=size=640x480:rate=25:duration=30" -f lavfi -i "sine=sample_rate=44100:duration=30" \
    -ac 2 -c:v wmv2 -b:v 2M -c:a wmav2 "$out/long.wmv"
fi
touch "$out/.done"
