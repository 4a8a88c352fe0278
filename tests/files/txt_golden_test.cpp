// The TXT report written section by section: the lines of a run with every flag clear,
// the project block, and whole sections against golden files in the test data. The
// golden files were checked line by line against the report's layouts when first
// written; a change here means a changed report, which engineers compare by column.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "files/reports.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

using testing::ExpectGolden;
using testing::OpenTXT;
using testing::ReadLines;
using testing::SetAllFlags;
using testing::SmallModel;
using testing::TempFile;

std::vector<std::string> g_messages;

// Every writer of a run in the driver's order for one increment, with the group
// coefficient tables t.
void WholeIncrement(Engine& e, int i, const float t[6][6]) {
  PrintIncrementHead(e, i);
  PrintSolveVectors(e);
  PrintUnitStresses(e);
  PrintUnitHeadLoads(e);
  WriteTXTGroupStiffness(e, t);
  WriteTXTGroupFlexibility(e, t);
  PrintIncrementalDisplacements(e);
  PrintNonLinearMatrices(e, i);
  WriteTXTIncrementResults(e, i);
}

// With every flag clear a whole run writes the input part alone, which ends in the
// group centre; its layout is pinned by the goldens of the input part and the full runs.
TEST(TXTReport, AllFlagsClearGiveBannerInputPartAndGroupCentreOnly) {
  TempFile whole(".txt"), input(".input.txt");
  std::vector<std::string> lines[2];
  for (int k = 0; k < 2; ++k) {
    Engine e;
    SmallModel(e, 2, 2, 1);
    e.actions.Fz = 1000.0f, e.actions.Fx = 50.0f, e.foundation.CentreOfRotationX = 1.0f;
    OpenTXT(e, (k == 0 ? whole : input).path());
    g_messages.clear();
    e.project.MessageCallback = [](const int* s, const char* t) { g_messages.push_back(std::to_string(*s) + t); };
    WriteTXTInput(e);
    if (k == 0) {
      PrintLimitingStresses(e);
      WriteSinglePileMatrix(e, 1);
      PrintPileMatrix(e, 1);
      const float t[6][6] = {};
      WholeIncrement(e, 1, t);
    }
    e.files.txt.close();
    lines[k] = ReadLines((k == 0 ? whole : input).path());
  }
  EXPECT_EQ(lines[0], lines[1]);
  ASSERT_GE(lines[0].size(), 40u);
  EXPECT_EQ(lines[0][0], std::string(70, '*'));
  EXPECT_EQ(lines[0][15], " Soil model                            =  LINEAR ELASTIC");
  EXPECT_EQ(std::vector<std::string>(lines[0].end() - 2, lines[0].end()),
            (std::vector<std::string>{" X-coord of assumed group centre of rotation =   1.000",
                                      " Y-coord of assumed group centre of rotation =   0.000"}));
  EXPECT_EQ(g_messages, (std::vector<std::string>{"0Writing input data to TXT output file...",
                                                  "0Finished writing input data to TXT output file"}));
}

TEST(TXTReport, ProjectBlockCutsOrPadsTheFileNameToEightyColumns) {
  const std::string long_name(97, 'n');
  for (const std::string& name : {long_name, std::string("short.tmw")}) {
    TempFile txt(".txt");
    Engine e;
    SmallModel(e, 1, 1, 1);
    e.project.Flags(2) = 1;
    e.project.Name.assign("Pier 7   ");
    e.project.Description.assign("Final design");
    e.project.Year = 2024, e.project.Month = 3, e.project.Day = 9;
    e.project.Filename.assign(name);
    OpenTXT(e, txt.path());
    WriteTXTInput(e);
    e.files.txt.close();
    std::string field = name.substr(0, 80);
    field.resize(80, ' ');
    const auto lines = ReadLines(txt.path());
    ASSERT_GE(lines.size(), 16u);
    EXPECT_EQ(std::vector<std::string>(lines.begin() + 9, lines.begin() + 16),
              (std::vector<std::string>{"", " Project name:  Pier 7", " Description:  Final design", " Date:  2024-03-09",
                                        " File name:  " + field, "", lines[15]}));
    EXPECT_EQ(lines[15], "                    ----- I N P U T -----         ");
  }
}

