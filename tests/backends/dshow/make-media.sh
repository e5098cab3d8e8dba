#!/usr/bin/env bash
# Writes the media the DirectShow back-end's tests play into the directory given: two seconds of
# every format the back-end takes that this platform can decode, Windows Media files whose
# header claims Windows Media Video 9, damaged files, and truth.txt with what ffprobe reads from
# each playable file (name, longest stream in seconds, picture width and height).
set -euo pipefail
out=$1
mkdir -p "$out"
here=$(cd "$(dirname "$0")" && pwd)
cd "$out"
ff() { ffmpeg -hide_banner -loglevel error -nostdin -y "$@"; }

tone="sine=frequency=440:sample_rate=22050:duration=2"
tone44="sine=frequency=440:sample_rate=44100:duration=2"
picture="testsrc=size=160x120:rate=25:duration=2"

ff -f lavfi -i "$tone" -c:a pcm_s16le tone.wav
ff -f lavfi -i "$tone" -c:a libmp3lame -b:a 32k tone.mp3
ff -f lavfi -i "$tone" -c:a wmav2 -b:a 32k tone.wma
ff -f lavfi -i "$tone" -c:a libvorbis -q:a 0 tone.ogg
ff -f lavfi -i "$tone" -c:a flac tone.flac
ff -f lavfi -i "$tone44" -c:a mp2 -b:a 64k -f mp2 tone.mpa
ff -f lavfi -i "$picture" -f lavfi -i "$tone" -c:v wmv2 -b:v 200k -c:a wmav2 -b:a 32k clip.wmv
ff -f lavfi -i "$picture" -f lavfi -i "$tone" -c:v msmpeg4 -b:v 200k -c:a wmav2 -b:a 32k clip.asf
ff -f lavfi -i "$picture" -f lavfi -i "$tone" -c:v mpeg4 -b:v 200k -c:a pcm_s16le clip.avi
ff -f lavfi -i "$picture" -f lavfi -i "$tone" -c:v mpeg4 -vtag DIVX -b:v 200k -c:a libmp3lame -b:a 32k \
  -f avi clip.divx
# A program stream's length is estimated from its clock references; at a constant rate with a
# high mux rate that estimate stays within a frame.
ff -f lavfi -i "$picture" -c:v mpeg1video -b:v 400k -minrate 400k -maxrate 400k -bufsize 200k \
  -muxrate 1M -f mpeg clip.mpg

# A red field: the tests look for its pixels where the player places the video.
ff -f lavfi -i "color=c=0xff0000:size=160x120:rate=25:duration=10" -c:v mpeg4 -q:v 2 -pix_fmt yuv420p red.avi

bash "$here/../../support/media-truth.sh" tone.wav tone.mp3 tone.wma tone.ogg tone.flac tone.mpa clip.wmv clip.asf clip.avi clip.divx clip.mpg >truth.txt

# ffmpeg cannot write Windows Media Video 9, so its header claim is written over a WMV2 clip:
# the FourCC of the BITMAPINFOHEADER and the four bytes of codec data after it, which become a
# valid WMV9 main-profile sequence header. The second file keeps WMV2's codec data, which no
# WMV9 decoder accepts.
patch() { printf "$3" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none; }
fourcc=$(grep -obUa WMV2 clip.wmv | head -n 1 | cut -d: -f1)
cp clip.wmv wmv9.wmv
patch wmv9.wmv "$fourcc" 'WMV3'
patch wmv9.wmv $((fourcc + 24)) '\x40\x01\x00\x01'
cp clip.wmv wmv9-undecodable.wmv
patch wmv9-undecodable.wmv "$fourcc" 'WMV3'

# Damage: cut short, noise over the middle, noise only, nothing at all.
head -c 30000 clip.wmv >cut.wmv
head -c 40000 clip.avi >cut.avi
head -c 3000 tone.mp3 >cut.mp3
cp tone.wma huge.wma
patch huge.wma 16 '\x00\x00\x00\x80\x00\x00\x00\x00' # the header object claims 2 GiB
head -c $(($(od -An -t u8 -j 16 -N 8 tone.wma) - 10)) tone.wma >short-header.wma # ten bytes short of its header
ff -f lavfi -i "anoisesrc=duration=0.5:seed=7:sample_rate=8000" -f u8 noise.bin
cp clip.avi noisy.avi
dd if=noise.bin of=noisy.avi bs=1 seek=20000 conv=notrunc status=none
cp noise.bin noise.avi
cp noise.bin noise.mp3
: >empty.wav
touch .done
