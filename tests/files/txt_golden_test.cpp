// Whole sections of the TXT report against golden files in the test data. The golden
// files were checked line by line against the report's layouts when first written; a
// change here means a changed report, which hosts and engineers compare by column.
// On a mismatch the actual text is kept in the temporary folder for a diff.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "engine/utilities.h"
#include "files/reports.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

using testing::OpenTXT;
using testing::ReadBytes;
using testing::SetAllFlags;
using testing::SmallModel;
using testing::TempFile;

void ExpectGolden(const std::string& actual_path, const std::string& golden_name) {
  const std::string golden_path = std::string(QUELLON_TEST_DATA_DIR) + "/" + golden_name;
  const std::string actual = ReadBytes(actual_path);
  ASSERT_FALSE(actual.empty());
  if (!std::filesystem::exists(golden_path) || ReadBytes(golden_path) != actual) {
    const std::string keep = (std::filesystem::temp_directory_path() / (golden_name + ".actual")).string();
    std::ofstream(keep, std::ios::binary) << actual;
    ADD_FAILURE() << golden_name << " differs from the report; actual text in " << keep;
  }
}

// Known values of every magnitude and both signs, with some below the cut-offs: value
// i of a vector is scale * ((37 i + 11 seed) mod 41 - 20) / 7, and every fifth value is
// 1e-4 of that.
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

// Two piles, one raked and reinforced, in four layers of the four ground types.
void Model(Engine& e, int elements, int increments) {
  SmallModel(e, 2, elements, increments);
  Project& pr = e.project;
  SetAllFlags(pr, true);
  pr.Flags(38) = 0;
  pr.Name.assign("Golden test group");
  pr.Description.assign("Two piles, four grounds");
  pr.Year = 2025;
  pr.Month = 11;
  pr.Day = 4;
  pr.Filename.assign("/projects/golden/two-piles.tmw");
  pr.InteractionFlag = 2;
  pr.Rs = 0.9f;
  pr.Rb = 0.8f;
  pr.Rl = 0.7f;
  pr.Rt = 0.6f;
  pr.ElasticUnloading = 0;
  Pile& p = e.foundation.Piles(2);
  p.RakeX = 5.0f;
  p.Y = -1.5f;
  p.Z = 0.25f;
  p.InternalDiameter = 0.3f;
  p.BaseDiameter = 0.9f;
  p.ReinforcedLength = 6.0f;
  p.UnreinforcedEA = 2.2e6f;
  p.UnreinforcedEIx = p.UnreinforcedEIy = 3.3e4f;
  p.UnreinforcedGJ = 2.5e4f;
  e.foundation.FreeStandingLength = 0.5f;
  e.foundation.CentreOfRotationX = 1.0f;
  e.foundation.CentreOfRotationY = -0.75f;
  Borehole& b = e.borehole;
  b.DepthToRigidLayer = 30.0f;
  b.Overburden = 12.5f;
  b.LayerAveraging = 2;
  b.LayerTable.resize(4);
  b.NumberOfLayers = 4;
  const float tops[4] = {0.0f, 2.5f, 8.0f, 15.0f};
  for (int i = 1; i <= 4; ++i) {
    Layer& l = b.Layers(i);
    l.DepthToTop = tops[i - 1];
    l.GroundType = i;
    l.Ev = 1.5e4f * static_cast<float>(i);
    l.dEv = 250.0f * static_cast<float>(i - 1);
    l.Eh = 1.2e4f * static_cast<float>(i);
    l.dEh = 130.0f;
    l.Poisson = 0.25f + 0.05f * static_cast<float>(i);
    l.WeightDensity = 17.0f + static_cast<float>(i);
  }
  b.Layers(1).phi = 32.0f;
  b.Layers(1).delta = 24.0f;
  b.Layers(1).Ks = 0.8f;
  b.Layers(1).MaxSkinFriction = 95.0f;
  b.Layers(2).cu = 35.0f;
  b.Layers(2).dcu = 4.0f;
  b.Layers(2).alpha = 0.6f;
  b.Layers(3).qu = 12000.0f;
  b.Layers(3).k1 = 0.3f;
  b.Layers(3).k2 = 0.5f;
  b.Layers(3).k3 = 3.0f;
  b.Layers(3).k4 = 0.5f;
  b.Layers(3).k5 = 0.9f;
  b.Layers(3).MaxBearingPressure = 7500.0f;
  b.Layers(4).DirectSkinFriction = 110.0f;
  b.Layers(4).DirectEndBearing = 6500.0f;
  b.Layers(4).HasDirectLateral = 1;
  b.Layers(4).DirectLateral = 420.0f;
  Actions& a = e.actions;
  a.Fz = 2400.0f;
  a.Fx = 120.0f;
  a.Fy = -60.0f;
  a.Mx = 35.0f;
  a.My = -80.0f;
  a.Mz = 15.0f;
  a.X = 1.25f;
  a.Y = -0.5f;
  const float inc[6] = {1200.0f, 60.0f, -40.0f, -30.0f, 17.5f, 7.5f};
  for (int i = 1; i <= 6; ++i) e.ws.CapLoadInc(i) = inc[i - 1] * 2.0f / static_cast<float>(increments);
}

