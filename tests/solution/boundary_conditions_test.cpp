#include <cmath>

#include "solution_test_model.h"

namespace quellon {
namespace {

TEST(BoundaryConditions, TwistMovesEveryElementAsARigidRotationAboutTheCentre) {
  // Heads in all four quadrants and on both axes about a centre at the origin, some
  // piles raked one way so that their elements lie off the head. The twist column must
  // be the movement of each element under a rotation of one radian, to the four figures
  // of the constants 1 - cos 1 and sin 1.
  const std::vector<testing::PileSpec> piles = {
      {3.0f, 0.0f, 12.0f, 0.0f}, {-3.0f, 0.0f}, {0.0f, 2.0f, 0.0f, -9.0f}, {0.0f, -2.0f},
      {2.0f, 2.0f, -7.0f, 0.0f}, {-2.0f, -2.0f}, {1.5f, -2.5f, 0.0f, 6.0f}, {-1.5f, 2.5f}};
  const int n = 3, M = 4 * n + 1;
  auto e = testing::MakeGroup(piles, n);
  e->foundation.FreeStandingLength = 1.5f;
  PrepareGroupGeometry(*e);
  for (int p = 1; p <= 8; ++p) BuildBoundaryConditionVectors(*e, p);
  for (int p = 1; p <= 8; ++p) {
    const auto& s = piles[static_cast<std::size_t>(p - 1)];
    const double a = s.rake_x * M_PI / 180, b = s.rake_y * M_PI / 180;
    for (int i = 1; i <= n; ++i) {
      const double depth = (i - 0.5) * 10.0 / n;
      const double px = s.x - (1.5 * std::tan(a) + depth * std::sin(a));
      const double py = s.y - (1.5 * std::tan(b) + depth * std::sin(b));
      const double tol = 2e-4 * std::hypot(px, py);
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + n + 1 + i, 6), px * std::cos(1.0) - py * std::sin(1.0) - px, tol) << p;
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + 2 * n + 1 + i, 6), px * std::sin(1.0) + py * std::cos(1.0) - py, tol) << p;
    }
  }
  // A vertical pile: the cap's tilt lifts it by its lever arm and swings each element by
  // its depth below the cap; along the pile the twist is the unit rotation itself.
  const RealMatrix& U = e->ws.UBCV;
  const int r = 5 * M;  // pile 6 at (-2, -2)
  EXPECT_FLOAT_EQ(U(r + 1, 1), 1.0f);
  EXPECT_FLOAT_EQ(U(r + n + 1, 3), -2.0f);
  EXPECT_FLOAT_EQ(U(r + n + 1, 5), -2.0f);
  EXPECT_FLOAT_EQ(U(r + n + 3, 3), -(1.5f + 1.5f * 10.0f / 3.0f));
  EXPECT_FLOAT_EQ(U(r + 2 * n + 2, 5), -(1.5f + 0.5f * 10.0f / 3.0f));
  EXPECT_EQ(U(r + 3 * n + 2, 6), 1.0f);
  EXPECT_EQ(U(r + 3 * n + 2, 1), 0.0f);
}

TEST(BoundaryConditions, PileRakedBothWaysTakesTheDiagonalBranch) {
  // Raked 10 and 10 degrees, and 10 and -10: the offset is taken along the diagonal
  // w = +-0.7854, with the X offset alone in both rows.
  const int n = 2, M = 4 * n + 1;
  auto e = testing::MakeGroup({{2.0f, 1.0f, 10.0f, 10.0f}, {-2.0f, -1.0f, 10.0f, -10.0f}}, n);
  e->foundation.FreeStandingLength = 1.0f;
  PrepareGroupGeometry(*e);
  BuildBoundaryConditionVectors(*e, 1);
  BuildBoundaryConditionVectors(*e, 2);
  for (int p = 1; p <= 2; ++p) {
    const double x = p == 1 ? 2.0 : -2.0, y = x / 2, w = p == 1 ? 0.7854 : -0.7854;
    const double R = std::hypot(x, y), v = std::atan2(y, x);
    for (int i = 1; i <= n; ++i) {
      const double ax = std::tan(M_PI / 18) + (i - 0.5) * 5.0 * std::sin(M_PI / 18);
      const double x6 = R * (std::cos(v + 1) - std::cos(v)) + ax * (std::cos(w) - std::cos(w + 1));
      const double y6 = R * (std::sin(v + 1) - std::sin(v)) + ax * (std::sin(w) - std::sin(w + 1));
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + n + 1 + i, 6), x6, 1e-5 * std::fabs(x6) + 1e-6) << p << "," << i;
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + 2 * n + 1 + i, 6), y6, 1e-5 * std::fabs(y6) + 1e-6) << p << "," << i;
    }
  }
}

TEST(BoundaryConditions, UniformStressesAddUpToTheirResultantsAtThePileHead) {
  const int n = 4, M = 4 * n + 1;
  auto e = testing::MakeGroup({{0, 0}, {5, 0}}, n, 3);
  Pile& second = e->foundation.Piles(2);
  second.Length = 8.0f;
  second.ShaftDiameter = 0.6f;
  second.BaseDiameter = 1.0f;
  // Column 4 only, pile p with p times: shaft shear 10, base 50, X 3, Y -2, torsion 4.
  for (int p = 1; p <= 2; ++p) {
    const float f = static_cast<float>(p);
    const int m = (p - 1) * M;
    for (int k = 1; k <= n; ++k) {
      e->ws.Tractions(m + k, 4) = 10.0f * f;
      e->ws.Tractions(m + n + 1 + k, 4) = 3.0f * f;
      e->ws.Tractions(m + 2 * n + 1 + k, 4) = -2.0f * f;
      e->ws.Tractions(m + 3 * n + 1 + k, 4) = 4.0f * f;
    }
    e->ws.Tractions(m + n + 1, 4) = 50.0f * f;
  }
  e->project.Flags(35) = 1;
  SplitTractions(*e);
  CalcHeadLoads(*e, 2);
  EXPECT_FALSE(e->project.Flag(25));  // full reports only at the last increment
  CalcHeadLoads(*e, 3);
  for (int flag : {19, 21, 22, 25, 27, 28, 31, 36}) EXPECT_TRUE(e->project.Flag(flag)) << flag;
  for (int p = 1; p <= 2; ++p) {
    const Pile& pile = e->foundation.Piles(p);
    const double f = p, L = pile.Length, Ds = pile.ShaftDiameter, Db = pile.BaseDiameter;
    auto expect = [](float got, double want) { EXPECT_NEAR(got, want, 2e-6 * std::fabs(want)); };
    expect(e->ws.HeadAxial(p, 4), 10 * f * M_PI * Ds * L + 50 * f * M_PI * Db * Db / 4);
    expect(e->ws.HeadX(p, 4), 3 * f * Ds * L);
    expect(e->ws.HeadMomentXZ(p, 4), -3 * f * Ds * L * L / 2);  // resultant at mid-depth
    expect(e->ws.HeadY(p, 4), -2 * f * Ds * L);
    expect(e->ws.HeadMomentYZ(p, 4), 2 * f * Ds * L * L / 2);
    expect(e->ws.HeadTorque(p, 4), 4 * f * M_PI * Ds * L * Ds / 2);
    EXPECT_EQ(e->ws.HeadAxial(p, 3), 0.0f);
  }
  EXPECT_EQ(e->ws.UnitStressX(n + 1, 4), 6.0f);
  EXPECT_EQ(e->ws.UnitStressX(2 * n + 1, 4), 0.0f);
}

}  // namespace
}  // namespace quellon
