// The XML output of whole analyses with flag 35, read back by a real XML parser and held
// against what the host's callbacks received during the same run: the group stiffness
// and flexibility tables against the stiffness matrix sent at the increment, the pile
// cap block against the cap loads and movements sent, and the summary of the increments
// against a second run that sends the cap at every increment.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/run_analysis.h"
#include "text_model_test_support.h"
#include "xml_test_support.h"

namespace quellon {
namespace {

using test::ParsedXML;

using Six = std::array<float, 6>;

// What one run sent to its host.
struct Received {
  std::vector<std::array<float, 36>> grmat;  // per increment, column order
  std::vector<std::array<float, 9>> force_displacement;
  std::vector<Six> loads, moves;  // Fx..Mz and dx..rz, at each increment that sent them
  float centre[2] = {};
} got;

void Listen(Engine& e) {
  got = Received{};
  e.callbacks.SendStiffnessMatrix = [](const float* g) {
    std::array<float, 36> m;
    std::copy(g, g + 36, m.begin());
    got.grmat.push_back(m);
  };
  e.callbacks.SendForceDisplacementStiffnesses = [](const float* a, const float* b, const float* c, const float* d,
                                                    const float* f, const float* g, const float* h, const float* i,
                                                    const float* j) {
    got.force_displacement.push_back({*a, *b, *c, *d, *f, *g, *h, *i, *j});
  };
  e.callbacks.SendPileCapLoads = [](const float* a, const float* b, const float* c, const float* d, const float* f,
                                    const float* g) { got.loads.push_back({*a, *b, *c, *d, *f, *g}); };
  e.callbacks.SendPileCapDisplacements = [](const float* a, const float* b, const float* c, const float* d,
                                            const float* f, const float* g) {
    got.moves.push_back({*a, *b, *c, *d, *f, *g});
  };
  e.foundation.CentreOfRotationCallback = [](const float* x, const float* y) {
    got.centre[0] = *x;
    got.centre[1] = *y;
  };
}

// Two piles of three elements in clay over sand under loads in every direction; in the
// linear run the second pile is raked in Y. flags: the report flags of the whole run.
void Model(Engine& e, int increments, std::initializer_list<int> flags) {
  ResetProject(e);
  ResetActions(e);
  for (int f : flags) e.project.Flags(f) = 1;
  e.project.DynamicModel = 0;
  e.project.NonLinear = increments > 1 ? 1 : 0;
  e.project.Name.assign("Quay <B> & ramp");
  e.project.Rs = e.project.Rb = e.project.Rl = e.project.Rt = 0.5f;
  ASSERT_EQ(CreatePiles(e, 2), 1);
  Foundation& f = e.foundation;
  f.NumberOfElements = 3;
  f.FreeStandingLength = 1.0f;
  for (int p = 1; p <= 2; ++p) {
    Pile& q = f.Piles(p);
    q.Length = 9.0f, q.ShaftDiameter = 0.5f, q.BaseDiameter = 0.5f;
    q.X = 1.8f * static_cast<float>(p - 1), q.Y = 0.3f * static_cast<float>(p - 1);
    q.EA = q.UnreinforcedEA = 5.0e6f;
    q.EIx = q.UnreinforcedEIx = 1.0e5f;
    q.EIy = q.UnreinforcedEIy = 1.2e5f;
    q.GJ = q.UnreinforcedGJ = 8.0e4f;
  }
  if (increments == 1) f.Piles(2).RakeY = 6.0f;
  ASSERT_EQ(CreateLayers(e, 2), 1);
  Borehole& b = e.borehole;
  b.LayerAveraging = 2;
  b.DepthToRigidLayer = 20.0f;
  Layer& clay = b.Layers(1);
  clay.Ev = clay.Eh = 1.2e4f, clay.dEv = clay.dEh = 900.0f, clay.Poisson = 0.4f;
  clay.GroundType = kFineSoil, clay.WeightDensity = 18.0f, clay.cu = 30.0f, clay.dcu = 4.0f, clay.alpha = 0.7f;
  Layer& sand = b.Layers(2);
  sand.DepthToTop = 4.0f;
  sand.Ev = sand.Eh = 5.0e4f, sand.dEv = sand.dEh = 1000.0f, sand.Poisson = 0.3f;
  sand.GroundType = kCoarseSoil, sand.WeightDensity = 19.0f, sand.phi = 33.0f, sand.delta = 25.0f, sand.Ks = 1.0f;
  e.actions = Actions{60.0f, 35.0f, 1500.0f, -40.0f, 55.0f, 12.0f, 1.1f, 0.1f, increments};
}

// Runs the model and leaves the XML document at `path`, closed.
void RunToXML(Engine& e, const std::string& path) {
  Listen(e);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(RunAnalysis(e, path, std::nullopt), 1);
  ::testing::internal::GetCapturedStdout();
  e.files.xml.close();
  e.project.XMLUnit = 0;
}

// Values print with four significant digits at least; magnitudes under the cut print 0.
void ExpectPrinted(double printed, double value, double cut, const std::string& what) {
  if (std::fabs(value) < cut) {
    EXPECT_EQ(printed, 0.0) << what;
    return;
  }
  EXPECT_NEAR(printed, value, 5e-4 * std::fabs(value)) << what;
}

const char* const kAxis[3] = {"X", "Y", "Z"};

std::string AxisValue(const std::string& element, int axis) {
  return element + "[@axis='" + kAxis[axis] + "']/@value";
}

// The 6 by 6 inverse, by Gauss-Jordan elimination with partial pivoting in double.
std::array<double, 36> Inverse(const std::array<float, 36>& m) {
  double a[6][12] = {};
  for (int r = 0; r < 6; ++r) {
    for (int c = 0; c < 6; ++c) a[r][c] = m[static_cast<std::size_t>(r + 6 * c)];
    a[r][6 + r] = 1.0;
  }
  for (int k = 0; k < 6; ++k) {
    int pivot = k;
    for (int r = k + 1; r < 6; ++r)
      if (std::fabs(a[r][k]) > std::fabs(a[pivot][k])) pivot = r;
    std::swap(a[k], a[pivot]);
    const double p = a[k][k];
    for (double& v : a[k]) v /= p;
    for (int r = 0; r < 6; ++r) {
      if (r == k) continue;
      const double f = a[r][k];
      for (int c = 0; c < 12; ++c) a[r][c] -= f * a[k][c];
    }
  }
  std::array<double, 36> inv;
  for (int r = 0; r < 6; ++r)
    for (int c = 0; c < 6; ++c) inv[static_cast<std::size_t>(r + 6 * c)] = a[r][6 + c];
  return inv;
}

TEST(XMLFullRun, LinearRunAgreesWithTheStiffnessAndCapSentToTheHost) {
  const std::string path = test::ScratchPath("linear.xml");
  Engine e;
  Model(e, 1, {2, 35});
  RunToXML(e, path);
  ParsedXML doc(path);
  ASSERT_TRUE(doc.ok()) << test::ReadBytes(path);
  ASSERT_EQ(got.grmat.size(), 1u);
  ASSERT_EQ(got.loads.size(), 1u);
  ASSERT_EQ(got.moves.size(), 1u);
  EXPECT_EQ(doc.Text("/Tolmark/Input/Comment"), "3D Linear");
  EXPECT_EQ(doc.Text("/Tolmark/Input/Project/Name"), "Quay <B> & ramp");
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment"), 1);

  // The stiffness sent twice: the force-displacement terms are those of the matrix.
  const std::array<float, 36>& g = got.grmat[0];
  ASSERT_EQ(got.force_displacement.size(), 1u);
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b)
      EXPECT_EQ(got.force_displacement[0][static_cast<std::size_t>(3 * a + b)], g[static_cast<std::size_t>(a + 6 * b)]);

