// Entry points of the pile and group solution used by the analysis driver, in the
// order of a run.
#pragma once

#include "engine/group_layout.h"
#include "engine/model.h"

namespace quellon {

struct Engine;
struct Workspace;
struct SoilUpdate;

// Before the workspace: the four yield counters to zero.
void ResetYieldCounters(Engine& e);
// The frame of every pile (Foundation::Frames), soil entry points, centre of rotation
// and the load of one increment (CapLoadInc).
void PrepareGroupGeometry(Engine& e);
// The load of one increment of `loads`, moved to the centre of rotation, into inc (6).
void CapLoadOfOneIncrement(const Actions& loads, const Foundation& f, RealVector& inc);
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
// Then the group stiffness, its inverse flex (group_stiffness.h), and from it: the cap
// movement, the stresses, head movements and loads of the increment; packed receives
// the stress increments in the order of the unknowns (a work vector of N reals).
void SpreadCapMovement(const Foundation& f, const GroupLayout& g, const float flex[36], Workspace& w,
                       RealVector& packed);
// The soil movement at every unknown, the soil flexibility times packed: from G (as the
// softening leaves it, in a non-linear run), or once G has become a linear run's system,
// from G's blocks again, bit for bit the same. With next, the softening after this
// increment decided (DecideSoilUpdate), the same pass over G forms the next system.
void FormSoilMovements(Engine& e, const RealVector& packed, SoilUpdate* next = nullptr);
// Its parts before and after the soil movement (SoilDispInc): the cap movement, the
// element stresses and the pile head movements; the loads down each pile.
void CapMovementAndStresses(const Foundation& f, const GroupLayout& g, const float flex[36], Workspace& w);
void LoadsDownEachPile(const Foundation& f, const GroupLayout& g, Workspace& w);
void SplitSoilDisplacements(const GroupLayout& g, Workspace& w);
// The cap, stress and movement increments into the totals and the history.
void AddMovementsToTotals(const GroupLayout& g, int increment, Workspace& w);
// Softening and yield for the next increment, in non-linear runs (soil_softening.cpp);
// with decided, the update decided earlier in the increment takes effect.
void UpdateSoilFlexibility(Engine& e, int increment, SoilUpdate* decided = nullptr);
// Before GD is shown as a matrix: when the softening found the next system equal to the
// one whose factors GD holds, GD is formed again (and will be factorised again).
void FormUnchangedSystem(Workspace& w);
// The load increments into the totals, then the loads at each pile head.
void AddLoadsToTotals(const Foundation& f, const GroupLayout& g, Workspace& w);
// Whether every axial unknown of the group has yielded: the run ends.
bool AxialCapacityUsedUp(const GroupLayout& g, const Workspace& w);

}  // namespace quellon
