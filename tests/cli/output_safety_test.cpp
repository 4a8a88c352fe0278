// The command-line host must never cost an engineer a file: an output that names the
// model or another output, or a path the engine cannot hold, is refused before anything
// is opened; a run the engine refuses leaves the earlier results byte for byte; and a
// good run leaves its three outputs, a LOG without errors of the host's making, and no
// temporaries.
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "cli_process.h"

namespace fs = std::filesystem;

namespace {

using namespace quellon_cli_test;

// Every file of a folder tree with its contents.
std::map<std::string, std::string> Snapshot(const fs::path& dir) {
  std::map<std::string, std::string> files;
  for (const auto& f : fs::recursive_directory_iterator(dir))
    if (f.is_regular_file()) files[fs::relative(f.path(), dir).string()] = ReadBytes(f.path());
  return files;
}

// A folder holding pier.tmw, a copy of the single pile example, with line `line_no`
// replaced if a replacement is given.
fs::path Workspace(const std::string& name, int line_no = 0, const std::string& replacement = "") {
  const fs::path dir = Scratch("safety-" + name);
  fs::create_directories(dir / "a");
  std::istringstream in(ReadBytes(Example("single_bored_pile_clay.tmw")));
  std::ofstream out(dir / "pier.tmw", std::ios::binary);
  std::string line;
  for (int n = 1; std::getline(in, line); ++n) out << (n == line_no ? replacement + "\r" : line) << "\n";
  return dir;
}

TEST(OutputSafety, PathsThatWouldCostAFileAreRefusedBeforeAnythingIsOpened) {
  const fs::path dir = Workspace("refused");
  ASSERT_EQ(RunCli("run pier.tmw --quiet", dir.string()).status, 0);
  std::ofstream(dir / "a" / "file") << "not a folder";
  const std::string long_name = std::string(300, 'x') + ".xml";
  const struct {
    std::string args, reason;
  } table[] = {
      {"run pier.tmw --txt pier.tmw", "the TXT report pier.tmw names the model file pier.tmw"},
      {"run pier.tmw --xml ./a/../pier.tmw", "the XML output ./a/../pier.tmw names the model file"},
      {"run pier.tmw --log " + (dir / "pier.tmw").string(), "names the model file"},
      {"run pier.tmw --txt X --xml X", "the XML output X and the TXT report X name the same file"},
      {"run pier.tmw --log pier.xml", "name the same file"},
      {"run pier.tmw --xml " + long_name, "is too long (304 characters)"},
      {"run pier.tmw --xml nowhere/x.xml", "the folder of nowhere/x.xml does not exist"},
      {"run pier.tmw --out-dir a/file/sub", "cannot create the folder a/file/sub"},
      {"check pier.tmw --log ./pier.tmw", "the LOG ./pier.tmw names the model file pier.tmw"},
  };
  const auto before = Snapshot(dir);
  for (const auto& row : table) {
    const Outcome o = RunCli(row.args, dir.string());
    EXPECT_EQ(o.status, 2) << row.args << "\n" << o.output;
    EXPECT_EQ(o.output.rfind("quellon: ", 0), 0u) << o.output;
    EXPECT_NE(o.output.find(row.reason), std::string::npos) << row.args << "\n" << o.output;
    EXPECT_EQ(std::count(o.output.begin(), o.output.end(), '\n'), 1) << o.output;
    EXPECT_TRUE(Snapshot(dir) == before) << row.args << " touched a file";
  }
  fs::remove_all(dir);
}

TEST(OutputSafety, ARefusedRunLeavesTheEarlierResultsAndKeepsItsOwnLog) {
  // Line 18 holds the pile's values; Z = -5 puts its head above the ground, which the
  // engine refuses after the outputs are open.
  const fs::path dir = Workspace("failed", 18, "1 20. 0.9 0. 0.9 0. 0. 0. 0. -5. 20500. 1040. 1040. 805. 12. 19085. 966. 966. 805.");
  const std::string earlier = "earlier good result\n";
  for (const char* name : {"pier.xml", "pier.txt", "pier.log"}) std::ofstream(dir / name, std::ios::binary) << earlier;
  const auto before = Snapshot(dir);
  const Outcome o = RunCli("run pier.tmw --quiet", dir.string());
  EXPECT_EQ(o.status, 1) << o.output;
  EXPECT_NE(o.output.find("the LOG of this run is pier.failed.log"), std::string::npos) << o.output;
  auto after = Snapshot(dir);
  ASSERT_EQ(after.count("pier.failed.log"), 1u);
  EXPECT_NE(after["pier.failed.log"].find("above the free surface"), std::string::npos);
  after.erase("pier.failed.log");
  EXPECT_TRUE(after == before) << "the earlier outputs changed, or a temporary was left";
  fs::remove_all(dir);
}

TEST(OutputSafety, AGoodRunLeavesItsOutputsAndACleanLog) {
  const fs::path dir = Workspace("good");
  // A folder that does not exist yet, two levels deep.
  const Outcome o = RunCli("run pier.tmw --quiet --out-dir new/deeper", dir.string());
  ASSERT_EQ(o.status, 0) << o.output;
  const auto files = Snapshot(dir / "new" / "deeper");
  // The three documents and the two CSV files of a linear run, and no .part left behind.
  EXPECT_EQ(files.size(), 5u);
  for (const char* name : {"pier.xml", "pier.txt", "pier.log", "pier.heads.csv", "pier.profiles.csv"})
    EXPECT_GT(files.count(name), 0u) << name;
  const std::string log = files.count("pier.log") ? files.at("pier.log") : "";
  EXPECT_EQ(log.find("[Error]"), std::string::npos) << log;
  EXPECT_NE(log.find("LOG file closed at"), std::string::npos);

  // With the model's own flags asking for no pile results, the summary says so rather
  // than printing loads of 0 (line 12 holds the flags: only 16, the solver, and 25).
  const fs::path quiet = Workspace("flags", 12, "0000000000000001000000001000000000000000");
  const Outcome kept = RunCli("run pier.tmw --quiet --keep-flags", quiet.string());
  ASSERT_EQ(kept.status, 0) << kept.output;
  EXPECT_NE(kept.output.find("Pile head loads: not reported"), std::string::npos) << kept.output;
  fs::remove_all(dir);
  fs::remove_all(quiet);
}

}  // namespace
