// The XML output of whole analyses with flag 35, read back by libxml2 and held against
// what the host's callbacks received during the same run: the group stiffness and
// flexibility tables against the stiffness matrix sent, the pile cap block against the
// cap loads and movements sent, and the summary of the increments against a second run
// that sends the cap at every increment.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "engine/run_analysis.h"
#include "../common/engine_support.h"
#include "../common/xml_xpath.h"

namespace quellon {
namespace {

using ParsedXML = qtest::XmlDoc;
using Six = std::array<float, 6>;

using testing::sent;
float centre[2];

// The sample model with only `flags` set, run to an XML document at `path`.
void RunToXML(Engine& e, int increments, std::initializer_list<int> flags, const std::string& path) {
  testing::FillSampleModel(e, increments);
  testing::SetAllFlags(e.project, false);
  for (int f : flags) e.project.Flags(f) = 1;
  e.project.Name.assign("Quay <B> & caf\xE9");
  e.callbacks = testing::Recorder();
  testing::sent = testing::Sent{};
  e.foundation.CentreOfRotationCallback = [](const float* x, const float* y) { centre[0] = *x, centre[1] = *y; };
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(RunAnalysis(e, path, std::nullopt), 1);
  ::testing::internal::GetCapturedStdout();
  e.files.xml.close(), e.project.XMLUnit = 0;
}

// Four significant digits at least; magnitudes under the cut print 0.
void ExpectPrinted(double printed, double value, const std::string& what) {
  if (std::fabs(value) < 1e-3) {
    EXPECT_EQ(printed, 0.0) << what;
  } else {
    EXPECT_NEAR(printed, value, 5e-4 * std::fabs(value)) << what;
  }
}

const char* const kAxis[3] = {"X", "Y", "Z"};
std::string AxisValue(const std::string& element, int axis) { return element + "[@axis='" + kAxis[axis] + "']/@value"; }

// The cap block at `cap` against the loads (kN) and movements (mm, mrad) sent.
void ExpectCap(const ParsedXML& doc, const std::string& cap, const Six& loads, const Six& moves, const std::string& at) {
  for (int a = 0; a < 3; ++a) {
    ExpectPrinted(doc.Number(cap + AxisValue("Actions/Force", a)), loads[a], at + " force");
    ExpectPrinted(doc.Number(cap + AxisValue("Actions/Moment", a)), loads[3 + a], at + " moment");
    ExpectPrinted(doc.Number(cap + AxisValue("Effects/Displacement", a)), 1000.0 * moves[a], at + " displacement");
    ExpectPrinted(doc.Number(cap + AxisValue("Effects/Rotation", a)), 1000.0 * moves[3 + a], at + " rotation");
  }
}

// The 6 by 6 inverse of a column-major matrix, by Gauss-Jordan elimination in double.
std::array<double, 36> Inverse(const std::array<float, 36>& m) {
  double a[6][12] = {};
  for (int r = 0; r < 6; ++r) {
    for (int c = 0; c < 6; ++c) a[r][c] = m[static_cast<std::size_t>(r + 6 * c)];
    a[r][6 + r] = 1.0;
  }
  for (int k = 0; k < 6; ++k) {
    int pivot = k;
    for (int r = k + 1; r < 6; ++r) pivot = std::fabs(a[r][k]) > std::fabs(a[pivot][k]) ? r : pivot;
    std::swap(a[k], a[pivot]);
    const double p = a[k][k];
    for (double& v : a[k]) v /= p;
    for (int r = 0; r < 6; ++r) {
      const double f = r == k ? 0.0 : a[r][k];
      for (int c = 0; c < 12; ++c) a[r][c] -= f * a[k][c];
    }
  }
  std::array<double, 36> inv;
  for (int r = 0; r < 6; ++r)
    for (int c = 0; c < 6; ++c) inv[static_cast<std::size_t>(r + 6 * c)] = a[r][6 + c];
  return inv;
}

TEST(XMLFullRun, LinearRunAgreesWithTheStiffnessAndCapSentToTheHost) {
  const testing::TempFile file(".xml");
  Engine e;
  RunToXML(e, 1, {2, 35}, file.path());
  ParsedXML doc(file.path());
  ASSERT_TRUE(doc.ok()) << testing::ReadBytes(file.path());
  ASSERT_TRUE(sent.grmat.size() == 1 && sent.loads.size() == 1 && sent.stiffness.size() == 1);
  EXPECT_EQ(doc.Text("/Tolmark/Input/Comment"), "3D Linear");
  // Escaped and declared Latin-1: the parser hands the name back whole, in UTF-8.
  EXPECT_EQ(doc.Text("/Tolmark/Input/Project/Name"), "Quay <B> & caf\xC3\xA9");
  const std::array<float, 36>& g = sent.grmat[0];
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b)
      EXPECT_EQ(sent.stiffness[0][static_cast<std::size_t>(3 * a + b)], g[static_cast<std::size_t>(a + 6 * b)]);