// The results of an increment: every array that the report reads.
void FillResults(Engine& e) {
  Workspace& w = e.ws;
  int seed = 1;
  for (RealMatrix* m : {&w.G, &w.D, &w.GD, &w.UBCV, &w.Tractions, &w.UnitStressAxial, &w.UnitStressX,
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
  w.YieldCountAxial = 3;
  w.YieldCountX = 4;
  w.YieldCountY = 0;
  w.YieldCountTorsion = 2;
}

// The writers of one increment in the driver's order.
void Increment(Engine& e, int i) {
  PrintIncrementHead(e, i);
  PrintSolveVectors(e);
  PrintUnitStresses(e);
  PrintUnitHeadLoads(e);
  float t[6][6];
  for (int a = 0; a < 6; ++a)
    for (int b = 0; b < 6; ++b) t[a][b] = Known(6 * a + b + 1, 3, 250.0f);
  WriteTXTGroupStiffness(e, t);
  WriteTXTGroupFlexibility(e, t);
  PrintIncrementalDisplacements(e);
  PrintNonLinearMatrices(e, i);
  WriteTXTIncrementResults(e, i);
}

TEST(TXTGolden, InputPartOfANonLinearModel) {
  TempFile txt(".txt");
  Engine e;
  Model(e, 2, 4);
  OpenTXT(e, txt.path());
  WriteTXTInput(e);
  e.files.txt.close();
  ExpectGolden(txt.path(), "txt_input_nonlinear.txt");
}

int CountLines(const std::vector<std::string>& lines, const std::string& text) {
  int n = 0;
  for (const std::string& l : lines) n += l == text ? 1 : 0;
  return n;
}

TEST(TXTGolden, AssemblyDumpsAndTheLastIncrementOfANonLinearRun) {
  TempFile txt(".txt");
  TempFile log(".log");
  Engine e;
  Model(e, 2, 2);
  FillResults(e);
  OpenTXT(e, txt.path());
  testing::OpenLOG(e, log.path());
  PrintLimitingStresses(e);
  WriteSinglePileMatrix(e, 2);
  PrintPileMatrix(e, 2);
  Increment(e, 2);
  e.files.txt.close();
  e.files.log.close();
  ExpectGolden(txt.path(), "txt_increment_nonlinear.txt");
  // The numbers go to the report; the LOG gets one trace line per matrix and vector.
  const auto trace = testing::ReadLines(log.path());
  EXPECT_EQ(CountLines(trace, "PrintMatrix, line 23"), 2 + 1 + 2 + 4 + 6 + 2);
  EXPECT_EQ(CountLines(trace, "PrintMatrix, line 64"), 4);
  EXPECT_EQ(trace.size(), 21u);
}

TEST(TXTGolden, IncrementOfALinearRun) {
  TempFile txt(".txt");
  Engine e;
  Model(e, 1, 1);
  FillResults(e);
  OpenTXT(e, txt.path());
  Increment(e, 1);
  e.files.txt.close();
  ExpectGolden(txt.path(), "txt_increment_linear.txt");
}

}  // namespace
}  // namespace quellon
