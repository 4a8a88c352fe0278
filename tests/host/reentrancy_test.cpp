// A host that calls back into the engine from its own functions while a run is in
// progress: what is refused, what is allowed, and that neither changes the run.
#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "host_recorder.h"
#include "host_support.h"
#include "quellon.h"

namespace host {
namespace {

const std::string kBusy = "The model can't be changed while an analysis is running";
const std::string kSuccess = "[Info] Finished running the boundary element analysis (success)";

using Reentry = HostTest;

// Two piles in two layers, non-linear in three steps, with a sideways load.
void EnterModel() {
  Model m = Row(2, 3, 3, 200.0);
  m.layers.push_back({.depth = 5.0});
  m.fx = 10.0, m.r = 0.9;
  Enter(m);
}

// ---- Calls from the counter callback at increment 1 ----
struct CallsFromCounter {
  std::string tmw, tmk, log;
  std::vector<int> refused;  // results of the calls that must be refused
  int layers = -1, tmk_written = -1, log_created = -1;
} from_counter;

void CallIntoTheEngine(const int* increment) {
  if (*increment != 1) return;
  CallsFromCounter& c = from_counter;
  const std::string padded = Padded260(c.tmw);
  c.refused = {QuellonSetNumberOfPileElements(40), QuellonSetBoreholeLayerStiffness(1, 1.0, 0.0, 1.0, 0.0, 0.3),
               QuellonSetNumberOfPiles(5), READTMWFILEDIRECT(padded.c_str()), QuellonRunAnalysis1(c.tmk.c_str())};
  c.layers = QuellonGetBoreholeNumberOfLayers();
  c.tmk_written = QuellonCreateTMKFile(c.tmk.c_str());
  QuellonCloseTMKFile();
  c.log_created = QuellonCreateLOGFile(c.log.c_str());
}

TEST_F(Reentry, CallsFromACallbackLeaveTheRunAsItWouldHaveBeen) {
  recorder_register_all(1);
  // A first run puts the reset values of the records in force, so that both runs below
  // start from the same model.
  Enter(Row(1, 1, 1, 100.0));
  ASSERT_EQ(QuellonRunAnalysis1(Path("reset.xml").c_str()), 1);
  ASSERT_EQ(QuellonCreateLOGFile(Path("first.log").c_str()), 1);
  EnterModel();
  ASSERT_EQ(QuellonCreateTMKFile(Path("model.tmw").c_str()), 1);
  QuellonCloseTMKFile();
  ASSERT_EQ(QuellonRunAnalysis2(Path("quiet.xml").c_str(), Path("quiet.txt").c_str()), 1);

  from_counter = {Path("model.tmw"), Path("during.tmk"), Path("second.log"), {}, -1, -1, -1};
  EnterModel();
  QuellonSetProjectCounterCallback(CallIntoTheEngine);
  recorder_clear();
  testing::internal::CaptureStdout();
  EXPECT_EQ(QuellonRunAnalysis2(Path("busy.xml").c_str(), Path("busy.txt").c_str()), 1);
  testing::internal::GetCapturedStdout();

  // The model, the files and the run refuse; reading, writing the model in hand and a
  // new LOG are allowed.
  EXPECT_EQ(from_counter.refused, (std::vector<int>{0, 0, 0, 0, 0}));
  EXPECT_EQ(from_counter.layers, 2);
  EXPECT_EQ(from_counter.tmk_written, 1);
  EXPECT_EQ(from_counter.log_created, 1);
  EXPECT_EQ(Messages(Events(), 2), (std::vector<std::string>{kBusy, kBusy, kBusy, kBusy,
                                                              "An analysis is already running"}));
  // The run is the one that no host disturbed, to the byte, and the model file written
  // mid-run holds the model being analysed.
  EXPECT_EQ(ReadBytes(Path("busy.xml")), ReadBytes(Path("quiet.xml")));
  EXPECT_EQ(ReadBytes(Path("busy.txt")), ReadBytes(Path("quiet.txt")));
  EXPECT_EQ(ReadBytes(Path("during.tmk")), ReadBytes(Path("model.tmw")));
  // The LOG changed files between two lines of the run: the first holds the end of the
  // undisturbed run only, the second the end of this one.
  QuellonCloseLOGFile();
  const Lines first = ReadLines(Path("first.log")), second = ReadLines(Path("second.log"));
  EXPECT_EQ(std::count(first.begin(), first.end(), kSuccess), 1);
  EXPECT_EQ(std::count(second.begin(), second.end(), kSuccess), 1);
}

// ---- Calls from the message function ----
int depth = 0, deepest = 0, delivered = 0;
void AnswerEveryMessageWithASetter(const int*, const char*) {
  ++delivered;
  deepest = std::max(deepest, ++depth);
  QuellonSetProjectName("x", 1);  // refused during a run, which sends an error message
  --depth;
}

void ClearCallbacksWhenAssembling(const int* severity, const char* text) {
  recorder_message(severity, text);
  if (std::string(text) == "Assembling flexibility matrices...") QuellonCloseAllCallbacks();
}

TEST_F(Reentry, MessageFunctionIsNeverCalledFromInsideItselfAndMayClearTheCallbacks) {
  recorder_register_all(1);
  ASSERT_EQ(QuellonCreateLOGFile(Path("nested.log").c_str()), 1);
  Enter(Row(1, 2, 2, 200.0));
  QuellonSetProjectMessageCallback(AnswerEveryMessageWithASetter);
  depth = deepest = delivered = 0;
  EXPECT_EQ(QuellonRunAnalysis1(Path("nested.xml").c_str()), 1);
  const int during_run = delivered;
  EXPECT_EQ(deepest, 1);
  EXPECT_GT(during_run, 3);
  // The refusals raised inside the function went to the LOG alone, one per message.
  QuellonCloseLOGFile();
  const Lines nested = ReadLines(Path("nested.log"));
  EXPECT_EQ(std::count(nested.begin(), nested.end(), "[Error] " + kBusy), during_run);

  // Clearing every callback from inside the message function: the run goes on, and the
  // host hears nothing more through the two entries it cleared.
  recorder_register_all(1);
  Enter(Row(1, 2, 2, 200.0));
  QuellonSetProjectMessageCallback(ClearCallbacksWhenAssembling);
  recorder_clear();
  EXPECT_EQ(QuellonRunAnalysis1(Path("cleared.xml").c_str()), 1);
  const Lines ev = Events();
  const std::size_t cleared = Find(ev, "message 0 Assembling flexibility matrices...");
  ASSERT_NE(cleared, std::string::npos);
  for (std::size_t i = cleared + 1; i < ev.size(); ++i) {
    EXPECT_NE(ev[i].rfind("message ", 0), 0u) << ev[i];
    EXPECT_NE(ev[i].rfind("counter ", 0), 0u) << ev[i];
  }
  // The results of both increments still arrive through the other entries.
  EXPECT_NE(std::find(ev.begin() + static_cast<long>(cleared), ev.end(), "create 2"), ev.end());
  EXPECT_EQ(ev.back(), "window Tolmark2Message 0 -239");
}

}  // namespace
}  // namespace host
