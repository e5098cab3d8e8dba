# Sourced by the project's scripts: what this machine can execute.

# Succeeds when the CPU and kernel let a process execute 32-bit x86 code. Runs a 93-byte static
# i386 program (exit(0) through int 0x80), written byte by byte so that nothing has to be installed
# first; a machine that refuses it answers "Exec format error" or a fault.
tessaly_can_run_i386() {
  local probe rc
  probe=$(mktemp "${TMPDIR:-/tmp}/tessaly-i386.XXXXXX")
  # ELF header (52 bytes), one loadable segment (32 bytes), code: mov eax,1; xor ebx,ebx; int 0x80
  printf '\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00'  >"$probe"
  printf '\x02\x00\x03\x00\x01\x00\x00\x00\x54\x80\x04\x08\x34\x00\x00\x00' >>"$probe"
  printf '\x00\x00\x00\x00\x00\x00\x00\x00\x34\x00\x20\x00\x01\x00\x00\x00' >>"$probe"
  printf '\x00\x00\x00\x00'                                         >>"$probe"
  printf '\x01\x00\x00\x00\x00\x00\x00\x00\x00\x80\x04\x08\x00\x80\x04\x08' >>"$probe"
  printf '\x5d\x00\x00\x00\x5d\x00\x00\x00\x05\x00\x00\x00\x00\x10\x00\x00' >>"$probe"
  printf '\xb8\x01\x00\x00\x00\x31\xdb\xcd\x80'                     >>"$probe"
  chmod +x "$probe"
  rc=0
  "$probe" 2>/dev/null || rc=$?
  rm -f "$probe"
  [ $rc -eq 0 ]
}

# Succeeds when 32-bit Windows programs can run here: the CPU allows it and 32-bit Wine is installed.
tessaly_can_run_win32() {
  [ -x /usr/lib/wine/wine ] && tessaly_can_run_i386 && /usr/lib/wine/wine --version >/dev/null 2>&1
}
