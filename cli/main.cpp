// quellon: the command-line host of QuellonEngine. It uses the engine only through its
// C API, as any host application does: it reads a text model file, runs the analysis,
// shows the engine's messages and progress, and prints a summary an engineer reads first.

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "case_summary.h"
#include "console.h"
#include "csv_output.h"
#include "lapack_kernels.h"
#include "load_cases.h"
#include "model_check.h"
#include "model_peek.h"
#include "output_paths.h"
#include "platform.h"
#include "post_run_warnings.h"
#include "quellon.h"
#include "result_summary.h"
#include "run_results.h"
#include "warnings.h"

namespace {

using quellon_cli::Console;

constexpr int kExitOk = 0;
constexpr int kExitRunFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitBadModel = 3;

const char* const kUsage =
    "usage: quellon run MODEL.tmw [options]\n"
    "       quellon check MODEL.tmw [--log FILE] [--no-warnings] [--load-cases CASES.csv]\n"
    "       quellon --help | --version\n"
    "\n"
    "run      reads the model, runs the analysis and writes MODEL.xml, MODEL.txt and\n"
    "         MODEL.log beside it, then prints a summary.\n"
    "check    reads the model and checks it as a run would, without running; reports\n"
    "         each problem with the line of the file where the reader stopped, and warns\n"
    "         where numbers are misread or the method misleads on this model.\n"
    "\n"
    "options of run:\n"
    "  --out-dir DIR   write the outputs into DIR (named after the model)\n"
    "  --xml FILE      the XML output\n"
    "  --txt FILE      the TXT report\n"
    "  --log FILE      the LOG file\n"
    "  --no-txt        no TXT report\n"
    "  --no-csv        no CSV files; by default MODEL.heads.csv, MODEL.profiles.csv and,\n"
    "                  for a non-linear run, MODEL.history.csv are written beside the XML\n"
    "  --keep-flags    report exactly what the model's flags ask for; by default the\n"
    "                  cap block of every increment (flag 25), every element of every\n"
    "                  pile at every increment (flags 27, 28 and 31) and the complete\n"
    "                  report of the last increment (flag 35) are added, which the\n"
    "                  summary and the CSV files read\n"
    "  --quiet         show only warnings, errors and the summary\n"
    "  --load-cases CASES.csv\n"
    "                  also work the load cases of CASES.csv, one row per case: name, Fx,\n"
    "                  Fy, Fz (kN), Mx, My, Mz (kNm), X, Y (m; where the loads act), a header\n"
    "                  row optional. The model's own loads stay the run's; the cases go to\n"
    "                  MODEL.cases.xml, a table of them ends the summary (cap movement, the\n"
    "                  largest pile compression, tension and head moment, the governing\n"
    "                  case of each column marked *), and MODEL.cases.csv holds the table.\n"
    "                  A fault in the file is refused before the run (exit status 2);\n"
    "                  check reads the file as run does.\n"
    "\n"
    "options of run and check:\n"
    "  --no-warnings   no warnings about the model (misread numbers, values dropped,\n"
    "                  places where the method misleads); the exit status is the same\n"
    "  --mechanics M   as-defined (the default): the method as it is defined, whose\n"
    "                  numbers compare with the system it replaces; corrected: the same\n"
    "                  analysis with its known flaws corrected (a first-order unit twist\n"
    "                  of the cap, torsion between piles under any load, the whole\n"
    "                  section compared before a pile matrix is shared, the rigid twist\n"
    "                  of a pile raked both ways). Every output of a corrected run says\n"
    "                  so, and the warnings cap-torque and shared-pile-matrix, whose\n"
    "                  flaws it removes, are not given\n"
    "\n"
    "The outputs are written as FILE.part and moved into place when the run has\n"
    "produced them. A failed run leaves earlier outputs as they were and keeps its\n"
    "LOG as MODEL.failed.log (the LOG's name with .failed before its extension).\n"
    "\n"
    "exit status:\n"
    "  0  success (a run that stops at the axial capacity of the group succeeds)\n"
    "  1  the analysis failed, or its outputs could not be moved into place\n"
    "  2  the command line cannot be carried out: bad arguments, an output that\n"
    "     names the model or another output, a path longer than the engine's 260\n"
    "     characters, an output folder that does not exist or cannot be created\n"
    "  3  the model file cannot be read or is not a valid model\n"
    "\n"
    "units: m, kN, kNm, kPa, kN/m^3 and degrees in the model file and the outputs;\n"
    "section stiffnesses EA, EI, GJ in MN and MNm^2 in the model file; Z and depths\n"
    "positive downward. The summary shows movements in mm and rotations in mrad.\n";

// ---- What the engine hands over during a run -------------------------------------
struct RunRecord {
  Console* console = nullptr;
  int total_increments = 0;
  bool have_stiffness = false;
  float grmat[36] = {};
  struct Step {
    int increment = 0;
    float load[6] = {};  // Fx, Fy, Fz, Mx, My, Mz
    float disp[6] = {};  // X, Y, Z, about X, about Y, about Z (m, rad)
    bool has_disp = false;
  };
  std::vector<Step> steps;
  int current_increment = 0;
  bool capacity_reached = false;
  int capacity_increment = 0;  // the increment in which the engine announced the stop
  bool have_centre = false;
  float centre[2] = {};
};

RunRecord& Record() {
  static RunRecord record;
  return record;
}

void OnMessage(const int* severity, const char* text) {
  const std::string t = text != nullptr ? text : "";
  if (t.find("Ultimate axial capacity") != std::string::npos) {
    Record().capacity_reached = true;
    Record().capacity_increment = Record().current_increment;
  }
  if (Record().console != nullptr) Record().console->message(*severity, t);
}

void OnCreateIncrement(const int* increment) {
  RunRecord& r = Record();
  r.current_increment = *increment;
  if (r.console != nullptr) r.console->progress(*increment, r.total_increments);
}

RunRecord::Step& StepOf(int increment) {
  RunRecord& r = Record();
  if (r.steps.empty() || r.steps.back().increment != increment) {
    r.steps.emplace_back();
    r.steps.back().increment = increment;
  }
  return r.steps.back();
}

void OnStiffnessMatrix(const float* grmat) {
  std::memcpy(Record().grmat, grmat, sizeof Record().grmat);
  Record().have_stiffness = true;
}

void OnCapLoads(const float* fx, const float* fy, const float* fz, const float* mx, const float* my,
                const float* mz) {
  RunRecord::Step& s = StepOf(Record().current_increment);
  const float v[6] = {*fx, *fy, *fz, *mx, *my, *mz};
  std::memcpy(s.load, v, sizeof v);
}

void OnCapDisplacements(const float* dx, const float* dy, const float* dz, const float* rx, const float* ry,
                        const float* rz) {
  RunRecord::Step& s = StepOf(Record().current_increment);
  const float v[6] = {*dx, *dy, *dz, *rx, *ry, *rz};
  std::memcpy(s.disp, v, sizeof v);
  s.has_disp = true;
}

void OnCentre(const float* x, const float* y) {
  Record().have_centre = true;
  Record().centre[0] = *x;
  Record().centre[1] = *y;
}

// ---- Paths ------------------------------------------------------------------------
std::string Stem(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  const std::size_t dot = path.find_last_of('.');
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) return path.substr(0, dot);
  return path;
}

