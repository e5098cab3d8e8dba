#!/usr/bin/env bash
# Installs what the build and the tests need on Debian 12, and nothing when it is all there already.
#
# Both targets are always built, so both mingw-w64 toolchains are always installed. Running the
# Windows programs needs Wine of the target's width: 64-bit Wine and its amd64 GStreamer and Mesa
# always; the 32-bit ones only on a machine that can execute 32-bit x86 code at all, which is found
# out by running a tiny i386 program, since some hypervisors refuse it whatever is installed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
source "$root/scripts/targets.sh"

common=(
  cmake ninja-build googletest ffmpeg xvfb xauth
  g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix mingw-w64-tools libwine-dev
  wine wine64
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
  gstreamer1.0-plugins-ugly gstreamer1.0-libav
  libgl1 libglx-mesa0 libgl1-mesa-dri
  clang libclang-rt-14-dev
)
i386_runtime=(
  wine32:i386
  gstreamer1.0-plugins-base:i386 gstreamer1.0-plugins-good:i386 gstreamer1.0-plugins-bad:i386
  gstreamer1.0-plugins-ugly:i386 gstreamer1.0-libav:i386
  libgl1:i386 libglx-mesa0:i386 libgl1-mesa-dri:i386
)

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO=sudo
apt_install() { $SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"; }

# Prints the packages of the arguments that are not installed.
missing_of() {
  local installed_list native p name arch
  installed_list=$(dpkg-query -W -f='${Package}:${Architecture} ${db:Status-Abbrev}\n' 2>/dev/null || true)
  native=$(dpkg --print-architecture)
  for p in "$@"; do
    name=${p%%:*}
    arch=$native
    [[ $p == *:* ]] && arch=${p#*:}
    grep -qxF -e "${name}:${arch} ii " -e "${name}:all ii " <<<"$installed_list" || echo "$p"
  done
}

updated=0
apt_update() {
  [ $updated -eq 1 ] && return 0
  # One index of the security suite is sometimes mid-sync and makes update exit 100; the
  # indexes it did fetch are enough for what is installed below.
  $SUDO apt-get update || echo "setup: apt-get update reported $?; going on with the indexes it fetched"
  updated=1
}

mapfile -t missing < <(missing_of "${common[@]}")
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  apt_update
  # Not pinned to the main suite: the machine may already carry newer amd64 libraries from the
  # security suite, and main-suite plugins would then have unmet dependencies.
  apt_install "${missing[@]}"
fi

if ! tessaly_can_run_i386; then
  echo "setup: this machine cannot execute 32-bit x86 code; no i386 runtime packages installed"
  echo "setup: everything for the 64-bit target is installed"
  exit 0
fi

mapfile -t missing < <(missing_of "${i386_runtime[@]}")
if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: everything for both targets is installed"
  exit 0
fi
echo "setup: this machine executes 32-bit x86 code; installing ${missing[*]}"
if ! dpkg --print-foreign-architectures | grep -qx i386; then
  $SUDO dpkg --add-architecture i386
  updated=0
fi
apt_update
# Multi-arch packages must match across architectures; when the i386 indexes lag behind the
# amd64 packages on the machine, the 32-bit runtime cannot be installed, and that must not
# stop the 64-bit suite.
if apt_install "${missing[@]}" || apt_install -t bookworm "${missing[@]}"; then
  echo "setup: everything for both targets is installed"
else
  echo "setup: could not install the 32-bit runtime (${missing[*]}); the 32-bit suite will not run"
fi
exit 0
