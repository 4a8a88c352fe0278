// Models in which a displacement is wanted exactly where a load acts are refused before
// assembly, with the piles and elements named, instead of filling G with infinities.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine/utilities.h"
#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

std::vector<std::string> g_messages;

struct Checked {
  Engine e;
  int result = -1;
  Checked(const std::vector<PileData>& piles, int n, float rigid = 0.0f, float Mz = 0.0f) {
    SetGround(e, OneLayer(), 1, rigid);
    SetPiles(e, n, piles);
    e.project.InteractionFlag = 1;
    e.actions.Mz = Mz;
    g_messages.clear();
    e.project.MessageCallback = [](const int* severity, const char* text) {
      if (*severity == 2) g_messages.emplace_back(text);
    };
    result = CheckCoincidentMidpoints(e);
  }
  std::string message() const { return g_messages.empty() ? std::string() : g_messages.back(); }
};

TEST(CoincidentPoints, PilesSharingMidpointsAreRefusedAndNamed) {
  const PileData a{10.0f, 1.0f, 1.0f, 3.0f, 0.0f, 2.0f, 1.0f};
  const Checked same({a, a}, 2);
  EXPECT_EQ(same.result, 0);
  EXPECT_EQ(same.message(),
            "Error - piles 1 and 2 have coincident element mid-points: element 1 of pile 1 and element 1 of pile 2 "
            "lie at the same point");

  // Vertical piles from one point, the second three times as long: mid-point 2 of the
  // first (7.5 m) is mid-point 1 of the second.
  PileData shorter{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}, longer = shorter;
  longer.L = 30.0f;
  const Checked nested({shorter, longer}, 2);
  EXPECT_EQ(nested.result, 0);
  EXPECT_NE(nested.message().find("element 2 of pile 1 and element 1 of pile 2"), std::string::npos);
}

TEST(CoincidentPoints, PilesFromOnePointWithDifferentRakesAreAccepted) {
  const PileData a{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  PileData b = a;
  b.rake_x = 8.0f;
  Checked c({a, b}, 4, 0.0f, 50.0f);
  EXPECT_EQ(c.result, 1);
  EXPECT_TRUE(g_messages.empty());
  CreateSoilArrays(c.e);
  AssembleAll(c.e);
  const RealMatrix& G = c.e.ws.G;
  for (std::size_t k = 0; k < G.count(); ++k) ASSERT_TRUE(std::isfinite(G.data()[k])) << k;
}

TEST(CoincidentPoints, RigidLayerThroughAPilesOwnLoadPoint) {
  const PileData a{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  const Checked on_tip({a}, 2, 10.0f);
  EXPECT_EQ(on_tip.result, 0);
  EXPECT_NE(on_tip.message().find("rigid layer passes through the load point of the base of pile 1"),
            std::string::npos);
  const Checked on_midpoint({a}, 2, 2.5f);
  EXPECT_EQ(on_midpoint.result, 0);
  EXPECT_NE(on_midpoint.message().find("element 1 of pile 1"), std::string::npos);
  EXPECT_EQ(Checked({a}, 2, 10.5f).result, 1);
  PileData raked = a;
  raked.rake_y = 12.0f;  // the base's own term sits below the soil entry point
  const float tip = std::cos(DegreesToRadians(12.0f)) * 10.0f;
  EXPECT_EQ(Checked({raked}, 2, tip).result, 0);
}

TEST(CoincidentPoints, RigidLayerBelowOnePileThroughAnothersLoadPoint) {
  // Pile 2 raked; pile 1 short and vertical, entering the ground directly above the
  // mid-point of element 2 of pile 2, with the rigid layer at that mid-point's depth.
  Engine probe;
  SetGround(probe, OneLayer(), 1, 0.0f);
  SetPiles(probe, 2, {{10.0f, 1.0f, 1.0f, 20.0f, 0.0f, 0.0f, 0.0f}});
  const PileAxis axis = MakePileAxis(GroundOf(probe), probe.foundation.Piles(1), 1, false);
  const float x = -axis.at(2).x, z = axis.at(2).z;
  const Checked c({{1.0f, 1.0f, 1.0f, 0.0f, 0.0f, x, 0.0f}, {10.0f, 1.0f, 1.0f, 20.0f, 0.0f, 0.0f, 0.0f}}, 2, z);
  EXPECT_EQ(c.result, 0);
  EXPECT_EQ(c.message(),
            "Error - the rigid layer below the soil entry point of pile 1 passes through the load point of element 2 "
            "of pile 2");
}

TEST(CoincidentPoints, TorsionRingThroughTheAxisOfAnotherPile) {
  // The 17th point of the ring of pile 2 (radius 0.5) placed exactly on the axis of pile 1
  // at the depth of its mid-point, 0.5 m: the piles overlap.
  float T = -0.098175f;
  for (int k = 1; k <= 17; ++k) T = T + 0.19635f;
  const float cx = std::cos(T) * 0.5f, cy = std::sin(T) * 0.5f;
  ASSERT_LT(cx, 0.0f);
  ASSERT_LT(cy, 0.0f);
  const std::vector<PileData> piles{{1.0f, 1.0f, 1.0f, 0.0f, 0.0f, -cx, -cy}, {8.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}};
  const Checked torque(piles, 1, 0.0f, 10.0f);
  EXPECT_EQ(torque.result, 0);
  EXPECT_NE(torque.message().find("piles 1 and 2 overlap"), std::string::npos);
  EXPECT_EQ(Checked(piles, 1, 0.0f, 0.0f).result, 1);  // no torque, no ring
}

}  // namespace
}  // namespace quellon
