// What a finished non-linear run says about the trust its numbers deserve, read from its
// results: yield is decided one increment after the stress passes its limit, and the
// overshoot of that increment stays in the totals, so with coarse increments elements
// carry well above their limits and the group above its capacity.
#pragma once

#include <string>
#include <vector>

#include "run_results.h"

namespace quellon_cli {

// Stresses this far above their limit are worth a warning.
constexpr double kOvershootRatio = 1.10;

// One text per warning; empty for a linear run or one that stayed clear of both pitfalls.
std::vector<std::string> PostRunWarnings(const RunResults& results);

}  // namespace quellon_cli
