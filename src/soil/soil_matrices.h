// The soil flexibility matrices of one pile on itself (soil_K) and of one pile on
// another (pair_K). Each routine takes the ground, the pile records and the matrix that
// it writes; none reads the engine's globals, so each can be tested alone.
//
// Unknowns of one pile, M = 4n + 1: shaft axial 1..n, base n + 1, transverse X
// n + 2..2n + 1, transverse Y 2n + 2..3n + 1, torsion 3n + 2..4n + 1. In every matrix the
// first index is the field unknown (the one that moves), the second the source (the
// one that is loaded); entries are displacement per unit traction, m/kPa (rad/kPa in
// the torsion rows).
#pragma once

#include <vector>

#include "engine/arrays.h"
#include "engine/model.h"
#include "soil/layer_averaging.h"
#include "soil/mindlin_kernels.h"

namespace quellon {

// Below about this many kernel calls a loop runs on one thread: starting the others
// costs more than it saves.
constexpr int kParallelKernelCalls = 200000;

// ---- A pile on itself. p is the pile's column in YamashitaEsv, frame its frame. ----

// Axial and base block (rows and columns 1..n + 1). Does not clear soil_K.
void BuildAxialSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame, int p,
                                     RealMatrix& soil_K);
// Subtracts from the axial and base block the displacement that the same loads cause on
// the rigid layer directly below the soil entry point. Only for a rigid layer.
void RigidLayerAxialCorrection(const SoilGround& g, const Pile& pile, const PileFrame& frame, int p,
                               RealMatrix& soil_K);

// Clears soil_K, then writes the transverse block of a pile without rake into both the X
// and the Y places.
void BuildTransverseSoilFlexibilityMatrices(const SoilGround& g, const Pile& pile, const PileFrame& frame,
                                            RealMatrix& soil_K);
// Clears soil_K, then writes the X block from the rake about X alone.
void BuildTransverseXSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame,
                                           RealMatrix& soil_K);
// Writes the Y block from the rake about Y alone, without clearing.
void BuildTransverseYSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame,
                                           RealMatrix& soil_K);

// Torsion block (rows and columns 3n + 2..4n + 1), summed over 20 slices of 80 points of
// each source element. Does not clear soil_K. Columns are independent and are computed
// in parallel; each entry is summed by one thread in a fixed order.
void BuildTorsionalSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame, int p,
                                         RealMatrix& soil_K);

// ---- One pile on another. ----

// The rule of the group that decides which pairs interact.
struct InteractionRule {
  int flag = 1;           // 1: 1000 Ds of the source pile, 2: 50 Ds, 3: distance; other: no limit
  float distance = 0.0f;  // limit of flag 3, m
  float Mz = 0.0f;        // applied torque: torsion between piles only when it is not zero
  // The corrected mechanics: torsion between near piles whatever the torque, since the
  // cap twists under any eccentric load and its stiffness must not depend on the load.
  bool torsion_always = false;
};

// The points of one pile's axis as the blocks between piles place them: element
// mid-points 1..n and the base at n + 1, each as its offset from the pile's soil entry
// point in plan and its depth below z0 of the first pile; with the ground at each point.
struct AxisPoint {
  float x = 0.0f, y = 0.0f, z = 0.0f;
  LocalSoil soil;
  LocalSoil rigid;  // the ground at the rigid layer's level, with this element's number
};

struct PileAxis {
  const Pile* pile = nullptr;
  int index = 0;  // pile number, the column of YamashitaEsv
  Trig a{0.0f, 1.0f}, e{0.0f, 1.0f};
  float h = 0.0f;
  std::vector<AxisPoint> points;  // [k - 1] for k = 1..n + 1

  const AxisPoint& at(int k) const { return points[static_cast<std::size_t>(k - 1)]; }
};

// With with_soil false only the positions are worked out.
PileAxis MakePileAxis(const SoilGround& g, const Pile& pile, const PileFrame& frame, int index, bool with_soil = true);

