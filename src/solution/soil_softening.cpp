// Softening, yield and unloading of the soil after an increment.
//
// The softened soil flexibility is the elastic G with each column divided by its
// softening factor and the released unknowns' rows and columns cleared, worked out
// afresh from the elastic G at every update, so the softening and the releases of one
// increment never pile up on those of the increments before. The sequence of one update
// is: soften every column of G; form GD = G + D; axial yield; unloading and yield in X;
// the same in Y; torsional yield. Each of these sees the matrices as the one before left
// them. The work runs in two phases:
//
//  1. Decisions. From the stresses, limits and yield flags alone: the softening factor of
//     every unknown, the yield of each direction with its flags, counters and LOG lines,
//     the stresses zeroed by unloading, and the list of operations on the matrices in
//     the order they are decided: release an unknown (its row and column of the softened
//     G and of GD cleared, 1 on the diagonal) or restore it (its row and column of GD
//     taken back to the elastic G + D, the softened G keeping its column). No decision
//     reads a matrix, and the decisions change nothing but the SoilUpdate they fill:
//     CommitSoilUpdate makes them take effect.
//  2. The system. One pass over the columns of G, D and GD applies the softening,
//     GD = G + D and all the operations at once (softened_flexibility.cpp). When the
//     decisions are taken before the increment's soil movements, the pass that forms
//     those reads G once for both.
//
// The softened G is never stored: it is a function of G and the decisions, which the
// workspace keeps from one update to the next (SoftenedSoilFlexibility), and so is GD.
// The solve factorises GD in place; when an update's decisions are those of the update
// before, the system would come out as it is, and the factors in GD are already those of
// the next system: the pass is skipped, and the solve keeps the tractions it has (unless
// GD is to be printed as a matrix). When the work vectors can't be had, GD is formed
// again from the decisions kept, as it stood before the solve.
#include "solution/soil_softening.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "engine/engine.h"
#include "engine/group_layout.h"
#include "engine/internal_error.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/number_forms.h"
#include "solution/softened_flexibility.h"
#include "solution/solution.h"
#include "solution/solve.h"

namespace quellon {

namespace {

// Rows of Yielded.
constexpr int kAxialRow = 1;
constexpr int kXRow = 2;
constexpr int kYRow = 3;
constexpr int kTorsionRow = 4;

// Notes an operation on unknown c, in the order of the decisions.
void NoteOperation(SoilUpdate& u, int c) {
  if (u.last_op_at(c) == 0) u.touched(++u.touched_count) = c;
  u.last_op_at(c) = ++u.order;
}

void Release(SoilUpdate& u, int c) {
  NoteOperation(u, c);
  u.released_at(c) = u.order;
}

void Restore(SoilUpdate& u, int c) { NoteOperation(u, c); }

// The work vectors of an update, with the yield state and the stress totals as they stand
// after the increment.
bool StartUpdate(Engine& e, int N, bool totals_added, SoilUpdate& u) {
  const Workspace& w = e.ws;
  u = SoilUpdate{};
  const bool made =
      Create1DRealMatrix(e, u.factor, N) == 1 && Create1DIntegerMatrix(e, u.released_at, N) == 1 &&
      Create1DIntegerMatrix(e, u.last_op_at, N) == 1 && Create1DIntegerMatrix(e, u.touched, N) == 1 &&
      Create1DIntegerMatrix(e, u.newly_yielded, N) == 1 && Create1DLogicalMatrix(e, u.UnloadedX, N) == 1 &&
      Create1DLogicalMatrix(e, u.UnloadedY, N) == 1 && Create2DLogicalMatrix(e, u.Yielded, 4, N) == 1 &&
      Create1DRealMatrix(e, u.StressAxial, w.StressAxial.size()) == 1 &&
      Create1DRealMatrix(e, u.StressX, w.StressX.size()) == 1 &&
      Create1DRealMatrix(e, u.StressY, w.StressY.size()) == 1 &&
      Create1DRealMatrix(e, u.StressTorsion, w.StressTorsion.size()) == 1;
  if (!made) {
    u = SoilUpdate{};
    return false;
  }
  std::copy(w.Yielded.data(), w.Yielded.data() + w.Yielded.count(), u.Yielded.data());
  u.YieldCountAxial = w.YieldCountAxial;
  u.YieldCountX = w.YieldCountX;
  u.YieldCountY = w.YieldCountY;
  u.YieldCountTorsion = w.YieldCountTorsion;
  // The totals as AddMovementsToTotals leaves them, over the same rows.
  const int rows = totals_added ? 0 : LayoutOf(e).AxialRows();
  const RealVector* totals[] = {&w.StressAxial, &w.StressX, &w.StressY, &w.StressTorsion};
  const RealVector* increments[] = {&w.StressAxialInc, &w.StressXInc, &w.StressYInc, &w.StressTorsionInc};
  RealVector* after[] = {&u.StressAxial, &u.StressX, &u.StressY, &u.StressTorsion};
  for (int k = 0; k < 4; ++k) {
    const float* t = totals[k]->data();
    std::copy(t, t + totals[k]->size(), after[k]->data());
    float* a = after[k]->data();
    const float* d = increments[k]->data();
    for (int r = 0; r < rows; ++r) a[r] = t[r] + d[r];
  }
  return true;
}

// The softening factors: every unknown's column is divided by its factor when the
// matrices are rebuilt. Worked out from the stresses before unloading sets any to zero.
void SofteningFactors(const Engine& e, const GroupLayout& g, SoilUpdate& u) {
  const Workspace& w = e.ws;
  const Project& pr = e.project;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n + 1; ++k) {
      const int r = g.AxialRow(p, k);
      const float R = k == g.n + 1 ? pr.Rb : pr.Rs;
      u.factor(g.AxialUnknown(p, k)) = SofteningFactor(u.StressAxial(r), w.LimitAxial(r), R);
    }
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      u.factor(g.XUnknown(p, k)) = SofteningFactor(u.StressX(r), w.LimitX(r), pr.Rl);
      u.factor(g.YUnknown(p, k)) = SofteningFactor(u.StressY(r), w.LimitY(r), pr.Rl);
      u.factor(g.TorsionUnknown(p, k)) = SofteningFactor(u.StressTorsion(r), w.LimitTorsion(r), pr.Rt);
    }
  }
}

