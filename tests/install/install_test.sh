#!/usr/bin/env bash
# Installs the engine from a build tree into a scratch prefix, then builds the tiny host
# against it twice, through the CMake package and through pkg-config, and runs both.
set -euo pipefail
build_dir=$1
source_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
test -x "$work/prefix/bin/quellon"
"$work/prefix/bin/quellon" --version

cmake -S "$source_dir" -B "$work/host" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/host" >/dev/null
LD_LIBRARY_PATH="$work/prefix/lib" "$work/host/tiny_host" "$work/a.xml"

export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig"
cc -o "$work/tiny_host_pc" "$source_dir/tiny_host.c" $(pkg-config --cflags --libs quellon) -lm
LD_LIBRARY_PATH="$work/prefix/lib" "$work/tiny_host_pc" "$work/b.xml"
