// The text model file: the layout written, the round trip through the reader, and the
// reader's checks, each with its code and LOG text, on edits of the written file.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "engine/file_units.h"
#include "files/text_model.h"
#include "files/tmw_reader.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

using testing::FillSampleModel;
using testing::ReadBytes;
using testing::TempFile;

// The sample model written by the writer, non-linear with 5 increments.
const std::vector<std::string> kSample = {
    "[Version]", "3.23", "[Name]", "Jetty 4 \xE9tage, bent B", "[Notes]", "Sample model for the file tests", "[Date]",
    "2024-03-07", "[Filename]", "C:\\jobs\\jetty4.tmw", "[Flags]", "1100000000000001000000001000000000000100",  // 11
    "[No. piles/no. elements/no. increments]", "3 4 5 0",  // 13
    "[Pile Name]",
    "[Number/Length(m)/Ds(m)/Do(m)/Db(m)/Xrake(\xB0)/Yrake(\xB0)/X(m)/Y(m)/Z(m)/EA(MN)/EIx(MNm^2)/EIy(MNm^2)/"
    "GJ(MNm^2)/ReinforcedLength(m)/EA+(MN)/EIx+(MNm^2)/EIy+(MNm^2)/GJ+(MNm^2)]",
    "Pile A", "1 12. 0.6 0. 0.6 0. 0. -1.5 0. 0.25 2500. 75. 75. 57.7 8.50 1200.00 36.00 36.00 27.70",  // 17
    "Pile B", "2 12. 0.6 0. 0.6 0. 0. 0. 0. 0.25 2500. 75. 75. 57.7 0 0 0 0 0",  // 19
    "Pile C", "3 12. 0.6 0.45 0.6 5. -5. 1.5 0. 0.25 2500. 75. 75. 57.7 0 0 0 0 0",
    "[Pile interaction flag: 1 = infinite; 2 = auto; 3 = custom]", "3",  // 23
    "[Pile interaction distance]", "12.5", "[Depth to rigid layer (m)]", "30.",
    "[Overburden (kPa)/Elastic unloading flag: 0 = off; 1 = on]", "12.5 1",
    "[No. layers/Layer averaging flag: 1 = Poulos; 2 = Yamashita]", "4 2",  // 31
    "[Layer Name]", "[Depth(m)/Ev(kPa)/dEv(kN/m^3)/Eh(kPa)/dEh(kN/m^3)/Poisson]", "Sand",
    "0. 20000. 1000. 15000. 750.5 0.3",  // 35
    "Clay", "5. 40000. 1000. 30000. 750.5 0.3",  // 37
    "Mudstone", "10. 60000. 1000. 45000. 750.5 0.3",  // 39
    "Fill", "15. 80000. 1000. 60000. 750.5 0.3", "[Soil Name]",
    "[Type(1 = coarse soil)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/phi(deg)/delta(deg)/Ks/-/-/-]",
    "[Type(2 = fine soil)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/cu(kPa)/dcu(kN/m^3)/alpha/-/-/-]",
    "[Type(3 = rock)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/UCS(MPa)/k1/k2/k3/k4/k5]",
    "[Type(4 = direct)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/qs(kPa)/qb(kPa)/qlat(kPa)/-/-/-]", "Loose sand",
    "1 18.5 0. 0. 32. 24.5 0.8 0 0 0",  // 48
    "Soft clay", "2 18.5 80. 0. 25. 2.5 0.6 0 0 0",  // 50
    "Weak rock", "3 18.5 0. 9000. 5000. 0.5 0.5 1.25 0.75 1.5",  // 52
    "Direct values", "4 18.5 0. 0. 150. 5000. 300. 0 0 0",  // 54
    "[Nq flag: 2 = custom; 1 = auto/Nq(-)]", "2 30.0",  // 56
    "[Stress limits: skin friction (kPa)/end bearing (kPa)]", "150. 4500.",
    "[Hyperbolic factors: shaft/base/lateral/torsion]", ".50 .90 .25 .00",  // 60
    "[Free-standing length (m)]", "1.25", "[Fx(kN)/Fy(kN)/Fz(kN)/Mx(kNm)/My(kNm)/Mz(kNm)/X(m)/Y(m)]",
    "100. -50.5 2500. 10. -20.25 5. 0.125 -0.5",
};

std::string Write(Engine& e, const std::string& path) {
  EXPECT_EQ(CreateTMKFile(e, path), 1);
  CloseTMKFile(e);
  return ReadBytes(path);
}

