#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# shared_library.sh exports NM LIBRARY VERSION-SCRIPT
# shared_library.sh needed READELF LIBRARY
#
# exports: liblum.so exports what its version script lists, no more (a template of the standard
# library would be bound to by other libraries of the process) and no less.
# needed: nothing is needed at run time but the C and C++ run-time libraries.
set -euo pipefail

case $1 in
  exports)
    # Without the node's own symbol, which is absolute.
    exported=$("$2" -D -P --defined-only "$3" | awk '$2 != "A" {sub("@.*", "", $1); print $1}' | sort)
    listed=$(sed -n '/global:/,/local:/s/^ *\([A-Za-z0-9_]*\);.*/\1/p' "$4" | sort)
    if ! diff <(echo "$listed") <(echo "$exported"); then
      echo "< listed in $(basename "$4") only, > exported only"
      exit 1
    fi
    echo "$(wc -l <<<"$exported") symbols exported"
    ;;
  needed)
    needed=$("$2" -d "$3" | sed -n 's/.*(NEEDED).*\[\(.*\)\].*/\1/p')
    [ -n "$needed" ] || { echo "no library needed at all: is $3 a shared library?"; exit 1; }
    echo "$needed"
    if others=$(grep -Ev '^(libstdc\+\+|libm|libc|libgcc_s|ld-linux[a-z0-9_-]*)\.so' <<<"$needed"); then
      echo "not among the run-time libraries:" $others
      exit 1
    fi
    ;;
  *) exit 2 ;;
esac
