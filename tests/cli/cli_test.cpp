// The command-line host as a user meets it: on every example model it must exit 0,
// leave its three outputs and print a summary whose numbers are the ones the engine
// hands a host through its callbacks. `check` must name the line at which a broken
// model goes wrong.
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "cli_process.h"
#include "quellon.h"

namespace fs = std::filesystem;

namespace {

using namespace quellon_cli_test;

// What the engine gives a host for the same model, run in this process with the flags
// the command-line host adds (the cap block of every increment and the full last one).
struct EngineAnswer {
  std::array<float, 6> disp{};
  bool has_disp = false;
  std::array<float, 36> grmat{};
};
EngineAnswer& Answer() {
  static EngineAnswer a;
  return a;
}
void OnDisp(const float* a, const float* b, const float* c, const float* d, const float* e, const float* f) {
  Answer().disp = {*a, *b, *c, *d, *e, *f};
  Answer().has_disp = true;
}
void OnMatrix(const float* g) { std::copy(g, g + 36, Answer().grmat.begin()); }

EngineAnswer RunInProcess(const fs::path& model, const fs::path& dir) {
  Answer() = EngineAnswer{};
  std::ifstream in(model, std::ios::binary);
  std::string line, flags_line;
  while (std::getline(in, line))
    if (line.rfind("[Flags]", 0) == 0 && std::getline(in, flags_line)) break;
  int flags[40];
  for (int i = 0; i < 40; ++i) flags[i] = flags_line.size() > static_cast<std::size_t>(i) && flags_line[i] == '1';
  flags[24] = flags[34] = 1;
  QuellonSetPileCapDisplacementsCallback(&OnDisp);
  QuellonSetStiffnessMatrixCallback(&OnMatrix);
  EXPECT_EQ(READTMWFILEDIRECT(Padded260(model.string()).c_str()), 1);
  QuellonSetProjectFlags(flags, 40);
  EXPECT_EQ(QuellonRunAnalysis1((dir / "in_process.xml").c_str()), 1);
  QuellonCloseAllFiles();
  QuellonSetPileCapDisplacementsCallback(nullptr);
  QuellonSetStiffnessMatrixCallback(nullptr);
  return Answer();
}

// The six numbers of the line below the cap movement heading of the summary.
std::vector<double> SummaryCapMovement(const std::string& out) {
  std::vector<double> v;
  const std::size_t at = out.find("Cap movement after increment");
  if (at == std::string::npos) return v;
  std::istringstream lines(out.substr(at));
  std::string skip, values;
  std::getline(lines, skip);
  std::getline(lines, skip);
  std::getline(lines, values);
  std::istringstream numbers(values);
  double x;
  while (numbers >> x) v.push_back(x);
  return v;
}

double SummaryStiffness(const std::string& out, const std::string& label) {
  const std::size_t at = out.find("    " + label);
  if (at == std::string::npos) return NAN;
  return std::strtod(out.c_str() + at + 4 + label.size(), nullptr);
}

class ExampleModel : public ::testing::TestWithParam<const char*> {};

TEST_P(ExampleModel, RunsAndSummarisesWhatTheEngineComputed) {
  const fs::path model = Example(std::string(GetParam()) + ".tmw");
  const fs::path dir = Scratch(GetParam());
  const Outcome run = RunCli("run " + model.string() + " --out-dir " + dir.string());
  ASSERT_EQ(run.status, 0) << run.output;
  for (const char* ext : {".xml", ".txt", ".log"})
    EXPECT_GT(fs::file_size(dir / (std::string(GetParam()) + ext)), 0u) << ext;

  const EngineAnswer answer = RunInProcess(model, dir);
  ASSERT_TRUE(answer.has_disp);
  const std::vector<double> cap = SummaryCapMovement(run.output);
  ASSERT_EQ(cap.size(), 6u) << run.output;
  for (int i = 0; i < 6; ++i) {
    // Printed in mm and mrad to 3 or 4 decimals.
    const double tolerance = i < 3 ? 0.0005 : 0.00005;
    EXPECT_NEAR(cap[static_cast<std::size_t>(i)], answer.disp[static_cast<std::size_t>(i)] * 1000.0, tolerance) << i;
  }
  const char* labels[6] = {"X (kN/m)", "Y (kN/m)", "Z (kN/m)", "about X (kNm/rad)", "about Y (kNm/rad)",
                           "about Z (kNm/rad)"};
  for (int a = 0; a < 6; ++a) {
    const double printed = SummaryStiffness(run.output, labels[a]);
    const double expected = answer.grmat[static_cast<std::size_t>(a + 6 * a)];
    EXPECT_NEAR(printed, expected, std::fabs(expected) * 1e-4) << labels[a];
  }
  EXPECT_NE(run.output.find("Loads at the pile heads"), std::string::npos) << run.output;
  fs::remove_all(dir);
}

INSTANTIATE_TEST_SUITE_P(Examples, ExampleModel,
                         ::testing::Values("single_bored_pile_clay", "group_3x3_combined", "raked_group_torque",
                                           "nonlinear_layered_failure"));

TEST(Cli, NonLinearSummaryTellsTheCapacityStop) {
  const fs::path dir = Scratch("capacity");
  const Outcome run =
      RunCli("run " + Example("nonlinear_layered_failure.tmw").string() + " --quiet --no-txt --out-dir " +
             dir.string());
  ASSERT_EQ(run.status, 0) << run.output;
  EXPECT_NE(run.output.find("Load against movement by increment"), std::string::npos);
  EXPECT_NE(run.output.find("Axial capacity of the group reached at increment 6, between the vertical loads Fz = "
                            "12000.0 kN and 14400.0 kN"),
            std::string::npos)
      << run.output;
  EXPECT_FALSE(fs::exists(dir / "nonlinear_layered_failure.txt"));
  fs::remove_all(dir);
}

TEST(Cli, ArgumentsAndExitStatus) {
  EXPECT_EQ(RunCli("--help").status, 0);
  const Outcome version = RunCli("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_NE(version.output.find("3.23"), std::string::npos);
  const Outcome none = RunCli("");
  EXPECT_EQ(none.status, 2);
  EXPECT_NE(none.output.find("quellon: no command given"), std::string::npos);
  EXPECT_EQ(RunCli("frobnicate x.tmw").status, 2);
  EXPECT_EQ(RunCli("run").status, 2);
  EXPECT_EQ(RunCli("run x.tmw --bogus").status, 2);
  const Outcome missing = RunCli("run /nonexistent/model.tmw");
  EXPECT_EQ(missing.status, 3);
  EXPECT_NE(missing.output.find("cannot read the model file"), std::string::npos);
}

}  // namespace
