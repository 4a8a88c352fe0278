// The TXT report of whole analyses, a linear and a non-linear one with every report
// flag set, against golden files in the test data. The golden files were checked by hand
// against the report's layouts when first written; from then on they pin the layout and
// catch any change of the numbers. What can be checked without the engine's own output
// is checked here as well: the equilibrium of the pile head loads with the loads on the
// cap, the cap totals as the sum of equal increments, and the history tables of the
// last increment against what the host was told at each increment.
// On a mismatch the actual report is kept in the temporary folder for a diff.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/notify.h"
#include "engine/run_analysis.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

using testing::ReadBytes;
using testing::ReadLines;
using testing::TempFile;

// ---- What a run tells its host, and the pile head loads at that moment ------------------

// The state of one increment, taken when the cap movement is sent to the host: the
// totals and the loads at every pile head are final for the increment by then.
struct IncrementState {
  float cap_loads[6] = {};  // as sent: Fx, Fy, Fz, Mx, My, Mz
  float cap_moves[6] = {};  // as sent: m and rad
  std::vector<float> axial, shear_x, moment_xz, shear_y, moment_yz, torque;
  float load_inc[6] = {};  // CapLoadInc, internal order
};

struct Heard {
  const Engine* engine = nullptr;
  std::vector<IncrementState> increments;
  std::vector<std::string> errors;
} heard;

std::vector<float> Copy(const RealVector& v, int n) {
  std::vector<float> out(static_cast<std::size_t>(n));
  for (int i = 1; i <= n; ++i) out[static_cast<std::size_t>(i - 1)] = v(i);
  return out;
}

void Listen(Engine& e) {
  heard = Heard{};
  heard.engine = &e;
  e.callbacks.SendPileCapLoads = [](const float* fx, const float* fy, const float* fz, const float* mx,
                                    const float* my, const float* mz) {
    IncrementState s;
    const float v[6] = {*fx, *fy, *fz, *mx, *my, *mz};
    std::copy(v, v + 6, s.cap_loads);
    heard.increments.push_back(s);
  };
  e.callbacks.SendPileCapDisplacements = [](const float* dx, const float* dy, const float* dz, const float* rx,
                                            const float* ry, const float* rz) {
    ASSERT_FALSE(heard.increments.empty());
    IncrementState& s = heard.increments.back();
    const float v[6] = {*dx, *dy, *dz, *rx, *ry, *rz};
    std::copy(v, v + 6, s.cap_moves);
    const Workspace& w = heard.engine->ws;
    const int P = heard.engine->foundation.NumberOfPiles;
    s.axial = Copy(w.PileHeadAxial, P);
    s.shear_x = Copy(w.PileHeadX, P);
    s.moment_xz = Copy(w.PileHeadMomentXZ, P);
    s.shear_y = Copy(w.PileHeadY, P);
    s.moment_yz = Copy(w.PileHeadMomentYZ, P);
    s.torque = Copy(w.PileHeadTorque, P);
    for (int j = 1; j <= 6; ++j) s.load_inc[j - 1] = w.CapLoadInc(j);
  };
  e.project.MessageCallback = [](const int* severity, const char* text) {
    if (*severity == kError) heard.errors.emplace_back(text);
  };
}

// ---- The models --------------------------------------------------------------------------

struct PileSpec {
  float x, y, rake_x, rake_y, reinforced;
};

// Project, piles and loads shared by both runs: every report flag but 16, which would
// hand the solve to the system's LAPACK, whose rounding differs between builds of it.
void Common(Engine& e, const std::vector<PileSpec>& piles, int elements, int increments) {
  ResetProject(e);
  ResetActions(e);
  Project& pr = e.project;
  for (int i = 1; i <= kFlagCount; ++i) pr.Flags(i) = i == 16 ? 0 : 1;
  pr.DynamicModel = 0;
  pr.Year = 2025, pr.Month = 6, pr.Day = 30;
  pr.NonLinear = increments > 1 ? 1 : 0;
  e.actions.NumberOfIncrements = increments;
  ASSERT_EQ(CreatePiles(e, static_cast<int>(piles.size())), 1);
  Foundation& f = e.foundation;
  f.NumberOfElements = elements;
  for (int p = 1; p <= f.NumberOfPiles; ++p) {
    const PileSpec& s = piles[static_cast<std::size_t>(p - 1)];
    Pile& q = f.Piles(p);
    q.Length = 10.0f, q.ShaftDiameter = 0.6f, q.BaseDiameter = 0.6f;
    q.X = s.x, q.Y = s.y, q.RakeX = s.rake_x, q.RakeY = s.rake_y;
    q.EA = q.UnreinforcedEA = 8.0e6f;
    q.EIx = q.UnreinforcedEIx = 1.9e5f;
    q.EIy = q.UnreinforcedEIy = 1.9e5f;
    q.GJ = q.UnreinforcedGJ = 1.5e5f;
    q.ReinforcedLength = s.reinforced;
  }
}

