#include "engine/run_analysis.h"

#include "engine/file_units.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

using namespace testing;

void CountIncrement(const int*) {}

TEST(RunDriver, RunResetsTheModelButKeepsFilesCallbacksAndErrorCode) {
  ScratchDir dir;
  Engine e;
  FillSmallModel(e, 2, 2, 2);
  Project& p = e.project;
  p.Year = 2031;
  p.Flags(35) = 1;
  p.ErrorCode = 33;
  p.MessageCallback = &RecordMessage;
  p.CounterCallback = &CountIncrement;
  e.borehole.DepthToRigidLayer = 30.0f;
  ASSERT_EQ(StartLOGFile(e, (dir / "run.log").string()), 1);
  ::testing::internal::CaptureStdout();
  ASSERT_EQ(RunAnalysis(e, (dir / "run.xml").string(), (dir / "run.txt").string()), 1);
  ::testing::internal::GetCapturedStdout();
  // The model is back to its reset values...
  EXPECT_EQ(std::vector<int>({p.Year, p.Month, p.Day, p.Flags(35), p.DynamicModel, p.NonLinear,
                              e.actions.NumberOfIncrements, e.foundation.NumberOfPiles}),
            std::vector<int>({2000, 1, 1, 0, 1, 0, 1, 0}));
  EXPECT_EQ(e.actions.Fz + e.borehole.DepthToRigidLayer, 0.0f);
  EXPECT_FALSE(e.foundation.PilesCreated || e.borehole.LayersCreated || e.running);
  EXPECT_EQ(WorkspaceElements(e.ws), 0u);
  // ...but the host's callbacks, units, error code and open outputs stay.
  EXPECT_EQ(p.ErrorCode, 33);
  EXPECT_TRUE(p.MessageCallback == &RecordMessage && p.CounterCallback == &CountIncrement);
  EXPECT_EQ(std::vector<int>({p.LOGUnit, p.XMLUnit, p.TXTUnit}), std::vector<int>({kLOGUnit, kXMLUnit, kTXTUnit}));
  EXPECT_TRUE(e.files.xml.is_open() && e.files.txt.is_open());
  // Released tables can be made again.
  EXPECT_EQ(CreatePiles(e, 1), 1);
  EXPECT_EQ(CreateLayers(e, 1), 1);
}

TEST(RunDriver, FileUnitsOpenWithoutTrailingBlanksAndCloseOnce) {
  ScratchDir dir;
  Engine e;
  const std::string path = (dir / "with space.xml").string();
  ASSERT_EQ(OpenRunFiles(e, path + "    ", std::nullopt), 1);
  EXPECT_EQ(e.files.xml.path(), path);
  // The model file reader closes its file at the end of a good read but leaves the unit
  // field at 7: the close still clears the field and tells the host, once.
  e.project.MessageCallback = &RecordMessage;
  e.project.TMWUnit = kTMWUnit;
  Received().clear();
  CloseTMWFile(e);
  CloseTMWFile(e);
  EXPECT_EQ(e.project.TMWUnit, 0);
  EXPECT_EQ(Received(), std::vector<std::string>{"0 Closed TMW file"});
}

}  // namespace
}  // namespace quellon
