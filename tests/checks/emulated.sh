#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# emulated.sh LUM_TESTS CPU LEVEL: the tests on an emulated processor whose best level is LEVEL. An
# instruction that it does not have ends the run, whichever object it comes from. 77: left out.
set -euo pipefail
tests=$1 cpu=$2 level=$3

# The emulator knows AVX2 since its version 7.2.
version=$(qemu-x86_64 --version | sed -n 's/.*version \([0-9]*\.[0-9]*\).*/\1/p')
if [ "$level" = avx2 ] && [ "$(printf '%s\n' 7.2 "$version" | sort -V | head -n 1)" != 7.2 ]; then
  echo "left out: qemu-x86_64 $version does not know AVX2"
  exit 77
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
# One of the tests checks that LEVEL is what the library chooses: what emulators know differs.
if ! LUM_TEST_QUICK=1 LUM_EXPECT_LEVEL=$level qemu-x86_64 -cpu "$cpu" "$tests" >"$log" 2>&1; then
  grep -vE '^\[( RUN  |       OK|-+|  SKIPPED) ' "$log" | tail -n 40
  exit 1
fi
grep -q '^\[       OK \] Isa.ChoosesTheLevelThatTheProcessorHas' "$log"
