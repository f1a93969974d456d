#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# exports.sh NM LIBRARY MAP HEADER: the library exports what the version script lists and nothing
# else, and the header declares exactly that.
set -euo pipefail
nm=$1 library=$2 map=$3 header=$4

listed=$(sed -n '/global:/,/local:/s/^ *\([A-Za-z0-9_]*\);$/\1/p' "$map" | sort)
version=$(sed -n 's/^\([A-Z0-9_]*\) {$/\1/p' "$map")
[ -n "$listed" ] && [ -n "$version" ] || { echo "cannot read $map"; exit 1; }

# The version itself is a symbol too.
exported=$("$nm" -D --defined-only "$library" | awk '{ print $3 }' | sed "s/@@\?$version\$//" |
  grep -vx "$version" | sort)
if ! diff <(echo "$listed") <(echo "$exported"); then
  echo "The exports of $library differ from $map: < only in the map, > only in the library"
  exit 1
fi

declared=$(tr '\n' ' ' <"$header" | grep -o 'LUM_API [^;(]*(' | grep -o 'Lum[A-Za-z0-9_]*(' |
  tr -d '(' | sort)
if ! diff <(c++filt <<<"$listed" | sed 's/(.*//' | sort) <(echo "$declared"); then
  echo "$header differs from $map: < only in the map, > only in the header"
  exit 1
fi
