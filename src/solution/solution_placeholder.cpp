// Not written yet: the linear solution replaces this file.
#include "solution/solution.h"

namespace quellon {

void ResetYieldCounters(Engine&) {}
void PrepareGroupGeometry(Engine&) {}
void PileStiffnessesAllPiles(Engine&) {}
void AssemblePileFlexibility(Engine&, int) {}
void BuildBoundaryConditionVectors(Engine&, int) {}
int Solve(Engine&, int) { return 1; }
void SplitTractions(Engine&) {}
void CalcHeadLoads(Engine&, int) {}
int CalcStiffnessDisplsStressesLoads(Engine&, int) { return 1; }
void SplitSoilDisplacements(Engine&) {}
int Update(Engine&, int) { return 1; }

}  // namespace quellon
