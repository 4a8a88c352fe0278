#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "solution/solution.h"
#include "solution/solve.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

using testing::LogCapture;
using testing::MakeGroup;

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

std::vector<float> RandomMatrix(int n, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<float> u(-1.0f, 1.0f);
  std::vector<float> a(static_cast<std::size_t>(n) * n);
  for (float& x : a) x = u(gen);
  return a;
}

TEST(LUDecompose, BlockedFactorisationEqualsColumnByColumnCroutBitForBit) {
  // 70 columns: sub-panels and a ragged last one within one panel; 300: several panels,
  // the updates of the later columns by whole panels, and tiles cut at the edges. Rows
  // are scaled over six decades, so that the implicit scaling decides pivots that plain
  // magnitudes would not, and the larger matrix is six-tenths zeros in blocks, as a
  // group's system is.
  for (const int n : {70, 300}) {
    std::vector<float> a = RandomMatrix(n, 7);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) {
        float& x = a[static_cast<std::size_t>(i + j * n)];
        x *= std::pow(10.0f, static_cast<float>(i % 7) - 3.0f);
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

    // The six sides at once give what one side at a time gives, bit for bit, each from
    // its own first non-zero entry.
    std::vector<float> B = RandomMatrix(n, 11);
    B.resize(static_cast<std::size_t>(n) * 6);
    for (int m = 0; m < 6; ++m)
      for (int i = 0; i < 40 * m; ++i) B[static_cast<std::size_t>(i + m * n)] = 0.0f;
    std::vector<float> one = B;
    for (int m = 0; m < 6; ++m) LUBackSubstitute(a.data(), n, n, indx.data(), one.data() + m * n);
    LUSolveSixSides(a.data(), n, n, indx.data(), B.data(), n);
    EXPECT_EQ(std::memcmp(B.data(), one.data(), B.size() * sizeof(float)), 0) << n;
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

// Largest |A x - b| in double, relative to the largest |b|.
double Residual(const float* a, int n, const float* x, const float* b) {
  double worst = 0.0, bmax = 0.0;
  for (int i = 0; i < n; ++i) {
    double r = -b[i];
    for (int j = 0; j < n; ++j) r += static_cast<double>(a[i + static_cast<std::size_t>(j) * n]) * x[j];
    worst = std::max(worst, std::fabs(r));
    bmax = std::max(bmax, std::fabs(static_cast<double>(b[i])));
  }
  return worst / bmax;
}

// A group whose system has both kinds of coupling: four piles, one raked both ways.
std::unique_ptr<Engine> SolvableGroup() {
  auto e = MakeGroup({{0, 0}, {3, 0, 6.0f, 0.0f}, {0, 3}, {3, 3, -5.0f, 5.0f}}, 5);
  e->foundation.FreeStandingLength = 1.0f;
  testing::Assemble(*e);
  return e;
}

TEST(Solve, BothRoutesGiveTheSameTractionsToSinglePrecision) {
  auto e = SolvableGroup();
  const int N = NumberOfUnknowns(*e);
  FormSystemMatrix(e->ws);
  const RealMatrix system = e->ws.GD;  // the solves take GD for their factors
  e->project.DynamicModel = 0;
  LogCapture log(*e);
  ASSERT_EQ(Solve(*e, 1), 1);
  const RealMatrix lu = e->ws.Tractions;
  e->project.DynamicModel = 1;
  e->ws.Tractions.fill(0.0f);
  ASSERT_EQ(Solve(*e, 1), 1);
  for (int c = 1; c <= 6; ++c) {
    float cmax = 0.0f;
    for (int i = 1; i <= N; ++i) cmax = std::max(cmax, std::fabs(lu(i, c)));
    ASSERT_GT(cmax, 0.0f);
    for (int i = 1; i <= N; ++i) EXPECT_NEAR(e->ws.Tractions(i, c), lu(i, c), 2e-5f * cmax) << i << "," << c;
  }
  // Both solve the system to single-precision rounding. The unit movements force no
  // axial movement under the twist and none along X or Y on a vertical pile, so several
  // right-hand sides begin with zeros and the forward sweep starts late.
  ASSERT_EQ(e->ws.UBCV(1, 6), 0.0f);
  for (int c = 1; c <= 6; ++c) EXPECT_LT(Residual(system.data(), N, lu.col(c), e->ws.UBCV.col(c)), 1e-5) << c;
  const std::string text = log.text();
  EXPECT_NE(text.find("Using LU decompostion...\r\n"), std::string::npos);
  EXPECT_NE(text.find("Using MKL libraries...\r\n"), std::string::npos);
}

TEST(Solve, FirstIncrementFactorisesGPlusDInPlaceAndLaterOnesTakeGDAsItStands) {
  auto e = SolvableGroup();
  const int N = NumberOfUnknowns(*e);
  // The system as the group's full G + D, and its factors and solution on a copy.
  std::vector<float> factors(static_cast<std::size_t>(N) * N);
  for (int j = 1; j <= N; ++j)
    for (int i = 1; i <= N; ++i)
      factors[static_cast<std::size_t>(i - 1 + (j - 1) * N)] = e->ws.G(i, j) + PileFlexibility(e->ws.D, i, j);
  std::vector<int> pivots(static_cast<std::size_t>(N));
  PlainCrout(factors, N, pivots);
  std::vector<float> b(e->ws.UBCV.col(4), e->ws.UBCV.col(4) + N);
  LUBackSubstitute(factors.data(), N, N, pivots.data(), b.data());

  for (int lapack : {0, 1}) {
    e->project.DynamicModel = lapack;
    e->ws.system = {};
    ASSERT_EQ(Solve(*e, 1), 1);
    if (!lapack) {
      // GD holds the factors of G + D (less the multipliers of L, which the six-sided
      // substitution overwrites), and the tractions are those of the one-sided one.
      for (int j = 1; j <= N; ++j)
        for (int i = 1; i <= j; ++i)
          ASSERT_EQ(e->ws.GD(i, j), factors[static_cast<std::size_t>(i - 1 + (j - 1) * N)]) << i << "," << j;
      for (int i = 1; i <= N; ++i) ASSERT_EQ(e->ws.Tractions(i, 4), b[static_cast<std::size_t>(i - 1)]) << i;
    }
    // A second solve with no softening in between solves G + D again, not its factors.
    const RealMatrix first = e->ws.Tractions;
    ASSERT_EQ(Solve(*e, 2), 1);
    for (int c = 1; c <= 6; ++c)
      for (int i = 1; i <= N; ++i) ASSERT_EQ(e->ws.Tractions(i, c), first(i, c)) << lapack;

    // Every unknown yielded: the softening leaves GD the identity, and each stress is
    // the forced movement.
    e->ws.GD.fill(0.0f);
    for (int i = 1; i <= N; ++i) e->ws.GD(i, i) = 1.0f;
    e->ws.system.factorised = false;
    ASSERT_EQ(Solve(*e, 3), 1);
    for (int c = 1; c <= 6; ++c)
      for (int i = 1; i <= N; ++i) EXPECT_EQ(e->ws.Tractions(i, c), e->ws.UBCV(i, c)) << lapack;
  }
}

TEST(Solve, ASystemTheSofteningLeavesAsItWasIsNotSolvedAgain) {
  // A non-linear group whose soil doesn't soften (constants 0) and whose limits are out
  // of reach: every softening decides what the one before did.
  auto e = testing::MakeGroup({{0, 0}, {3, 0, 6.0f, 0.0f}, {0, 3}, {3, 3, -5.0f, 5.0f}}, 5, 3);
  testing::Assemble(*e);
  Workspace& w = e->ws;
  for (RealVector* v : {&w.LimitAxial, &w.LimitX, &w.LimitY, &w.LimitTorsion}) v->fill(1e9f);
  const int N = NumberOfUnknowns(*e);
  auto same = [](const RealMatrix& a, const RealMatrix& b) {
    return a.count() == b.count() && std::memcmp(a.data(), b.data(), a.count() * sizeof(float)) == 0;
  };
  for (int lapack : {0, 1}) {
    e->project.DynamicModel = lapack;
    w.system = {};
    ASSERT_EQ(Solve(*e, 1), 1);
    const RealMatrix first = w.Tractions;
    UpdateSoilFlexibility(*e, 1);
    ASSERT_EQ(Solve(*e, 2), 1);  // the system formed anew, G + D as before
    EXPECT_TRUE(same(w.Tractions, first));
    const RealMatrix factors = w.GD;

    // Same decisions: G and the factors in GD stand, and the next solve keeps the
    // tractions it has.
    UpdateSoilFlexibility(*e, 2);
    EXPECT_TRUE(w.system.unchanged);
    EXPECT_TRUE(same(w.GD, factors));
    w.Tractions(1, 1) = 42.0f;  // shows that the solve leaves them alone
    ASSERT_EQ(Solve(*e, 3), 1);
    EXPECT_EQ(w.Tractions(1, 1), 42.0f);
    w.Tractions(1, 1) = first(1, 1);

    // GD to be printed as a matrix, or a decision that changes: the system is formed.
    e->project.Flags(6) = 1;
    e->project.TXTUnit = 10;
    UpdateSoilFlexibility(*e, 3);
    EXPECT_FALSE(w.system.unchanged);
    for (int j = 1; j <= N; j += 5)
      for (int i = 1; i <= N; ++i) ASSERT_EQ(w.GD(i, j), w.G(i, j) + PileFlexibility(w.D, i, j));
    e->project.Flags(6) = 0;
    e->project.TXTUnit = 0;
    ASSERT_EQ(Solve(*e, 4), 1);
    EXPECT_TRUE(same(w.Tractions, first));
    w.StressX(2) = 2e9f;  // yields in X
    UpdateSoilFlexibility(*e, 4);
    EXPECT_FALSE(w.system.unchanged);
    w.StressX(2) = 0.0f;
    w.Yielded.fill(0);
  }
}

TEST(Solve, SingularSystemsLeaveTheTractionsOfBefore) {
  auto e = SolvableGroup();
  const int N = NumberOfUnknowns(*e);
  // Unknown 3 cut off from everything: zero row and column.
  for (int i = 1; i <= N; ++i) e->ws.G(3, i) = e->ws.G(i, 3) = 0.0f;
  const int M = UnknownsPerPile(*e);  // unknown 3 is in pile 1, whose block is rows 1 to M
  for (int i = 1; i <= M; ++i) e->ws.D(3, i) = e->ws.D(i, 3) = 0.0f;
  e->ws.Tractions.fill(7.0f);
  LogCapture log(*e);

  e->project.DynamicModel = 0;
  e->project.ErrorCode = 0;
  EXPECT_EQ(Solve(*e, 1), 0);
  EXPECT_EQ(e->project.ErrorCode, 262);

  // LAPACK finds U(3, 3) exactly zero; the run carries on with the old stresses.
  e->project.DynamicModel = 1;
  EXPECT_EQ(Solve(*e, 1), 1);
  for (int c = 1; c <= 6; ++c)
    for (int i = 1; i <= N; ++i) ASSERT_EQ(e->ws.Tractions(i, c), 7.0f);
  const std::string text = log.text();
  EXPECT_NE(text.find("Call to SGESV failed with error code = 3\r\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace quellon
