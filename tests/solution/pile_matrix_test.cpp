
#include "solution/pile_matrix.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

// Deflection at c of a cantilever built in at 0 under q per unit length from t to b,
// integrated in double from the point-load solution; Simpson's rule is exact on each cubic piece.
double CantileverUnderStrip(double c, double t, double b, double q, double EI) {
  auto point = [c](double a) { return a >= c ? c * c * (3 * a - c) : a * a * (3 * c - a); };
  auto simpson = [&](double lo, double hi) { return (hi - lo) / 6 * (point(lo) + 4 * point((lo + hi) / 2) + point(hi)); };
  return q * (c > t && c < b ? simpson(t, c) + simpson(c, b) : simpson(t, b)) / (6 * EI);
}

const RealMatrix& Built(Engine& e) {
  PrepareGroupGeometry(e);
  PileStiffnessesAllPiles(e);
  BuildPileMatrix(e, 1);
  return e.ws.pile_D;
}

TEST(PileMatrix, VerticalPileBendsAsATextbookCantileverUnderUniformLoad) {
  // A row sum of a bending block loads every element: a cantilever of length L under
  // q = Ds per metre deflects q x^2 (6L^2 - 4Lx + x^2) / 24EI at x.
  const int n = 10;
  auto e = testing::MakeGroup({{0, 0}}, n);
  const RealMatrix& D = Built(*e);
  const double L = 10.0, q = 0.5, EI = 1.0e5;
  for (int i = 1; i <= n; ++i) {
    const double x = (i - 0.5) * L / n;
    const double expected = q * x * x * (6 * L * L - 4 * L * x + x * x) / (24.0 * EI);
    double sx = 0.0, sy = 0.0;
    for (int j = 1; j <= n; ++j) sx += D(n + 1 + i, n + 1 + j), sy += D(2 * n + 1 + i, 2 * n + 1 + j);
    EXPECT_NEAR(sx, expected, 2e-5 * expected) << i;
    EXPECT_NEAR(sy, expected, 2e-5 * expected) << i;
  }
  EXPECT_EQ(D(n + 1 + 1, 2 * n + 1 + 1), 0.0f);  // X and Y bending don't couple
  // Raked both ways with a free length: the lever arms run along the pile's own axis.
  e->foundation.Piles(1).RakeX = 8.0f, e->foundation.Piles(1).RakeY = -4.0f;
  e->foundation.FreeStandingLength = 1.5f;
  const double Fs = 1.5 / (std::cos(8.0 * M_PI / 180.0) * std::cos(4.0 * M_PI / 180.0));
  const double want = CantileverUnderStrip(Fs + 9.5, Fs, Fs + 1, q, EI);
  EXPECT_NEAR(Built(*e)(n + 1 + n, n + 1 + 1), want, 1e-5 * want);
}

TEST(PileMatrix, BaseColumnSeesTheMeanDiameterOnlyUnderAnUnderReamedBase) {
  const int n = 4;
  auto e = testing::MakeGroup({{0, 0}}, n);
  const double EA = 5.0e6, s2 = 3.75;  // centre of element 2
  auto area = [](double d) { return M_PI * d * d / 4; };
  e->foundation.Piles(1).BaseDiameter = 1.0f;
  const RealMatrix& D = Built(*e);
  EXPECT_NEAR(D(n + 1, n + 1), 10 * area(1.0) / EA, 1e-6 * D(n + 1, n + 1));
  EXPECT_NEAR(D(2, n + 1), s2 * area(0.75) / EA, 2e-6 * D(2, n + 1));  // mean of 0.5 and 1
  for (float Db : {0.5f, 0.3f}) {  // equal or narrower: the base's own area
    e->foundation.Piles(1).BaseDiameter = Db;
    EXPECT_NEAR(Built(*e)(2, n + 1), s2 * area(Db) / EA, 2e-6 * D(2, n + 1)) << Db;
  }
}

TEST(PileMatrix, ReusedOnlyForAlikePilesWithAReinforcedLength) {
  // Pile 2 has pile 1's reinforced section but a weaker lower one, so its block of D
  // shows whether its own matrix was built or pile 1's taken over.
  const int n = 3, M = 4 * n + 1;
  auto e = testing::MakeGroup({{0, 0}, {3, 0}, {6, 0}}, n);
  auto block_equal = [&](float reinforced1, float reinforced2, float rake2, int p, int q) {
    for (int k = 1; k <= 3; ++k) e->foundation.Piles(k).ReinforcedLength = k == 2 ? reinforced2 : reinforced1;
    e->foundation.Piles(2).UnreinforcedEA = 3.0e6f;
    e->foundation.Piles(2).RakeX = rake2;
    e->ws.D.fill(0.0f);
    PrepareGroupGeometry(*e);
    PileStiffnessesAllPiles(*e);
    for (int k = 1; k <= 3; ++k) AssemblePileFlexibility(*e, k);
    for (int c = 1; c <= M; ++c)
      for (int r = 1; r <= M; ++r)
        if (PileFlexibility(e->ws.D, (p - 1) * M + r, (p - 1) * M + c) !=
            PileFlexibility(e->ws.D, (q - 1) * M + r, (q - 1) * M + c))
          return false;
    return true;
  };
  // A reinforced length of 1.5 m covers no element centre, yet the likeness test looks
  // at the reinforced section only: pile 2 takes over pile 1's matrix, pile 3 pile 2's.
  EXPECT_TRUE(block_equal(1.5f, 1.5f, 0.0f, 1, 2));
  EXPECT_TRUE(block_equal(1.5f, 1.5f, 0.0f, 2, 3));
  // Without a reinforced length on both, or with a rake off by a millionth of a
  // degree, pile 2 is built with its own section.
  EXPECT_FALSE(block_equal(0.0f, 0.0f, 0.0f, 1, 2));
  EXPECT_FALSE(block_equal(1.5f, 0.0f, 0.0f, 1, 2));
  EXPECT_FALSE(block_equal(1.5f, 1.5f, 1e-6f, 1, 2));
}

}  // namespace
}  // namespace quellon
