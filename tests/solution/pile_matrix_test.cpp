#include <cmath>

#include "solution/pile_matrix.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

// Deflection at c of a cantilever built in at 0 under q per unit length from t to b,
// integrated in double from the point-load solution P x^2 (3a - x) / 6EI (x <= a) and
// P a^2 (3x - a) / 6EI (x >= a); Simpson's rule is exact on each cubic piece.
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
  const double L = 10.0, q = 0.8, EI = 8.0e5;
  for (int i = 1; i <= n; ++i) {
    const double x = (i - 0.5) * L / n;
    const double expected = q * x * x * (6 * L * L - 4 * L * x + x * x) / (24.0 * EI);
    double sx = 0.0, sy = 0.0;
    for (int j = 1; j <= n; ++j) {
      sx += D(n + 1 + i, n + 1 + j);
      sy += D(2 * n + 1 + i, 2 * n + 1 + j);
    }
    EXPECT_NEAR(sx, expected, 2e-5 * expected) << i;
    EXPECT_NEAR(sy, expected, 2e-5 * expected) << i;
  }
  // The deflection at a point isn't reciprocal to the mean over an element: the toe
  // element moves more under a load near the cap than the reverse.
  EXPECT_GT(D(n + 1 + n, n + 1 + 1), D(n + 1 + 1, n + 1 + n));
  // No block couples to another (axial with base, X, Y, torsion).
  auto block = [n](int u) { return u <= n + 1 ? 0 : (u - n - 2) / n + 1; };
  for (int c = 1; c <= 4 * n + 1; ++c) {
    for (int r = 1; r <= 4 * n + 1; ++r) {
      if (block(r) != block(c)) {
        ASSERT_EQ(D(r, c), 0.0f) << r << "," << c;
      }
    }
  }
}

TEST(PileMatrix, RakedPileWithFreeLengthMatchesIntegratedPointLoads) {
  // Every entry of both bending blocks, with the free length along the raked axis,
  // bending in X against EIy and in Y against EIx, and the mean EI of the two elements
  // across the end of the reinforcement (elements 1 to 3, centres 1, 3 and 5 m).
  const int n = 5;
  auto e = testing::MakeGroup({{0, 0, 8.0f, -4.0f}}, n);
  Pile& pile = e->foundation.Piles(1);
  pile.EIx = 4.0e5f, pile.EIy = 9.0e5f, pile.UnreinforcedEIx = 1.0e5f, pile.UnreinforcedEIy = 3.0e5f;
  pile.ReinforcedLength = 5.0f;
  e->foundation.FreeStandingLength = 1.5f;
  const RealMatrix& D = Built(*e);
  const double Fs = 1.5 / (std::cos(8.0 * M_PI / 180.0) * std::cos(4.0 * M_PI / 180.0)), h = 2.0;
  auto EIx = [](int k) { return k <= 3 ? 4.0e5 : 1.0e5; };
  auto EIy = [](int k) { return k <= 3 ? 9.0e5 : 3.0e5; };
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const double c = Fs + (i - 0.5) * h, t = Fs + (j - 1) * h, b = Fs + j * h;
      const double ux = CantileverUnderStrip(c, t, b, 0.8, 0.5 * (EIy(i) + EIy(j)));
      const double uy = CantileverUnderStrip(c, t, b, 0.8, 0.5 * (EIx(i) + EIx(j)));
      EXPECT_NEAR(D(n + 1 + i, n + 1 + j), ux, 1e-5 * ux) << i << "," << j;
      EXPECT_NEAR(D(2 * n + 1 + i, 2 * n + 1 + j), uy, 1e-5 * uy) << i << "," << j;
    }
  }
  // Axial and torsion: a point force As (torque As Ds/2) at the nearer centre, the
  // spread load on the element itself taking h/8 off the lever.
  const double As = M_PI * 0.8 * h;
  EXPECT_NEAR(D(2, 4), (Fs + 1.5 * h) * As / 1.5e7, 2e-6 * D(2, 4));
  EXPECT_NEAR(D(3, 3), (Fs + 2.5 * h - h / 8) * As / 1.5e7, 2e-6 * D(3, 3));
  EXPECT_NEAR(D(3 * n + 5, 3 * n + 2), (Fs + 0.5 * h) * As * 0.4 / 6.0e5, 2e-6 * D(3 * n + 5, 3 * n + 2));
}

TEST(PileMatrix, BaseColumnSeesTheMeanDiameterOnlyUnderAnUnderReamedBase) {
  const int n = 4;
  auto e = testing::MakeGroup({{0, 0}}, n);
  const double EA = 1.5e7, s2 = 3.75;  // centre of element 2
  auto area = [](double d) { return M_PI * d * d / 4; };
  e->foundation.Piles(1).BaseDiameter = 1.6f;
  const RealMatrix& D = Built(*e);
  EXPECT_NEAR(D(n + 1, n + 1), 10 * area(1.6) / EA, 1e-6 * D(n + 1, n + 1));
  EXPECT_NEAR(D(2, n + 1), s2 * area(1.2) / EA, 2e-6 * D(2, n + 1));  // mean of 0.8 and 1.6
  EXPECT_NEAR(D(n + 1, 2), s2 * M_PI * 0.8 * 2.5 / EA, 2e-6 * D(n + 1, 2));
  for (float Db : {0.8f, 0.6f}) {  // equal or narrower: the base's own area
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
  EXPECT_EQ(e->project.ReferencePile, 3);
  // Without a reinforced length on both, or with a rake off by a millionth of a
  // degree, pile 2 is built with its own section.
  EXPECT_FALSE(block_equal(0.0f, 0.0f, 0.0f, 1, 2));
  EXPECT_TRUE(block_equal(0.0f, 0.0f, 0.0f, 1, 3));
  EXPECT_FALSE(block_equal(1.5f, 0.0f, 0.0f, 1, 2));
  EXPECT_FALSE(block_equal(1.5f, 1.5f, 1e-6f, 1, 2));
  EXPECT_EQ(PileFlexibility(e->ws.D, 1, M + 1), 0.0f);  // nothing between piles
  EXPECT_EQ(PileFlexibility(e->ws.D, M + 1, 1), 0.0f);
}

}  // namespace
}  // namespace quellon
