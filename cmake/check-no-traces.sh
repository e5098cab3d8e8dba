#!/bin/sh
# Fails when a built file still holds trace lines ("S:Class::Method>" or "E:Class::Method>").
if grep -a -q -E '[SE]:C[A-Za-z]+::[A-Za-z]+>' "$1"; then
  echo "trace text found in $1:" >&2
  grep -a -o -E '[SE]:C[A-Za-z]+::[A-Za-z]+>' "$1" | sort -u | head -5 >&2
  exit 1
fi
