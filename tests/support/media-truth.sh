#!/usr/bin/env bash
# Prints what ffprobe reads from each file named, one line each, for the tests' truth.txt: name,
# longest stream in seconds, picture width and height (0 0 for sound only).
set -euo pipefail
for f in "$@"; do
  ffprobe -v error -show_entries stream=duration,width,height -of default=noprint_wrappers=1 "$f" |
    awk -F= -v name="$f" '
      $1 == "width" { w = $2 }
      $1 == "height" { h = $2 }
      $1 == "duration" && $2 + 0 > d { d = $2 + 0 }
      END { printf "%s %.6f %d %d\n", name, d, w, h }'
done
