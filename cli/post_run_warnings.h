// What a finished non-linear run says about the trust its numbers deserve, read from its
// results: yield is decided one increment after the stress passes its limit, and the
// overshoot of that increment stays in the totals, so with coarse increments elements
// carry well above their limits and the group above its capacity.
#pragma once

#include <string>
#include <vector>

#include "run_results.h"
#include "warnings.h"

namespace quellon_cli {

// Stresses this far above their limit are worth a warning.
constexpr double kOvershootRatio = 1.10;

// One warning per pitfall met ("stress-overshoot", "group-capacity"); empty for a linear
// run or one that stayed clear of both.
std::vector<Warning> PostRunWarnings(const RunResults& results);

}  // namespace quellon_cli
