// The solve of one increment: (G + D) Tractions = UBCV, N equations with one right-hand
// side per unit movement of the cap, by LAPACK's SGESV or by the engine's own Crout
// factorisation (lu_decompose.cpp).
//
// Both routes factorise GD in place. Nothing reads the system matrix after its solve:
// in a non-linear run the softening forms the next one anew from G, D and its
// decisions, and a linear run's later increments have the same system as its first,
// whose tractions (or failure) stand. When the softening has found the next system
// equal to the one just solved, the tractions in hand are already its solution.
#include "solution/solve.h"

#include <omp.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/notify.h"
#include "engine/phase_timer.h"
#include "files/number_forms.h"
#include "solution/lapack.h"
#include "solution/solution.h"

namespace quellon {

namespace {

constexpr int kUnitColumns = 6;
constexpr int kTransposeTile = 64;

// The forward sweep of the six right-hand sides, column by column of L: each b(i) takes
// its terms in rising k, each side from its own first non-zero entry.
void ForwardAll(const float* A, int n, std::size_t ld, const int* indx, float* B, std::size_t ldb) {
  int first[kUnitColumns];
  for (int m = 0; m < kUnitColumns; ++m) {
    float* b = B + static_cast<std::size_t>(m) * ldb;
    for (int i = 0; i < n; ++i) {
      const int r = indx[i] - 1;
      if (r != i) std::swap(b[r], b[i]);
    }
    first[m] = n;
    for (int i = 0; i < n; ++i) {
      if (b[i] != 0.0f) {
        first[m] = i;
        break;
      }
    }
  }
  for (int k = 0; k < n - 1; ++k) {
    const float* ak = A + static_cast<std::size_t>(k) * ld;
    for (int m = 0; m < kUnitColumns; ++m) {
      if (k < first[m]) continue;
      float* b = B + static_cast<std::size_t>(m) * ldb;
      const float bk = b[k];
      for (int i = k + 1; i < n; ++i) b[i] = b[i] - ak[i] * bk;
    }
  }
}

// Each row of U into the column below its diagonal, so that the backward sweep, which
// runs along rows, reads contiguous storage. The multipliers of L are overwritten.
void TransposeUpperIntoLower(float* A, int n, std::size_t ld) {
  const int tiles = (n + kTransposeTile - 1) / kTransposeTile;
#pragma omp parallel for schedule(dynamic) if (n >= 1024)
  for (int tj = 0; tj < tiles; ++tj) {
    for (int ti = 0; ti <= tj; ++ti) {
      const int i0 = ti * kTransposeTile, j0 = tj * kTransposeTile;
      const int i1 = std::min(n, i0 + kTransposeTile), j1 = std::min(n, j0 + kTransposeTile);
      for (int i = i0; i < i1; ++i)
        for (int j = std::max(j0, i + 1); j < j1; ++j)
          A[static_cast<std::size_t>(j) + static_cast<std::size_t>(i) * ld] =
              A[static_cast<std::size_t>(i) + static_cast<std::size_t>(j) * ld];
    }
  }
}

// The backward sweep of the six sides at once, from U stored by rows below the diagonal:
// b(i) = (b(i) - sum of u(i, k) b(k), k rising from i + 1) / u(i, i).
void BackwardAll(const float* A, int n, std::size_t ld, float* B, std::size_t ldb) {
  typedef float Float8 __attribute__((vector_size(32)));
  std::vector<Float8> x(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i)
    for (int m = 0; m < 8; ++m) x[static_cast<std::size_t>(i)][m] = m < kUnitColumns ? B[i + m * ldb] : 0.0f;
  for (int i = n - 1; i >= 0; --i) {
    const float* u = A + static_cast<std::size_t>(i) * ld;  // u[k] = U(i, k) for k > i
    Float8 s = x[static_cast<std::size_t>(i)];
    for (int k = i + 1; k < n; ++k) s = s - x[static_cast<std::size_t>(k)] * u[k];
    x[static_cast<std::size_t>(i)] = s / u[i];
  }
  for (int i = 0; i < n; ++i)
    for (int m = 0; m < kUnitColumns; ++m) B[i + m * ldb] = x[static_cast<std::size_t>(i)][m];
}

// Whether the assembly recorded where every block of G comes from, so that G t can be
// had once G is gone.
bool SoilBlocksKnown(const Workspace& w) {
  const IntegerMatrix& index = w.SoilBlockIndex;
  if (index.rows() < 1 || index.rows() != index.cols()) return false;
  for (int p = 1; p <= index.rows(); ++p)
    if (index(p, p) < 1) return false;
  return true;
}

// The failure of the engine's LU route (SGESV's own codes are never this).
constexpr int kSingular = INT_MIN;

// The outcome of the solve that GD holds the factors of: its tractions stand, or its
// failure is told again.
int RepeatOutcome(Engine& e) {
  const int failure = e.ws.system.Failure();
  if (failure == 0) return 1;
  if (failure == kSingular) {
    e.project.ErrorCode = 262;  // "Error solving matrix inversion (singular matrix)"
    return 0;
  }
  LogLine(e, "Call to SGESV failed with error code = " + FormatInt(failure));
  return 1;
}

}  // namespace

void LUSolveSixSides(float* A, int n, int lda, const int* indx, float* B, int ldb) {
  const std::size_t ld = static_cast<std::size_t>(lda), ldB = static_cast<std::size_t>(ldb);
  ForwardAll(A, n, ld, indx, B, ldB);
  TransposeUpperIntoLower(A, n, ld);
  BackwardAll(A, n, ld, B, ldB);
}

void FormSystemMatrix(Workspace& w) {
  // A linear run has no matrix of its own for the system: it takes G's storage, and G
  // is gone (the soil movements recompute its blocks).
  // (A G written by other means than the assembly keeps its storage, and the system has
  // a matrix of its own.)
  bool in_place = false;
  if (w.system.GD.empty()) {
    in_place = SoilBlocksKnown(w);
    if (in_place) {
      w.system.GD.swap(w.G);
    } else {
      w.system.GD.resize(w.G.rows(), w.G.cols());
    }
  }
  const RealMatrix& G = in_place ? w.system.GD : w.G;
  const int N = G.rows();
  const int M = w.D.rows();
  Require(N >= 1 && G.cols() == N && w.system.GD.rows() == N && w.system.GD.cols() == N && M >= 1 && w.D.cols() == N,
          "FormSystemMatrix: workspace of another model");
  // Off the pile's own rows D is zero, and the sum is g + 0, which turns a -0 of G into
  // +0 as the full sum would; when the assembly wrote the blocks between piles so, in
  // G's storage, only the piles' own blocks are left to do.
  const bool own_only = in_place && w.system.PairBlocksAsSystem();
  // Each thread forms a run of whole columns; a matrix of its own is written here for the
  // first time, so the thread asks for the pages of its run at once.
#pragma omp parallel if (N >= 2048)
  {
    const long long threads = omp_get_num_threads(), t = omp_get_thread_num();
    const int first = 1 + static_cast<int>(N * t / threads), last = static_cast<int>(N * (t + 1) / threads);
    if (!in_place && last >= first)
      PopulateForWriting(w.system.GD.col(first), static_cast<std::size_t>(last - first + 1) * static_cast<std::size_t>(N));
    for (int j = first; j <= last; ++j) {
      const float* g = G.col(j);
      const float* d = w.D.col(j);
      float* gd = w.system.GD.col(j);
      const int r0 = PileBlockStart(M, j);
      for (int i = r0; i < r0 + M; ++i) gd[i] = g[i] + d[i - r0];
      if (own_only) continue;
      for (int i = 0; i < r0; ++i) gd[i] = g[i] + 0.0f;
      for (int i = r0 + M; i < N; ++i) gd[i] = g[i] + 0.0f;
    }
  }
}

int Solve(Engine& e, int increment) {
  Workspace& w = e.ws;
  const int N = NumberOfUnknowns(e);

  IntegerVector PivotIndex;
  RealVector scale;
  RealMatrix B;
  if (!(Create1DIntegerMatrix(e, PivotIndex, N) && Create1DRealMatrix(e, scale, N) &&
        Create2DRealMatrix(e, B, N, kUnitColumns))) {
    const char* text = "Failed to create matrix in function Solve";
    SendError(e, text);
    LogLine(e, text);
    return 0;
  }
  const bool lapack = e.project.DynamicModel != 0;
  LogLine(e, lapack ? "Using MKL libraries..." : "Using LU decompostion...");

  // The system is the one solved last time: the tractions in hand are its solution.
  if (w.system.TakeUnchanged() && increment >= 2) return 1;
  // A linear run's later increment has the system of the first, whose factors are in
  // G's former storage: the first solve's outcome stands, tractions or failure.
  if (w.G.empty() && w.system.HoldsFactors()) return RepeatOutcome(e);
  Require(!w.system.Deferred(), "Solve: the softening did not form the system it was to solve");
  if (increment < 2 || w.system.HoldsFactors()) FormSystemMatrix(w);
  w.system.Factorising();

  for (int m = 1; m <= kUnitColumns; ++m) {
    const float* u = w.UBCV.col(m);
    float* bm = B.col(m);
    for (int i = 0; i < N; ++i) bm[i] = u[i];
  }

  if (lapack) {
    int info = 0;
    {
      PhaseScope factorise(e.timer, Phase::kFactorise);
      info = LapackSolve(N, kUnitColumns, w.system.GD.data(), N, PivotIndex.data(), B.data(), N);
    }
    if (info != 0) {
      w.system.MarkFailed(info);
      return RepeatOutcome(e);
    }
  } else {
    float sign = 1.0f;
    int factorised = 0;
    {
      PhaseScope factorise(e.timer, Phase::kFactorise);
      factorised = LUDecompose(w.system.GD.data(), N, N, PivotIndex.data(), scale.data(), sign);
    }
    if (!factorised) {
      w.system.MarkFailed(kSingular);
      return RepeatOutcome(e);
    }
    LUSolveSixSides(w.system.GD.data(), N, N, PivotIndex.data(), B.data(), N);
  }
  for (int m = 1; m <= kUnitColumns; ++m) {
    const float* bm = B.col(m);
    float* t = w.Tractions.col(m);
    for (int i = 0; i < N; ++i) t[i] = bm[i];
  }
  w.system.MarkSolved();
  return 1;
}

}  // namespace quellon
