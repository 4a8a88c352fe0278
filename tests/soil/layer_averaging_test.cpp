#include "soil/layer_averaging.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "soil_test_support.h"

namespace quellon {
namespace {

using namespace soil_test;

class TwoLayerGround : public ::testing::Test {
 protected:
  void SetUp() override { SetGround(e, TwoLayers(), 2, 0.0f); }
  Engine e;
};

TEST_F(TwoLayerGround, MeansOfTwoDepthsMatchTheReference) {
  EXPECT_FLOAT_EQ(PoulosVerticalStiffnessAverage(e.borehole, 3.0f, 8.0f), 51500.0f);
  EXPECT_FLOAT_EQ(HorizontalStiffnessAverage(e.borehole, 3.0f, 8.0f), 38250.0f);
  EXPECT_FLOAT_EQ(PoissonRatioAverage(e.borehole, 3.0f, 8.0f), 0.25f);
}

TEST_F(TwoLayerGround, BoundaryBelongsToTheLowerLayerAndTheLastLayerHasNoEnd) {
  EXPECT_EQ(VerticalModulusAt(e.borehole, 6.0f), 80000.0f);
  EXPECT_EQ(PoissonRatioAt(e.borehole, 6.0f), 0.2f);
  const float just_above = std::nextafter(6.0f, 0.0f);
  EXPECT_EQ(HorizontalModulusAt(e.borehole, just_above), just_above * 500.0f + 15000.0f);
  e.borehole.Layers(2).dEv = 100.0f;
  EXPECT_FLOAT_EQ(VerticalModulusAt(e.borehole, 1006.0f), 80000.0f + 100000.0f);
  // Above the first layer nothing is there.
  e.borehole.Layers(1).DepthToTop = 1.0f;
  EXPECT_EQ(VerticalModulusAt(e.borehole, 0.5f), 0.0f);
  EXPECT_EQ(PoissonRatioAt(e.borehole, 0.5f), 0.0f);
}

TEST(MindlinFactor, UsesTheRoundedEightPi) {
  // 25.13, not 8 pi: the factor differs from 1/(16 pi G (1 - nu)) by that rounding.
  const float nu = 0.25f, E = 10000.0f;
  EXPECT_FLOAT_EQ(MindlinFactor(nu, E), 1.25f / (0.75f * 25.13f) / E);
  EXPECT_GT(MindlinFactor(nu, E), 1.25f / (0.75f * 25.132742f) / E);
}

// The raked pile of the reference: length 10, RakeX 10 degrees, 5 elements, z0 = 0.
class YamashitaTable : public TwoLayerGround {
 protected:
  void SetUp() override {
    TwoLayerGround::SetUp();
    SetPiles(e, 5, {{10.0f, 1.0f, 1.0f, 10.0f, 0.0f, 0.0f, 0.0f}});
  }
};

TEST_F(YamashitaTable, RowsFollowTheDepthsDownThePile) {
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(e), 1);
  const RealMatrix& t = e.ws.YamashitaEsv;
  ASSERT_EQ(t.rows(), 10);
  ASSERT_EQ(t.cols(), 1);
  EXPECT_TRUE(ToFigures(t(1, 1), 20984.8, 6));
  EXPECT_TRUE(ToFigures(t(2, 1), 22954.4, 6));
  EXPECT_TRUE(ToFigures(t(3, 1), 24924.0, 6));
  for (int k = 4; k <= 10; ++k) EXPECT_EQ(t(k, 1), 80000.0f) << "row " << k;
}

TEST_F(YamashitaTable, WeightedMeansMatchTheReference) {
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(e), 1);
  const double expected[] = {27712.5, 33193.4, 43403.7, 62515.1, 71447.6, 76365.3};
  for (int k = 1; k <= 6; ++k) {
    EXPECT_TRUE(ToFigures(YamashitaVerticalStiffnessAverage(e.ws.YamashitaEsv, 1, k), expected[k - 1], 6))
        << "k = " << k;
  }
}

