// The engine as a host meets it: the LOG echo of its calls, the order of the callbacks over
// a run, what a run leaves behind, and how opening and closing fail.
#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "host_recorder.h"
#include "host_support.h"
#include "quellon.h"

namespace host {
namespace {

using HostShell = HostTest;

const std::string kRunning = "Running the boundary element analysis...";

// A small valid model.
Model Small(int piles = 1, int increments = 1) { return Row(piles, 2, increments, 200.0); }

TEST_F(HostShell, CallsEchoToTheLogAndIndexErrorsStoreNothing) {
  const int flags[5] = {1, 0, 2, 0, -1}, two[2] = {0, 1};
  // A setter call, its result and its LOG lines, separated by '|'.
  const std::vector<std::tuple<std::function<int()>, int, std::string>> table = {
      {[] { return QuellonSetProjectDescription("abcdef", 3); }, 1, "SetProjectDescription...|    Project description = abc"},
      // Any non-zero entry sets its flag; the flags beyond the count keep their values.
      {[&] { return QuellonSetProjectFlags(flags, 5); }, 1,
       "SetProjectFlags...|    Project flags = TFTFTFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"},
      {[&] { return QuellonSetProjectFlags(two, 2); }, 1,
       "SetProjectFlags...|    Project flags = FTTFTFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"},
      {[] { return QuellonSetProjectHyperbolicFactors(0.9, 0.85, 0.5, 0.25); }, 1,
       "SetProjectHyperbolicFactors...|    Hyperbolic factors, Rs = .90, Rb = .85, Rl = .50, Rt = .25"},
      {[] { return QuellonSetActions(10.0, -2.5, 1500.0, 0.0, 12.5, 3.0, 1.25, -0.5); }, 1,
       "SetActions...|    Fx = 10.00, Fy = -2.50, Fz = 1500.00|    Mx = .00, My = 12.50, Mz = 3.00|"
       "    Load, x = 1.25, y = -.50"},
      // Before the tables every index is out of range; a second table is refused. Indices
      // run from 1 to the count.
      {[] { return QuellonSetPileRake(1, 5.0, 0.0); }, 0, "SetPileRake...|Error! Number must be > 0 and < 0. Value = 1"},
      {[] { return QuellonSetBoreholeNumberOfLayers(2); }, 1,
       "SetNumberOfLayers...|Created 2 layers|    Set number of layers = 2"},
      {[] { return QuellonSetNumberOfPiles(2); }, 1, "SetNumberOfPiles...|Created 2 piles|    Number of piles = 2"},
      {[] { return QuellonSetNumberOfPiles(5); }, 0, "SetNumberOfPiles...|Error creating piles!|[Error] Error creating piles!"},
      {[] { return QuellonSetBoreholeLayerStiffness(2, 15000.0, 250.5, 12000.0, 0.0, 0.35); }, 1,
       "SetLayerStiffness...|    Layer 2, Ev = 15000.0, dEv = 250.5, Eh = 12000.0, dEh = .0, poisson = .35"},
      {[] { return QuellonSetRockInterfaceParameters(0, 1, 2, 3, 4, 5); }, 0,
       "SetRockInterfaceParameters...|Error! Number must be > 0 and < 2. Value = 0"},
      {[] { return QuellonSetPileReinforcedSectionProperties(2, 8.0, 2500.0, 190.0, 190.5, 150.0); }, 1,
       "SetPileReinforcedSectionProperties...|"
       "    Pile 2, length = 8.00, EA = 2500000.00, EIx = 190000.00, EIy = 190500.00, GJ = 150000.00"},
      // Registrations: without a message callback their texts reach the LOG only.
      {[] { return QuellonSetProjectCounterCallback(+[](const int*) {}); }, 1, "[Info] Counter callback established"},
  };
  ASSERT_EQ(QuellonCreateLOGFile(Path("echo.log").c_str()), 1);
  Lines want;
  for (const auto& [call, result, lines] : table) {
    EXPECT_EQ(call(), result) << lines;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line, '|');) want.push_back(line);
  }
  QuellonCloseLOGFile();
  const Lines log = ReadLines(Path("echo.log"));  // a five-line head, then the closing pair
  ASSERT_EQ(log.size(), want.size() + 7);
  EXPECT_EQ(Lines(log.begin() + 5, log.end() - 2), want);
  // Completed, the model runs, which leaves the engine empty again.
  Model m = Small(2);
  m.layers.push_back({.depth = 5.0});
  Enter(m, false);
  EXPECT_EQ(Analyse(dir, "run", nullptr).result, 1);
}

