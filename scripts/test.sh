#!/usr/bin/env bash
# Installs what is missing, builds both targets, and runs the Wine suites this machine can run, in
# one Xvfb display. Arguments go to ctest and make it a filtered run (see README: Running one test).
#
# x86_64: Release and Debug built and tested everywhere, since 64-bit Wine runs everywhere.
# i686 (the product): built in Release everywhere (warnings as errors, export and no-trace checks);
# where this machine executes 32-bit code, its Release and Debug suites run too, and the 64-bit
# target runs its Release suite only, so that each build type still runs on each machine.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
source "$root/scripts/build.sh"
source "$root/scripts/targets.sh"

if tessaly_can_run_win32; then
  echo "test: this machine executes 32-bit code: the i686 suites (Release, Debug) and the x86_64 Release suite run"
  tested=(i686-release i686-debug x86_64-release)
  built_only=()
else
  if tessaly_can_run_i386; then
    echo "test: this machine executes 32-bit x86 code, but 32-bit Wine is not installed (setup says why above): the x86_64 suites (Release, Debug) run; the i686 target is built and statically checked only"
  else
    echo "test: this machine cannot execute 32-bit x86 code: the x86_64 suites (Release, Debug) run; the i686 target is built and statically checked only"
  fi
  tested=(x86_64-release x86_64-debug)
  built_only=(i686-release)
fi

# A filtered run (any arguments) builds and runs one configuration only, and of it only the test
# program the filter names when it starts with one (-R 'base_tests\.Utility'); a filter that
# selects no test fails the run.
programs=()
if [ $# -gt 0 ]; then
  tested=("${tested[1]}") # the Debug build of the target that runs: it also has the native checks
  built_only=()
  regex=""
  prev=""
  for a in "$@"; do
    case "$prev" in -R | --tests-regex) regex=$a ;; esac
    case "$a" in -R?*) regex=${a#-R} ;; esac
    prev=$a
  done
  if [[ $regex =~ ^\^?([a-z0-9_]+_tests)[.\\] ]]; then
    programs=("${BASH_REMATCH[1]}")
  fi
  echo "test: filtered run: ${tested[0]} only${programs:+, program ${programs[0]}}"
fi

dirs=()
for b in "${tested[@]}" "${built_only[@]}"; do
  target=${b%-*}
  config=Release
  [ "${b#*-}" = debug ] && config=Debug
  echo "== building $target $config"
  tessaly_build "$target" "$config" "$root/build/$b" "${programs[@]}"
done
for b in "${tested[@]}"; do dirs+=("$root/build/$b"); done

xvfb-run -a -n $((100 + RANDOM % 800)) -s "-screen 0 1280x1024x24 -nolisten tcp" bash -c '
  set -u
  rc=0
  n=$1
  shift
  dirs=("${@:1:$n}")
  shift "$n"
  for dir in "${dirs[@]}"; do
    cd "$dir"
    # Makes the prefix and starts its services before tests run in parallel; test discovery
    # would otherwise wait on services that inherited its output pipe.
    ./wine-run cmd /c exit >/dev/null 2>&1 || true
    ./wine-run --wineserver -p
    echo "== tests of $dir"
    # A case that fails or runs out of time is run once more, and every such case is named at the
    # end. The platform alone fails about one case run in four thousand: Wine GStreamer
    # stopping the process inside the Media Player control open on a busy machine, a bare render
    # that leaves a stream out, a test process ending before its first line (see README). No
    # apostrophes here: this block is one single-quoted string.
    log=$(mktemp)
    ctest --output-on-failure --no-tests=error -j "$(nproc)" --repeat until-pass:2 "$@" 2>&1 | tee "$log"
    [ "${PIPESTATUS[0]}" = 0 ] || rc=1
    flaky=$(grep -aE "^ *([0-9]+/[0-9]+ )?Test +#[0-9]+: .*[*]{3}(Failed|Timeout|Exception)" "$log" \
      | sed -E "s/^ *([0-9]+\/[0-9]+ )?Test +#[0-9]+: ([^ ]+) .*/\2/" | sort -u)
    still=$(sed -n "/The following tests FAILED/,\$p" "$log" | grep -aoE " - [^ ]+" | cut -c4- | sort -u)
    again=$(comm -23 <(printf "%s\n" $flaky) <(printf "%s\n" $still) | grep . || true)
    if [ -n "$again" ]; then
      echo "== passed only when run a second time, in $dir:"
      printf "   %s\n" $again
    fi
    rm -f "$log"
    ./wine-run --wineserver -k || true
  done
  exit $rc' bash "${#dirs[@]}" "${dirs[@]}" "$@"
