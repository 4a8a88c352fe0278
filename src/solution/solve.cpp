// The solve of one increment: (G + D) Tractions = UBCV, N equations with one right-hand
// side per unit movement of the cap, by LAPACK's SGESV or by the engine's own Crout
// factorisation. The system matrix GD is never factorised itself: both routes work on
// a copy, so that the softening of the next increment starts from GD as it stands.
#include "solution/solve.h"

#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/phase_timer.h"
#include "files/number_forms.h"
#include "solution/lapack.h"
#include "solution/solution.h"

namespace quellon {

namespace {

// Columns factorised together. The updates from the columns to the left of a panel are
// applied to all its columns in one sweep over each earlier column, which reads the
// factors once per panel rather than once per column; every element still receives its
// updates one by one in the order of the earlier columns, so the result is that of the
// column-by-column method bit for bit.
constexpr int kPanel = 16;
static_assert(kPanel % 4 == 0, "the columns left of a panel are taken four at a time");

}  // namespace

int LUDecompose(float* A, int n, int lda, int* indx, float* scale, float& sign) {
  // Indices from 0 below: col(j)[i] is a(i + 1, j + 1).
  const std::size_t ld = static_cast<std::size_t>(lda);
  auto col = [A, ld](int j) { return A + static_cast<std::size_t>(j) * ld; };

  // Implicit scaling: each row is weighed by its largest element.
  for (int i = 0; i < n; ++i) scale[i] = 0.0f;
  for (int j = 0; j < n; ++j) {
    const float* aj = col(j);
    for (int i = 0; i < n; ++i) {
      const float t = std::fabs(aj[i]);
      if (t > scale[i]) scale[i] = t;
    }
  }
  for (int i = 0; i < n; ++i) {
    if (scale[i] < 1e-20f) return 0;  // a row of zeros
    scale[i] = 1.0f / scale[i];
  }
  sign = 1.0f;

  for (int j0 = 0; j0 < n; j0 += kPanel) {
    const int j1 = j0 + kPanel < n ? j0 + kPanel : n;  // the panel is columns j0 to j1 - 1

    // Updates from the columns left of the panel: a(i, j) -= a(i, k) a(k, j), for k in
    // increasing order, over the rows below k. a(k, j) is final when column k is reached.
    // Four columns k are taken at a time: the rows k + 1 to k + 3 are first brought up
    // to date within the four, then every row below takes the four terms in turn.
    for (int k = 0; k < j0; k += 4) {
      const float* c0 = col(k);
      const float* c1 = col(k + 1);
      const float* c2 = col(k + 2);
      const float* c3 = col(k + 3);
      for (int j = j0; j < j1; ++j) {
        float* aj = col(j);
        const float u0 = aj[k];
        aj[k + 1] = aj[k + 1] - c0[k + 1] * u0;
        const float u1 = aj[k + 1];
        aj[k + 2] = (aj[k + 2] - c0[k + 2] * u0) - c1[k + 2] * u1;
        const float u2 = aj[k + 2];
        aj[k + 3] = ((aj[k + 3] - c0[k + 3] * u0) - c1[k + 3] * u1) - c2[k + 3] * u2;
        const float u3 = aj[k + 3];
        for (int i = k + 4; i < n; ++i) aj[i] = (((aj[i] - c0[i] * u0) - c1[i] * u1) - c2[i] * u2) - c3[i] * u3;
      }
    }

    for (int j = j0; j < j1; ++j) {
      float* aj = col(j);
      // Updates from the panel's own columns left of j.
      for (int k = j0; k < j; ++k) {
        const float* ak = col(k);
        const float akj = aj[k];
        for (int i = k + 1; i < n; ++i) aj[i] = aj[i] - ak[i] * akj;
      }

      // Pivot: the largest scaled element on or below the diagonal; of equal merits the
      // last row wins.
      float best = 0.0f;
      int imax = j;
      for (int i = j; i < n; ++i) {
        const float merit = scale[i] * std::fabs(aj[i]);
        if (merit >= best) {
          best = merit;
          imax = i;
        }
      }
      if (imax != j) {
        for (int c = 0; c < n; ++c) {
          float* ac = col(c);
          std::swap(ac[imax], ac[j]);
        }
        sign = -sign;
        scale[imax] = scale[j];
      }
      indx[j] = imax + 1;
      // A vanishing pivot is replaced, not refused: only an all-zero row is fatal.
      if (std::fabs(aj[j]) < 1e-20f) aj[j] = 1e-20f;
      if (j != n - 1) {
        const float dum = 1.0f / aj[j];
        for (int i = j + 1; i < n; ++i) aj[i] = aj[i] * dum;
      }
    }
  }
  return 1;
}

void LUBackSubstitute(const float* A, int n, int lda, const int* indx, float* b) {
  const std::size_t ld = static_cast<std::size_t>(lda);
  auto at = [A, ld](int i, int k) { return A[static_cast<std::size_t>(i - 1) + static_cast<std::size_t>(k - 1) * ld]; };

  // The row interchanges of the factorisation, in their order; row i is final after
  // interchange i, since later ones touch only rows below it.
  for (int i = 1; i <= n; ++i) {
    const int r = indx[i - 1];
    if (r != i) std::swap(b[r - 1], b[i - 1]);
  }
  // Forward: b(i) -= a(i, k) b(k), k rising from the first non-zero entry. Taken column
  // by column, each b(i) still receives its terms in rising k.
  int first = 0;
  for (int i = 1; i <= n && first == 0; ++i)
    if (b[i - 1] != 0.0f) first = i;
  if (first != 0) {
    for (int k = first; k < n; ++k) {
      const float bk = b[k - 1];
      const float* ak = A + static_cast<std::size_t>(k - 1) * ld;
      for (int i = k + 1; i <= n; ++i) b[i - 1] = b[i - 1] - ak[i - 1] * bk;
    }
  }
  // Backward: each b(i) takes its terms in rising k from i + 1, then the division.
  for (int i = n; i >= 1; --i) {
    float s = b[i - 1];
    for (int k = i + 1; k <= n; ++k) s = s - at(i, k) * b[k - 1];
    b[i - 1] = s / at(i, i);
  }
}

int Solve(Engine& e, int increment) {
  Workspace& w = e.ws;
  const int N = NumberOfUnknowns(e);
  const std::size_t NN = static_cast<std::size_t>(N) * static_cast<std::size_t>(N);

  IntegerVector PivotIndex;
  RealVector b, scale;
  RealMatrix B, A;
  if (!(Create1DIntegerMatrix(e, PivotIndex, N) && Create1DRealMatrix(e, b, N) && Create1DRealMatrix(e, scale, N) &&
        Create2DRealMatrix(e, B, N, 6) && Create2DRealMatrix(e, A, N, N))) {
    const char* text = "Failed to create matrix in function Solve";
    SendError(e, text);
    LogLine(e, text);
    return 0;
  }

  // From the second increment on GD stands as the softening left it.
  if (increment < 2) {
    float* gd = w.GD.data();
    const float* g = w.G.data();
    const float* d = w.D.data();
    for (std::size_t i = 0; i < NN; ++i) gd[i] = g[i] + d[i];
  }
  {
    const float* gd = w.GD.data();
    float* a = A.data();
    for (std::size_t i = 0; i < NN; ++i) a[i] = gd[i];
  }

  if (e.project.DynamicModel) {
    LogLine(e, "Using MKL libraries...");
    for (int m = 1; m <= 6; ++m) {
      const float* u = w.UBCV.col(m);
      float* bm = B.col(m);
      for (int i = 0; i < N; ++i) bm[i] = u[i];
    }
    int info = 0;
    {
      PhaseScope factorise(e.timer, Phase::kFactorise);
      info = LapackSolve(N, 6, A.data(), N, PivotIndex.data(), B.data(), N);
    }
    if (info == 0) {
      for (int m = 1; m <= 6; ++m) {
        const float* bm = B.col(m);
        float* t = w.Tractions.col(m);
        for (int i = 0; i < N; ++i) t[i] = bm[i];
      }
    } else {
      LogLine(e, "Call to SGESV failed with error code = " + FormatInt(info));
    }
    return 1;
  }

  LogLine(e, "Using LU decompostion...");
  float sign = 1.0f;
  int factorised = 0;
  {
    PhaseScope factorise(e.timer, Phase::kFactorise);
    factorised = LUDecompose(A.data(), N, N, PivotIndex.data(), scale.data(), sign);
  }
  if (!factorised) {
    e.project.ErrorCode = 262;  // "Error solving matrix inversion (singular matrix)"
    return 0;
  }
  for (int m = 1; m <= 6; ++m) {
    const float* u = w.UBCV.col(m);
    for (int i = 0; i < N; ++i) b.data()[i] = u[i];
    LUBackSubstitute(A.data(), N, N, PivotIndex.data(), b.data());
    float* t = w.Tractions.col(m);
    for (int i = 0; i < N; ++i) t[i] = b.data()[i];
  }
  return 1;
}

}  // namespace quellon
