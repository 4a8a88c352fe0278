// The twist column of the boundary conditions against the geometry that the soil sees: each
// element's mid-point, placed from its head down the raked axis (free length 1.5), must move as
// a rotation of the cap about the centre moves it. The original mechanics turn the cap by a
// whole radian (to the four figures of the constants 1 - cos 1 and sin 1) and hold for piles
// raked one way or not at all; the corrected mechanics turn it by a first-order unit twist,
// (X, Y) to (-Y, X), whatever the rakes.
#include "solution_test_model.h"

namespace quellon {
namespace {

TEST(BoundaryConditions, TwistMovesEveryElementAsARigidRotationAboutTheCentre) {
  // Heads in all four quadrants and on both axes about a centre at the origin; rakes one
  // way, none, and both ways (alike, opposite, unequal).
  const std::vector<testing::PileSpec> piles = {
      {3, 0, 12, 0}, {-3, 0},        {0, 2, 0, -9},  {0, -2},      {2, 2, -7, 0},      {-2, -2},
      {1.5f, -2.5f, 0, 6}, {-1.5f, 2.5f}, {2, -1, 10, 10}, {-2, 1, 12, -7}, {2.5f, 1.5f, -20, 5}, {-2.5f, -1.5f, 15, 15}};
  const int n = 3, M = 4 * n + 1;
  for (const bool corrected : {false, true}) {
    auto e = testing::MakeGroup(piles, n);
    e->corrected_mechanics = corrected;
    e->foundation.FreeStandingLength = 1.5f;
    PrepareGroupGeometry(*e);
    for (int p = 1; p <= static_cast<int>(piles.size()); ++p) {
      BuildBoundaryConditionVectors(*e, p);
      const auto& s = piles[static_cast<std::size_t>(p - 1)];
      if (!corrected && s.rake_x != 0 && s.rake_y != 0) continue;
      const double x = static_cast<double>(s.x), y = static_cast<double>(s.y);
      const double a = static_cast<double>(s.rake_x) * M_PI / 180, b = static_cast<double>(s.rake_y) * M_PI / 180;
      for (int i = 1; i <= n; ++i) {
        const double depth = (i - 0.5) * 10.0 / n;
        const double px = x - (1.5 * std::tan(a) + depth * std::sin(a));
        const double py = y - (1.5 * std::tan(b) + depth * std::sin(b));
        const double dx = corrected ? -py : px * std::cos(1.0) - py * std::sin(1.0) - px;
        const double dy = corrected ? px : px * std::sin(1.0) + py * std::cos(1.0) - py;
        const double tol = (corrected ? 1e-5 : 2e-4) * std::hypot(px, py) + 1e-6;
        SCOPED_TRACE(::testing::Message() << (corrected ? "corrected" : "original") << ", pile " << p << ", element " << i);
        EXPECT_NEAR(e->ws.UBCV((p - 1) * M + n + 1 + i, 6), dx, tol);
        EXPECT_NEAR(e->ws.UBCV((p - 1) * M + 2 * n + 1 + i, 6), dy, tol);
        EXPECT_EQ(e->ws.UBCV((p - 1) * M + 3 * n + 1 + i, 6), 1.0f);  // the twist of the pile itself
      }
    }
  }
}

}  // namespace
}  // namespace quellon
