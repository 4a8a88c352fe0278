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
//     reads a matrix.
//  2. The system. One pass over the columns of G, D and GD applies the softening,
//     GD = G + D and all the operations at once. An entry (i, j) of GD is decided by the
//     later of the last operation on unknown i and on unknown j, which is what applying
//     the operations one after the other in their order leaves.
//
// So the work is one streaming pass over the N by N matrices, however many unknowns are
// released, instead of a strided sweep along a row of two matrices for each of them. The
// softened G is never stored: it is a function of G and the decisions, which the
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
#include "solution/solution.h"
#include "solution/solve.h"

namespace quellon {

namespace {

// Rows of Yielded.
constexpr int kAxialRow = 1;
constexpr int kXRow = 2;
constexpr int kYRow = 3;
constexpr int kTorsionRow = 4;

// The decisions of one update that concern the matrices.
struct UpdatePlan {
  RealVector factor;          // softening factor of each unknown's column
  IntegerVector released_at;  // order of the unknown's last release, 0 if none
  IntegerVector last_op_at;   // order of its last release or restore, 0 if none
  IntegerVector touched;      // the unknowns with an operation, 1 to touched_count
  int touched_count = 0;
  int order = 0;
  LogicalVector Unloading;  // elements unloading in the direction in hand

  bool Create(Engine& e, int N) {
    return Create1DLogicalMatrix(e, Unloading, N) == 1 && Create1DRealMatrix(e, factor, N) == 1 &&
           Create1DIntegerMatrix(e, released_at, N) == 1 && Create1DIntegerMatrix(e, last_op_at, N) == 1 &&
           Create1DIntegerMatrix(e, touched, N) == 1;
  }
  void Release(int c) {
    Note(c);
    released_at(c) = order;
  }
  void Restore(int c) { Note(c); }

 private:
  void Note(int c) {
    if (last_op_at(c) == 0) touched(++touched_count) = c;
    last_op_at(c) = ++order;
  }
};

// The softening factors: every unknown's column is divided by its factor when the
// matrices are rebuilt. Worked out from the stresses before unloading sets any to zero.
void SofteningFactors(const Engine& e, const GroupLayout& g, UpdatePlan& plan) {
  const Workspace& w = e.ws;
  const Project& pr = e.project;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n + 1; ++k) {
      const int r = g.AxialRow(p, k);
      const float R = k == g.n + 1 ? pr.Rb : pr.Rs;
      plan.factor(g.AxialUnknown(p, k)) = SofteningFactor(w.StressAxial(r), w.LimitAxial(r), R);
    }
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      plan.factor(g.XUnknown(p, k)) = SofteningFactor(w.StressX(r), w.LimitX(r), pr.Rl);
      plan.factor(g.YUnknown(p, k)) = SofteningFactor(w.StressY(r), w.LimitY(r), pr.Rl);
      plan.factor(g.TorsionUnknown(p, k)) = SofteningFactor(w.StressTorsion(r), w.LimitTorsion(r), pr.Rt);
    }
  }
}

// Axial yield. An element beyond its limit, or a base in tension, is released with the
// torsional unknown of the same shaft element, since both act on the same interface.
// The flag, once set, stays: the axial count is what ends the run.
void AxialYield(Engine& e, const GroupLayout& g, UpdatePlan& plan) {
  Workspace& w = e.ws;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n + 1; ++k) {
      const int r = g.AxialRow(p, k);
      const float v = w.StressAxial(r);
      const bool base = k == g.n + 1;
      if (!(std::fabs(v) > std::fabs(w.LimitAxial(r)) || (base && v < 0.0f))) continue;
      if (w.Yielded(kAxialRow, r) == 0) {
        LogLine(e, "Element " + FormatInt(r) + " yielded");
        ++w.YieldCountAxial;
        w.Yielded(kAxialRow, r) = 1;
      }
      plan.Release(g.AxialUnknown(p, k));
      if (!base) plan.Release(g.TorsionUnknown(p, k));
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
                          int yield_row, int (GroupLayout::*unknown)(int, int) const, float& S, UpdatePlan& plan) {
  const Workspace& w = e.ws;
  plan.Unloading.fill(0);
  if (!(e.project.ElasticUnloading != 0 && g.n > 15)) return;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      if (w.Yielded(yield_row, r) == 0) continue;
      if (1 < k && k < g.n) S = increment(r - 1) + increment(r + 1);
      if (S * stress(r) < 0.0f) {
        plan.Unloading(r) = 1;
        stress(r) = 0.0f;
        plan.Restore((g.*unknown)(p, k));
      }
    }
  }
}

