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
#include <array>
#include <utility>
#include <string>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "soil/soil.h"
#include "files/load_case_document.h"
#include "files/reports.h"
#include "solution/group_stiffness.h"
#include "solution/soil_softening.h"
#include "solution/solution.h"

namespace quellon {

namespace {

constexpr const char* kLinearComment =
    "Linear: every case from the run's factorisation, its cap movement from the group flexibility and its "
    "results as the combination of the six unit responses of the cap";
constexpr const char* kNonLinearComment =
    "Non-linear: each case from the elastic state, its own increments, reusing the elastic soil and pile "
    "matrices and the limiting stresses of the run";
constexpr const char* kSecondSystemComment =
    "; the cases that differ from the run's own loads in having a torque about Z or none, from a second "
    "assembly and factorisation, since the torsion between near piles enters the soil flexibility only "
    "under a torque";

// Whether the soil flexibility between piles depends on a case's loads: in the method as
// defined, the torsion between near piles is assembled only under a torque about Z, so a
// case with a torque and one without need different systems. The corrected mechanics
// assemble that torsion under any load, and one system serves every case.
bool TorsionFollowsTheLoads(const Engine& e) {
  return e.foundation.NumberOfPiles > 1 && !e.corrected_mechanics;
}

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

// What a system gives every case worked from it: the soil movements of the six unit
// cap movements, and the group flexibility with the report tables of both.
struct UnitResponses {
  RealMatrix soil;  // N by 6: G times each unit traction column
  float flex[36] = {};
  float kt[6][6] = {};
  float ft[6][6] = {};
};

int FormUnitResponses(Engine& e, UnitResponses& r) {
  Workspace& w = e.ws;
  const int N = NumberOfUnknowns(e);
  if (!Create2DRealMatrix(e, r.soil, N, 6)) return 0;
  if (w.G.rows() == N && w.G.cols() == N) {
    UnitSoilMovements(w.G, w.Tractions, N, r.soil);
  } else {
    // G's storage became the system: its blocks come again from the assembly's tables or
    // the kernels, each column as the run's own soil movements are formed.
    for (int c = 1; c <= 6; ++c)
      Require(SoilFlexibilityTimes(e, w.Tractions.col(c), r.soil.col(c)),
              "WorkLoadCases: the blocks of the soil flexibility can't be formed again");
  }
  // The group stiffness and flexibility as the run's increment forms them.
  float k[36];
  AssembleGroupStiffness(e.foundation, w, k);
  std::copy(k, k + 36, r.flex);
  if (!InvertMatrix(r.flex, 6, 6)) {
    e.project.ErrorCode = 258;  // "Error inverting soil stiffness matrix"
    return 0;
  }
  GroupReportTables(k, r.flex, r.kt, r.ft);
  return 1;
}

// The unit stresses and head loads of one system, kept aside while the other's stand in
// the workspace.
struct UnitTables {
  RealMatrix stress[4];
  RealMatrix head[6];
  static std::array<RealMatrix*, 10> Of(Workspace& w) {
    return {&w.UnitStressAxial, &w.UnitStressX, &w.UnitStressY, &w.UnitStressTorsion, &w.HeadAxial,
            &w.HeadX,           &w.HeadMomentXZ, &w.HeadY,       &w.HeadMomentYZ,      &w.HeadTorque};
  }
  std::array<RealMatrix*, 10> Mine() {
    return {&stress[0], &stress[1], &stress[2], &stress[3], &head[0],
            &head[1],   &head[2],   &head[3],   &head[4],   &head[5]};
  }
  void CopyFrom(Workspace& w) {
    const auto from = Of(w);
    const auto to = Mine();
    for (std::size_t i = 0; i < from.size(); ++i) *to[i] = *from[i];
  }
  void SwapWith(Workspace& w) {
    const auto other = Of(w);
    const auto mine = Mine();
    for (std::size_t i = 0; i < other.size(); ++i) std::swap(*other[i], *mine[i]);
  }
};

// The LOG of the run stays as it is without cases: the second system is made silently.
class QuietLog {
 public:
  explicit QuietLog(Engine& e) : e_(e), unit_(e.project.LOGUnit) { e_.project.LOGUnit = 0; }
  ~QuietLog() { e_.project.LOGUnit = unit_; }
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;

