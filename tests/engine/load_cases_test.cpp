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

// Each result vector: its name, the workspace total it is, the callback's field, and its
// length (0: a value a pile, 1: axial rows, 2: element rows).
struct ResultVector {
  const char* name;
  RealVector Workspace::*total;
  const float* QuellonLoadCaseResults::*field;
  int rows;
};
using W = Workspace;
using R = QuellonLoadCaseResults;
const ResultVector kVectors[] = {
    {"head_fx", &W::PileHeadX, &R::head_fx, 0}, {"head_fy", &W::PileHeadY, &R::head_fy, 0},
    {"head_fz", &W::PileHeadAxial, &R::head_fz, 0}, {"head_mx", &W::PileHeadMomentYZ, &R::head_mx, 0},
    {"head_my", &W::PileHeadMomentXZ, &R::head_my, 0}, {"head_mz", &W::PileHeadTorque, &R::head_mz, 0},
    {"head_dx", &W::HeadDispX, &R::head_dx, 0}, {"head_dy", &W::HeadDispY, &R::head_dy, 0},
    {"head_dz", &W::HeadDispAxial, &R::head_dz, 0}, {"head_twist", &W::HeadTwist, &R::head_twist, 0},
    {"stress_axial", &W::StressAxial, &R::stress_axial, 1}, {"stress_x", &W::StressX, &R::stress_x, 2},
    {"stress_y", &W::StressY, &R::stress_y, 2}, {"stress_torsion", &W::StressTorsion, &R::stress_torsion, 2},
    {"disp_axial", &W::DispAxial, &R::disp_axial, 1}, {"disp_x", &W::DispX, &R::disp_x, 2},
    {"disp_y", &W::DispY, &R::disp_y, 2}, {"twist", &W::Twist, &R::twist, 2},
    {"load_axial", &W::LoadAxial, &R::load_axial, 1}, {"shear_x", &W::ShearX, &R::shear_x, 2},
    {"shear_y", &W::ShearY, &R::shear_y, 2}, {"moment_xz", &W::MomentXZ, &R::moment_xz, 2},
    {"moment_yz", &W::MomentYZ, &R::moment_yz, 2}, {"torque", &W::Torque, &R::torque, 2}};
int Length(const ResultVector& v, int piles, int elements) {
  return v.rows == 0 ? piles : v.rows == 1 ? (elements + 1) * piles : elements * piles;
}

// The run's totals after each increment, read from the workspace when the host receives
// the cap's movement (also in an increment that uses up the group's capacity).
Engine* observed = nullptr;
Snapshot run_totals;
void TakeRunTotals(const float*, const float*, const float*, const float*, const float*, const float*) {
  const Workspace& w = observed->ws;
  const int P = observed->foundation.NumberOfPiles, n = observed->foundation.NumberOfElements;
  run_totals.clear();
  for (int a = 1; a <= 6; ++a) {
    run_totals["cap_loads"].push_back(w.CapLoadTotal(ConvertAxis(a)));
    run_totals["cap_displacements"].push_back(w.CapDispTotal(ConvertAxis(a)));
  }
  for (const ResultVector& v : kVectors) run_totals[v.name] = Copy((w.*v.total).data(), Length(v, P, n));
}

// What the load case callback received, by case.
std::vector<Snapshot> cases_received;
std::vector<std::string> case_names;
void TakeCase(const QuellonLoadCaseResults* r) {
  case_names.push_back(std::to_string(r->number) + " " + r->name);
  Snapshot& got = cases_received.emplace_back();
  got = {{"cap_loads", Copy(r->cap_loads, 6)}, {"cap_displacements", Copy(r->cap_displacements, 6)}};
  for (const ResultVector& v : kVectors) got[v.name] = Copy(r->*v.field, Length(v, r->piles, r->elements));
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
  EXPECT_EQ(ReadBytes(dir / "with.xml"), ReadBytes(dir / "plain.xml"));
  EXPECT_EQ(ReadBytes(dir / "with.txt"), ReadBytes(dir / "plain.txt"));
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
  EXPECT_EQ(ReadBytes(dir / "refused.xml"), "");
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