std::string BaseName(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool Readable(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return static_cast<bool>(in);
}

// The engine's fixed-length path form: 260 characters, blank-padded.
std::string Padded260(const std::string& path) {
  std::string p = path.substr(0, 260);
  p.resize(260, ' ');
  return p;
}

// Lines of the LOG that tell what went wrong while the model was read.
std::vector<std::string> ReaderProblems(const std::string& log_path) {
  std::vector<std::string> problems;
  std::ifstream in(log_path, std::ios::binary);
  std::string line;
  bool reading = false;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.rfind("Reading data from TMW file: ", 0) == 0) reading = true;
    if (!reading) continue;
    const bool error_line = line.rfind("Error", 0) == 0 || line.rfind("Input error", 0) == 0 ||
                            line.rfind("[Error] ", 0) == 0 || line.find("Error reading") != std::string::npos;
    if (error_line) problems.push_back(line.rfind("[Error] ", 0) == 0 ? line.substr(8) : line);
  }
  return problems;
}

struct Options {
  std::string command, model, out_dir, xml, txt, log;
  bool no_txt = false, no_csv = false, keep_flags = false, quiet = false;
  bool no_warnings = false;
  bool corrected_mechanics = false;  // --mechanics corrected
  std::string load_cases;  // the CSV file of load cases, if any
};

