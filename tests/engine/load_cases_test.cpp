// Load cases of a linear run against separate runs with each case's loads as the run's
// own: every result vector, on a raked, layered group with a free-standing length, by
// both solvers; the run's own documents unchanged by its cases; and the cases that a
// run or the setters refuse.
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

#include "engine/run_analysis.h"
#include "../common/engine_support.h"
#include "quellon.h"

namespace quellon {
namespace {

using namespace testing;
using Snapshot = std::map<std::string, std::vector<float>>;

// Three piles raked along X, along Y and not at all, 2 m free above two clay layers.
void FillRakedLayeredModel(Engine& e, bool lapack, int increments = 1) {
  FillSmallModel(e, 3, 4, increments);
  ReleaseBorehole(e);
  ASSERT_EQ(CreateLayers(e, 2), 1);
  e.borehole.Layers(1) = Clay(0.0f, 15000.0f, 40.0f);
  e.borehole.Layers(2) = Clay(5.0f, 60000.0f, 120.0f);
  e.borehole.Layers(2).dEv = e.borehole.Layers(2).dEh = 1500.0f;
  e.borehole.DepthToRigidLayer = 30.0f;
  e.foundation.FreeStandingLength = 2.0f;
  e.foundation.Piles(1).RakeX = 10.0f;
  e.foundation.Piles(2).RakeY = -8.0f;
  e.foundation.Piles(3).Y = 2.5f;
  e.project.DynamicModel = e.project.Flags(16) = lapack ? 1 : 0;
  for (int f : {25, 27, 28, 31}) e.project.Flags(f) = 1;
}

Actions Loads(float fx, float fy, float fz, float mx, float my, float mz, float x, float y) {
  return Actions{.Fx = fx, .Fy = fy, .Fz = fz, .Mx = mx, .My = my, .Mz = mz, .X = x, .Y = y, .NumberOfIncrements = 1};
}
Actions Loads(const Actions& a, int increments) {
  Actions b = a;
  b.NumberOfIncrements = increments;
  return b;
}

std::vector<float> Copy(const float* v, int count) { return std::vector<float>(v, v + count); }

// The run's totals after each increment, read from the workspace when the host receives
// the cap's movement (also in an increment that uses up the group's capacity).
Engine* observed = nullptr;
Snapshot run_totals;
void TakeRunTotals(const float*, const float*, const float*, const float*, const float*, const float*) {
  const Workspace& w = observed->ws;
  const int P = observed->foundation.NumberOfPiles, n = observed->foundation.NumberOfElements;
  const int axial = (n + 1) * P, other = n * P;
  std::vector<float> cap_loads, cap_moves;
  for (int a = 1; a <= 6; ++a) {
    cap_loads.push_back(w.CapLoadTotal(ConvertAxis(a)));
    cap_moves.push_back(w.CapDispTotal(ConvertAxis(a)));
  }
  run_totals = {{"cap_loads", cap_loads}, {"cap_displacements", cap_moves},
                {"head_fx", Copy(w.PileHeadX.data(), P)}, {"head_fy", Copy(w.PileHeadY.data(), P)},
                {"head_fz", Copy(w.PileHeadAxial.data(), P)}, {"head_mx", Copy(w.PileHeadMomentYZ.data(), P)},
                {"head_my", Copy(w.PileHeadMomentXZ.data(), P)}, {"head_mz", Copy(w.PileHeadTorque.data(), P)},
                {"head_dx", Copy(w.HeadDispX.data(), P)}, {"head_dy", Copy(w.HeadDispY.data(), P)},
                {"head_dz", Copy(w.HeadDispAxial.data(), P)}, {"head_twist", Copy(w.HeadTwist.data(), P)},
                {"stress_axial", Copy(w.StressAxial.data(), axial)}, {"stress_x", Copy(w.StressX.data(), other)},
                {"stress_y", Copy(w.StressY.data(), other)}, {"stress_torsion", Copy(w.StressTorsion.data(), other)},
                {"disp_axial", Copy(w.DispAxial.data(), axial)}, {"disp_x", Copy(w.DispX.data(), other)},
                {"disp_y", Copy(w.DispY.data(), other)}, {"twist", Copy(w.Twist.data(), other)},
                {"load_axial", Copy(w.LoadAxial.data(), axial)}, {"shear_x", Copy(w.ShearX.data(), other)},
                {"shear_y", Copy(w.ShearY.data(), other)}, {"moment_xz", Copy(w.MomentXZ.data(), other)},
                {"moment_yz", Copy(w.MomentYZ.data(), other)}, {"torque", Copy(w.Torque.data(), other)}};
}

// What the load case callback received, by case.
std::vector<Snapshot> cases_received;
std::vector<std::string> case_names;
void TakeCase(const QuellonLoadCaseResults* r) {
  const int P = r->piles, axial = (r->elements + 1) * P, other = r->elements * P;
  case_names.push_back(std::to_string(r->number) + " " + r->name);
  cases_received.push_back(
      {{"cap_loads", Copy(r->cap_loads, 6)}, {"cap_displacements", Copy(r->cap_displacements, 6)},
       {"head_fx", Copy(r->head_fx, P)}, {"head_fy", Copy(r->head_fy, P)}, {"head_fz", Copy(r->head_fz, P)},
       {"head_mx", Copy(r->head_mx, P)}, {"head_my", Copy(r->head_my, P)}, {"head_mz", Copy(r->head_mz, P)},
       {"head_dx", Copy(r->head_dx, P)}, {"head_dy", Copy(r->head_dy, P)}, {"head_dz", Copy(r->head_dz, P)},
       {"head_twist", Copy(r->head_twist, P)}, {"stress_axial", Copy(r->stress_axial, axial)},
       {"stress_x", Copy(r->stress_x, other)}, {"stress_y", Copy(r->stress_y, other)},
       {"stress_torsion", Copy(r->stress_torsion, other)}, {"disp_axial", Copy(r->disp_axial, axial)},
       {"disp_x", Copy(r->disp_x, other)}, {"disp_y", Copy(r->disp_y, other)}, {"twist", Copy(r->twist, other)},
       {"load_axial", Copy(r->load_axial, axial)}, {"shear_x", Copy(r->shear_x, other)},
       {"shear_y", Copy(r->shear_y, other)}, {"moment_xz", Copy(r->moment_xz, other)},
       {"moment_yz", Copy(r->moment_yz, other)}, {"torque", Copy(r->torque, other)}});
}

std::string Bytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

int RunModel(Engine& e, const ScratchDir& dir, const std::string& name) {
  observed = &e;
  e.callbacks.SendPileCapDisplacements = &TakeRunTotals;
  ::testing::internal::CaptureStdout();
  const int result = RunAnalysis(e, (dir / (name + ".xml")).string(), (dir / (name + ".txt")).string());
  ::testing::internal::GetCapturedStdout();
  e.files.xml.close();
  e.files.txt.close();
  return result;
}

// The run's own loads have a torque; two cases have none, so their soil matrix lacks the
// torsion between near piles and they come from a second system, in turn with the first.
const std::vector<Actions> kCases = {
    Loads(0, 0, 900, 0, 0, 0, 0, 0),                // down, off the centre of rotation
    Loads(-60, 110, -200, 0, 40, 75, -0.5f, 2.0f),  // uplift and torque
    Loads(150, -80, 600, 120, -90, 0, 1.0f, 0.5f),  // sway, moments, an offset point
};

struct Route {
  const char* name;
  bool lapack;
  int increments;  // 1: linear
  bool corrected = false;  // corrected mechanics: one system serves cases with and without a torque
};

class LoadCasesRoute : public ::testing::TestWithParam<Route> {};

TEST_P(LoadCasesRoute, EachCaseEqualsASeparateRunWithItsLoads) {
  const Route route = GetParam();
  ScratchDir dir;
  // The separate runs.
  std::vector<Snapshot> separate;
  for (std::size_t c = 0; c < kCases.size(); ++c) {
    Engine e;
    FillRakedLayeredModel(e, route.lapack, route.increments);
    e.corrected_mechanics = route.corrected;
    e.actions = Loads(kCases[c], route.increments);
    ASSERT_EQ(RunModel(e, dir, "alone" + std::to_string(c)), 1);
    separate.push_back(run_totals);
  }
  // One run with its own loads (heavy enough to yield a non-linear group widely, so that
  // each case must start from the elastic state again) and the three cases; and the same
  // run without them.
  const Actions own = Loads(Loads(20, 30, 2500, 10, 20, 5, 0.3f, 0.2f), route.increments);
  Engine plain;
  FillRakedLayeredModel(plain, route.lapack, route.increments);
  plain.corrected_mechanics = route.corrected;
  plain.actions = own;
  ASSERT_EQ(RunModel(plain, dir, "plain"), 1);
  Engine e;
  FillRakedLayeredModel(e, route.lapack, route.increments);
  e.corrected_mechanics = route.corrected;
  e.actions = own;
  for (std::size_t c = 0; c < kCases.size(); ++c)
    e.load_cases.cases.push_back({"case " + std::to_string(c), kCases[c]});
  e.load_cases.xml_path = (dir / "cases.xml").string();
  e.load_cases.callback = &TakeCase;
  cases_received.clear();
  case_names.clear();
  ASSERT_EQ(RunModel(e, dir, "with"), 1);

  EXPECT_EQ(case_names, (std::vector<std::string>{"1 case 0", "2 case 1", "3 case 2"}));
  ASSERT_EQ(cases_received.size(), kCases.size());
  for (std::size_t c = 0; c < kCases.size(); ++c) {
    ASSERT_EQ(cases_received[c].size(), separate[c].size());
    for (const auto& [name, want] : separate[c]) {
      const std::vector<float>& got = cases_received[c].at(name);
      ASSERT_EQ(got.size(), want.size()) << name;
      double largest = 0.0, worst = 0.0;
      for (std::size_t i = 0; i < want.size(); ++i) {
        largest = std::max(largest, std::fabs(double(want[i])));
        worst = std::max(worst, std::fabs(double(got[i]) - double(want[i])));
      }
      EXPECT_LE(worst, 1e-5 * largest) << "case " << c << " " << name;
    }
  }
  // The cases leave the run's own documents as they are without them, and go with the
  // model at the end of the run; the callback stays.
  EXPECT_EQ(Bytes(dir / "with.xml"), Bytes(dir / "plain.xml"));
  EXPECT_EQ(Bytes(dir / "with.txt"), Bytes(dir / "plain.txt"));
  EXPECT_TRUE(e.load_cases.cases.empty() && e.load_cases.xml_path.empty());
  EXPECT_EQ(e.load_cases.callback, &TakeCase);
}

INSTANTIATE_TEST_SUITE_P(Runs, LoadCasesRoute,
                         ::testing::Values(Route{"LinearLapack", true, 1}, Route{"LinearOwnLU", false, 1},
                                           Route{"NonLinearLapack", true, 4}, Route{"NonLinearOwnLU", false, 4},
                                           Route{"LinearCorrected", false, 1, true},
                                           Route{"NonLinearCorrected", true, 4, true}),
                         [](const auto& info) { return std::string(info.param.name); });

// The cases document holds each case's increment in the lines of the run's own block,
// one level deeper: a case with the run's own loads repeats that block line for line.
TEST(LoadCases, DocumentRepeatsTheRunsIncrementBlockForTheRunsLoads) {
  ScratchDir dir;
  Engine e;
  FillRakedLayeredModel(e, true);
  for (int f : {21, 22}) e.project.Flags(f) = 1;
  e.actions = kCases[2];
  e.load_cases.cases.push_back({"own & <\"loads\">", kCases[2]});
  e.load_cases.xml_path = (dir / "cases.xml").string();
  ASSERT_EQ(RunModel(e, dir, "run"), 1);
  const std::vector<std::string> run = ReadLines(dir / "run.xml"), cases = ReadLines(dir / "cases.xml");
  const std::size_t a = Find(run, "        <Increment number=\"1\">"), b = Find(run, "        </Increment>");
  const std::size_t c = Find(cases, "            <Increment number=\"1\">");
  ASSERT_TRUE(a != std::string::npos && b != std::string::npos && c != std::string::npos);
  ASSERT_GT(b - a, 100u);
  ASSERT_GE(cases.size(), c + (b - a) + 1);
  for (std::size_t i = 0; i <= b - a; ++i) ASSERT_EQ("    " + run[a + i], cases[c + i]) << i;
  EXPECT_NE(Find(cases, "        <Load-Case number=\"1\" name=\"own &amp; &lt;&quot;loads&quot;&gt;\">"),
            std::string::npos);
  EXPECT_EQ(cases.back(), "</Tolmark>");
}

// A run whose cases have no document is refused before anything is assembled, as a
// model the run can't take: its XML stays empty and the model is reset.
TEST(LoadCases, RunWithoutCasesDocumentIsRefused) {
  ScratchDir dir;
  Engine e;
  FillRakedLayeredModel(e, true);
  e.load_cases.cases.push_back({"A", Loads(0, 0, 100, 0, 0, 0, 0, 0)});
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  EXPECT_EQ(RunModel(e, dir, "refused"), 0);
  EXPECT_NE(Find(Received(), "2 Load cases are held but no load case XML file is set"), std::string::npos);
  EXPECT_EQ(Bytes(dir / "refused.xml"), "");
  EXPECT_TRUE(e.load_cases.cases.empty());
}

// Loads or points that are not finite numbers are refused one case at a time.
TEST(LoadCases, CaseWithANumberThatIsNotFiniteIsRefused) {
  ASSERT_EQ(QuellonClearLoadCases(), 1);
  EXPECT_EQ(QuellonAddLoadCase("DL", 2, 0, 0, 500, 0, 0, 0, 0, 0), 1);
  const double bad[] = {std::nan(""), INFINITY, 1e39};
  for (int slot = 0; slot < 8; ++slot) {
    for (double b : bad) {
      double v[8] = {10, 20, 300, 40, 50, 60, 1, 2};
      v[slot] = b;
      EXPECT_EQ(QuellonAddLoadCase("bad", 3, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]), 0) << slot << " " << b;
    }
  }
  EXPECT_EQ(QuellonAddLoadCase("LL", 2, 10, 0, 200, 0, 0, 0, 1, 1), 2);
  EXPECT_EQ(QuellonGetNumberOfLoadCases(), 2);
  EXPECT_EQ(QuellonClearLoadCases(), 1);
  EXPECT_EQ(QuellonGetNumberOfLoadCases(), 0);
}

}  // namespace
}  // namespace quellon
