#include "files/tmw_reader.h"

#include <cmath>
#include <cstdio>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/number_forms.h"

namespace quellon {

namespace {

// The oldest file version the reader still understands: major 2, minor 0x21, "2.21".
constexpr int kOldestMajor = 2;
constexpr int kOldestMinor = 0x21;
constexpr int kOldestVersionNumber = kOldestMajor * 256 + kOldestMinor;

const char* TrueFalse(bool b) { return b ? "T" : "F"; }

std::string TwoDigits(int v) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%02d", v);
  return buf;
}

std::string FourDigits(int v) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%04d", v);
  return buf;
}

}  // namespace

bool TMWReader::Fail(std::string_view text) {
  if (failure_.empty()) failure_.assign(text);
  LogLine(e_, text);
  return false;
}

bool TMWReader::FailAloud(std::string_view text) {
  if (failure_.empty()) failure_.assign(text);
  std::printf("%.*s\n", static_cast<int>(text.size()), text.data());
  std::fflush(stdout);
  LogLine(e_, text);
  return false;
}

int TMWReader::SkipComments(int count) {
  for (int i = 0; i < count; ++i) {
    const int status = in_.Skip();
    if (status != 0) return status;
  }
  return 0;
}

bool TMWReader::Version() {
  std::string line;
  int major = 0;
  int minor = 0;
  int status = SkipComments(1);
  if (status == 0) status = in_.Line(line);
  // Column 1 the major, column 2 skipped whatever it holds, columns 3 and 4 the minor;
  // all in hexadecimal digits.
  if (status == 0) status = TMWScanner::HexField(line, 1, 1, major);
  if (status == 0) status = TMWScanner::HexField(line, 3, 2, minor);
  if (status != 0) {
    e_.project.ErrorCode = 282;
    return FailAloud("Error reading version, status: " + std::to_string(status));
  }
  e_.project.Version = major * 256 + minor;
  const std::string file_version = "(v" + VersionText(major, minor) + ")";
  if (e_.project.Version > kVersionNumber) {
    return FailAloud("Error! TMK version " + file_version + " is > current version (v" + VersionText() + ")");
  }
  if (e_.project.Version < kOldestVersionNumber) {
    return FailAloud("Error! TMK version " + file_version + " is < supported version (v" +
                     VersionText(kOldestMajor, kOldestMinor) + ")");
  }
  return true;
}

bool TMWReader::ProjectTexts() {
  Project& p = e_.project;
  std::string text;

  int status = SkipComments(1);
  if (status == 0) status = in_.Text(text);
  if (status != 0) return FailAloud("Error reading project name, status: " + std::to_string(status));
  p.Name.assign(text);
  LogLine(e_, "SetProjectName...");
  LogLine(e_, "    Project name = " + std::string(p.Name.trimmed()));

  status = SkipComments(1);
  if (status == 0) status = in_.Text(text);
  if (status != 0) return FailAloud("Error reading project description, status: " + std::to_string(status));
  p.Description.assign(text);
  LogLine(e_, "SetProjectDescription...");
  LogLine(e_, "    Project description = " + std::string(p.Description.trimmed()));

  // Date: year in columns 1 to 4, month in 6 and 7, day in 9 and 10.
  int year = 0;
  int month = 0;
  int day = 0;
  status = SkipComments(1);
  if (status == 0) status = in_.Line(text);
  if (status == 0) status = TMWScanner::IntField(text, 1, 4, year);
  if (status == 0) status = TMWScanner::IntField(text, 6, 2, month);
  if (status == 0) status = TMWScanner::IntField(text, 9, 2, day);
  if (status != 0) return FailAloud("Error reading file date, status: " + std::to_string(status));
  p.Year = year;
  p.Month = month;
  p.Day = day;
  LogLine(e_, "SetProjectDate...");
  LogLine(e_, "    Date = " + TwoDigits(day) + "/" + TwoDigits(month) + "/" + FourDigits(year));

  status = SkipComments(1);
  if (status == 0) status = in_.Text(text);
  if (status != 0) return FailAloud("Error reading filename, status: " + std::to_string(status));
  p.Filename.assign(text);
  LogLine(e_, "SetProjectFilename...");
  LogLine(e_, "    Project filename = " + std::string(p.Filename.trimmed()));
  return true;
}