bool ParseArguments(int argc, char** argv, Options& o, std::string& why) {
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    auto next = [&](std::string& into) {
      if (i + 1 >= argc) {
        why = "option " + a + " needs a value";
        return false;
      }
      into = argv[++i];
      return true;
    };
    if (a == "--out-dir" || a == "-o") {
      if (!next(o.out_dir)) return false;
    } else if (a == "--xml") {
      if (!next(o.xml)) return false;
    } else if (a == "--txt") {
      if (!next(o.txt)) return false;
    } else if (a == "--log") {
      if (!next(o.log)) return false;
    } else if (a == "--no-txt") {
      o.no_txt = true;
    } else if (a == "--no-csv") {
      o.no_csv = true;
    } else if (a == "--keep-flags") {
      o.keep_flags = true;
    } else if (a == "--quiet" || a == "-q") {
      o.quiet = true;
    } else if (a == "--no-warnings") {
      o.no_warnings = true;
    } else if (a == "--mechanics") {
      // ---- the host's choice of mechanics ----
      std::string mode;
      if (!next(mode)) return false;
      if (mode != "as-defined" && mode != "corrected") {
        why = "--mechanics takes as-defined or corrected, not " + mode;
        return false;
      }
      o.corrected_mechanics = mode == "corrected";
    } else if (a == "--load-cases") {
      if (!next(o.load_cases)) return false;
    } else if (!a.empty() && a[0] == '-') {
      why = "unknown option " + a;
      return false;
    } else if (o.command.empty()) {
      o.command = a;
    } else if (o.model.empty()) {
      o.model = a;
    } else {
      why = "unexpected argument " + a;
      return false;
    }
  }
  if (o.command != "run" && o.command != "check") {
    why = o.command.empty() ? "no command given" : "unknown command " + o.command;
    return false;
  }
  if (o.model.empty()) {
    why = "no model file given";
    return false;
  }
  return true;
}

std::string Fixed(double v, int width, int decimals) {
  // A value that rounds to zero prints as 0, not as "-0.000".
  if (std::fabs(v) < 0.5 * std::pow(10.0, -decimals)) v = 0.0;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%*.*f", width, decimals, v);
  return buf;
}

// ---- The summary ------------------------------------------------------------------
// Whether the XML output holds the pile results of an increment: flags 27, 28 and 31
// together at every increment, or flag 35 at the last (added unless --keep-flags).
bool PileResultsAsked(const Options& o, const quellon_cli::ModelPeek& peek) {
  if (!peek.found_flags || !o.keep_flags) return true;
  const auto set = [&](int flag) { return peek.flags[static_cast<std::size_t>(flag - 1)] != 0; };
  return set(35) || (set(27) && set(28) && set(31));
}

// The stop at the group's axial capacity, in the host's words: the engine's own message
// speaks of a single pile, and the summary places the stop between two loads on the cap.
std::string CapacitySummary(const RunRecord& r) {
  const int k = r.capacity_increment;
  std::string line = "  Axial capacity of the group reached at increment " + std::to_string(k);
  const RunRecord::Step* before = nullptr;
  const RunRecord::Step* at = nullptr;
  for (const RunRecord::Step& s : r.steps) {
    if (s.increment == k - 1) before = &s;
    if (s.increment == k) at = &s;
  }
  if (at != nullptr && (before != nullptr || k == 1)) {
    const double from = before != nullptr ? static_cast<double>(before->load[2]) : 0.0;
    line += ", between the vertical loads Fz = " + Fixed(from, 0, 1) + " kN and " +
            Fixed(static_cast<double>(at->load[2]), 0, 1) + " kN on the cap";
  }
  return line + ".";
}