// The lines as a file of CR LF lines, the first `count` of them.
std::string JoinLines(const std::vector<std::string>& lines, std::size_t count = std::string::npos) {
  std::string s;
  for (std::size_t i = 0; i < lines.size() && i < count; ++i) s += lines[i] + "\r\n";
  return s;
}

struct ReadResult {
  int result, error_code;
  long line;
  bool unit_open;
  std::string log;
  bool Logged(const std::string& l) const { return ("\r\n" + log).find("\r\n" + l + "\r\n") != std::string::npos; }
};

ReadResult Read(const std::string& bytes, Engine& e) {
  TempFile tmw(".tmw"), log(".log");
  testing::WriteBytes(tmw.path(), bytes);
  testing::OpenLOG(e, log.path());
  ::testing::internal::CaptureStdout();
  ReadResult r{ReadTMWFile(e, tmw.path()), e.project.ErrorCode, TMWLineReached(e), e.files.tmw.is_open(), ""};
  ::testing::internal::GetCapturedStdout();
  e.files.log.close();
  e.files.tmw.close();
  r.log = ReadBytes(log.path());
  return r;
}
ReadResult Read(const std::vector<std::string>& lines) {
  Engine e;
  return Read(JoinLines(lines), e);
}

// The sample with token `token` of line `line` (both counted from 0) replaced.
std::vector<std::string> Edit(std::size_t line, int token, const std::string& value) {
  std::vector<std::string> lines = kSample;
  std::istringstream in(lines[line]);
  std::string word, out;
  // A value of several words stands for as many tokens.
  for (int i = 0, skip = 0; in >> word; ++i) {
    if (skip-- > 0) continue;
    out += (out.empty() ? "" : " ") + (i == token ? value : word);
    if (i == token) skip = static_cast<int>(std::count(value.begin(), value.end(), ' '));
  }
  lines[line] = out;
  return lines;
}

TEST(TextModel, WriterLayoutAndRoundTrip) {
  TempFile first(".tmk"), second(".tmk");
  for (int increments : {5, 1}) {
    Engine original, read;
    FillSampleModel(original, increments);
    original.foundation.CapStiffness = 0;  // the reader drops the fourth count
    const std::string bytes = Write(original, first.path());
    if (increments == 5) {
      EXPECT_EQ(bytes, JoinLines(kSample));  // Latin-1 degree signs and name, CR LF ends
      EXPECT_EQ(bytes.find("\xC2\xB0"), std::string::npos);
    }
    // A linear file has neither the overburden nor the ground lines.
    EXPECT_EQ(bytes.find("[Overburden") == bytes.npos && bytes.find("[Soil Name]") == bytes.npos, increments == 1);
    ASSERT_EQ(ReadTMWFile(read, first.path()), 1) << increments;
    EXPECT_EQ(read.project.NonLinear, original.project.NonLinear);
    EXPECT_EQ(Write(read, second.path()), bytes) << increments;
  }
}

struct Broken {
  std::size_t line;
  int token;
  const char* value;
  int code;
  const char* log;
};

