#!/usr/bin/env bash
# Builds the engine and its whole test suite a second time with AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs the suite under them. Any report fails the run:
# undefined behaviour aborts (no recovery), and so does a leak or a bad access. This is
# also the build whose assertions are live: optimised with debug information, but without
# NDEBUG, so that an impossible state stops the suite instead of passing silently.
# Warnings stay warnings here: under the instrumentation GCC reports uninitialised
# members inside the standard library's <regex> that are not there.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${ASAN_BUILD_DIR:-build-asan}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUELLON_SANITIZE=ON \
  -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O2 -g" -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g" \
  -DQUELLON_WERROR=OFF -DQUELLON_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"
# OpenBLAS and OpenMP are not built with the sanitizer; their thread pools keep memory
# until exit, which the leak checker would count against the engine.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1:strict_string_checks=1:detect_stack_use_after_return=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
