// The TXT report of whole analyses, a linear and a non-linear one with every report flag
// set, against golden files, which pin the layout, the order of the sections and the
// numbers. Checked apart from the engine's own output: the pile head loads balance the
// loads on the cap, the cap totals are the increments added up, and the history tables
// of the last increment agree with what the host was sent at each increment.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/notify.h"
#include "engine/run_analysis.h"
#include "../common/engine_support.h"
#include "../common/xml_xpath.h"

namespace quellon {
namespace {

using testing::ReadLines;
using testing::TempFile;

// Cap vectors in the internal order: vertical, X, XZ, Y, YZ, twist; as sent to the host,
// the pile head loads resolved onto the cap, and the load of one increment.
struct IncrementHeard {
  double loads[6], moves[6], heads[6], load_inc[6];
};
struct Heard {
  const Engine* engine = nullptr;
  std::vector<IncrementHeard> increments;
  std::vector<std::string> errors;
} heard;

// Sent in the order X, Y, Z, about X, about Y, about Z.
void FromSent(const float* const v[6], double out[6]) {
  const int from[6] = {2, 0, 4, 1, 3, 5};
  for (int i = 0; i < 6; ++i) out[i] = *v[from[i]];
}

// The loads at the heads of the piles (cap level, the piles' own axes) resolved into the
// cap's axes and taken about the centre of the pile heads.
void HeadLoadsOnTheCap(const Engine& e, double out[6]) {
  const Foundation& f = e.foundation;
  const Workspace& w = e.ws;
  double cx = 0.0, cy = 0.0;
  for (int p = 1; p <= f.NumberOfPiles; ++p) cx += f.Piles(p).X, cy += f.Piles(p).Y;
  cx /= f.NumberOfPiles, cy /= f.NumberOfPiles;
  for (int i = 0; i < 6; ++i) out[i] = 0.0;
  for (int p = 1; p <= f.NumberOfPiles; ++p) {
    const Pile& q = f.Piles(p);
    const double a = q.RakeX * M_PI / 180.0, b = q.RakeY * M_PI / 180.0;
    const double A = w.PileHeadAxial(p), X = w.PileHeadX(p), Y = w.PileHeadY(p);
    const double V = std::cos(a) * std::cos(b) * A + std::sin(a) * X + std::sin(b) * Y;
    const double Hx = std::cos(a) * X - std::sin(a) * A, Hy = std::cos(b) * Y - std::sin(b) * A;
    const double dx = q.X - cx, dy = q.Y - cy;
    const double add[6] = {V, Hx, dx * V + w.PileHeadMomentXZ(p), Hy, dy * V + w.PileHeadMomentYZ(p),
                           w.PileHeadTorque(p) - dy * Hx + dx * Hy};
    for (int i = 0; i < 6; ++i) out[i] += add[i];
  }
}

void Listen(Engine& e) {
  heard = Heard{};
  heard.engine = &e;
  e.callbacks.SendPileCapLoads = [](const float* a, const float* b, const float* c, const float* d, const float* f,
                                    const float* g) {
    const float* const v[6] = {a, b, c, d, f, g};
    heard.increments.emplace_back();
    FromSent(v, heard.increments.back().loads);
  };
  // Sent after the loads, when the totals of the increment are complete.
  e.callbacks.SendPileCapDisplacements = [](const float* a, const float* b, const float* c, const float* d,
                                            const float* f, const float* g) {
    ASSERT_FALSE(heard.increments.empty());
    IncrementHeard& s = heard.increments.back();
    const float* const v[6] = {a, b, c, d, f, g};
    FromSent(v, s.moves);
    HeadLoadsOnTheCap(*heard.engine, s.heads);
    for (int j = 1; j <= 6; ++j) s.load_inc[j - 1] = heard.engine->ws.CapLoadInc(j);
  };
  e.project.MessageCallback = [](const int* s, const char* text) { if (*s == kError) heard.errors.emplace_back(text); };
}

// Project and piles shared by both runs: every report flag but 16, which would hand the
// solve to the system's LAPACK, whose rounding differs from one build of it to another.
void Common(Engine& e, int increments, float x2, float y2) {
  ResetProject(e);
  ResetActions(e);
  Project& pr = e.project;
  for (int i = 1; i <= kFlagCount; ++i) pr.Flags(i) = i == 16 ? 0 : 1;
  pr.DynamicModel = 0, pr.Year = 2025, pr.Month = 6, pr.Day = 30, pr.NonLinear = increments > 1 ? 1 : 0;
  ASSERT_EQ(CreatePiles(e, 2), 1);
  e.foundation.NumberOfElements = 4;
  for (int p = 1; p <= 2; ++p) {
    Pile& q = e.foundation.Piles(p);
    q.Length = 10.0f, q.ShaftDiameter = 0.6f, q.BaseDiameter = 0.6f, q.X = p == 2 ? x2 : 0.0f, q.Y = p == 2 ? y2 : 0.0f;
    q.EA = q.UnreinforcedEA = 8.0e6f, q.GJ = q.UnreinforcedGJ = 1.5e5f;
    q.EIx = q.UnreinforcedEIx = q.EIy = q.UnreinforcedEIy = 1.9e5f;
  }
}

// Two piles, the second raked in X and reinforced over its upper 4 m, in clay over sand,
// under loads in all six directions.
void LinearModel(Engine& e) {
  Common(e, 1, 2.5f, 0.8f);
  Project& pr = e.project;
  pr.Name.assign("Two-pile bent, linear"), pr.Description.assign("Whole TXT report of a linear run");
  pr.Filename.assign("C:\\models\\bent_linear.tmw");
  pr.InteractionFlag = 3, pr.InteractionDistance = 20.0f;
  Pile& raked = e.foundation.Piles(2);
  raked.RakeX = 8.0f, raked.ReinforcedLength = 4.0f, raked.UnreinforcedEA = 5.5e6f, raked.UnreinforcedGJ = 9.0e4f;
  raked.UnreinforcedEIx = raked.UnreinforcedEIy = 1.2e5f;
  e.foundation.FreeStandingLength = 0.5f;
  Borehole& b = e.borehole;
  ASSERT_EQ(CreateLayers(e, 2), 1);
  b.DepthToRigidLayer = 25.0f, b.LayerAveraging = 1;
  Layer &clay = b.Layers(1), &sand = b.Layers(2);
  clay.Ev = 1.5e4f, clay.dEv = 800.0f, clay.Eh = 1.2e4f, clay.dEh = 600.0f, clay.Poisson = 0.45f;
  sand.DepthToTop = 6.0f, sand.Ev = 6.0e4f, sand.dEv = 1500.0f, sand.Eh = 5.0e4f, sand.dEh = 1200.0f, sand.Poisson = 0.3f;
  e.actions = Actions{150.0f, -80.0f, 1800.0f, 60.0f, -120.0f, 25.0f, 1.5f, 0.2f, 1};
}

// Two vertical piles through four layers, one of each ground type, loaded in increments
// up to the axial capacity of the group, which it reaches at the last increment. Flag 38
// is clear, so that the cut-offs of small values stand in the report.
constexpr int kIncrements = 3;
void NonLinearModel(Engine& e) {
  Common(e, kIncrements, 2.0f, 0.0f);
  Project& pr = e.project;
  pr.Name.assign("Two-pile group to failure"), pr.Description.assign("Whole TXT report of a non-linear run");
  pr.Filename.assign("C:\\models\\group_failure.tmw");
  pr.Flags(38) = 0, pr.InteractionFlag = 2, pr.AutoNq = 2, pr.Nq = 25.0f, pr.LimitingShaftFriction = 120.0f;
  pr.Rs = 0.5f, pr.Rb = 0.6f, pr.Rl = 0.7f, pr.Rt = 0.8f;
  Borehole& b = e.borehole;
  ASSERT_EQ(CreateLayers(e, 4), 1);
  b.Overburden = 10.0f, b.LayerAveraging = 2;
  const int types[4] = {kDirectValues, kFineSoil, kRock, kCoarseSoil};
  for (int i = 1; i <= 4; ++i) {
    Layer& l = b.Layers(i);
    const float f = static_cast<float>(i);
    l.DepthToTop = 2.5f * (f - 1.0f), l.GroundType = types[i - 1], l.Ev = 2.0e4f * f, l.dEv = 500.0f;
    l.Eh = 1.6e4f * f, l.dEh = 400.0f, l.Poisson = 0.3f, l.WeightDensity = 18.0f;
  }
  Layer &fill = b.Layers(1), &clay = b.Layers(2), &rock = b.Layers(3), &sand = b.Layers(4);
  fill.DirectSkinFriction = 30.0f, fill.DirectEndBearing = 800.0f, fill.HasDirectLateral = 1, fill.DirectLateral = 150.0f;
  clay.cu = 40.0f, clay.dcu = 5.0f, clay.alpha = 0.6f, clay.MaxSkinFriction = 35.0f;
  rock.qu = 2000.0f, rock.k1 = 0.4f, rock.k2 = 0.5f, rock.k3 = 2.5f, rock.k4 = 0.5f, rock.k5 = 0.5f;
  rock.MaxBearingPressure = 6000.0f;
  sand.phi = 34.0f, sand.delta = 28.0f, sand.Ks = 1.0f;
  e.actions = Actions{900.0f, 0.0f, 7500.0f, 0.0f, 25.0f, 0.0f, 1.0f, 0.0f, kIncrements};
}

// Runs the model in e, compares its report with the golden file and returns its lines;
// the XML document of the same run must parse.
std::vector<std::string> RunAgainstGolden(Engine& e, const std::string& golden_name) {
  const TempFile txt(".txt"), xml(".xml");
  Listen(e);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(RunAnalysis(e, xml.path(), txt.path()), 1);
  ::testing::internal::GetCapturedStdout();
  e.files.txt.close(), e.files.xml.close(), e.project.TXTUnit = e.project.XMLUnit = 0;
  testing::ExpectGolden(txt.path(), golden_name);
  EXPECT_TRUE(qtest::XmlDoc(xml.path()).ok());
  return ReadLines(txt.path());
}

// The head loads balance the cap loads of every increment, and the cap loads reached are
// the increment's loads added up; to single precision of the vertical load.
void ExpectEquilibrium() {
  ASSERT_FALSE(heard.increments.empty());
  for (std::size_t i = 0; i < heard.increments.size(); ++i) {
    const IncrementHeard& s = heard.increments[i];
    for (int j = 0; j < 6; ++j) {
      const std::string at = "increment " + std::to_string(i + 1) + ", load " + std::to_string(j + 1);
      EXPECT_NEAR(s.heads[j], s.loads[j], 2e-5 * std::fabs(s.loads[0]) + 1e-3) << at;
      EXPECT_NEAR(s.loads[j], static_cast<double>(i + 1) * s.load_inc[j], 1e-5 * std::fabs(s.loads[0])) << at;
    }
  }
}

// A printed value against its value: three significant digits in the scientific forms,
// one decimal for loads; at or below the cut it prints as 0.
void ExpectPrinted(double printed, double value, double cut, double decimals, const std::string& what) {
  const bool cut_off = std::fabs(value) <= cut;
  EXPECT_NEAR(printed, cut_off ? 0.0 : value, cut_off ? 0.0 : 5e-3 * std::fabs(value) + decimals) << what;
}

// The three tables of the last increment against what the host was sent: the cap
// movement of each increment (printed uncut), and the loads and movements reached.
void ExpectHistoryTables(const std::vector<std::string>& lines) {
  ASSERT_EQ(heard.increments.size(), static_cast<std::size_t>(kIncrements));
  const char* const heads[3] = {"                  INCREMENT - INCREM. CAP DISPLMNTS",
                                "                 APPLIED LOADS    -     RESULTANT CAP DISPLMNTS",
                                "         APPLIED LOADS   -   RESULTANT CAP DISPLMNTS"};
  for (int t = 0; t < 3; ++t) {
    const auto at = static_cast<std::size_t>(std::find(lines.begin(), lines.end(), heads[t]) - lines.begin());
    ASSERT_LT(at + 4 + kIncrements, lines.size()) << heads[t];
    for (int i = 0; i < kIncrements; ++i) {
      const IncrementHeard& s = heard.increments[static_cast<std::size_t>(i)];
      std::istringstream in(lines[at + 5 + static_cast<std::size_t>(i)]);
      double v[7] = {};
      for (double& x : v) in >> x;
      ASSERT_FALSE(in.fail()) << lines[at + 5 + static_cast<std::size_t>(i)];
      EXPECT_EQ(v[0], i + 1);
      const std::string what = std::string(heads[t]) + ", increment " + std::to_string(i + 1);
      for (int j = 0; j < 6 && t == 0; ++j) {
        const double before = i == 0 ? 0.0 : heard.increments[static_cast<std::size_t>(i - 1)].moves[j];
        ExpectPrinted(v[1 + j], s.moves[j] - before, -1.0, 0.0, what);
      }
      for (int j = 0; j < 3 && t > 0; ++j) {
        ExpectPrinted(v[1 + j], s.loads[3 * (t - 1) + j], 1e-3, 0.05, what);
        ExpectPrinted(v[4 + j], s.moves[3 * (t - 1) + j], 1e-6, 0.0, what);
      }
    }
  }
}

TEST(TXTFullRun, LinearRunWithEveryReportFlag) {
  Engine e;
  LinearModel(e);
  RunAgainstGolden(e, "txt_run_linear.txt");
  ASSERT_EQ(heard.increments.size(), 1u);
  ExpectEquilibrium();
  EXPECT_FLOAT_EQ(heard.increments[0].loads[0], 1800.0f);  // the whole load at once
}

TEST(TXTFullRun, NonLinearRunToTheAxialCapacity) {
  Engine e;
  NonLinearModel(e);
  const std::vector<std::string> lines = RunAgainstGolden(e, "txt_run_nonlinear.txt");
  EXPECT_EQ(heard.errors, std::vector<std::string>{"Ultimate axial capacity of single pile exceeded after increment 3"});
  ExpectEquilibrium();
  ExpectHistoryTables(lines);
}

}  // namespace
}  // namespace quellon
