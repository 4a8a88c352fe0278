#include <cmath>
#include <random>

#include "engine/utilities.h"
#include "solution/group_stiffness.h"
#include "solution/solution.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

using testing::MakeGroup;
using testing::PileSpec;
using testing::StiffnessCapture;

TEST(InvertMatrix, KnownInversesWithAndWithoutPivoting) {
  Engine e;
  EXPECT_EQ(ConvertAxis(1), 2);
  EXPECT_EQ(ConvertAxis(3), 1);
  EXPECT_EQ(ConvertAxis(5), 3);
  EXPECT_EQ(ConvertAxis(7), 0);

  // The second-difference matrix tridiag(-1, 2, -1) of order 6: its inverse is
  // min(i, j) (7 - max(i, j)) / 7.
  float k[36] = {};
  for (int i = 1; i <= 6; ++i) {
    k[(i - 1) * 7] = 2.0f;
    if (i < 6) k[i + 6 * (i - 1)] = k[(i - 1) + 6 * i] = -1.0f;
  }
  ASSERT_EQ(InvertMatrix(e, k, 6, 6), 1);
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i)
      EXPECT_NEAR(k[(i - 1) + 6 * (j - 1)], std::min(i, j) * (7 - std::max(i, j)) / 7.0, 2e-6) << i << "," << j;

  // Zero diagonal throughout: every step must pivot off the diagonal, by rows and by
  // columns. A(i, s(i)) = 2^i has the inverse A^-1(s(i), i) = 2^-i, exact in floats.
  const int s[6] = {4, 1, 6, 2, 3, 5};
  float a[36] = {};
  for (int i = 1; i <= 6; ++i) a[(i - 1) + 6 * (s[i - 1] - 1)] = std::ldexp(1.0f, i);
  ASSERT_EQ(InvertMatrix(e, a, 6, 6), 1);
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i) {
      const float expected = i == s[j - 1] ? std::ldexp(1.0f, -j) : 0.0f;
      EXPECT_EQ(a[(i - 1) + 6 * (j - 1)], expected) << i << "," << j;
    }

  // A dense matrix with elements over four decades, in a larger storage (lda 8).
  std::mt19937 gen(3);
  std::uniform_real_distribution<float> u(-1.0f, 1.0f);
  float m[48], orig[48];
  for (int j = 0; j < 6; ++j)
    for (int i = 0; i < 8; ++i) m[i + 8 * j] = orig[i + 8 * j] = u(gen) * std::pow(10.0f, static_cast<float>((i + j) % 4));
  ASSERT_EQ(InvertMatrix(e, m, 6, 8), 1);
  for (int j = 0; j < 6; ++j)
    for (int i = 0; i < 6; ++i) {
      double r = 0.0;
      for (int k2 = 0; k2 < 6; ++k2) r += static_cast<double>(orig[i + 8 * k2]) * m[k2 + 8 * j];
      EXPECT_NEAR(r, i == j ? 1.0 : 0.0, 1e-4) << i << "," << j;
    }
  EXPECT_EQ(m[6], orig[6]);  // rows beyond the order are left alone
}

TEST(InvertMatrix, NoUsablePivotIsError258) {
  Engine e;
  float a[36] = {};
  for (int i = 1; i <= 5; ++i) a[(i - 1) * 7] = static_cast<float>(i);  // last row and column zero
  e.project.ErrorCode = 0;
  EXPECT_EQ(InvertMatrix(e, a, 6, 6), 0);
  EXPECT_EQ(e.project.ErrorCode, 258);
  float zero[36] = {};
  EXPECT_EQ(InvertMatrix(e, zero, 6, 6), 0);
}

// GRMAT of a group after one linear increment under a general load.
struct GroupRun {
  std::unique_ptr<Engine> e;
  float grmat[36];
};

// The loads act at (0.5, -0.25) plus the shift.
GroupRun RunGroup(const std::vector<PileSpec>& piles, float F, float load_scale = 1.0f, float shift_x = 0.0f,
                  float shift_y = 0.0f) {
  GroupRun run;
  run.e = MakeGroup(piles, 4);
  Engine& e = *run.e;
  e.foundation.FreeStandingLength = F;
  e.actions = {40.0f * load_scale, -25.0f * load_scale, 900.0f * load_scale, 60.0f * load_scale,
               -80.0f * load_scale, 30.0f * load_scale, 0.5f + shift_x, -0.25f + shift_y, 1};
  testing::Assemble(e);
  StiffnessCapture::Attach(e);
  EXPECT_EQ(testing::RunIncrement(e, 1), 1);
  EXPECT_EQ(StiffnessCapture::calls, 1);
  for (int i = 0; i < 36; ++i) run.grmat[i] = StiffnessCapture::grmat[i];
  return run;
}

