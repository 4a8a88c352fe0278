// The frame of each pile, where the piles enter the ground, the centre about which the
// group's moments are taken, the load that one increment carries, and the section
// stiffness of every element of every pile.
#include <algorithm>
#include <cmath>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "solution/solution.h"

namespace quellon {

void PrepareGroupGeometry(Engine& e) {
  Foundation& f = e.foundation;
  const int P = f.NumberOfPiles;
  const float F = f.FreeStandingLength;

  // Each pile's frame, which every stage after this one reads.
  MakePileFrames(f);

  // A raked pile leaves the cap at (X, Y) and travels down its own axis through the
  // free-standing length; a positive rake carries the lower end towards minus X (Y), so
  // the pile meets the ground at X - tan(a) F. With a free-standing length the ground
  // surface is the top of the first layer, whatever level the cap is given at.
  for (int p = 1; p <= P; ++p) {
    Pile& pile = f.Piles(p);
    const PileFrame& fr = f.Frame(p);
    pile.SoilEntryX = pile.X - fr.ta * F;
    pile.SoilEntryY = pile.Y - fr.te * F;
    pile.SoilEntryZ = pile.Z;
    if (F > 0.0f && e.borehole.NumberOfLayers >= 1 && !e.borehole.LayerTable.empty())
      pile.SoilEntryZ = e.borehole.Layers(1).DepthToTop;
  }

  // The centre of rotation is the mean of the cap-level positions, not of the entries.
  float sx = 0.0f;
  float sy = 0.0f;
  for (int p = 1; p <= P; ++p) {
    sx = sx + f.Piles(p).X;
    sy = sy + f.Piles(p).Y;
  }
  if (P >= 1) {
    f.CentreOfRotationX = sx / static_cast<float>(P);
    f.CentreOfRotationY = sy / static_cast<float>(P);
  } else {
    f.CentreOfRotationX = 0.0f;
    f.CentreOfRotationY = 0.0f;
  }

  // The loads of one increment, moved from their point of action to the centre of
  // rotation. Without an increment to carry them no load is applied at all.
  RealVector& inc = e.ws.CapLoadInc;
  if (inc.size() < 6) return;  // no workspace: the model checks before a run want the geometry only
  CapLoadOfOneIncrement(e.actions, f, inc);
}

void CapLoadOfOneIncrement(const Actions& act, const Foundation& f, RealVector& inc) {
  if (act.NumberOfIncrements < 1) {
    inc.fill(0.0f);
    return;
  }
  const float I = static_cast<float>(act.NumberOfIncrements);
  const float dx = act.X - f.CentreOfRotationX;
  const float dy = act.Y - f.CentreOfRotationY;
  inc(1) = act.Fz / I;
  inc(2) = act.Fx / I;
  inc(3) = (act.My + dx * act.Fz) / I;
  inc(4) = act.Fy / I;
  inc(5) = (act.Mx + dy * act.Fz) / I;
  inc(6) = (act.Mz + dx * act.Fy - dy * act.Fx) / I;
}

void PileStiffnessesAllPiles(Engine& e) {
  const int P = e.foundation.NumberOfPiles;
  const int n = e.foundation.NumberOfElements;
  Workspace& w = e.ws;

  // Depths of the element centres along each pile from its soil entry point, and the
  // toe in the last row. The table has room for 50 elements; a longer pile gets the
  // rows it needs rather than writing past the table.
  RealMatrix depth;
  if (!Create2DRealMatrix(e, depth, std::max(51, n + 1), P)) {
    const char* text = "Failed to create matrix in subroutine PileStiffnessesAllPiles";
    SendError(e, text);
    LogLine(e, text);
    return;
  }
  Require(w.SectionEA.rows() >= n + 1 && w.SectionEA.cols() >= P, "PileStiffnessesAllPiles: workspace of another model");

  for (int p = 1; p <= P; ++p) {
    const Pile& pile = e.foundation.Piles(p);
    // Depths run by steps of h from the first centre, as the element mesh is laid out.
    SteppedCentres centre(e.foundation.Frame(p).h);
    for (int k = 1; k <= n; ++k) depth(k, p) = centre();
    depth(n + 1, p) = pile.Length;

    // The test is made at the element's centre, so that one element is wholly of one
    // section; the toe is reinforced only if the reinforcement reaches it.
    for (int k = 1; k <= n + 1; ++k) {
      const bool reinforced = depth(k, p) <= pile.ReinforcedLength;
      w.SectionEA(k, p) = reinforced ? pile.EA : pile.UnreinforcedEA;
      w.SectionEIx(k, p) = reinforced ? pile.EIx : pile.UnreinforcedEIx;
      w.SectionEIy(k, p) = reinforced ? pile.EIy : pile.UnreinforcedEIy;
      w.SectionGJ(k, p) = reinforced ? pile.GJ : pile.UnreinforcedGJ;
    }
  }
  Release2DRealMatrix(depth);
}

}  // namespace quellon