  // The tables in GN and m/GN: stiffness GRMAT / 1e6, flexibility its inverse * 1e6. Each
  // family is a 3 by 3 block of the 6 by 6 table, by action (row) and effect (column).
  const std::array<double, 36> flex = Inverse(g);
  struct Family {
    const char* name;
    int row0, col0;
    bool stiffness;
  } const families[] = {
      {"Stiffnesses/Force-Displacement-Stiffness", 0, 0, true},
      {"Stiffnesses/Force-Rotation-Stiffness", 0, 3, true},
      {"Stiffnesses/Moment-Displacement-Stiffness", 3, 0, true},
      {"Stiffnesses/Moment-Rotation-Stiffness", 3, 3, true},
      {"Flexibilities/Displacement-Force-Flexibility", 0, 0, false},
      {"Flexibilities/Rotation-Force-Flexibility", 3, 0, false},
      {"Flexibilities/Displacement-Moment-Flexibility", 0, 3, false},
      {"Flexibilities/Rotation-Moment-Flexibility", 3, 3, false},
  };
  int nonzero = 0;
  for (const Family& f : families) {
    const std::string family = std::string("/Tolmark/Output/Increment/Pile-Group/") + f.name;
    ASSERT_EQ(doc.Count(family), 9) << family;
    for (int a = 0; a < 3; ++a) {
      for (int b = 0; b < 3; ++b) {
        const std::size_t at = static_cast<std::size_t>((f.row0 + a) + 6 * (f.col0 + b));
        const double value = f.stiffness ? g[at] / 1e6 : flex[at] * 1e6;
        const std::string item = family + "[@action-axis='" + kAxis[a] + "'][@effect-axis='" + kAxis[b] + "']";
        const double printed = doc.Number(item + "/@value");
        ExpectPrinted(printed, value, 1e-3, item);
        nonzero += printed != 0.0 ? 1 : 0;
      }
    }
  }
  EXPECT_GT(nonzero, 50);  // a group loaded in every direction couples nearly every axis

