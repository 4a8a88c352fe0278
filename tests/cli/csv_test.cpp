// The CSV files of `quellon run` against the XML output they come from, read here on its
// own with XPath: every column equals the document's value, each row stands where its
// element is on the pile, and the pile heads balance the cap. And the warnings after a
// non-linear run: present where coarse increments let the stresses pass their limits,
// absent where the ground is far from them.
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../common/xml_xpath.h"
#include "cli_process.h"

namespace fs = std::filesystem;

namespace {

using namespace quellon_cli_test;

// What quellon printed, marked when it did not exit with status 0.
std::string Printed(const std::string& args) {
  const Outcome o = RunCli(args);
  return o.status == 0 ? o.output : o.output + "\n[exit status not 0]";
}

using Xml = qtest::XmlDoc;

constexpr double kPi = 3.14159265358979;

// Equal to what 6 significant digits keep of a value the document prints with 4 or more.
void ExpectSame(double csv, double xml, const std::string& what) {
  EXPECT_NEAR(csv, xml, 1e-5 * std::fabs(xml) + 1e-9) << what;
}

struct PileIn {
  double length, free, ds, db, ca, sa, ce, se, dx, dy;
};

class CsvOfExample : public ::testing::TestWithParam<const char*> {};

TEST_P(CsvOfExample, ColumnsAreTheXmlValuesAndThePilesBalanceTheCap) {
  const std::string name = GetParam();
  const fs::path dir = Scratch(name);
  const std::string out = Printed("run " + Example(name + ".tmw").string() + " --quiet --out-dir " + dir.string());
  ASSERT_EQ(out.find("[exit status not 0]"), std::string::npos) << out;
  const Xml xml(dir / (name + ".xml"));
  ASSERT_TRUE(xml.ok());
  const Csv heads = ReadCsv(dir / (name + ".heads.csv"));
  const Csv profiles = ReadCsv(dir / (name + ".profiles.csv"));
  const bool nonlinear = xml.Text("/Tolmark/Input/NonLinear") == "1";
  EXPECT_EQ(fs::exists(dir / (name + ".history.csv")), nonlinear);
  if (!nonlinear) {
    EXPECT_EQ(out.find("[stress-overshoot]"), std::string::npos) << out;
    EXPECT_EQ(out.find("[group-capacity]"), std::string::npos) << out;
  }

  const int n = static_cast<int>(xml.Number("/Tolmark/Input/Piles/Elements"));
  const double cx = xml.Number("/Tolmark/Output/Increment[1]/Pile-Cap[1]/Centre-Of-Rotation/Position[@axis='X']/@value");
  const double cy = xml.Number("/Tolmark/Output/Increment[1]/Pile-Cap[1]/Centre-Of-Rotation/Position[@axis='Y']/@value");
  std::vector<PileIn> piles;
  for (int p = 1;; ++p) {
    const std::string at = "/Tolmark/Input/Piles/Pile[" + std::to_string(p) + "]/";
    if (xml.Text(at + "@number").empty()) break;
    const double a = xml.Number(at + "XRake/@value") * kPi / 180, e = xml.Number(at + "YRake/@value") * kPi / 180;
    piles.push_back({xml.Number(at + "EmbeddedLength/@value"), xml.Number(at + "FreeStandingLength/@value"),
                     xml.Number(at + "ExternalDiameter/@value"), xml.Number(at + "BaseDiameter/@value"), std::cos(a),
                     std::sin(a), std::cos(e), std::sin(e), xml.Number(at + "XPosition/@value") - cx,
                     xml.Number(at + "YPosition/@value") - cy});
  }
  const std::size_t P = piles.size();
  int increments = 0;
  while (!xml.Text("/Tolmark/Output/Increment[1]/Piles[" + std::to_string(increments + 1) + "]/No-Of-Piles/@number")
              .empty())
    ++increments;
  ASSERT_GT(increments, 0);
  ASSERT_EQ(profiles.rows.size(), static_cast<std::size_t>(increments) * P * static_cast<std::size_t>(n + 2));
  ASSERT_EQ(heads.rows.size(), static_cast<std::size_t>(increments) * P);

  // Profiles: every column against the element of the document.
  static const std::map<std::string, std::string> kLoads = {{"axial force (kN)", "Force[@axis='Z']"},
                                                            {"shear X (kN)", "Force[@axis='X']"},
                                                            {"shear Y (kN)", "Force[@axis='Y']"},
                                                            {"moment about X (kNm)", "Moment[@axis='X']"},
                                                            {"moment about Y (kNm)", "Moment[@axis='Y']"},
                                                            {"torque (kNm)", "Moment[@axis='Z']"},
                                                            {"axial movement (mm)", "Displacement[@axis='Z']"},
                                                            {"X movement (mm)", "Displacement[@axis='X']"},
                                                            {"Y movement (mm)", "Displacement[@axis='Y']"},
                                                            {"twist (mrad)", "Rotation[@axis='Z']"},
                                                            {"axial stress (kPa)", "Shear-Stress"},
                                                            {"normal stress X (kPa)", "Normal-Stress[@axis='X']"},
                                                            {"normal stress Y (kPa)", "Normal-Stress[@axis='Y']"},
                                                            {"torsional stress (kPa)", "Torsional-Stress"}};
  for (std::size_t row = 0; row < profiles.rows.size(); ++row) {
    const int inc = static_cast<int>(profiles.num(row, "increment"));
    const int p = static_cast<int>(profiles.num(row, "pile"));
    const int k = static_cast<int>(profiles.num(row, "element"));
    const std::string pile =
        "/Tolmark/Output/Increment[1]/Piles[" + std::to_string(inc) + "]/Pile[" + std::to_string(p) + "]/";
    const std::string el = k <= n ? pile + "Element[@number='" + std::to_string(k) + "']/" : pile + "Toe/";
    const std::string where =
        name + " increment " + std::to_string(inc) + " pile " + std::to_string(p) + " element " + std::to_string(k);
    for (const auto& [column, node] : kLoads) {
      const std::string field = profiles.rows[row][profiles.col(column)];
      std::string path = el + (k > n && column == "axial stress (kPa)" ? "Bearing-Pressure" : node);
      const double value = xml.Number(path + "/@value");
      if (std::isnan(value)) {
        EXPECT_TRUE(field.empty() || std::strtod(field.c_str(), nullptr) == 0.0) << where << " " << column;
        continue;
      }
      const double scale =
          column.find("(mm)") != std::string::npos || column.find("(mrad)") != std::string::npos ? 1000 : 1;
      ExpectSame(std::strtod(field.c_str(), nullptr), value * scale, where + " " + column);
      if (nonlinear && k > 0 && column.find("stress") != std::string::npos) {
        const std::string kind = column.substr(0, column.find(" stress"));
        const std::string prefix = kind == "normal" ? "normal " + column.substr(14, 1) : kind;
        ExpectSame(profiles.num(row, prefix + " limit (kPa)"), xml.Number(path + "/@limit"), where + " limit");
        EXPECT_EQ(profiles.num(row, prefix + " yielded (1 yes)") == 1,
                  xml.Text(path + "/@yield") == "true")
            << where;
      }
    }
  }

  // Where each row stands: the head at cap level, element k from (k - 1) h below the soil
  // entry along the pile, the toe at its length; depths are the vertical part of that.
  for (std::size_t first = 0; first < profiles.rows.size(); first += static_cast<std::size_t>(n + 2)) {
    const PileIn& g = piles[static_cast<std::size_t>(profiles.num(first, "pile")) - 1];
    const double along = g.free / g.ca / g.ce, h = g.length / n;
    for (std::size_t r = first; r < first + static_cast<std::size_t>(n + 2); ++r) {
      const double k = profiles.num(r, "element");
      const double top = r == first ? -along : k > n ? g.length : (k - 1) * h;
      const double mid = r == first ? -along / 2 : k > n ? top : top + h / 2;
      const std::string at = name + " row " + std::to_string(r);
      EXPECT_NEAR(profiles.num(r, "top along pile from head (m)"), along + top, 2e-3) << at;
      EXPECT_NEAR(profiles.num(r, "mid-point along pile from head (m)"), along + mid, 2e-3) << at;
      EXPECT_NEAR(profiles.num(r, "top depth below ground (m)"), top * g.ca * g.ce, 2e-3) << at;
      EXPECT_NEAR(profiles.num(r, "mid-point depth below ground (m)"), mid * g.ca * g.ce, 2e-3) << at;
    }
  }

  // Pile heads: the document's loads and movements turned into external axes, and their
  // sum with lever arms about the centre of rotation is the cap's load.
  for (int inc = 1; inc <= increments; ++inc) {
    const std::string cap = "/Tolmark/Output/Increment[1]/Pile-Cap[" + std::to_string(inc) + "]/";
    double load[6] = {}, scale[6] = {};
    for (std::size_t p = 0; p < P; ++p) {
      const std::size_t row = static_cast<std::size_t>(inc - 1) * P + p;
      const PileIn& g = piles[p];
      const std::string head = "/Tolmark/Output/Increment[1]/Piles[" + std::to_string(inc) + "]/Pile[" +
                               std::to_string(p + 1) + "]/Element[@number='0']/";
      const double A = xml.Number(head + "Force[@axis='Z']/@value"), X = xml.Number(head + "Force[@axis='X']/@value"),
                   Y = xml.Number(head + "Force[@axis='Y']/@value");
      const double V = g.ca * g.ce * A + g.sa * X + g.se * Y, Hx = g.ca * X - g.sa * A, Hy = g.ce * Y - g.se * A;
      ExpectSame(heads.num(row, "Fx (kN)"), Hx, "Fx");
      ExpectSame(heads.num(row, "Fy (kN)"), Hy, "Fy");
      ExpectSame(heads.num(row, "Fz (kN)"), V, "Fz");
      const double Mx = heads.num(row, "Mx (kNm)"), My = heads.num(row, "My (kNm)"), Mz = heads.num(row, "Mz (kNm)");
      ExpectSame(My, xml.Number(head + "Moment[@axis='Y']/@value"), "My");
      ExpectSame(heads.num(row, "twist (mrad)"), xml.Number(cap + "Effects/Rotation[@axis='Z']/@value"), "twist");
      // The head moments stand at cap level; the engine adds the piles up at the ground.
      const double Mxz = My + X * g.free / g.ca, Myz = Mx + Y * g.free / g.ce;
      const double terms[6] = {Hx,
                               Hy,
                               V,
                               (g.dy - g.free * g.se / g.ce) * V + Myz - g.free * Hy,
                               (g.dx - g.free * g.sa / g.ca) * V + Mxz - g.free * Hx,
                               Mz - g.dy * Hx + g.dx * Hy};
      for (int a = 0; a < 6; ++a) {
        load[a] += terms[a];
        scale[a] += std::fabs(terms[a]) + std::fabs(a >= 3 ? (std::fabs(g.dx) + std::fabs(g.dy) + g.free) * V : 0.0);
      }
      // Movement: back into the pile's axes, as the document gives it (cut below 0.1 mm).
      const double wX = heads.num(row, "X movement (mm)") / 1000, wY = heads.num(row, "Y movement (mm)") / 1000,
                   wV = heads.num(row, "Z movement (mm)") / 1000;
      const double axial = g.ca * g.ce * wV - g.sa * wX - g.se * wY;
      EXPECT_NEAR(axial, xml.Number(head + "Displacement[@axis='Z']/@value"), 1e-4 + 1e-3 * std::fabs(axial)) << name;
      EXPECT_NEAR(g.sa * wV + g.ca * wX, xml.Number(head + "Displacement[@axis='X']/@value"),
                  1.01e-4 + 1e-3 * std::fabs(wX));
      EXPECT_NEAR(g.se * wV + g.ce * wY, xml.Number(head + "Displacement[@axis='Y']/@value"),
                  1.01e-4 + 1e-3 * std::fabs(wY));
    }
    static const char* const kCap[6] = {"Force[@axis='X']",  "Force[@axis='Y']",  "Force[@axis='Z']",
                                        "Moment[@axis='X']", "Moment[@axis='Y']", "Moment[@axis='Z']"};
    for (int a = 0; a < 6; ++a)
      EXPECT_NEAR(load[a], xml.Number(cap + "Actions/" + kCap[a] + "/@value"), 1e-3 * scale[a] + 0.05)
          << name << " increment " << inc << " cap load " << a;
  }

  if (nonlinear) {
    const Csv history = ReadCsv(dir / (name + ".history.csv"));
    ASSERT_EQ(history.rows.size(), static_cast<std::size_t>(increments));
    for (std::size_t row = 0; row < history.rows.size(); ++row) {
      const std::string cap = "/Tolmark/Output/Increment[1]/Pile-Cap[" + std::to_string(row + 1) + "]/";
      for (int a = 0; a < 3; ++a) {
        const char x = "xyz"[a], X = "XYZ"[a];
        const std::string axis = std::string("[@axis='") + X + "']/@value";
        const std::pair<std::string, std::string> columns[4] = {{std::string("F") + x + " (kN)", "Actions/Force"},
                                                                {std::string("M") + x + " (kNm)", "Actions/Moment"},
                                                                {std::string(1, X) + " (mm)", "Effects/Displacement"},
                                                                {std::string("about ") + X + " (mrad)", "Effects/Rotation"}};
        for (const auto& [column, node] : columns)
          ExpectSame(history.num(row, column), xml.Number(cap + node + axis), "history " + column);
      }
    }
  }
  fs::remove_all(dir);
}

INSTANTIATE_TEST_SUITE_P(Examples, CsvOfExample,
                         ::testing::Values("single_bored_pile_clay", "group_3x3_combined", "raked_group_torque",
                                           "nonlinear_layered_failure"));

// A copy of the non-linear example with its load line replaced.
fs::path WithLoad(const fs::path& dir, const std::string& load_line) {
  return WriteEdited(dir, "model.tmw", "nonlinear_layered_failure.tmw", "\r\n0. 0. 24000. 0. 0. 0. 0. 0.\r\n",
                     "\r\n" + load_line + "\r\n");
}

TEST(PostRunWarnings, FireWhereCoarseIncrementsOvershootTheLimitsOnly) {
  const fs::path dir = Scratch("warnings");
  // Ten increments to 24 MN: elements pass their limits by far before they yield, and the
  // group takes more than the sum of its limits before the run stops.
  std::string out =
      Printed("run " + WithLoad(dir, "0. 0. 24000. 0. 0. 0. 0. 0.").string() + " --quiet --out-dir " + dir.string());
  EXPECT_NE(out.find("[stress-overshoot]"), std::string::npos) << out;
  EXPECT_NE(out.find("above a limiting stress at some increment (largest: "), std::string::npos) << out;
  // The capacity it quotes is the sum of the limits in the document: shaft friction over
  // the shaft area of each element, base pressure over the base area.
  const Xml xml(dir / "model.xml");
  const int n = static_cast<int>(xml.Number("/Tolmark/Input/Piles/Elements"));
  double capacity = 0;
  for (int p = 1; p <= 4; ++p) {
    const std::string in = "/Tolmark/Input/Piles/Pile[" + std::to_string(p) + "]/";
    const std::string last = "/Tolmark/Output/Increment[1]/Piles[last()]/Pile[" + std::to_string(p) + "]/";
    const double ds = xml.Number(in + "ExternalDiameter/@value"), db = xml.Number(in + "BaseDiameter/@value");
    const double h = xml.Number(in + "EmbeddedLength/@value") / n;
    for (int k = 1; k <= n; ++k)
      capacity += xml.Number(last + "Element[@number='" + std::to_string(k) + "']/Shear-Stress/@limit") * kPi * ds * h;
    capacity += xml.Number(last + "Toe/Bearing-Pressure/@limit") * kPi * db * db / 4;
  }
  char expected[96];
  std::snprintf(expected, sizeof expected, "sum of its limiting stresses, is %.0f kN", capacity);
  EXPECT_NE(out.find(expected), std::string::npos) << expected << "\n" << out;
  EXPECT_NE(out.find("stopped at 14400 kN (increment 6)"), std::string::npos) << out;

  // A tenth of the load stays far from every limit: nothing to warn about.
  out = Printed("run " + WithLoad(dir, "0. 0. 2400. 0. 0. 0. 0. 0.").string() + " --quiet --out-dir " + dir.string());
  EXPECT_EQ(out.find("[exit status not 0]"), std::string::npos) << out;
  EXPECT_EQ(out.find("Warnings ("), std::string::npos) << out;
  fs::remove_all(dir);
}

TEST(CsvFiles, SkippedWhenTurnedOffOrWhenTheXmlLacksTheirData) {
  const fs::path dir = Scratch("skip");
  std::string out = Printed("run " + Example("single_bored_pile_clay.tmw").string() + " --quiet --no-csv --out-dir " + dir.string());
  EXPECT_FALSE(fs::exists(dir / "single_bored_pile_clay.heads.csv")) << out;
  // The model's own flags without the ones that report the piles: nothing to write.
  const fs::path bare = WriteEdited(dir, "bare.tmw", "single_bored_pile_clay.tmw",
                                    "[Flags]\r\n0100000000000001001011111011001000000000", "[Flags]\r\n" + std::string(40, '0'));
  out = Printed("run " + bare.string() + " --quiet --keep-flags --out-dir " + dir.string());
  EXPECT_EQ(out.find("[exit status not 0]"), std::string::npos) << out;
  EXPECT_NE(out.find("bare.profiles.csv not written: the XML has no piles block"), std::string::npos) << out;
  EXPECT_FALSE(fs::exists(dir / "bare.profiles.csv"));
  fs::remove_all(dir);
}

}  // namespace