// Two piles 2.5 m apart, the second raked in X and reinforced over its upper 4 m, in two
// layers of clay over sand, under loads in all six directions.
void LinearModel(Engine& e) {
  Common(e, {{0.0f, 0.0f, 0.0f, 0.0f, 0.0f}, {2.5f, 0.8f, 8.0f, 0.0f, 4.0f}}, 4, 1);
  Project& pr = e.project;
  pr.Name.assign("Two-pile bent, linear");
  pr.Description.assign("Whole TXT report of a linear run");
  pr.Filename.assign("C:\\models\\bent_linear.tmw");
  pr.InteractionFlag = 3, pr.InteractionDistance = 20.0f;
  Pile& raked = e.foundation.Piles(2);
  raked.UnreinforcedEA = 5.5e6f;
  raked.UnreinforcedEIx = raked.UnreinforcedEIy = 1.2e5f;
  raked.UnreinforcedGJ = 9.0e4f;
  e.foundation.FreeStandingLength = 0.5f;
  Borehole& b = e.borehole;
  ASSERT_EQ(CreateLayers(e, 2), 1);
  b.DepthToRigidLayer = 25.0f;
  b.LayerAveraging = 1;
  Layer& clay = b.Layers(1);
  clay.Ev = 1.5e4f, clay.dEv = 800.0f, clay.Eh = 1.2e4f, clay.dEh = 600.0f, clay.Poisson = 0.45f;
  Layer& sand = b.Layers(2);
  sand.DepthToTop = 6.0f;
  sand.Ev = 6.0e4f, sand.dEv = 1500.0f, sand.Eh = 5.0e4f, sand.dEh = 1200.0f, sand.Poisson = 0.3f;
  e.actions = Actions{150.0f, -80.0f, 1800.0f, 60.0f, -120.0f, 25.0f, 1.5f, 0.2f, 1};
}

// Two vertical piles in four layers, one of each ground type, taken in increments up to
// the axial capacity of the group, which it reaches at the last increment. Flag 38 is
// clear here, so that the cut-offs of small values stand in the report.
constexpr int kNonLinearIncrements = 3;
void NonLinearModel(Engine& e) {
  Common(e, {{0.0f, 0.0f, 0.0f, 0.0f, 0.0f}, {2.0f, 0.0f, 0.0f, 0.0f, 0.0f}}, 4, kNonLinearIncrements);
  Project& pr = e.project;
  pr.Flags(38) = 0;
  pr.Name.assign("Two-pile group to failure");
  pr.Description.assign("Whole TXT report of a non-linear run");
  pr.Filename.assign("C:\\models\\group_failure.tmw");
  pr.InteractionFlag = 2;
  pr.AutoNq = 2, pr.Nq = 25.0f;
  pr.Rs = 0.5f, pr.Rb = 0.6f, pr.Rl = 0.7f, pr.Rt = 0.8f;
  pr.LimitingShaftFriction = 120.0f;
  pr.ElasticUnloading = 1;
  Borehole& b = e.borehole;
  ASSERT_EQ(CreateLayers(e, 4), 1);
  b.Overburden = 10.0f;
  b.LayerAveraging = 2;
  const float tops[4] = {0.0f, 2.5f, 5.0f, 7.5f};
  const int types[4] = {kDirectValues, kFineSoil, kRock, kCoarseSoil};
  for (int i = 1; i <= 4; ++i) {
    Layer& l = b.Layers(i);
    l.DepthToTop = tops[i - 1];
    l.GroundType = types[i - 1];
    l.Ev = 2.0e4f * static_cast<float>(i), l.dEv = 500.0f;
    l.Eh = 1.6e4f * static_cast<float>(i), l.dEh = 400.0f;
    l.Poisson = 0.3f;
    l.WeightDensity = 18.0f;
  }
  Layer& fill = b.Layers(1);
  fill.DirectSkinFriction = 30.0f, fill.DirectEndBearing = 800.0f;
  fill.HasDirectLateral = 1, fill.DirectLateral = 150.0f;
  Layer& clay = b.Layers(2);
  clay.cu = 40.0f, clay.dcu = 5.0f, clay.alpha = 0.6f, clay.MaxSkinFriction = 35.0f;
  Layer& rock = b.Layers(3);
  rock.qu = 2000.0f, rock.k1 = 0.4f, rock.k2 = 0.5f, rock.k3 = 2.5f, rock.k4 = 0.5f, rock.k5 = 0.5f;
  rock.MaxBearingPressure = 6000.0f;
  Layer& sand = b.Layers(4);
  sand.phi = 34.0f, sand.delta = 28.0f, sand.Ks = 1.0f;
  e.actions = Actions{900.0f, 0.0f, 7500.0f, 0.0f, 25.0f, 0.0f, 1.0f, 0.0f, kNonLinearIncrements};
}

