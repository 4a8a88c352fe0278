// The two worked models of the group matrix, n = 2 (M = 9), every listed entry of the
// own blocks and of the blocks between the piles, in both orders of the pair.
#include <gtest/gtest.h>

#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

struct Entry {
  int u, v;
  double value;
};

void ExpectEntries(const Engine& e, int p, int q, std::initializer_list<Entry> entries) {
  for (const Entry& x : entries) {
    EXPECT_TRUE(ToFigures(Block(e, p, q, x.u, x.v), x.value, 4))
        << "block (" << p << ", " << q << ") entry (" << x.u << ", " << x.v << ")";
  }
}

// One layer, mean moduli, no rigid layer, infinite interaction, a torque on the cap; two
// vertical piles 3 m apart.
class ModelA : public ::testing::Test {
 protected:
  void SetUp() override {
    SetGround(e, OneLayer(), 1, 0.0f);
    SetPiles(e, 2, {{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}, {10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 3.0f, 0.0f}});
    e.project.InteractionFlag = 1;
    e.actions.Mz = 100.0f;
    CreateSoilArrays(e);
    AssembleAll(e);
  }
  Engine e;
};

TEST_F(ModelA, OwnBlocksOfBothPiles) {
  for (int p = 1; p <= 2; ++p) {
    ExpectEntries(e, p, p,
                  {{1, 1, 3.628e-4}, {1, 2, 1.172e-4}, {2, 2, 2.864e-4}, {1, 3, 4.225e-6}, {3, 1, 8.451e-5},
                   {3, 3, 4.310e-5}, {4, 4, 1.026e-4}, {4, 5, 2.031e-5}, {5, 5, 9.268e-5}, {8, 8, 8.973e-5},
                   {8, 9, 7.740e-7}, {9, 9, 8.893e-5}});
  }
}

TEST_F(ModelA, BlocksBetweenThePilesInBothOrders) {
  ExpectEntries(e, 1, 2,
                {{1, 1, 1.483e-4}, {1, 2, 9.814e-5}, {1, 3, 3.850e-6}, {3, 3, 4.864e-6}, {1, 4, 4.044e-7},
                 {4, 1, -1.271e-6}, {4, 4, 4.623e-5}, {6, 6, 3.448e-5}, {8, 8, 1.124e-5}});
  ExpectEntries(e, 2, 1,
                {{1, 1, 1.483e-4}, {1, 2, 9.814e-5}, {1, 3, 3.850e-6}, {3, 3, 4.864e-6}, {1, 4, -4.044e-7},
                 {4, 1, 1.271e-6}, {4, 4, 4.623e-5}, {6, 6, 3.448e-5}, {8, 8, 1.124e-5}});
}

TEST_F(ModelA, OwnBlockCouplesNoKindsOfUnknown) {
  // Axial with base, X, Y and torsion stand alone on the diagonal of a pile's own block.
  auto kind = [](int u) { return u <= 3 ? 0 : u <= 5 ? 1 : u <= 7 ? 2 : 3; };
  for (int u = 1; u <= 9; ++u) {
    for (int v = 1; v <= 9; ++v) {
      if (kind(u) != kind(v)) {
        EXPECT_EQ(Block(e, 1, 1, u, v), 0.0f) << u << ", " << v;
      }
    }
  }
  // Without rake the X and Y blocks are one block.
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) EXPECT_EQ(Block(e, 1, 1, 4 + i, 4 + j), Block(e, 1, 1, 6 + i, 6 + j));
  }
}

// Two layers, smoothed moduli, a rigid layer at 20 m, automatic interaction, no torque.
// Pile 1 raked 10 degrees about X with an under-reamed base; pile 2 raked -5 about Y.
class ModelB : public ::testing::Test {
 protected:
  void SetUp() override {
    SetGround(e, TwoLayers(), 2, 20.0f);
    SetPiles(e, 2, {{10.0f, 1.0f, 1.5f, 10.0f, 0.0f, 0.0f, 0.0f}, {8.0f, 0.8f, 0.8f, 0.0f, -5.0f, 3.0f, 1.0f}});
    e.project.InteractionFlag = 2;
    e.actions.Mz = 0.0f;
    CreateSoilArrays(e);
    AssembleAll(e);
  }
  Engine e;
};

TEST_F(ModelB, OwnBlockOfPileOne) {
  ExpectEntries(e, 1, 1,
                {{1, 1, 6.546e-5}, {1, 2, 1.249e-5}, {1, 3, 4.714e-7}, {3, 1, 7.106e-6}, {3, 3, 8.001e-6},
                 {4, 4, 6.411e-5}, {4, 5, 5.408e-6}, {6, 6, 6.349e-5}, {8, 8, 1.766e-5}});
}

TEST_F(ModelB, BlocksBetweenThePilesInBothOrders) {
  ExpectEntries(e, 1, 2,
                {{1, 1, 1.283e-5}, {1, 3, 2.280e-7}, {3, 1, 3.334e-6}, {3, 3, 1.226e-7}, {1, 4, -2.238e-6},
                 {4, 1, 4.321e-6}, {4, 4, 1.583e-5}, {1, 6, -8.915e-7}, {6, 1, 1.784e-6}, {6, 6, 1.259e-5}});
  ExpectEntries(e, 2, 1,
                {{1, 1, 2.022e-5}, {1, 3, 3.631e-7}, {3, 1, 7.887e-6}, {3, 3, 4.396e-7}, {1, 4, 1.435e-6},
                 {4, 1, -1.151e-5}, {4, 4, 2.473e-5}, {1, 6, 8.347e-7}, {6, 1, -5.427e-6}, {6, 6, 1.967e-5}});
}

TEST_F(ModelB, NoTorqueMeansNoTorsionBetweenPiles) {
  for (int u = 8; u <= 9; ++u) {
    for (int v = 8; v <= 9; ++v) {
      EXPECT_EQ(Block(e, 1, 2, u, v), 0.0f);
      EXPECT_EQ(Block(e, 2, 1, u, v), 0.0f);
    }
  }
}

}  // namespace
}  // namespace quellon
