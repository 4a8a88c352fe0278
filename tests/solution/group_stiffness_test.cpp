#include <cmath>

#include "solution/group_stiffness.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

using testing::PileSpec;
using testing::StiffnessCapture;

TEST(InvertMatrix, KnownInversesAndError258) {
  Engine e;
  // tridiag(-1, 2, -1) of order 6 has the inverse min(i, j) (7 - max(i, j)) / 7.
  float k[36] = {};
  for (int i = 1; i <= 6; ++i) {
    k[(i - 1) * 7] = 2.0f;
    if (i < 6) k[i + 6 * (i - 1)] = k[(i - 1) + 6 * i] = -1.0f;
  }
  ASSERT_EQ(InvertMatrix(e, k, 6, 6), 1);
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i) EXPECT_NEAR(k[(i - 1) + 6 * (j - 1)], std::min(i, j) * (7 - std::max(i, j)) / 7.0, 2e-6);

  float singular[36] = {};
  for (int i = 1; i <= 5; ++i) singular[(i - 1) * 7] = static_cast<float>(i);  // last row and column zero
  EXPECT_EQ(InvertMatrix(e, singular, 6, 6), 0);
  EXPECT_EQ(e.project.ErrorCode, 258);
}

// One linear increment of a group of four elements per pile under a general load acting
// at (0.5, -0.25) plus a shift; the host's copy of GRMAT is kept.
struct GroupRun {
  std::unique_ptr<Engine> e;
  float grmat[36];
};

GroupRun RunGroup(const std::vector<PileSpec>& piles, float F, float scale = 1.0f, float sx = 0.0f, float sy = 0.0f) {
  GroupRun run{testing::MakeGroup(piles, 4), {}};
  Engine& e = *run.e;
  e.foundation.FreeStandingLength = F;
  e.actions = {40 * scale, -25 * scale, 900 * scale, 60 * scale, -80 * scale, 30 * scale, 0.5f + sx, -0.25f + sy, 1};
  testing::Assemble(e);
  StiffnessCapture::Attach(e);
  EXPECT_EQ(testing::RunIncrement(e, 1), 1);
  EXPECT_EQ(StiffnessCapture::calls, 1);
  std::copy(StiffnessCapture::grmat, StiffnessCapture::grmat + 36, run.grmat);
  return run;
}

// b(map(i), map(j)) = sign(i) sign(j) a(i, j), to a tolerance scaled by the diagonal.
void ExpectMappedStiffness(const float* a, const float* b, const int map[6], const int sign[6], double rel) {
  auto at = [](const float* g, int i, int j) { return static_cast<double>(g[(i - 1) + 6 * (j - 1)]); };
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i)
      EXPECT_NEAR(at(b, map[i - 1], map[j - 1]), sign[i - 1] * sign[j - 1] * at(a, i, j),
                  rel * std::sqrt(std::fabs(at(a, i, i) * at(a, j, j))))
          << "GRMAT(" << i << "," << j << ")";
}

TEST(GroupStiffness, MovingTheGroupInPlanLeavesItUnchanged) {
  const std::vector<PileSpec> base = {{0, 0, 8, 0}, {3, 0.5f}, {1, 3.5f, 0, -6}, {4, 4, 5, 5}};
  std::vector<PileSpec> moved = base;
  for (PileSpec& p : moved) p.x += 64.0f, p.y -= 32.0f;
  const GroupRun a = RunGroup(base, 1.2f);
  const GroupRun b = RunGroup(moved, 1.2f, 1.0f, 64.0f, -32.0f);
  const int same[6] = {1, 2, 3, 4, 5, 6}, plus[6] = {1, 1, 1, 1, 1, 1};
  ExpectMappedStiffness(a.grmat, b.grmat, same, plus, 1e-5);
  for (int i = 1; i <= 6; ++i)
    EXPECT_NEAR(b.e->ws.CapDispInc(i), a.e->ws.CapDispInc(i), 1e-5 * std::fabs(a.e->ws.CapDispInc(i)));
}

}  // namespace
}  // namespace quellon
