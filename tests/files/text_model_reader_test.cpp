// The reader of TMW files: every check with its code and LOG text, the version window,
// the free-form reads, the flags line, and files that end early anywhere.
#include <gtest/gtest.h>

#include "engine/engine.h"
#include "files/text_model.h"
#include "files/tmw_reader.h"
#include "text_model_test_support.h"

namespace quellon {
namespace {

using test::JoinLines;
using test::ScratchPath;
using test::WriteBytes;

// A hand-written non-linear file (not produced by the writer), with its lines numbered
// from 0 for the edits below.
const std::vector<std::string> kBase = {
    "[Version]",                                                                   // 0
    "3.23",                                                                        // 1
    "[Name]",                                                                      // 2
    "Reader checks",                                                               // 3
    "[Notes]",                                                                     // 4
    "Hand-made file",                                                              // 5
    "[Date]",                                                                      // 6
    "2024-03-07",                                                                  // 7
    "[Filename]",                                                                  // 8
    "reader.tmw",                                                                  // 9
    "[Flags]",                                                                     // 10
    "0100000000000001000000001000000000000000",                                    // 11
    "[No. piles/no. elements/no. increments]",                                     // 12
    "2 10 5 0",                                                                    // 13
    "[Pile Name]",                                                                 // 14
    "[Number/Length(m)/...]",                                                      // 15
    "Pile A",                                                                      // 16
    "1 12. 0.6 0. 0.6 0. 0. -1.5 0. 0. 2500. 75. 75. 57.7 8.50 1200.00 36.00 36.00 27.70",  // 17
    "Pile B",                                                                      // 18
    "2 12. 0.6 0. 0.6 5. 5. 1.5 0. 0. 2500. 75. 75. 57.7 0 0 0 0 0",               // 19
    "[Pile interaction flag]",                                                     // 20
    "3",                                                                           // 21
    "[Pile interaction distance]",                                                 // 22
    "12.5",                                                                        // 23
    "[Depth to rigid layer (m)]",                                                  // 24
    "30.",                                                                         // 25
    "[Overburden (kPa)/Elastic unloading flag]",                                   // 26
    "12.5 1",                                                                      // 27
    "[No. layers/Layer averaging flag]",                                           // 28
    "4 2",                                                                         // 29
    "[Layer Name]",                                                                // 30
    "[Depth(m)/Ev(kPa)/dEv(kN/m^3)/Eh(kPa)/dEh(kN/m^3)/Poisson]",                  // 31
    "Sand",                                                                        // 32
    "0. 20000. 1000. 20000. 1000. 0.3",                                            // 33
    "Clay",                                                                        // 34
    "5. 15000. 500. 15000. 500. 0.45",                                             // 35
    "Rock",                                                                        // 36
    "10. 500000. 0. 500000. 0. 0.25",                                              // 37
    "Fill",                                                                        // 38
    "20. 80000. 0. 80000. 0. 0.3",                                                 // 39
    "[Soil Name]",                                                                 // 40
    "[Type(1)]",                                                                   // 41
    "[Type(2)]",                                                                   // 42
    "[Type(3)]",                                                                   // 43
    "[Type(4)]",                                                                   // 44
    "Loose sand",                                                                  // 45
    "1 18. 0. 0. 30. 20. 0.8 0 0 0",                                               // 46
    "Soft clay",                                                                   // 47
    "2 17. 120. 0. 25. 2. 0.6 0 0 0",                                              // 48
    "Mudstone",                                                                    // 49
    "3 22. 0. 0. 5000. 0.5 0.5 1.2 0.8 1.5",                                       // 50
    "Direct values",                                                               // 51
    "4 20. 0. 0. 150. 5000. 300. 0 0 0",                                           // 52
    "[Nq flag]",                                                                   // 53
    "2 30.0",                                                                      // 54
    "[Stress limits]",                                                             // 55
    "150. 4500.",                                                                  // 56
    "[Hyperbolic factors]",                                                        // 57
    ".50 .90 .25 .00",                                                             // 58
    "[Free-standing length (m)]",                                                  // 59
    "1.25",                                                                        // 60
    "[Fx(kN)/Fy(kN)/Fz(kN)/Mx(kNm)/My(kNm)/Mz(kNm)/X(m)/Y(m)]",                    // 61
    "100. -50.5 2500. 10. -20.25 5. 0.125 -0.5",                                   // 62
};

struct ReadResult {
  int result = -1;
  int error_code = 0;
  std::string log;
  long line = 0;
  bool unit_open = false;
  int unit = 0;
};

ReadResult Read(const std::string& bytes, Engine& e) {
  const std::string path = ScratchPath("model.tmw");
  WriteBytes(path, bytes);
  test::ScopedLog log(e);
  ReadResult r;
  r.result = ReadTMWFile(e, path);
  r.error_code = e.project.ErrorCode;
  r.line = TMWLineReached(e);
  r.unit_open = e.files.tmw.is_open();
  r.unit = e.project.TMWUnit;
  r.log = log.Text();
  return r;
}

ReadResult Read(const std::vector<std::string>& lines) {
  Engine e;
  return Read(JoinLines(lines), e);
}

std::vector<std::string> With(std::size_t index, const std::string& line) {
  auto lines = kBase;
  lines[index] = line;
  return lines;
}

bool LogHasLine(const ReadResult& r, const std::string& line) {
  return r.log.find("\r\n" + line + "\r\n") != std::string::npos || r.log.rfind(line + "\r\n", 0) == 0;
}

TEST(TextModelReader, GoodFileFillsTheRecordsAndClosesTheUnit) {
  Engine e;
  const ReadResult r = Read(JoinLines(kBase), e);
  ASSERT_EQ(r.result, 1) << r.log;
  EXPECT_EQ(r.unit, kTMWUnit);  // stays 7 ...
  EXPECT_FALSE(r.unit_open);    // ... though the file is closed
  EXPECT_EQ(e.project.Filename.trimmed(), "reader.tmw");  // the file's own name replaces the path
  EXPECT_TRUE(e.project.NonLinear && e.project.DynamicModel);
  EXPECT_EQ(e.foundation.Piles(1).UnreinforcedGJ, 27700.0f);
  EXPECT_EQ(e.borehole.Layers(3).k3, 1.2f);
  EXPECT_EQ(e.borehole.Layers(4).DirectLateral, 300.0f);
  EXPECT_EQ(e.actions.Y, -0.5f);
  for (const char* line : {"SetProjectName...", "    Project name = Reader checks", "    Date = 07/03/2024",
                           "    Project filename = reader.tmw", "    Number of piles = 2",
                           "    Elastic unloading flag =  T", "Created 2 piles", "Created 4 layers"}) {
    EXPECT_TRUE(LogHasLine(r, line)) << line << "\n" << r.log;
  }
}

struct BrokenFile {
  std::size_t line;
  const char* text;
  int code;
  const char* log;
};

TEST(TextModelReader, EveryCheckGivesItsCodeAndLogText) {
  const BrokenFile cases[] = {
      {1, "g.23", 282, "Error reading version, status: 1"},
      {17, "1 0. 0.6 0. 0.6 0. 0. -1.5 0. 0. 2500. 75. 75. 57.7 8.50 1200.00 36.00 36.00 27.70", 295,
       "Error reading data for pile: 1"},
      {17, "1 12. -0.6 0. 0.6 0. 0. -1.5 0. 0. 2500. 75. 75. 57.7 8.50 1200.00 36.00 36.00 27.70", 296,
       "Error reading data for pile: 1"},
      {19, "2 12. 0.6 0. 0. 5. 5. 1.5 0. 0. 2500. 75. 75. 57.7 0 0 0 0 0", 297, "Error reading data for pile: 2"},
      {19, "2 12. 0.6 0. 0.6 5. 5. 1.5 0. 0. 0. 75. 75. 57.7 0 0 0 0 0", 298, "Error reading data for pile: 2"},
      {19, "2 12. 0.6 0. 0.6 5. 5. 1.5 0. 0. 2500. 0 75. 57.7 0 0 0 0 0", 299, "Error reading data for pile: 2"},
      {19, "2 12. 0.6 0. 0.6 5. 5. 1.5 0. 0. 2500. 75. -1 57.7 0 0 0 0 0", 300, "Error reading data for pile: 2"},
      {19, "2 12. 0.6 0. 0.6 5. 5. 1.5 0. 0. 2500. 75. 75. 0. 0 0 0 0 0", 301, "Error reading data for pile: 2"},
      {17, "1 12. 0.6 0. 0.6 0. 0. -1.5 0. 0. 2500. 75. 75. 57.7 12.5 1200.00 36.00 36.00 27.70", 328,
       "Error reading data for pile: 1"},
      {17, "1 12. 0.6 0. 0.6 0. 0. -1.5 0. 0. 2500. 75. 75. 57.7 -0.5 1200.00 36.00 36.00 27.70", 328,
       "Error reading data for pile: 1"},
      {19, "2 12. 0.6 0. 0.6 5. 5. 1.5 0. zero 2500. 75. 75. 57.7 0 0 0 0 0", 281, "Error reading data for pile: 2"},
      {19, "2.0 12. 0.6 0. 0.6 5. 5. 1.5 0. 0. 2500. 75. 75. 57.7 0 0 0 0 0", 281, "Error reading data for pile: 2"},
      {33, "0. 20000. 1000. 20000. 1000. 0.3e", 279, "Error reading data for layer: 1"},
      {35, "5. 0. 0. 15000. 500. 0.45", 305, "Error reading data for layer: 2"},
      {35, "5. 15000. 500. -1. 0. 0.45", 306, "Error reading data for layer: 2"},
      {37, "10. 500000. 0. 500000. 0. 0.51", 307, "Error reading data for layer: 3"},
      {46, "1 18. 0. 0. 30. 20. 0.8 0 0 O", 280, "Error reading data for soil: 1"},
      {46, "5 18. 0. 0. 30. 20. 0.8 0 0 0", 308, "Error reading data for soil: 1"},
      {46, "1 0. 0. 0. 30. 20. 0.8 0 0 0", 311, "Error reading data for soil: 1"},
      {48, "2 17. -1. 0. 25. 2. 0.6 0 0 0", 319, "Error reading data for soil: 2"},
      {48, "2 17. 120. -5. 25. 2. 0.6 0 0 0", 321, "Error reading data for soil: 2"},
      {46, "1 18. 0. 0. 0. 20. 0.8 0 0 0", 312, "Error reading data for soil: 1"},
      {46, "1 18. 0. 0. 30. 0. 0.8 0 0 0", 313, "Error reading data for soil: 1"},
      {46, "1 18. 0. 0. 30. 20. 0. 0 0 0", 315, "Error reading data for soil: 1"},
      {48, "2 17. 120. 0. 0. 0. 0.6 0 0 0", 309, "Error reading data for soil: 2"},
      {48, "2 17. 120. 0. 25. 2. 0. 0 0 0", 310, "Error reading data for soil: 2"},
      {50, "3 22. 0. 0. 0. 0.5 0.5 1.2 0.8 1.5", 316, "Error reading data for soil: 3"},
      {50, "3 22. 0. 0. 5000. 0.5 0.5 1.2 0.8 0", 317, "Error reading data for soil: 3"},
      {52, "4 20. 0. 0. 0. 5000. 300. 0 0 0", 318, "Error reading data for soil: 4"},
      {52, "4 20. 0. 0. 150. -1. 300. 0 0 0", 320, "Error reading data for soil: 4"},
  };
  for (const BrokenFile& c : cases) {
    const ReadResult r = Read(With(c.line, c.text));
    SCOPED_TRACE(c.text);
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.error_code, c.code);
    EXPECT_TRUE(LogHasLine(r, c.log)) << r.log;
    // A failed check names its reason from the message table too.
    if (c.code >= 295) {
      EXPECT_TRUE(LogHasLine(r, std::string(ReadErrorText(c.code)))) << r.log;
    }
    // The unit is left open for the caller, at the line where the reader stopped.
    EXPECT_TRUE(r.unit_open);
    EXPECT_EQ(r.unit, kTMWUnit);
    EXPECT_EQ(r.line, static_cast<long>(c.line) + 1);
  }
}

TEST(TextModelReader, ChecksWithoutAnErrorCode) {
  const BrokenFile cases[] = {
      {13, "0 10 5", 0, "Error in number of piles: 0"},
      {13, "2 0 5", 0, "Error in number of elements: 0"},
      {13, "2 10 0", 0, "Error in number of increments: 0"},
      {13, "2 10", 0, "Error reading numbers, status:1"},
      {21, "4", 0, "Error reading interaction distance flag: 4"},
      {23, "far", 0, "Error reading max interaction distance, status: 1"},
      {25, "", 0, "Error reading borehole depth to rigid layer, status: 1"},
      {27, "12.5 one", 0, "Error reading borehole overburden, status: 1"},
      {29, "4 3", 0, "Error in layer averaging value: 3"},
      {29, "0 2", 0, "Error in number of layers: 0"},
      {54, "3", 0, "Error in value of Nq flag: 3"},
      {56, "150.", 0, "Error reading stress limits, status: 1"},
      {58, ".50 1.0 .25 .00", 0, "Error reading factors: .50 1.00 .25 .00"},
      {60, "-", 0, "Error reading free standing length, status: 1"},
      {11, "01000000000000010000000010000000000000x0", 0, "Error reading project flags, status: 1"},
      {7, "2024-0x-07", 0, "Error reading file date, status: 1"},
  };
  for (const BrokenFile& c : cases) {
    SCOPED_TRACE(c.text);
    const ReadResult r = Read(With(c.line, c.text));
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.error_code, c.code);
    EXPECT_TRUE(LogHasLine(r, c.log)) << r.log;
    EXPECT_TRUE(r.unit_open);
  }
}

