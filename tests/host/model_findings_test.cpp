// The model check and the findings, as a host gets them through quellon.h: each broken
// or misleading model (an example with one small edit) gives its finding at its line,
// and the examples give none that they should not. A check must leave the model as it
// was: the run after it writes the same documents as a run without it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "../common/test_files.h"
#include "quellon.h"

namespace {

using qtest::Edited;
using qtest::Example;
using qtest::Padded260;

namespace fs = std::filesystem;

struct Findings {
  int read = 0;
  int accepted = -1;  // -1 when the read failed and no check ran
  std::vector<std::string> lines;  // "code line" of each finding
};

Findings ReadAndCheck(const std::string& text, const std::string& name) {
  const fs::path dir = fs::temp_directory_path() / ("quellon-findings-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  const fs::path file = dir / (name + ".tmw");
  std::ofstream(file, std::ios::binary) << text;
  Findings f;
  f.read = READTMWFILEDIRECT(Padded260(file.string()).c_str());
  QuellonCloseAllFiles();
  if (f.read == 1) f.accepted = QuellonCheckModel();
  char buffer[1024];
  const int count = QuellonGetDiagnostic(0, nullptr, 0);
  for (int i = 1; i <= count; ++i) {
    EXPECT_EQ(QuellonGetDiagnostic(i, buffer, sizeof buffer), count);
    std::string s = buffer;
    const std::size_t a = s.find('\t'), b = s.find('\t', a + 1), c = s.find('\t', b + 1);
    f.lines.push_back(s.substr(a + 1, b - a - 1) + " " + s.substr(b + 1, c - b - 1));
  }
  // Only a run empties the model for the next read (a refused model and one half read
  // included).
  QuellonRunAnalysis1((dir / "consumed.xml").string().c_str());
  QuellonCloseAllFiles();
  fs::remove_all(dir);
  return f;
}

struct Case {
  const char* name;
  std::function<std::string()> model;
  int read, accepted;
  std::vector<std::string> findings;  // "code line", in order
};

TEST(ModelFindings, EachPitfallIsFoundAndSoundModelsGiveNone) {
  const char* loads = "250. 120. 3500. 0. 0. 800. 0.5 0.";
  const char* pile1 = "1 20. 0.9 0. 0.9 0. 0. 0. 0. 0. 20500. 1040. 1040. 805. 12. 19085. 966. 966. 805.";
  const std::vector<Case> cases = {
      {"sound single", [] { return qtest::ReadBytes(Example("single_bored_pile_clay.tmw")); }, 1, 1, {}},
      {"sound group", [] { return qtest::ReadBytes(Example("group_3x3_combined.tmw")); }, 1, 1, {}},
      {"sound non-linear", [] { return qtest::ReadBytes(Example("nonlinear_layered_failure.tmw")); }, 1, 1, {}},
      {"torque", [] { return qtest::ReadBytes(Example("raked_group_torque.tmw")); }, 1, 1, {"cap-torque 0"}},
      {"decimal comma on the loads line",
       [&] { return Edited("raked_group_torque.tmw", loads, "1500,0 0. 24000. 0. 0. 0. 0. 0."); }, 1, 1,
       {"decimal-comma 42", "values-dropped 42"}},
      {"decimal comma in a Poisson's ratio",
       [] { return Edited("single_bored_pile_clay.tmw", "2000. 0.4", "2000. 0,4"); }, 1, 1,
       {"decimal-comma 28", "values-dropped 28"}},
      {"commas as separators",
       [] { return Edited("single_bored_pile_clay.tmw", "0. 20000. 2000. 20000. 2000. 0.4", "0.,20000.,2000.,20000.,2000.,0.4"); },
       1, 1, {}},
      {"a value read well and refused",
       [] { return Edited("single_bored_pile_clay.tmw", "2000. 0.4", "2000. 0.6"); }, 0, -1, {}},
      {"a layer too many",
       [] { return Edited("raked_group_torque.tmw", "\r\n2 2\r\n", "\r\n1 2\r\n"); }, 0, -1,
       {"values-dropped 38", "read-stopped 41", "count-mismatch 32"}},
      {"a layer too many, non-linear",
       [] { return Edited("nonlinear_layered_failure.tmw", "\r\n3 2\r\n", "\r\n2 2\r\n"); }, 0, -1,
       {"values-in-heading 40", "read-stopped 45", "count-mismatch 32", "count-mismatch 32"}},
      {"pile above the ground",
       [&] { return Edited("single_bored_pile_clay.tmw", pile1, "1 20. 0.9 0. 0.9 0. 0. 0. 0. -1. 20500. 1040. 1040. 805. 12. 19085. 966. 966. 805."); },
       1, 0, {"refused 0"}},
      {"pile above the first layer",
       [] { return Edited("single_bored_pile_clay.tmw", "0. 20000. 2000.", "2. 20000. 2000."); }, 1, 0,
       {"refused 0"}},
      {"elements shorter than the diameter",
       [] { return Edited("single_bored_pile_clay.tmw", "\r\n1 20 1 0", "\r\n1 50 1 0"); }, 1, 1,
       {"short-elements 0"}},
      {"EA in kN", [] { return Edited("single_bored_pile_clay.tmw", "20500. 1040.", "20500000. 1040."); }, 1, 1,
       {"section-stiffness 0"}},
      {"EA in kN, unreinforced pile",
       [] { return Edited("group_3x3_combined.tmw", "-3. -3. 0. 8482. 191.", "-3. -3. 0. 8482000. 191."); }, 1, 1,
       {"section-stiffness 0"}},
      {"soil modulus in MPa",
       [] { return Edited("single_bored_pile_clay.tmw", "0. 20000. 2000. 20000. 2000.", "0. 20. 0. 20000. 2000."); },
       1, 1, {"soil-stiffness 0"}},
      {"two close piles alike but for their reinforced length",
       [&] {
         std::string t = Edited("single_bored_pile_clay.tmw", "\r\n1 20 1 0", "\r\n2 20 1 0");
         const std::string pile2 = "\r\nP2\r\n2 20. 0.9 0. 0.9 0. 0. 1.5 0. 0. 20500. 1040. 1040. 805. 6. 19085. 966. 966. 805.";
         t.insert(t.find(pile1) + std::string(pile1).size(), pile2);
         return t;
       },
       1, 1, {"close-piles 0", "shared-pile-matrix 0"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Findings f = ReadAndCheck(c.model(), "case");
    EXPECT_EQ(f.read, c.read);
    EXPECT_EQ(f.accepted, c.accepted);
    EXPECT_EQ(f.lines, c.findings);
  }
}

// What the engine writes for a run of the example, with or without a check before it.
std::string RunDocuments(const std::string& example, bool check_first) {
  const fs::path dir = fs::temp_directory_path() / ("quellon-findings-run-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  EXPECT_EQ(READTMWFILEDIRECT(Padded260(Example(example).string()).c_str()), 1);
  if (check_first) {
    EXPECT_EQ(QuellonCheckModel(), 1);
  }
  const fs::path xml = dir / "run.xml", txt = dir / "run.txt";
  EXPECT_EQ(QuellonRunAnalysis2(xml.string().c_str(), txt.string().c_str()), 1);
  QuellonCloseAllFiles();
  const std::string documents = qtest::ReadBytes(xml) + qtest::ReadBytes(txt);
  fs::remove_all(dir);
  return documents;
}

TEST(ModelFindings, ACheckLeavesTheModelAsItWas) {
  // A free-standing length, rakes and a torque: the check works out soil entry points,
  // the centre and the increment loads that the run works out again.
  // A read never clears a flag: a first run leaves the project reset for the two compared.
  RunDocuments("single_bored_pile_clay.tmw", false);
  for (const char* example : {"raked_group_torque.tmw", "nonlinear_layered_failure.tmw"}) {
    SCOPED_TRACE(example);
    const std::string checked = RunDocuments(example, true);
    EXPECT_EQ(checked, RunDocuments(example, false));
  }
}

}  // namespace
