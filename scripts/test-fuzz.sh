#!/usr/bin/env bash
# Builds the fuzz target of the text model reader with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) and runs it for a short, bounded time: the CTest test
# fuzz_tmw_reader, QUELLON_FUZZ_SECONDS long (25 s unless given). docs/fuzzing.md tells
# how to run it longer.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${FUZZ_BUILD_DIR:-build-fuzz}
cmake -S . -B "$build" -DCMAKE_C_COMPILER="${FUZZ_CC:-clang-14}" -DCMAKE_CXX_COMPILER="${FUZZ_CXX:-clang++-14}" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUELLON_BUILD_FUZZ=ON -DQUELLON_BUILD_TESTS=OFF -DQUELLON_BUILD_BENCH=OFF \
  -DQUELLON_FUZZ_SECONDS="${QUELLON_FUZZ_SECONDS:-25}" >/dev/null
cmake --build "$build" -j"$(nproc)" --target tmw_reader_fuzz
ctest --test-dir "$build" -R fuzz_tmw_reader --output-on-failure
