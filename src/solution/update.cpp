// The end of an increment: the soil movements sorted by kind, the increments added to
// the running totals, the soil softened for the next increment, the loads at each pile
// head, the reports, and the test whether the group can carry more load.
#include <cmath>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/number_forms.h"
#include "files/reports.h"
#include "solution/solution.h"

namespace quellon {

namespace {

void AddInto(RealVector& total, const RealVector& inc, int rows) {
  float* t = total.data();
  const float* d = inc.data();
  for (int r = 0; r < rows; ++r) t[r] = t[r] + d[r];
}

}  // namespace

void SplitSoilDisplacements(Engine& e) {
  Workspace& w = e.ws;
  w.DispAxialInc.fill(0.0f);
  w.DispXInc.fill(0.0f);
  w.DispYInc.fill(0.0f);
  w.TwistInc.fill(0.0f);
  const int n = e.foundation.NumberOfElements;
  const int M = UnknownsPerPile(e);
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    const int m = (p - 1) * M;
    for (int k = 1; k <= n + 1; ++k) w.DispAxialInc((p - 1) * (n + 1) + k) = w.SoilDispInc(m + k);
    for (int k = 1; k <= n; ++k) {
      const int q = (p - 1) * n + k;
      w.DispXInc(q) = w.SoilDispInc(m + n + 1 + k);
      w.DispYInc(q) = w.SoilDispInc(m + 2 * n + 1 + k);
      w.TwistInc(q) = w.SoilDispInc(m + 3 * n + 1 + k);
    }
  }
}

int Update(Engine& e, int increment) {
  Workspace& w = e.ws;
  const Foundation& f = e.foundation;
  const int P = f.NumberOfPiles;
  const int n = f.NumberOfElements;
  const int rows = (n + 1) * P;  // every axial unknown of the group: shafts and bases
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
  AddInto(w.HeadDispAxial, w.HeadDispAxialInc, P);
  AddInto(w.HeadDispX, w.HeadDispXInc, P);
  AddInto(w.HeadDispY, w.HeadDispYInc, P);
  AddInto(w.HeadTwist, w.HeadTwistInc, P);
  AddInto(w.DispAxial, w.DispAxialInc, rows);
  AddInto(w.DispX, w.DispXInc, rows);
  AddInto(w.DispY, w.DispYInc, rows);
  AddInto(w.Twist, w.TwistInc, rows);

  // The state for the next increment, from the stresses and limits of this one: yield
  // lags one increment behind the load.
  if (e.project.NonLinear) {
    {
      PhaseScope softening(e.timer, Phase::kSoftening);
      UpdateSoilFlexibility(e, i);
    }
    PhaseScope reports(e.timer, Phase::kReports);
    PrintNonLinearMatrices(e, i);
  }

  AddInto(w.LoadAxial, w.LoadAxialInc, rows);
  AddInto(w.ShearX, w.ShearXInc, n * P);
  AddInto(w.MomentXZ, w.MomentXZInc, n * P);
  AddInto(w.ShearY, w.ShearYInc, n * P);
  AddInto(w.MomentYZ, w.MomentYZInc, n * P);
  AddInto(w.Torque, w.TorqueInc, n * P);

  // Loads at each pile head at cap level: the moments of the top element's shear are
  // carried up through the free-standing part, F / cos(rake) long.
  const float F = f.FreeStandingLength;
  for (int p = 1; p <= P; ++p) {
    const Pile& pile = f.Piles(p);
    const float ca = std::cos(DegreesToRadians(pile.RakeX));
    const float ce = std::cos(DegreesToRadians(pile.RakeY));
    const int t = (p - 1) * n + 1;
    w.PileHeadAxial(p) = w.LoadAxial((p - 1) * (n + 1) + 1);
    w.PileHeadX(p) = w.ShearX(t);
    w.PileHeadMomentXZ(p) = w.MomentXZ(t) - w.ShearX(t) * F / ca;
    w.PileHeadY(p) = w.ShearY(t);
    w.PileHeadMomentYZ(p) = w.MomentYZ(t) - w.ShearY(t) * F / ce;
    w.PileHeadTorque(p) = w.Torque(t);
  }

  // Reports of the increment; the writers apply their own flags and cut-offs, and the
  // XML writer calls the pile cap callbacks inside its block.
  {
    PhaseScope reports(e.timer, Phase::kReports);
    WriteXMLIncrement(e, i);
    WriteTXTIncrementResults(e, i);
  }

  // Capacity: the run ends when every axial unknown of the group has yielded.
  if (w.YieldCountAxial != rows) return 1;
  LogLine(e, "Axial elements yielded = " + FormatInt(w.YieldCountAxial) + "/" + FormatInt(rows));
  WriteXMLCapacityStop(e);
  WriteTXTCapacityStop(e, i);
  SendError(e, "Ultimate axial capacity of single pile exceeded after increment " + FormatInt(i));
  // 259 "Ultimate axial capacity of pile exceeded", 260 "... of pile group exceeded".
  e.project.ErrorCode = P == 1 ? 259 : 260;
  return 0;
}

}  // namespace quellon
