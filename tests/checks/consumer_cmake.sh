#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# consumer_cmake.sh PREFIX WORK_DIR CMAKE C_COMPILER TARGET: builds tests/consumers with an
# installed Lum, found by find_package, and runs it.
set -euo pipefail
prefix=$1 dir=$2 cmake=$3 compiler=$4 target=$5

rm -rf "$dir"
"$cmake" -S "$(dirname "$0")/../consumers" -B "$dir" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$compiler" -DLUM_TARGET="$target" >"$dir.log" 2>&1 &&
  "$cmake" --build "$dir" >>"$dir.log" 2>&1 || { cat "$dir.log"; exit 1; }
"$dir/consumer"