TEST(TextModelReader, RakesUnderATorqueMustBeEqual) {
  auto lines = With(19, "2 12. 0.6 0. 0.6 5. -7.5 1.5 0. 0. 2500. 75. 75. 57.7 0 0 0 0 0");
  ReadResult r = Read(lines);
  EXPECT_EQ(r.result, 0);
  EXPECT_TRUE(LogHasLine(r, "Error reading pile rakes: 5.00 -7.50")) << r.log;
  // Without the torque the same rakes pass; so do equal rakes of opposite sign.
  lines[62] = "100. -50.5 2500. 10. -20.25 0. 0.125 -0.5";
  EXPECT_EQ(Read(lines).result, 1);
  EXPECT_EQ(Read(With(19, "2 12. 0.6 0. 0.6 5. -5. 1.5 0. 0. 2500. 75. 75. 57.7 0 0 0 0 0")).result, 1);
}

TEST(TextModelReader, VersionWindow) {
  for (const char* good : {"3.23", "2.21", "3.00", "3,23", "3x23", "3.2"}) {
    EXPECT_EQ(Read(With(1, good)).result, 1) << good;
  }
  ReadResult newer = Read(With(1, "3.24"));
  EXPECT_EQ(newer.result, 0);
  EXPECT_EQ(newer.error_code, 0);
  EXPECT_TRUE(LogHasLine(newer, "Error! TMK version (v3.24) is > current version (v3.23)")) << newer.log;
  ReadResult older = Read(With(1, "2.20"));
  EXPECT_EQ(older.result, 0);
  EXPECT_EQ(older.error_code, 0);
  EXPECT_TRUE(LogHasLine(older, "Error! TMK version (v2.20) is < supported version (v2.21)")) << older.log;
  EXPECT_EQ(Read(With(1, "4.00")).result, 0);
  // The version message reaches standard output first.
  testing::internal::CaptureStdout();
  Read(With(1, "3.24"));
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("Error! TMK version (v3.24) is > current version (v3.23)\n"), std::string::npos);
}

