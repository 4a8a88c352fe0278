#include <cmath>

#include "solution/solution.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

using testing::MakeGroup;

TEST(BoundaryConditions, TwistMovesEveryElementAsARigidRotationAboutTheCentre) {
  // Heads in all four quadrants and on both axes about a centre at the origin; some piles
  // raked in one direction, so that their elements lie off the head position. The twist
  // column must be the movement of each element's plan position under a rotation of
  // one radian, to the four figures of the constants 1 - cos 1 and sin 1.
  const std::vector<testing::PileSpec> piles = {
      {3.0f, 0.0f, 12.0f, 0.0f}, {-3.0f, 0.0f}, {0.0f, 2.0f, 0.0f, -9.0f}, {0.0f, -2.0f},
      {2.0f, 2.0f, -7.0f, 0.0f}, {-2.0f, -2.0f}, {1.5f, -2.5f, 0.0f, 6.0f}, {-1.5f, 2.5f}};
  const int n = 3;
  auto e = MakeGroup(piles, n);
  e->foundation.FreeStandingLength = 1.5f;
  PrepareGroupGeometry(*e);
  ASSERT_EQ(e->foundation.CentreOfRotationX, 0.0f);
  ASSERT_EQ(e->foundation.CentreOfRotationY, 0.0f);
  for (int p = 1; p <= 8; ++p) BuildBoundaryConditionVectors(*e, p);

  const int M = 4 * n + 1;
  const double c1 = std::cos(1.0), s1 = std::sin(1.0);
  for (int p = 1; p <= 8; ++p) {
    const auto& spec = piles[static_cast<std::size_t>(p - 1)];
    const double a = spec.rake_x * M_PI / 180.0, b = spec.rake_y * M_PI / 180.0;
    for (int i = 1; i <= n; ++i) {
      const double t = i - 0.5, h = 10.0 / n;
      // A positive rake carries the element towards minus X (Y).
      const double px = spec.x - (1.5 * std::tan(a) + t * h * std::sin(a));
      const double py = spec.y - (1.5 * std::tan(b) + t * h * std::sin(b));
      const double mx = px * c1 - py * s1 - px, my = px * s1 + py * c1 - py;
      const double tol = 2e-4 * std::hypot(px, py);
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + n + 1 + i, 6), mx, tol) << "pile " << p << " element " << i;
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + 2 * n + 1 + i, 6), my, tol) << "pile " << p << " element " << i;
      EXPECT_EQ(e->ws.UBCV((p - 1) * M + 3 * n + 1 + i, 6), 1.0f);
    }
    for (int k = 1; k <= n + 1; ++k) EXPECT_EQ(e->ws.UBCV((p - 1) * M + k, 6), 0.0f);
  }
}

TEST(BoundaryConditions, VerticalPileRowsAreTheRigidCapMovementsAtEachElement) {
  // A vertical pile at (2.5, -1) from the centre of a two-pile group, 2 m free length.
  const int n = 4;
  auto e = MakeGroup({{2.5f, -1.0f}, {-2.5f, 1.0f}}, n);
  e->foundation.FreeStandingLength = 2.0f;
  PrepareGroupGeometry(*e);
  BuildBoundaryConditionVectors(*e, 1);
  const RealMatrix& U = e->ws.UBCV;
  for (int k = 1; k <= n + 1; ++k) {
    const float expected[6] = {1.0f, 0.0f, 2.5f, 0.0f, -1.0f, 0.0f};
    for (int c = 1; c <= 6; ++c) EXPECT_FLOAT_EQ(U(k, c), expected[c - 1]) << k << "," << c;
  }
  for (int i = 1; i <= n; ++i) {
    const float d = 2.0f + (i - 0.5f) * 2.5f;  // tilting the cap swings the element by its depth below it
    EXPECT_FLOAT_EQ(U(n + 1 + i, 2), 1.0f);
    EXPECT_FLOAT_EQ(U(n + 1 + i, 3), -d);
    EXPECT_FLOAT_EQ(U(n + 1 + i, 1), 0.0f);
    EXPECT_FLOAT_EQ(U(2 * n + 1 + i, 4), 1.0f);
    EXPECT_FLOAT_EQ(U(2 * n + 1 + i, 5), -d);
    EXPECT_FLOAT_EQ(U(2 * n + 1 + i, 2), 0.0f);
  }

  // A pile on the centre of rotation doesn't move under the twist.
  auto single = MakeGroup({{4.0f, 7.0f}}, n);
  PrepareGroupGeometry(*single);
  BuildBoundaryConditionVectors(*single, 1);
  for (int i = 1; i <= n; ++i) {
    EXPECT_EQ(single->ws.UBCV(n + 1 + i, 6), 0.0f);
    EXPECT_EQ(single->ws.UBCV(2 * n + 1 + i, 6), 0.0f);
    EXPECT_EQ(single->ws.UBCV(i, 3), 0.0f);
  }
}

