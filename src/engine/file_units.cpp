#include "engine/file_units.h"

#include <cstdio>
#include <ctime>
#include <string>

#include "engine/engine.h"
#include "engine/fixed_text.h"
#include "engine/notify.h"
#include "engine/utilities.h"

namespace quellon {

namespace {

void CloseUnit(Engine& e, std::int32_t& field, TextFile& file, std::string_view message) {
  if (field <= 0) return;
  file.close();
  field = 0;
  SendInfo(e, message);
}

// Status replace on the unit: the file is created or emptied. The LOG line names the
// path without its trailing blanks.
int OpenOutput(Engine& e, std::int32_t& field, int unit, TextFile& file, std::string_view path,
               std::string_view success_text, std::string_view failure_text) {
  const std::string trimmed(TrimRight(path));
  if (!file.create(trimmed)) {
    LogLine(e, std::string(failure_text) + trimmed);
    field = 0;
    return 0;
  }
  LogLine(e, std::string(success_text) + trimmed);
  field = unit;
  return 1;
}

}  // namespace

void CloseTMWFile(Engine& e) { CloseUnit(e, e.project.TMWUnit, e.files.tmw, "Closed TMW file"); }
void CloseTMKFile(Engine& e) { CloseUnit(e, e.project.TMKUnit, e.files.tmk, "Closed TMK file"); }
void CloseXMLFile(Engine& e) { CloseUnit(e, e.project.XMLUnit, e.files.xml, "Closed XML output file"); }
void CloseTXTFile(Engine& e) { CloseUnit(e, e.project.TXTUnit, e.files.txt, "Closed TXT output file"); }

void CloseLOGFile(Engine& e) {
  if (e.project.LOGUnit <= 0) return;
  const ClockText now = LocalClockText();
  LogLine(e, "");
  LogLine(e, "LOG file closed at " + now.date + " " + now.time);
  e.files.log.close();
  e.project.LOGUnit = 0;
  SendInfo(e, "Closed LOG file");
}

void CloseAllFiles(Engine& e) {
  SendInfo(e, "Closing all files ...");
  CloseTMWFile(e);
  CloseTMKFile(e);
  CloseXMLFile(e);
  CloseTXTFile(e);
  CloseLOGFile(e);
}

int OpenXMLOutput(Engine& e, std::string_view path) {
  return OpenOutput(e, e.project.XMLUnit, kXMLUnit, e.files.xml, path, "Writing results to XML output file: ",
                    "Error opening XML output file: ");
}

int OpenTXTReport(Engine& e, std::string_view path) {
  return OpenOutput(e, e.project.TXTUnit, kTXTUnit, e.files.txt, path, "Writing results to TXT output file: ",
                    "Error opening TXT output file: ");
}

std::optional<std::string> PathWithinWidth(Engine& e, const char* path) {
  const std::string text(TrimRight(TextFromHost(path)));
  if (text.size() <= kPathWidth) return text;
  SendError(e, "Path too long (" + std::to_string(text.size()) + " characters, at most " + std::to_string(kPathWidth) +
                   "): " + text);
  return std::nullopt;
}

int StartLOGFile(Engine& e, std::string_view path) {
  // A new LOG on the unit replaces whatever file the unit held. The old file is
  // released first, so that a failed create leaves the unit closed rather than
  // pointing at a file that no longer receives lines.
  e.files.log.close();
  e.project.LOGUnit = 0;
  if (!e.files.log.create(std::string(TrimRight(path)))) return 0;
  // The host hears of the new LOG before it is in force: the head stands first.
  SendInfo(e, "Creating LOG file...");
  e.project.LOGUnit = kLOGUnit;
  const ClockText now = LocalClockText();
  LogLine(e, "QuellonEngine v" + VersionText());
  LogLine(e, kOwnershipLine1);
  LogLine(e, kOwnershipLine2);
  LogLine(e, "LOG file created on " + now.date + " at " + now.time);
  LogLine(e, "");
  return 1;
}

int CreateLOGFile(Engine& e, std::string_view path) {
  CloseLOGFile(e);
  return StartLOGFile(e, path);
}

ClockText LocalClockText() {
  const std::time_t t = std::time(nullptr);
  std::tm local{};
#if defined(_WIN32)
  localtime_s(&local, &t);
#else
  localtime_r(&t, &local);
#endif
  char date[32];
  char time[32];
  std::snprintf(date, sizeof date, "%02d/%02d/%04d", local.tm_mday, local.tm_mon + 1, local.tm_year + 1900);
  std::snprintf(time, sizeof time, "%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
  return {date, time};
}

}  // namespace quellon
