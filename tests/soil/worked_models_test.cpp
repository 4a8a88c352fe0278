// The two worked models of the group matrix, n = 2 (M = 9): every listed entry of the
// own blocks and of the blocks between the piles, in both orders of the pair.
#include <gtest/gtest.h>

#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

struct Own {
  int u, v;
  double value;
};
struct Pair {
  int u, v;
  double p1_q2, p2_q1;
};

void ExpectEntry(const Model& m, int p, int q, int u, int v, double value) {
  EXPECT_TRUE(ToFigures(m.Block(p, q, u, v), value, 4))
      << "block (" << p << ", " << q << ") entry (" << u << ", " << v << ")";
}

void ExpectPair(const Model& m, const Pair& x) {
  ExpectEntry(m, 1, 2, x.u, x.v, x.p1_q2);
  ExpectEntry(m, 2, 1, x.u, x.v, x.p2_q1);
}

// One layer, mean moduli, no rigid layer, infinite interaction, a torque on the cap; two
// vertical piles 3 m apart.
TEST(WorkedModels, ModelA) {
  Model m(OneLayer(), 1, 0.0f, 2, {{10, 1, 1, 0, 0, 0, 0}, {10, 1, 1, 0, 0, 3, 0}}, 1, 100.0f);
  m.Assemble();
  const Own own[] = {{1, 1, 3.628e-4}, {1, 2, 1.172e-4}, {2, 2, 2.864e-4}, {1, 3, 4.225e-6},
                     {3, 1, 8.451e-5}, {3, 3, 4.310e-5}, {4, 4, 1.026e-4}, {4, 5, 2.031e-5},
                     {5, 5, 9.268e-5}, {8, 8, 8.973e-5}, {8, 9, 7.740e-7}, {9, 9, 8.893e-5}};
  for (int p = 1; p <= 2; ++p) {
    for (const Own& x : own) ExpectEntry(m, p, p, x.u, x.v, x.value);
  }
  const Pair pairs[] = {{1, 1, 1.483e-4, 1.483e-4}, {1, 2, 9.814e-5, 9.814e-5},  {1, 3, 3.850e-6, 3.850e-6},
                        {3, 3, 4.864e-6, 4.864e-6}, {1, 4, 4.044e-7, -4.044e-7}, {4, 1, -1.271e-6, 1.271e-6},
                        {4, 4, 4.623e-5, 4.623e-5}, {6, 6, 3.448e-5, 3.448e-5},  {8, 8, 1.124e-5, 1.124e-5}};
  for (const Pair& x : pairs) ExpectPair(m, x);
  // Within a pile's own block axial with base, X, Y and torsion are not coupled.
  auto kind = [](int u) { return u <= 3 ? 0 : u <= 5 ? 1 : u <= 7 ? 2 : 3; };
  for (int u = 1; u <= 9; ++u) {
    for (int v = 1; v <= 9; ++v) EXPECT_TRUE(kind(u) == kind(v) || m.Block(1, 1, u, v) == 0.0f) << u << ", " << v;
  }
}

// Two layers, smoothed moduli, a rigid layer at 20 m, automatic interaction, no torque.
// Pile 1 raked 10 degrees about X with an under-reamed base; pile 2 raked -5 about Y.
TEST(WorkedModels, ModelB) {
  Model m(TwoLayers(), 2, 20.0f, 2, {{10, 1, 1.5f, 10, 0, 0, 0}, {8, 0.8f, 0.8f, 0, -5, 3, 1}}, 2, 0.0f);
  m.Assemble();
  const Own own[] = {{1, 1, 6.546e-5}, {1, 2, 1.249e-5}, {1, 3, 4.714e-7}, {3, 1, 7.106e-6}, {3, 3, 8.001e-6},
                     {4, 4, 6.411e-5}, {4, 5, 5.408e-6}, {6, 6, 6.349e-5}, {8, 8, 1.766e-5}};
  for (const Own& x : own) ExpectEntry(m, 1, 1, x.u, x.v, x.value);
  const Pair pairs[] = {{1, 1, 1.283e-5, 2.022e-5}, {1, 3, 2.280e-7, 3.631e-7},  {3, 1, 3.334e-6, 7.887e-6},
                        {3, 3, 1.226e-7, 4.396e-7}, {1, 4, -2.238e-6, 1.435e-6}, {4, 1, 4.321e-6, -1.151e-5},
                        {4, 4, 1.583e-5, 2.473e-5}, {1, 6, -8.915e-7, 8.347e-7}, {6, 1, 1.784e-6, -5.427e-6},
                        {6, 6, 1.259e-5, 1.967e-5}};
  for (const Pair& x : pairs) ExpectPair(m, x);
}

}  // namespace
}  // namespace quellon