// ---- Helpers -------------------------------------------------------------------------

// Runs the model in e with the outputs in temporary files, and returns the report's
// bytes; the files are closed before they are read.
std::string RunWithReport(Engine& e, const TempFile& txt) {
  const TempFile xml(".xml");
  Listen(e);
  ::testing::internal::CaptureStdout();
  const int result = RunAnalysis(e, xml.path(), txt.path());
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(result, 1);
  e.files.txt.close();
  e.files.xml.close();
  e.project.TXTUnit = e.project.XMLUnit = 0;
  return ReadBytes(txt.path());
}

void ExpectGolden(const std::string& actual, const std::string& golden_name) {
  const std::string golden_path = std::string(QUELLON_TEST_DATA_DIR) + "/" + golden_name;
  ASSERT_FALSE(actual.empty());
  if (!std::filesystem::exists(golden_path) || ReadBytes(golden_path) != actual) {
    const std::string keep = (std::filesystem::temp_directory_path() / (golden_name + ".actual")).string();
    std::ofstream(keep, std::ios::binary) << actual;
    ADD_FAILURE() << golden_name << " differs from the report; actual text in " << keep;
  }
}

// The lines of a report text, CR LF ends removed.
std::vector<std::string> Lines(const std::string& bytes) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < bytes.size();) {
    std::size_t end = bytes.find("\r\n", from);
    if (end == std::string::npos) end = bytes.size();
    lines.push_back(bytes.substr(from, end - from));
    from = end + 2;
  }
  return lines;
}

std::size_t FindLine(const std::vector<std::string>& lines, const std::string& text, std::size_t from = 0) {
  for (std::size_t i = from; i < lines.size(); ++i)
    if (lines[i] == text) return i;
  return std::string::npos;
}

// The headings of the report in the order they stand, each found after the one before.
void ExpectInOrder(const std::vector<std::string>& lines, const std::vector<std::string>& headings,
                   std::size_t& at) {
  for (const std::string& h : headings) {
    const std::size_t found = FindLine(lines, h, at);
    ASSERT_NE(found, std::string::npos) << "missing or out of order: \"" << h << "\" after line " << at + 1;
    at = found + 1;
  }
}

// The loads at the pile heads, resolved into the cap's axes and taken about the centre
// of rotation, in the internal order of the cap (vertical, X, XZ, Y, YZ, twist).
void CapLoadsFromPileHeads(const Engine& e, const IncrementState& s, double out[6]) {
  const Foundation& f = e.foundation;
  double cx = 0.0, cy = 0.0;
  for (int p = 1; p <= f.NumberOfPiles; ++p) cx += f.Piles(p).X / f.NumberOfPiles, cy += f.Piles(p).Y / f.NumberOfPiles;
  for (int i = 0; i < 6; ++i) out[i] = 0.0;
  for (int p = 1; p <= f.NumberOfPiles; ++p) {
    const Pile& q = f.Piles(p);
    const std::size_t k = static_cast<std::size_t>(p - 1);
    const double a = q.RakeX * M_PI / 180.0, b = q.RakeY * M_PI / 180.0;
    const double A = s.axial[k], X = s.shear_x[k], Y = s.shear_y[k];
    const double V = std::cos(a) * std::cos(b) * A + std::sin(a) * X + std::sin(b) * Y;
    const double Hx = std::cos(a) * X - std::sin(a) * A;
    const double Hy = std::cos(b) * Y - std::sin(b) * A;
    const double dx = q.X - cx, dy = q.Y - cy;
    out[0] += V;
    out[1] += Hx;
    out[2] += dx * V + s.moment_xz[k];
    out[3] += Hy;
    out[4] += dy * V + s.moment_yz[k];
    out[5] += s.torque[k] - dy * Hx + dx * Hy;
  }
}

