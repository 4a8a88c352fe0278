// Assembly of G: reuse of a pile's own block, the interaction limit, torsion between near
// piles, the signs of the pair blocks, the rigid layer correction, and independence from
// the number of threads. (Every pair block against the interaction routine alone is in
// block_reuse_test.cpp.)
#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

PileData At(PileData s, float x, float y = 0.0f) {
  s.x = x, s.y = y;
  return s;
}

// Whether the block of q on p is zero in its rows and columns from `first` on.
bool Zero(const Model& m, int p, int q, int first = 1) {
  for (int u = first; u <= UnknownsPerPile(m.e); ++u) {
    for (int v = first; v <= UnknownsPerPile(m.e); ++v) {
      if (m.Block(p, q, u, v) != 0.0f) return false;
    }
  }
  return true;
}

// Before each pile soil_K is overwritten with a sentinel, so a pile whose own block in G
// holds the sentinel has reused soil_K. The reference pile starts stale, as after an
// earlier pass: the first pile must build all the same.
std::vector<bool> Rebuilt(const std::vector<PileData>& piles) {
  Model m(OneLayer(), 1, 0.0f, 2, piles);
  m.CreateArrays();
  m.e.project.ReferencePile = 1;
  std::vector<bool> rebuilt;
  for (int p = 1; p <= static_cast<int>(piles.size()); ++p) {
    m.e.ws.soil_K.fill(7.0f);
    AssembleSoilFlexibility(m.e, p);
    m.e.project.ReferencePile = p;
    rebuilt.push_back(m.Block(p, p, 1, 1) != 7.0f);
  }
  return rebuilt;
}

TEST(OwnBlockReuse, LooksOnePileBackWithAnExactLikenessTest) {
  PileData longer = kPile, hollow = kPile, raked = kPile, nearly = kPile;
  longer.L = 12.0f;
  hollow.Di = 0.5f;  // enters no formula, but is part of the likeness
  raked.rake_x = 1.0f;
  nearly.rake_x = 1.000001f;
  using Built = std::vector<bool>;
  EXPECT_EQ(Rebuilt({kPile, At(kPile, 5), At(longer, 10), At(kPile, 15)}), (Built{true, false, true, true}));
  EXPECT_EQ(Rebuilt({kPile, At(longer, 5), At(kPile, 10), At(longer, 15)}), (Built{true, true, true, true}));
  EXPECT_EQ(Rebuilt({kPile, At(hollow, 5)}), (Built{true, true}));
  EXPECT_EQ(Rebuilt({raked, At(nearly, 5)}), (Built{true, true}));
}

TEST(OwnBlock, BaseLoadsOverTheMeanAreaOnlyWhenUnderReamed) {
  // The base of pile 2 as the source on its own first element and on that of pile 1, and
  // as the field of its own first element.
  auto entries = [](float Db) {
    PileData b = At(kPile, 3);
    b.Db = Db;
    Model m(OneLayer(), 1, 0.0f, 3, {kPile, b});
    m.Assemble();
    return std::vector<float>{m.Block(2, 2, 1, 4), m.Block(1, 2, 1, 4), m.Block(2, 2, 4, 1)};
  };
  const std::vector<float> a = entries(1.0f), reamed = entries(1.5f), narrow = entries(0.5f);
  for (int k = 0; k < 2; ++k) {
    EXPECT_FLOAT_EQ(reamed[k] / a[k], 1.5625f);  // ((1 + 1.5) / 2)^2
    EXPECT_FLOAT_EQ(narrow[k] / a[k], 0.25f);    // the base's own area
  }
  EXPECT_EQ(reamed[2], a[2]);
}

TEST(PairLimits, InteractionAndTorsionReachFromTheSourcePilesDiameter) {
  // Pile 1 (diameter 1) at the origin, pile 2 at x; the whole block, or its torsion part.
  const float beyond_50 = std::nextafter(50.0f, 100.0f), within_10 = std::nextafter(10.0f, 0.0f);
  const struct {
    int flag;
    float distance, x, Ds, Mz;
    bool torsion, zero_1_2, zero_2_1;
  } cases[] = {{2, 0, 30, 0.5f, 0, false, true, false},  // 50 Ds: 25 m from the small source, 50 m from the large
               {2, 0, beyond_50, 1, 0, false, true, true},
               {2, 0, 50, 1, 0, false, false, false},  // at the limit the piles still interact
               {1, 0, 1500, 1, 0, false, true, true},  // 1000 Ds
               {3, 1499, 1500, 1, 0, false, true, true},
               {3, 1500, 1500, 1, 0, false, false, false},
               {0, 0, 1500, 1, 0, false, false, false},  // an unknown flag sets no limit
               {1, 0, 10, 1, 50, true, true, true},      // torsion only strictly within 10 Ds
               {1, 0, within_10, 1, 50, true, false, false},
               {1, 0, 9, 0.5f, 50, true, true, false},  // 5 m from the small source, 10 m from the large
               {1, 0, within_10, 1, 0, true, true, true},
               {1, 0, within_10, 1, -1e-3f, true, false, false}};  // a torque of either sign
  for (const auto& c : cases) {
    PileData b = At(kPile, c.x);
    b.Ds = b.Db = c.Ds;
    Model m(TwoLayers(), 1, 0.0f, 3, {kPile, b}, c.flag, c.Mz, c.distance);
    m.Assemble();
    const int first = c.torsion ? 11 : 1;
    EXPECT_EQ(Zero(m, 1, 2, first), c.zero_1_2) << "flag " << c.flag << " at " << c.x << ", Mz " << c.Mz;
    EXPECT_EQ(Zero(m, 2, 1, first), c.zero_2_1) << "flag " << c.flag << " at " << c.x << ", Mz " << c.Mz;
  }
}