void PrintSummary(Console& c, const Options& o, const quellon_cli::ModelPeek& peek,
                  const quellon_cli::RunResults& results) {
  const RunRecord& r = Record();
  c.print("");
  c.print("Summary of " + BaseName(o.model));
  if (peek.found_counts) {
    c.print("  " + std::to_string(peek.piles) + " piles of " + std::to_string(peek.elements) + " elements, " +
            std::to_string(peek.increments) + (peek.increments > 1 ? " increments (non-linear)" : " increment (linear)"));
  }
  if (o.corrected_mechanics) c.print("  mechanics: corrected");
  if (r.have_centre)
    c.print("  centre of rotation: X = " + Fixed(r.centre[0], 0, 3) + " m, Y = " + Fixed(r.centre[1], 0, 3) + " m");

  const RunRecord::Step* last = nullptr;
  for (const RunRecord::Step& s : r.steps)
    if (s.has_disp) last = &s;
  if (last != nullptr) {
    c.print("");
    c.print("  Cap movement after increment " + std::to_string(last->increment) + " (external axes):");
    c.print("           X (mm)     Y (mm)     Z (mm)  about X (mrad)  about Y (mrad)  about Z (mrad)");
    c.print("     " + Fixed(last->disp[0] * 1000.0, 10, 3) + " " + Fixed(last->disp[1] * 1000.0, 10, 3) + " " +
            Fixed(last->disp[2] * 1000.0, 10, 3) + " " + Fixed(last->disp[3] * 1000.0, 15, 4) + " " +
            Fixed(last->disp[4] * 1000.0, 15, 4) + " " + Fixed(last->disp[5] * 1000.0, 15, 4));
  } else {
    c.print("  Cap movement: not reported (the model's flags ask for no cap block; run without --keep-flags)");
  }

  if (r.have_stiffness) {
    c.print("");
    c.print("  Group stiffness, diagonal (last increment):");
    static const char* const kNames[6] = {"X (kN/m)", "Y (kN/m)", "Z (kN/m)", "about X (kNm/rad)",
                                          "about Y (kNm/rad)", "about Z (kNm/rad)"};
    for (int a = 0; a < 6; ++a) {
      char buf[96];
      std::snprintf(buf, sizeof buf, "    %-18s %14.5g", kNames[a], static_cast<double>(r.grmat[a + 6 * a]));
      c.print(buf);
    }
  }

  if (!PileResultsAsked(o, peek)) {
    // The model's own flags ask for no pile results.
    c.print("");
    c.print("  Pile head loads: not reported (the model's flags ask for no pile results; run without --keep-flags)");
  } else {
    quellon_cli::PrintPileResults(c, results);
  }

  if (peek.increments > 1) {
    c.print("");
    c.print("  Load against movement by increment:");
    c.print("    Incr      Fx (kN)      Fy (kN)      Fz (kN)     X (mm)     Y (mm)     Z (mm)");
    for (const RunRecord::Step& s : r.steps) {
      if (!s.has_disp) continue;
      char buf[160];
      std::snprintf(buf, sizeof buf, "    %4d %12.1f %12.1f %12.1f %10.3f %10.3f %10.3f", s.increment, s.load[0], s.load[1],
                    s.load[2], s.disp[0] * 1000.0, s.disp[1] * 1000.0, s.disp[2] * 1000.0);
      c.print(buf);
    }
    c.print("");
    if (r.capacity_reached)
      c.print(CapacitySummary(r));
    else
      c.print("  Axial capacity not reached under the full load.");
  }
}

