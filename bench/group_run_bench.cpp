// Whole analyses of square groups of identical vertical piles, timed phase by phase.
//
// Each case builds a group of P piles at 3 m spacing in a square grid (the last row
// partly filled when P is not a square), n elements per pile, in two layers of clay over
// a rigid layer, and runs it through RunAnalysis with the XML output only: linear (one
// increment) or non-linear (five), with or without a torque on the cap (a torque brings
// in the torsion between near piles), by the LAPACK route or the engine's own LU route.
//
// For each case it prints N, the wall time of every phase of the run (from the engine's
// phase timer), the time of each solve, the peak resident memory of the process during
// the run (VmHWM, reset before each case) and, on the same matrix G + D in the same
// process, the time of one SGESV call alone. "run/sgesv" is the whole run over that
// call; "peak/N2" is the peak over one N by N single-precision matrix.
//
//   group_run_bench [--piles 4,25,50,100] [--elements 20,50] [--mode linear,nonlinear]
//                   [--torque 0,1] [--route lapack,lu] [--increments 5] [--no-alone]
//                   [--threads T]
//
// Every combination of the lists is run, smallest first. --no-alone skips the separate
// SGESV call (it assembles the matrix a second time). The table goes to standard output;
// the engine's own "Increment" lines are silenced.
#include <fcntl.h>
#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/phase_timer.h"
#include "engine/run_analysis.h"
#include "engine/workspace.h"
#include "lapack_kernels.h"
#include "square_group.h"
#include "soil/soil.h"
#include "solution/lapack.h"
#include "solution/solution.h"
#include "solution/solve.h"

