#include <cmath>

#include "engine/utilities.h"
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

  // A zero diagonal makes every step pivot off it, by rows and by columns: A(i, s(i)) =
  // 2^i, stored with leading dimension 8, has the inverse A^-1(s(i), i) = 2^-i exactly.
  const int s[6] = {4, 1, 6, 2, 3, 5};
  float a[48] = {};
  for (int i = 1; i <= 6; ++i) a[(i - 1) + 8 * (s[i - 1] - 1)] = std::ldexp(1.0f, i);
  a[6] = 99.0f;  // outside the matrix
  ASSERT_EQ(InvertMatrix(e, a, 6, 8), 1);
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i) EXPECT_EQ(a[(i - 1) + 8 * (j - 1)], i == s[j - 1] ? std::ldexp(1.0f, -j) : 0.0f);
  EXPECT_EQ(a[6], 99.0f);

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

TEST(GroupStiffness, TurningTheLayoutBy90DegreesSwapsXAndY) {
  // An L-shaped group of vertical piles turned by +90 degrees, (x, y) -> (-y, x).
  // Movements turn as vectors: X -> Y, Y -> -X, about X -> about Y, about Y -> -about X.
  // The external rotation about Y is the engine's XZ rotation, which tilts +X piles
  // down, against the right-handed sense; the signs below follow from that.
  const std::vector<PileSpec> base = {{0, 0}, {3, 0}, {6, 0}, {0, 2.5f}};
  std::vector<PileSpec> turned;
  for (const PileSpec& p : base) turned.push_back({-p.y, p.x});
  const GroupRun a = RunGroup(base, 1.0f);
  const GroupRun b = RunGroup(turned, 1.0f);
  const int map[6] = {2, 1, 3, 5, 4, 6}, sign[6] = {1, -1, 1, -1, 1, 1};
  ExpectMappedStiffness(a.grmat, b.grmat, map, sign, 2e-4);
  EXPECT_GT(std::fabs(a.grmat[21] - a.grmat[28]), 0.1 * a.grmat[21]);  // the layout tilts unequally
}

TEST(GroupStiffness, CapMovementAndAllIncrementsAreExactlyLinearInTheLoads) {
  const std::vector<PileSpec> piles = {{0, 0, 8, 0}, {3, 0.5f}, {1, 3.5f, 0, -6}};
  const GroupRun a = RunGroup(piles, 0.8f);
  const GroupRun b = RunGroup(piles, 0.8f, 2.0f);
  const Workspace& wa = a.e->ws;
  const Workspace& wb = b.e->ws;
  for (int i = 1; i <= 6; ++i) EXPECT_EQ(wb.CapDispInc(i), 2.0f * wa.CapDispInc(i)) << i;
  for (int r = 1; r <= wa.SoilDispInc.size(); ++r) {
    ASSERT_EQ(wb.StressAxialInc(r), 2.0f * wa.StressAxialInc(r)) << r;
    ASSERT_EQ(wb.StressTorsionInc(r), 2.0f * wa.StressTorsionInc(r)) << r;
    ASSERT_EQ(wb.SoilDispInc(r), 2.0f * wa.SoilDispInc(r)) << r;
    ASSERT_EQ(wb.LoadAxialInc(r), 2.0f * wa.LoadAxialInc(r)) << r;
    ASSERT_EQ(wb.MomentYZInc(r), 2.0f * wa.MomentYZInc(r)) << r;
  }
}

TEST(GroupStiffness, SymmetricGroupSettlesWithoutTiltAndSharesTheLoadEqually) {
  const int n = 6;
  auto e = testing::MakeGroup({{-1.5f, -1.5f}, {1.5f, -1.5f}, {1.5f, 1.5f}, {-1.5f, 1.5f}}, n);
  e->actions.Fz = 4000.0f;
  testing::Assemble(*e);
  ASSERT_EQ(testing::RunIncrement(*e, 1), 1);
  const Workspace& w = e->ws;
  const float settlement = w.CapDispInc(1);
  EXPECT_GT(settlement, 0.0f);
  for (int i = 2; i <= 6; ++i) EXPECT_LT(std::fabs(w.CapDispInc(i)) * 1.5f, 1e-5f * settlement) << i;
  for (int p = 1; p <= 4; ++p) {
    EXPECT_NEAR(w.PileHeadAxial(p), 1000.0f, 0.05f) << p;
    EXPECT_NEAR(w.HeadDispAxialInc(p), settlement, 1e-5f * settlement) << p;
  }
  // The base carries its pressure over the base area.
  EXPECT_FLOAT_EQ(w.LoadAxialInc(n + 1), w.StressAxialInc(n + 1) * kPi * 0.64f / 4.0f);
}

TEST(GroupStiffness, FailedInversionComesAfterTheStiffnessCallbacks) {
  auto e = testing::MakeGroup({{0, 0}, {3, 0}}, 3);
  testing::Assemble(*e);
  StiffnessCapture::Attach(*e);
  SplitTractions(*e);  // zero tractions: no stiffness at all
  CalcHeadLoads(*e, 1);
  EXPECT_EQ(CalcStiffnessDisplsStressesLoads(*e, 1), 0);
  EXPECT_EQ(e->project.ErrorCode, 258);
  EXPECT_EQ(StiffnessCapture::calls, 1);
}

}  // namespace
}  // namespace quellon
