#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# header_synopsis.sh HEADER WORK_DIR COMPILER FLAG...: the example in the header's opening comment
# compiles.
set -euo pipefail
header=$1 dir=$2
shift 2

mkdir -p "$dir"
awk '/^\/\/ Contents/ { exit } sub(/^\/\/   /, "")' "$header" >"$dir/synopsis.c"
grep -q LumImageTransform "$dir/synopsis.c" || { echo "no synopsis in $header"; exit 1; }
"$@" -Wall -Wextra -Werror -c "$dir/synopsis.c" -o "$dir/synopsis.o"