TEST(TextModelReader, FlagDigitsOneAndThreeSetAndNothingClears) {
  Engine e;
  e.project.Flags(2) = 1;  // set before the read, and the file says 2 there: it stays
  e.project.Flags(5) = 1;  // the file says 0: it stays
  const ReadResult r = Read(JoinLines(With(11, "3200000000000001000000001000000000000007")), e);
  ASSERT_EQ(r.result, 1) << r.log;
  EXPECT_TRUE(e.project.Flag(1));
  EXPECT_TRUE(e.project.Flag(2));
  EXPECT_TRUE(e.project.Flag(5));
  EXPECT_FALSE(e.project.Flag(40));  // 7 is odd but only 1 (or 3 in place 1) sets a flag
  EXPECT_TRUE(e.project.Flag(16));
  EXPECT_TRUE(e.project.Flag(25));
  // T for an odd digit, F for an even one.
  EXPECT_TRUE(LogHasLine(r, "    Project flags = TFFFFFFFFFFFFFFTFFFFFFFFTFFFFFFFFFFFFFFT")) << r.log;

  Engine other;
  other.project.Flags(2) = 0;
  ASSERT_EQ(Read(JoinLines(With(11, "02")), other).result, 1);  // a short line reads as blanks
  EXPECT_FALSE(other.project.Flag(2));
  EXPECT_FALSE(other.project.DynamicModel);
}