// Yield in X or Y. Beyond the limit: yielded and released. Back at or below it, or
// unloading: the flag clears and the element takes part again, softened. A stress that
// is neither (not a number) is taken as beyond. The counter counts every time an element
// becomes yielded and never goes down.
void TransverseYield(Engine& e, const GroupLayout& g, const RealVector& stress, const RealVector& limit, int yield_row,
                     int (GroupLayout::*unknown)(int, int) const, int& count, UpdatePlan& plan) {
  Workspace& w = e.ws;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      const float x = std::fabs(stress(r));
      const float y = std::fabs(limit(r));
      if (x < y || Same(x, y) || plan.Unloading(r) != 0) {
        w.Yielded(yield_row, r) = 0;
        continue;
      }
      if (w.Yielded(yield_row, r) == 0) {
        ++count;
        w.Yielded(yield_row, r) = 1;
      }
      plan.Release((g.*unknown)(p, k));
    }
  }
}

// Torsional yield: only a stress strictly beyond the limit yields, and it releases the
// axial unknown of the same element too.
void TorsionalYield(Engine& e, const GroupLayout& g, UpdatePlan& plan) {
  Workspace& w = e.ws;
  for (int p = 1; p <= g.P; ++p) {
    for (int k = 1; k <= g.n; ++k) {
      const int r = g.ElementRow(p, k);
      const float x = std::fabs(w.StressTorsion(r));
      const float y = std::fabs(w.LimitTorsion(r));
      if (x < y || Same(x, y)) {
        w.Yielded(kTorsionRow, r) = 0;
      } else if (x > y) {
        if (w.Yielded(kTorsionRow, r) == 0) {
          ++w.YieldCountTorsion;
          w.Yielded(kTorsionRow, r) = 1;
        }
        plan.Release(g.TorsionUnknown(p, k));
        plan.Release(g.AxialUnknown(p, k));
      }
    }
  }
}

// The decisions as the matrix pass reads them.
struct Decisions {
  const float* factor;      // [c - 1]
  const int* released_at;   // [c - 1]
  const int* last_op_at;    // [c - 1]
  const int* touched;       // the unknowns with an operation, or null: then every row is
  int touched_count;        // taken one by one
};

// Entry (i, j) of GD once all operations are applied, from the elastic g0, the pile's
// d and the softened g_soft of that entry (1-based unknowns).
inline float SystemEntry(const Decisions& p, int i, int j, float g0, float d, float g_soft) {
  const int rel_i = p.released_at[i - 1], rel_j = p.released_at[j - 1];
  const int last = std::max(p.last_op_at[i - 1], p.last_op_at[j - 1]);
  if (last == 0) return g_soft + d;
  if (last == rel_i || last == rel_j) return i == j ? 1.0f : 0.0f;
  return g0 + d;
}

// The softening and GD = G + D, with every release and restore, in one pass over the
// columns of the elastic G. D has entries only in the rows of the column's own pile;
// elsewhere the sum takes 0.
void RebuildSystem(Workspace& w, int N, const Decisions& p) {
  const int M = w.D.rows();
#pragma omp parallel for schedule(static) if (N >= 2048)
  for (int j = 1; j <= N; ++j) {
    const float* g0 = w.G.col(j);
    const float* dj = w.D.col(j);
    float* gd = w.system.GD.col(j);
    const int r0 = PileBlockStart(M, j);
    auto d = [dj, r0, M](int i) { return i >= r0 && i < r0 + M ? dj[i - r0] : 0.0f; };  // row i from 0
    const float f = p.factor[j - 1];
    if (p.last_op_at[j - 1] == 0 && p.touched != nullptr) {
      // An untouched column: softened, summed, then only the rows of touched unknowns.
      for (int i = 0; i < r0; ++i) gd[i] = g0[i] / f + 0.0f;
      for (int i = r0; i < r0 + M; ++i) gd[i] = g0[i] / f + dj[i - r0];
      for (int i = r0 + M; i < N; ++i) gd[i] = g0[i] / f + 0.0f;
      for (int t = 0; t < p.touched_count; ++t) {
        const int i = p.touched[t];
        gd[i - 1] = SystemEntry(p, i, j, g0[i - 1], d(i - 1), g0[i - 1] / f);
      }
    } else {
      for (int i = 1; i <= N; ++i) gd[i - 1] = SystemEntry(p, i, j, g0[i - 1], d(i - 1), g0[i - 1] / f);
    }
  }
}

