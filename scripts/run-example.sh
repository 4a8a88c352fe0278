#!/usr/bin/env bash
# Installs what is missing, builds the engine and its command-line host, and analyses an
# example model: bash scripts/run-example.sh [MODEL.tmw]. The outputs go to out/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${BUILD_DIR:-build}
model=${1:-examples/group_3x3_combined.tmw}
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUELLON_BUILD_BENCH=OFF >/dev/null
fi
cmake --build "$build" -j"$(nproc)" --target quellon_cli >/dev/null
"$build/cli/quellon" run "$model" --out-dir "${OUT_DIR:-out}"
