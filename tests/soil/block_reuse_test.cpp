// Blocks computed once for every group of pairs that share them, and the soil movements
// of a linear run once G has become its system: both must give exactly the floats of a
// block computed for each pair and of the product with G itself.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include "engine/result_checks.h"
#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

struct Group {
  const char* what;
  std::vector<PileData> piles;
  int n;
  float rigid;
  float Mz;
};

std::vector<PileData> Row(int count, float spacing, float x0 = 0.1f) {
  std::vector<PileData> piles;
  for (int k = 0; k < count; ++k) piles.push_back({10, 1, 1, 0, 0, x0 + spacing * static_cast<float>(k), 0.3f});
  return piles;
}

std::vector<PileData> Grid() {
  std::vector<PileData> piles;
  for (int k = 0; k < 9; ++k)
    piles.push_back({10, 1, 1, 0, 0, 0.1f + 3.0f * static_cast<float>(k % 3), 0.7f * static_cast<float>(k / 3)});
  piles[4].rake_x = 8;  // a class of its own in the middle
  piles[7].L = 12;
  return piles;
}

bool Same(float a, float b) { return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b); }

TEST(BlockReuse, SharedBlocksAndTheSoilMovementsWithoutGAreTheFloatsOfEachPair) {
  // A long row keeps its blocks (they are few beside G); a grid with a raked and a longer
  // pile keeps only its torsion blocks and recomputes the rest for the soil movements.
  const Group groups[] = {{"row of 45, blocks kept", Row(45, 2.5f, 0.0f), 1, 0.0f, 40.0f},
                          {"grid of 9, torsion blocks kept", Grid(), 3, 20.0f, 40.0f}};
  for (const Group& c : groups) {
    SCOPED_TRACE(c.what);
    Model m(TwoLayers(), 2, c.rigid, c.n, c.piles, 1, c.Mz);
    const int P = static_cast<int>(c.piles.size()), M = 4 * c.n + 1, N = M * P;
    ASSERT_EQ(Create2DLogicalMatrix(m.e, m.e.ws.SoilBlockIndex, P, P) *
                  Create2DLogicalMatrix(m.e, m.e.ws.SoilBlockState, P, P),
              1);
    m.Assemble();
    Workspace& w = m.e.ws;
    EXPECT_EQ(w.SoilPairBlocks.empty(), c.piles.size() < 40);
    EXPECT_EQ(w.SoilTorsionBlocks.empty(), c.piles.size() >= 40);  // then in the pair blocks

    // Every pair block as computed for the pair alone.
    const SoilGround g = GroundOf(m.e);
    const InteractionRule rule = InteractionRuleOf(m.e);
    RealMatrix block;
    block.resize(M, M);
    bool same = true;
    for (int p = 1; p <= P; ++p) {
      for (int q = 1; q <= P && same; ++q) {
        if (q == p) continue;
        const PileAxis a = MakePileAxis(g, m.e.foundation.Piles(p), m.e.foundation.Frame(p), p),
                       b = MakePileAxis(g, m.e.foundation.Piles(q), m.e.foundation.Frame(q), q);
        BuildPileInteractionMatrix(g, rule, a, b, block, true);
        if (c.rigid != 0.0f) RigidLayerInteractionCorrection(g, rule, a, b, block);
        for (int v = 1; v <= M; ++v)
          for (int u = 1; u <= M; ++u) same = same && Same(block(u, v), m.Block(p, q, u, v));
        EXPECT_EQ(w.SoilBlockState(p, q), kBlockFinite);
      }
    }
    EXPECT_TRUE(same);

    // G t, then the same once G has gone the way of a linear run's system.
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> stress(-50.0f, 50.0f);
    std::vector<float> t(static_cast<std::size_t>(N)), expected(static_cast<std::size_t>(N), 0.0f), out(t.size());
    for (float& x : t) x = stress(rng);
    for (int j = 1; j <= N; ++j)
      for (int i = 1; i <= N; ++i)
        expected[static_cast<std::size_t>(i - 1)] =
            expected[static_cast<std::size_t>(i - 1)] + w.G(i, j) * t[static_cast<std::size_t>(j - 1)];
    w.G.release();
    ASSERT_TRUE(SoilFlexibilityTimes(m.e, t.data(), out.data()));
    for (int i = 0; i < N; ++i) ASSERT_TRUE(Same(out[static_cast<std::size_t>(i)], expected[static_cast<std::size_t>(i)])) << i;
  }
}

}  // namespace
}  // namespace quellon
