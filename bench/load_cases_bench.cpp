// A linear run with 100 load cases against the same run with its one load.
//
// The model is the linear group of P = 50 vertical piles of n = 50 elements (N = 10,050)
// at 3 m spacing in two clay layers over a rigid layer, by the LAPACK route, loaded down,
// along X and with a moment about Y; the 100 cases are combinations of such loads in
// several directions (no torque, as the run's own loads, so that every case comes from
// the run's one factorisation). Each iteration builds the model and runs it through
// RunAnalysis to an XML output, the cases to their own document. The second argument
// chooses the reports: 0 the pile cap block only (flag 25), 1 also the element tables of
// every pile (flags 27, 28, 31), which every case then writes as well.
//
// The CPU column is the time of every thread of the process, which a loaded machine
// stretches less than the wall time. Interleave the two and take medians:
//   load_cases_bench --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
//                    --benchmark_report_aggregates_only=true
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/run_analysis.h"
#include "square_group.h"

namespace quellon {
namespace {

constexpr int kPiles = 50;
constexpr int kElements = 50;

void BuildModel(Engine& e, bool pile_tables) {
  FillSquareClayGroup(e, kPiles, kElements);
  Project& pr = e.project;
  pr.InteractionFlag = 1;
  pr.AutoNq = 1;
  pr.Flags(25) = 1;
  if (pile_tables)
    for (int f : {27, 28, 31}) pr.Flags(f) = 1;
  pr.Flags(16) = pr.DynamicModel = 1;
  const float scale = static_cast<float>(kPiles);
  e.actions.Fz = 1500.0f * scale;
  e.actions.Fx = 40.0f * scale;
  e.actions.My = 30.0f * scale;
  e.actions.NumberOfIncrements = 1;
}

// 100 combinations: dead load with live, wind and braking in eight directions at
// several factors, acting at points about the group.
void AddCases(Engine& e, int count) {
  const float scale = static_cast<float>(kPiles);
  for (int i = 0; i < count; ++i) {
    const float angle = 0.7853982f * static_cast<float>(i % 8);
    const float factor = 1.0f + 0.05f * static_cast<float>(i / 8);
    Actions a;
    a.Fz = (1200.0f + 10.0f * static_cast<float>(i)) * scale;
    a.Fx = 50.0f * scale * factor * std::cos(angle);
    a.Fy = 50.0f * scale * factor * std::sin(angle);
    a.Mx = 20.0f * scale * factor * std::sin(angle);
    a.My = 20.0f * scale * factor * std::cos(angle);
    a.X = 0.5f * static_cast<float>(i % 5);
    a.Y = 0.5f * static_cast<float>(i % 3);
    a.NumberOfIncrements = 1;
    std::string name = "C";
    name += std::to_string(i + 1);
    e.load_cases.cases.push_back({name, a});
  }
}

void BM_LinearRun(benchmark::State& state) {
  const int cases = static_cast<int>(state.range(0));
  const bool pile_tables = state.range(1) != 0;
  const std::filesystem::path dir = std::filesystem::temp_directory_path();
  const std::string tag = std::to_string(cases) + "_" + std::to_string(state.range(1));
  for (auto _ : state) {
    Engine e;
    BuildModel(e, pile_tables);
    if (cases > 0) {
      AddCases(e, cases);
      e.load_cases.xml_path = (dir / ("quellon_bench_cases_" + tag + ".xml")).string();
    }
    // The engine's "Increment" line goes to /dev/null, not into the table.
    std::fflush(stdout);
    const int saved = dup(1);
    const int null = open("/dev/null", O_WRONLY);
    if (null >= 0) dup2(null, 1);
    const int result = RunAnalysis(e, (dir / ("quellon_bench_run_" + tag + ".xml")).string(), std::nullopt);
    std::fflush(stdout);
    if (saved >= 0) dup2(saved, 1);
    if (null >= 0) close(null);
    if (saved >= 0) close(saved);
    if (result != 1) state.SkipWithError("the run failed");
  }
  state.counters["cases"] = cases;
}

BENCHMARK(BM_LinearRun)
    ->ArgNames({"cases", "piles_block"})
    ->Args({0, 0})
    ->Args({100, 0})
    ->Args({0, 1})
    ->Args({100, 1})
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

}  // namespace
}  // namespace quellon

BENCHMARK_MAIN();