// Entries compared to a tolerance scaled by their own row and column stiffness.
void ExpectSameStiffness(const float* a, const float* b, const int map[6], const int sign[6], double rel) {
  auto at = [](const float* g, int i, int j) { return static_cast<double>(g[(i - 1) + 6 * (j - 1)]); };
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i) {
      const double scale = std::sqrt(std::fabs(at(a, i, i) * at(a, j, j)));
      EXPECT_NEAR(at(b, map[i - 1], map[j - 1]), sign[i - 1] * sign[j - 1] * at(a, i, j), rel * scale)
          << "GRMAT(" << i << "," << j << ")";
    }
}

TEST(GroupStiffness, MovingTheGroupInPlanLeavesItUnchanged) {
  const std::vector<PileSpec> base = {{0.0f, 0.0f, 8.0f, 0.0f}, {3.0f, 0.5f}, {1.0f, 3.5f, 0.0f, -6.0f}, {4.0f, 4.0f, 5.0f, 5.0f}};
  std::vector<PileSpec> moved = base;
  for (PileSpec& p : moved) {
    p.x += 64.0f;
    p.y -= 32.0f;
  }
  const GroupRun a = RunGroup(base, 1.2f);
  const GroupRun b = RunGroup(moved, 1.2f, 1.0f, 64.0f, -32.0f);
  const int same[6] = {1, 2, 3, 4, 5, 6}, plus[6] = {1, 1, 1, 1, 1, 1};
  ExpectSameStiffness(a.grmat, b.grmat, same, plus, 1e-5);
  // The cap itself moves the same, load and all having moved with the group.
  for (int i = 1; i <= 6; ++i)
    EXPECT_NEAR(b.e->ws.CapDispInc(i), a.e->ws.CapDispInc(i), 1e-5 * std::fabs(a.e->ws.CapDispInc(i)) + 1e-12);
  // GRMAT is GroupK in external axes: Z is internal 1, rotation about Y internal 3.
  float k[36];
  AssembleGroupStiffness(*a.e, k);
  EXPECT_EQ(a.grmat[(3 - 1) + 6 * (3 - 1)], k[0]);
  EXPECT_EQ(a.grmat[(1 - 1) + 6 * (5 - 1)], k[(2 - 1) + 6 * (3 - 1)]);
}

TEST(GroupStiffness, TurningTheLayoutBy90DegreesSwapsXAndY) {
  // An L-shaped group of vertical piles, no symmetry of its own; turned by +90 degrees
  // (x, y) -> (-y, x). Force X becomes force Y, moment about X becomes moment about Y.
  const std::vector<PileSpec> base = {{0.0f, 0.0f}, {3.0f, 0.0f}, {6.0f, 0.0f}, {0.0f, 2.5f}};
  std::vector<PileSpec> turned;
  for (const PileSpec& p : base) turned.push_back({-p.y, p.x});
  const GroupRun a = RunGroup(base, 1.0f);
  const GroupRun b = RunGroup(turned, 1.0f);
  // Movements turn as vectors: X -> Y, Y -> -X, about X -> about Y, about Y -> -about X.
  // The external rotation about Y is the engine's XZ rotation, which tilts +X piles down,
  // so it counts against the right-handed sense; the signs below follow from that.
  const int map[6] = {2, 1, 3, 5, 4, 6}, sign[6] = {1, -1, 1, -1, 1, 1};
  ExpectSameStiffness(a.grmat, b.grmat, map, sign, 2e-4);
  // Tilting about X and about Y differ for this layout, so the swap is a real one.
  EXPECT_GT(std::fabs(a.grmat[21] - a.grmat[28]), 0.1 * a.grmat[21]);
}

TEST(GroupStiffness, CapMovementAndAllIncrementsAreExactlyLinearInTheLoads) {
  const std::vector<PileSpec> piles = {{0.0f, 0.0f, 8.0f, 0.0f}, {3.0f, 0.5f}, {1.0f, 3.5f, 0.0f, -6.0f}};
  const GroupRun a = RunGroup(piles, 0.8f);
  const GroupRun b = RunGroup(piles, 0.8f, 2.0f);
  const Workspace& wa = a.e->ws;
  const Workspace& wb = b.e->ws;
  for (int i = 0; i < 36; ++i) EXPECT_EQ(a.grmat[i], b.grmat[i]);
  for (int i = 1; i <= 6; ++i) {
    EXPECT_NE(wa.CapDispInc(i), 0.0f);
    EXPECT_EQ(wb.CapDispInc(i), 2.0f * wa.CapDispInc(i)) << i;
  }
  const int N = wa.SoilDispInc.size();
  for (int r = 1; r <= N; ++r) {
    ASSERT_EQ(wb.StressAxialInc(r), 2.0f * wa.StressAxialInc(r)) << r;
    ASSERT_EQ(wb.StressXInc(r), 2.0f * wa.StressXInc(r)) << r;
    ASSERT_EQ(wb.StressTorsionInc(r), 2.0f * wa.StressTorsionInc(r)) << r;
    ASSERT_EQ(wb.SoilDispInc(r), 2.0f * wa.SoilDispInc(r)) << r;
    ASSERT_EQ(wb.LoadAxialInc(r), 2.0f * wa.LoadAxialInc(r)) << r;
    ASSERT_EQ(wb.MomentYZInc(r), 2.0f * wa.MomentYZInc(r)) << r;
  }
}