  // Stiffness GRMAT / 1e6 and flexibility its inverse * 1e6, in 3 by 3 blocks by action
  // (row) and effect (column).
  const std::array<double, 36> flex = Inverse(g);
  const char *const loads[2] = {"Force", "Moment"}, *const moves[2] = {"Displacement", "Rotation"};
  int nonzero = 0;
  for (int family = 0; family < 8; ++family) {
    // The first word of a family's name picks the block row, the second its column.
    const bool stiffness = family < 4;
    const int row = (family >> 1) & 1, col = family & 1;
    const std::string path = std::string("/Tolmark/Output/Increment/Pile-Group/") +
                             (stiffness ? std::string("Stiffnesses/") + loads[row] + "-" + moves[col] + "-Stiffness"
                                        : std::string("Flexibilities/") + moves[row] + "-" + loads[col] + "-Flexibility");
    ASSERT_EQ(doc.Count(path), 9) << path;
    for (int a = 0; a < 3; ++a) {
      for (int b = 0; b < 3; ++b) {
        const std::size_t at = static_cast<std::size_t>((3 * row + a) + 6 * (3 * col + b));
        const std::string item = path + "[@action-axis='" + kAxis[a] + "'][@effect-axis='" + kAxis[b] + "']";
        const double printed = doc.Number(item + "/@value");
        ExpectPrinted(printed, stiffness ? g[at] / 1e6 : flex[at] * 1e6, item);
        nonzero += printed != 0.0 ? 1 : 0;
      }
    }
  }
  EXPECT_GT(nonzero, 40);  // a raked group loaded in every direction couples most axes
  const std::string cap = "/Tolmark/Output/Increment/Pile-Cap/";
  ExpectCap(doc, cap, sent.loads[0], sent.moves[0], "linear");
  EXPECT_NEAR(doc.Number(cap + AxisValue("Centre-Of-Rotation/Position", 0)), centre[0], 1e-6);
  EXPECT_NEAR(doc.Number(cap + AxisValue("Centre-Of-Rotation/Position", 1)), centre[1], 1e-6);
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment/Piles/Pile/Element"), 3 * 5);
  EXPECT_EQ(doc.Count("//@limit"), 0);
}

TEST(XMLFullRun, NonLinearRunReportsTheLastIncrementAndASummaryOfTheOthers) {
  constexpr int kIncrements = 3;
  // Flag 35 alone, against a run that sends the cap at every increment; the report
  // flags must not change a single number.
  const testing::TempFile file(".xml"), other(".every.xml");
  Engine e, every;
  RunToXML(e, kIncrements, {35}, file.path());
  const testing::Sent last_only = sent;
  RunToXML(every, kIncrements, {25}, other.path());
  ASSERT_EQ(last_only.grmat.size(), static_cast<std::size_t>(kIncrements));
  EXPECT_EQ(last_only.grmat, sent.grmat);
  ASSERT_TRUE(last_only.loads.size() == 1 && sent.loads.size() == kIncrements);
  EXPECT_EQ(last_only.loads[0], sent.loads.back());
  EXPECT_EQ(last_only.moves[0], sent.moves.back());

  ParsedXML doc(file.path());
  ASSERT_TRUE(doc.ok()) << testing::ReadBytes(file.path());
  EXPECT_EQ(doc.Text("/Tolmark/Input/Comment"), "3D Non-Linear");
  EXPECT_EQ(doc.Count("//Pile-Group"), 0);
  ASSERT_EQ(doc.Count("/Tolmark/Output/Increment"), kIncrements);
  ASSERT_EQ(doc.Text("/Tolmark/Output/Increment[1]/@number"), std::to_string(kIncrements));
  // The last increment in the run's own element, the summary rows for the others.
  for (int i = 1; i <= kIncrements; ++i) {
    const std::string cap = i == kIncrements ? "/Tolmark/Output/Increment[1]/Pile-Cap/"
                                             : "/Tolmark/Output/Increment[@number='" + std::to_string(i) + "']/Pile-Cap/";
    const std::size_t k = static_cast<std::size_t>(i - 1);
    ExpectCap(doc, cap, sent.loads[k], sent.moves[k], "increment " + std::to_string(i));
    EXPECT_NEAR(sent.loads[k][2], 2500.0 * i / kIncrements, 1e-3);  // equal increments of load
  }
  // The piles of the last increment carry limits and yield states.
  const std::string piles = "/Tolmark/Output/Increment[1]/Piles/";
  EXPECT_EQ(doc.Count(piles + "Pile/Element/Shear-Stress[@limit][@yield]"), 3 * 4);
  EXPECT_EQ(doc.Count(piles + "Pile/Toe/Bearing-Pressure[@limit][@yield]"), 3);
}

}  // namespace
}  // namespace quellon