TEST(PairBlocks, CouplingsChangeSignBetweenTheOrdersAndElementsAreReciprocal) {
  // Equal vertical piles in uniform ground. With six elements rows 1..4 of a column are
  // computed four at a time and rows 5 and 6 one by one.
  const int n = 6;
  Model m(OneLayer(), 1, 0.0f, n, {kPile, At(kPile, 4, 1.5f)});
  m.Assemble();
  auto axial = [n](int u) { return u <= n + 1; };
  for (int u = 1; u <= 3 * n + 1; ++u) {
    for (int v = 1; v <= 3 * n + 1; ++v) {
      const float a = m.Block(1, 2, u, v);
      EXPECT_EQ(m.Block(2, 1, u, v), axial(u) == axial(v) ? a : -a) << u << ", " << v;
    }
  }
  EXPECT_NE(m.Block(1, 2, 1, n + 2), 0.0f);
  EXPECT_NE(m.Block(1, 2, 2 * n + 2, 1), 0.0f);
  // The displacement of element i under a load on element j is that of j under a load on
  // i, in each direction.
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j < i; ++j) {
      for (int offset : {0, n + 1, 2 * n + 1}) {
        const float a = m.Block(1, 2, offset + i, offset + j), b = m.Block(1, 2, offset + j, offset + i);
        EXPECT_NEAR(a, b, 1e-5f * std::fabs(a)) << offset << ": " << i << ", " << j;
      }
    }
  }
}

TEST(RigidLayer, CorrectsOnlyTheAxialAndBaseRowsAndNeedsALimitBetweenPiles) {
  const std::vector<PileData> piles{{10, 1, 1.2f, 5, 0, 0, 0}, {8, 0.8f, 0.8f, 0, -5, 3, 1}};
  Model plain(TwoLayers(), 2, 0.0f, 3, piles, 1, 10.0f), rigid(TwoLayers(), 2, 15.0f, 3, piles, 1, 10.0f);
  plain.Assemble();
  rigid.Assemble();
  const int n = 3;
  for (int p = 1; p <= 2; ++p) {
    for (int q = 1; q <= 2; ++q) {
      for (int u = 1; u <= 4 * n + 1; ++u) {
        for (int v = 1; v <= 4 * n + 1; ++v) {
          // Not in the torsion columns between piles; a pile's own block has no coupling.
          const bool corrected = u <= n + 1 && (p == q ? v <= n + 1 : v <= 3 * n + 1);
          EXPECT_EQ(plain.Block(p, q, u, v) != rigid.Block(p, q, u, v), corrected)
              << "block (" << p << ", " << q << ") entry (" << u << ", " << v << ")";
        }
      }
    }
  }
  // A flag without a limit corrects only the piles at one plan position: their own blocks.
  const std::vector<PileData> two{kPile, At(kPile, 3)};
  Model unlimited(TwoLayers(), 1, 20.0f, 3, two, 0), uncorrected(TwoLayers(), 1, 0.0f, 3, two, 0);
  unlimited.Assemble();
  uncorrected.Assemble();
  EXPECT_EQ(unlimited.Block(1, 2, 1, 1), uncorrected.Block(1, 2, 1, 1));
  EXPECT_NE(unlimited.Block(1, 1, 1, 1), uncorrected.Block(1, 1, 1, 1));
}

TEST(Parallel, GIsBitIdenticalWithOneThreadAndWithTwo) {
  const std::vector<PileData> piles{{10, 1, 1.5f, 10, 0, 0, 0},
                                    {8, 0.8f, 0.8f, 0, -5, 3, 1},
                                    {10, 1, 1.5f, 10, 0, -3, 0.5f},
                                    {12, 0.9f, 0.9f, 4, 4, 1, -3},
                                    {8, 0.8f, 0.8f, 0, -5, 5, 4}};
  const int saved = omp_get_max_threads(), n = 16;  // enough that the work is shared out
  omp_set_num_threads(1);
  Model serial(TwoLayers(), 2, 20.0f, n, piles, 1, 30.0f);
  serial.Assemble();
  omp_set_num_threads(2);
  Model parallel(TwoLayers(), 2, 20.0f, n, piles, 1, 30.0f);
  parallel.Assemble();
  omp_set_num_threads(saved);
  const RealMatrix &a = serial.e.ws.G, &b = parallel.e.ws.G;
  ASSERT_EQ(a.count(), b.count());
  EXPECT_EQ(std::memcmp(a.data(), b.data(), a.count() * sizeof(float)), 0);
  // Every entry a number, every flexibility on the diagonal positive.
  for (std::size_t k = 0; k < a.count(); ++k) ASSERT_TRUE(std::isfinite(a.data()[k])) << k;
  for (int u = 1; u <= a.rows(); ++u) EXPECT_GT(a(u, u), 0.0f) << u;
}

}  // namespace
}  // namespace quellon