bool TMWReader::Flags() {
  std::string line;
  int status = SkipComments(1);
  if (status == 0) status = in_.Line(line);
  int digits[kFlagCount] = {};
  for (int i = 0; status == 0 && i < kFlagCount; ++i) {
    const char c = static_cast<std::size_t>(i) < line.size() ? line[static_cast<std::size_t>(i)] : ' ';
    if (c >= '0' && c <= '9') {
      digits[i] = c - '0';
    } else if (c != ' ') {
      status = TMWScanner::kBadValue;
    }
  }
  if (status != 0) return FailStatus("Error reading project flags, status: ", status);

  // A 1 sets its flag, and so does a 3 in the first place; every other digit leaves the
  // flag as it stood: a read never clears a flag.
  Project& p = e_.project;
  LogLine(e_, "SetProjectFlags...");
  std::string letters;
  for (int i = 1; i <= kFlagCount; ++i) {
    const int d = digits[i - 1];
    if (d == 1 || (i == 1 && d == 3)) p.Flags(i) = 1;
    letters += TrueFalse(d % 2 == 1);
  }
  LogLine(e_, "    Project flags = " + letters);
  p.DynamicModel = p.Flags(16);
  return true;
}

bool TMWReader::Counts() {
  std::int32_t piles = 0;
  std::int32_t elements = 0;
  std::int32_t increments = 0;
  int status = SkipComments(1);
  // A fourth number on the line (the cap stiffness) is dropped with the rest of it.
  in_.Reading("the counts of piles, elements and increments");  // names the read in side findings
  if (status == 0) status = in_.Values({piles, elements, increments});
  if (status != 0) return FailStatus("Error reading numbers, status:", status);
  in_.TakeBehind(1);  // the cap stiffness is no surplus value

  // The pile count reaches the records with the table (CreatePiles), so that count and
  // table never disagree.
  piles_ = piles;
  e_.foundation.NumberOfElements = elements;
  e_.actions.NumberOfIncrements = increments;
  e_.project.NonLinear = increments > 1 ? 1 : 0;
  LogLine(e_, "SetNumberOfPiles...");
  LogLine(e_, "    Number of piles = " + std::to_string(piles));
  if (piles <= 0) return Fail("Error in number of piles: " + std::to_string(piles));
  if (elements <= 0) return Fail("Error in number of elements: " + std::to_string(elements));
  if (increments < 1) return Fail("Error in number of increments: " + std::to_string(increments));
  return true;
}

bool TMWReader::InteractionAndBorehole() {
  Project& p = e_.project;
  Borehole& b = e_.borehole;

  int status = SkipComments(1);
  in_.Reading("the pile interaction flag");  // names the read in side findings
  if (status == 0) status = in_.Values({p.InteractionFlag});
  if (status != 0) return FailStatus("Error reading pile interaction, status: ", status);
  if (p.InteractionFlag < 1 || p.InteractionFlag > 3) {
    return Fail("Error reading interaction distance flag: " + std::to_string(p.InteractionFlag));
  }

  if (p.InteractionFlag == 3) {
    status = SkipComments(1);
    in_.Reading("the pile interaction distance");  // names the read in side findings
    if (status == 0) status = in_.Values({p.InteractionDistance});
    if (status != 0) return FailStatus("Error reading max interaction distance, status: ", status);
  }

  status = SkipComments(1);
  in_.Reading("the depth to the rigid layer");  // names the read in side findings
  if (status == 0) status = in_.Values({b.DepthToRigidLayer});
  if (status != 0) return FailStatus("Error reading borehole depth to rigid layer, status: ", status);

  if (p.NonLinear) {
    std::int32_t unloading = 0;
    status = SkipComments(1);
    in_.Reading("the overburden and the elastic unloading flag");  // names the read in side findings
    if (status == 0) status = in_.Values({b.Overburden, unloading});
    if (status != 0) return FailStatus("Error reading borehole overburden, status: ", status);
    LogLine(e_, "SetProjectElasticUnloadingFlag...");
    p.ElasticUnloading = unloading == 1 ? 1 : 0;
    LogLine(e_, std::string("    Elastic unloading flag =  ") + TrueFalse(p.ElasticUnloading != 0));
  }

  std::int32_t layers = 0;
  status = SkipComments(1);
  in_.Reading("the number of layers and the layer averaging flag");  // names the read in side findings
  if (status == 0) status = in_.Values({layers, b.LayerAveraging});
  if (status != 0) return FailStatus("Error reading borehole number of layers, status: ", status);
  if (b.LayerAveraging != 1 && b.LayerAveraging != 2) {
    return Fail("Error in layer averaging value: " + std::to_string(b.LayerAveraging));
  }
  // A borehole without layers has no ground for the piles to stand in.
  if (layers < 1) return Fail("Error in number of layers: " + std::to_string(layers));
  layers_ = layers;
  return true;
}