// Sent loads (Fx, Fy, Fz, Mx, My, Mz) in the internal order of the cap.
void Internal(const float sent[6], double out[6]) {
  const int from[6] = {2, 0, 4, 1, 3, 5};
  for (int i = 0; i < 6; ++i) out[i] = sent[from[i]];
}

// The pile head loads balance the cap loads of every increment, and the cap loads
// reached are the increments' loads added up.
void ExpectEquilibrium(const Engine& model) {
  ASSERT_FALSE(heard.increments.empty());
  for (std::size_t i = 0; i < heard.increments.size(); ++i) {
    const IncrementState& s = heard.increments[i];
    double heads[6], cap[6];
    CapLoadsFromPileHeads(model, s, heads);
    Internal(s.cap_loads, cap);
    for (int j = 0; j < 6; ++j) {
      // Single precision: a few units in the last place of the largest load.
      EXPECT_NEAR(heads[j], cap[j], 2e-5 * std::fabs(cap[0]) + 1e-3) << "increment " << i + 1 << ", load " << j + 1;
      EXPECT_NEAR(cap[j], static_cast<double>(i + 1) * s.load_inc[j], 1e-5 * std::fabs(cap[0]))
          << "increment " << i + 1 << ", load " << j + 1;
    }
  }
}

// The numbers of the rows that follow a heading line: `rows` rows, after `skip` lines.
std::vector<std::vector<double>> TableAfter(const std::vector<std::string>& lines, const std::string& heading,
                                            int skip, int rows) {
  std::vector<std::vector<double>> table;
  const std::size_t at = FindLine(lines, heading);
  if (at == std::string::npos || at + static_cast<std::size_t>(skip + rows) >= lines.size()) {
    ADD_FAILURE() << "no table under \"" << heading << "\"";
    return table;
  }
  for (int r = 1; r <= rows; ++r) {
    std::istringstream in(lines[at + static_cast<std::size_t>(skip + r)]);
    std::vector<double> row;
    for (double v; in >> v;) row.push_back(v);
    table.push_back(row);
  }
  return table;
}

// A printed value against the value it stands for: three significant digits for the
// scientific forms, one decimal for the loads; magnitudes at or below the cut print 0.
void ExpectPrinted(double printed, double value, double cut, const std::string& what) {
  if (std::fabs(value) <= cut) {
    EXPECT_EQ(printed, 0.0) << what;
    return;
  }
  EXPECT_NEAR(printed, value, 5e-3 * std::fabs(value) + 0.05 * (cut >= 1e-3 ? 1.0 : 0.0)) << what;
}

