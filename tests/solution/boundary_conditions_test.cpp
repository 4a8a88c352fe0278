
#include "solution_test_model.h"

namespace quellon {
namespace {

TEST(BoundaryConditions, TwistMovesEveryElementAsARigidRotationAboutTheCentre) {
  // Heads in all four quadrants and on both axes about a centre at the origin, some
  // piles raked so that their elements lie off the head. The twist column must be the
  // movement of each element under a rotation of one radian, to the four figures of the
  // constants 1 - cos 1 and sin 1.
  const std::vector<testing::PileSpec> piles = {
      {3.0f, 0.0f, 12.0f, 0.0f}, {-3.0f, 0.0f}, {0.0f, 2.0f, 0.0f, -9.0f}, {0.0f, -2.0f},
      {2.0f, 2.0f, -7.0f, 0.0f}, {-2.0f, -2.0f}, {1.5f, -2.5f, 0.0f, 6.0f}, {-1.5f, 2.5f}};
  const int n = 3, M = 4 * n + 1;
  auto e = testing::MakeGroup(piles, n);
  e->foundation.FreeStandingLength = 1.5f;
  PrepareGroupGeometry(*e);
  for (int p = 1; p <= 8; ++p) {
    BuildBoundaryConditionVectors(*e, p);
    const auto& s = piles[static_cast<std::size_t>(p - 1)];
    const double a = s.rake_x * M_PI / 180, b = s.rake_y * M_PI / 180;
    for (int i = 1; i <= n; ++i) {
      const double depth = (i - 0.5) * 10.0 / n;
      const double px = s.x - (1.5 * std::tan(a) + depth * std::sin(a));
      const double py = s.y - (1.5 * std::tan(b) + depth * std::sin(b));
      const double tol = 2e-4 * std::hypot(px, py);
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + n + 1 + i, 6), px * std::cos(1.0) - py * std::sin(1.0) - px, tol) << p;
      EXPECT_NEAR(e->ws.UBCV((p - 1) * M + 2 * n + 1 + i, 6), px * std::sin(1.0) + py * std::cos(1.0) - py, tol) << p;
      EXPECT_EQ(e->ws.UBCV((p - 1) * M + 3 * n + 1 + i, 6), 1.0f);  // the twist of the pile itself
    }
  }
}

}  // namespace
}  // namespace quellon
