
#include "solution/group_stiffness.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

using testing::PileSpec;
using testing::StiffnessCapture;

TEST(InvertMatrix, KnownInverseAndSingular) {
  // tridiag(-1, 2, -1) of order 6 has the inverse min(i, j) (7 - max(i, j)) / 7.
  float k[36] = {};
  for (int i = 1; i <= 6; ++i) {
    k[(i - 1) * 7] = 2.0f;
    if (i < 6) k[i + 6 * (i - 1)] = k[(i - 1) + 6 * i] = -1.0f;
  }
  ASSERT_EQ(InvertMatrix(k, 6, 6), 1);
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i) EXPECT_NEAR(k[(i - 1) + 6 * (j - 1)], std::min(i, j) * (7 - std::max(i, j)) / 7.0, 2e-6);

  float singular[36] = {};
  for (int i = 1; i <= 5; ++i) singular[(i - 1) * 7] = static_cast<float>(i);  // last row and column zero
  EXPECT_EQ(InvertMatrix(singular, 6, 6), 0);
}

// One linear increment of a group of four elements per pile under a general load acting
// at (0.5, -0.25) plus a shift; the host's copy of GRMAT is kept.
std::unique_ptr<Engine> RunGroup(const std::vector<PileSpec>& piles, float sx, float sy, float grmat[36]) {
  auto e = testing::MakeGroup(piles, 4);
  e->foundation.FreeStandingLength = 1.2f;
  e->actions = {40, -25, 900, 60, -80, 30, 0.5f + sx, -0.25f + sy, 1};
  testing::Assemble(*e);
  StiffnessCapture::Attach(*e);
  EXPECT_EQ(testing::RunIncrement(*e, 1), 1);
  std::copy(StiffnessCapture::grmat, StiffnessCapture::grmat + 36, grmat);
  return e;
}

TEST(GroupStiffness, MovingTheGroupInPlanLeavesItUnchanged) {
  const std::vector<PileSpec> base = {{0, 0, 8, 0}, {3, 0.5f}, {1, 3.5f, 0, -6}, {4, 4, 5, 5}};
  std::vector<PileSpec> moved = base;
  for (PileSpec& p : moved) p.x += 64.0f, p.y -= 32.0f;
  float ga[36], gb[36];
  const auto a = RunGroup(base, 0.0f, 0.0f, ga);
  const auto b = RunGroup(moved, 64.0f, -32.0f, gb);
  for (int j = 0; j < 6; ++j)
    for (int i = 0; i < 6; ++i)  // to a tolerance scaled by the diagonal
      EXPECT_NEAR(gb[i + 6 * j], ga[i + 6 * j], 1e-5 * std::sqrt(std::fabs(ga[7 * i] * ga[7 * j]))) << i << "," << j;
  for (int i = 1; i <= 6; ++i)
    EXPECT_NEAR(b->ws.CapDispInc(i), a->ws.CapDispInc(i), 1e-5 * std::fabs(a->ws.CapDispInc(i)));
}

}  // namespace
}  // namespace quellon
