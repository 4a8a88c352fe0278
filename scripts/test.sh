#!/usr/bin/env bash
# Installs what is missing, builds the engine and its tests, and runs the test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${BUILD_DIR:-build}
# CI treats every compiler warning as an error.
werror=OFF
if [ "${CI:-false}" = "true" ]; then werror=ON; fi
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUELLON_WERROR=$werror -DQUELLON_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"

# CI (CI=true) goes further: the whole suite again under AddressSanitizer and
# UndefinedBehaviorSanitizer with the assertions live, a short run of the fuzz target of
# the model reader, and the Windows DLL cross-built and tested under wine.
if [ "${CI:-false}" = "true" ]; then
  bash scripts/test-sanitizers.sh
  bash scripts/test-fuzz.sh
  LINUX_BUILD_DIR="$build" bash scripts/test-windows.sh
fi
