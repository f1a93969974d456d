#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# level_objects.sh NM OBJECT...: the kernels of a level share no code with anything else.
#
# An inline function that two objects define is kept once by the linker. Were it the copy made for
# AVX-512, older processors would die of it in ordinary code. So an object kernels_<level>.cpp.o may
# define its table and no other symbol that the linker sees, and may call no C++ function outside.
set -euo pipefail
nm=$1
shift
[ $# -gt 0 ] || { echo "no objects given"; exit 1; }

failed=0
for object in "$@"; do
  name=$(basename "$object" .cpp.o)
  table="_ZN3lum${#name}${name}E"
  # Sanitizers register each global variable under a name of their own.
  defined=$("$nm" -g --defined-only "$object" | awk '{ print $2, $3 }' |
    grep -v ' __odr_asan' || true)
  if ! [[ $defined =~ ^[RD]\ "$table"$ ]]; then
    echo "$name: expected one global symbol, $table, but found:" "${defined:-none}"
    failed=1
  fi
  called=$("$nm" -u "$object" | awk '{ print $NF }' | grep '^_Z' || true)
  if [ -n "$called" ]; then
    echo "$name: uses C++ symbols of other objects:" "$called"
    failed=1
  fi
done
exit $failed