// Axial yield. An element beyond its limit, or a base in tension, is released with the
// torsional unknown of the same shaft element, since both act on the same interface.
// The flag, once set, stays: the axial count is what ends the run.
void AxialYield(const Engine& e, const GroupLayout& g, SoilUpdate& u) {
  const Workspace& w = e.ws;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n + 1; ++k) {
      const int r = g.AxialRow(p, k);
      const float v = u.StressAxial(r);
      const bool base = k == g.n + 1;
      if (!(std::fabs(v) > std::fabs(w.LimitAxial(r)) || (base && v < 0.0f))) continue;
      if (u.Yielded(kAxialRow, r) == 0) {
        u.newly_yielded(++u.newly_yielded_count) = r;
        ++u.YieldCountAxial;
        u.Yielded(kAxialRow, r) = 1;
      }
      Release(u, g.AxialUnknown(p, k));
      if (!base) Release(u, g.TorsionUnknown(p, k));
    }
  }
}

// Unloading in X or Y. A yielded element whose neighbours move the other way (the sum S of
// their stress increments has the opposite sign to its stress) is unloading: its stress
// total starts again from 0 and it takes back its elastic stiffness in the system for
// the next solve. S is the sum for the last element that had two neighbours; the first
// and last elements of a pile, and the first direction's leftover in the second, carry
// it on. Needs the allowance and a pile of 16 elements or more.
void UnloadingInDirection(const Engine& e, const GroupLayout& g, RealVector& stress, const RealVector& increment,
                          int yield_row, int (GroupLayout::*unknown)(int, int) const, float& S, LogicalVector& unloading,
                          SoilUpdate& u) {
  if (!(e.project.ElasticUnloading != 0 && g.n > 15)) return;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      if (u.Yielded(yield_row, r) == 0) continue;
      if (1 < k && k < g.n) S = increment(r - 1) + increment(r + 1);
      if (S * stress(r) < 0.0f) {
        unloading(r) = 1;
        stress(r) = 0.0f;
        Restore(u, (g.*unknown)(p, k));
      }
    }
  }
}