// The history tables of the last increment against the cap loads and movements that the
// host received at each increment.
void ExpectHistoryTables(const std::vector<std::string>& lines, int increments) {
  ASSERT_EQ(heard.increments.size(), static_cast<std::size_t>(increments));
  const auto steps = TableAfter(lines, "                  INCREMENT - INCREM. CAP DISPLMNTS", 4, increments);
  const auto first = TableAfter(lines, "                 APPLIED LOADS    -     RESULTANT CAP DISPLMNTS", 4, increments);
  const auto second = TableAfter(lines, "         APPLIED LOADS   -   RESULTANT CAP DISPLMNTS", 4, increments);
  ASSERT_EQ(steps.size(), static_cast<std::size_t>(increments));
  ASSERT_EQ(first.size(), static_cast<std::size_t>(increments));
  ASSERT_EQ(second.size(), static_cast<std::size_t>(increments));
  double before[6] = {};
  for (int i = 0; i < increments; ++i) {
    const std::string at = "increment " + std::to_string(i + 1);
    double loads[6], moves[6];
    Internal(heard.increments[static_cast<std::size_t>(i)].cap_loads, loads);
    Internal(heard.increments[static_cast<std::size_t>(i)].cap_moves, moves);
    ASSERT_EQ(steps[i].size(), 7u) << at;
    ASSERT_EQ(first[i].size(), 7u) << at;
    ASSERT_EQ(second[i].size(), 7u) << at;
    EXPECT_EQ(steps[i][0], i + 1);
    EXPECT_EQ(first[i][0], i + 1);
    EXPECT_EQ(second[i][0], i + 1);
    for (int j = 0; j < 6; ++j) {
      // The movement of the increment is printed as it stands, with no cut.
      ExpectPrinted(steps[i][1 + j], moves[j] - before[j], 0.0, at + ", step " + std::to_string(j + 1));
      before[j] = moves[j];
    }
    for (int j = 0; j < 3; ++j) {
      ExpectPrinted(first[i][1 + j], loads[j], 1e-3, at + ", load " + std::to_string(j + 1));
      ExpectPrinted(first[i][4 + j], moves[j], 1e-6, at + ", movement " + std::to_string(j + 1));
      ExpectPrinted(second[i][1 + j], loads[3 + j], 1e-3, at + ", load " + std::to_string(j + 4));
      ExpectPrinted(second[i][4 + j], moves[3 + j], 1e-6, at + ", movement " + std::to_string(j + 4));
    }
  }
}

// ---- The tests -----------------------------------------------------------------------

// The section headings of one increment in the order the report gives them, with every
// report flag set (only the first title of each group of dumps).
std::vector<std::string> IncrementOutline(int i, bool non_linear, bool last) {
  std::vector<std::string> h = {std::string(77, '*'), "                          OUTPUT AT INCREMENT    " + std::to_string(i),
                                std::string(77, '*')};
  if (i == 1) h.push_back("G -Initial (elastic) soil flexibility matrix of the group");
  for (const char* t : {"D -Pile flexibility matrix of the group", "UBCV -boundary condition vectors of the group",
                        "Traction vectors due to unit displmnt bound. conditions",
                        "Axial stresses due to unit displmnt bound. conditions",
                        "Torsional stresses due to unit displmnt bound. conditions",
                        " Pile-head axial loads due to unit displ. boundary conditions",
                        " Pile-head torsional moments in XY plane due to unit displ. boundary conditions"})
    h.push_back(t);
  if (!non_linear) {
    h.push_back("PILE GROUP STIFFNESS COEFFICIENTS (x10e6):");
    h.push_back("PILE GROUP FLEXIBILITY COEFFICIENTS (/10e6):");
  }
  h.push_back("Increm. axial pile displacements (at element centre)");
  h.push_back("Increm. torsional pile rotations in XY plane (at element centre)");
  if (non_linear) {
    h.push_back("G -Non-linear soil flexib. matrix of the group at increm.no.   " + std::to_string(i));
    h.push_back("G+D -Non-linear soil+pile flexib. matrix of the group after zeroing at increm. no.   " +
                std::to_string(i));
  }
  for (const char* t : {" RESULTANT APPLIED LOADS:    ", " INCREMENTAL CAP DISPLACEMENTS :", "RESULTANT RAFT DISPLACEMENTS :"})
    h.push_back(t);
  if (non_linear && last) {
    h.push_back("                  INCREMENT - INCREM. CAP DISPLMNTS");
    h.push_back("                 APPLIED LOADS    -     RESULTANT CAP DISPLMNTS");
    h.push_back("         APPLIED LOADS   -   RESULTANT CAP DISPLMNTS");
  }
  for (const char* t : {"Incremental pile shaft shear stresses (and base pressure) :",
                        "Incremental pile torsional stresses:",
                        " Resultant pile shaft shear stresses (and base pressure) :",
                        "Resultant pile torsional stresses:", "Resultant pile axial displs (at element centre):",
                        "Resultant pile torsional rotations in XY plane (at element centre):"})
    h.push_back(t);
  if (non_linear) {
    h.push_back("Identification state of elements (0=elastic, 1=plastic):");
    h.push_back("due to torsional stresses:");
    h.push_back("Total no. of yielded elements due to shear stresses=" + std::string(i == 1 ? "  4" : i == 2 ? "  8" : " 10"));
    h.push_back("Total no. of yielded elements due to torsional stresses=  0");
  }
  for (const char* t : {"Incremental axial loads (at top of each element):",
                        "Incremental torsional mom. in XY plane (at top of each element):",
                        "Resultant pile axial loads (at top of each element):",
                        "Resultant pile torsional mom. in XY plane (at top of each element):"})
    h.push_back(t);
  return h;
}