TEST(GroupStiffness, SymmetricGroupSettlesWithoutTiltAndSharesTheLoadEqually) {
  const int n = 6;
  auto e = MakeGroup({{-1.5f, -1.5f}, {1.5f, -1.5f}, {1.5f, 1.5f}, {-1.5f, 1.5f}}, n);
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
  // Down each pile the load falls by the shaft shear of each element and ends at the
  // base pressure times the base area; the soil moves by G times the stresses.
  const float h = 10.0f / n, Ds = 0.8f;
  for (int k = 1; k <= n; ++k) {
    const float drop = w.LoadAxialInc(k) - w.LoadAxialInc(k + 1);
    EXPECT_NEAR(drop, w.StressAxialInc(k) * h * kPi * Ds, 1e-4f * w.LoadAxialInc(1)) << k;
  }
  EXPECT_FLOAT_EQ(w.LoadAxialInc(n + 1), w.StressAxialInc(n + 1) * kPi * Ds * Ds / 4.0f);
}

TEST(GroupStiffness, TransverseLoadsDownThePileAreMomentsOfTheStressesBelow) {
  const int n = 5;
  auto e = MakeGroup({{0.0f, 0.0f}, {2.5f, 0.0f}}, n);
  e->actions.Fx = 200.0f;
  e->actions.Fy = -120.0f;
  e->actions.Mz = 50.0f;
  testing::Assemble(*e);
  ASSERT_EQ(testing::RunIncrement(*e, 1), 1);
  const Workspace& w = e->ws;
  const double h = 2.0, Ds = 0.8;
  for (int p = 1; p <= 2; ++p) {
    for (int k = 1; k <= n; ++k) {
      // Forces of the elements k..n below the top of element k, and their moments
      // about it: each element's force acts at its centre, (j - k + 0.5) h below.
      double vx = 0, mx = 0, vy = 0, my = 0, tq = 0, scale_m = 0, scale_t = 0;
      for (int j = k; j <= n; ++j) {
        const int q = (p - 1) * n + j;
        const double fx = w.StressXInc(q) * Ds * h, fy = w.StressYInc(q) * Ds * h;
        vx += fx;
        vy += fy;
        mx -= fx * (j - k + 0.5) * h;
        my -= fy * (j - k + 0.5) * h;
        tq += w.StressTorsionInc(q) * M_PI * Ds * h * Ds / 2;
        scale_m += std::fabs(fx * (j - k + 0.5) * h) + std::fabs(fy * (j - k + 0.5) * h);
        scale_t += std::fabs(w.StressTorsionInc(q) * M_PI * Ds * h * Ds / 2);
      }
      const int q = (p - 1) * n + k;
      EXPECT_NEAR(w.ShearXInc(q), vx, 1e-5 * scale_m + 1e-4) << p << "," << k;
      EXPECT_NEAR(w.ShearYInc(q), vy, 1e-5 * scale_m + 1e-4) << p << "," << k;
      EXPECT_NEAR(w.MomentXZInc(q), mx, 1e-5 * scale_m + 1e-4) << p << "," << k;
      EXPECT_NEAR(w.MomentYZInc(q), my, 1e-5 * scale_m + 1e-4) << p << "," << k;
      EXPECT_NEAR(w.TorqueInc(q), tq, 1e-5 * scale_t + 1e-5) << p << "," << k;
    }
  }
}

TEST(GroupStiffness, FailedInversionComesAfterTheStiffnessCallbacks) {
  auto e = MakeGroup({{0.0f, 0.0f}, {3.0f, 0.0f}}, 3);
  testing::Assemble(*e);
  StiffnessCapture::Attach(*e);
  // Zero tractions: no stiffness at all.
  SplitTractions(*e);
  CalcHeadLoads(*e, 1);
  e->project.ErrorCode = 0;
  EXPECT_EQ(CalcStiffnessDisplsStressesLoads(*e, 1), 0);
  EXPECT_EQ(e->project.ErrorCode, 258);
  EXPECT_EQ(StiffnessCapture::calls, 1);
  EXPECT_EQ(StiffnessCapture::At(3, 3), 0.0f);
}

}  // namespace
}  // namespace quellon
