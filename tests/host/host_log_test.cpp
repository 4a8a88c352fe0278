// The LOG as a host reads it: its head and closing lines, the echo of every kind of
// setter, the index errors, and the open and close messages of the files.
#include <regex>
#include <string>
#include <vector>

#include "host_recorder.h"
#include "host_support.h"
#include "quellon.h"

namespace host {
namespace {

using HostLog = HostTest;

// The lines after the head (five lines) and before the closing pair.
std::vector<std::string> Body(const std::vector<std::string>& log) {
  EXPECT_GE(log.size(), 7u);
  if (log.size() < 7) return {};
  return {log.begin() + 5, log.end() - 2};
}

TEST_F(HostLog, HeadAndClosingLines) {
  recorder_register_all();
  recorder_clear();
  ASSERT_EQ(QuellonCreateLOGFile(Path("head.log").c_str()), 1);
  QuellonTest();
  QuellonCloseLOGFile();
  QuellonCloseLOGFile();  // nothing open: no message, no line
  const std::vector<std::string> log = ReadLines(Path("head.log"));
  ASSERT_EQ(log.size(), 8u);
  EXPECT_EQ(log[0], "QuellonEngine v3.23");
  EXPECT_FALSE(log[1].empty());
  EXPECT_FALSE(log[2].empty());
  EXPECT_TRUE(std::regex_match(log[3], std::regex(R"(LOG file created on \d\d/\d\d/\d{4} at \d\d:\d\d:\d\d)")))
      << log[3];
  EXPECT_EQ(log[4], "");
  EXPECT_EQ(log[5], "Ran the test!");
  EXPECT_EQ(log[6], "");
  EXPECT_TRUE(std::regex_match(log[7], std::regex(R"(LOG file closed at \d\d/\d\d/\d{4} \d\d:\d\d:\d\d)"))) << log[7];
  // The host hears of the new LOG before it is in force, so the head stands first.
  EXPECT_EQ(Messages(Events(), 0), (std::vector<std::string>{"Creating LOG file...", "Closed LOG file"}));
  EXPECT_EQ(QuellonGetVersion(), 803);
}

TEST_F(HostLog, SecondCreateClosesTheFirstProperlyAndDirectDoesNot) {
  recorder_register_all();
  ASSERT_EQ(QuellonCreateLOGFile(Path("one.log").c_str()), 1);
  recorder_clear();
  ASSERT_EQ(QuellonCreateLOGFile(Path("two.log").c_str()), 1);
  EXPECT_EQ(Messages(Events(), 0), (std::vector<std::string>{"Closed LOG file", "Creating LOG file..."}));
  const std::vector<std::string> one = ReadLines(Path("one.log"));
  ASSERT_EQ(one.size(), 7u);
  EXPECT_EQ(one[5], "");
  EXPECT_EQ(one[6].rfind("LOG file closed at ", 0), 0u);

  // The padded entry replaces the open LOG without writing its closing lines.
  std::string padded = Path("three.log").string();
  padded.resize(260, ' ');
  recorder_clear();
  ASSERT_EQ(CREATELOGFILEDIRECT(padded.c_str()), 1);
  EXPECT_EQ(Messages(Events(), 0), std::vector<std::string>{"Creating LOG file..."});
  EXPECT_EQ(ReadLines(Path("two.log")).size(), 5u);
  EXPECT_TRUE(fs::exists(Path("three.log")));

  // A LOG that can't be created: 0, nothing sent, and no LOG open afterwards.
  recorder_clear();
  EXPECT_EQ(QuellonCreateLOGFile((dir / "missing" / "x.log").c_str()), 0);
  EXPECT_EQ(Messages(Events(), 0), std::vector<std::string>{"Closed LOG file"});
  recorder_clear();
  QuellonCloseLOGFile();
  EXPECT_TRUE(Events().empty());
}

TEST_F(HostLog, SetterEchoLines) {
  ASSERT_EQ(QuellonCreateLOGFile(Path("echo.log").c_str()), 1);
  QuellonSetProjectName("Quay wall   extension", 21);
  QuellonSetProjectDescription("abcdef", 3);
  QuellonSetProjectDate(2024, 3, 7);
  const int flags[5] = {1, 0, 2, 0, -1};
  QuellonSetProjectFlags(flags, 5);
  QuellonSetProjectElasticUnloadingFlag(0);
  QuellonSetProjectHyperbolicFactors(0.9, 0.85, 0.5, 0.25);
  QuellonSetProjectNq(1, 12.345);
  QuellonSetNumberOfLoadIncrements(4);
  QuellonSetActions(10.0, -2.5, 1500.0, 0.0, 12.5, 3.0, 1.25, -0.5);
  QuellonSetBoreholeDepthToRigidLayer(30.0);
  QuellonSetBoreholeNumberOfLayers(2);
  QuellonSetBoreholeLayerStiffness(2, 15000.0, 250.5, 12000.0, 0.0, 0.35);
  QuellonSetGroundWeightDensity(1, 19.5);
  QuellonSetSoilAngleOfFriction(2, 32.0);
  QuellonSetBoreholeLayerName(1, "Made ground", 11);
  QuellonSetGroundType(1, 3);
  QuellonSetNumberOfPiles(3);
  QuellonSetPileCoordinates(3, 1.5, -2.0, 0.0);
  QuellonSetPileHeadLoads(1, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0);
  QuellonSetPileReinforcedSectionProperties(2, 8.0, 2500.0, 190.0, 190.5, 150.0);
  QuellonSetPileUnreinforcedSectionProperties(2, 2000.0, 100.0, 100.0, 80.0);
  QuellonSetPileInteractionDistance(12.0);
  QuellonSetPileInteractionFlag(2);
  QuellonSetPileCapStiffness(1);
  QuellonCloseLOGFile();

  const std::vector<std::string> body = Body(ReadLines(Path("echo.log")));
  const std::vector<std::string> want = {
      "SetProjectName...",
      "    Project name = Quay wall   extension",
      "SetProjectDescription...",
      "    Project description = abc",
      "SetProjectDate...",
      "    Date = 7/3/2024",
      "SetProjectFlags...",
      "    Project flags = TFTFTFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF",
      "SetProjectElasticUnloadingFlag...",
      "    Elastic unloading flag = F",
      "SetProjectHyperbolicFactors...",
      "    Hyperbolic factors, Rs = .90, Rb = .85, Rl = .50, Rt = .25",
      "SetProjectNq...",
      "    Auto Nq = T, Nq = 12.35",
      "SetNumberOfLoadIncrements...",
      "    Number of increments = 4",
      "SetActions...",
      "    Fx = 10.00, Fy = -2.50, Fz = 1500.00",
      "    Mx = .00, My = 12.50, Mz = 3.00",
      "    Load, x = 1.25, y = -.50",
      "SetDepthToRigidLayer...",
      "    Depth to rigid layer = 30.00",
      "SetNumberOfLayers...",
      "Created 2 layers",
      "    Set number of layers = 2",
      "SetLayerStiffness...",
      "    Layer 2, Ev = 15000.0, dEv = 250.5, Eh = 12000.0, dEh = .0, poisson = .35",
      "SetGroundWeightDensity...",
      "    Layer 1, weight density = 19.50 kN/m3",
      "SetSoilAngleOfFriction...",
      "    Layer 2, phi = 32.00 deg",
      "SetLayerName...",
      "    Layer 1, name = Made ground",
      "SetGroundType...",
      "    Layer 1, ground type = 3",
      "SetNumberOfPiles...",
      "Created 3 piles",
      "    Number of piles = 3",
      "SetPileCoordinates...",
      "    Pile 3 coordinates = 1.50, -2.00, .00",
      "SetPileHeadLoads...",
      "    Pile 1 Fx = 1.00, Fy = 2.00, Fz = 3.00",
      "    Pile 1 Mx = 4.00, My = 5.00, Mz = 6.00",
      "SetPileReinforcedSectionProperties...",
      "    Pile 2, length = 8.00, EA = 2500000.00, EIx = 190000.00, EIy = 190500.00, GJ = 150000.00",
      "SetPileSectionProperties...",
      "    Pile 2, EA = 2000000.00, EIx = 100000.00, EIy = 100000.00, GJ = 80000.00",
      "SetPileInteractionDistance...",
      "    Distance = 12.00",
      "SetPileInteractionFlag...",
      "    Pile interaction flag = 2",
      "SetPileCapStiffness...",
      "    Pile cap stiffness = 1",
  };
  EXPECT_EQ(body, want);

  // The model entered here is completed and run, which leaves the engine empty again.
  FillModel(3, 2, 2, 1);
  EXPECT_EQ(QuellonRunAnalysis1(Path("echo.xml").c_str()), 1);
}

TEST_F(HostLog, IndexErrorsStoreNothing) {
  ASSERT_EQ(QuellonCreateLOGFile(Path("index.log").c_str()), 1);
  // No tables yet: every index is out of range.
  EXPECT_EQ(QuellonSetPileRake(1, 5.0, 0.0), 0);
  EXPECT_EQ(QuellonSetBoreholeLayerDepth(1, 2.0), 0);
  EnterModel(2, 3, 2, 1);
  QuellonCloseLOGFile();
  ASSERT_EQ(QuellonCreateLOGFile(Path("index2.log").c_str()), 1);
  EXPECT_EQ(QuellonSetPileDimensions(0, 1.0, 1.0, 0.0, 1.0), 0);
  EXPECT_EQ(QuellonSetPileName(3, "x", 1), 0);
  EXPECT_EQ(QuellonSetPileName(2, "Last pile", 9), 1);  // the count itself is valid
  EXPECT_EQ(QuellonSetSoilUndrainedShearStrength(-1, 1.0, 1.0), 0);
  EXPECT_EQ(QuellonSetRockInterfaceParameters(4, 1, 2, 3, 4, 5), 0);
  EXPECT_EQ(QuellonSetRockInterfaceParameters(3, 1, 2, 3, 4, 5), 1);
  // A second table creation fails and keeps the first.
  EXPECT_EQ(QuellonSetNumberOfPiles(5), 0);
  EXPECT_EQ(QuellonSetBoreholeNumberOfLayers(1), 0);
  EXPECT_EQ(QuellonGetBoreholeNumberOfLayers(), 3);
  QuellonCloseLOGFile();

  const std::vector<std::string> first = Body(ReadLines(Path("index.log")));
  ASSERT_GE(first.size(), 4u);
  EXPECT_EQ(first[0], "SetPileRake...");
  EXPECT_EQ(first[1], "Error! Number must be > 0 and < 0. Value = 1");
  EXPECT_EQ(first[2], "SetLayerDepth...");
  EXPECT_EQ(first[3], "Error! Number must be > 0 and < 0. Value = 1");

  const std::vector<std::string> body = Body(ReadLines(Path("index2.log")));
  EXPECT_EQ(body, (std::vector<std::string>{
                      "SetPileDimensions...",
                      "Error! Number must be > 0 and < 2. Value = 0",
                      "SetPileName...",
                      "Error! Number must be > 0 and < 2. Value = 3",
                      "SetPileName...",
                      "    Pile 2, name = Last pile",
                      "SetSoilUndrainedShearStrength...",
                      "Error! Number must be > 0 and < 3. Value = -1",
                      "SetRockInterfaceParameters...",
                      "Error! Number must be > 0 and < 3. Value = 4",
                      "SetRockInterfaceParameters...",
                      "    Layer 3, k1 = 1.00, k2 = 2.00, k3 = 3.00, k4 = 4.00, k5 = 5.00",
                      "SetNumberOfPiles...",
                      "Error creating piles!",
                      "[Error] Error creating piles!",
                      "SetNumberOfLayers...",
                      "Error creating layers!",
                  }));
  EXPECT_EQ(QuellonRunAnalysis1(Path("index.xml").c_str()), 1);
}

TEST_F(HostLog, CallbackRegistrationMessages) {
  ASSERT_EQ(QuellonCreateLOGFile(Path("cb.log").c_str()), 1);
  // Everything but the message callback first: those texts reach the LOG only.
  QuellonSetProjectMessageCallback(nullptr);
  recorder_register_all();
  QuellonSetStiffnessMatrixCallback(nullptr);
  const std::vector<std::string> ev = Events();
  EXPECT_EQ(Messages(ev, 0).front(), "Message callback established");
  EXPECT_EQ(Messages(ev, 2), std::vector<std::string>{"SendStiffnessMatrix callback not set"});
  QuellonCloseLOGFile();
  const std::vector<std::string> body = Body(ReadLines(Path("cb.log")));
  EXPECT_EQ(body, (std::vector<std::string>{
                      "[Error] Message callback not set",
                      "[Info] Message callback established",
                      "[Info] Counter callback established",
                      "[Info] CreateIncrement callback established",
                      "[Info] SendPileCapLoads callback established",
                      "[Info] SendPileCapDisplacements callback established",
                      "[Info] SendForceDisplacementStiffnesses callback established",
                      "[Info] SendStiffnessMatrix callback established",
                      "[Info] PileCap.CentreOfRotation callback established",
                      "[Error] SendStiffnessMatrix callback not set",
                  }));
}

TEST_F(HostLog, CloseAllCallbacksNeedsAMessageCallback) {
  ASSERT_EQ(QuellonCreateLOGFile(Path("close_cb.log").c_str()), 1);
  recorder_register_all();
  QuellonSetProjectMessageCallback(nullptr);
  // No message callback: nothing is cleared, the LOG alone hears of it, and the counter
  // still comes in the next run.
  recorder_clear();
  EXPECT_EQ(QuellonCloseAllCallbacks(), 1);
  EnterModel(1, 1, 2, 1);
  ASSERT_EQ(QuellonRunAnalysis1(Path("a.xml").c_str()), 1);
  std::vector<std::string> ev = Events();
  EXPECT_NE(Find(ev, "counter 1"), std::string::npos);
  EXPECT_TRUE(Messages(ev, 0).empty());

  // With one: it is told, then counter and message are cleared and the other six stay.
  recorder_register_all();
  recorder_clear();
  EXPECT_EQ(QuellonCloseAllCallbacks(), 1);
  EXPECT_EQ(Events(), std::vector<std::string>{"message 0 Clearing all callbacks..."});
  recorder_clear();
  EnterModel(1, 1, 2, 1);
  ASSERT_EQ(QuellonRunAnalysis1(Path("b.xml").c_str()), 1);
  ev = Events();
  EXPECT_NE(Find(ev, "create 1"), std::string::npos);
  EXPECT_EQ(Find(ev, "counter 1"), std::string::npos);
  EXPECT_TRUE(Messages(ev, 0).empty());

  QuellonCloseLOGFile();
  const std::vector<std::string> log = ReadLines(Path("close_cb.log"));
  const std::size_t refused = Find(log, "[Error] Callbacks not cleared");
  const std::size_t cleared = Find(log, "[Info] Clearing all callbacks...");
  ASSERT_NE(refused, std::string::npos);
  ASSERT_NE(cleared, std::string::npos);
  EXPECT_LT(refused, cleared);
  EXPECT_EQ(Count(log, "[Error] Callbacks not cleared"), 1u);
}

TEST_F(HostLog, CloseAllFilesAndDoubleClosesSpeakOnce) {
  recorder_register_all();
  recorder_clear();
  // Nothing open: the announcement alone.
  QuellonCloseAllFiles();
  EXPECT_EQ(Messages(Events(), 0), std::vector<std::string>{"Closing all files ..."});
  recorder_clear();
  QuellonCloseTMWFile();
  QuellonCloseTMKFile();
  QuellonCloseTXTFile();
  QuellonCloseLOGFile();
  EXPECT_TRUE(Events().empty());

  ASSERT_EQ(QuellonCreateLOGFile(Path("all.log").c_str()), 1);
  EnterModel(1, 1, 2, 1);
  ASSERT_EQ(QuellonRunAnalysis2(Path("all.xml").c_str(), Path("all.txt").c_str()), 1);
  recorder_clear();
  QuellonCloseAllFiles();
  QuellonCloseAllFiles();
  QuellonCloseTXTFile();
  EXPECT_EQ(Messages(Events(), 0),
            (std::vector<std::string>{"Closing all files ...", "Closed XML output file", "Closed TXT output file",
                                      "Closed LOG file", "Closing all files ..."}));
  const std::vector<std::string> log = ReadLines(Path("all.log"));
  ASSERT_GE(log.size(), 5u);
  EXPECT_EQ(log[log.size() - 5], "[Info] Closing all files ...");
  EXPECT_EQ(log[log.size() - 4], "[Info] Closed XML output file");
  EXPECT_EQ(log[log.size() - 3], "[Info] Closed TXT output file");
  EXPECT_EQ(log[log.size() - 2], "");
  EXPECT_EQ(log.back().rfind("LOG file closed at ", 0), 0u);
}

}  // namespace
}  // namespace host
