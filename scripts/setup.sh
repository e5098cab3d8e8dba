#!/usr/bin/env bash
# Installs what the build and the tests need on Debian 12, and nothing when it is all there already.
set -euo pipefail

packages=(
  cmake ninja-build googletest ffmpeg xvfb xauth
  g++-mingw-w64-i686-posix mingw-w64-tools libwine-dev
  wine wine64 wine32:i386
  gstreamer1.0-plugins-base:i386 gstreamer1.0-plugins-good:i386 gstreamer1.0-plugins-bad:i386
  gstreamer1.0-plugins-ugly:i386 gstreamer1.0-libav:i386
  libgl1:i386 libglx-mesa0:i386 libgl1-mesa-dri:i386
  clang libclang-rt-14-dev
)

missing=()
installed_list=$(dpkg-query -W -f='${Package}:${Architecture} ${db:Status-Abbrev}\n' 2>/dev/null || true)
native=$(dpkg --print-architecture)
for p in "${packages[@]}"; do
  name=${p%%:*}
  arch=$native
  [[ $p == *:* ]] && arch=${p#*:}
  if ! grep -qxF -e "${name}:${arch} ii " -e "${name}:all ii " <<<"$installed_list"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: everything is installed"
  exit 0
fi

echo "setup: installing ${missing[*]}"
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO=sudo
if ! dpkg --print-foreign-architectures | grep -qx i386; then
  $SUDO dpkg --add-architecture i386
fi
# One i386 index of the security suite is sometimes mid-sync and makes update exit 100;
# the main suite's indexes are what the install below uses.
$SUDO apt-get update || echo "setup: apt-get update reported $?; going on with the indexes it fetched"
# -t bookworm keeps apt from mixing amd64 security-suite packages with i386 main-suite ones.
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y -t bookworm --no-install-recommends "${missing[@]}"
