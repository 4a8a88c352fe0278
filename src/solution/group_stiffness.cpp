#include "solution/group_stiffness.h"

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "engine/workspace.h"
#include "engine/utilities.h"

namespace quellon {

void AssembleGroupStiffness(const Foundation& f, const Workspace& w, float k[36]) {
  const float F = f.FreeStandingLength;
  auto K = [k](int r, int c) -> float& { return k[(r - 1) + 6 * (c - 1)]; };
  for (int i = 0; i < 36; ++i) k[i] = 0.0f;

  for (int c = 1; c <= 6; ++c) {
    for (int p = 1; p <= f.NumberOfPiles; ++p) {
      const Pile& pile = f.Piles(p);
      const PileFrame& fr = f.Frame(p);
      const float ca = fr.ca, sa = fr.sa, ta = fr.ta;
      const float ce = fr.ce, se = fr.se, te = fr.te;
      const float dx = pile.X - f.CentreOfRotationX;
      const float dy = pile.Y - f.CentreOfRotationY;

      const float A = w.HeadAxial(p, c);
      const float X = w.HeadX(p, c);
      const float Y = w.HeadY(p, c);
      const float Mxz = w.HeadMomentXZ(p, c);
      const float Myz = w.HeadMomentYZ(p, c);
      const float T = w.HeadTorque(p, c);

      // The head loads in the cap's axes: vertical and the two horizontal forces.
      const float V = ca * ce * A + sa * X + se * Y;
      const float Hx = ca * X - sa * A;
      const float Hy = ce * Y - se * A;

      // Moments about the centre of rotation at cap level. The pile meets the ground
      // F tan a off its cap position, and its horizontal forces act F below the cap.
      K(1, c) = K(1, c) + V;
      K(2, c) = K(2, c) + Hx;
      K(3, c) = K(3, c) + ((dx - F * ta) * V + Mxz - F * Hx);
      K(4, c) = K(4, c) + Hy;
      K(5, c) = K(5, c) + ((dy - F * te) * V + Myz - F * Hy);
      K(6, c) = K(6, c) + (T - dy * Hx + dx * Hy);
    }
  }
}

void GroupStiffnessExternal(const float k[36], float grmat[36]) {
  for (int b = 1; b <= 6; ++b)
    for (int a = 1; a <= 6; ++a) grmat[(a - 1) + 6 * (b - 1)] = k[(ConvertAxis(a) - 1) + 6 * (ConvertAxis(b) - 1)];
}

int InvertMatrix(float* A, int n, int lda) {
  // Work vectors from 1 to n.
  std::vector<float> u_(static_cast<std::size_t>(n) + 1), v_(static_cast<std::size_t>(n) + 1);
  std::vector<int> row_(static_cast<std::size_t>(n) + 1), col_(static_cast<std::size_t>(n) + 1);
  auto u = [&u_](int j) -> float& { return u_[static_cast<std::size_t>(j)]; };
  auto v = [&v_](int j) -> float& { return v_[static_cast<std::size_t>(j)]; };
  auto pivot_row = [&row_](int j) -> int& { return row_[static_cast<std::size_t>(j)]; };
  auto pivot_col = [&col_](int j) -> int& { return col_[static_cast<std::size_t>(j)]; };
  auto a = [A, lda](int i, int j) -> float& { return A[(i - 1) + static_cast<long>(lda) * (j - 1)]; };
  auto swap_rows = [&](int r1, int r2) {
    for (int j = 1; j <= n; ++j) std::swap(a(r1, j), a(r2, j));
  };
  auto swap_cols = [&](int c1, int c2) {
    for (int i = 1; i <= n; ++i) std::swap(a(i, c1), a(i, c2));
  };

  for (int k = 1; k <= n; ++k) {
    // Complete pivoting: the largest element of the remaining square, scanned row by
    // row; a later element takes over only if strictly larger.
    int br = k, bc = k;
    float best = std::fabs(a(k, k));
    for (int i = k; i <= n; ++i) {
      for (int j = k; j <= n; ++j) {
        const float t = std::fabs(a(i, j));
        if (t > best) {
          best = t;
          br = i;
          bc = j;
        }
      }
    }
    if (best < kZero) return 0;
    swap_rows(k, br);
    swap_cols(k, bc);
    pivot_row(k) = br;
    pivot_col(k) = bc;

    // Exchange step: unknown k and equation k trade places. With pivot p, row k becomes
    // 1/p and -a(k, j)/p, column k becomes a(i, k)/p, and every other element loses
    // a(i, k) a(k, j)/p, all as one rank-one update of the cleared row and column.
    const float p = a(k, k);
    for (int j = 1; j <= n; ++j) {
      if (j == k) continue;
      u(j) = -a(k, j) / p;
      v(j) = a(j, k);
    }
    u(k) = 1.0f / p;
    v(k) = 1.0f;
    for (int j = 1; j <= n; ++j) {
      a(k, j) = 0.0f;
      a(j, k) = 0.0f;
    }
    for (int j = 1; j <= n; ++j)
      for (int i = 1; i <= n; ++i) a(i, j) = a(i, j) + v(i) * u(j);
  }

  // Undo the interchanges, last first: a row interchange of the matrix is a column
  // interchange of its inverse, and the reverse.
  for (int k = n; k >= 1; --k) {
    if (pivot_row(k) != k) swap_cols(k, pivot_row(k));
    if (pivot_col(k) != k) swap_rows(k, pivot_col(k));
  }
  return 1;
}

}  // namespace quellon