// Yield in X or Y. Beyond the limit: yielded and released. Back at or below it, or
// unloading: the flag clears and the element takes part again, softened. A stress that
// is neither (not a number) is taken as beyond. The counter counts every time an element
// becomes yielded and never goes down.
void TransverseYield(const GroupLayout& g, const RealVector& stress, const RealVector& limit,
                     const LogicalVector& unloading, int yield_row, int (GroupLayout::*unknown)(int, int) const,
                     int& count, SoilUpdate& u) {
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      const float x = std::fabs(stress(r));
      const float y = std::fabs(limit(r));
      if (x < y || Same(x, y) || unloading(r) != 0) {
        u.Yielded(yield_row, r) = 0;
        continue;
      }
      if (u.Yielded(yield_row, r) == 0) {
        ++count;
        u.Yielded(yield_row, r) = 1;
      }
      Release(u, (g.*unknown)(p, k));
    }
  }
}

// Torsional yield: only a stress strictly beyond the limit yields, and it releases the
// axial unknown of the same element too.
void TorsionalYield(const Engine& e, const GroupLayout& g, SoilUpdate& u) {
  const Workspace& w = e.ws;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      const float x = std::fabs(u.StressTorsion(r));
      const float y = std::fabs(w.LimitTorsion(r));
      if (x < y || Same(x, y)) {
        u.Yielded(kTorsionRow, r) = 0;
      } else if (x > y) {
        if (u.Yielded(kTorsionRow, r) == 0) {
          ++u.YieldCountTorsion;
          u.Yielded(kTorsionRow, r) = 1;
        }
        Release(u, g.TorsionUnknown(p, k));
        Release(u, g.AxialUnknown(p, k));
      }
    }
  }
}

// Whether two sets of decisions give the same matrices: the same releases and restores
// in the same order, and the same factor for every column that isn't released.
bool SameDecisions(const SoilUpdate& u, const Workspace& w, int N) {
  for (int c = 1; c <= N; ++c) {
    if (u.released_at(c) != w.SoftReleasedAt(c) || u.last_op_at(c) != w.SoftChangedAt(c)) return false;
    if (u.released_at(c) == 0 &&
        std::bit_cast<std::uint32_t>(u.factor(c)) != std::bit_cast<std::uint32_t>(w.SoftFactor(c)))
      return false;
  }
  return true;
}

void CheckWorkspace(const Engine& e, const GroupLayout& g) {
  const Workspace& w = e.ws;
  const int N = g.N;
  Require(!(N < 1 || w.G.rows() != N || w.G.cols() != N || w.D.rows() != g.M ||
      w.D.cols() != N || w.system.GD.rows() != N || w.system.GD.cols() != N || w.Yielded.rows() != 4 || w.Yielded.cols() != N ||
      w.StressAxial.size() < N || w.StressX.size() < N || w.LimitAxial.size() < N || w.LimitX.size() < N ||
      w.SoftFactor.size() != N || w.SoftReleasedAt.size() != N || w.SoftChangedAt.size() != N),
          "UpdateSoilFlexibility: workspace of another model");
}

}  // namespace

float SofteningFactor(float stress, float limit, float R) {
  if (R == 0.0f) return 1.0f;
  const float s = std::fabs(stress);
  const float l = std::fabs(limit);
  float ratio;
  if (l < kZero) {
    ratio = s < kZero ? R : 1.0f;  // no strength: at the limit, or beyond it
  } else {
    ratio = s * R / l;
  }
  if (!(ratio < 1.0f)) return kMinimumSofteningFactor;
  const float f = (1.0f - ratio) * (1.0f - ratio);
  return f < kMinimumSofteningFactor ? kMinimumSofteningFactor : f;
}

