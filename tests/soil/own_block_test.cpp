// A pile's own soil block: which areas, rakes, moduli and treatments enter which part.
#include <gtest/gtest.h>

#include <vector>

#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

// soil_K of one pile, built as the assembly builds it.
RealMatrix OwnBlock(const PileData& pile, int n, const std::vector<LayerData>& ground, int averaging = 1,
                    float rigid = 0.0f) {
  Engine e;
  SetGround(e, ground, averaging, rigid);
  SetPiles(e, n, {pile});
  CreateSoilArrays(e);
  AssembleSoilFlexibility(e, 1);
  return e.ws.soil_K;
}

TEST(OwnBlock, BaseLoadsTheShaftOverTheMeanAreaOnlyWhenUnderReamed) {
  const int n = 3;
  const PileData straight{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData reamed = straight, narrow = straight;
  reamed.Db = 1.5f;
  narrow.Db = 0.5f;
  const RealMatrix a = OwnBlock(straight, n, OneLayer());
  const RealMatrix b = OwnBlock(reamed, n, OneLayer());
  const RealMatrix c = OwnBlock(narrow, n, OneLayer());
  for (int i = 1; i <= n; ++i) {
    // The kernel is the same; only the area of the base as a source changes.
    EXPECT_FLOAT_EQ(b(i, n + 1) / a(i, n + 1), 1.5625f);  // ((1 + 1.5)/2)^2
    EXPECT_FLOAT_EQ(c(i, n + 1) / a(i, n + 1), 0.25f);    // the base's own area
    EXPECT_EQ(b(n + 1, i), a(n + 1, i));                  // the shaft as source is unchanged
  }
}

TEST(OwnBlock, EachTransverseBlockFollowsItsOwnRake) {
  const int n = 4;
  const PileData vertical{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData raked = vertical;
  raked.rake_x = 5.0f;
  const RealMatrix v = OwnBlock(vertical, n, TwoLayers());
  const RealMatrix r = OwnBlock(raked, n, TwoLayers());
  bool x_differs = false;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      EXPECT_EQ(r(2 * n + 1 + i, 2 * n + 1 + j), v(2 * n + 1 + i, 2 * n + 1 + j));  // Y: RakeY = 0
      x_differs = x_differs || r(n + 1 + i, n + 1 + j) != v(n + 1 + i, n + 1 + j);
    }
  }
  EXPECT_TRUE(x_differs);
}

TEST(OwnBlock, TransverseBlocksReadOnlyTheHorizontalModulus) {
  const int n = 3;
  const PileData pile{10.0f, 1.0f, 1.0f, 4.0f, -2.0f, 0.0f, 0.0f};
  std::vector<LayerData> stiffer = TwoLayers();
  for (LayerData& l : stiffer) {
    l.Ev *= 3.0f;
    l.dEv *= 3.0f;
  }
  const RealMatrix a = OwnBlock(pile, n, TwoLayers(), 1, 20.0f);
  const RealMatrix b = OwnBlock(pile, n, stiffer, 2, 20.0f);
  for (int u = n + 2; u <= 3 * n + 1; ++u) {
    for (int v = n + 2; v <= 3 * n + 1; ++v) EXPECT_EQ(a(u, v), b(u, v));
  }
  EXPECT_NE(a(1, 1), b(1, 1));
}

TEST(OwnBlock, TreatmentsAgreeInUniformGround) {
  const int n = 4;
  const PileData pile{12.0f, 0.9f, 1.2f, 6.0f, 3.0f, 0.0f, 0.0f};
  const RealMatrix mean = OwnBlock(pile, n, OneLayer(), 1, 25.0f);
  const RealMatrix smoothed = OwnBlock(pile, n, OneLayer(), 2, 25.0f);
  for (int u = 1; u <= 4 * n + 1; ++u) {
    for (int v = 1; v <= 4 * n + 1; ++v) {
      EXPECT_NEAR(smoothed(u, v), mean(u, v), 4e-6f * std::fabs(mean(u, v))) << u << ", " << v;
    }
  }
}

TEST(OwnBlock, OneElementPerPile) {
  const PileData pile{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  const RealMatrix k = OwnBlock(pile, 1, OneLayer());
  ASSERT_EQ(k.rows(), 5);
  // Transverse: the self integral of the one element plus its image term.
  const float c0 = MindlinCoefficient(0.25f) / 10000.0f;
  const float self = TransverseSelfIntegral(5.0f, 0.5f, c0, 0.25f) +
                     MindlinTransverseImage(c0, 0.25f, {0.0f, 0.0f, 5.0f}, {0.0f, 0.0f, 5.0f}, 10.0f, 1.5707964f);
  EXPECT_FLOAT_EQ(k(3, 3), self);
  EXPECT_EQ(k(4, 4), k(3, 3));
  EXPECT_GT(k(5, 5), 0.0f);
  EXPECT_GT(k(1, 2), 0.0f);
  EXPECT_GT(k(2, 1), 0.0f);
}

}  // namespace
}  // namespace quellon
