#!/bin/sh
# $1: the library, $2: the target's objdump. Fails unless the library exports exactly the four in-process server entry points.
expected="DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer"
actual=$("$2" -p "$1" | awk '/\[Ordinal\/Name Pointer\] Table/{t=1;next} t&&/\[/{print $NF} t&&/^$/{exit}' | sort | tr '\n' ' ' | sed 's/ $//')
if [ "$actual" != "$expected" ]; then
  echo "exports of $1 are '$actual', expected '$expected'" >&2
  exit 1
fi
