// The unit twist of the corrected mechanics against the geometry that the soil sees: each
// element's mid-point, placed from its pile's soil entry point down the raked axis, must
// move as a rigid rotation of the cap about the centre moves it, whatever the rakes.
#include <cmath>

#include "engine/utilities.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

TEST(CorrectedTwist, EveryElementMovesAsARigidRotationMovesIt) {
  struct Rakes {
    float x, y;
  };
  // Raked both ways (alike, opposite, unequal), one way only, and not at all.
  const Rakes cases[] = {{10, 10}, {12, -7}, {-20, 5}, {15, 0}, {0, -9}, {0, 0}};
  for (const Rakes& r : cases) {
    const int n = 5;
    auto e = testing::MakeGroup({{2.0f, -1.0f, r.x, r.y}, {-2.0f, 1.5f}}, n);
    e->corrected_mechanics = true;
    e->foundation.FreeStandingLength = 1.5f;
    PrepareGroupGeometry(*e);
    for (int p = 1; p <= 2; ++p) BuildBoundaryConditionVectors(*e, p);
    const float xc = e->foundation.CentreOfRotationX, yc = e->foundation.CentreOfRotationY;
    for (int p = 1; p <= 2; ++p) {
      const Pile& pile = e->foundation.Piles(p);
      const float h = pile.Length / static_cast<float>(n);
      const float sa = std::sin(DegreesToRadians(pile.RakeX)), se = std::sin(DegreesToRadians(pile.RakeY));
      const int row = (p - 1) * UnknownsPerPile(*e);
      for (int i = 1; i <= n; ++i) {
        // The mid-point in plan, relative to the centre of rotation.
        const float t = static_cast<float>(i) - 0.5f;
        const float x = pile.SoilEntryX - t * h * sa - xc, y = pile.SoilEntryY - t * h * se - yc;
        const float tol = 1e-5f * std::sqrt(x * x + y * y) + 1e-6f;
        EXPECT_NEAR(e->ws.UBCV(row + n + 1 + i, 6), -y, tol) << r.x << "/" << r.y << " pile " << p << " element " << i;
        EXPECT_NEAR(e->ws.UBCV(row + 2 * n + 1 + i, 6), x, tol) << r.x << "/" << r.y << " pile " << p << " element " << i;
      }
    }
  }
}

}  // namespace
}  // namespace quellon