TEST_F(HostShell, CRecorderHearsARunInOrderAndTheRunResetsTheModelOnly) {
  recorder_register_all(1);
  EXPECT_EQ(Events().at(0), "message 0 Message callback established");
  ASSERT_EQ(QuellonCreateLOGFile(Path("run.log").c_str()), 1);
  for (int run = 1; run <= 2; ++run) {
    Enter(Small(2, 3));
    ASSERT_EQ(QuellonSetBoreholeLayerAveraging(1), 1);
    recorder_clear();
    ASSERT_EQ(QuellonRunAnalysis1(Path("run.xml").c_str()), 1);
    // The tables are gone and the records hold their reset values; the callbacks
    // registered before the first run hear the second just as well.
    EXPECT_EQ(QuellonGetBoreholeNumberOfLayers(), 0);
    EXPECT_EQ(QuellonGetBoreholeLayerAveraging(), 2);
    const Lines ev = Events();
    EXPECT_EQ(ev.at(run - 1), "message 0 " + kRunning);  // the second closes the first's XML output first
    EXPECT_EQ(ev.back(), "message 0 Finished running the boundary element analysis (success)");
    // The order within an increment is the linear suite's; here, after the three
    // increments, the final post comes once, then the release.
    const std::size_t post = Find(ev, "window Tolmark2Message 0 -239");
    EXPECT_GT(post, Find(ev, "counter 3"));
    EXPECT_LT(post, Find(ev, "message 0 Releasing memory ..."));
    EXPECT_EQ(std::count(ev.begin(), ev.end(), "window Tolmark2Message 0 -239"), 1);
  }
  // The LOG and the last XML output stay open.
  recorder_clear();
  QuellonCloseAllFiles();
  EXPECT_EQ(Messages(Events(), 0), (Lines{"Closing all files ...", "Closed XML output file", "Closed LOG file"}));
  // Clearing the callbacks, heard by the host, takes the counter and message ones only.
  EXPECT_EQ(QuellonCloseAllCallbacks(), 1);
  Enter(Small());
  recorder_clear();
  ASSERT_EQ(QuellonRunAnalysis1(Path("run.xml").c_str()), 1);
  const Lines ev = Events();
  EXPECT_NE(Find(ev, "create 1"), std::string::npos);
  EXPECT_EQ(Find(ev, "counter 1"), std::string::npos);
  EXPECT_TRUE(Messages(ev, 0).empty());
}

TEST_F(HostShell, FailedOpeningKeepsTheModelEachRunReplacesTheOutputsAndClosesSpeakOnce) {
  recorder_register_all(1);
  ASSERT_EQ(QuellonCreateLOGFile(Path("files.log").c_str()), 1);
  Enter(Small());
  const std::string bad = Path("missing/out.xml");
  recorder_clear();
  // Without and with a TXT path: 0, nothing to the host, the model kept; the TXT report
  // is created and stays open, empty.
  EXPECT_EQ(QuellonRunAnalysis1(bad.c_str()), 0);
  EXPECT_EQ(QuellonRunAnalysis2(bad.c_str(), Path("a.txt").c_str()), 0);
  EXPECT_TRUE(Events().empty());
  EXPECT_EQ(fs::file_size(Path("a.txt")), 0u);
  EXPECT_EQ(QuellonGetBoreholeNumberOfLayers(), 1);
  std::ofstream(Path("a.xml")) << "stale";
  // The model that stayed runs as it is. Each run (here through the blank-padded entry)
  // closes the outputs of the last before opening its own; one without a TXT path leaves
  // the open report alone.
  const struct {
    const char *xml, *txt;
    Lines messages;
  } runs[] = {{"a.xml", "a.txt", {"Closed TXT output file", kRunning}},
              {"b.xml", "b.txt", {"Closed XML output file", "Closed TXT output file", kRunning}},
              {"c.xml", nullptr, {"Closed XML output file", kRunning}}};
  for (const auto& run : runs) {
    if (QuellonGetBoreholeNumberOfLayers() == 0) Enter(Small());
    const std::string xml = Padded260(Path(run.xml)), txt = Padded260(Path(run.txt != nullptr ? run.txt : ""));
    recorder_clear();
    ASSERT_EQ(RUNANALYSISDIRECT(xml.c_str(), run.txt != nullptr ? txt.c_str() : nullptr, nullptr), 1);
    const Lines info = Messages(Events(), 0);
    EXPECT_EQ(Lines(info.begin(), info.begin() + std::min(info.size(), run.messages.size())), run.messages);
  }
  EXPECT_NE(ReadLines(Path("a.xml")).at(0), "stale");
  // Closing all, then again with nothing open (the announcement alone), then each alone.
  recorder_clear();
  QuellonCloseAllFiles();
  QuellonCloseAllFiles();
  QuellonCloseTMWFile();
  QuellonCloseTMKFile();
  QuellonCloseTXTFile();
  QuellonCloseLOGFile();
  EXPECT_EQ(Messages(Events(), 0), (Lines{"Closing all files ...", "Closed XML output file", "Closed TXT output file",
                                          "Closed LOG file", "Closing all files ..."}));
  const Lines log = ReadLines(Path("files.log"));
  EXPECT_EQ(std::count(log.begin(), log.end(), "Error opening XML output file: " + bad), 2);
}

}  // namespace
}  // namespace host
