// Moduli of a layered ground: means of two depths, layer boundaries, and the table of
// smoothed vertical moduli down each pile.
#include "soil/layer_averaging.h"

#include <gtest/gtest.h>

#include <string>

#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

// The raked pile of the reference: length 10, RakeX 10 degrees, 5 elements, z0 = 0.
class TwoLayerGround : public ::testing::Test {
 protected:
  Model m{TwoLayers(), 2, 0.0f, 5, {{10, 1, 1, 10, 0, 0, 0}}};
  Borehole& b = m.e.borehole;
};

TEST_F(TwoLayerGround, MeansOfTwoDepthsAndTheLayerBoundary) {
  EXPECT_FLOAT_EQ(PoulosVerticalStiffnessAverage(b, 3.0f, 8.0f), 51500.0f);
  EXPECT_FLOAT_EQ(HorizontalStiffnessAverage(b, 3.0f, 8.0f), 38250.0f);
  EXPECT_FLOAT_EQ(PoissonRatioAverage(b, 3.0f, 8.0f), 0.25f);
  // The boundary belongs to the lower layer, the last layer has no end, and above the
  // first layer nothing is there.
  EXPECT_EQ(VerticalModulusAt(b, 6.0f), 80000.0f);
  EXPECT_EQ(PoissonRatioAt(b, 6.0f), 0.2f);
  const float just_above = std::nextafter(6.0f, 0.0f);
  EXPECT_EQ(HorizontalModulusAt(b, just_above), just_above * 500.0f + 15000.0f);
  b.Layers(2).dEv = 100.0f;
  EXPECT_FLOAT_EQ(VerticalModulusAt(b, 1006.0f), 180000.0f);
  b.Layers(1).DepthToTop = 1.0f;
  EXPECT_EQ(VerticalModulusAt(b, 0.5f), 0.0f);
}

TEST_F(TwoLayerGround, SmoothedTableRowsAndWeightedMeans) {
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(m.e), 1);
  const RealMatrix& t = m.e.ws.YamashitaEsv;
  ASSERT_TRUE(t.rows() == 10 && t.cols() == 1);
  const double row[] = {20984.8, 22954.4, 24924.0, 80000, 80000, 80000, 80000, 80000, 80000, 80000};
  for (int k = 1; k <= 10; ++k) EXPECT_TRUE(ToFigures(t(k, 1), row[k - 1], 6)) << "row " << k;
  const double mean[] = {27712.5, 33193.4, 43403.7, 62515.1, 71447.6, 76365.3};
  for (int k = 1; k <= 6; ++k) EXPECT_TRUE(ToFigures(YamashitaVerticalStiffnessAverage(t, 1, k), mean[k - 1], 6));
}

TEST(SmoothedTable, SizedByTheModelBeyondFiftyElementsFromTheFirstPilesLevel) {
  Model m({{0, 1000, 100, 1000, 100, 0.3f}}, 2, 0.0f, 60, {{30, 1, 1, 0, 0, 0, 0}, {12, 1, 1, 0, 0, 5, 0}});
  m.e.foundation.Piles(1).SoilEntryZ = 2.0f;  // serves for both piles
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(m.e), 1);
  const RealMatrix& t = m.e.ws.YamashitaEsv;
  ASSERT_TRUE(t.rows() == 65 && t.cols() == 2);
  // Pile 2: dz = 0.2 from 2 + 0.1, the tip at 14, four rows below the last mid-point.
  EXPECT_FLOAT_EQ(t(1, 2), 1000.0f + 100.0f * 2.1f);
  EXPECT_FLOAT_EQ(t(61, 2), 1000.0f + 100.0f * 14.0f);
  EXPECT_NEAR(t(65, 2), 1000.0f + 100.0f * 14.7f, 0.05f);
  EXPECT_NEAR(t(65, 1), 1000.0f + 100.0f * 33.75f, 0.05f);
}

TEST(SmoothedTable, FailureIsReportedAndLeavesNoTable) {
  // A table beyond the memory of any machine.
  Model m(OneLayer(), 2, 0.0f, 2000000000, std::vector<PileData>(1000, PileData{10, 1, 1, 0, 0, 0, 0}));
  static std::string message;
  m.e.project.MessageCallback = [](const int*, const char* text) { message = text; };
  EXPECT_EQ(YamashitaVerticalStiffnessAverageAllPiles(m.e), 0);
  EXPECT_EQ(message, "Failed to create YamashitaEsv matrix in subroutine YamashitaVerticalStiffnessAverageAllPiles");
  EXPECT_TRUE(m.e.ws.YamashitaEsv.empty());
}

}  // namespace
}  // namespace quellon