// Known values of every magnitude and both signs, some below the cut-offs: value i is
// scale * ((37 i + 11 seed) mod 41 - 20) / 7, and every fifth value 1e-4 of that.
float Known(int i, int seed, float scale) {
  const float base = static_cast<float>((37 * i + 11 * seed) % 41 - 20) / 7.0f;
  return (i % 5 == 0 ? 1e-4f : 1.0f) * scale * base;
}
void Fill(RealVector& v, int seed, float scale) {
  for (int i = 1; i <= v.size(); ++i) v(i) = Known(i, seed, scale);
}
void Fill(RealMatrix& a, int seed, float scale) {
  for (int j = 1; j <= a.cols(); ++j)
    for (int i = 1; i <= a.rows(); ++i) a(i, j) = Known(i + 7 * j, seed, scale);
}

// Two piles, one raked and reinforced, in four layers of the four ground types, every
// report flag but 38; and the results of an increment in every array the report reads.
void Model(Engine& e, int elements, int increments) {
  SmallModel(e, 2, elements, increments);
  Project& pr = e.project;
  SetAllFlags(pr, true);
  pr.Name.assign("Golden test group"), pr.Description.assign("Two piles, four grounds");
  pr.Filename.assign("/projects/golden/two-piles.tmw"), pr.Year = 2025, pr.Month = 11, pr.Day = 4, pr.Flags(38) = 0;
  pr.InteractionFlag = 2, pr.Rs = 0.9f, pr.Rb = 0.8f, pr.Rl = 0.7f, pr.Rt = 0.6f, pr.ElasticUnloading = 0;
  Pile& p = e.foundation.Piles(2);
  p.RakeX = 5.0f, p.Y = -1.5f, p.Z = 0.25f, p.InternalDiameter = 0.3f, p.BaseDiameter = 0.9f;
  p.ReinforcedLength = 6.0f, p.UnreinforcedEA = 2.2e6f, p.UnreinforcedGJ = 2.5e4f;
  p.UnreinforcedEIx = p.UnreinforcedEIy = 3.3e4f;
  e.foundation.FreeStandingLength = 0.5f, e.foundation.CentreOfRotationX = 1.0f, e.foundation.CentreOfRotationY = -0.75f;
  Borehole& b = e.borehole;
  b.DepthToRigidLayer = 30.0f, b.Overburden = 12.5f, b.LayerAveraging = 2;
  b.LayerTable.resize(4), b.NumberOfLayers = 4;
  const float tops[4] = {0.0f, 2.5f, 8.0f, 15.0f};
  for (int i = 1; i <= 4; ++i) {
    Layer& l = b.Layers(i);
    const float f = static_cast<float>(i);
    l.DepthToTop = tops[i - 1], l.GroundType = i, l.Ev = 1.5e4f * f, l.dEv = 250.0f * static_cast<float>(i - 1);
    l.Eh = 1.2e4f * f, l.dEh = 130.0f, l.Poisson = 0.25f + 0.05f * f, l.WeightDensity = 17.0f + f;
  }
  Layer &l1 = b.Layers(1), &l2 = b.Layers(2), &l3 = b.Layers(3), &l4 = b.Layers(4);
  l1.phi = 32.0f, l1.delta = 24.0f, l1.Ks = 0.8f, l1.MaxSkinFriction = 95.0f;
  l2.cu = 35.0f, l2.dcu = 4.0f, l2.alpha = 0.6f;
  l3.qu = 12000.0f, l3.k1 = 0.3f, l3.k2 = 0.5f, l3.k3 = 3.0f, l3.k4 = 0.5f, l3.k5 = 0.9f, l3.MaxBearingPressure = 7500.0f;
  l4.DirectSkinFriction = 110.0f, l4.DirectEndBearing = 6500.0f, l4.HasDirectLateral = 1, l4.DirectLateral = 420.0f;
  e.actions = Actions{120.0f, -60.0f, 2400.0f, 35.0f, -80.0f, 15.0f, 1.25f, -0.5f, increments};
  const float inc[6] = {1200.0f, 60.0f, -40.0f, -30.0f, 17.5f, 7.5f};
  for (int i = 1; i <= 6; ++i) e.ws.CapLoadInc(i) = inc[i - 1] * 2.0f / static_cast<float>(increments);

  Workspace& w = e.ws;
  int seed = 1;
  for (RealMatrix* m : {&w.G, &w.D, &w.system.GD, &w.UBCV, &w.Tractions, &w.UnitStressAxial, &w.UnitStressX,
                        &w.UnitStressY, &w.UnitStressTorsion, &w.HeadAxial, &w.HeadX, &w.HeadMomentXZ, &w.HeadY,
                        &w.HeadMomentYZ, &w.HeadTorque, &w.HistoryDispInc, &w.HistoryDisp})
    Fill(*m, seed++, 1e-3f);
  Fill(w.HistoryLoad, seed++, 500.0f);
  for (RealVector* v : {&w.DispAxialInc, &w.DispXInc, &w.DispYInc, &w.TwistInc, &w.DispAxial, &w.DispX, &w.DispY,
                        &w.Twist, &w.HeadDispAxial, &w.HeadDispX, &w.HeadDispY, &w.HeadTwist, &w.CapDispInc,
                        &w.CapDispTotal})
    Fill(*v, seed++, 2e-3f);
  for (RealVector* v : {&w.StressAxialInc, &w.StressXInc, &w.StressYInc, &w.StressTorsionInc, &w.StressAxial,
                        &w.StressX, &w.StressY, &w.StressTorsion, &w.LoadAxialInc, &w.ShearXInc, &w.MomentXZInc,
                        &w.ShearYInc, &w.MomentYZInc, &w.TorqueInc, &w.LoadAxial, &w.ShearX, &w.MomentXZ, &w.ShearY,
                        &w.MomentYZ, &w.Torque, &w.PileHeadAxial, &w.PileHeadX, &w.PileHeadMomentXZ, &w.PileHeadY,
                        &w.PileHeadMomentYZ, &w.PileHeadTorque, &w.CapLoadTotal, &w.LimitAxial, &w.LimitX,
                        &w.LimitY, &w.LimitTorsion})
    Fill(*v, seed++, 40.0f);
  for (int c = 1; c <= w.Yielded.cols(); ++c)
    for (int r = 1; r <= 4; ++r) w.Yielded(r, c) = (c + r) % 3 == 0 ? 1 : 0;
  Fill(w.pile_D, 99, 1e-4f);
  w.YieldCountAxial = 3, w.YieldCountX = 4, w.YieldCountY = 0, w.YieldCountTorsion = 2;
}