// Plan offset of the soil entry point of p from that of q, and their spacing.
struct PairSpacing {
  float Dx = 0.0f, Dy = 0.0f, s = 0.0f;
};
PairSpacing SpacingOf(const Pile& p, const Pile& q);

// Points in the frame of the source pile q, whose soil entry point is the plan origin:
// element (or base, k = n + 1) k of the field pile p, and of the source pile q.
inline Point3 FieldPoint(const PileAxis& p, const PairSpacing& d, int k) {
  const AxisPoint& a = p.at(k);
  return {d.Dx - a.x, d.Dy - a.y, a.z};
}
inline Point3 SourcePoint(const PileAxis& q, int k) {
  const AxisPoint& a = q.at(k);
  return {-a.x, -a.y, a.z};
}

// Limit of the plan spacing beyond which two piles do not interact, from the source
// pile's shaft diameter; false when the flag sets no limit.
bool InteractionLimit(const InteractionRule& rule, const Pile& source, float* limit);

// Whether the block of q on p includes torsion: a torque on the cap, and q's soil entry
// point less than ten of q's shaft diameters from p's.
bool TorsionBetweenPilesApplies(const InteractionRule& rule, const PairSpacing& d, const Pile& q);

// Clears pair_K, then fills the influence of the elements of q (the source, columns) on
// those of p (the field, rows), unless the pair lies beyond the interaction limit. With
// with_torsion false the torsion block stays zero, for BuildPileTorsionInteraction to
// fill on its own.
void BuildPileInteractionMatrix(const SoilGround& g, const InteractionRule& rule, const PileAxis& p,
                                const PileAxis& q, RealMatrix& pair_K, bool with_torsion = true);
// Writes the torsion block of q on p (rows and columns 3n + 2..4n + 1) as
// BuildPileInteractionMatrix would, where the pair interacts and torsion between the
// piles applies, and gives true; otherwise touches nothing and gives false. The rest of
// pair_K is left as it is: the torsion block depends on no other entry.
bool BuildPileTorsionInteraction(const SoilGround& g, const InteractionRule& rule, const PileAxis& p,
                                 const PileAxis& q, RealMatrix& pair_K);
// Subtracts the vertical displacement that the loads on q cause on the rigid layer below
// the soil entry point of p, from the axial and base rows. Only for a rigid layer.
void RigidLayerInteractionCorrection(const SoilGround& g, const InteractionRule& rule, const PileAxis& p,
                                     const PileAxis& q, RealMatrix& pair_K);

// Where a point at which a block between p and q wants a displacement is exactly a
// point at which it places a load, Mindlin's direct terms divide by zero. The result
// tells which case was found; the element numbers (n + 1 for a base, 0 for the rigid
// layer) come back through the pointers.
enum CoincidenceKind : int {
  kNoCoincidence = 0,
  kMidpointsMeet = 1,    // element mid-points or bases of the two piles coincide
  kRingMeetsAxis = 2,    // a point of the torsion ring of q lies on the axis of p
  kRigidLayerMeets = 3,  // the rigid layer point below p is a load point of q
};
int FindCoincidentPoints(const SoilGround& g, const InteractionRule& rule, const PileAxis& p, const PileAxis& q,
                         int* field_element, int* source_element);
// For a pile's own rigid layer correction: the element of the pile (n + 1 for the base)
// whose load point lies on the rigid layer point below the soil entry point, or 0.
int RigidLayerMeetsPile(const SoilGround& g, const Pile& pile, const PileFrame& frame);

// ---- Reuse of a pile's own block. ----

// True when soil_K built for `before` serves for `pile`: the same length, diameters and
// rakes, each within an absolute difference below 1e-20 (a value that is not a number
// is never alike).
bool SameSoilBlock(const Pile& pile, const Pile& before);

// The ground and the interaction rule of the engine's model.
struct Engine;
SoilGround GroundOf(const Engine& e);
InteractionRule InteractionRuleOf(const Engine& e);

}  // namespace quellon