  // The cap block holds what the host was sent, loads in kN and movements in mm.
  const std::string cap = "/Tolmark/Output/Increment/Pile-Cap/";
  const Six& loads = got.loads[0];
  const Six& moves = got.moves[0];
  for (int a = 0; a < 3; ++a) {
    ExpectPrinted(doc.Number(cap + AxisValue("Actions/Force", a)), loads[a], 1e-3, "force");
    ExpectPrinted(doc.Number(cap + AxisValue("Actions/Moment", a)), loads[3 + a], 1e-3, "moment");
    ExpectPrinted(doc.Number(cap + AxisValue("Effects/Displacement", a)), 1000.0 * moves[a], 1e-3, "displacement");
    ExpectPrinted(doc.Number(cap + AxisValue("Effects/Rotation", a)), 1000.0 * moves[3 + a], 1e-3, "rotation");
  }
  EXPECT_FLOAT_EQ(loads[2], 1500.0f);
  EXPECT_NEAR(doc.Number(cap + AxisValue("Centre-Of-Rotation/Position", 0)), got.centre[0], 1e-6);
  EXPECT_NEAR(doc.Number(cap + AxisValue("Centre-Of-Rotation/Position", 1)), got.centre[1], 1e-6);
  EXPECT_FLOAT_EQ(got.centre[0], 0.9f);
  // A linear run's elements carry no limits.
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment/Piles/Pile/Element"), 2 * 4);
  EXPECT_EQ(doc.Count("//@limit"), 0);
}

TEST(XMLFullRun, NonLinearRunReportsTheLastIncrementAndASummaryOfTheOthers) {
  constexpr int kIncrements = 3;
  // The run under test reports through flag 35 alone; the second sends the cap at every
  // increment, and the report flags must not change a single number.
  const std::string path = test::ScratchPath("nonlinear.xml");
  Engine e;
  Model(e, kIncrements, {35});
  RunToXML(e, path);
  const Received last_only = got;
  Engine every;
  Model(every, kIncrements, {25});
  RunToXML(every, test::ScratchPath("every.xml"));
  const Received each = got;
  ASSERT_EQ(last_only.grmat.size(), static_cast<std::size_t>(kIncrements));
  ASSERT_EQ(each.grmat.size(), static_cast<std::size_t>(kIncrements));
  EXPECT_EQ(last_only.grmat, each.grmat);
  ASSERT_EQ(last_only.loads.size(), 1u);
  ASSERT_EQ(each.loads.size(), static_cast<std::size_t>(kIncrements));
  EXPECT_EQ(last_only.loads[0], each.loads.back());
  EXPECT_EQ(last_only.moves[0], each.moves.back());

  ParsedXML doc(path);
  ASSERT_TRUE(doc.ok()) << test::ReadBytes(path);
  EXPECT_EQ(doc.Text("/Tolmark/Input/Comment"), "3D Non-Linear");
  EXPECT_EQ(doc.Count("//Pile-Group"), 0);
  ASSERT_EQ(doc.Count("/Tolmark/Output/Increment"), kIncrements);
  ASSERT_EQ(doc.Text("/Tolmark/Output/Increment[1]/@number"), std::to_string(kIncrements));

  // The last increment, the run's own element, and the summary rows of the others.
  for (int i = 1; i <= kIncrements; ++i) {
    const std::string cap = i == kIncrements ? "/Tolmark/Output/Increment[1]/Pile-Cap/"
                                             : "/Tolmark/Output/Increment[@number='" + std::to_string(i) + "']/Pile-Cap/";
    const Six& loads = each.loads[static_cast<std::size_t>(i - 1)];
    const Six& moves = each.moves[static_cast<std::size_t>(i - 1)];
    const std::string at = "increment " + std::to_string(i);
    for (int a = 0; a < 3; ++a) {
      ExpectPrinted(doc.Number(cap + AxisValue("Actions/Force", a)), loads[a], 1e-3, at + " force");
      ExpectPrinted(doc.Number(cap + AxisValue("Actions/Moment", a)), loads[3 + a], 1e-3, at + " moment");
      ExpectPrinted(doc.Number(cap + AxisValue("Effects/Displacement", a)), 1000.0 * moves[a], 1e-3,
                    at + " displacement");
      ExpectPrinted(doc.Number(cap + AxisValue("Effects/Rotation", a)), 1000.0 * moves[3 + a], 1e-3, at + " rotation");
    }
    // Equal increments of load.
    EXPECT_NEAR(loads[2], 1500.0 * i / kIncrements, 1e-3) << at;
  }

  // The piles of the last increment carry limits and yield states, and their head loads
  // balance the vertical load on the cap.
  const std::string piles = "/Tolmark/Output/Increment[1]/Piles/";
  EXPECT_EQ(doc.Count(piles + "Pile/Element/Shear-Stress[@limit][@yield]"), 2 * 3);
  EXPECT_EQ(doc.Count(piles + "Pile/Toe/Bearing-Pressure[@limit][@yield]"), 2);
  EXPECT_GT(doc.Count(piles + "Pile/Element/Shear-Stress[@yield='true']"), 0);
  const double heads = doc.Number(piles + "Pile[@number='1']/Element[@number='0']/" + AxisValue("Force", 2)) +
                       doc.Number(piles + "Pile[@number='2']/Element[@number='0']/" + AxisValue("Force", 2));
  EXPECT_NEAR(heads, 1500.0, 1.0);
}

}  // namespace
}  // namespace quellon
