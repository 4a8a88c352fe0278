// The non-linear soil model: hyperbolic softening of the soil flexibility, yield and
// release of elements, and elastic unloading. UpdateSoilFlexibility (solution.h) runs
// after each increment of a non-linear run and leaves GD ready for the next; the softened
// soil flexibility itself is read through SoftenedSoilFlexibility (workspace.h).
#pragma once

#include "engine/arrays.h"

namespace quellon {

struct Engine;
struct Workspace;

// The softening after an increment, decided and waiting to take effect. The decisions
// read only the stresses, limits and yield state, so they can be taken as soon as the
// increment's stresses are known: the pass over G that forms the increment's soil
// movements then forms the next system too, instead of a second pass over G later.
// What they change in the yield state (the flags, the counters, the LOG's yield lines,
// the stresses that unloading sets to zero) waits in here for CommitSoilUpdate, at the
// place in the increment where the softening has always taken effect.
struct SoilUpdate {
  bool decided = false;    // the decisions below stand
  bool unchanged = false;  // they are those of the system solved last: nothing to form
  bool formed = false;     // the next system GD has been formed from them
  // Whether a next system is needed at all (not after the last increment, unless GD is
  // to be shown): if not, the decisions are kept and GD is left as it is.
  bool system_needed = true;

  // The decisions that concern the matrices.
  RealVector factor;          // softening factor of each unknown's column
  IntegerVector released_at;  // order of the unknown's last release, 0 if none
  IntegerVector last_op_at;   // order of its last release or restore, 0 if none
  IntegerVector touched;      // the unknowns with an operation, 1 to touched_count
  int touched_count = 0;
  int order = 0;

  // The yield state as the decisions leave it: the totals of the stresses after the
  // increment, with unloading's zeros; the yield flags and counters.
  RealVector StressAxial, StressX, StressY, StressTorsion;
  LogicalVector UnloadedX, UnloadedY;  // rows whose stress total unloading set to zero
  LogicalMatrix Yielded;
  int YieldCountAxial = 0, YieldCountX = 0, YieldCountY = 0, YieldCountTorsion = 0;
  IntegerVector newly_yielded;  // axial rows that yielded, in order, for the LOG
  int newly_yielded_count = 0;
};

// Decides the softening after increment `increment` into u. totals_added: whether the
// increment's stresses are in the workspace's totals already. Returns false, with u not
// decided, when its work vectors can't be had.
bool DecideSoilUpdate(Engine& e, int increment, bool totals_added, SoilUpdate& u);
// Makes a decided update take effect: the yield state, then the next system unless the
// soil movements' pass formed it.
void CommitSoilUpdate(Engine& e, SoilUpdate& u);
// out = (softened G) t for the system last solved (FormSoilMovements); with next decided
// and changing the system, the same pass forms the next system, which then stands.
void SoftenedSoilMovements(Workspace& w, const float* t, float* out, SoilUpdate* next);

// Smallest softening factor: the share of its elastic stiffness that the soil at an
// element keeps once its stress has reached what the hyperbolic law can describe. It is
// the factor the law gives at 99 per cent of the limit, (1 - 0.99)^2.
constexpr float kMinimumSofteningFactor = 1.0e-4f;

// Factor by which the soil flexibility column of an element is divided, for a stress s,
// a limit l and a hyperbolic constant R: the tangent stiffness of the hyperbolic law,
// f = (1 - |s| R / |l|)^2, with three guards.
//
// - R = 0 turns softening off: f = 1 for any stress and limit, the elastic-perfectly
//   plastic model.
// - Zero limit (|l| below 1e-20): the ground has no strength there, so the element is
//   fully mobilised even at zero stress. A stress within 1e-20 of zero counts as at the
//   limit, and the factor is the law's value at the limit, (1 - R)^2; any larger stress
//   is beyond the limit.
// - At or beyond the limit of the law (|s| R / |l| >= 1, or not a number) the square
//   would turn back up and make a failed element stiffer than elastic, or divide by 0.
//   The factor stays at kMinimumSofteningFactor instead; so does any smaller value of
//   the law, so that the factor never rises as the stress grows.
//
// Such an element is almost always released in the same update, which overwrites its
// column; the floor shows only where it isn't (an element unloading in X or Y keeps its
// softened column of G), and keeps the softened G finite there.
float SofteningFactor(float stress, float limit, float R);

}  // namespace quellon