TEST(TXTReport, SectionsAgainstGoldenFiles) {
  float t[6][6];
  for (int a = 0; a < 6; ++a)
    for (int b = 0; b < 6; ++b) t[a][b] = Known(6 * a + b + 1, 3, 250.0f);
  // The input part (kind 0); the assembly dumps and the last increment of a non-linear
  // run (1); the increment of a linear run (2).
  const char* const goldens[3] = {"txt_input_nonlinear.txt", "txt_increment_nonlinear.txt", "txt_increment_linear.txt"};
  for (int kind = 0; kind < 3; ++kind) {
    TempFile txt(".txt"), log(".log");
    Engine e;
    Model(e, kind == 2 ? 1 : 2, kind == 0 ? 4 : 3 - kind);
    OpenTXT(e, txt.path());
    testing::OpenLOG(e, log.path());
    if (kind == 0) WriteTXTInput(e);
    if (kind == 1) {
      PrintLimitingStresses(e);
      WriteSinglePileMatrix(e, 2);
      PrintPileMatrix(e, 2);
    }
    if (kind > 0) WholeIncrement(e, 3 - kind, t);
    e.files.txt.close();
    e.files.log.close();
    ExpectGolden(txt.path(), goldens[kind]);
    // The numbers go to the report; the LOG gets one trace line per matrix and vector.
    const auto trace = ReadLines(log.path());
    if (kind == 1) {
      EXPECT_EQ(std::count(trace.begin(), trace.end(), "PrintMatrix, line 23"), 17);
      EXPECT_EQ(std::count(trace.begin(), trace.end(), "PrintMatrix, line 64"), 4);
      EXPECT_EQ(trace.size(), 21u);
    }
  }
}

}  // namespace
}  // namespace quellon
