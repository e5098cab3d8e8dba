#!/usr/bin/env bash
# Writes the media the QuickTime layer's and back-ends' tests open into the directory given: two
# seconds of each movie and sound format the QuickTime back-ends take that ffmpeg writes and this
# platform decodes, pictures (a still and an animated GIF, a PNG under a QuickTime picture
# extension, a Targa), damaged files, and truth.txt with what ffprobe reads from each movie
# (name, longest stream in seconds, picture width and height).
set -euo pipefail
out=$1
mkdir -p "$out"
here=$(cd "$(dirname "$0")" && pwd)
cd "$out"
ff() { ffmpeg -hide_banner -loglevel error -nostdin -y "$@"; }

tone="sine=frequency=440:sample_rate=22050:duration=2"
picture="testsrc=size=160x120:rate=25:duration=2"

h264() { ff -f lavfi -i "$picture" -f lavfi -i "$tone" -c:v libx264 -preset ultrafast -pix_fmt yuv420p \
  -c:a aac -b:a 32k "$@"; }
h264 clip.mov
h264 clip.mp4
h264 -f mp4 clip.m4v
h264 -f 3gp clip.3gp
ff -f lavfi -i "$tone" -c:a aac -b:a 32k tone.m4a
ff -f lavfi -i "$tone" -c:a aac -b:a 32k -f adts tone.aac
ff -f lavfi -i "$tone" -c:a pcm_s16be tone.aiff

# Ten frames at ten a second: one second that loops. A still GIF has one frame.
ff -f lavfi -i "testsrc=size=80x60:rate=10:duration=1" -loop 0 anim.gif
ff -f lavfi -i "testsrc=size=80x60:rate=1:duration=1" -frames:v 1 still.gif
ff -f lavfi -i "testsrc=size=64x48:rate=1:duration=1" -frames:v 1 still.png
cp still.png still.pict
ff -f lavfi -i "testsrc=size=64x48:rate=1:duration=1" -frames:v 1 still.tga

bash "$here/../support/media-truth.sh" clip.mov clip.mp4 clip.m4v clip.3gp tone.m4a tone.aac tone.aiff >truth.txt

# Damage: cut short, noise only, nothing at all.
head -c 20000 clip.mov >cut.mov
head -c 1500 clip.mov >nomoov.mov # breaks off inside the media data, before the movie box
cp clip.mov huge.mov              # the first box claims 2 GiB
printf '\x7f\xff\xff\xff' | dd of=huge.mov bs=1 conv=notrunc status=none
head -c 3000 tone.m4a >cut.m4a
head -c 400 anim.gif >cut.gif
ff -f lavfi -i "anoisesrc=duration=0.5:seed=7:sample_rate=8000" -f u8 noise.bin
cp noise.bin noise.mov
cp noise.bin noise.gif
: >empty.mov
: >empty.m4a
touch .done
