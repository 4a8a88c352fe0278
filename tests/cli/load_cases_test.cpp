// `quellon run --load-cases`: a faulty case file refused before the run with its line and
// column, and on the 3 by 3 example a case equal to the model's own loads giving the
// run's own cap movement and pile head loads, with the governing marks of the summary on
// the rows that hold the largest value of each column.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../common/xml_xpath.h"
#include "cli_process.h"

namespace fs = std::filesystem;

namespace {

using namespace quellon_cli_test;

struct Refusal {
  const char* file;      // the case file's name, in the model's folder
  const char* text;
  const char* expected;  // in the message
};

TEST(LoadCases, AFaultyCaseFileIsRefusedBeforeTheRunWithItsLineAndColumn) {
  const Refusal refusals[] = {
      {"cases.csv", "name,Fx,Fy,Fz,Mx,My,Mz,X,Y\nA,0,0,900,0,0,0,0,0\n\nB,0,0,abc,0,0,0,0,0\n",
       "cases.csv:4: column 4 (Fz): 'abc' is not a number"},
      {"cases.csv", "A,0,0,900,0,0,0,0,0\r\nB,1,5,0,900,0,0,0,0,0\r\n", "cases.csv:2: 10 fields"},
      {"cases.csv", "A,0,0,900,0,0,0,0,0\n\"A\",0,0,800,0,0,0,0,0\n", "cases.csv:2: column 1 (name): 'A' names"},
      {"cases.csv", "A,0,0,900,0,0,0,,0\n", "cases.csv:1: column 8 (X): empty"},
      // The summary's CSV would overwrite the case file.
      {"m.cases.csv", "A,0,0,900,0,0,0,0,0\n", "would be overwritten"},
  };
  for (const Refusal& r : refusals) {
    const fs::path dir = Scratch("load-cases-refused");
    fs::copy_file(Example("group_3x3_combined.tmw"), dir / "m.tmw");
    WriteBytes(dir / r.file, r.text);
    const Outcome o = RunCli(std::string("run m.tmw --quiet --load-cases ") + r.file, dir.string());
    EXPECT_EQ(o.status, 2) << r.expected;
    EXPECT_NE(o.output.find(r.expected), std::string::npos) << o.output;
    EXPECT_FALSE(fs::exists(dir / "m.xml")) << "the run started: " << r.expected;
  }
}

using Xml = qtest::XmlDoc;

TEST(LoadCases, TheModelsOwnLoadsAsACaseGiveTheRunsOwnIncrementAndTheMarksGoToTheLargest) {
  const fs::path dir = Scratch("load-cases-example");
  const Outcome o = RunCli("run " + Example("group_3x3_combined.tmw").string() + " --quiet --out-dir " + dir.string() +
                           " --load-cases " + Example("group_3x3_cases.csv").string());
  ASSERT_EQ(o.status, 0) << o.output;

  // "as modelled" carries the model's own loads: the same cap movement and pile heads as
  // the run's own increment, to the digits the documents print.
  const Xml run(dir / "group_3x3_combined.xml");
  const Xml cases(dir / "group_3x3_combined.cases.xml");
  ASSERT_TRUE(run.ok() && cases.ok());
  const std::string own = "/Tolmark/Output/Increment[1]";
  const std::string lc = "/Tolmark/Load-Cases/Load-Case[@name='as modelled']/Increment[1]";
  const auto expect_same = [&](const std::vector<std::string>& paths) {
    double largest = 0;
    for (const std::string& p : paths) largest = std::max(largest, std::fabs(run.Number(own + p)));
    for (const std::string& p : paths)
      EXPECT_NEAR(cases.Number(lc + p), run.Number(own + p), 2e-3 * largest + 1e-9) << p;
  };
  std::vector<std::string> cap;
  for (const char* axis : {"X", "Y", "Z"})
    for (const char* what : {"Displacement", "Rotation"})
      cap.push_back(std::string("/Pile-Cap/Effects/") + what + "[@axis='" + axis + "']/@value");
  expect_same(cap);
  std::vector<std::string> forces, moments;
  for (int pile = 1; pile <= 9; ++pile) {
    for (const char* axis : {"X", "Y", "Z"}) {
      const std::string head = "/Piles/Pile[@number='" + std::to_string(pile) + "']/Element[@number='0']/";
      forces.push_back(head + "Force[@axis='" + axis + "']/@value");
      moments.push_back(head + "Moment[@axis='" + axis + "']/@value");
    }
  }
  expect_same(forces);
  expect_same(moments);

  // The summary's CSV: each column's mark on exactly the rows of its largest value, and
  // the cases built for it govern where their loads alone act.
  const Csv csv = ReadCsv(dir / "group_3x3_combined.cases.csv");
  const std::vector<std::string>& header = csv.header;
  std::vector<std::vector<std::string>> rows = csv.rows;
  rows.insert(rows.begin(), header);
  ASSERT_EQ(rows.size(), 7u) << o.output;
  const auto column = [&](const std::string& name) {
    return static_cast<std::size_t>(std::find(header.begin(), header.end(), name) - header.begin());
  };
  const std::size_t governs = column("governs");
  ASSERT_LT(governs, header.size());
  const std::pair<const char*, const char*> marked[] = {
      {"X (mm)", "X"},          {"Y (mm)", "Y"},           {"Z (mm)", "Z"},
      {"about X (mrad)", "about X"}, {"about Y (mrad)", "about Y"}, {"about Z (mrad)", "about Z"},
      {"largest compression (kN)", "compression"}, {"largest tension (kN)", "tension"},
      {"largest head moment (kNm)", "moment"}};
  const auto governs_of = [&](const std::vector<std::string>& row, const std::string& label) {
    std::istringstream list(row[governs]);
    std::string item;
    while (std::getline(list, item, ';'))
      if (item.substr(item.find_first_not_of(' ')) == label) return true;
    return false;
  };
  for (const auto& [name, label] : marked) {
    const std::size_t c = column(name);
    ASSERT_LT(c, header.size()) << name;
    double largest = 0;
    for (std::size_t r = 1; r < rows.size(); ++r)
      if (!rows[r][c].empty()) largest = std::max(largest, std::fabs(std::stod(rows[r][c])));
    for (std::size_t r = 1; r < rows.size(); ++r) {
      const bool top = !rows[r][c].empty() && largest > 0 && std::fabs(std::stod(rows[r][c])) == largest;
      EXPECT_EQ(governs_of(rows[r], label), top) << rows[r][1] << ": " << name;
    }
  }
  const auto row_of = [&](const std::string& name) {
    for (const auto& r : rows)
      if (r[1] == name) return r;
    return std::vector<std::string>(header.size());
  };
  EXPECT_TRUE(governs_of(row_of("wind +Y"), "Y"));
  EXPECT_TRUE(governs_of(row_of("uplift -X"), "tension"));
  EXPECT_TRUE(governs_of(row_of("eccentric with torque"), "about Z"));

  // The printed table carries the same marks.
  std::size_t in_csv = 0, printed_marks = 0;
  for (std::size_t r = 1; r < rows.size(); ++r)
    for (const auto& entry : marked) in_csv += governs_of(rows[r], entry.second) ? 1 : 0;
  std::istringstream printed(o.output);
  std::string line;
  while (std::getline(printed, line))
    for (std::size_t r = 1; r < rows.size(); ++r)
      if (line.size() > rows[r][1].size() && line.compare(line.size() - rows[r][1].size(), std::string::npos, rows[r][1]) == 0)
        printed_marks += static_cast<std::size_t>(std::count(line.begin(), line.end(), '*'));
  EXPECT_EQ(printed_marks, in_csv) << o.output;
}

// A non-linear case with the model's own loads follows the run's path and stops where the
// run stops, at the group's capacity; the table and its CSV say so.
TEST(LoadCases, ANonLinearCaseStopsWhereTheRunStops) {
  const fs::path dir = Scratch("load-cases-nonlinear");
  WriteBytes(dir / "cases.csv", "own,0,0,24000,0,0,0,0,0\n");  // the example's own loads
  const Outcome o = RunCli("run " + Example("nonlinear_layered_failure.tmw").string() + " --quiet --out-dir " +
                           dir.string() + " --load-cases " + (dir / "cases.csv").string());
  ASSERT_EQ(o.status, 0) << o.output;
  const Xml run(dir / "nonlinear_layered_failure.xml");
  const double stop = run.Number("count(/Tolmark/Output/Increment[1]/Pile-Cap)");
  ASSERT_GT(stop, 1);
  ASSERT_LT(stop, run.Number("/Tolmark/Output/No-Of-Increments/@number"));  // the run stopped early
  const Csv csv = ReadCsv(dir / "nonlinear_layered_failure.cases.csv");
  ASSERT_EQ(csv.rows.size(), 1u);
  EXPECT_EQ(csv.header[2], "last increment");
  EXPECT_EQ(csv.rows[0][2], std::to_string(static_cast<int>(stop)));
  EXPECT_EQ(csv.rows[0][3], "1");
  EXPECT_NE(o.output.find("Case 1 (own) stopped at the axial capacity of the group"), std::string::npos) << o.output;
}

}  // namespace
