// Assembly of G: reuse of a pile's own block, the interaction limit, torsion between
// near piles, the rigid layer correction and independence from the number of threads.
#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "engine/notify.h"
#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

constexpr float kSentinel = 7.0f;

// Assembles the piles in order; before each pile after the first soil_K is overwritten
// with a sentinel, so a pile whose own block in G holds the sentinel reused soil_K.
std::vector<bool> RebuiltPiles(const std::vector<PileData>& piles) {
  Engine e;
  SetGround(e, OneLayer(), 1, 0.0f);
  SetPiles(e, 2, piles);
  CreateSoilArrays(e);
  std::vector<bool> rebuilt;
  for (int p = 1; p <= static_cast<int>(piles.size()); ++p) {
    e.ws.soil_K.fill(kSentinel);
    AssembleSoilFlexibility(e, p);
    e.project.ReferencePile = p;
    rebuilt.push_back(Block(e, p, p, 1, 1) != kSentinel);
  }
  return rebuilt;
}

TEST(OwnBlockReuse, LooksOnePileBackWithAnExactLikenessTest) {
  const PileData a{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData b = a;
  b.L = 12.0f;
  auto at = [](PileData s, float x) {
    s.x = x;
    return s;
  };
  EXPECT_EQ(RebuiltPiles({a, at(a, 5), at(b, 10), at(a, 15)}), (std::vector<bool>{true, false, true, true}));
  EXPECT_EQ(RebuiltPiles({a, at(b, 5), at(a, 10), at(b, 15)}), (std::vector<bool>{true, true, true, true}));

  PileData hollow = at(a, 5);
  hollow.Di = 0.5f;  // not read by any formula, but part of the likeness
  EXPECT_EQ(RebuiltPiles({a, hollow}), (std::vector<bool>{true, true}));

  PileData raked = at(a, 0), nearly = at(a, 5);
  raked.rake_x = 1.0f;
  nearly.rake_x = 1.000001f;
  ASSERT_NE(raked.rake_x, nearly.rake_x);
  EXPECT_EQ(RebuiltPiles({raked, nearly}), (std::vector<bool>{true, true}));
}

TEST(OwnBlockReuse, IdenticalPilesShareTheirBlockAndTheFirstPileAlwaysBuilds) {
  Engine e;
  SetGround(e, TwoLayers(), 2, 20.0f);
  SetPiles(e, 2, {{10.0f, 1.0f, 1.0f, 4.0f, 0.0f, 0.0f, 0.0f}, {10.0f, 1.0f, 1.0f, 4.0f, 0.0f, 4.0f, 0.0f}});
  CreateSoilArrays(e);
  e.project.ReferencePile = 1;  // stale from an earlier pass: pile 1 must build all the same
  e.ws.soil_K.fill(kSentinel);
  AssembleAll(e);
  for (int u = 1; u <= 9; ++u) {
    for (int v = 1; v <= 9; ++v) ASSERT_EQ(Block(e, 1, 1, u, v), Block(e, 2, 2, u, v));
  }
  EXPECT_NE(Block(e, 1, 1, 1, 1), kSentinel);
}

// A group of piles on level ground with the given rule; G after assembly.
struct Group {
  Engine e;
  Group(const std::vector<PileData>& piles, int flag, float Mz, float rigid = 0.0f, int averaging = 1,
        float distance = 0.0f, int n = 3) {
    SetGround(e, TwoLayers(), averaging, rigid);
    SetPiles(e, n, piles);
    e.project.InteractionFlag = flag;
    e.project.InteractionDistance = distance;
    e.actions.Mz = Mz;
    CreateSoilArrays(e);
    AssembleAll(e);
  }
  bool PairIsZero(int p, int q, int first = 1, int last = 13) const {
    for (int u = first; u <= last; ++u) {
      for (int v = first; v <= last; ++v) {
        if (Block(e, p, q, u, v) != 0.0f) return false;
      }
    }
    return true;
  }
};

TEST(InteractionLimit, TakesTheSourcePilesDiameter) {
  // Flag 2: 50 shaft diameters of the source pile.
  const PileData big{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  const PileData small{10.0f, 0.5f, 0.5f, 0.0f, 0.0f, 30.0f, 0.0f};
  const Group g({big, small}, 2, 0.0f);
  EXPECT_TRUE(g.PairIsZero(1, 2));   // source of 0.5 m: limit 25 m < 30 m
  EXPECT_FALSE(g.PairIsZero(2, 1));  // source of 1 m: limit 50 m
}

TEST(InteractionLimit, SpacingJustBeyondTheLimitGivesAZeroBlock) {
  const PileData a{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData b = a;
  b.x = std::nextafter(50.0f, 100.0f);
  EXPECT_TRUE(Group({a, b}, 2, 0.0f).PairIsZero(1, 2));
  b.x = 50.0f;  // at the limit the piles still interact
  EXPECT_FALSE(Group({a, b}, 2, 0.0f).PairIsZero(1, 2));
}

TEST(InteractionLimit, CustomDistanceAndFlagWithoutLimit) {
  const PileData a{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData b = a;
  b.x = 1500.0f;
  EXPECT_TRUE(Group({a, b}, 1, 0.0f).PairIsZero(1, 2));   // beyond 1000 diameters
  EXPECT_TRUE(Group({a, b}, 3, 0.0f, 0.0f, 1, 1499.0f).PairIsZero(1, 2));
  EXPECT_FALSE(Group({a, b}, 3, 0.0f, 0.0f, 1, 1500.0f).PairIsZero(1, 2));
  EXPECT_FALSE(Group({a, b}, 0, 0.0f).PairIsZero(1, 2));  // an unknown flag sets no limit
}

TEST(TorsionBetweenPiles, OnlyUnderTorqueAndStrictlyWithinTenDiameters) {
  const PileData a{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData b = a;
  b.x = 10.0f;  // s = 10 Ds of the source
  EXPECT_TRUE(Group({a, b}, 1, 50.0f).PairIsZero(1, 2, 11, 13));
  b.x = std::nextafter(10.0f, 0.0f);
  const Group near({a, b}, 1, 50.0f);
  EXPECT_FALSE(near.PairIsZero(1, 2, 11, 13));
  EXPECT_FALSE(near.PairIsZero(2, 1, 11, 13));
  EXPECT_TRUE(Group({a, b}, 1, 0.0f).PairIsZero(1, 2, 11, 13));
  EXPECT_FALSE(Group({a, b}, 1, -1e-3f).PairIsZero(1, 2, 11, 13));  // a torque of either sign
}

TEST(TorsionBetweenPiles, MirroringTheFieldPileAboutTheSourceLeavesTheBlock) {
  // Source pile q = 1 raked, field piles on either side of it in X and in Y.
  const PileData q{10.0f, 0.8f, 0.8f, 6.0f, -3.0f, 0.0f, 0.0f};
  PileData p = {9.0f, 1.0f, 1.0f, 2.0f, 0.0f, 2.5f, 1.5f};
  auto torsion = [&](float x, float y) {
    PileData moved = p;
    moved.x = x;
    moved.y = y;
    Group g({q, moved}, 1, 25.0f);
    std::vector<float> block;
    for (int u = 11; u <= 13; ++u) {
      for (int v = 11; v <= 13; ++v) block.push_back(Block(g.e, 2, 1, u, v));
    }
    return block;
  };
  const std::vector<float> original = torsion(2.5f, 1.5f);
  EXPECT_NE(original[0], 0.0f);
  EXPECT_EQ(torsion(-2.5f, 1.5f), original);
  EXPECT_EQ(torsion(2.5f, -1.5f), original);
  EXPECT_EQ(torsion(-2.5f, -1.5f), original);
}

TEST(PairBlocks, CouplingTermsChangeSignBetweenTheTwoOrders) {
  // Equal vertical piles along X: axial, X and Y terms agree, axial-X couplings flip.
  const PileData a{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData b = a;
  b.x = 4.0f;
  const Group g({a, b}, 1, 0.0f);
  const int n = 3;
  for (int i = 1; i <= n + 1; ++i) {
    for (int j = 1; j <= n + 1; ++j) {
      EXPECT_EQ(Block(g.e, 1, 2, i, j), Block(g.e, 2, 1, i, j));  // axial and base
    }
  }
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      EXPECT_EQ(Block(g.e, 1, 2, n + 1 + i, n + 1 + j), Block(g.e, 2, 1, n + 1 + i, n + 1 + j));
      EXPECT_EQ(Block(g.e, 1, 2, 2 * n + 1 + i, 2 * n + 1 + j), Block(g.e, 2, 1, 2 * n + 1 + i, 2 * n + 1 + j));
      const float ax = Block(g.e, 1, 2, i, n + 1 + j);
      const float xa = Block(g.e, 1, 2, n + 1 + i, j);
      EXPECT_NE(ax, 0.0f);
      EXPECT_EQ(Block(g.e, 2, 1, i, n + 1 + j), -ax);
      EXPECT_EQ(Block(g.e, 2, 1, n + 1 + i, j), -xa);
    }
  }
}

// Blocks with and without the rigid layer: only the axial and base rows may change.
TEST(RigidLayer, CorrectsOnlyTheAxialAndBaseRows) {
  const std::vector<PileData> piles{{10.0f, 1.0f, 1.2f, 5.0f, 0.0f, 0.0f, 0.0f},
                                    {8.0f, 0.8f, 0.8f, 0.0f, -5.0f, 3.0f, 1.0f}};
  const Group plain(piles, 1, 10.0f, 0.0f, 2);
  const Group rigid(piles, 1, 10.0f, 15.0f, 2);
  const int n = 3;
  for (int p = 1; p <= 2; ++p) {
    for (int q = 1; q <= 2; ++q) {
      for (int u = 1; u <= 4 * n + 1; ++u) {
        for (int v = 1; v <= 4 * n + 1; ++v) {
          const float a = Block(plain.e, p, q, u, v), b = Block(rigid.e, p, q, u, v);
          // Axial and base rows are corrected, except the torsion columns between piles;
          // a pile's own block has no coupling to correct.
          const bool corrected = u <= n + 1 && (p == q ? v <= n + 1 : v <= 3 * n + 1);
          if (corrected) {
            EXPECT_NE(a, b) << "block (" << p << ", " << q << ") entry (" << u << ", " << v << ")";
          } else {
            EXPECT_EQ(a, b) << "block (" << p << ", " << q << ") entry (" << u << ", " << v << ")";
          }
        }
      }
    }
  }
}

TEST(RigidLayer, NoneAtDepthZeroAndNoneBetweenPilesWithoutALimit) {
  const std::vector<PileData> piles{{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f},
                                    {10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 3.0f, 0.0f}};
  // Depth 0 means no rigid layer; the blocks equal those built by the routines alone.
  const Group g(piles, 1, 0.0f, 0.0f);
  const SoilGround ground = GroundOf(g.e);
  RealMatrix pair;
  pair.resize(13, 13);
  const PileAxis p1 = MakePileAxis(ground, g.e.foundation.Piles(1), 1);
  const PileAxis p2 = MakePileAxis(ground, g.e.foundation.Piles(2), 2);
  BuildPileInteractionMatrix(ground, InteractionRuleOf(g.e), p1, p2, pair);
  for (int u = 1; u <= 13; ++u) {
    for (int v = 1; v <= 13; ++v) ASSERT_EQ(Block(g.e, 1, 2, u, v), pair(u, v));
  }
  // A flag without a limit corrects only piles at one plan position.
  const Group unlimited(piles, 0, 0.0f, 20.0f);
  const Group uncorrected(piles, 0, 0.0f, 0.0f);
  EXPECT_EQ(Block(unlimited.e, 1, 2, 1, 1), Block(uncorrected.e, 1, 2, 1, 1));
  EXPECT_NE(Block(unlimited.e, 1, 1, 1, 1), Block(uncorrected.e, 1, 1, 1, 1));
}

TEST(Parallel, GIsTheSameWithOneThreadAndWithTwo) {
  const std::vector<PileData> piles{
      {10.0f, 1.0f, 1.5f, 10.0f, 0.0f, 0.0f, 0.0f},  {8.0f, 0.8f, 0.8f, 0.0f, -5.0f, 3.0f, 1.0f},
      {10.0f, 1.0f, 1.5f, 10.0f, 0.0f, -3.0f, 0.5f}, {12.0f, 0.9f, 0.9f, 4.0f, 4.0f, 1.0f, -3.0f},
      {8.0f, 0.8f, 0.8f, 0.0f, -5.0f, 5.0f, 4.0f}};
  const int saved = omp_get_max_threads();
  omp_set_num_threads(1);
  // Enough elements that the own torsion blocks and the pairs are shared out.
  const int n = 16;
  const Group serial(piles, 1, 30.0f, 20.0f, 2, 0.0f, n);
  omp_set_num_threads(2);
  const Group parallel(piles, 1, 30.0f, 20.0f, 2, 0.0f, n);
  omp_set_num_threads(saved);
  const RealMatrix& a = serial.e.ws.G;
  const RealMatrix& b = parallel.e.ws.G;
  ASSERT_EQ(a.count(), b.count());
  std::size_t differing = 0;
  for (std::size_t k = 0; k < a.count(); ++k) differing += a.data()[k] != b.data()[k] ? 1 : 0;
  EXPECT_EQ(differing, 0u);
  // Every entry is a number, and the torsion between near piles is there.
  for (std::size_t k = 0; k < a.count(); ++k) ASSERT_TRUE(std::isfinite(a.data()[k]));
  EXPECT_NE(Block(serial.e, 1, 3, 3 * n + 2, 3 * n + 2), 0.0f);
  // pair_K is left with the last pair, as a serial pass leaves it.
  for (int u = 1; u <= 4 * n + 1; ++u) EXPECT_EQ(serial.e.ws.pair_K(u, u), Block(serial.e, 5, 4, u, u));
}

TEST(SinglePile, GIsTheOwnBlock) {
  Engine e;
  SetGround(e, TwoLayers(), 2, 20.0f);
  SetPiles(e, 4, {{10.0f, 1.0f, 1.5f, 3.0f, 2.0f, 0.0f, 0.0f}});
  CreateSoilArrays(e);
  AssembleAll(e);
  for (int u = 1; u <= 17; ++u) {
    for (int v = 1; v <= 17; ++v) ASSERT_EQ(e.ws.G(u, v), e.ws.soil_K(u, v));
  }
}

TEST(TraceLines, WrittenByTheRakedBuildersOnlyWhenTheyRun) {
  const std::string path = ::testing::TempDir() + "soil_trace.log";
  std::vector<std::string> lines;
  {
    Engine e;
    ASSERT_TRUE(e.files.log.create(path));
    e.project.LOGUnit = 11;
    SetGround(e, OneLayer(), 1, 0.0f);
    SetPiles(e, 2,
             {{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f},
              {10.0f, 1.0f, 1.0f, 0.0f, 3.0f, 4.0f, 0.0f},
              {10.0f, 1.0f, 1.0f, 0.0f, 3.0f, 8.0f, 0.0f}});
    CreateSoilArrays(e);
    AssembleAll(e);
    e.files.log.close();
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (line.rfind("Build", 0) == 0) lines.push_back(line);
    }
  }
  std::remove(path.c_str());
  // Pile 1 is vertical; pile 2 is raked and builds; pile 3 repeats pile 2.
  EXPECT_EQ(lines, (std::vector<std::string>{"BuildTransverseXSoilFlexibilityMatrix, line 27",
                                             "BuildTransverseYSoilFlexibilityMatrix, line 26"}));
}

}  // namespace
}  // namespace quellon
