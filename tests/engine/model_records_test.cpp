#include <gtest/gtest.h>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine_test_support.h"

namespace quellon {
namespace {

using namespace testing_support;

void Counter(const int*) {}
void Centre(const float*, const float*) {}

TEST(ModelRecords, EndOfRunResetKeepsCallbacksUnitsAndErrorCode) {
  Engine e;
  FillSmallModel(e, 2, 3, 4);
  Project& p = e.project;
  p.CounterCallback = &Counter;
  p.MessageCallback = &RecordMessage;
  e.foundation.CentreOfRotationCallback = &Centre;
  p.TMWUnit = 7;
  p.TMKUnit = 8;
  p.XMLUnit = 9;
  p.TXTUnit = 10;
  p.LOGUnit = 11;
  p.ErrorCode = 259;
  p.Name.assign("Jetty");
  p.Year = 2024;
  p.Version = 803;
  p.Flags(40) = 1;
  p.ExcludeTMKComments = 1;
  p.InteractionDistance = 7.0f;
  e.foundation.FreeStandingLength = 2.0f;
  e.borehole.DepthToRigidLayer = 30.0f;
  e.actions.Mx = 5.0f;

  ReleaseFoundation(e);
  ReleaseBorehole(e);
  ResetActions(e);
  ResetProject(e);

  // The reset values themselves are checked after a real run; here, what survives.
  EXPECT_TRUE(p.Name.trimmed().empty());
  EXPECT_EQ(p.Flags(40), 0);
  EXPECT_EQ(p.CounterCallback, &Counter);
  EXPECT_EQ(p.MessageCallback, &RecordMessage);
  EXPECT_EQ(e.foundation.CentreOfRotationCallback, &Centre);
  EXPECT_EQ(p.TMWUnit + p.TMKUnit + p.XMLUnit + p.TXTUnit + p.LOGUnit, 7 + 8 + 9 + 10 + 11);
  EXPECT_EQ(p.ErrorCode, 259);
  EXPECT_EQ(e.actions.Mx, 0.0f);
  EXPECT_EQ(e.borehole.DepthToRigidLayer, 0.0f);
  EXPECT_EQ(e.foundation.FreeStandingLength, 0.0f);
  // Released tables can be made again.
  EXPECT_EQ(CreatePiles(e, 1), 1);
  EXPECT_EQ(CreateLayers(e, 1), 1);
}

TEST(ModelRecords, TablesAreMadeOnceAndNumbered) {
  Engine e;
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  ASSERT_EQ(CreatePiles(e, 3), 1);
  EXPECT_EQ(e.foundation.Piles(3).Number, 3);
  e.foundation.Piles(2).Length = 9.0f;
  EXPECT_EQ(CreatePiles(e, 5), 0);
  EXPECT_EQ(e.foundation.NumberOfPiles, 3);
  EXPECT_EQ(e.foundation.Piles(2).Length, 9.0f);
  EXPECT_EQ(Received(), std::vector<std::string>{"2 Error creating piles!"});

  // A count below 1 makes an empty table; the count is kept as given.
  Received().clear();
  ASSERT_EQ(CreateLayers(e, -2), 1);
  EXPECT_TRUE(e.borehole.LayerTable.empty());
  EXPECT_EQ(e.borehole.NumberOfLayers, -2);
  EXPECT_EQ(CreateLayers(e, 2), 0);
  EXPECT_TRUE(Received().empty());  // the layer table's failure goes to the LOG only
}

std::uint64_t LittleMemory() { return 4096; }

TEST(ModelRecords, TableBeyondMemoryIsRefusedAndLeavesNoTable) {
  Engine e;
  e.memory_probe = &LittleMemory;
  EXPECT_EQ(CreatePiles(e, 1000), 0);
  EXPECT_EQ(CreateLayers(e, 1000), 0);
  EXPECT_FALSE(e.foundation.PilesCreated);
  EXPECT_EQ(e.foundation.NumberOfPiles, 0);
  e.memory_probe = &AvailableMemoryBytes;
  EXPECT_EQ(CreatePiles(e, 1000), 1);
  EXPECT_EQ(e.foundation.NumberOfPiles, 1000);
}

}  // namespace
}  // namespace quellon
