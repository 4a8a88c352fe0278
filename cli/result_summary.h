// The parts of the summary of `quellon run` that come from the results read back from the
// XML output: the pile head loads, the largest bending moment and axial force down each
// pile, and the warnings that only a finished run can give.
#pragma once

#include "console.h"
#include "run_results.h"

namespace quellon_cli {

void PrintPileResults(Console& c, const RunResults& r);

}  // namespace quellon_cli