namespace quellon {
namespace {

struct Case {
  int piles = 4;
  int elements = 20;
  bool nonlinear = false;
  bool torque = false;
  bool lu = false;
  int increments = 5;  // of a non-linear run
};

// ---- The model ----------------------------------------------------------------------

void BuildModel(Engine& e, const Case& c) {
  FillSquareClayGroup(e, c.piles, c.elements);

  Project& pr = e.project;
  pr.NonLinear = c.nonlinear ? 1 : 0;
  pr.Rs = pr.Rb = pr.Rl = pr.Rt = 0.8f;
  pr.AutoNq = 1;
  pr.InteractionFlag = 1;
  pr.ElasticUnloading = 1;
  // The reports of a usual run: the cap block every increment, the element tables of
  // the piles, the summary of the increments; no debugging dumps.
  for (int f : {2, 7, 17, 19, 23, 25, 27, 28, 29, 31, 35, 36, 37}) pr.Flags(f) = 1;
  pr.Flags(17) = 0;
  pr.Flags(16) = c.lu ? 0 : 1;
  pr.DynamicModel = pr.Flags(16);

  // Per pile: 1500 kN down, 40 kN along X, a moment about Y; a torque of 60 kNm a pile.
  // The non-linear runs take the load to well past the first yield in five steps.
  const float scale = static_cast<float>(c.piles);
  e.actions.Fz = 1500.0f * scale;
  e.actions.Fx = 40.0f * scale;
  e.actions.My = 30.0f * scale;
  e.actions.Mz = c.torque ? 60.0f * scale : 0.0f;
  e.actions.NumberOfIncrements = c.nonlinear ? c.increments : 1;
}

// ---- Memory ---------------------------------------------------------------------------

// Peak resident set of the process since the last reset, in bytes.
double PeakResidentBytes() {
  std::FILE* f = std::fopen("/proc/self/status", "r");
  if (f == nullptr) return 0.0;
  char line[256];
  double kb = 0.0;
  while (std::fgets(line, sizeof line, f) != nullptr) {
    if (std::strncmp(line, "VmHWM:", 6) == 0) kb = std::atof(line + 6);
  }
  std::fclose(f);
  return kb * 1024.0;
}

// Sets the peak back to the present resident set (Linux 4.0 and later).
void ResetPeak() {
  std::FILE* f = std::fopen("/proc/self/clear_refs", "w");
  if (f == nullptr) return;
  std::fputs("5", f);
  std::fclose(f);
}

// ---- One case ---------------------------------------------------------------------------

struct Result {
  Case c;
  int N = 0;
  int increments = 0;
  double phase[static_cast<int>(Phase::kCount)] = {};
  std::vector<double> solves;
  double total = 0.0;
  double peak = 0.0;
  double alone = -1.0;  // SGESV alone, s; negative when not measured
  int ok = 0;
};

// The solve times of the increments, taken from the timer at the start of each one.
PhaseTimer* g_timer = nullptr;
std::vector<double>* g_solve_marks = nullptr;

double SolveSeconds(const PhaseTimer& t) { return t.Seconds(Phase::kSolve) + t.Seconds(Phase::kFactorise); }

// Errors of the engine (a model too large for the memory, for one) go to standard error.
void OnMessage(const int* severity, const char* text) {
  if (*severity >= 2) std::fprintf(stderr, "engine: %s\n", text);
}

void OnCreateIncrement(const int*) {
  if (g_timer != nullptr && g_solve_marks != nullptr) {
    g_timer->Enter(Phase::kOther);  // bring the counts up to now
    g_solve_marks->push_back(SolveSeconds(*g_timer));
  }
}

Result RunCase(const Case& c, const std::filesystem::path& dir) {
  Result r;
  r.c = c;
  r.N = (4 * c.elements + 1) * c.piles;
  Engine e;
  BuildModel(e, c);
  PhaseTimer timer;
  std::vector<double> marks;
  g_timer = &timer;
  g_solve_marks = &marks;
  e.timer = &timer;
  e.callbacks.CreateIncrement = &OnCreateIncrement;
  e.project.MessageCallback = &OnMessage;
  const std::string xml = (dir / "bench.xml").string();

  ResetPeak();
  const auto start = std::chrono::steady_clock::now();
  r.ok = RunAnalysis(e, xml, std::nullopt);
  r.total = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  r.peak = PeakResidentBytes();
  timer.Enter(Phase::kOther);
  for (int p = 0; p < static_cast<int>(Phase::kCount); ++p) r.phase[p] = timer.Seconds(static_cast<Phase>(p));
  marks.push_back(SolveSeconds(timer));
  for (std::size_t i = 1; i < marks.size(); ++i) r.solves.push_back(marks[i] - marks[i - 1]);
  r.increments = static_cast<int>(r.solves.size());
  e.files.xml.close();
  g_timer = nullptr;
  g_solve_marks = nullptr;
  return r;
}

// The group's G + D assembled as a run assembles it, and one SGESV call on it with the
// six unit right-hand sides, timed alone.
double SgesvAlone(const Case& c) {
  Engine e;
  BuildModel(e, c);
  e.project.NonLinear = 0;
  e.actions.NumberOfIncrements = 1;
  if (CreateWorkspace(e) == 0) return -1.0;
  PrepareGroupGeometry(e);
  PileStiffnessesAllPiles(e);
  YamashitaVerticalStiffnessAverageAllPiles(e);
  for (int p = 1; p <= c.piles; ++p) {
    AssembleSoilFlexibility(e, p);
    AssemblePileFlexibility(e, p);
    BuildBoundaryConditionVectors(e, p);
  }
  const int N = NumberOfUnknowns(e);
  // The system matrix into GD, as the first solve forms it.
  Workspace& w = e.ws;
  FormSystemMatrix(w);
  std::vector<float> B(static_cast<std::size_t>(N) * 6);
  for (int m = 1; m <= 6; ++m) std::copy(w.UBCV.col(m), w.UBCV.col(m) + N, B.data() + static_cast<std::size_t>(m - 1) * N);
  std::vector<int> pivots(static_cast<std::size_t>(N));
  const auto start = std::chrono::steady_clock::now();
  const int info = LapackSolve(N, 6, w.system.GD.data(), N, pivots.data(), B.data(), N);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  ReleaseWorkspace(e);
  return info == 0 ? seconds : -1.0;
}

// ---- Output -------------------------------------------------------------------------------

void PrintHeader() {
  std::printf(
      "%4s %3s %6s %-4s %3s %-6s | %6s %6s %6s %6s %6s %6s | %-34s %7s | %6s %6s %6s %6s | %8s %8s %6s | "
      "%8s %7s\n",
      "P", "n", "N", "mode", "Mz", "route", "work", "geom", "own", "pairs", "tors", "D+UBCV", "solve of each increment",
      "factor", "result", "soften", "report", "other", "total", "sgesv", "ratio", "peak MiB", "peak/N2");
}

void PrintRow(const Result& r) {
  auto ph = [&r](Phase p) { return r.phase[static_cast<int>(p)]; };
  std::ostringstream solves;
  for (std::size_t i = 0; i < r.solves.size(); ++i) {
    char b[32];
    std::snprintf(b, sizeof b, i == 0 ? "%.2f" : "/%.2f", r.solves[i]);
    solves << b;
  }
  const double n2 = static_cast<double>(r.N) * r.N * 4.0;
  char alone[16] = "-", ratio[16] = "-";
  if (r.alone >= 0.0) {
    std::snprintf(alone, sizeof alone, "%.2f", r.alone);
    std::snprintf(ratio, sizeof ratio, "%.2f", r.total / r.alone);
  }
  std::printf(
      "%4d %3d %6d %-4s %3s %-6s | %6.2f %6.2f %6.2f %6.2f %6.2f %6.2f | %-34s %7.2f | %6.2f %6.2f %6.2f %6.2f | "
      "%8.2f %8s %6s | %8.0f %7.2f%s\n",
      r.c.piles, r.c.elements, r.N, r.c.nonlinear ? ("nl" + std::to_string(r.c.increments)).c_str() : "lin", r.c.torque ? "yes" : "no", r.c.lu ? "lu" : "lapack",
      ph(Phase::kWorkspace), ph(Phase::kGeometry), ph(Phase::kOwnBlocks), ph(Phase::kPairBlocks), ph(Phase::kTorsion),
      ph(Phase::kPileAndBCV), solves.str().c_str(), ph(Phase::kFactorise), ph(Phase::kResults), ph(Phase::kSoftening),
      ph(Phase::kReports), ph(Phase::kOther), r.total, alone, ratio, r.peak / (1024.0 * 1024.0), r.peak / n2,
      r.ok == 1 ? "" : "  (run failed)");
  std::fflush(stdout);
}

std::vector<int> Ints(const std::string& list) {
  std::vector<int> v;
  std::stringstream in(list);
  for (std::string item; std::getline(in, item, ',');) v.push_back(std::atoi(item.c_str()));
  return v;
}

std::vector<std::string> Words(const std::string& list) {
  std::vector<std::string> v;
  std::stringstream in(list);
  for (std::string item; std::getline(in, item, ',');) v.push_back(item);
  return v;
}

}  // namespace
}  // namespace quellon

