#include "engine/run_analysis.h"

#include <gtest/gtest.h>

#include "engine/engine.h"
#include "engine/file_units.h"
#include "engine_test_support.h"

namespace quellon {
namespace {

using namespace testing_support;

int counted = 0;
void CountIncrement(const int*) { ++counted; }

TEST(RunDriver, RunConsumesTheModelButKeepsFilesAndCallbacks) {
  ScratchDir dir;
  Engine e;
  FillSmallModel(e, 2, 2, 2);
  e.project.Year = 2031;
  e.project.Flags(35) = 1;
  e.project.ErrorCode = 33;
  e.project.MessageCallback = &RecordMessage;
  e.project.CounterCallback = &CountIncrement;
  ASSERT_EQ(StartLOGFile(e, (dir / "run.log").string()), 1);
  counted = 0;
  Received().clear();
  testing::internal::CaptureStdout();
  ASSERT_EQ(RunAnalysis(e, (dir / "run.xml").string(), (dir / "run.txt").string()), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Increment 1\nIncrement 2\n");
  EXPECT_EQ(counted, 2);

  EXPECT_EQ(e.project.Year, 2000);
  EXPECT_EQ(e.project.Month, 1);
  EXPECT_EQ(e.project.Day, 1);
  EXPECT_EQ(e.project.Flags(35), 0);
  EXPECT_EQ(e.project.DynamicModel, 1);
  EXPECT_EQ(e.project.NonLinear, 0);
  EXPECT_EQ(e.actions.NumberOfIncrements, 1);
  EXPECT_EQ(e.foundation.NumberOfPiles, 0);
  EXPECT_FALSE(e.foundation.PilesCreated);
  EXPECT_FALSE(e.borehole.LayersCreated);
  EXPECT_EQ(WorkspaceElements(e.ws), 0u);
  EXPECT_FALSE(e.running);
  EXPECT_EQ(e.project.ErrorCode, 33);
  EXPECT_EQ(e.project.MessageCallback, &RecordMessage);
  EXPECT_EQ(e.project.CounterCallback, &CountIncrement);
  EXPECT_EQ(e.project.LOGUnit, kLOGUnit);
  EXPECT_EQ(e.project.XMLUnit, kXMLUnit);
  EXPECT_EQ(e.project.TXTUnit, kTXTUnit);
  EXPECT_TRUE(e.files.xml.is_open());
  EXPECT_TRUE(e.files.txt.is_open());
  ASSERT_FALSE(Received().empty());
  EXPECT_EQ(Received().back(), "0 Finished running the boundary element analysis (success)");
}

std::uint64_t NoMemory() { return 0; }

TEST(RunDriver, WorkspaceFailureEndsTheRunAsAFailureWithTheModelReset) {
  ScratchDir dir;
  Engine e;
  FillSmallModel(e, 1, 2, 1);
  e.memory_probe = &NoMemory;
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  EXPECT_EQ(RunAnalysis(e, (dir / "f.xml").string(), std::nullopt), 0);
  EXPECT_EQ(Received(), (std::vector<std::string>{
                            "0 Running the boundary element analysis...",
                            "2 Insufficient virtual memory to proceed (creating 1D real matrix)",
                            "2 Error - insufficient memory/address space to create 1D matrices",
                            "0 Releasing memory ...",
                            "0 Finished running the boundary element analysis (failed)",
                        }));
  EXPECT_EQ(WorkspaceElements(e.ws), 0u);
  EXPECT_EQ(e.foundation.NumberOfPiles, 0);
  EXPECT_EQ(e.project.Year, 2000);
  EXPECT_FALSE(e.running);
}

TEST(RunDriver, PathsLoseTrailingBlanksOnly) {
  ScratchDir dir;
  Engine e;
  const std::string path = (dir / "with space.xml").string();
  ASSERT_EQ(OpenRunFiles(e, path + "    ", std::nullopt), 1);
  EXPECT_TRUE(fs::exists(path));
  EXPECT_EQ(e.files.xml.path(), path);
}

}  // namespace
}  // namespace quellon

namespace quellon {
namespace {

TEST(FileUnits, ClosingAUnitSpeaksOnceEvenIfItsReaderClosedTheFile) {
  // The model file reader closes its file at the end of a good read but leaves the unit
  // field at 7: the close still clears the field and tells the host, once.
  Engine e;
  e.project.MessageCallback = &testing_support::RecordMessage;
  e.project.TMWUnit = kTMWUnit;
  testing_support::Received().clear();
  CloseTMWFile(e);
  CloseTMWFile(e);
  CloseTMKFile(e);
  EXPECT_EQ(e.project.TMWUnit, 0);
  EXPECT_EQ(testing_support::Received(), std::vector<std::string>{"0 Closed TMW file"});
}

}  // namespace
}  // namespace quellon
