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

std::string g_error;

// A group checked for coincident points; `error` is the refusal, empty when accepted.
struct Checked : Model {
  std::string error;
  Checked(const std::vector<PileData>& piles, int n, float rigid = 0.0f, float Mz = 0.0f)
      : Model(OneLayer(), 1, rigid, n, piles, 1, Mz) {
    g_error.clear();
    e.project.MessageCallback = [](const int* severity, const char* text) {
      if (*severity == 2) g_error = text;
    };
    const int result = CheckCoincidentMidpoints(e);
    error = g_error;
    EXPECT_EQ(result == 1, error.empty()) << error;
  }
  bool Names(const char* part) const { return error.find(part) != std::string::npos; }
};

TEST(CoincidentPoints, PilesSharingMidpointsAreRefusedAndNamed) {
  const PileData a{10, 1, 1, 3, 0, 2, 1};
  EXPECT_EQ(Checked({a, a}, 2).error,
            "Error - piles 1 and 2 have coincident element mid-points: element 1 of pile 1 and element 1 of pile 2 "
            "lie at the same point");
  // From one point, the second pile three times as long: mid-point 2 of the first
  // (7.5 m) is mid-point 1 of the second.
  PileData longer = kPile, raked = kPile;
  longer.L = 30.0f;
  EXPECT_TRUE(Checked({kPile, longer}, 2).Names("element 2 of pile 1 and element 1 of pile 2"));
  // From one point with different rakes the model stands, with one element and a torque.
  raked.rake_x = 8.0f;
  Checked accepted({kPile, raked}, 1, 0.0f, 50.0f);
  EXPECT_EQ(accepted.error, "");
  accepted.Assemble();
  const RealMatrix& G = accepted.e.ws.G;
  for (std::size_t k = 0; k < G.count(); ++k) ASSERT_TRUE(std::isfinite(G.data()[k])) << k;
}

TEST(CoincidentPoints, RigidLayerThroughALoadPoint) {
  EXPECT_TRUE(Checked({kPile}, 2, 10.0f).Names("rigid layer passes through the load point of the base of pile 1"));
  EXPECT_TRUE(Checked({kPile}, 2, 2.5f).Names("element 1 of pile 1"));
  EXPECT_EQ(Checked({kPile}, 2, 10.5f).error, "");
  PileData raked = kPile;
  raked.rake_y = 12.0f;  // the base's own term sits below the soil entry point
  EXPECT_NE(Checked({raked}, 2, std::cos(DegreesToRadians(12.0f)) * 10.0f).error, "");
  // Below the soil entry point of a short vertical pile 1, through the mid-point of
  // element 2 of the raked pile 2.
  const Model probe(OneLayer(), 1, 0.0f, 2, {{10, 1, 1, 20, 0, 0, 0}});
  const PileAxis axis = MakePileAxis(GroundOf(probe.e), probe.e.foundation.Piles(1), probe.e.foundation.Frame(1), 1, false);
  EXPECT_EQ(Checked({{1, 1, 1, 0, 0, -axis.at(2).x, 0}, {10, 1, 1, 20, 0, 0, 0}}, 2, axis.at(2).z).error,
            "Error - the rigid layer below the soil entry point of pile 1 passes through the load point of element 2 "
            "of pile 2");
}

TEST(CoincidentPoints, TorsionRingThroughTheAxisOfAnotherPile) {
  // The 17th point of the ring of pile 2 (radius 0.5) exactly on the axis of pile 1 at the
  // depth of its mid-point, 0.5 m: the piles overlap, when there is a torque.
  float T = -0.098175f;
  for (int k = 1; k <= 17; ++k) T = T + 0.19635f;
  const float cx = std::cos(T) * 0.5f, cy = std::sin(T) * 0.5f;
  ASSERT_TRUE(cx < 0.0f && cy < 0.0f);
  const std::vector<PileData> piles{{1, 1, 1, 0, 0, -cx, -cy}, {8, 1, 1, 0, 0, 0, 0}};
  EXPECT_TRUE(Checked(piles, 1, 0.0f, 10.0f).Names("piles 1 and 2 overlap"));
  EXPECT_EQ(Checked(piles, 1, 0.0f, 0.0f).error, "");
}

}  // namespace
}  // namespace quellon
