#include <cmath>

#include "solution/pile_matrix.h"
#include "solution/solution.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

using testing::MakeGroup;

// Deflection at c of a cantilever built in at 0 under a load q per unit length from t to
// b, integrated in double precision from the point-load solution: a load at a bends the
// beam to P x^2 (3a - x) / 6EI for x <= a, and to P a^2 (3x - a) / 6EI beyond.
double CantileverUnderStrip(double c, double t, double b, double q, double EI) {
  auto point = [&](double a) { return a >= c ? c * c * (3 * a - c) : a * a * (3 * c - a); };
  auto simpson = [&](double lo, double hi) {  // exact: the integrand is cubic on each side of c
    return (hi - lo) / 6.0 * (point(lo) + 4.0 * point(0.5 * (lo + hi)) + point(hi));
  };
  double sum = 0.0;
  if (c > t && c < b)
    sum = simpson(t, c) + simpson(c, b);
  else
    sum = simpson(t, b);
  return q * sum / (6.0 * EI);
}

float DBlock(const Engine& e, int p, int r, int c) {
  const int M = UnknownsPerPile(e);
  return e.ws.D((p - 1) * M + r, (p - 1) * M + c);
}

TEST(PileMatrix, BaseColumnSeesTheMeanDiameterOnlyUnderAnUnderReamedBase) {
  auto e = MakeGroup({{0, 0}}, 4);
  Pile& pile = e->foundation.Piles(1);
  const int n = 4;
  const double h = 2.5, EA = 1.5e7, Ds = 0.8;
  const double As = M_PI * Ds * h;
  auto base_column = [&](float Db) {
    pile.BaseDiameter = Db;
    PrepareGroupGeometry(*e);
    PileStiffnessesAllPiles(*e);
    BuildPileMatrix(*e, 1);
    return e->ws.pile_D;
  };

  RealMatrix D = base_column(1.6f);
  const double Ab = M_PI * 1.6 * 1.6 / 4.0, Am = M_PI * 1.2 * 1.2 / 4.0;
  EXPECT_NEAR(D(n + 1, n + 1), 10.0 * Ab / EA, 1e-6 * 10.0 * Ab / EA);
  for (int k = 1; k <= n; ++k) {
    const double s = (k - 0.5) * h;
    EXPECT_NEAR(D(k, n + 1), s * Am / EA, 2e-6 * s * Am / EA) << k;  // mean diameter 1.2
    EXPECT_NEAR(D(n + 1, k), s * As / EA, 2e-6 * s * As / EA) << k;
    // A base wider than the shaft breaks the symmetry of the axial coupling.
    EXPECT_NE(D(k, n + 1), D(n + 1, k));
  }

  // Equal diameters: the full base area, and the coupling is symmetric again.
  D = base_column(0.8f);
  for (int k = 1; k <= n; ++k) {
    const double s = (k - 0.5) * h;
    EXPECT_NEAR(D(k, n + 1), s * (M_PI * 0.64 / 4.0) / EA, 2e-6 * s * (M_PI * 0.64 / 4.0) / EA) << k;
  }
  // A base narrower than the shaft also takes its own area.
  D = base_column(0.6f);
  EXPECT_NEAR(D(2, n + 1), 3.75 * (M_PI * 0.36 / 4.0) / EA, 1e-6 * 3.75 * (M_PI * 0.36 / 4.0) / EA);
}

TEST(PileMatrix, VerticalPileBendsAsATextbookCantileverUnderUniformLoad) {
  // Summing a row of the transverse block loads every element at once: a cantilever of
  // length L under q = Ds per metre, whose deflection at x is q x^2 (6L^2 - 4Lx + x^2) / 24EI.
  const int n = 10;
  auto e = MakeGroup({{0, 0}}, n);
  PrepareGroupGeometry(*e);
  PileStiffnessesAllPiles(*e);
  BuildPileMatrix(*e, 1);
  const RealMatrix& D = e->ws.pile_D;
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
  // The element nearest the cap barely moves under a load at the toe, while the toe
  // element moves a lot under a load near the cap: deflection at a point is not
  // reciprocal to the mean deflection over an element, so the block isn't symmetric.
  EXPECT_GT(D(n + 1 + n, n + 1 + 1), D(n + 1 + 1, n + 1 + n));
  EXPECT_NE(D(n + 1 + 3, n + 1 + 7), D(n + 1 + 7, n + 1 + 3));
}

TEST(PileMatrix, RakedPileWithFreeLengthMatchesIntegratedPointLoads) {
  // Every entry of both bending blocks against the point-load solution integrated over the
  // loaded element, with the free-standing length along the raked axis, bending in X
  // against EIy and in Y against EIx, and the mean EI of the two elements.
  const int n = 5;
  auto e = MakeGroup({{0, 0, 8.0f, -4.0f}}, n);
  Pile& pile = e->foundation.Piles(1);
  pile.EIx = 4.0e5f;
  pile.EIy = 9.0e5f;
  pile.UnreinforcedEIx = 1.0e5f;
  pile.UnreinforcedEIy = 3.0e5f;
  pile.ReinforcedLength = 5.0f;  // elements 1 to 3 reinforced (centres 1, 3 and 5 m)
  e->foundation.FreeStandingLength = 1.5f;
  PrepareGroupGeometry(*e);
  PileStiffnessesAllPiles(*e);
  BuildPileMatrix(*e, 1);
  const RealMatrix& D = e->ws.pile_D;

  const double a = 8.0 * M_PI / 180.0, b = -4.0 * M_PI / 180.0;
  const double Fs = 1.5 / (std::cos(a) * std::cos(b)), h = 2.0, q = 0.8;
  auto EIx = [](int k) { return k <= 3 ? 4.0e5 : 1.0e5; };
  auto EIy = [](int k) { return k <= 3 ? 9.0e5 : 3.0e5; };
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const double c = Fs + (i - 0.5) * h, t = Fs + (j - 1) * h, bot = Fs + j * h;
      const double ux = CantileverUnderStrip(c, t, bot, q, 0.5 * (EIy(i) + EIy(j)));
      const double uy = CantileverUnderStrip(c, t, bot, q, 0.5 * (EIx(i) + EIx(j)));
      EXPECT_NEAR(D(n + 1 + i, n + 1 + j), ux, 1e-5 * ux) << i << "," << j;
      EXPECT_NEAR(D(2 * n + 1 + i, 2 * n + 1 + j), uy, 1e-5 * uy) << i << "," << j;
    }
  }
  // The self term alone, at a point where rounding matters little.
  EXPECT_NEAR(CantileverSelfDeflection(3.0f, 2.0f, 0.8f, 1.0e5f), CantileverUnderStrip(3, 2, 4, 0.8, 1.0e5),
              1e-6 * CantileverUnderStrip(3, 2, 4, 0.8, 1.0e5));
}

