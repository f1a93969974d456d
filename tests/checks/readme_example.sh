#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# readme_example.sh README WORK_DIR COMPILER FLAG...: the first C block of the README compiles as
# C99, runs, and prints what the README says ("It prints `...`").
set -euo pipefail
readme=$1 dir=$2
shift 2

mkdir -p "$dir"
awk '/^```/ { if (inside) exit; inside = $0 == "```c"; next } inside' "$readme" >"$dir/example.c"
expected=$(sed -n 's/.*It prints `\([^`]*\)`.*/\1/p' "$readme" | head -n 1)
if ! [ -s "$dir/example.c" ] || [ -z "$expected" ]; then
  echo "no example or no output in $readme"
  exit 1
fi

compiler=$1
shift
"$compiler" -std=c99 -pedantic-errors -Wall -Wextra -Werror "$dir/example.c" -o "$dir/example" "$@"
printed=$("$dir/example")
[ "$printed" = "$expected" ] || { echo "printed '$printed', README says '$expected'"; exit 1; }
