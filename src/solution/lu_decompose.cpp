// Crout's factorisation with implicit partial pivoting, blocked.
//
// The column-by-column method brings every entry up to date with the terms a(i, k) a(k, j),
// k rising, then picks the pivot of column j among the rows at and below j and scales the
// column below it. Here the same terms reach each entry in the same order, but in blocks:
//
//   - The columns go in panels of kPanel. Within a panel, sub-panels of kSub columns are
//     factorised one column at a time (updates from the sub-panel's own earlier columns,
//     pivot, interchange, scaling), and each sub-panel then updates the panel's later
//     columns at once, with the block update of product_update.h.
//   - Once a panel is factorised, its interchanges are applied to the columns either side
//     of it, its rows of the later columns are brought up to date (the unit lower
//     triangle of the panel applied by sub-panels), and the whole remaining block takes
//     the panel's terms in one block update, shared among the threads.
//
// An entry receives its terms from earlier panels first and from later ones after, each
// panel's in rising k: the order of the column-by-column method. Interchanges move whole
// rows, and a row keeps its partly updated entries and its multipliers together whenever
// it moves, so delaying them to the end of a panel changes no value. The factors, the
// interchanges and the sign are those of the column-by-column method bit for bit.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "engine/utilities.h"
#include "solution/product_update.h"
#include "solution/solve.h"

namespace quellon {

namespace {

constexpr int kPanel = 256;
constexpr int kSub = 32;
constexpr double kParallelWork = 4.0e6;  // entries touched below which one thread works

struct Matrix {
  float* a;
  std::size_t ld;
  float* col(int j) const { return a + static_cast<std::size_t>(j) * ld; }
};

// Columns s0 to s1 - 1, one at a time, with the rows from s0 down; interchanges are made
// within these columns only and recorded in indx.
void FactorColumns(const Matrix& m, int n, int s0, int s1, int* indx, float* scale, float& sign) {
  for (int j = s0; j < s1; ++j) {
    float* aj = m.col(j);
    // Terms from the earlier columns of the sub-panel, k rising; a(k, j) is final when
    // its turn comes, since row k took its own terms in the turns before.
    for (int k = s0; k < j; ++k) {
      const float* ak = m.col(k);
      const float akj = aj[k];
      for (int i = k + 1; i < n; ++i) aj[i] = aj[i] - ak[i] * akj;
    }
    // Pivot: the largest scaled entry on or below the diagonal; of equal merits the last
    // row wins.
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
      for (int c = s0; c < s1; ++c) std::swap(m.col(c)[imax], m.col(c)[j]);
      sign = -sign;
      scale[imax] = scale[j];
    }
    indx[j] = imax + 1;
    // A vanishing pivot is replaced, not refused: only an all-zero row is fatal.
    if (IsZero(aj[j])) aj[j] = kZero;
    if (j != n - 1) {
      const float dum = 1.0f / aj[j];
      for (int i = j + 1; i < n; ++i) aj[i] = aj[i] * dum;
    }
  }
}

// The interchanges of pivots j0 to j1 - 1, in their order, on columns c0 to c1 - 1.
void Interchange(const Matrix& m, int j0, int j1, const int* indx, int c0, int c1) {
  const bool parallel = static_cast<double>(c1 - c0) * (j1 - j0) >= kParallelWork;
#pragma omp parallel for schedule(static) if (parallel)
  for (int c = c0; c < c1; ++c) {
    float* ac = m.col(c);
    for (int j = j0; j < j1; ++j) {
      const int r = indx[j] - 1;
      if (r != j) std::swap(ac[r], ac[j]);
    }
  }
}

// Rows s0 to s1 - 1 of columns c0 to c1 - 1 take the terms of the unit lower triangle of
// columns s0 to s1 - 1: a(i, c) -= a(i, k) a(k, c) for s0 <= k < i, k rising.
void ForwardRows(const Matrix& m, int s0, int s1, int c0, int c1) {
  const bool parallel = static_cast<double>(c1 - c0) * (s1 - s0) * (s1 - s0) / 2.0 >= kParallelWork;
#pragma omp parallel for schedule(static) if (parallel)
  for (int c = c0; c < c1; ++c) {
    float* ac = m.col(c);
    for (int k = s0; k < s1; ++k) {
      const float* ak = m.col(k);
      const float akc = ac[k];
      for (int i = k + 1; i < s1; ++i) ac[i] = ac[i] - ak[i] * akc;
    }
  }
}

}  // namespace

int LUDecompose(float* A, int n, int lda, int* indx, float* scale, float& sign) {
  const Matrix m{A, static_cast<std::size_t>(lda)};

  // Implicit scaling: each row is weighed by its largest entry.
  for (int i = 0; i < n; ++i) scale[i] = 0.0f;
  for (int j = 0; j < n; ++j) {
    const float* aj = m.col(j);
    for (int i = 0; i < n; ++i) {
      const float t = std::fabs(aj[i]);
      if (t > scale[i]) scale[i] = t;
    }
  }
  for (int i = 0; i < n; ++i) {
    if (scale[i] < kZero) return 0;  // a row of zeros
    scale[i] = 1.0f / scale[i];
  }
  sign = 1.0f;

  ProductUpdate update;
  if (!update.Reserve(n, n, kPanel)) {
    // Without room for the blocks, the same factors one column at a time.
    FactorColumns(m, n, 0, n, indx, scale, sign);
    return 1;
  }

  for (int j0 = 0; j0 < n; j0 += kPanel) {
    const int j1 = std::min(j0 + kPanel, n);
    for (int s0 = j0; s0 < j1; s0 += kSub) {
      const int s1 = std::min(s0 + kSub, j1);
      FactorColumns(m, n, s0, s1, indx, scale, sign);
      Interchange(m, s0, s1, indx, j0, s0);
      Interchange(m, s0, s1, indx, s1, j1);
      ForwardRows(m, s0, s1, s1, j1);
      update.Apply(A, m.ld, s1, n, s1, j1, s0, s1);
    }
    Interchange(m, j0, j1, indx, 0, j0);
    Interchange(m, j0, j1, indx, j1, n);
    if (j1 == n) break;
    for (int s0 = j0; s0 < j1; s0 += kSub) {
      const int s1 = std::min(s0 + kSub, j1);
      ForwardRows(m, s0, s1, j1, n);
      update.Apply(A, m.ld, s1, j1, j1, n, s0, s1);
    }
    update.Apply(A, m.ld, j1, n, j1, n, j0, j1);
  }
  return 1;
}

}  // namespace quellon
