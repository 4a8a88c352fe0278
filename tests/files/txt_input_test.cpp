// The input part of the TXT report. Expected lines are written out by hand from the
// report's layouts, field by field, so that a wrong width or a lost blank shows.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/reports.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

using testing::OpenTXT;
using testing::ReadLines;
using testing::SmallModel;
using testing::TempFile;

std::vector<std::string> g_messages;
void RecordMessage(const int* severity, const char* text) {
  g_messages.push_back(std::to_string(*severity) + ":" + text);
}

// True if `run` stands in `lines` as consecutive lines.
bool ContainsRun(const std::vector<std::string>& lines, const std::vector<std::string>& run) {
  if (run.empty() || lines.size() < run.size()) return false;
  for (std::size_t i = 0; i + run.size() <= lines.size(); ++i) {
    bool all = true;
    for (std::size_t k = 0; all && k < run.size(); ++k) all = lines[i + k] == run[k];
    if (all) return true;
  }
  return false;
}

// Two vertical piles of two elements, one layer, loads on the cap; a linear run.
void LinearModel(Engine& e) {
  SmallModel(e, 2, 2, 1);
  e.borehole.LayerAveraging = 2;
  Actions& a = e.actions;
  a.Fz = 1000.0f;
  a.Fx = 50.0f;
  a.Fy = -20.0f;
  a.Mx = 10.0f;
  a.Mz = 5.0f;
  a.X = 1.0f;
  e.foundation.CentreOfRotationX = 1.0f;
}

// Every writer of a run, in the driver's order, for one increment.
void WholeRun(Engine& e) {
  WriteTXTInput(e);
  PrintLimitingStresses(e);
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    WriteSinglePileMatrix(e, p);
    PrintPileMatrix(e, p);
  }
  PrintIncrementHead(e, 1);
  PrintSolveVectors(e);
  PrintUnitStresses(e);
  PrintUnitHeadLoads(e);
  const float t[6][6] = {};
  WriteTXTGroupStiffness(e, t);
  WriteTXTGroupFlexibility(e, t);
  PrintIncrementalDisplacements(e);
  PrintNonLinearMatrices(e, 1);
  WriteTXTIncrementResults(e, 1);
}

TEST(TXTInput, AllFlagsClearGiveBannerInputPartAndGroupCentreOnly) {
  TempFile txt(".txt");
  Engine e;
  LinearModel(e);
  OpenTXT(e, txt.path());
  g_messages.clear();
  e.project.MessageCallback = RecordMessage;
  WholeRun(e);
  e.files.txt.close();

  const std::string stars(70, '*');
  const std::vector<std::string> expected = {
      stars,
      " Program  T O L M A R K  ",
      "",
      "                   Analysis and design of pile groups & piled rafts ",
      "",
      " Version: 3.23",
      " QuellonEngine - pile group analysis by the boundary element method",
      " Copyright (c) 2026 the QuellonEngine developers",
      stars,
      "",
      "                    ----- I N P U T -----         ",
      "",
      " Scope of the problem:  Pile group with fully-rigid cap",
      " No. of piles                          =   2",
      " No. of pile shaft elements per pile   =   2",
      " Soil model                            =  LINEAR ELASTIC",
      "",
      " Pile  Length  Diam.  Diam.  Diam.  Rake Rake   X-coord     Y-coord     Z-coord",
      "                      (Int)  (Base) (X)  (Y)",
      "        (m)     (m)     (m)     (m)   (deg) (deg)   (m)         (m)         (m)",
      "  1    10.0    0.500  0.000  0.500  0.0  0.0   0.000E+00   0.000E+00   0.000E+00",
      "  2    10.0    0.500  0.000  0.500  0.0  0.0   2.000E+00   0.000E+00   0.000E+00",
      "",
      " Pile    Axial     Flexural    Flexural    Torsional",
      "          EA         EIx         EIy          GJ    ",
      "  1    5.00E+06    1.00E+05    1.00E+05    8.00E+04",
      "  2    5.00E+06    1.00E+05    1.00E+05    8.00E+04",
      "",
      " Free-standing length of piles (same for all)=  0.000",
      " Depth to underlying rigid layer             =  None",
      " Treatment of layered soil                   =  Yamashita et al (1987)",
      "",
      " Layer  Depth   Soil mod. Gradient of  Soil mod.  Gradient of  Poisson",
      "        to top  at top    soil mod.    at top     soil mod.    ratio",
      "                (axial)   with depth   (lateral)  with depth",
      "                          (axial)                 (lateral)",
      "  1      0.0    0.20E+05  0.00E+00     0.20E+05   0.00E+00     0.30",
      "",
      " TOTAL APPLIED LOADS ON RAFT:",
      " Vertical Load              =      1000.0",
      " Horizontal Load in X-dir   =        50.0",
      " Moment in XZ plane         =         0.0",
      " Horizontal Load in Y-dir   =       -20.0",
      " Moment in YZ plane         =        10.0",
      " X-coord of Vertical Load   =         1.00",
      " Y-coord of Vertical Load   =         0.00",
      " Torque in XY plane         =         5.0",
      "",
      "",
      "                   ----- O U T P U T -----     ",
      "",
      " X-coord of assumed group centre of rotation =   1.000",
      " Y-coord of assumed group centre of rotation =   0.000",
  };
  EXPECT_EQ(ReadLines(txt.path()), expected);
  const std::vector<std::string> messages = {"0:Writing input data to TXT output file...",
                                             "0:Finished writing input data to TXT output file"};
  EXPECT_EQ(g_messages, messages);
}