TEST(TextModel, EveryCheckGivesItsCodeAndLogText) {
  const Broken cases[] = {
      {1, 0, "g.23", 282, "Error reading version, status: 1"},
      {19, 9, "zero", 281, "Error reading data for pile: 2"},
      {19, 0, "2.0", 281, "Error reading data for pile: 2"},
      {17, 1, "0.", 295, "Error reading data for pile: 1"},
      {17, 2, "-0.6", 296, "Error reading data for pile: 1"},
      {19, 4, "0.", 297, "Error reading data for pile: 2"},
      {19, 10, "0.", 298, "Error reading data for pile: 2"},
      {19, 11, "0", 299, "Error reading data for pile: 2"},
      {19, 12, "-1", 300, "Error reading data for pile: 2"},
      {19, 13, "0.", 301, "Error reading data for pile: 2"},
      {17, 14, "12.5", 328, "Error reading data for pile: 1"},
      {35, 5, "0.3e", 279, "Error reading data for layer: 1"},
      {37, 1, "0. 0.", 305, "Error reading data for layer: 2"},
      {37, 3, "-1. 0.", 306, "Error reading data for layer: 2"},
      {39, 5, "0.51", 307, "Error reading data for layer: 3"},
      {48, 9, "O", 280, "Error reading data for soil: 1"},
      {48, 0, "5", 308, "Error reading data for soil: 1"},
      {48, 1, "0.", 311, "Error reading data for soil: 1"},
      {48, 4, "0.", 312, "Error reading data for soil: 1"},
      {48, 5, "0.", 313, "Error reading data for soil: 1"},
      {48, 6, "0.", 315, "Error reading data for soil: 1"},
      {50, 4, "0. 0.", 309, "Error reading data for soil: 2"},
      {50, 6, "0.", 310, "Error reading data for soil: 2"},
      {50, 2, "-1.", 319, "Error reading data for soil: 2"},
      {50, 3, "-5.", 321, "Error reading data for soil: 2"},
      {52, 4, "0.", 316, "Error reading data for soil: 3"},
      {52, 9, "0", 317, "Error reading data for soil: 3"},
      {54, 4, "0.", 318, "Error reading data for soil: 4"},
      {54, 5, "-1.", 320, "Error reading data for soil: 4"},
      // Checks that name their value but set no code, the version window among them.
      {1, 0, "3.24", 0, "Error! TMK version (v3.24) is > current version (v3.23)"},
      {1, 0, "2.20", 0, "Error! TMK version (v2.20) is < supported version (v2.21)"},
      {13, 0, "0", 0, "Error in number of piles: 0"},
      {60, 1, "1.0", 0, "Error reading factors: .50 1.00 .25 .00"},
  };
  for (const Broken& c : cases) {
    SCOPED_TRACE(std::to_string(c.line) + ": " + c.value);
    const ReadResult r = Read(Edit(c.line, c.token, c.value));
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.error_code, c.code);
    EXPECT_TRUE(r.Logged(c.log)) << r.log;
    if (c.code >= 295) {
      EXPECT_TRUE(r.Logged(std::string(ReadErrorText(c.code)))) << r.log;
    }
    // The unit is left open for the caller, at the line where the reader stopped.
    EXPECT_TRUE(r.unit_open);
    EXPECT_EQ(r.line, static_cast<long>(c.line) + 1);
  }
}

TEST(TextModel, FreeFormsOfTheLines) {
  for (const char* version : {"3.23", "2.21", "3,23"}) EXPECT_EQ(Read(Edit(1, 0, version)).result, 1) << version;
  {
    // Digits 1 and 3 set a flag, others leave it as it was.
    Engine e;
    e.project.Flags(2) = 1;
    ASSERT_EQ(Read(JoinLines(Edit(11, 0, "3200000000000001000000001000000000000007")), e).result, 1);
    EXPECT_TRUE(e.project.Flag(1) && e.project.Flag(2) && e.project.Flag(16) && e.project.Flag(25));
    EXPECT_FALSE(e.project.Flag(40));
  }
  for (const char* counts : {"3 4 5", "3,4,5,1 cap stiffness"}) {
    Engine e;
    ASSERT_EQ(Read(JoinLines(Edit(13, 0, counts)), e).result, 1) << counts;
    EXPECT_EQ(e.foundation.NumberOfElements, 4);
    EXPECT_EQ(e.actions.NumberOfIncrements, 5);
  }
  // Pile A over four lines, commas and blanks mixed, a blank line among them, reals with
  // and without points, and a remark behind the last value.
  std::vector<std::string> lines = kSample;
  lines[17] = "1, 12, .6,";
  lines.insert(lines.begin() + 18, {"0 0.6 0 0", "", "-1.5E0 0 0.25 2.5d3 75 75 57.7 8.5", "1200 36 36 27.7 end"});
  Engine e;
  const ReadResult r = Read(JoinLines(lines), e);
  ASSERT_EQ(r.result, 1) << r.log;
  const Pile& a = e.foundation.Piles(1);
  EXPECT_TRUE(a.X == -1.5f && a.EA == 2500000.0f && a.UnreinforcedGJ == 27700.0f);
  EXPECT_EQ(e.foundation.Piles(2).Name.trimmed(), "Pile B");
}

TEST(TextModel, AFileCutShortAtAnyLineFailsCleanly) {
  for (std::size_t n = 0; n < kSample.size(); ++n) {
    Engine e;
    const ReadResult r = Read(JoinLines(kSample, n), e);
    EXPECT_EQ(r.result, 0) << n;
    EXPECT_TRUE(r.unit_open) << n;
    EXPECT_NE(r.log.find("Error"), std::string::npos) << n << r.log;
    EXPECT_EQ(r.line, static_cast<long>(n));
  }
}

}  // namespace
}  // namespace quellon
