// The torsion blocks sum Mindlin's solution round the shaft four points at a time. Each
// entry must be exactly the sum of the one-point kernels, taken in order.
#include <gtest/gtest.h>

#include "engine/utilities.h"
#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

TEST(RingSums, OwnTorsionEntryIsTheOrderedSumOfPointKernels) {
  Engine e;
  SetGround(e, TwoLayers(), 1, 0.0f);
  const int n = 3;
  SetPiles(e, n, {{9.0f, 0.8f, 0.8f, 7.0f, -4.0f, 0.0f, 0.0f}});
  CreateSoilArrays(e);
  AssembleSoilFlexibility(e, 1);
  const Pile& pile = e.foundation.Piles(1);
  const float a = DegreesToRadians(pile.RakeX), ee = DegreesToRadians(pile.RakeY);
  const float h = pile.Length / n, r = pile.ShaftDiameter * 0.5f, hs = h / 20.0f;
  const float dzs = std::cos(a) * std::cos(ee) * hs, dxs = -std::sin(a) * hs, dys = -std::sin(ee) * hs;
  const float Wq = dzs * 0.07854f * r;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      const float k = static_cast<float>(i) - 0.5f;
      const SoilPoint F{r - k * std::sin(a) * h, -k * std::sin(ee) * h,
                        k * std::cos(a) * std::cos(ee) * h};
      float sum = 0.0f;
      for (int s = 1; s <= 20; ++s) {
        const float m = static_cast<float>(20 * (j - 1) + s) - 0.5f;
        const float zm = m * dzs;
        const float nu = PoissonRatioAverage(e.borehole, F.z, zm);
        const float A = MindlinFactor(nu, PoulosVerticalStiffnessAverage(e.borehole, F.z, zm));
        float T = -0.03927f;
        for (int point = 1; point <= 80; ++point) {
          T = T + 0.07854f;
          const SoilPoint Q{std::cos(T) * (std::cos(a) * r) + m * dxs, std::sin(T) * (std::cos(ee) * r) + m * dys, zm};
          sum += (MindlinTorsionX(A, nu, F, Q, Wq * std::sin(T), a) +
                  MindlinTorsionY(A, nu, F, Q, Wq * std::cos(T), ee)) *
                 (1.0f / r);
        }
      }
      EXPECT_EQ(e.ws.soil_K(3 * n + 1 + i, 3 * n + 1 + j), sum) << i << ", " << j;
    }
  }
}

TEST(RingSums, TorsionBetweenPilesIsTheOrderedSumOfPointKernels) {
  Engine e;
  SetGround(e, OneLayer(), 1, 0.0f);
  const int n = 2;
  // Vertical piles, so the direction sums are the plain influences.
  SetPiles(e, n, {{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}, {6.0f, 0.6f, 0.6f, 0.0f, 0.0f, -2.0f, 1.5f}});
  e.project.InteractionFlag = 1;
  e.actions.Mz = 10.0f;
  CreateSoilArrays(e);
  AssembleSoilFlexibility(e, 1);
  const float A = MindlinFactor(0.25f, 10000.0f);
  const Pile& q = e.foundation.Piles(2);
  const float rp = 0.5f, rq = q.ShaftDiameter * 0.5f, hs = q.Length / n * 0.125f, Wq = hs * 0.19635f * rq;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      const SoilPoint F{-0.0f, -0.0f, (static_cast<float>(i) - 0.5f) * 5.0f};
      float sum = 0.0f;
      for (int v = 1; v <= 8; ++v) {
        const float zm = (static_cast<float>(8 * (j - 1) + v) - 0.5f) * hs;
        float T = -0.098175f;
        for (int k = 1; k <= 32; ++k) {
          T = T + 0.19635f;
          const SoilPoint Q{std::cos(T) * rq + 2.0f + 0.0f, std::sin(T) * rq + 1.5f + 0.0f, zm};
          const Influences I = MindlinInfluences(0.25f, F, Q);
          sum += (std::cos(T) * I.Iyy + std::sin(T) * I.Ixx) * A * Wq * (1.0f / rp);
        }
      }
      EXPECT_EQ(Block(e, 1, 2, 3 * n + 1 + i, 3 * n + 1 + j), -sum) << i << ", " << j;
    }
  }
}

}  // namespace
}  // namespace quellon

namespace quellon {
namespace {

using namespace soil_test;

TEST(GroupedElements, PairShaftEntriesAreThoseOfOneElementAtATime) {
  // Six elements: one group of four field elements and two taken singly. Vertical piles
  // keep the direction sums to the plain influences; two layers and the smoothed moduli
  // make every element's ground its own.
  Engine e;
  SetGround(e, TwoLayers(), 2, 0.0f);
  const int n = 6;
  SetPiles(e, n, {{12.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}, {9.0f, 0.7f, 0.7f, 0.0f, 0.0f, 2.5f, -1.0f}});
  e.project.InteractionFlag = 1;
  CreateSoilArrays(e);
  AssembleSoilFlexibility(e, 1);
  const SoilGround g = GroundOf(e);
  const float hp = 12.0f / n, hq = 9.0f / n;
  const float Ws = 0.7f * 3.1415927f * 9.0f / n, Wt = Ws / 3.1415927f;
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const float zi = (static_cast<float>(i) - 0.5f) * hp, zj = (static_cast<float>(j) - 0.5f) * hq;
      const SoilValues v = PairSoilValues(g, zi, 1, i, zj, 2, j);
      const float Am = (v.Av + v.Ah) * 0.5f;
      const Influences I = MindlinInfluences(v.nu, SoilPoint{-2.5f, 1.0f, zi}, SoilPoint{-0.0f, -0.0f, zj});
      EXPECT_EQ(Block(e, 1, 2, i, j), v.Av * Ws * I.Izz) << i << ", " << j;
      EXPECT_EQ(Block(e, 1, 2, i, n + 1 + j), Am * Wt * I.Izx) << i << ", " << j;
      EXPECT_EQ(Block(e, 1, 2, n + 1 + i, j), Am * Ws * I.Ixz) << i << ", " << j;
      EXPECT_EQ(Block(e, 1, 2, n + 1 + i, n + 1 + j), v.Ah * Wt * I.Ixx) << i << ", " << j;
      EXPECT_EQ(Block(e, 1, 2, i, 2 * n + 1 + j), Am * Wt * I.Izy) << i << ", " << j;
      EXPECT_EQ(Block(e, 1, 2, 2 * n + 1 + i, j), Am * Ws * I.Iyz) << i << ", " << j;
      EXPECT_EQ(Block(e, 1, 2, 2 * n + 1 + i, 2 * n + 1 + j), v.Ah * Wt * I.Iyy) << i << ", " << j;
    }
  }
}

}  // namespace
}  // namespace quellon