std::string Kernels() {
  const std::string k = quellon_cli::LapackKernels();
  return k.empty() ? "LAPACK kernels not known" : k;
}

int main(int argc, char** argv) {
  using namespace quellon;
  std::vector<int> piles = {4, 25, 50, 100}, elements = {20, 50}, torques = {0, 1};
  std::vector<std::string> modes = {"linear", "nonlinear"}, routes = {"lapack"};
  bool alone = true;
  int increments = 5;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    const std::string next = i + 1 < argc ? argv[i + 1] : "";
    if (a == "--piles") piles = Ints(next), ++i;
    else if (a == "--elements") elements = Ints(next), ++i;
    else if (a == "--torque") torques = Ints(next), ++i;
    else if (a == "--mode") modes = Words(next), ++i;
    else if (a == "--route") routes = Words(next), ++i;
    else if (a == "--threads") omp_set_num_threads(std::atoi(next.c_str())), ++i;
    else if (a == "--increments") increments = std::atoi(next.c_str()), ++i;
    else if (a == "--no-alone") alone = false;
    else {
      std::fprintf(stderr, "unknown argument %s\n", a.c_str());
      return 2;
    }
  }

  const std::filesystem::path dir = std::filesystem::temp_directory_path() / ("quellon_bench_" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  // The engine writes "Increment i" to standard output; the table keeps it for itself.
  std::fflush(stdout);
  const int table = dup(1);
  const int null = open("/dev/null", O_WRONLY);

  std::vector<Case> cases;
  for (int n : elements)
    for (int P : piles)
      for (const std::string& m : modes)
        for (int t : torques)
          for (const std::string& r : routes) cases.push_back({P, n, m == "nonlinear", t != 0, r == "lu", increments});
  std::stable_sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) {
    return (4 * a.elements + 1) * a.piles < (4 * b.elements + 1) * b.piles;
  });

  std::FILE* out = fdopen(table, "w");
  std::fprintf(out, "threads %d; times in s; %s\n", omp_get_max_threads(), Kernels().c_str());
  std::fflush(out);
  for (const Case& c : cases) {
    dup2(null, 1);
    Result r = RunCase(c, dir);
    if (alone) r.alone = SgesvAlone(c);
    std::fflush(stdout);
    dup2(table, 1);
    static bool header = false;
    if (!header) PrintHeader(), header = true;
    PrintRow(r);
  }
  std::filesystem::remove_all(dir);
  return 0;
}
