// Time to assemble the soil flexibility matrix G of a group of 100 piles of 20 elements,
// with and without torsion between near piles, on one thread and on all of them.
//
// The group is a 10 by 10 grid at 3 m spacing of 1 m piles, 20 m long, in two layers with
// the smoothed moduli and a rigid layer; every fifth pile is raked, so own blocks are
// rebuilt now and then. Under a torque each pile's torsion couples to the piles within
// 10 m. "ns/kernel" divides the time by the count of Mindlin evaluations.
#include <benchmark/benchmark.h>
#include <omp.h>

#include <chrono>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/workspace.h"
#include "soil/soil.h"
#include "soil/soil_matrices.h"

namespace quellon {
namespace {

constexpr int kSide = 10;
constexpr int kElements = 20;

void BuildGroup(Engine& e, float Mz) {
  CreateLayers(e, 2);
  Layer& top = e.borehole.Layers(1);
  top.DepthToTop = 0.0f;
  top.Ev = 20000.0f;
  top.dEv = 1000.0f;
  top.Eh = 15000.0f;
  top.dEh = 500.0f;
  top.Poisson = 0.3f;
  Layer& deep = e.borehole.Layers(2);
  deep.DepthToTop = 12.0f;
  deep.Ev = 80000.0f;
  deep.Eh = 60000.0f;
  deep.Poisson = 0.2f;
  e.borehole.LayerAveraging = 2;
  e.borehole.DepthToRigidLayer = 40.0f;
  CreatePiles(e, kSide * kSide);
  e.foundation.NumberOfElements = kElements;
  for (int p = 1; p <= kSide * kSide; ++p) {
    Pile& pile = e.foundation.Piles(p);
    pile.Length = 20.0f;
    pile.ShaftDiameter = pile.BaseDiameter = 1.0f;
    pile.RakeX = (p % 5 == 0) ? 8.0f : 0.0f;
    pile.SoilEntryX = pile.X = 3.0f * static_cast<float>((p - 1) % kSide);
    pile.SoilEntryY = pile.Y = 3.0f * static_cast<float>((p - 1) / kSide);
  }
  e.project.InteractionFlag = 1;
  e.actions.Mz = Mz;
  MakePileFrames(e.foundation);
  const int M = UnknownsPerPile(e);
  const int N = NumberOfUnknowns(e);
  Create2DRealMatrix(e, e.ws.G, N, N);
  Create2DRealMatrix(e, e.ws.soil_K, M, M);
  Create2DRealMatrix(e, e.ws.pair_K, M, M);
  YamashitaVerticalStiffnessAverageAllPiles(e);
}

// Mindlin evaluations of one assembly, by the rules of the blocks.
double KernelCalls(const Engine& e) {
  const int n = e.foundation.NumberOfElements;
  const int piles = e.foundation.NumberOfPiles;
  const InteractionRule rule = InteractionRuleOf(e);
  double calls = 0.0;
  for (int p = 1; p <= piles; ++p) {
    const Pile& pile = e.foundation.Piles(p);
    const bool rebuilt = p == 1 || !SameSoilBlock(pile, e.foundation.Piles(p - 1));
    if (rebuilt) calls += 2.0 * (n + 1) * (n + 1) + 2.0 * n * n + 1600.0 * n * n;
    for (int q = 1; q <= piles; ++q) {
      if (q == p) continue;
      const Pile& source = e.foundation.Piles(q);
      calls += 2.0 * (n + 1) * (n + 1);  // the block and its rigid layer correction
      if (TorsionBetweenPilesApplies(rule, SpacingOf(pile, source), source)) calls += 256.0 * n * n;
    }
  }
  return calls;
}

void AssembleGroup(benchmark::State& state, float Mz) {
  const int threads = static_cast<int>(state.range(0));
  // One group per torque, kept between runs: G alone is 262 MB.
  static Engine quiet, twisted;
  Engine& group = Mz == 0.0f ? quiet : twisted;
  if (group.foundation.NumberOfPiles == 0) BuildGroup(group, Mz);
  const int saved = omp_get_max_threads();
  omp_set_num_threads(threads);
  double seconds = 0.0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    for (int p = 1; p <= group.foundation.NumberOfPiles; ++p) {
      AssembleSoilFlexibility(group, p);
      group.project.ReferencePile = p;
    }
    benchmark::DoNotOptimize(group.ws.G.data());
    benchmark::ClobberMemory();
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  omp_set_num_threads(saved);
  const double calls = KernelCalls(group);
  state.counters["kernels"] = calls;
  state.counters["ns_per_kernel"] = seconds * 1e9 / (calls * static_cast<double>(state.iterations()));
}

void BM_AssembleG_NoTorque(benchmark::State& state) { AssembleGroup(state, 0.0f); }
void BM_AssembleG_WithTorque(benchmark::State& state) { AssembleGroup(state, 100.0f); }

BENCHMARK(BM_AssembleG_NoTorque)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_AssembleG_WithTorque)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
}  // namespace quellon

BENCHMARK_MAIN();