// After a failed run or an unreadable model: the temporaries go, and the message says
// what became of the earlier outputs and where the LOG of this attempt is.
std::string FailedRunNote(const quellon_cli::OutputSet& outputs) {
  const std::string kept = quellon_cli::DiscardOutputs(outputs);
  return "earlier outputs are left as they were; " +
         (kept.empty() ? std::string("no LOG was written") : "the LOG of this run is " + kept);
}

int Check(Console& c, const Options& o) {
  std::string log = o.log;
  std::string temporary;
  // ---- A case file is checked as a run reads it.
  if (!o.load_cases.empty()) {
    const quellon_cli::LoadCaseList cases = quellon_cli::ReadLoadCases(o.load_cases);
    if (!cases.problem.empty()) {
      std::fprintf(stderr, "quellon: %s\n", cases.problem.c_str());
      return kExitUsage;
    }
    c.print(o.load_cases + ": " + std::to_string(cases.cases.size()) + " load case" +
            (cases.cases.size() > 1 ? "s" : "") + " read without a problem");
  }
  // ---- Output safety: the LOG asked for must not be the model, and both must fit the engine.
  const std::string refused = quellon_cli::CheckPaths(o.model, {"", "", log}, false);
  if (!refused.empty()) {
    std::fprintf(stderr, "quellon: %s\n", refused.c_str());
    return kExitUsage;
  }
  if (log.empty()) {
    char pattern[] = "/tmp/quellon-check-XXXXXX";
    const int fd = mkstemp(pattern);
    if (fd >= 0) close(fd);
    temporary = pattern;
    log = temporary;
  }
  QuellonCreateLOGFile(log.c_str());
  // The default mode is the engine's own: only the corrected one is set, so that a run
  // without it writes exactly what it always wrote.
  if (o.corrected_mechanics) QuellonSetMechanics(1);
  const int ok = READTMWFILEDIRECT(Padded260(o.model).c_str());
  const int line = QuellonGetTMWLineNumber();
  QuellonCloseAllFiles();
  const std::vector<std::string> problems = ReaderProblems(log);
  if (!temporary.empty()) std::remove(temporary.c_str());
  if (ok == 1) {
    // ---- the engine's pre-run check and the warnings about the model ----
    const quellon_cli::ModelReview review = quellon_cli::ReviewModel(o.model);
    if (!o.no_warnings) quellon_cli::PrintWarnings(c, review.findings.warnings);
    if (!review.accepted) {
      quellon_cli::PrintErrors(c, o.model, review.findings.errors);
      std::fprintf(stderr, "quellon: %s reads, but a run would refuse it\n", o.model.c_str());
      return kExitBadModel;
    }
    const quellon_cli::ModelPeek peek = quellon_cli::PeekModel(o.model);
    const std::size_t warned = o.no_warnings ? 0 : review.findings.warnings.size();
    c.print(o.model + ": the model reads without a problem (" + std::to_string(peek.piles) + " piles, " +
            std::to_string(peek.elements) + " elements, " + std::to_string(peek.increments) + " increments)" +
            (warned > 0 ? ", with " + std::to_string(warned) + " warning" + (warned > 1 ? "s." : ".") : "."));
    return kExitOk;
  }
  for (const std::string& p : problems) c.print(o.model + ":" + std::to_string(line) + ": " + p);
  if (problems.empty()) c.print(o.model + ":" + std::to_string(line) + ": the engine refused the model");
  // ---- where the read went out of step, and what it noticed before ----
  const quellon_cli::EngineFindings findings = quellon_cli::TakeEngineFindings(o.model);
  if (!o.no_warnings) quellon_cli::PrintWarnings(c, findings.warnings);
  quellon_cli::PrintErrors(c, o.model, findings.errors);
  std::fprintf(stderr, "quellon: %s is not a valid model (reader stopped at line %d)\n", o.model.c_str(), line);
  return kExitBadModel;
}

