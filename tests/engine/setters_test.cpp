// The exported setters on the engine behind the C API, seen from inside: what they
// store beyond what the LOG echo shows.
#include <gtest/gtest.h>

#include "engine/engine.h"
#include "quellon.h"

namespace quellon {
namespace {

TEST(Setters, DerivedSwitchesAndNarrowedValuesAreStored) {
  Engine& e = TheEngine();
  const auto clear = [&e] { e.project = {}, e.actions = {}, e.borehole = {}, e.foundation = {}; };
  clear();
  int flags[40] = {};
  flags[15] = 5;  // flag 16, any non-zero value, chooses the dynamic model
  ASSERT_EQ(QuellonSetProjectFlags(flags, 40), 1);
  EXPECT_EQ(e.project.DynamicModel, 1);
  e.project.Flags(16) = 0;
  ASSERT_EQ(QuellonSetProjectFlags(flags, 0), 1);  // no entry taken still copies flag 16
  EXPECT_EQ(e.project.DynamicModel, 0);
  QuellonSetPileInteractionDistance(15.0);  // a distance implies the custom rule
  EXPECT_EQ(e.project.InteractionFlag, 3);
  QuellonSetNumberOfLoadIncrements(2);
  EXPECT_EQ(e.project.NonLinear, 1);
  QuellonSetNumberOfLoadIncrements(-3);
  EXPECT_EQ(e.project.NonLinear, 0);
  EXPECT_EQ(e.actions.NumberOfIncrements, -3);
  ASSERT_EQ(QuellonSetNumberOfPiles(2), 1);
  // 0.0001 MN: multiplied in double and then narrowed gives the float nearest 0.1 kN;
  // narrowing first would give a different float.
  ASSERT_EQ(QuellonSetPileReinforcedSectionProperties(2, 5.0, 0.0001, 2500.0, 1.0, 1.0), 1);
  EXPECT_EQ(e.foundation.Piles(2).EA, 0.1f);
  EXPECT_NE(e.foundation.Piles(2).EA, 0.0001f * 1000.0f);
  // A layer count below 1 makes an empty table and succeeds; no index is then valid.
  EXPECT_EQ(QuellonSetBoreholeNumberOfLayers(0), 1);
  EXPECT_TRUE(e.borehole.LayersCreated);
  EXPECT_EQ(QuellonSetBoreholeLayerDepth(1, 1.0), 0);
  clear();
}

}  // namespace
}  // namespace quellon
