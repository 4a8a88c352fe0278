// Not written yet: the non-linear soil model replaces this file.
#include "solution/solution.h"

namespace quellon {

void LimitingStressesAllPiles(Engine&) {}
void UpdateSoilFlexibility(Engine&, int) {}

}  // namespace quellon
