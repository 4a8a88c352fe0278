#include <cstring>
#include <random>

#include "solution/solve.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

// Crout's method with implicit partial pivoting written plainly, row sums in rising k;
// the engine's panelled factorisation must give these factors bit for bit.
int PlainCrout(std::vector<float>& a, int n, std::vector<int>& indx) {
  auto A = [&](int i, int j) -> float& { return a[static_cast<std::size_t>((i - 1) + (j - 1) * n)]; };
  std::vector<float> vv(static_cast<std::size_t>(n) + 1);
  for (int i = 1; i <= n; ++i) {
    float big = 0.0f;
    for (int j = 1; j <= n; ++j) big = std::max(big, std::fabs(A(i, j)));
    vv[i] = 1.0f / big;
  }
  for (int j = 1; j <= n; ++j) {
    float big = 0.0f;
    int imax = j;
    for (int i = 1; i <= n; ++i) {
      float sum = A(i, j);
      for (int k = 1; k < std::min(i, j); ++k) sum = sum - A(i, k) * A(k, j);
      A(i, j) = sum;
      if (i >= j && vv[i] * std::fabs(sum) >= big) big = vv[i] * std::fabs(sum), imax = i;
    }
    if (imax != j)
      for (int k = 1; k <= n; ++k) std::swap(A(imax, k), A(j, k));
    vv[imax] = vv[j];
    indx[static_cast<std::size_t>(j - 1)] = imax;
    for (int i = j + 1; i <= n; ++i) A(i, j) = A(i, j) * (1.0f / A(j, j));
  }
  return 1;
}

TEST(LUDecompose, BlockedFactorisationEqualsColumnByColumnCroutBitForBit) {
  // 70 columns: sub-panels and a ragged last one within one panel; 300: several panels,
  // the updates of the later columns by whole panels, and tiles cut at the edges. Rows
  // are scaled over six decades, so that the implicit scaling decides pivots that plain
  // magnitudes would not, and the larger matrix is six-tenths zeros in blocks, as a
  // group's system is.
  for (const int n : {70, 300}) {
    std::mt19937 gen(7);
    std::uniform_real_distribution<float> u(-1.0f, 1.0f);
    std::vector<float> a(static_cast<std::size_t>(n) * n);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) {
        float& x = a[static_cast<std::size_t>(i + j * n)];
        x = u(gen) * std::pow(10.0f, static_cast<float>(i % 7) - 3.0f);
        if (n > 100 && i != j && (i / 9 + j / 13) % 5 < 3) x = 0.0f;
      }
    std::vector<float> ref = a;
    std::vector<int> indx(n), ref_indx(n);
    std::vector<float> scale(n);
    float sign = 0.0f;
    PlainCrout(ref, n, ref_indx);
    ASSERT_EQ(LUDecompose(a.data(), n, n, indx.data(), scale.data(), sign), 1);
    EXPECT_EQ(indx, ref_indx) << n;
    EXPECT_EQ(std::memcmp(a.data(), ref.data(), a.size() * sizeof(float)), 0) << n;
    int swaps = 0;
    for (int j = 0; j < n; ++j) swaps += indx[static_cast<std::size_t>(j)] != j + 1;
    EXPECT_GT(swaps, n / 7);  // the case really pivots
  }
}

TEST(LUDecompose, TiesGoToTheLastRowAndAVanishingPivotIsReplaced) {
  // Both rows have the same scaled merit 1 in column 1: the last one becomes the pivot.
  std::vector<float> a = {2.0f, 2.0f, 1.0f, 1.5f};  // [[2, 1], [2, 1.5]], column-major
  int indx[2];
  float scale[2], sign = 0.0f;
  ASSERT_EQ(LUDecompose(a.data(), 2, 2, indx, scale, sign), 1);
  EXPECT_EQ(indx[0], 2);
  EXPECT_EQ(sign, -1.0f);
  EXPECT_EQ(a, (std::vector<float>{2.0f, 1.0f, 1.5f, -0.5f}));

  // A singular matrix without a zero row goes on with 1e-20 in place of the zero pivot.
  std::vector<float> s = {1.0f, 1.0f, 1.0f, 1.0f};
  ASSERT_EQ(LUDecompose(s.data(), 2, 2, indx, scale, sign), 1);
  EXPECT_EQ(s[3], 1e-20f);
  EXPECT_EQ(indx[0], 2);

  // A row below 1e-20 throughout is fatal.
  std::vector<float> z = {1.0f, 1e-21f, 3.0f, -1e-21f};
  EXPECT_EQ(LUDecompose(z.data(), 2, 2, indx, scale, sign), 0);
}

TEST(Solve, SingularSystemEndsWith262AndKeepsTheTractionsOfBefore) {
  auto e = testing::MakeGroup({{0, 0}, {3, 0, 6.0f, 0.0f}}, 3);
  testing::Assemble(*e);
  // Unknown 3 (in pile 1) cut off from everything: zero row and column of G and of D.
  for (int i = 1; i <= NumberOfUnknowns(*e); ++i) e->ws.G(3, i) = e->ws.G(i, 3) = 0.0f;
  for (int i = 1; i <= UnknownsPerPile(*e); ++i) e->ws.D(3, i) = e->ws.D(i, 3) = 0.0f;
  e->ws.Tractions.fill(7.0f);
  EXPECT_EQ(Solve(*e, 1), 0);
  EXPECT_EQ(e->project.ErrorCode, 262);
  EXPECT_EQ(e->ws.Tractions(1, 1), 7.0f);  // the stresses of before stand
}

}  // namespace
}  // namespace quellon
