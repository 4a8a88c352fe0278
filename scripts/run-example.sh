#!/usr/bin/env bash
# Installs what is missing, builds the engine and its command-line host, and analyses an
# example model: bash scripts/run-example.sh [MODEL.tmw]. The outputs go to out/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${BUILD_DIR:-build}
model=${1:-examples/group_3x3_combined.tmw}
if [ ! -f "$build/CMakeCache.txt" ]; then
  echo "Configuring the build in $build ..."
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUELLON_BUILD_BENCH=OFF >/dev/null
fi
# The first build compiles the whole engine: about a minute and a half on two cores,
# less with more. Later builds recompile only what changed.
if [ ! -x "$build/cli/quellon" ]; then
  echo "Building the engine and quellon in $build (the first build takes about 1.5 minutes on 2 cores) ..."
else
  echo "Bringing quellon in $build up to date ..."
fi
start=$SECONDS
cmake --build "$build" -j"$(nproc)" --target quellon_cli >/dev/null
echo "Built in $((SECONDS - start)) s."
"$build/cli/quellon" run "$model" --out-dir "${OUT_DIR:-out}"
