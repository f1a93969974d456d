#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# dependencies.sh READELF LIBRARY SONAME: the library needs the C and C++ run-time libraries alone.
set -euo pipefail
readelf=$1 library=$2 soname=$3

dynamic=$("$readelf" -dW "$library")
found=$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$dynamic")
[ "$found" = "$soname" ] || { echo "SONAME is '$found', not $soname"; exit 1; }

needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
[ -n "$needed" ] || { echo "no NEEDED entries found"; exit 1; }
if other=$(grep -Evx 'lib(stdc\+\+|m|c|gcc_s)\.so\.[0-9]+' <<<"$needed"); then
  echo "needs more than libstdc++, libm, libc and libgcc_s:" $other
  exit 1
fi