bool TMWReader::NonLinearSettings() {
  Project& p = e_.project;

  int status = SkipComments(1);
  in_.Reading("the Nq flag");  // names the read in side findings
  if (status == 0) status = in_.Values({p.AutoNq});
  if (status != 0) return FailStatus("Error reading Nq flag, status: ", status);
  if (p.AutoNq != 1 && p.AutoNq != 2) return Fail("Error in value of Nq flag: " + std::to_string(p.AutoNq));
  if (p.AutoNq == 2) {
    // A custom Nq may stand behind the flag on its own line, as the writer puts it, or
    // on the line after it. Text behind the flag that is not a number is dropped as a
    // remark, and the value is taken from the next line.
    const std::string_view behind = TMWScanner::FirstToken(in_.Rest());
    if (behind.empty() || !TMWScanner::ParseReal(behind, p.Nq)) {
      in_.Reading("the custom Nq");  // names the read in side findings
      status = in_.Values({p.Nq});
      if (status != 0) return FailStatus("Error reading Nq, status: ", status);
    } else {
      in_.TakeBehind(1);  // taken, not dropped
    }
  }

  status = SkipComments(1);
  in_.Reading("the two stress limits");  // names the read in side findings
  if (status == 0) status = in_.Values({p.LimitingShaftFriction, p.LimitingBearingPressure});
  if (status != 0) return FailStatus("Error reading stress limits, status: ", status);

  status = SkipComments(1);
  in_.Reading("the four hyperbolic factors");  // names the read in side findings
  if (status == 0) status = in_.Values({p.Rs, p.Rb, p.Rl, p.Rt});
  if (status != 0) return FailStatus("Error reading hyperbolic factors, status: ", status);
  if (!(p.Rs < 1.0f) || !(p.Rb < 1.0f) || !(p.Rl < 1.0f) || !(p.Rt < 1.0f)) {
    return Fail("Error reading factors: " + FormatFix(p.Rs, 0, 2) + " " + FormatFix(p.Rb, 0, 2) + " " +
                FormatFix(p.Rl, 0, 2) + " " + FormatFix(p.Rt, 0, 2));
  }
  return true;
}

bool TMWReader::Loads() {
  Actions& a = e_.actions;
  int status = SkipComments(1);
  in_.Reading("the free-standing length");  // names the read in side findings
  if (status == 0) status = in_.Values({e_.foundation.FreeStandingLength});
  if (status != 0) return FailStatus("Error reading free standing length, status: ", status);

  status = SkipComments(1);
  in_.Reading("the loads");  // names the read in side findings
  if (status == 0) status = in_.Values({a.Fx, a.Fy, a.Fz, a.Mx, a.My, a.Mz, a.X, a.Y});
  if (status != 0) return FailStatus("Error reading loads: ", status);

  // Under a torque, a pile raked both ways must be raked equally both ways.
  if (std::fabs(a.Mz) > 1e-20f) {
    for (const Pile& pile : e_.foundation.PileTable) {
      const float rx = std::fabs(pile.RakeX);
      const float ry = std::fabs(pile.RakeY);
      if (rx > 1e-20f && ry > 1e-20f && rx != ry) {
        return Fail("Error reading pile rakes: " + FormatFix(pile.RakeX, 0, 2) + " " + FormatFix(pile.RakeY, 0, 2));
      }
    }
  }
  return true;
}

}  // namespace quellon