TEST(TXTFullRun, LinearRunWithEveryReportFlag) {
  Engine model;
  LinearModel(model);
  Engine e;
  LinearModel(e);
  const TempFile txt(".txt");
  const std::string report = RunWithReport(e, txt);
  ExpectGolden(report, "txt_run_linear.txt");

  // After the input part: the assembly dumps of both piles, then the one increment.
  const std::vector<std::string> lines = Lines(report);
  std::size_t at = FindLine(lines, " Y-coord of assumed group centre of rotation =   0.400");
  ASSERT_NE(at, std::string::npos);
  ExpectInOrder(lines,
                {"Soil stiffness matrix soil_K for pile number     1", "Pile matrix for pile number     1",
                 "Soil stiffness matrix soil_K for pile number     2", "Pile matrix for pile number     2"},
                at);
  ExpectInOrder(lines, IncrementOutline(1, false, true), at);
  EXPECT_EQ(lines.size(), at + 8) << "the last table ends the report";
  for (const char* absent : {"Limiting pile torsional stresses (kPa):", "G -Non-linear soil flexib. matrix of the group at increm.no.   1",
                             "Identification state of elements (0=elastic, 1=plastic):",
                             "                  INCREMENT - INCREM. CAP DISPLMNTS"})
    EXPECT_EQ(FindLine(lines, absent), std::string::npos) << absent;

  ASSERT_EQ(heard.increments.size(), 1u);
  ExpectEquilibrium(model);
  // One increment carries the whole of the applied loads.
  const float* sent = heard.increments[0].cap_loads;
  EXPECT_FLOAT_EQ(sent[0], 150.0f);
  EXPECT_FLOAT_EQ(sent[1], -80.0f);
  EXPECT_FLOAT_EQ(sent[2], 1800.0f);
}

TEST(TXTFullRun, NonLinearRunToTheAxialCapacity) {
  Engine model;
  NonLinearModel(model);
  Engine e;
  NonLinearModel(e);
  const TempFile txt(".txt");
  const std::string report = RunWithReport(e, txt);
  ExpectGolden(report, "txt_run_nonlinear.txt");

  // The limits before the assembly dumps; every increment in turn; the history tables
  // at the last, which ends with the capacity stop.
  const std::vector<std::string> lines = Lines(report);
  std::size_t at = FindLine(lines, " Y-coord of assumed group centre of rotation =   0.000");
  ASSERT_NE(at, std::string::npos);
  ExpectInOrder(lines,
                {"Limiting pile shaft shear stresses (& base pressure) (kPa):",
                 "Limiting pile torsional stresses (kPa):", "Soil stiffness matrix soil_K for pile number     1",
                 "Pile matrix for pile number     1", "Soil stiffness matrix soil_K for pile number     2"},
                at);
  // Two piles without a reinforced length are never taken as alike: both are printed.
  ExpectInOrder(lines, {"Pile matrix for pile number     2"}, at);
  for (int i = 1; i <= kNonLinearIncrements; ++i)
    ExpectInOrder(lines, IncrementOutline(i, true, i == kNonLinearIncrements), at);
  const std::vector<std::string> stop(lines.end() - 4, lines.end());
  EXPECT_EQ(stop, (std::vector<std::string>{std::string(72, '*'),
                                            "ERROR: Ultimate axial capacity of the group reached at load increment no " +
                                                std::to_string(kNonLinearIncrements),
                                            " Please re-run TOLMARK for lower applied loads", std::string(72, '*')}));

  ASSERT_EQ(heard.increments.size(), static_cast<std::size_t>(kNonLinearIncrements));
  EXPECT_EQ(heard.errors,
            std::vector<std::string>{"Ultimate axial capacity of single pile exceeded after increment " +
                                     std::to_string(kNonLinearIncrements)});
  ExpectEquilibrium(model);
  ExpectHistoryTables(lines, kNonLinearIncrements);
}

}  // namespace
}  // namespace quellon