 private:
  Engine& e_;
  int unit_;
};

// G again, with or without the torsion between near piles. A linear run's system took
// G's storage, and its factors have served once the first system's unit responses are
// formed: G is made anew in their place and every block assembled again, each pile's own
// block taken over from the pile before where the run took it over (the same floats).
// The kept copies of blocks go first, so that none of the first assembly's outlives it.
int AssembleSoilFlexibilityAgain(Engine& e) {
  Workspace& w = e.ws;
  const int N = NumberOfUnknowns(e);
  w.system.GD.release();
  w.system.Reset();
  for (RealMatrix* m : {&w.SoilPairBlocks, &w.SoilOwnBlocks, &w.SoilTorsionBlocks}) m->release();
  w.SoilTorsionSlot.release();
  if (!Create2DRealMatrix(e, w.G, N, N)) return 0;
  const int reference = e.project.ReferencePile;
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    e.project.ReferencePile = p - 1;
    AssembleSoilFlexibility(e, p);
  }
  e.project.ReferencePile = reference;
  return 1;
}

// Whether a torque is applied, as the soil assembly and the recomputation of G's blocks
// read it (the torsion between near piles depends on it), for the length of a scope.
class TorqueChoice {
 public:
  TorqueChoice(Engine& e, bool torque) : e_(e), mz_(e.actions.Mz) { e_.actions.Mz = torque ? 1.0f : 0.0f; }
  ~TorqueChoice() { e_.actions.Mz = mz_; }
  TorqueChoice(const TorqueChoice&) = delete;
  TorqueChoice& operator=(const TorqueChoice&) = delete;

 private:
  Engine& e_;
  float mz_;
};

// The system with the torsion between near piles that the TorqueChoice in force gives,
// and the unit tractions and head loads of that system. D and UBCV don't depend on the
// torque and stand as the run made them.
int SolveWithOtherTorsion(Engine& e) {
  QuietLog quiet(e);
  if (e.ws.G.empty()) {
    // G has become the system: it is assembled anew into storage of its own.
    if (AssembleSoilFlexibilityAgain(e) == 0) return 0;
  } else {
    // G stands: the turn of pile 1 writes the blocks between piles, torsion included.
    AssembleSoilFlexibility(e, 1);
  }
  if (Solve(e, 1) == 0) return 0;
  SplitTractions(e);
  CalcHeadLoads(e, 1);
  return 1;
}

// ---- Non-linear runs --------------------------------------------------------------

// The soil back to its elastic state, no element yielded, and the totals and history at
// zero: the state in which the run's own first increment began. The matrices D, UBCV,
// the limiting stresses and G, which the softening never changes (its decisions make the
// softened matrix from it), stand as the run made them.
void BackToElastic(Workspace& w) {
  w.Yielded.fill(0);
  w.SoftFactor.fill(0.0f);
  w.SoftReleasedAt.fill(0);
  w.SoftChangedAt.fill(0);
  w.YieldCountAxial = w.YieldCountX = w.YieldCountY = w.YieldCountTorsion = 0;
  w.system.Reset();
  ZeroTotals(w);
  w.HistoryDisp.fill(0.0f);
  w.HistoryLoad.fill(0.0f);
  w.HistoryDispInc.fill(0.0f);
}

enum class PathEnd { kDone, kCapacity, kStiffnessLost };

// One case's path of increments, each as the run's own increment computes it, reported
// to the cases document only. completed: the increments whose results stand.
PathEnd RunCasePath(Engine& e, int increments, int& completed) {
  Workspace& w = e.ws;
  const Foundation& f = e.foundation;
  const GroupLayout g = LayoutOf(e);
  RealVector packed;
  if (!Create1DRealMatrix(e, packed, g.N)) return PathEnd::kStiffnessLost;
  completed = 0;
  for (int i = 1; i <= increments; ++i) {
    // A failed solve goes on with the tractions in hand, as in the run.
    Solve(e, i);
    SplitTractions(e);
    CalcHeadLoads(e, i);
    float k[36];
    AssembleGroupStiffness(f, w, k);
    float flex[36];
    std::copy(k, k + 36, flex);
    if (!InvertMatrix(flex, 6, 6)) return PathEnd::kStiffnessLost;
    float kt[6][6];
    float ft[6][6];
    GroupReportTables(k, flex, kt, ft);
    SpreadCapMovement(f, g, flex, w, packed);
    // As in the run: the next system formed in the soil movements' pass over G.
    SoilUpdate next;
    if (DecideSoilUpdate(e, i, false, next)) next.system_needed = i < increments;
    FormSoilMovements(e, packed, &next);
    SplitSoilDisplacements(g, w);
    AddMovementsToTotals(g, i, w);
    UpdateSoilFlexibility(e, i, &next);
    AddLoadsToTotals(f, g, w);
    {
      PhaseScope reports(e.timer, Phase::kReports);
      WriteLoadCaseIncrement(e, i, kt, ft);
    }
    completed = i;
    if (AxialCapacityUsedUp(g, w)) return PathEnd::kCapacity;
  }
  return PathEnd::kDone;
}

int WorkNonLinearLoadCases(Engine& e) {
  LoadCaseSet& set = e.load_cases;
  PhaseScope phase(e.timer, Phase::kResults);
  Workspace& w = e.ws;
  const GroupLayout g = LayoutOf(e);
  Require(w.G.rows() == g.N && w.G.cols() == g.N, "WorkLoadCases: the elastic soil flexibility of the run is gone");
  const int count = static_cast<int>(set.cases.size());
  const int increments = e.actions.NumberOfIncrements;
  WriteLoadCaseDocumentStart(e, count, true, kNonLinearComment);
  // Whether G holds the torsion between near piles (under a torque).
  bool elastic_torque = IsNonZero(e.actions.Mz);
  for (int i = 1; i <= count; ++i) {
    const LoadCase& c = set.cases[static_cast<std::size_t>(i - 1)];
    std::copy(std::begin(set.flags), std::end(set.flags), std::begin(e.project.FlagValues));
    Actions loads = c.loads;
    loads.NumberOfIncrements = increments;
    CapLoadOfOneIncrement(loads, e.foundation, w.CapLoadInc);
    int completed = 0;
    PathEnd end = PathEnd::kDone;
    WriteLoadCaseStart(e, i, c.name, c.loads, increments);
    {
      QuietLog quiet(e);
      BackToElastic(w);
      const bool torque = IsNonZero(c.loads.Mz);
      if (TorsionFollowsTheLoads(e) && torque != elastic_torque) {
        TorqueChoice choice(e, torque);
        AssembleSoilFlexibility(e, 1);
        elastic_torque = torque;
      }
      end = RunCasePath(e, increments, completed);
    }
    if (end == PathEnd::kCapacity) WriteLoadCaseCapacityReached(e, completed);
    if (end == PathEnd::kStiffnessLost) {
      SendError(e, "Load case " + std::to_string(i) + " stopped at increment " + std::to_string(completed + 1) +
                       ": the group stiffness can't be inverted");
    }
    WriteLoadCaseEnd(e);
    NotifyLoadCase(e, i, c, completed);
  }
  WriteLoadCaseDocumentEnd(e);
  LogLine(e, "Load cases written to: " + set.xml_path);
  return 1;
}

}  // namespace

