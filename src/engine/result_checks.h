// Checks of what the numerics of a run produce, at the points where it is about to go to
// the host or into a report: a value that is not a finite number (an infinity, or a NaN
// that one spreads) must never be written out as if it were a result. The model checks
// refuse every input that would make the numerics undefined; what remains are systems
// too ill-conditioned for single precision and sums that overflow, and these end the run
// here with an error that names the value.
#pragma once

#include <cstddef>

namespace quellon {

struct Engine;

// Index from 0 of the first value of v[0], ..., v[n - 1] that is not a finite number; n
// when all are.
std::size_t FirstNonFinite(const float* v, std::size_t n);

// Each gives 1 when every value that it looks at is finite, and otherwise 0 after an
// error to the host and the LOG that names the first such value.
//
// The limiting stresses, after LimitingStressesAllPiles.
int CheckLimitingStresses(Engine& e);
// The rows of G that belong to pile p, after its AssembleSoilFlexibility.
int CheckSoilFlexibilityRows(Engine& e, int p);
// The blocks of D and the rows of UBCV, once all piles are assembled.
int CheckPileMatrices(Engine& e);
// The tractions of increment i, after Solve.
int CheckTractions(Engine& e, int increment);
// The cap movement and every element's stress, movement and load of increment i, after
// CalcStiffnessDisplsStressesLoads and before any of it is added to the totals.
int CheckIncrementResults(Engine& e, int increment);

}  // namespace quellon