TEST(YamashitaTableSize, FollowsTheModelBeyondFiftyElements) {
  Engine e;
  SetGround(e, {{0.0f, 1000.0f, 100.0f, 1000.0f, 100.0f, 0.3f}}, 2, 0.0f);
  SetPiles(e, 60, {{30.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}, {12.0f, 1.0f, 1.0f, 0.0f, 0.0f, 5.0f, 0.0f}});
  e.foundation.Piles(1).SoilEntryZ = 2.0f;  // the first pile's level serves for both
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(e), 1);
  const RealMatrix& t = e.ws.YamashitaEsv;
  ASSERT_EQ(t.rows(), 65);
  ASSERT_EQ(t.cols(), 2);
  // Pile 2: dz = 0.2, depths from 2 + 0.1; the tip at 14; four rows below the last mid-point.
  EXPECT_FLOAT_EQ(t(1, 2), 1000.0f + 100.0f * 2.1f);
  EXPECT_NEAR(t(60, 2), 1000.0f + 100.0f * 13.9f, 0.05f);
  EXPECT_FLOAT_EQ(t(61, 2), 1000.0f + 100.0f * 14.0f);
  EXPECT_NEAR(t(65, 2), 1000.0f + 100.0f * 14.7f, 0.05f);
  EXPECT_NEAR(t(65, 1), 1000.0f + 100.0f * 33.75f, 0.05f);
}

TEST(YamashitaTableFailure, ReportsTheTextAndGivesZero) {
  Engine e;
  SetGround(e, OneLayer(), 2, 0.0f);
  // A table far beyond the memory of any machine.
  ASSERT_EQ(CreatePiles(e, 1000), 1);
  e.foundation.NumberOfElements = 2000000000;
  static std::vector<std::string> messages;
  messages.clear();
  e.project.MessageCallback = [](const int*, const char* text) { messages.emplace_back(text); };
  EXPECT_EQ(YamashitaVerticalStiffnessAverageAllPiles(e), 0);
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages.back(),
            "Failed to create YamashitaEsv matrix in subroutine YamashitaVerticalStiffnessAverageAllPiles");
  EXPECT_TRUE(e.ws.YamashitaEsv.empty());
}

TEST(SoilFactors, BothTreatmentsAgreeInUniformGround) {
  Engine e;
  SetGround(e, OneLayer(), 2, 0.0f);
  SetPiles(e, 4, {{10.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}});
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(e), 1);
  SoilGround g = GroundOf(e);
  const SoilValues smoothed = PairSoilValues(g, 1.25f, 1, 1, 8.75f, 1, 4);
  e.borehole.LayerAveraging = 1;
  const SoilValues mean = PairSoilValues(g, 1.25f, 1, 1, 8.75f, 1, 4);
  EXPECT_FLOAT_EQ(smoothed.Av, mean.Av);
  EXPECT_FLOAT_EQ(smoothed.Av, MindlinFactor(0.25f, 10000.0f));
  EXPECT_EQ(smoothed.Ah, mean.Ah);
  // Any value but 1 is the smoothed treatment.
  e.borehole.LayerAveraging = 7;
  EXPECT_FALSE(g.poulos());
}

TEST_F(YamashitaTable, PairFactorsReadDepthsForRatioAndElementNumbersForSmoothedModulus) {
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(e), 1);
  const SoilGround g = GroundOf(e);
  const RealMatrix& t = e.ws.YamashitaEsv;
  const float c0 = MindlinCoefficient(0.25f);
  // Depths 3 and 8 (ratio 0.3 and 0.2), elements 1 and 4.
  const SoilValues v = PairSoilValues(g, 3.0f, 1, 1, 8.0f, 1, 4);
  EXPECT_FLOAT_EQ(v.nu, 0.25f);
  EXPECT_FLOAT_EQ(v.Av, 2.0f * c0 / (YamashitaVerticalStiffnessAverage(t, 1, 1) + YamashitaVerticalStiffnessAverage(t, 1, 4)));
  EXPECT_FLOAT_EQ(v.Ah, c0 / 38250.0f);
  // The base on itself takes its one smoothed modulus, not doubled and not halved.
  const SoilValues b = BaseOnItselfSoilValues(g, 9.848f, 9.848f, 1);
  EXPECT_FLOAT_EQ(b.Av, MindlinCoefficient(0.2f) / YamashitaVerticalStiffnessAverage(t, 1, 6));
  e.borehole.LayerAveraging = 1;
  EXPECT_FLOAT_EQ(PairSoilValues(g, 3.0f, 1, 1, 8.0f, 1, 4).Av, c0 / 51500.0f);
  EXPECT_FLOAT_EQ(BaseOnItselfSoilValues(g, 3.0f, 8.0f, 1).Av, c0 / 51500.0f);
}

}  // namespace
}  // namespace quellon