TEST(PileMatrix, AxialAndTorsionBlocksAreTheColumnAndTheBarFromTheCap) {
  const int n = 4;
  auto e = MakeGroup({{0, 0, 0.0f, 12.0f}}, n);
  e->foundation.FreeStandingLength = 2.0f;
  PrepareGroupGeometry(*e);
  PileStiffnessesAllPiles(*e);
  BuildPileMatrix(*e, 1);
  const RealMatrix& D = e->ws.pile_D;
  const double Fs = 2.0 / std::cos(12.0 * M_PI / 180.0), h = 2.5, Ds = 0.8, EA = 1.5e7, GJ = 6.0e5;
  const double As = M_PI * Ds * h;
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      // A point force As at the centre of element j shortens the column from the cap
      // down to the nearer centre; on itself the force is spread: h/8 less.
      const double lever = i == j ? Fs + (i - 0.5) * h - h / 8 : Fs + (std::min(i, j) - 0.5) * h;
      EXPECT_NEAR(D(i, j), lever * As / EA, 2e-6 * lever * As / EA) << i << "," << j;
      const double twist = lever * As * Ds / 2 / GJ;
      EXPECT_NEAR(D(3 * n + 1 + i, 3 * n + 1 + j), twist, 2e-6 * twist) << i << "," << j;
    }
  }
  // Blocks don't couple: everything outside the axial-with-base, X, Y and torsion
  // blocks is zero.
  auto block = [n](int u) { return u <= n + 1 ? 0 : (u - n - 2) / n + 1; };
  int stray = 0;
  for (int c = 1; c <= 4 * n + 1; ++c)
    for (int r = 1; r <= 4 * n + 1; ++r)
      if (block(r) != block(c) && D(r, c) != 0.0f) ++stray;
  EXPECT_EQ(stray, 0);
}

TEST(PileMatrix, ReusedOnlyForAlikePilesWithAReinforcedLengthAndCopiedIntoItsBlock) {
  const int n = 3;
  const int M = 4 * n + 1;
  // Pile 2 has the reinforced section of pile 1 but a different lower section, so its
  // block shows whether its own matrix was built or pile 1's taken over.
  auto e = MakeGroup({{0, 0}, {3, 0}, {6, 0}}, n);
  auto setup = [&](float reinforced1, float reinforced2, float rake2) {
    for (int p = 1; p <= 3; ++p) e->foundation.Piles(p).ReinforcedLength = p == 2 ? reinforced2 : reinforced1;
    e->foundation.Piles(2).UnreinforcedEA = 3.0e6f;
    e->foundation.Piles(2).RakeX = rake2;
    e->ws.D.fill(0.0f);
    e->project.ReferencePile = 0;
    PrepareGroupGeometry(*e);
    PileStiffnessesAllPiles(*e);
    for (int p = 1; p <= 3; ++p) AssemblePileFlexibility(*e, p);
  };
  auto same_block = [&](int p, int q) {
    for (int c = 1; c <= M; ++c)
      for (int r = 1; r <= M; ++r)
        if (DBlock(*e, p, r, c) != DBlock(*e, q, r, c)) return false;
    return true;
  };

  // Reinforced over the top 1.5 m only: pile 2 takes over pile 1's matrix, its weaker
  // lower section notwithstanding, since the likeness test compares the reinforced
  // section alone.
  setup(1.5f, 1.5f, 0.0f);
  EXPECT_TRUE(same_block(1, 2));
  EXPECT_TRUE(same_block(2, 3));
  EXPECT_EQ(e->project.ReferencePile, 3);
  EXPECT_NE(DBlock(*e, 1, 1, 1), 0.0f);

  // Without a reinforced length two piles are never alike: pile 2 is built with its own
  // section, and pile 3, compared with pile 2, is built again.
  setup(0.0f, 0.0f, 0.0f);
  EXPECT_FALSE(same_block(1, 2));
  EXPECT_TRUE(same_block(1, 3));
  EXPECT_GT(DBlock(*e, 2, 3, 3), DBlock(*e, 1, 3, 3));  // the weaker section is more flexible

  // One pile with a reinforced length is not enough either.
  setup(1.5f, 0.0f, 0.0f);
  EXPECT_FALSE(same_block(1, 2));

  // The likeness tolerance is absolute, 1e-20: a rake of a millionth of a degree differs.
  setup(1.5f, 1.5f, 1e-6f);
  EXPECT_FALSE(same_block(1, 2));

  // Only the diagonal blocks of D are written.
  for (int c = 1; c <= M; ++c)
    for (int r = 1; r <= M; ++r) EXPECT_EQ(e->ws.D(r, M + c), 0.0f);
}

}  // namespace
}  // namespace quellon
