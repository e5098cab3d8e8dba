#!/bin/sh
# Fails unless the library exports exactly the four in-process server entry points.
expected="DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer"
actual=$(i686-w64-mingw32-objdump -p "$1" | awk '/\[Ordinal\/Name Pointer\] Table/{t=1;next} t&&/\[/{print $NF} t&&/^$/{exit}' | sort | tr '\n' ' ' | sed 's/ $//')
if [ "$actual" != "$expected" ]; then
  echo "exports of $1 are '$actual', expected '$expected'" >&2
  exit 1
fi
