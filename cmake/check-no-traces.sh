#!/bin/sh
# check-no-traces.sh FILE SOURCE_ROOT
# Fails when FILE, a release library or program, still holds the fixed text of any trace line of
# the engine's sources: the text of each TESSALY_TRACE format up to its first conversion or
# escape, where that is six characters or more (shorter pieces would match unrelated bytes).
set -eu
file=$1
root=$2
list=$(mktemp)
trap 'rm -f "$list"' EXIT
grep -rhoz -E --include='*.cpp' --include='*.h' --exclude-dir=build --exclude-dir=tests --exclude-dir=.git \
  'TESSALY_TRACE\([[:space:]]*"[^"]*' "$root" | tr '\0' '\n' |
  sed 's/^TESSALY_TRACE([[:space:]]*"//; s/[%\\].*//' | awk 'length($0) >= 6' | sort -u > "$list"
if [ ! -s "$list" ]; then
  echo "check-no-traces: no trace text found in the sources under $root" >&2
  exit 1
fi
if grep -a -q -F -f "$list" "$file"; then
  echo "trace text found in $file:" >&2
  grep -a -o -F -f "$list" "$file" | sort -u | head -5 >&2
  exit 1
fi
