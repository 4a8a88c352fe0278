// The exported setters on the engine behind the C API, seen from inside: what they
// store, beyond what the LOG echo shows.
#include <gtest/gtest.h>

#include <string>

#include "engine/engine.h"
#include "engine_test_support.h"
#include "quellon.h"

namespace quellon {
namespace {

using namespace testing_support;

class Setters : public ::testing::Test {
 protected:
  void SetUp() override { ResetTheEngine(); }
  void TearDown() override { ResetTheEngine(); }
  Engine& e = TheEngine();
};

TEST_F(Setters, FlagsTakeTheirCountAndDynamicModelFollowsFlag16) {
  int flags[40] = {};
  flags[15] = 5;  // flag 16, any non-zero value
  flags[2] = -1;
  ASSERT_EQ(QuellonSetProjectFlags(flags, 40), 1);
  EXPECT_EQ(e.project.Flags(16), 1);
  EXPECT_EQ(e.project.Flags(3), 1);
  EXPECT_EQ(e.project.DynamicModel, 1);
  // Five entries: flags 6 to 40 keep their values, and DynamicModel is taken again from
  // flag 16 as it stands.
  const int five[5] = {0, 0, 0, 0, 0};
  ASSERT_EQ(QuellonSetProjectFlags(five, 5), 1);
  EXPECT_EQ(e.project.Flags(3), 0);
  EXPECT_EQ(e.project.Flags(16), 1);
  EXPECT_EQ(e.project.DynamicModel, 1);
  // No entry taken still copies flag 16.
  e.project.Flags(16) = 0;
  ASSERT_EQ(QuellonSetProjectFlags(five, 0), 1);
  EXPECT_EQ(e.project.DynamicModel, 0);
}

TEST_F(Setters, TextsAreCutPaddedAndStopAtTheirEnd) {
  const std::string long_name(150, 'n');
  QuellonSetProjectName(long_name.c_str(), 150);
  EXPECT_EQ(e.project.Name.trimmed(), std::string(100, 'n'));
  QuellonSetProjectName("Harbour", 0);
  EXPECT_TRUE(e.project.Name.trimmed().empty());
  // A count beyond the text stops at its NUL rather than reading past it.
  QuellonSetProjectDescription("Pier", 50);
  EXPECT_EQ(e.project.Description.trimmed(), "Pier");
  const std::string path(300, 'p');
  QuellonSetProjectFilename(path.c_str(), 300);
  EXPECT_EQ(e.project.Filename.trimmed().size(), 260u);
}

TEST_F(Setters, InteractionDistanceImpliesCustomUntilTheFlagIsSet) {
  e.project.InteractionFlag = 1;
  QuellonSetPileInteractionDistance(15.0);
  EXPECT_EQ(e.project.InteractionFlag, 3);
  EXPECT_EQ(e.project.InteractionDistance, 15.0f);
  QuellonSetPileInteractionFlag(2);
  EXPECT_EQ(e.project.InteractionFlag, 2);
  // One byte, sign-extended, without a check.
  QuellonSetPileInteractionFlag(static_cast<signed char>(-1));
  EXPECT_EQ(e.project.InteractionFlag, -1);
  QuellonSetProjectElasticUnloadingFlag(static_cast<quellon_bool>(-1));
  EXPECT_EQ(e.project.ElasticUnloading, -1);
}

TEST_F(Setters, IncrementCountDecidesNonLinear) {
  QuellonSetNumberOfLoadIncrements(2);
  EXPECT_EQ(e.project.NonLinear, 1);
  QuellonSetNumberOfLoadIncrements(1);
  EXPECT_EQ(e.project.NonLinear, 0);
  QuellonSetNumberOfLoadIncrements(-3);
  EXPECT_EQ(e.project.NonLinear, 0);
  EXPECT_EQ(e.actions.NumberOfIncrements, -3);
}

TEST_F(Setters, StoredValuesAreNarrowedAfterTheUnitChange) {
  ASSERT_EQ(QuellonSetNumberOfPiles(2), 1);
  // 0.0001 MN: multiplied in double and then narrowed gives the float nearest 0.1 kN;
  // narrowing first would give a different float.
  ASSERT_EQ(QuellonSetPileReinforcedSectionProperties(2, 5.0, 0.0001, 2500.0, 1.0, 1.0), 1);
  EXPECT_EQ(e.foundation.Piles(2).EA, 0.1f);
  EXPECT_NE(e.foundation.Piles(2).EA, 0.0001f * 1000.0f);
  EXPECT_EQ(e.foundation.Piles(2).EIx, 2500000.0f);
  ASSERT_EQ(QuellonSetPileUnreinforcedSectionProperties(1, 3.0, 4.0, 5.0, 6.0), 1);
  EXPECT_EQ(e.foundation.Piles(1).UnreinforcedGJ, 6000.0f);
  EXPECT_EQ(e.foundation.Piles(1).EA, 0.0f);
  // Rakes stay in degrees.
  ASSERT_EQ(QuellonSetPileRake(1, 10.0, -5.0), 1);
  EXPECT_EQ(e.foundation.Piles(1).RakeX, 10.0f);
  EXPECT_EQ(e.foundation.Piles(1).RakeY, -5.0f);
}

TEST_F(Setters, LayerCountBelowOneMakesAnEmptyTableAndSucceeds) {
  ScratchDir dir;
  ASSERT_EQ(QuellonCreateLOGFile((dir / "layers.log").c_str()), 1);
  EXPECT_EQ(QuellonSetBoreholeNumberOfLayers(0), 1);
  EXPECT_TRUE(e.borehole.LayersCreated);
  EXPECT_EQ(QuellonGetBoreholeNumberOfLayers(), 0);
  EXPECT_EQ(QuellonSetBoreholeLayerDepth(1, 1.0), 0);
  QuellonCloseLOGFile();
  const std::vector<std::string> log = ReadLines(dir / "layers.log");
  const std::size_t at = Find(log, "SetNumberOfLayers...");
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(log[at + 1], "    Error! Number must be > 0. Value = 0");
  EXPECT_EQ(log[at + 2], "Created 0 layers");
  EXPECT_EQ(log[at + 3], "    Set number of layers = 0");
}

}  // namespace
}  // namespace quellon
