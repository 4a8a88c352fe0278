// The results of one increment from the group's flexibility: the cap movement under the
// increment's loads, and that movement spread back over every pile head and element as
// stresses, soil movements and loads. Everything here is an increment; the totals take
// it in update.cpp.
#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/utilities.h"
#include "engine/workspace.h"
#include "soil/soil.h"
#include "solution/soil_softening.h"
#include "solution/solution.h"

namespace quellon {

namespace {

// Element stresses: each is the sum of the six unit responses weighted by the movement.
void CombineUnitStresses(const RealMatrix& unit, const RealVector& d, int rows, RealVector& out) {
  for (int r = 1; r <= rows; ++r) out(r) = 0.0f;
  for (int c = 1; c <= 6; ++c) {
    const float dc = d(c);
    const float* u = unit.col(c);
    float* o = out.data();
    for (int r = 0; r < rows; ++r) o[r] = o[r] + u[r] * dc;
  }
}

}  // namespace

void CapMovementAndStresses(const Foundation& f, const GroupLayout& g, const float flex[36], Workspace& w) {
  // Cap movement under the loads of one increment.
  for (int i = 1; i <= 6; ++i) {
    float s = 0.0f;
    for (int j = 1; j <= 6; ++j) s = s + flex[(i - 1) + 6 * (j - 1)] * w.CapLoadInc(j);
    w.CapDispInc(i) = s;
  }

  // Element stresses; rows beyond nP of the last three come out zero.
  const int rows = g.AxialRows();
  CombineUnitStresses(w.UnitStressAxial, w.CapDispInc, rows, w.StressAxialInc);
  CombineUnitStresses(w.UnitStressX, w.CapDispInc, rows, w.StressXInc);
  CombineUnitStresses(w.UnitStressY, w.CapDispInc, rows, w.StressYInc);
  CombineUnitStresses(w.UnitStressTorsion, w.CapDispInc, rows, w.StressTorsionInc);

  // Movement of each pile head, first in the cap's axes, then in the pile's own.
  const float d1 = w.CapDispInc(1), d2 = w.CapDispInc(2), d3 = w.CapDispInc(3);
  const float d4 = w.CapDispInc(4), d5 = w.CapDispInc(5), d6 = w.CapDispInc(6);
  const float s3 = std::sin(d3), s5 = std::sin(d5);
  // d^2 - sin(d)^2 cannot be negative in exact arithmetic; rounding must not make it so.
  const float r3 = std::sqrt(std::fmax(d3 * d3 - s3 * s3, 0.0f));
  const float r5 = std::sqrt(std::fmax(d5 * d5 - s5 * s5, 0.0f));
  for (int p = 1; p <= g.P; ++p) {
    const Pile& pile = f.Piles(p);
    const PileFrame& fr = f.Frame(p);
    const float ca = fr.ca, sa = fr.sa, ce = fr.ce, se = fr.se;
    const float dx = pile.X - f.CentreOfRotationX;
    const float dy = pile.Y - f.CentreOfRotationY;
    const float wV = d1 + s3 * dx + s5 * dy;
    const float wX = d2 - r3 * dx;
    const float wY = d4 - r5 * dy;
    w.HeadTwistInc(p) = d6;
    w.HeadDispAxialInc(p) = ca * ce * wV - sa * wX - se * wY;
    w.HeadDispXInc(p) = sa * wV + ca * wX;
    w.HeadDispYInc(p) = se * wV + ce * wY;
  }
}

void SpreadCapMovement(const Foundation& f, const GroupLayout& g, const float flex[36], Workspace& w,
                       RealVector& packed) {
  const int n = g.n;
  CapMovementAndStresses(f, g, flex, w);

  // The stresses packed in the order of the unknowns, for the soil movements.
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= n + 1; ++k) packed(g.AxialUnknown(p, k)) = w.StressAxialInc(g.AxialRow(p, k));
    for (int k = 1; k <= n; ++k) {
      const int q = g.ElementRow(p, k);
      packed(g.XUnknown(p, k)) = w.StressXInc(q);
      packed(g.YUnknown(p, k)) = w.StressYInc(q);
      packed(g.TorsionUnknown(p, k)) = w.StressTorsionInc(q);
    }
  }
  LoadsDownEachPile(f, g, w);
}

void LoadsDownEachPile(const Foundation& f, const GroupLayout& g, Workspace& w) {
  const int n = g.n;
  // Loads at the top of each element, summed from the toe up.
  for (int p = 1; p <= g.P; ++p) {
    const Pile& pile = f.Piles(p);
    const float Ds = pile.ShaftDiameter;
    const float Db = pile.BaseDiameter;
    const float h = f.Frame(p).h;
    const float Ab = kPi * (Db * Db) / 4.0f;
    const int base = g.AxialRow(p, n + 1);
    w.LoadAxialInc(base) = Ab * w.StressAxialInc(base);
    // One row below the pile's last element: the next pile's first, which its own turn
    // overwrites.
    const int below = g.ElementRow(p, n + 1);
    w.ShearXInc(below) = 0.0f;
    w.MomentXZInc(below) = 0.0f;
    w.ShearYInc(below) = 0.0f;
    w.MomentYZInc(below) = 0.0f;
    w.TorqueInc(below) = 0.0f;
    for (int k = n; k >= 1; --k) {
      const int r = g.AxialRow(p, k);
      const int q = g.ElementRow(p, k);
      w.LoadAxialInc(r) = w.StressAxialInc(r) * h * kPi * Ds + w.LoadAxialInc(r + 1);
      const float sx = w.StressXInc(q);
      w.MomentXZInc(q) = (-(sx * h * 0.5f * Ds) - w.ShearXInc(q + 1)) * h + w.MomentXZInc(q + 1);
      w.ShearXInc(q) = sx * h * Ds + w.ShearXInc(q + 1);
      const float sy = w.StressYInc(q);
      w.MomentYZInc(q) = (-(sy * h * 0.5f * Ds) - w.ShearYInc(q + 1)) * h + w.MomentYZInc(q + 1);
      w.ShearYInc(q) = sy * h * Ds + w.ShearYInc(q + 1);
      w.TorqueInc(q) = w.StressTorsionInc(q) * Ds * h * kHalfPi * Ds + w.TorqueInc(q + 1);
    }
  }
}

void FormSoilMovements(Engine& e, const RealVector& packed, SoilUpdate* next) {
  Workspace& w = e.ws;
  const int N = NumberOfUnknowns(e);
  float* out = w.SoilDispInc.data();
  const float* t = packed.data();
  if (w.G.rows() != N || w.G.cols() != N) {
    // G has become the system: its blocks come from the assembly's tables or the kernels,
    // which the assembly of this workspace has always left behind.
    Require(SoilFlexibilityTimes(e, t, out), "FormSoilMovements: no soil flexibility to multiply by");
    return;
  }
  SoftenedSoilMovements(w, t, out, next);
}

}  // namespace quellon
