#!/usr/bin/env bash
# Builds the tiny host with the engine taken into its own tree by add_subdirectory, and
# runs it. The build folder stays between runs, so only the first run builds the engine.
set -euo pipefail
source_dir=$1
build_dir=$2
shift 2
cmake -S "$source_dir/tests/embed" -B "$build_dir" -DQUELLON_SOURCE_DIR="$source_dir" "$@" >/dev/null
cmake --build "$build_dir" -j"$(nproc)" --target tiny_host >/dev/null
"$build_dir/tiny_host" "$build_dir/tiny_host.xml"
