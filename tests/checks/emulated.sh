#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# emulated.sh LUM_TESTS CPU HAS LACKS: the tests on an emulated processor, whose best level is HAS
# and which lacks LACKS: an instruction beyond its level ends the run.
set -euo pipefail
tests=$1 cpu=$2 has=$3 lacks=$4

log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! LUM_TEST_QUICK=1 qemu-x86_64 -cpu "$cpu" "$tests" --gtest_brief=0 >"$log" 2>&1; then
  grep -v -E '^\[ (RUN|      OK|-+)' "$log" | tail -n 40
  exit 1
fi
# Without this, an emulator that knows less or more than the processor would test nothing.
level_test=LevelTest.HasTheCellsOfTheBaseline
grep -q "^\[       OK \] .*$level_test/$has " "$log" || { echo "$cpu did not run $has"; exit 1; }
grep -q "^\[  SKIPPED \] .*$level_test/$lacks " "$log" || { echo "$cpu has $lacks"; exit 1; }
