#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# consumer_pkg_config.sh PREFIX LIBDIR WORK_DIR C_COMPILER [--static]: builds tests/consumers with
# what lum.pc of an installed Lum says, and runs it.
set -euo pipefail
prefix=$1 libdir=$2 dir=$3 compiler=$4 static=${5:-}

mkdir -p "$dir"
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
flags=$(pkg-config $static --cflags --libs lum)
# --static names what the archive needs; the archive itself the linker takes only when told to.
[ -z "$static" ] || flags=${flags/-llum/-l:liblum.a}
"$compiler" -std=c99 "$(dirname "$0")/../consumers/main.c" -o "$dir/consumer" $flags
LD_LIBRARY_PATH="$prefix/$libdir" "$dir/consumer"
