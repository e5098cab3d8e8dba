# Sourced by the project's scripts: configures (once) and builds one configuration.
tessaly_build() {
  local target=$1 config=$2 dir=$3
  shift 3
  if [ ! -f "$dir/CMakeCache.txt" ]; then
    cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$config" \
      -DCMAKE_TOOLCHAIN_FILE="$root/cmake/$target-w64-mingw32.cmake"
  fi
  # Further arguments name the only targets to build (a filtered test run).
  if [ $# -gt 0 ]; then
    cmake --build "$dir" --target "$@"
  else
    cmake --build "$dir"
  fi
}
