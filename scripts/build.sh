# Sourced by the project's scripts: configures (once) and builds one configuration.
tessaly_build() {
  local target=$1 config=$2 dir=$3
  if [ ! -f "$dir/CMakeCache.txt" ]; then
    cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$config" \
      -DCMAKE_TOOLCHAIN_FILE="$root/cmake/$target-w64-mingw32.cmake"
  fi
  cmake --build "$dir"
}
