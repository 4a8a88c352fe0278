// The end of an increment: the soil movements sorted by kind, the increments added to
// the running totals, the loads at each pile head, and the test whether the group can
// carry more load. The softening between the two additions is in soil_softening.cpp;
// the driver interleaves these with the reports and the host's callbacks.

#include "engine/utilities.h"
#include "engine/workspace.h"
#include "solution/solution.h"

namespace quellon {

namespace {

void AddInto(RealVector& total, const RealVector& inc, int rows) {
  float* t = total.data();
  const float* d = inc.data();
  for (int r = 0; r < rows; ++r) t[r] = t[r] + d[r];
}

}  // namespace

void SplitSoilDisplacements(const GroupLayout& g, Workspace& w) {
  w.DispAxialInc.fill(0.0f);
  w.DispXInc.fill(0.0f);
  w.DispYInc.fill(0.0f);
  w.TwistInc.fill(0.0f);
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n + 1; ++k) w.DispAxialInc(g.AxialRow(p, k)) = w.SoilDispInc(g.AxialUnknown(p, k));
    for (int k = 1; k <= g.n; ++k) {
      const int q = g.ElementRow(p, k);
      w.DispXInc(q) = w.SoilDispInc(g.XUnknown(p, k));
      w.DispYInc(q) = w.SoilDispInc(g.YUnknown(p, k));
      w.TwistInc(q) = w.SoilDispInc(g.TorsionUnknown(p, k));
    }
  }
}

void AddMovementsToTotals(const GroupLayout& g, int increment, Workspace& w) {
  const int rows = g.AxialRows();  // every axial unknown of the group: shafts and bases
  const int i = increment;

  // Cap totals and the history of the increments.
  const bool in_history = i >= 1 && i <= w.HistoryLoad.rows();
  for (int j = 1; j <= 6; ++j) {
    w.CapLoadTotal(j) = w.CapLoadTotal(j) + w.CapLoadInc(j);
    w.CapDispTotal(j) = w.CapDispTotal(j) + w.CapDispInc(j);
    if (in_history) {
      w.HistoryLoad(i, j) = w.CapLoadTotal(j);
      w.HistoryDispInc(i, j) = w.CapDispInc(j);
      w.HistoryDisp(i, j) = w.CapDispTotal(j);
    }
  }

  // Stresses, pile head movements and element movements.
  AddInto(w.StressAxial, w.StressAxialInc, rows);
  AddInto(w.StressX, w.StressXInc, rows);
  AddInto(w.StressY, w.StressYInc, rows);
  AddInto(w.StressTorsion, w.StressTorsionInc, rows);
  AddInto(w.HeadDispAxial, w.HeadDispAxialInc, g.P);
  AddInto(w.HeadDispX, w.HeadDispXInc, g.P);
  AddInto(w.HeadDispY, w.HeadDispYInc, g.P);
  AddInto(w.HeadTwist, w.HeadTwistInc, g.P);
  AddInto(w.DispAxial, w.DispAxialInc, rows);
  AddInto(w.DispX, w.DispXInc, rows);
  AddInto(w.DispY, w.DispYInc, rows);
  AddInto(w.Twist, w.TwistInc, rows);
}

void AddLoadsToTotals(const Foundation& f, const GroupLayout& g, Workspace& w) {
  AddInto(w.LoadAxial, w.LoadAxialInc, g.AxialRows());
  AddInto(w.ShearX, w.ShearXInc, g.ElementRows());
  AddInto(w.MomentXZ, w.MomentXZInc, g.ElementRows());
  AddInto(w.ShearY, w.ShearYInc, g.ElementRows());
  AddInto(w.MomentYZ, w.MomentYZInc, g.ElementRows());
  AddInto(w.Torque, w.TorqueInc, g.ElementRows());

  // Loads at each pile head at cap level: the moments of the top element's shear are
  // carried up through the free-standing part, F / cos(rake) long.
  const float F = f.FreeStandingLength;
  for (int p = 1; p <= g.P; ++p) {
    const float ca = f.Frame(p).ca;
    const float ce = f.Frame(p).ce;
    const int t = g.ElementRow(p, 1);
    w.PileHeadAxial(p) = w.LoadAxial(g.AxialRow(p, 1));
    w.PileHeadX(p) = w.ShearX(t);
    w.PileHeadMomentXZ(p) = w.MomentXZ(t) - w.ShearX(t) * F / ca;
    w.PileHeadY(p) = w.ShearY(t);
    w.PileHeadMomentYZ(p) = w.MomentYZ(t) - w.ShearY(t) * F / ce;
    w.PileHeadTorque(p) = w.Torque(t);
  }
}

bool AxialCapacityUsedUp(const GroupLayout& g, const Workspace& w) { return w.YieldCountAxial == g.AxialRows(); }

}  // namespace quellon
