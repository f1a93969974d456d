#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# header_synopsis.sh HEADER WORK_DIR LANGUAGE LIBRARY COMPILER FLAG...: the example in the header's
# opening comment compiles without a warning, as c or c++, and does what it says.
set -euo pipefail
header=$1 dir=$2 language=$3 library=$4
shift 4

mkdir -p "$dir"
program=$dir/synopsis.c
awk '/^\/\/ Contents/ { exit } sub(/^\/\/   /, "")' "$header" >"$program"
grep -q LumImageTransform "$program" || { echo "no synopsis in $header"; exit 1; }
cat >>"$program" <<'END'
#include <stdio.h>
int main(void) {
  static uint8_t mosaic[32 * 16], bgr[32 * 16 * 3];
  unsigned i;
  for (i = 0; i < sizeof mosaic; ++i) mosaic[i] = 77;
  if (!to_bgr(mosaic, bgr, 32, 16)) return puts("to_bgr failed"), 1;
  for (i = 0; i < sizeof bgr; ++i) {
    if (bgr[i] != 77) return printf("byte %u is %d, not 77\n", i, bgr[i]), 1;
  }
  return to_bgr(mosaic, bgr, 0, 16) ? (puts("to_bgr took a width of 0"), 1) : 0;
}
END
compiler=$1
shift
"$compiler" -pedantic-errors -Wall -Wextra -Werror "$@" \
  -x "$language" "$program" -x none "$library" -Wl,-rpath,"$(dirname "$library")" -o "$dir/synopsis"
"$dir/synopsis"
