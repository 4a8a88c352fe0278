// Entry points of the pile and group solution used by the analysis driver, in the
// order of a run.
#pragma once

namespace quellon {

struct Engine;

// Before the workspace: the four yield counters to zero.
void ResetYieldCounters(Engine& e);
// Soil entry points, centre of rotation and the load of one increment (CapLoadInc).
void PrepareGroupGeometry(Engine& e);
// The four section tables.
void PileStiffnessesAllPiles(Engine& e);
// Limiting stress of every element (non-linear runs).
void LimitingStressesAllPiles(Engine& e);
// Per pile p, after AssembleSoilFlexibility: its block of D, then its rows of UBCV.
void AssemblePileFlexibility(Engine& e, int p);
void BuildBoundaryConditionVectors(Engine& e, int p);

// One increment, in this order.
int Solve(Engine& e, int increment);
void SplitTractions(Engine& e);
void CalcHeadLoads(Engine& e, int increment);
int CalcStiffnessDisplsStressesLoads(Engine& e, int increment);
void SplitSoilDisplacements(Engine& e);
// 1 to go on, 0 when the axial capacity is used up or a work vector can't be created.
int Update(Engine& e, int increment);
// Softening and yield for the next increment; called by Update in non-linear runs.
void UpdateSoilFlexibility(Engine& e, int increment);

}  // namespace quellon