TEST(TextModelReader, CountsLineWithThreeOrFourNumbersAndRemarks) {
  for (const char* counts : {"2 10 5", "2 10 5 0", "2,10,5,1 cap stiffness", "  2\t10  5  "}) {
    Engine e;
    ASSERT_EQ(Read(JoinLines(With(13, counts)), e).result, 1) << counts;
    EXPECT_EQ(e.foundation.NumberOfElements, 10);
    EXPECT_EQ(e.actions.NumberOfIncrements, 5);
  }
}

TEST(TextModelReader, FreeFormValuesRunOverLines) {
  auto lines = kBase;
  // Pile A over four lines, commas and blanks mixed, a blank line among them, reals
  // with and without points, and a remark behind the last value.
  lines[17] = "1, 12, .6,";
  lines.insert(lines.begin() + 18, {"0 0.6 0 0", "", "-1.5E0 0 0 2.5d3 75 75 57.7 8.5", "1200 36 36 27.7 end of pile A"});
  // Layer 1 on two lines.
  auto at = std::find(lines.begin(), lines.end(), "0. 20000. 1000. 20000. 1000. 0.3");
  *at = "0 20000";
  lines.insert(at + 1, "1000 20000 1000 .3 remark");
  Engine e;
  const ReadResult r = Read(JoinLines(lines), e);
  ASSERT_EQ(r.result, 1) << r.log;
  const Pile& a = e.foundation.Piles(1);
  EXPECT_EQ(a.ShaftDiameter, 0.6f);
  EXPECT_EQ(a.X, -1.5f);
  EXPECT_EQ(a.EA, 2500000.0f);
  EXPECT_EQ(a.ReinforcedLength, 8.5f);
  EXPECT_EQ(a.UnreinforcedGJ, 27700.0f);
  EXPECT_EQ(e.foundation.Piles(2).Name.trimmed(), "Pile B");
  EXPECT_EQ(e.borehole.Layers(1).Poisson, 0.3f);
  EXPECT_EQ(e.borehole.Layers(2).Name.trimmed(), "Clay");
}

