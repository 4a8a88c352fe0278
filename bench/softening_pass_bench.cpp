// The passes over the N by N matrices between two factorisations of a non-linear run, on
// 50 piles of 50 elements (N = 10,050, two matrices of 400 MB): the soil movements (G t
// through the softened G of the system solved) and the next system GD, as two passes or
// as one; and the system's first formation into fresh pages. The decisions are made up: every column softened, a tenth of the unknowns
// released and a few restored, as in a run well past first yield.
//
//   softening_pass_bench [--benchmark_filter=...]
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/workspace.h"
#include "solution/softened_flexibility.h"
#include "solution/solve.h"

namespace quellon {
namespace {

constexpr int kPiles = 50;
constexpr int kElements = 50;

struct Fixture {
  Engine e;
  int N = 0;
  std::vector<float> t, out, factor;
  std::vector<int> released_at, last_op_at, touched;

  Fixture() {
    e.foundation.NumberOfElements = kElements;
    CreatePiles(e, kPiles);
    e.actions.NumberOfIncrements = 5;
    e.project.NonLinear = 1;
    CreateWorkspace(e);
    Workspace& w = e.ws;
    N = w.G.rows();
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> u(0.1f, 1.0f);
    for (int j = 1; j <= N; ++j) {
      float* g = w.G.col(j);
      for (int i = 0; i < N; ++i) g[i] = 1e-3f / static_cast<float>(1 + (i > j - 1 ? i - j + 1 : j - 1 - i));
      std::fill(w.system.GD.col(j), w.system.GD.col(j) + N, 0.0f);
    }
    for (int c = 1; c <= w.D.cols(); ++c)
      for (int r = 1; r <= w.D.rows(); ++r) w.D(r, c) = 1e-4f;
    t.resize(static_cast<std::size_t>(N));
    out.resize(static_cast<std::size_t>(N));
    factor.resize(static_cast<std::size_t>(N));
    released_at.assign(static_cast<std::size_t>(N), 0);
    last_op_at.assign(static_cast<std::size_t>(N), 0);
    int order = 0;
    for (int c = 1; c <= N; ++c) {
      const auto k = static_cast<std::size_t>(c - 1);
      t[k] = u(rng);
      factor[k] = u(rng);
      if (rng() % 10 == 0) released_at[k] = last_op_at[k] = ++order;
      else if (rng() % 50 == 0) last_op_at[k] = ++order;
      if (last_op_at[k] != 0) touched.push_back(c);
    }
    // The decisions kept: those of the system solved, for the product.
    for (int c = 1; c <= N; ++c) {
      const auto k = static_cast<std::size_t>(c - 1);
      w.SoftFactor(c) = factor[k];
      w.SoftReleasedAt(c) = released_at[k];
      w.SoftChangedAt(c) = last_op_at[k];
    }
    w.system.MatrixFormed(true);
  }
  SofteningDecisions Next() const {
    return {factor.data(), released_at.data(), last_op_at.data(), touched.data(), static_cast<int>(touched.size())};
  }
};

Fixture& Shared() {
  static Fixture f;
  return f;
}

void BM_ProductThenRebuild(benchmark::State& state) {
  Fixture& f = Shared();
  const SofteningDecisions next = f.Next();
  for (auto _ : state) {
    SoftenedFlexibilityTimes(f.e.ws, f.t.data(), f.out.data(), nullptr);
    RebuildSystem(f.e.ws, next);
    benchmark::DoNotOptimize(f.out.data());
  }
}

void BM_OnePass(benchmark::State& state) {
  Fixture& f = Shared();
  const SofteningDecisions next = f.Next();
  for (auto _ : state) {
    SoftenedFlexibilityTimes(f.e.ws, f.t.data(), f.out.data(), &next);
    benchmark::DoNotOptimize(f.out.data());
  }
}

void BM_ProductAlone(benchmark::State& state) {
  Fixture& f = Shared();
  for (auto _ : state) {
    SoftenedFlexibilityTimes(f.e.ws, f.t.data(), f.out.data(), nullptr);
    benchmark::DoNotOptimize(f.out.data());
  }
}

// The system's first formation, GD = G + D, into fresh pages as in a run's first increment.
void BM_FirstFormation(benchmark::State& state) {
  Fixture& f = Shared();
  Workspace& w = f.e.ws;
  for (auto _ : state) {
    state.PauseTiming();
    w.system.GD.release();
    Create2DRealMatrix(f.e, w.system.GD, f.N, f.N);
    state.ResumeTiming();
    FormSystemMatrix(w);
  }
  w.system.MatrixFormed(true);
}

BENCHMARK(BM_ProductThenRebuild)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_OnePass)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_ProductAlone)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_FirstFormation)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

}  // namespace
}  // namespace quellon

BENCHMARK_MAIN();
