#include <gtest/gtest.h>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine_test_support.h"

namespace quellon {
namespace {

using namespace testing_support;

void Counter(const int*) {}
void Centre(const float*, const float*) {}

TEST(ModelRecords, FreshEngineHoldsZeroBitsNotTheResetValues) {
  Engine e;
  EXPECT_EQ(e.project.Year, 0);
  EXPECT_EQ(e.project.AutoNq, 0);
  EXPECT_EQ(e.project.InteractionFlag, 0);
  EXPECT_EQ(e.project.ElasticUnloading, 0);
  EXPECT_EQ(e.project.DynamicModel, 0);
  EXPECT_EQ(e.borehole.LayerAveraging, 0);
  EXPECT_EQ(e.actions.NumberOfIncrements, 0);
  EXPECT_TRUE(e.project.Name.trimmed().empty());
}

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

  EXPECT_EQ(p.Year, 2000);
  EXPECT_EQ(p.Month, 1);
  EXPECT_EQ(p.Day, 1);
  EXPECT_EQ(p.Version, 0);
  EXPECT_TRUE(p.Name.trimmed().empty());
  EXPECT_EQ(p.NonLinear, 0);
  EXPECT_EQ(p.AutoNq, 1);
  EXPECT_EQ(p.InteractionFlag, 1);
  EXPECT_EQ(p.InteractionDistance, 0.0f);
  EXPECT_EQ(p.ElasticUnloading, 1);
  EXPECT_EQ(p.DynamicModel, 1);
  EXPECT_EQ(p.Flags(16), 0);
  EXPECT_EQ(p.Flags(40), 0);
  EXPECT_EQ(p.ExcludeTMKComments, 0);
  EXPECT_EQ(p.Rs, 0.0f);
  EXPECT_EQ(p.CounterCallback, &Counter);
  EXPECT_EQ(p.MessageCallback, &RecordMessage);
  EXPECT_EQ(e.foundation.CentreOfRotationCallback, &Centre);
  EXPECT_EQ(p.TMWUnit + p.TMKUnit + p.XMLUnit + p.TXTUnit + p.LOGUnit, 7 + 8 + 9 + 10 + 11);
  EXPECT_EQ(p.ErrorCode, 259);
  EXPECT_EQ(e.actions.NumberOfIncrements, 1);
  EXPECT_EQ(e.actions.Fz, 0.0f);
  EXPECT_EQ(e.actions.Mx, 0.0f);
  EXPECT_EQ(e.borehole.NumberOfLayers, 0);
  EXPECT_EQ(e.borehole.LayerAveraging, 2);
  EXPECT_EQ(e.borehole.DepthToRigidLayer, 0.0f);
  EXPECT_TRUE(e.borehole.LayerTable.empty());
  EXPECT_EQ(e.foundation.NumberOfPiles, 0);
  EXPECT_EQ(e.foundation.NumberOfElements, 0);
  EXPECT_EQ(e.foundation.FreeStandingLength, 0.0f);
  EXPECT_TRUE(e.foundation.PileTable.empty());
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

TEST(ModelRecords, AvailableMemoryIsBelowWhatTheMachineReports) {
  const std::uint64_t machine = MachineAvailableBytes();
  const std::uint64_t usable = AvailableMemoryBytes();
  ASSERT_NE(machine, UINT64_MAX) << "no MemAvailable on this system";
  EXPECT_LT(usable, machine);
  EXPECT_GT(usable, 0u);
}

}  // namespace
}  // namespace quellon