TEST(TextModelReader, CustomNqOnTheFlagLineOrTheNext) {
  Engine same_line;
  ASSERT_EQ(Read(JoinLines(kBase), same_line).result, 1);
  EXPECT_EQ(same_line.project.AutoNq, 2);
  EXPECT_EQ(same_line.project.Nq, 30.0f);

  auto next_line = With(54, "2");
  next_line.insert(next_line.begin() + 55, "27.5");
  Engine e;
  ASSERT_EQ(Read(JoinLines(next_line), e).result, 1);
  EXPECT_EQ(e.project.Nq, 27.5f);

  auto remark = With(54, "2 custom");
  remark.insert(remark.begin() + 55, "25");
  Engine f;
  ASSERT_EQ(Read(JoinLines(remark), f).result, 1);
  EXPECT_EQ(f.project.Nq, 25.0f);

  Engine automatic;
  ASSERT_EQ(Read(JoinLines(With(54, "1 30.0")), automatic).result, 1);
  EXPECT_EQ(automatic.project.AutoNq, 1);
  EXPECT_EQ(automatic.project.Nq, 0.0f);

  // Flag 2 with no value anywhere before the next heading: the heading is no number.
  const ReadResult r = Read(With(54, "2"));
  EXPECT_EQ(r.result, 0);
  EXPECT_TRUE(LogHasLine(r, "Error reading Nq, status: 1")) << r.log;
}

