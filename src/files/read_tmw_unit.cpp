#include <cstdio>
#include <string>

#include "engine/diagnostics.h"
#include "engine/engine.h"
#include "engine/fixed_text.h"
#include "engine/notify.h"
#include "files/text_model.h"
#include "files/tmw_diagnostics.h"
#include "files/tmw_reader.h"

namespace quellon {

namespace {

TextFile* ReadableUnit(Engine& e, int unit) {
  if (unit == kTMWUnit && e.files.tmw.is_open()) return &e.files.tmw;
  return nullptr;
}

}  // namespace

int ReadTMWUnit(Engine& e, int unit) {
  if (unit < 1) return 0;
  TextFile* file = ReadableUnit(e, unit);
  if (file == nullptr) return 0;
  TMWReader r(e, *file);
  ReadDiagnostics().clear();  // side findings: those of this read only
  CheckDiagnostics().clear();
  r.scanner().set_notes(&ReadDiagnostics());
  const bool ok = r.Version() && r.ProjectTexts() && r.Flags() && r.Counts() && r.Piles() &&
                  r.InteractionAndBorehole() && r.Layers() && (!e.project.NonLinear || r.Grounds()) &&
                  (!e.project.NonLinear || r.NonLinearSettings()) && r.Loads();
  // Side findings: what the last read left behind, and where a failed read went wrong.
  r.scanner().Finish();
  if (!ok) {
    ExplainStoppedRead(ReadDiagnostics(), r.failure(), r.scanner().read_failed(), r.scanner().stop_line(),
                       r.scanner().bad_token(), file->path());
    return 0;
  }
  // Closed, keeping the file; the unit field stays at its number, so that a later close
  // finds nothing to close but still resets it.
  file->close();
  return 1;
}

int ReadTMWFile(Engine& e, const std::string& path) {
  // A model read in the middle of a run would change the counts that the run's arrays
  // were sized from; the engine refuses it.
  if (e.running) {
    SendError(e, kBusyText);
    return 0;
  }
  // A new model: the findings about the one before go.
  ReadDiagnostics().clear();
  CheckDiagnostics().clear();
  if (!e.files.tmw.open_for_reading(path)) {
    LogLine(e, "Error opening TMW file: " + path);
    e.project.TMWUnit = 0;
    return 0;
  }
  const std::string opened = "Reading data from TMW file: " + path;
  std::printf("%s\n", opened.c_str());
  std::fflush(stdout);
  LogLine(e, opened);
  e.project.TMWUnit = kTMWUnit;
  e.project.Filename.assign(path);
  return ReadTMWUnit(e, kTMWUnit);
}

long TMWLineReached(const Engine& e) { return e.files.tmw.lines_read(); }

}  // namespace quellon
