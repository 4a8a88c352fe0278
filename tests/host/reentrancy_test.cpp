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
const std::string kSuccess = "Finished running the boundary element analysis (success)";

using Reentry = HostTest;

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::size_t FindFrom(const Lines& lines, const std::string& text, std::size_t from) {
  for (std::size_t i = from; i < lines.size(); ++i)
    if (lines[i] == text) return i;
  return std::string::npos;
}

// A row of piles 3 m apart in clay layers 5 m thick, with the dense solver and the cap
// block; the tables are created here.
void EnterModel(int piles, int layers, int elements, int increments) {
  ASSERT_EQ(QuellonSetBoreholeNumberOfLayers(layers), 1);
  ASSERT_EQ(QuellonSetNumberOfPiles(piles), 1);
  int flags[40] = {};
  flags[15] = flags[24] = 1;
  ASSERT_EQ(QuellonSetProjectFlags(flags, 40), 1);
  QuellonSetBoreholeLayerAveraging(2);
  for (int l = 1; l <= layers; ++l) {
    QuellonSetBoreholeLayerDepth(l, 5.0 * (l - 1));
    QuellonSetBoreholeLayerStiffness(l, 20000.0, 500.0, 20000.0, 500.0, 0.3);
    QuellonSetGroundType(l, 2);
    QuellonSetSoilUndrainedShearStrength(l, 60.0, 2.0);
    QuellonSetSoilUndrainedInterfaceParameter(l, 0.5);
    QuellonSetGroundWeightDensity(l, 18.0);
  }
  QuellonSetNumberOfPileElements(elements);
  for (int p = 1; p <= piles; ++p) {
    QuellonSetPileCoordinates(p, 3.0 * (p - 1), 0.0, 0.0);
    QuellonSetPileDimensions(p, 12.0, 0.6, 0.0, 0.6);
    QuellonSetPileReinforcedSectionProperties(p, 12.0, 8000.0, 190.0, 190.0, 150.0);
    QuellonSetPileUnreinforcedSectionProperties(p, 8000.0, 190.0, 190.0, 150.0);
  }
  QuellonSetProjectHyperbolicFactors(0.9, 0.9, 0.9, 0.9);
  QuellonSetNumberOfLoadIncrements(increments);
  QuellonSetActions(10.0, 0.0, 200.0 * piles, 0.0, 0.0, 0.0, 0.0, 0.0);
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
  std::string padded = c.tmw;
  padded.resize(260, ' ');
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
  EnterModel(1, 1, 1, 1);
  ASSERT_EQ(QuellonRunAnalysis1(Path("reset.xml").c_str()), 1);
  ASSERT_EQ(QuellonCreateLOGFile(Path("first.log").c_str()), 1);
  EnterModel(2, 2, 3, 3);
  ASSERT_EQ(QuellonCreateTMKFile(Path("model.tmw").c_str()), 1);
  QuellonCloseTMKFile();
  ASSERT_EQ(QuellonRunAnalysis2(Path("quiet.xml").c_str(), Path("quiet.txt").c_str()), 1);

  from_counter = {Path("model.tmw"), Path("during.tmk"), Path("second.log"), {}, -1, -1, -1};
  EnterModel(2, 2, 3, 3);
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
  // The run is the one that no host disturbed, to the byte.
  EXPECT_EQ(ReadAll(Path("busy.xml")), ReadAll(Path("quiet.xml")));
  EXPECT_EQ(ReadAll(Path("busy.txt")), ReadAll(Path("quiet.txt")));
  // The model file written mid-run holds the model being analysed.
  EXPECT_EQ(ReadAll(Path("during.tmk")), ReadAll(Path("model.tmw")));
  // The LOG changed files between two lines of the run: the first ends where the second
  // begins, and the second carries the rest of the run.
  QuellonCloseLOGFile();
  const std::vector<std::string> second = ReadLines(Path("second.log"));
  EXPECT_NE(Find(second, "[Info] " + kSuccess), std::string::npos);
  const std::vector<std::string> first = ReadLines(Path("first.log"));
  EXPECT_EQ(FindFrom(first, "[Info] " + kSuccess, FindFrom(first, "[Info] Running the boundary element analysis...", 100)),
            std::string::npos);
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

void ClearResultCallbacksBeforeTheirCall(const int* severity, const char* text) {
  recorder_message(severity, text);
  const std::string t = text;
  if (t == "Sending force vs displacement stiffnesses...") QuellonSetForceDisplacementStiffnessesCallback(nullptr);
  if (t == "Sending pile cap loads...") QuellonSetPileCapLoadsCallback(nullptr);
}

TEST_F(Reentry, MessageFunctionIsNeverCalledFromInsideItself) {
  recorder_register_all(1);
  ASSERT_EQ(QuellonCreateLOGFile(Path("nested.log").c_str()), 1);
  EnterModel(1, 1, 2, 2);
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
  EnterModel(1, 1, 2, 2);
  QuellonSetProjectMessageCallback(ClearCallbacksWhenAssembling);
  recorder_clear();
  EXPECT_EQ(QuellonRunAnalysis1(Path("cleared.xml").c_str()), 1);
  const std::vector<std::string> ev = Events();
  // "Clearing all callbacks..." is raised inside the message function: the LOG has it.
  const std::size_t cleared = Find(ev, "message 0 Assembling flexibility matrices...");
  ASSERT_NE(cleared, std::string::npos);
  for (std::size_t i = cleared + 1; i < ev.size(); ++i) {
    EXPECT_NE(ev[i].rfind("message ", 0), 0u) << ev[i];
    EXPECT_NE(ev[i].rfind("counter ", 0), 0u) << ev[i];
  }
  // The results of both increments still arrive through the other entries.
  EXPECT_NE(FindFrom(ev, "create 2", cleared), std::string::npos);
  EXPECT_EQ(ev.back(), "window Tolmark2Message 0 -239");

  // Clearing a result callback in answer to the message that announces it: it is not
  // called, and the run ends in order.
  recorder_register_all(1);
  EnterModel(1, 1, 2, 1);
  QuellonSetProjectMessageCallback(ClearResultCallbacksBeforeTheirCall);
  recorder_clear();
  EXPECT_EQ(QuellonRunAnalysis1(Path("announced.xml").c_str()), 1);
  for (const std::string& e : Events()) {
    EXPECT_NE(e.rfind("stiffnesses ", 0), 0u) << e;
    EXPECT_NE(e.rfind("loads ", 0), 0u) << e;
  }
  EXPECT_EQ(Events().back(), "message 0 " + kSuccess);
}

// ---- Closing files from inside a run ----
void CloseEverythingAtIncrement1(const int* increment) {
  if (*increment == 1) QuellonCloseAllFiles();
}

void CloseWhenFinished(const int* severity, const char* text) {
  recorder_message(severity, text);
  if (std::string(text) == kSuccess) QuellonCloseAllFiles();
}

TEST_F(Reentry, OutputsClosedDuringARunCloseWhenItEnds) {
  for (int host = 0; host < 2; ++host) {
    SCOPED_TRACE(host == 0 ? "closed from the increment callback" : "closed on the closing message");
    recorder_register_all(1);
    const std::string name = "closed" + std::to_string(host);
    ASSERT_EQ(QuellonCreateLOGFile(Path(name + ".log").c_str()), 1);
    EnterModel(2, 1, 2, 2);
    if (host == 0) {
      QuellonSetCreateIncrementCallback(CloseEverythingAtIncrement1);
    } else {
      QuellonSetProjectMessageCallback(CloseWhenFinished);
    }
    recorder_clear();
    EXPECT_EQ(QuellonRunAnalysis2(Path(name + ".xml").c_str(), Path(name + ".txt").c_str()), 1);

    // The documents are whole, and the files closed after the run's last message.
    EXPECT_EQ(ReadLines(Path(name + ".xml")).back(), "</Tolmark>");
    EXPECT_NE(ReadAll(Path(name + ".txt")).find("RESULTANT RAFT DISPLACEMENTS"), std::string::npos);
    const std::vector<std::string> info = Messages(Events(), 0);
    const std::size_t finished = Find(info, kSuccess);
    ASSERT_NE(finished, std::string::npos);
    EXPECT_EQ(std::vector<std::string>(info.begin() + static_cast<long>(finished) + 1, info.end()),
              (std::vector<std::string>{"Closing all files ...", "Closed XML output file", "Closed TXT output file",
                                        "Closed LOG file"}));
    const std::vector<std::string> log = ReadLines(Path(name + ".log"));
    EXPECT_LT(Find(log, "[Info] " + kSuccess), Find(log, "[Info] Closing all files ..."));
    recorder_clear();
    QuellonCloseAllFiles();
    EXPECT_EQ(Messages(Events(), 0), std::vector<std::string>{"Closing all files ..."});
    QuellonSetCreateIncrementCallback(nullptr);
  }
}

}  // namespace
}  // namespace host