bool DecideSoilUpdate(Engine& e, int increment, bool totals_added, SoilUpdate& u) {
  const GroupLayout g = LayoutOf(e);
  CheckWorkspace(e, g);
  const int N = g.N;
  if (!StartUpdate(e, N, totals_added, u)) return false;
  const Workspace& w = e.ws;
  SofteningFactors(e, g, u);
  AxialYield(e, g, u);
  float S = 0.0f;
  UnloadingInDirection(e, g, u.StressX, w.StressXInc, kXRow, &GroupLayout::XUnknown, S, u.UnloadedX, u);
  TransverseYield(g, u.StressX, w.LimitX, u.UnloadedX, kXRow, &GroupLayout::XUnknown, u.YieldCountX, u);
  UnloadingInDirection(e, g, u.StressY, w.StressYInc, kYRow, &GroupLayout::YUnknown, S, u.UnloadedY, u);
  TransverseYield(g, u.StressY, w.LimitY, u.UnloadedY, kYRow, &GroupLayout::YUnknown, u.YieldCountY, u);
  TorsionalYield(e, g, u);
  // The passes find the touched rows of a band by search.
  std::sort(u.touched.data(), u.touched.data() + u.touched_count);
  // The same decisions as last time leave G as it is and GD as the system just solved,
  // whose factors GD holds.
  u.unchanged = increment >= 2 && w.system.Planned() && w.system.Solved() && SameDecisions(u, w, N);
  u.decided = true;
  return true;
}

SofteningDecisions DecisionsOf(const SoilUpdate& u) {
  return {u.factor.data(), u.released_at.data(), u.last_op_at.data(), u.touched.data(), u.touched_count};
}

void KeepDecisions(Workspace& w, const SoilUpdate& u) {
  const int N = u.factor.size();
  std::copy(u.factor.data(), u.factor.data() + N, w.SoftFactor.data());
  std::copy(u.released_at.data(), u.released_at.data() + N, w.SoftReleasedAt.data());
  std::copy(u.last_op_at.data(), u.last_op_at.data() + N, w.SoftChangedAt.data());
}

void CommitSoilUpdate(Engine& e, SoilUpdate& u) {
  Require(u.decided, "CommitSoilUpdate: no decisions to commit");
  Workspace& w = e.ws;
  for (int k = 1; k <= u.newly_yielded_count; ++k) LogLine(e, "Element " + FormatInt(u.newly_yielded(k)) + " yielded");
  std::copy(u.Yielded.data(), u.Yielded.data() + u.Yielded.count(), w.Yielded.data());
  w.YieldCountAxial = u.YieldCountAxial;
  w.YieldCountX = u.YieldCountX;
  w.YieldCountY = u.YieldCountY;
  w.YieldCountTorsion = u.YieldCountTorsion;
  for (int r = 1; r <= u.UnloadedX.size(); ++r) {
    if (u.UnloadedX(r) != 0) w.StressX(r) = 0.0f;
    if (u.UnloadedY(r) != 0) w.StressY(r) = 0.0f;
  }
  if (u.unchanged) {
    w.system.MarkUnchanged();
  } else if (!u.formed && !u.system_needed) {
    KeepDecisions(w, u);
    w.system.MatrixDeferred();
  } else if (!u.formed) {
    RebuildSystem(w, DecisionsOf(u));
    KeepDecisions(w, u);
    w.system.MatrixFormed(true);
  }
  u.decided = false;
}

void UpdateSoilFlexibility(Engine& e, int increment, SoilUpdate* decided) {
  if (decided != nullptr && decided->decided) {
    CommitSoilUpdate(e, *decided);
    return;
  }
  SoilUpdate u;
  if (DecideSoilUpdate(e, increment, true, u)) {
    CommitSoilUpdate(e, u);
    return;
  }
  // No yield can be tested; the softened G and GD stay as they were before the solve,
  // which took GD for its factors: it is formed again.
  Workspace& w = e.ws;
  if (w.system.HoldsFactors()) {
    if (w.system.Planned()) {
      RebuildKeptSystem(w);
    } else {
      FormSystemMatrix(w);
    }
    w.system.MatrixFormed(w.system.Planned());
  }
}

void SoftenedSoilMovements(Workspace& w, const float* t, float* out, SoilUpdate* next) {
  if (next == nullptr || !next->decided || next->unchanged || next->formed || !next->system_needed) {
    SoftenedFlexibilityTimes(w, t, out, nullptr);
    return;
  }
  const SofteningDecisions p = DecisionsOf(*next);
  SoftenedFlexibilityTimes(w, t, out, &p);
  KeepDecisions(w, *next);
  w.system.MatrixFormed(true);
  next->formed = true;
}

void FormUnchangedSystem(Workspace& w) {
  if (!w.system.Unchanged()) return;
  // The kept decisions are those of this update.
  RebuildKeptSystem(w);
  w.system.MatrixFormed(true);
}

}  // namespace quellon
