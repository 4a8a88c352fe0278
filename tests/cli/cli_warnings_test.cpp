// What `quellon check` and `quellon run` tell an engineer about a model beyond what
// the engine refuses: a run's refusal found by check, misread numbers with their file
// line and token, where a failed read went out of step, and warnings where the method
// misleads, printed before a run and again in its summary, silenced by --no-warnings,
// never changing the exit status.
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "cli_process.h"

namespace {

using namespace quellon_cli_test;

namespace fs = std::filesystem;

// The example with the first occurrence of from replaced by to, written into dir.
fs::path Edited(const fs::path& dir, const std::string& example, const std::string& from, const std::string& to) {
  static int serial = 0;
  return WriteEdited(dir, "edited_" + std::to_string(++serial) + "_" + example, example, from, to);
}

class CliWarnings : public ::testing::Test {
 protected:
  ScratchDir scratch_{"quellon-cli-warnings"};
  const fs::path& dir_ = scratch_.path();
};

TEST_F(CliWarnings, CheckFindsWhatRunRefusesAndWhatAReaderCannotSee) {
  struct Case {
    const char* name;
    fs::path model;
    const char* options;
    int status;
    std::vector<std::string> shown;  // each must appear, with the model's name before it
    const char* absent;              // must not appear (empty: nothing)
  };
  const Case cases[] = {
      {"pile above the ground",
       Edited(dir_, "single_bored_pile_clay.tmw", "0. 0. 0. 0. 20500.", "0. 0. 0. -1. 20500."), "", 3,
       {": pile 1: it enters the ground at Z = -1 m, above the free surface"}, ""},
      {"decimal comma on the loads line",
       Edited(dir_, "raked_group_torque.tmw", "250. 120. 3500.", "1500,0 0. 24000."), "", 0,
       {".tmw:42: \"1500,0\" has a comma between digits", ".tmw:42: the line holds 1 more value", "[cap-torque]"},
       ""},
      {"silenced", Edited(dir_, "raked_group_torque.tmw", "250. 120. 3500.", "1500,0 0. 24000."), "--no-warnings", 0,
       {"reads without a problem"}, "warning:"},
      // The reader's own refusal, at its file line; a sound model passes.
      {"a value the reader refuses", Edited(dir_, "single_bored_pile_clay.tmw", "2000. 0.4", "2000. 0.6"), "", 3,
       {"single_bored_pile_clay.tmw:28: ", "Error reading data for layer: 1"}, ""},
      {"sound", Example("group_3x3_combined.tmw"), "", 0, {}, ""},
      {"a layer too many", Edited(dir_, "raked_group_torque.tmw", "\r\n2 2\r\n", "\r\n1 2\r\n"), "", 3,
       {".tmw:38: the line holds 5 more values", ".tmw:41: the reader stopped here: it expected the 8 values of the loads",
        ".tmw:32: 1 layer was announced on line 32, but lines 35 to 38 hold 12 values, 6 to a layer (2 layers)"},
       ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Outcome o = RunCli("check " + c.model.string() + " " + c.options);
    EXPECT_EQ(o.status, c.status) << o.output;
    for (const std::string& s : c.shown) EXPECT_NE(o.output.find(s), std::string::npos) << s << "\n" << o.output;
    if (*c.absent != '\0') {
      EXPECT_EQ(o.output.find(c.absent), std::string::npos) << o.output;
    }
  }
}

TEST_F(CliWarnings, RunWarnsBeforeAndListsAgainInTheSummary) {
  const fs::path model = fs::path(QUELLON_EXAMPLES_DIR) / "raked_group_torque.tmw";
  const Outcome warned = RunCli("run " + model.string() + " --quiet --out-dir " + (dir_ / "a").string());
  EXPECT_EQ(warned.status, 0) << warned.output;
  const std::size_t before = warned.output.find("warning: the loads put a torque of 860 kNm");
  const std::size_t summary = warned.output.find("Summary of");
  const std::size_t again = warned.output.find("Warnings (1):");
  ASSERT_NE(before, std::string::npos) << warned.output;
  ASSERT_NE(summary, std::string::npos) << warned.output;
  ASSERT_NE(again, std::string::npos) << warned.output;
  EXPECT_LT(before, summary);
  EXPECT_LT(summary, again);

  const Outcome silent = RunCli("run " + model.string() + " --quiet --no-warnings --out-dir " + (dir_ / "b").string());
  EXPECT_EQ(silent.status, 0);
  EXPECT_EQ(silent.output.find("torque of"), std::string::npos) << silent.output;
}

}  // namespace