int PrepareLoadCases(Engine& e) {
  LoadCaseSet& set = e.load_cases;
  if (set.cases.empty()) return 1;
  // The flags as the run starts: each case's path of increments reports under them, as
  // the run's own path does (the last increment may widen them).
  std::copy(std::begin(e.project.FlagValues), std::end(e.project.FlagValues), std::begin(set.flags));
  return OpenLoadCaseDocument(e);
}

int WorkLoadCases(Engine& e) {
  LoadCaseSet& set = e.load_cases;
  if (set.cases.empty()) return 1;
  if (e.project.NonLinear != 0) return WorkNonLinearLoadCases(e);
  PhaseScope phase(e.timer, Phase::kResults);
  Workspace& w = e.ws;
  const Foundation& f = e.foundation;
  const GroupLayout g = LayoutOf(e);
  Require(w.Tractions.rows() == g.N, "WorkLoadCases: the unit tractions of the run are gone");

  // The soil matrix between piles depends on the loads in one respect: whether a torque
  // about Z is applied. Cases that differ from the run's own loads in it need a system of
  // their own; every other case is worked from the run's.
  const bool run_torque = IsNonZero(e.actions.Mz);
  auto system_of = [&](const LoadCase& c) {
    return TorsionFollowsTheLoads(e) && IsNonZero(c.loads.Mz) != run_torque ? 1 : 0;
  };
  bool second = false;
  for (const LoadCase& c : set.cases) second = second || system_of(c) == 1;

  const int count = static_cast<int>(set.cases.size());
  WriteLoadCaseDocumentStart(e, count, false, std::string(kLinearComment) + (second ? kSecondSystemComment : ""));

  UnitResponses systems[2];
  UnitTables aside;  // the unit tables of the system that is not in the workspace
  if (!FormUnitResponses(e, systems[0])) return 0;
  int in_workspace = 0;
  if (second) {
    aside.CopyFrom(w);
    TorqueChoice other(e, !run_torque);
    if (!SolveWithOtherTorsion(e) || !FormUnitResponses(e, systems[1])) return 0;
    in_workspace = 1;
  }

  for (int i = 1; i <= count; ++i) {
    const LoadCase& c = set.cases[static_cast<std::size_t>(i - 1)];
    const int s = system_of(c);
    if (s != in_workspace) {
      aside.SwapWith(w);
      in_workspace = s;
    }
    const UnitResponses& r = systems[s];
    CapLoadOfOneIncrement(c.loads, f, w.CapLoadInc);
    CapMovementAndStresses(f, g, r.flex, w);
    CombineSoilMovements(r.soil, w.CapDispInc, g.N, w.SoilDispInc);
    LoadsDownEachPile(f, g, w);
    SplitSoilDisplacements(g, w);
    ZeroTotals(w);
    AddMovementsToTotals(g, 1, w);
    AddLoadsToTotals(f, g, w);
    {
      PhaseScope reports(e.timer, Phase::kReports);
      WriteLoadCaseStart(e, i, c.name, c.loads, 1);
      WriteLoadCaseIncrement(e, 1, r.kt, r.ft);
      WriteLoadCaseEnd(e);
    }
    NotifyLoadCase(e, i, c, 1);
  }
  WriteLoadCaseDocumentEnd(e);
  LogLine(e, "Load cases written to: " + set.xml_path);
  return 1;
}

}  // namespace quellon
