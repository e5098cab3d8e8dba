#!/usr/bin/env bash
# The hostile-media run: writes a corpus from the build's small valid test media (cut short at
# several points, header bytes flipped, a header claiming an enormous size, the wrong extension,
# empty files, a folder named like a file, an unreadable file, a non-ASCII name, a long path), then
# asks the engine about every file through QueryFileInfo and Play (hosts/hostile.exe), one process
# per file with a bounded wait, and prints per file the answers and their times, then the counts per
# outcome. Fails when any file crashed the host or hung it.
#
#   bash scripts/hostile.sh [--small] [BUILD_DIR]     (BUILD_DIR: build/x86_64-debug by default)
#
# The engine must be registered in the build's prefix, and an X display set. --small takes three
# formats and is what CI runs.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
small=0
[ "${1:-}" = "--small" ] && { small=1; shift; }
build=$(cd "${1:-$root/build/x86_64-debug}" && pwd)
dshow=$build/tests/backends/dshow/media
qt=$build/tests/qtml/media
corpus=$build/hostile/corpus
limit=40 # seconds a file may take, answers and three seconds of playing included

if [ "$small" = 1 ]; then
  valid=("$dshow/tone.wav" "$qt/clip.mov" "$qt/still.png")
else
  valid=("$dshow/tone.wav" "$dshow/tone.mp3" "$dshow/tone.wma" "$dshow/clip.wmv" "$dshow/clip.asf"
    "$dshow/clip.avi" "$dshow/clip.mpg" "$dshow/tone.ogg" "$dshow/tone.flac" "$qt/clip.mov" "$qt/clip.mp4"
    "$qt/clip.3gp" "$qt/tone.m4a" "$qt/tone.aac" "$qt/tone.aiff" "$qt/anim.gif" "$qt/still.png" "$qt/still.tga")
fi

rm -rf "$corpus"
mkdir -p "$corpus"
# Where the header's first size field is: RIFF at 4, an ISO box at 0, an ASF object at 16.
size_offset() {
  case $1 in
    wav | avi) echo 4 ;;
    mov | mp4 | 3gp | m4a) echo 0 ;;
    wma | wmv | asf) echo 16 ;;
    *) echo 4 ;;
  esac
}
for f in "${valid[@]}"; do
  name=$(basename "$f")
  stem=${name%.*}
  ext=${name##*.}
  size=$(stat -c %s "$f")
  for pct in 5 50 95; do
    head -c $((size * pct / 100)) "$f" >"$corpus/$stem-cut$pct.$ext"
  done
  cp "$f" "$corpus/$stem-flipped.$ext"
  for off in 8 12 20 28 36 44; do
    printf '\xA5' | dd of="$corpus/$stem-flipped.$ext" bs=1 seek=$off conv=notrunc status=none
  done
  cp "$f" "$corpus/$stem-huge.$ext"
  printf '\xFF\xFF\xFF\x7F' | dd of="$corpus/$stem-huge.$ext" bs=1 seek="$(size_offset "$ext")" conv=notrunc status=none
  : >"$corpus/empty.$ext"
done
# Content under another format's name.
cp "${valid[0]}" "$corpus/sound-named.mov"
cp "${valid[1]}" "$corpus/movie-named.wav"
cp "${valid[2]}" "$corpus/picture-named.mp3"
mkdir -p "$corpus/folder.avi"
ln -sf /nonexistent/tone.wav "$corpus/dangling.wav"
cp "${valid[0]}" "$corpus/unreadable.wav"
chmod 000 "$corpus/unreadable.wav" # root reads it anyway; a plain user's host does not
cp "${valid[0]}" "$corpus/tönë-音.wav"
deep=$corpus/long
for i in $(seq 1 12); do deep=$deep/a-folder-name-of-some-length-$i; done
mkdir -p "$deep"
cp "${valid[0]}" "$deep/tone.wav"

results=$build/hostile/results.txt
: >"$results"
declare -A outcome
count=0
while IFS= read -r -d '' file; do
  rel=${file#"$corpus"/}
  # A host process the platform never started (no "host:" line at all: no engine code ran) is
  # started once more; the second verdict stands, whatever it is.
  for try in 1 2; do
    start=$(date +%s%N)
    timeout $limit "$build/wine-run" "$build/hosts/hostile.exe" "$file" >"$build/hostile/out.txt" 2>"$build/hostile/err.txt"
    rc=$?
    ms=$((($(date +%s%N) - start) / 1000000))
    grep -aq '^host:' "$build/hostile/err.txt" && break
    [ $try = 1 ] && echo "$rel: the host process did not start (exit $rc after $ms ms); starting it again"
  done
  line=$(grep -a '^query' "$build/hostile/out.txt" | tr -d '\r')
  reached=$(grep -a '^host:' "$build/hostile/err.txt" | tail -1 | tr -d '\r')
  if [ "$rc" = 124 ]; then
    kind=HANG
    line="after: ${reached:-nothing}"
  elif [ -z "$line" ]; then
    kind=CRASH
    line="exit $rc after: ${reached:-nothing}"
  elif [[ $line == *"open 0x00000000"* ]]; then
    kind=opens
  else
    kind="refused $(sed -E 's/.*open (0x[0-9A-F]+).*/\1/' <<<"$line")"
  fi
  outcome[$kind]=$((${outcome[$kind]:-0} + 1))
  count=$((count + 1))
  printf '%-70s %-6s %6d ms  %s\n' "$rel" "${kind%% *}" "$ms" "${line:-exit $rc}" | tee -a "$results"
done < <(find "$corpus" \( -type f -o -type l -o -name '*.*' -type d \) ! -path "$corpus" -print0 | sort -z)

echo "hostile: $count files"
for k in "${!outcome[@]}"; do echo "  $k: ${outcome[$k]}"; done | sort
[ -z "${outcome[HANG]:-}" ] && [ -z "${outcome[CRASH]:-}" ]