TEST(TXTInput, AClosedReportWritesNothingAndSendsNothing) {
  TempFile txt(".txt");
  Engine e;
  LinearModel(e);
  testing::SetAllFlags(e.project, true);
  OpenTXT(e, txt.path());
  e.project.TXTUnit = 0;  // the unit field decides, even with a file object at hand
  g_messages.clear();
  e.project.MessageCallback = RecordMessage;
  WholeRun(e);
  WriteTXTCapacityStop(e, 1);
  e.files.txt.close();
  EXPECT_TRUE(ReadLines(txt.path()).empty());
  EXPECT_TRUE(g_messages.empty());
}

TEST(TXTInput, ProjectBlockCutsOrPadsTheFileNameToEightyColumns) {
  const std::string long_name = "/data/projects/bridge-over-the-river/foundations/pier-07/analysis/"
                                "pile-group-final-revision-C.tmw";  // 97 characters
  ASSERT_GT(long_name.size(), 80u);
  for (const std::string& name : {long_name, std::string("short.tmw")}) {
    TempFile txt(".txt");
    Engine e;
    LinearModel(e);
    e.project.Flags(2) = 1;
    e.project.Name.assign("Pier 7   ");
    e.project.Description.assign("Final design");
    e.project.Year = 2024;
    e.project.Month = 3;
    e.project.Day = 9;
    e.project.Filename.assign(name);
    OpenTXT(e, txt.path());
    WriteTXTInput(e);
    e.files.txt.close();
    std::string field = name.substr(0, 80);
    field.resize(80, ' ');
    const std::vector<std::string> block = {"", " Project name:  Pier 7", " Description:  Final design",
                                            " Date:  2024-03-09", " File name:  " + field};
    const auto lines = ReadLines(txt.path());
    EXPECT_TRUE(ContainsRun(lines, block)) << name;
    // The block stands between the banner and the input heading.
    ASSERT_GE(lines.size(), 15u);
    EXPECT_EQ(lines[9], "");
    EXPECT_EQ(lines[10], " Project name:  Pier 7");
    EXPECT_EQ(lines[15], "                    ----- I N P U T -----         ");
  }
}

TEST(TXTInput, ManualNqNeedsACoarseLastLayerAndAutoNqOff) {
  struct Case {
    int ground_type, auto_nq;
    bool shown;
  };
  for (const Case c : {Case{kCoarseSoil, 2, true}, Case{kCoarseSoil, 0, true}, Case{kCoarseSoil, 1, false},
                       Case{kFineSoil, 2, false}}) {
    TempFile txt(".txt");
    Engine e;
    SmallModel(e, 1, 1, 3);
    e.borehole.LayerTable.resize(2);
    e.borehole.NumberOfLayers = 2;
    e.borehole.Layers(1).GroundType = c.ground_type == kCoarseSoil ? kFineSoil : kCoarseSoil;
    e.borehole.Layers(2).GroundType = c.ground_type;  // the last layer decides
    e.project.AutoNq = c.auto_nq;
    e.project.Nq = 42.3f;
    OpenTXT(e, txt.path());
    WriteTXTInput(e);
    e.files.txt.close();
    const auto lines = ReadLines(txt.path());
    EXPECT_EQ(ContainsRun(lines, {"", " Manual bearing capacity factor Nq      =  42.3"}), c.shown)
        << c.ground_type << " " << c.auto_nq;
  }
}

TEST(TXTInput, InteractionRigidLayerAndTreatmentLines) {
  struct Case {
    int interaction;
    float rigid;
    int averaging;
    std::vector<std::string> run;
  };
  const std::string spacing = " Limiting spacing for pile interaction       =";
  const std::string rigid = " Depth to underlying rigid layer             =";
  const std::string free = " Free-standing length of piles (same for all)=  1.250";
  const std::vector<Case> cases = {
      {1, 0.0f, 3, {free, rigid + "  None", "", " Layer  Depth   Soil mod. Gradient of  Soil mod.  Gradient of  Poisson"}},
      {2, 1e-21f, 1, {free, "", spacing + "  50*pile diameter", rigid + "  None",
                      " Treatment of layered soil                   =  Poulos (1979)"}},
      {3, 12.5f, 2, {free, "", spacing + "   7.500", rigid + "  12.500",
                     " Treatment of layered soil                   =  Yamashita et al (1987)"}},
      {3, -1e-20f, 2, {free, "", spacing + "   7.500", rigid + "  -0.000"}},
  };
  for (const Case& c : cases) {
    TempFile txt(".txt");
    Engine e;
    LinearModel(e);
    e.foundation.FreeStandingLength = 1.25f;
    e.project.InteractionFlag = c.interaction;
    e.project.InteractionDistance = 7.5f;
    e.borehole.DepthToRigidLayer = c.rigid;
    e.borehole.LayerAveraging = c.averaging;
    OpenTXT(e, txt.path());
    WriteTXTInput(e);
    e.files.txt.close();
    EXPECT_TRUE(ContainsRun(ReadLines(txt.path()), c.run)) << c.interaction << " " << c.rigid;
  }
}

}  // namespace
}  // namespace quellon