int Run(Console& c, const Options& o) {
  const std::string dir = o.out_dir.empty() ? "" : o.out_dir + "/";
  const std::string stem = o.out_dir.empty() ? Stem(o.model) : dir + BaseName(Stem(o.model));
  quellon_cli::OutputSet final_paths{o.xml.empty() ? stem + ".xml" : o.xml,
                                     o.no_txt ? "" : (o.txt.empty() ? stem + ".txt" : o.txt),
                                     o.log.empty() ? stem + ".log" : o.log};
  // ---- Load cases: the whole file read before anything else, its first fault refused.
  quellon_cli::LoadCaseList cases;
  std::string cases_csv;
  if (!o.load_cases.empty()) {
    cases = quellon_cli::ReadLoadCases(o.load_cases);
    if (!cases.problem.empty()) {
      std::fprintf(stderr, "quellon: %s\n", cases.problem.c_str());
      return kExitUsage;
    }
    final_paths.cases = quellon_cli::CasesDocumentName(final_paths.xml);
    if (!o.no_csv) cases_csv = quellon_cli::CasesCsvName(final_paths.xml);
  }
  // ---- Output safety: refuse before anything is opened; the engine writes temporaries.
  std::string refused = quellon_cli::CheckPaths(o.model, final_paths, true);
  if (refused.empty() && !o.out_dir.empty()) refused = quellon_cli::MakeFolder(o.out_dir);
  if (refused.empty()) refused = quellon_cli::CheckFolders(final_paths);
  if (refused.empty() && !o.load_cases.empty())
    refused = quellon_cli::CheckCasesInput(o.load_cases, final_paths, cases_csv);
  if (!refused.empty()) {
    std::fprintf(stderr, "quellon: %s\n", refused.c_str());
    return kExitUsage;
  }
  const std::string xml = quellon_cli::TemporaryName(final_paths.xml);
  const std::string txt = final_paths.txt.empty() ? "" : quellon_cli::TemporaryName(final_paths.txt);
  const std::string log = quellon_cli::TemporaryName(final_paths.log);

  const quellon_cli::ModelPeek peek = quellon_cli::PeekModel(o.model);
  RunRecord& r = Record();
  r.console = &c;
  r.total_increments = peek.increments;

  if (QuellonCreateLOGFile(log.c_str()) != 1)
    c.message(1, "cannot create the LOG file " + final_paths.log + "; running without it");
  QuellonSetCreateIncrementCallback(&OnCreateIncrement);
  QuellonSetStiffnessMatrixCallback(&OnStiffnessMatrix);
  QuellonSetPileCapLoadsCallback(&OnCapLoads);
  QuellonSetPileCapDisplacementsCallback(&OnCapDisplacements);
  QuellonSetPileCapCentreOfRotationCallback(&OnCentre);
  QuellonSetProjectMessageCallback(&OnMessage);
  // The default mode is the engine's own: only the corrected one is set, so that a run
  // without it writes exactly what it always wrote.
  if (o.corrected_mechanics) QuellonSetMechanics(1);

  c.print("Reading " + o.model);
  if (READTMWFILEDIRECT(Padded260(o.model).c_str()) != 1) {
    const int line = QuellonGetTMWLineNumber();
    QuellonCloseAllFiles();
    for (const std::string& p : ReaderProblems(log)) c.print(o.model + ":" + std::to_string(line) + ": " + p);
    // ---- where the read went out of step, and what it noticed before ----
    const quellon_cli::EngineFindings findings = quellon_cli::TakeEngineFindings(o.model);
    if (!o.no_warnings) quellon_cli::PrintWarnings(c, findings.warnings);
    quellon_cli::PrintErrors(c, o.model, findings.errors);
    std::fprintf(stderr, "quellon: %s is not a valid model (reader stopped at line %d); %s\n", o.model.c_str(), line,
                 FailedRunNote(final_paths).c_str());
    return kExitBadModel;
  }
  // ---- the warnings about the model, before the run and again in the summary; the
  // engine's check is silent, so the run's documents are what they are without it ----
  std::vector<quellon_cli::Warning> warnings;
  if (!o.no_warnings) {
    warnings = quellon_cli::ReviewModel(o.model).findings.warnings;
    quellon_cli::PrintWarnings(c, warnings);
  }
  if (!o.keep_flags && peek.found_flags) {
    int flags[40];
    for (int i = 0; i < 40; ++i) flags[i] = peek.flags[static_cast<std::size_t>(i)];
    for (const int f : {25, 27, 28, 31, 35}) flags[f - 1] = 1;
    QuellonSetProjectFlags(flags, 40);
  }

  if (!cases.cases.empty()) {
    const std::string problem =
        quellon_cli::SendLoadCases(cases.cases, quellon_cli::TemporaryName(final_paths.cases));
    if (!problem.empty()) {
      QuellonCloseAllFiles();
      std::fprintf(stderr, "quellon: %s; %s\n", problem.c_str(), FailedRunNote(final_paths).c_str());
      return kExitRunFailed;
    }
  }

  const int result = txt.empty() ? QuellonRunAnalysis1(xml.c_str()) : QuellonRunAnalysis2(xml.c_str(), txt.c_str());
  c.finish_progress();
  // The closing messages of the files are the host's own doing, not news of the run: the
  // message function stays registered (clearing it would put an error in the LOG) and
  // stops showing them.
  r.console = nullptr;
  QuellonCloseAllFiles();
  if (result != 1) {
    std::fprintf(stderr, "quellon: the analysis failed; %s\n", FailedRunNote(final_paths).c_str());
    return kExitRunFailed;
  }
  const std::string moved = quellon_cli::CommitOutputs(final_paths);
  if (!moved.empty()) {
    std::fprintf(stderr, "quellon: %s\n", moved.c_str());
    return kExitRunFailed;
  }
  const quellon_cli::RunResults results = quellon_cli::ReadRunResults(final_paths.xml);
  if (!results.ok) c.message(1, "cannot read back the XML output " + final_paths.xml + ": " + results.problem);
  PrintSummary(c, o, peek, results);
  if (!o.no_warnings && results.ok) {
    for (quellon_cli::Warning& w : quellon_cli::PostRunWarnings(results)) warnings.push_back(std::move(w));
  }
  quellon_cli::PrintWarningSummary(c, warnings);  // the warnings, listed again with those of the run
  std::string outputs =
      final_paths.xml + (final_paths.txt.empty() ? "" : ", " + final_paths.txt) + ", " + final_paths.log;
  if (!final_paths.cases.empty()) quellon_cli::ReportLoadCases(c, final_paths.cases, cases_csv, outputs);
  if (!o.no_csv && results.ok) {
    const quellon_cli::CsvOutcome csv = quellon_cli::WriteResultCsv(results, Stem(final_paths.xml));
    if (!csv.notes.empty()) c.print("");
    for (const std::string& note : csv.notes) c.print("  " + note);
    if (!csv.problem.empty()) c.message(1, csv.problem);
    for (const std::string& path : csv.written) outputs += ", " + path;
  }
  c.print("");
  c.print("Outputs: " + outputs);
  return kExitOk;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::fputs(kUsage, stdout);
    return kExitOk;
  }
  if (argc >= 2 && std::strcmp(argv[1], "--version") == 0) {
    const int v = QuellonGetVersion();
    std::printf("quellon %X.%02X (QuellonEngine, file version %d)\n", v / 256, v % 256, v);
    const std::string kernels = quellon_cli::LapackKernels();
    if (!kernels.empty()) std::printf("%s\n", kernels.c_str());
    return kExitOk;
  }
  Options o;
  std::string why;
  if (!ParseArguments(argc, argv, o, why)) {
    std::fprintf(stderr, "quellon: %s (try quellon --help)\n", why.c_str());
    return kExitUsage;
  }
  if (!Readable(o.model)) {
    std::fprintf(stderr, "quellon: cannot read the model file %s\n", o.model.c_str());
    return kExitBadModel;
  }
  Console console;
  console.set_quiet(o.quiet);
  return o.command == "check" ? Check(console, o) : Run(console, o);
}