// Whether two sets of decisions give the same matrices: the same releases and restores
// in the same order, and the same factor for every column that isn't released.
bool SameDecisions(const UpdatePlan& plan, const Workspace& w, int N) {
  for (int c = 1; c <= N; ++c) {
    if (plan.released_at(c) != w.SoftReleasedAt(c) || plan.last_op_at(c) != w.SoftChangedAt(c)) return false;
    if (plan.released_at(c) == 0 &&
        std::bit_cast<std::uint32_t>(plan.factor(c)) != std::bit_cast<std::uint32_t>(w.SoftFactor(c)))
      return false;
  }
  return true;
}

Decisions DecisionsOf(const UpdatePlan& plan) {
  return {plan.factor.data(), plan.released_at.data(), plan.last_op_at.data(), plan.touched.data(),
          plan.touched_count};
}

Decisions KeptDecisions(const Workspace& w) {
  return {w.SoftFactor.data(), w.SoftReleasedAt.data(), w.SoftChangedAt.data(), nullptr, 0};
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

void UpdateSoilFlexibility(Engine& e, int increment) {
  Workspace& w = e.ws;
  const GroupLayout g = LayoutOf(e);
  const int N = g.N;
  Require(!(N < 1 || w.G.rows() != N || w.G.cols() != N || w.D.rows() != g.M ||
      w.D.cols() != N || w.system.GD.rows() != N || w.system.GD.cols() != N || w.Yielded.rows() != 4 || w.Yielded.cols() != N ||
      w.StressAxial.size() < N || w.StressX.size() < N || w.LimitAxial.size() < N || w.LimitX.size() < N ||
      w.SoftFactor.size() != N || w.SoftReleasedAt.size() != N || w.SoftChangedAt.size() != N),
          "UpdateSoilFlexibility: workspace of another model");

  UpdatePlan plan;
  if (!plan.Create(e, N)) {
    // No yield can be tested; the softened G and GD stay as they were before the solve,
    // which took GD for its factors: it is formed again.
    if (w.system.HoldsFactors()) {
      if (w.system.Planned()) {
        RebuildSystem(w, N, KeptDecisions(w));
      } else {
        FormSystemMatrix(w);
      }
      w.system.MatrixFormed(w.system.Planned());
    }
    return;
  }

  SofteningFactors(e, g, plan);
  AxialYield(e, g, plan);
  float S = 0.0f;
  UnloadingInDirection(e, g, w.StressX, w.StressXInc, kXRow, &GroupLayout::XUnknown, S, plan);
  TransverseYield(e, g, w.StressX, w.LimitX, kXRow, &GroupLayout::XUnknown, w.YieldCountX, plan);
  UnloadingInDirection(e, g, w.StressY, w.StressYInc, kYRow, &GroupLayout::YUnknown, S, plan);
  TransverseYield(e, g, w.StressY, w.LimitY, kYRow, &GroupLayout::YUnknown, w.YieldCountY, plan);
  TorsionalYield(e, g, plan);

  // The same decisions as last time leave G as it is and GD as the system just solved,
  // whose factors GD holds: nothing to do.
  if (increment >= 2 && w.system.Planned() && w.system.Solved() && SameDecisions(plan, w, N)) {
    w.system.MarkUnchanged();
    return;
  }
  RebuildSystem(w, N, DecisionsOf(plan));
  std::copy(plan.factor.data(), plan.factor.data() + N, w.SoftFactor.data());
  std::copy(plan.released_at.data(), plan.released_at.data() + N, w.SoftReleasedAt.data());
  std::copy(plan.last_op_at.data(), plan.last_op_at.data() + N, w.SoftChangedAt.data());
  w.system.MatrixFormed(true);
}

void FormUnchangedSystem(Workspace& w) {
  if (!w.system.Unchanged()) return;
  // The kept decisions are those of this update.
  RebuildSystem(w, w.G.rows(), KeptDecisions(w));
  w.system.MatrixFormed(true);
}

}  // namespace quellon
