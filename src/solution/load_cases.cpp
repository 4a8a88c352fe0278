// Load cases of a linear run. Everything of a linear increment but its last steps is
// independent of the load: the tractions for each of the six unit cap movements, and
// the group stiffness they add up to, serve every load. So a case is its cap movement,
// from the group flexibility, and then the same combination of the six unit responses
// that the run's own increment makes: element stresses, pile head movements, soil
// movements and the loads down each pile. The one step of the increment that costs
// N^2, the soil movement G t, is linear in the cap movement too: G times each unit
// traction column is formed once, and each case combines the six vectors. A case thus
// costs a few passes over vectors of N values, and the run holds no second N by N
// matrix for it.
#include "solution/load_cases.h"

#include <algorithm>
#include <string>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/notify.h"
#include "files/load_case_document.h"
#include "files/reports.h"
#include "solution/group_stiffness.h"
#include "solution/solution.h"

namespace quellon {

namespace {

constexpr const char* kLinearComment =
    "Linear: every case from the run's factorisation, its cap movement from the group flexibility and its "
    "results as the combination of the six unit responses of the cap";

// S(., c) = G Tractions(., c) for the six unit cap movements. Rows in blocks, each block
// by one thread with its six sums in hand; each entry takes its terms in rising column
// order, as the increment's own product does, whatever the number of threads.
void UnitSoilMovements(const RealMatrix& G, const RealMatrix& T, int N, RealMatrix& S) {
  constexpr int kRows = 256;
  const int blocks = (N + kRows - 1) / kRows;
#pragma omp parallel for schedule(static) if (N >= 1024)
  for (int b = 0; b < blocks; ++b) {
    const int i0 = b * kRows;
    const int rows = std::min(N, i0 + kRows) - i0;
    float acc[6][kRows] = {};
    for (int j = 1; j <= N; ++j) {
      const float* gj = G.col(j) + i0;
      for (int c = 0; c < 6; ++c) {
        const float t = T(j, c + 1);
        float* a = acc[c];
        for (int i = 0; i < rows; ++i) a[i] = a[i] + gj[i] * t;
      }
    }
    for (int c = 0; c < 6; ++c) std::copy(acc[c], acc[c] + rows, S.col(c + 1) + i0);
  }
}

// The soil movement of a cap movement d: the six unit movements weighted by it.
void CombineSoilMovements(const RealMatrix& S, const RealVector& d, int N, RealVector& out) {
  float* o = out.data();
  for (int i = 0; i < N; ++i) o[i] = 0.0f;
  for (int c = 1; c <= 6; ++c) {
    const float dc = d(c);
    const float* s = S.col(c);
    for (int i = 0; i < N; ++i) o[i] = o[i] + s[i] * dc;
  }
}

// A case's totals are its one increment: they start from zero.
void ZeroTotals(Workspace& w) {
  for (RealVector* v : {&w.CapDispTotal, &w.CapLoadTotal, &w.StressAxial, &w.StressX, &w.StressY, &w.StressTorsion,
                        &w.HeadDispAxial, &w.HeadDispX, &w.HeadDispY, &w.HeadTwist, &w.DispAxial, &w.DispX, &w.DispY,
                        &w.Twist, &w.LoadAxial, &w.ShearX, &w.MomentXZ, &w.ShearY, &w.MomentYZ, &w.Torque})
    v->fill(0.0f);
}

// The case's totals to the host's function, if one is set.
void NotifyLoadCase(Engine& e, int number, const LoadCase& c, int increments) {
  const QuellonLoadCaseFn fn = e.load_cases.callback;
  if (fn == nullptr) return;
  const Workspace& w = e.ws;
  float cap_loads[6];
  float cap_moves[6];
  for (int a = 1; a <= 6; ++a) {
    cap_loads[a - 1] = w.CapLoadTotal(ConvertAxis(a));
    cap_moves[a - 1] = w.CapDispTotal(ConvertAxis(a));
  }
  QuellonLoadCaseResults r{};
  r.number = number;
  r.name = c.name.c_str();
  r.piles = e.foundation.NumberOfPiles;
  r.elements = e.foundation.NumberOfElements;
  r.increments = increments;
  r.cap_loads = cap_loads;
  r.cap_displacements = cap_moves;
  r.head_fx = w.PileHeadX.data();
  r.head_fy = w.PileHeadY.data();
  r.head_fz = w.PileHeadAxial.data();
  r.head_mx = w.PileHeadMomentYZ.data();
  r.head_my = w.PileHeadMomentXZ.data();
  r.head_mz = w.PileHeadTorque.data();
  r.head_dx = w.HeadDispX.data();
  r.head_dy = w.HeadDispY.data();
  r.head_dz = w.HeadDispAxial.data();
  r.head_twist = w.HeadTwist.data();
  r.stress_axial = w.StressAxial.data();
  r.stress_x = w.StressX.data();
  r.stress_y = w.StressY.data();
  r.stress_torsion = w.StressTorsion.data();
  r.disp_axial = w.DispAxial.data();
  r.disp_x = w.DispX.data();
  r.disp_y = w.DispY.data();
  r.twist = w.Twist.data();
  r.load_axial = w.LoadAxial.data();
  r.shear_x = w.ShearX.data();
  r.shear_y = w.ShearY.data();
  r.moment_xz = w.MomentXZ.data();
  r.moment_yz = w.MomentYZ.data();
  r.torque = w.Torque.data();
  fn(&r);
}

}  // namespace

int PrepareLoadCases(Engine& e) {
  if (e.load_cases.cases.empty()) return 1;
  if (e.project.NonLinear != 0) {
    SendError(e,
              "Load cases are worked in a linear run (one increment) only: a non-linear run with load cases is not "
              "available");
    return 0;
  }
  return OpenLoadCaseDocument(e);
}

int WorkLoadCases(Engine& e) {
  LoadCaseSet& set = e.load_cases;
  if (set.cases.empty()) return 1;
  PhaseScope phase(e.timer, Phase::kResults);
  Workspace& w = e.ws;
  const Foundation& f = e.foundation;
  const GroupLayout g = LayoutOf(e);
  Require(w.G.rows() == g.N && w.G.cols() == g.N && w.Tractions.rows() == g.N,
          "WorkLoadCases: the soil flexibility of the run is gone");

  RealMatrix unit_soil;
  if (!Create2DRealMatrix(e, unit_soil, g.N, 6)) return 0;
  UnitSoilMovements(w.G, w.Tractions, g.N, unit_soil);

  // The group stiffness and flexibility of the run's increment, from the same head loads.
  float k[36];
  AssembleGroupStiffness(f, w, k);
  float flex[36];
  std::copy(k, k + 36, flex);
  if (!InvertMatrix(flex, 6, 6)) {
    e.project.ErrorCode = 258;  // "Error inverting soil stiffness matrix"
    return 0;
  }
  float kt[6][6];
  float ft[6][6];
  GroupReportTables(k, flex, kt, ft);

  const int count = static_cast<int>(set.cases.size());
  WriteLoadCaseDocumentStart(e, count, false, kLinearComment);
  for (int i = 1; i <= count; ++i) {
    const LoadCase& c = set.cases[static_cast<std::size_t>(i - 1)];
    CapLoadOfOneIncrement(c.loads, f, w.CapLoadInc);
    CapMovementAndStresses(f, g, flex, w);
    CombineSoilMovements(unit_soil, w.CapDispInc, g.N, w.SoilDispInc);
    LoadsDownEachPile(f, g, w);
    SplitSoilDisplacements(g, w);
    ZeroTotals(w);
    AddMovementsToTotals(g, 1, w);
    AddLoadsToTotals(f, g, w);
    {
      PhaseScope reports(e.timer, Phase::kReports);
      WriteLoadCaseStart(e, i, c.name, c.loads, 1);
      WriteLoadCaseIncrement(e, 1, kt, ft);
      WriteLoadCaseEnd(e);
    }
    NotifyLoadCase(e, i, c, 1);
  }
  WriteLoadCaseDocumentEnd(e);
  LogLine(e, "Load cases written to: " + set.xml_path);
  return 1;
}

}  // namespace quellon