TEST(BoundaryConditions, PileRakedBothWaysTakesTheDiagonalBranch) {
  // Pile 1 raked 10 and 10 degrees, pile 2 raked 10 and -10: the offset is taken along
  // the diagonal w = +-0.7854, with the X offset alone in both rows.
  const int n = 2;
  auto e = MakeGroup({{2.0f, 1.0f, 10.0f, 10.0f}, {-2.0f, -1.0f, 10.0f, -10.0f}}, n);
  e->foundation.FreeStandingLength = 1.0f;
  PrepareGroupGeometry(*e);
  BuildBoundaryConditionVectors(*e, 1);
  BuildBoundaryConditionVectors(*e, 2);
  const int M = 4 * n + 1;
  const double a = 10.0 * M_PI / 180.0;
  for (int p = 1; p <= 2; ++p) {
    const double x = p == 1 ? 2.0 : -2.0, y = p == 1 ? 1.0 : -1.0;
    const double w = p == 1 ? 0.7854 : -0.7854;
    const double R = std::hypot(x, y), v = std::atan2(y, x);
    const double Dx = R * (std::cos(v + 1) - std::cos(v)), Dy = R * (std::sin(v + 1) - std::sin(v));
    for (int i = 1; i <= n; ++i) {
      const double ax = std::tan(a) + (i - 0.5) * 5.0 * std::sin(a);
      const double ay = p == 1 ? ax : -ax;
      const double x6 = Dx + ax * (std::cos(w) - std::cos(w + 1));
      const double y6 = Dy + ax * (std::sin(w) - std::sin(w + 1));
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + n + 1 + i, 6), x6, 1e-5 * std::fabs(x6) + 1e-6) << p << "," << i;
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + 2 * n + 1 + i, 6), y6, 1e-5 * std::fabs(y6) + 1e-6) << p << "," << i;
      // The single-rake constants would give something else here.
      EXPECT_GT(std::fabs(Dx + 0.4597 * ax + 0.8415 * ay - x6), 1e-2) << p << "," << i;
    }
  }
}

TEST(BoundaryConditions, UniformStressesAddUpToTheirResultantsAtThePileHead) {
  const int n = 4;
  auto e = MakeGroup({{0, 0}, {5, 0}}, n);
  Pile& second = e->foundation.Piles(2);
  second.Length = 8.0f;
  second.ShaftDiameter = 0.6f;
  second.BaseDiameter = 1.0f;
  const int M = 4 * n + 1;
  // Column 4 only, pile p loaded with p times the stresses: shaft shear 10, base 50,
  // transverse 3 in X and -2 in Y, torsional shear 4.
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
  SplitTractions(*e);
  CalcHeadLoads(*e, 1);
  for (int p = 1; p <= 2; ++p) {
    const Pile& pile = e->foundation.Piles(p);
    const double f = p, L = pile.Length, Ds = pile.ShaftDiameter, Db = pile.BaseDiameter;
    auto near = [](double expected) { return 2e-6 * std::fabs(expected); };
    const double axial = 10 * f * M_PI * Ds * L + 50 * f * M_PI * Db * Db / 4;
    EXPECT_NEAR(e->ws.HeadAxial(p, 4), axial, near(axial));
    EXPECT_NEAR(e->ws.HeadX(p, 4), 3 * f * Ds * L, near(3 * f * Ds * L));
    // A uniform transverse stress acts at mid-depth below the soil entry point.
    EXPECT_NEAR(e->ws.HeadMomentXZ(p, 4), -3 * f * Ds * L * L / 2, near(3 * f * Ds * L * L / 2));
    EXPECT_NEAR(e->ws.HeadY(p, 4), -2 * f * Ds * L, near(2 * f * Ds * L));
    EXPECT_NEAR(e->ws.HeadMomentYZ(p, 4), 2 * f * Ds * L * L / 2, near(2 * f * Ds * L * L / 2));
    const double torque = 4 * f * M_PI * Ds * L * Ds / 2;
    EXPECT_NEAR(e->ws.HeadTorque(p, 4), torque, near(torque));
    for (int c : {1, 2, 3, 5, 6}) EXPECT_EQ(e->ws.HeadAxial(p, c), 0.0f);
  }
  // The sorted stresses sit in the group vectors' own row numbering.
  EXPECT_EQ(e->ws.UnitStressAxial(2 * (n + 1), 4), 100.0f);
  EXPECT_EQ(e->ws.UnitStressX(n + 1, 4), 6.0f);
  EXPECT_EQ(e->ws.UnitStressTorsion(2 * n, 4), 8.0f);
  EXPECT_EQ(e->ws.UnitStressX(2 * n + 1, 4), 0.0f);
}

TEST(BoundaryConditions, FullReportFlagTakesEffectAtTheLastIncrementOnly) {
  auto e = MakeGroup({{0, 0}}, 2, 3);
  e->project.Flags(35) = 1;
  CalcHeadLoads(*e, 2);
  for (int flag : {19, 21, 22, 25, 27, 28, 31, 36}) EXPECT_FALSE(e->project.Flag(flag)) << flag;
  CalcHeadLoads(*e, 3);
  for (int flag : {19, 21, 22, 25, 27, 28, 31, 36}) EXPECT_TRUE(e->project.Flag(flag)) << flag;
  EXPECT_FALSE(e->project.Flag(20));
}

}  // namespace
}  // namespace quellon
