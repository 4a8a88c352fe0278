// quellon: the command-line host of QuellonEngine. It uses the engine only through its
// C API, as any host application does: it reads a text model file, runs the analysis,
// shows the engine's messages and progress, and prints a summary an engineer reads first.
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "console.h"
#include "csv_output.h"
#include "model_check.h"
#include "model_peek.h"
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
    "       quellon check MODEL.tmw [--log FILE] [--no-warnings]\n"
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
    "\n"
    "options of run and check:\n"
    "  --no-warnings   no warnings about the model (misread numbers, values dropped,\n"
    "                  places where the method misleads); the exit status is the same\n";

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
  std::string capacity_message;
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
    Record().capacity_message = t;
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
void PrintSummary(Console& c, const Options& o, const quellon_cli::ModelPeek& peek,
                  const quellon_cli::RunResults& results) {
  const RunRecord& r = Record();
  c.print("");
  c.print("Summary of " + BaseName(o.model));
  if (peek.found_counts) {
    c.print("  " + std::to_string(peek.piles) + " piles of " + std::to_string(peek.elements) + " elements, " +
            std::to_string(peek.increments) + (peek.increments > 1 ? " increments (non-linear)" : " increment (linear)"));
  }
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

  quellon_cli::PrintPileResults(c, results);

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
      c.print("  Axial capacity reached: " + r.capacity_message);
    else
      c.print("  Axial capacity not reached under the full load.");
  }
}

int Check(Console& c, const Options& o) {
  std::string log = o.log;
  std::string temporary;
  if (log.empty()) {
    char pattern[] = "/tmp/quellon-check-XXXXXX";
    const int fd = mkstemp(pattern);
    if (fd >= 0) close(fd);
    temporary = pattern;
    log = temporary;
  }
  QuellonCreateLOGFile(log.c_str());
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
  if (!o.out_dir.empty()) mkdir(o.out_dir.c_str(), 0777);
  const std::string xml = o.xml.empty() ? stem + ".xml" : o.xml;
  const std::string txt = o.no_txt ? "" : (o.txt.empty() ? stem + ".txt" : o.txt);
  const std::string log = o.log.empty() ? stem + ".log" : o.log;

  const quellon_cli::ModelPeek peek = quellon_cli::PeekModel(o.model);
  RunRecord& r = Record();
  r.console = &c;
  r.total_increments = peek.increments;

  if (QuellonCreateLOGFile(log.c_str()) != 1)
    c.message(1, "cannot create the LOG file " + log + "; running without it");
  QuellonSetCreateIncrementCallback(&OnCreateIncrement);
  QuellonSetStiffnessMatrixCallback(&OnStiffnessMatrix);
  QuellonSetPileCapLoadsCallback(&OnCapLoads);
  QuellonSetPileCapDisplacementsCallback(&OnCapDisplacements);
  QuellonSetPileCapCentreOfRotationCallback(&OnCentre);
  QuellonSetProjectMessageCallback(&OnMessage);

  c.print("Reading " + o.model);
  if (READTMWFILEDIRECT(Padded260(o.model).c_str()) != 1) {
    const int line = QuellonGetTMWLineNumber();
    QuellonCloseAllFiles();
    for (const std::string& p : ReaderProblems(log)) c.print(o.model + ":" + std::to_string(line) + ": " + p);
    // ---- where the read went out of step, and what it noticed before ----
    const quellon_cli::EngineFindings findings = quellon_cli::TakeEngineFindings(o.model);
    if (!o.no_warnings) quellon_cli::PrintWarnings(c, findings.warnings);
    quellon_cli::PrintErrors(c, o.model, findings.errors);
    std::fprintf(stderr, "quellon: %s is not a valid model (reader stopped at line %d)\n", o.model.c_str(), line);
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

  const int result = txt.empty() ? QuellonRunAnalysis1(xml.c_str()) : QuellonRunAnalysis2(xml.c_str(), txt.c_str());
  c.finish_progress();
  // The closing messages of the files are the host's own doing, not news of the run.
  QuellonSetProjectMessageCallback(nullptr);
  QuellonCloseAllFiles();
  if (result != 1) {
    std::fprintf(stderr, "quellon: the analysis failed (see %s)\n", log.c_str());
    return kExitRunFailed;
  }
  const quellon_cli::RunResults results = quellon_cli::ReadRunResults(xml);
  if (!results.ok) c.message(1, "cannot read back the XML output " + xml + ": " + results.problem);
  PrintSummary(c, o, peek, results);
  if (!o.no_warnings && results.ok) {
    for (quellon_cli::Warning& w : quellon_cli::PostRunWarnings(results)) warnings.push_back(std::move(w));
  }
  quellon_cli::PrintWarningSummary(c, warnings);  // the warnings, listed again with those of the run
  std::string outputs = xml + (txt.empty() ? "" : ", " + txt) + ", " + log;
  if (!o.no_csv && results.ok) {
    const quellon_cli::CsvOutcome csv = quellon_cli::WriteResultCsv(results, Stem(xml));
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
