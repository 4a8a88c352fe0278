// quellon: the command-line host of QuellonEngine. It uses the engine only through its
// C API, as any host application does: it reads a text model file, runs the analysis,
// shows the engine's messages and progress, and prints a summary an engineer reads first.

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "console.h"
#include "model_peek.h"
#include "platform.h"
#include "quellon.h"
#include "xml_scan.h"

namespace {

using quellon_cli::Console;

constexpr int kExitOk = 0;
constexpr int kExitRunFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitBadModel = 3;

const char* const kUsage =
    "usage: quellon run MODEL.tmw [options]\n"
    "       quellon check MODEL.tmw [--log FILE]\n"
    "       quellon --help | --version\n"
    "\n"
    "run      reads the model, runs the analysis and writes MODEL.xml, MODEL.txt and\n"
    "         MODEL.log beside it, then prints a summary.\n"
    "check    reads the model only and reports each problem with the line of the file\n"
    "         where the reader stopped.\n"
    "\n"
    "options of run:\n"
    "  --out-dir DIR   write the outputs into DIR (named after the model)\n"
    "  --xml FILE      the XML output\n"
    "  --txt FILE      the TXT report\n"
    "  --log FILE      the LOG file\n"
    "  --no-txt        no TXT report\n"
    "  --keep-flags    report exactly what the model's flags ask for; by default the\n"
    "                  cap block of every increment (flag 25) and the complete report of\n"
    "                  the last increment (flag 35) are added, which the summary reads\n"
    "  --quiet         show only warnings, errors and the summary\n";

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
  bool no_txt = false, keep_flags = false, quiet = false;
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
    } else if (a == "--keep-flags") {
      o.keep_flags = true;
    } else if (a == "--quiet" || a == "-q") {
      o.quiet = true;
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
void PrintSummary(Console& c, const Options& o, const quellon_cli::ModelPeek& peek, const std::string& xml) {
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

  const std::vector<quellon_cli::PileHeadLoads> heads = quellon_cli::ScanPileHeadLoads(xml);
  c.print("");
  if (heads.empty()) {
    c.print("  Pile head loads: not in the XML output (reported at the last increment with flag 35,");
    c.print("  or at every increment with flags 27, 28 and 31)");
  } else {
    c.print("  Loads at the pile heads (kN, kNm):");
    c.print("    Pile          Fx          Fy          Fz          Mx          My          Mz  Name");
    for (const quellon_cli::PileHeadLoads& h : heads) {
      char buf[256];
      std::snprintf(buf, sizeof buf, "    %4d %11.2f %11.2f %11.2f %11.2f %11.2f %11.2f  %s", h.pile, h.fx, h.fy, h.fz,
                    h.mx, h.my, h.mz, h.name.c_str());
      c.print(buf);
    }
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
    const quellon_cli::ModelPeek peek = quellon_cli::PeekModel(o.model);
    c.print(o.model + ": the model reads without a problem (" + std::to_string(peek.piles) + " piles, " +
            std::to_string(peek.elements) + " elements, " + std::to_string(peek.increments) + " increments).");
    return kExitOk;
  }
  for (const std::string& p : problems) c.print(o.model + ":" + std::to_string(line) + ": " + p);
  if (problems.empty()) c.print(o.model + ":" + std::to_string(line) + ": the engine refused the model");
  std::fprintf(stderr, "quellon: %s is not a valid model (reader stopped at line %d)\n", o.model.c_str(), line);
  return kExitBadModel;
}

int Run(Console& c, const Options& o) {
  const std::string dir = o.out_dir.empty() ? "" : o.out_dir + "/";
  const std::string stem = o.out_dir.empty() ? Stem(o.model) : dir + BaseName(Stem(o.model));
  if (!o.out_dir.empty()) quellon_cli::MakeDirectory(o.out_dir);
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
    std::fprintf(stderr, "quellon: %s is not a valid model (reader stopped at line %d)\n", o.model.c_str(), line);
    return kExitBadModel;
  }
  if (!o.keep_flags && peek.found_flags) {
    int flags[40];
    for (int i = 0; i < 40; ++i) flags[i] = peek.flags[static_cast<std::size_t>(i)];
    flags[25 - 1] = 1;
    flags[35 - 1] = 1;
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
  PrintSummary(c, o, peek, xml);
  c.print("");
  c.print("Outputs: " + xml + (txt.empty() ? "" : ", " + txt) + ", " + log);
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
