// The passes over the N by N matrices of a non-linear run. The softened soil flexibility
// is never stored: it is the elastic G with each column divided by its softening factor
// and the released unknowns' rows and columns cleared. The passes read it from G and a
// softening's decisions: the soil movements multiply it by the stresses, and the system
// GD is formed from it and D. Both read all of G; when an increment needs both, one pass
// does both.
#pragma once

#include "engine/workspace.h"

namespace quellon {

// The decisions of one softening as the passes read them; unknown c (from 1) at [c - 1].
struct SofteningDecisions {
  const float* factor;     // the softening factor of the unknown's column of G
  const int* released_at;  // order of its last release, 0 if none
  const int* last_op_at;   // order of its last release or restore, 0 if none
  // The unknowns with an operation, in rising order, touched_count of them.
  const int* touched;
  int touched_count;
};

// GD = softened G + D under the decisions p, with every release and restore, in one pass
// over the columns of the elastic G.
void RebuildSystem(Workspace& w, const SofteningDecisions& p);
// The same under the decisions the workspace keeps from the last softening.
void RebuildKeptSystem(Workspace& w);

// out = (softened G) t, t and out N long, for the softened G of the system last solved
// (the elastic G before any softening). Each row sums its terms in rising column order,
// whatever the number of threads. With next, the same pass forms GD under next.
void SoftenedFlexibilityTimes(Workspace& w, const float* t, float* out, const SofteningDecisions* next);

}  // namespace quellon
