#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# kernel_symbols.sh NM "LEVEL ..." OBJECT ...
#
# Each level's unit must define exactly one global symbol, its table, and no weak one: of an inline
# function that several units emit the linker keeps one copy, and if that is the one compiled for
# AVX-512 the library dies on every older processor. Nor may a unit call anything but memory copies.
set -euo pipefail

nm=$1 levels=$2
shift 2
failed=0

fail() {
  echo "$*"
  failed=1
}

# Bookkeeping of the sanitizers; __odr_asan. marks each global of an instrumented unit.
instrumentation='^(__asan_|__ubsan_|__tsan_|__odr_asan\.|__odr_asan_gen_)'

for level in $levels; do
  object=
  for candidate in "$@"; do
    case $candidate in */kernels_"$level".cpp.o | */kernels_"$level".o) object=$candidate ;; esac
  done
  if [ -z "$object" ]; then
    fail "$level: no object among: $*"
    continue
  fi
  table=_ZN3lum$((8 + ${#level}))kernels_${level}E
  # Of each symbol the name and the kind: capitals are global, U and w undefined; V, W, v, w, u and i
  # are weak, unique or resolved at run time.
  listing=$("$nm" -P "$object" | cut -d ' ' -f 1,2 | grep -Ev "$instrumentation")
  defined=$(sed -n 's/ [A-TX-Z]$//p' <<<"$listing")
  shared=$(sed -n 's/ [VWvwui]$//p' <<<"$listing")
  calls=$(sed -n 's/ U$//p' <<<"$listing" |
    grep -Evx 'mem(cpy|move|set)|__stack_chk_fail|_GLOBAL_OFFSET_TABLE_' || true)
  [ "$defined" = "$table" ] || fail "$level: only $table is to be global, not:"$'\n'"$defined"
  [ -z "$shared" ] || fail "$level: weak symbols:"$'\n'"$shared"
  [ -z "$calls" ] || fail "$level: needs from outside:"$'\n'"$calls"
  echo "$level: $(wc -l <<<"$listing") symbols looked at"
done
exit $failed