TEST(TextModelReader, LinearFileHasNoNonLinearLines) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < kBase.size(); ++i) {
    if (i == 26 || i == 27 || (i >= 40 && i <= 58)) continue;
    lines.push_back(kBase[i]);
  }
  lines[13] = "2 10 1";
  Engine e;
  const ReadResult r = Read(JoinLines(lines), e);
  ASSERT_EQ(r.result, 1) << r.log;
  EXPECT_FALSE(e.project.NonLinear);
  EXPECT_EQ(e.borehole.Layers(1).GroundType, 0);
  // The same lines in a non-linear file end early.
  lines[13] = "2 10 2";
  EXPECT_EQ(Read(lines).result, 0);
}

TEST(TextModelReader, AFileCutShortAnywhereFailsCleanly) {
  // At every line: result 0, the unit left open, and a message in the LOG.
  for (std::size_t n = 0; n < kBase.size(); ++n) {
    SCOPED_TRACE(n);
    Engine e;
    const ReadResult r = Read(JoinLines(kBase, n), e);
    EXPECT_EQ(r.result, 0);
    EXPECT_TRUE(r.unit_open);
    EXPECT_NE(r.log.find("Error"), std::string::npos) << r.log;
    EXPECT_EQ(r.line, static_cast<long>(n));
  }
  // At every byte: never a crash; only a cut inside the last line may still read.
  const std::string whole = JoinLines(kBase);
  const std::size_t last_line = whole.rfind("100. -50.5");
  for (std::size_t n = 0; n < whole.size(); ++n) {
    Engine e;
    const ReadResult r = Read(whole.substr(0, n), e);
    if (n <= last_line) {
      EXPECT_EQ(r.result, 0) << n;
    }
  }
}

TEST(TextModelReader, MissingFileAndUnitRules) {
  Engine e;
  test::ScopedLog log(e);
  const std::string path = ScratchPath("absent.tmw");
  EXPECT_EQ(ReadTMWFile(e, path), 0);
  EXPECT_EQ(e.project.TMWUnit, 0);
  EXPECT_FALSE(std::filesystem::exists(path));  // never created
  EXPECT_EQ(ReadTMWUnit(e, 0), 0);
  EXPECT_EQ(ReadTMWUnit(e, kTMWUnit), 0);  // nothing open on it
  EXPECT_NE(log.Text().find("Error opening TMW file: " + path + "\r\n"), std::string::npos);

  // A read during a run is refused: it would change the counts the run was sized by.
  Engine running;
  running.running = true;
  const std::string good = ScratchPath("good.tmw");
  WriteBytes(good, JoinLines(kBase));
  EXPECT_EQ(ReadTMWFile(running, good), 0);
  EXPECT_EQ(running.foundation.NumberOfPiles, 0);

  // Standard output hears of every open and of a broken pile.
  testing::internal::CaptureStdout();
  Read(With(19, "2 12. 0.6 0. 0.6 5. 5. 1.5 0. 0. 2500. 75. 75. 0. 0 0 0 0 0"));
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("Reading data from TMW file: "), std::string::npos);
  EXPECT_NE(out.find("Error reading data for pile: 2\n"), std::string::npos);
}

}  // namespace
}  // namespace quellon
