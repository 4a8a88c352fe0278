#include "solution/soil_softening.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "solution_test_model.h"

namespace quellon {
namespace {

// Piles of 16 elements (enough for elastic unloading) with a workspace: G and D filled
// with distinct, well-conditioned values.
template <int Piles = 2>
struct SystemOf {
  static constexpr int n = 16, P = Piles, M = 4 * n + 1, N = M * P;
  Engine e;
  SystemOf() {
    e.foundation.NumberOfElements = n;
    EXPECT_EQ(CreatePiles(e, P), 1);
    e.actions.NumberOfIncrements = 3;
    e.project.NonLinear = 1;
    EXPECT_EQ(CreateWorkspace(e), 1);
    for (int j = 1; j <= N; ++j) {
      for (int i = 1; i <= N; ++i)
        e.ws.G(i, j) = 1e-3f * static_cast<float>(1 + (7 * i + 3 * j) % 11) + (i == j ? 1e-2f : 0.0f);
      // D has entries in the rows of the column's own pile only.
      const int r0 = PileBlockStart(M, j);
      for (int r = 1; r <= M; ++r) e.ws.D(r, j) = 1e-4f * static_cast<float>(1 + (r0 + r + 2 * j) % 5);
    }
  }
};
using System = SystemOf<>;

TEST(SofteningFactor, HyperbolicLawFloorsAtTheLimit) {
  EXPECT_EQ(SofteningFactor(-50.0f, -100.0f, 0.5f), 0.5625f);  // (1 - 0.25)^2
  EXPECT_EQ(SofteningFactor(1e6f, 1.0f, 0.0f), 1.0f);           // R = 0: elastic-perfectly plastic
  // Beyond the law's limit the floor, never a rising square ((1 - 2.7)^2 = 2.89); the floor
  // also where the square falls below it just short of the limit ((1 - 0.994)^2).
  EXPECT_EQ(SofteningFactor(300.0f, 100.0f, 0.9f), kMinimumSofteningFactor);
  EXPECT_EQ(SofteningFactor(99.5f, 100.0f, 0.999f), kMinimumSofteningFactor);
}

// The update done literally, one step after the other, with every release and restore
// written straight into the matrices: the softened G into G, from the elastic G0.
void StepByStepUpdate(Engine& e, const RealMatrix& G0, RealMatrix& G) {
  Workspace& w = e.ws;
  const Project& pr = e.project;
  const int n = e.foundation.NumberOfElements, P = e.foundation.NumberOfPiles, M = 4 * n + 1, N = M * P;
  // Row r of the tables of kind d (0 axial, 1 X, 2 Y, 3 torsion) and its unknown.
  auto unknown = [&](int d, int r) {
    const int per = d == 0 ? n + 1 : n, q = (r - 1) / per;
    return q * M + (d == 0 ? 0 : d * n + 1) + r - q * per;
  };
  RealVector* st[] = {&w.StressAxial, &w.StressX, &w.StressY, &w.StressTorsion};
  const RealVector* lim[] = {&w.LimitAxial, &w.LimitX, &w.LimitY, &w.LimitTorsion};
  const RealVector* inc[] = {nullptr, &w.StressXInc, &w.StressYInc};
  int* counts[] = {&w.YieldCountAxial, &w.YieldCountX, &w.YieldCountY, &w.YieldCountTorsion};
  for (int d = 0; d < 4; ++d)
    for (int r = 1; r <= (d == 0 ? n + 1 : n) * P; ++r) {
      const int c = unknown(d, r);
      const float R = d == 0 ? ((c - 1) % M + 1 == n + 1 ? pr.Rb : pr.Rs) : d == 3 ? pr.Rt : pr.Rl;
      const float f = SofteningFactor((*st[d])(r), (*lim[d])(r), R);
      for (int i = 1; i <= N; ++i) G(i, c) = G0(i, c) / f;
    }
  for (int j = 1; j <= N; ++j)
    for (int i = 1; i <= N; ++i) w.system.GD(i, j) = G(i, j) + PileFlexibility(w.D, i, j);
  auto release = [&](int c) {
    for (int i = 1; i <= N; ++i) w.system.GD(i, c) = w.system.GD(c, i) = G(i, c) = G(c, i) = 0.0f;
    w.system.GD(c, c) = G(c, c) = 1.0f;
  };
  auto yield = [&](int d, int r) {
    if (!w.Yielded(d + 1, r)) ++*counts[d];
    w.Yielded(d + 1, r) = 1;
    release(unknown(d, r));
  };
  for (int r = 1; r <= (n + 1) * P; ++r) {
    const int c = unknown(0, r);
    const bool base = (c - 1) % M + 1 == n + 1;
    if (std::fabs(w.StressAxial(r)) > std::fabs(w.LimitAxial(r)) || (base && w.StressAxial(r) < 0.0f)) {
      yield(0, r);
      if (!base) release(c + 3 * n + 1);
    }
  }
  float S = 0.0f;
  for (int d = 1; d <= 3; ++d) {
    std::vector<int> unloading(static_cast<std::size_t>(N) + 1);
    for (int r = 1; d < 3 && r <= n * P; ++r) {
      const int c = unknown(d, r), k = (r - 1) % n + 1;
      if (!(w.Yielded(d + 1, r) && pr.ElasticUnloading && n > 15)) continue;
      if (1 < k && k < n) S = (*inc[d])(r - 1) + (*inc[d])(r + 1);
      if (S * (*st[d])(r) >= 0.0f) continue;
      unloading[static_cast<std::size_t>(r)] = 1;
      (*st[d])(r) = 0.0f;
      for (int i = 1; i <= N; ++i) {
        w.system.GD(i, c) = G0(i, c) + PileFlexibility(w.D, i, c);
        w.system.GD(c, i) = G0(c, i) + PileFlexibility(w.D, c, i);
      }
    }
    for (int r = 1; r <= n * P; ++r) {
      const float x = std::fabs((*st[d])(r)), y = std::fabs((*lim[d])(r));
      if (x < y || std::fabs(x - y) < 1e-20f || unloading[static_cast<std::size_t>(r)]) {
        w.Yielded(d + 1, r) = 0;
      } else if (x > y) {
        yield(d, r);
        if (d == 3) release(unknown(3, r) - 3 * n - 1);
      }
    }
  }
}

// Releases and restores overlap in rows and columns, so the one-pass rebuild must leave
// every entry as the literal sequence does: bit for bit, over two increments, with G itself
// left elastic (a later increment never compounds a factor). Odd seeds have no elastic
// unloading; a few stresses sit exactly at their limits, where nothing yields.
TEST(SoilSoftening, OnePassRebuildMatchesTheStepByStepUpdate) {
  auto same = [](const auto& x, const auto& y) { return std::equal(x.data(), x.data() + x.count(), y.data()); };
  for (unsigned seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE(seed);
    System a, b;
    Workspace &wa = a.e.ws, &wb = b.e.ws;
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> stress(-150.0f, 150.0f), limit(0.0f, 120.0f), R(0.0f, 0.95f);
    Project& pr = a.e.project;
    pr.ElasticUnloading = seed % 2 == 0;
    for (float* r : {&pr.Rs, &pr.Rb, &pr.Rl, &pr.Rt}) *r = R(rng);
    b.e.project = pr;
    for (int r = 1; r <= a.N; ++r)
      for (int d = 1; d <= 4; ++d) wa.Yielded(d, r) = rng() % 2;
    for (int increment = 1; increment <= 2; ++increment) {
      for (RealVector* v : {&wa.StressAxial, &wa.StressX, &wa.StressY, &wa.StressTorsion, &wa.StressXInc, &wa.StressYInc})
        for (int r = 1; r <= a.N; ++r) (*v)(r) = stress(rng), wa.LimitAxial(r) = limit(rng), wa.LimitX(r) = limit(rng),
                                        wa.LimitY(r) = limit(rng), wa.LimitTorsion(r) = limit(rng);
      wa.StressAxial(2) = -wa.LimitAxial(2), wa.StressX(3) = wa.LimitX(3), wa.StressTorsion(5) = -wa.LimitTorsion(5);
      wb = wa;
      RealMatrix softened = wb.G;
      UpdateSoilFlexibility(a.e, increment);
      StepByStepUpdate(b.e, wb.G, softened);
      bool same_g = true;
      for (int j = 1; j <= a.N; ++j)
        for (int i = 1; i <= a.N; ++i)
          same_g = same_g && std::bit_cast<std::uint32_t>(SoftenedSoilFlexibility(wa, i, j)) ==
                                 std::bit_cast<std::uint32_t>(softened(i, j));
      EXPECT_TRUE(same_g && same(wa.G, wb.G) && same(wa.system.GD, wb.system.GD) && same(wa.Yielded, wb.Yielded));
      EXPECT_TRUE(std::equal(wa.StressX.data(), wa.StressX.data() + wa.StressX.size(), wb.StressX.data()));
      EXPECT_EQ(wa.YieldCountX + 10 * wa.YieldCountY + 100 * wa.YieldCountTorsion + 1000 * wa.YieldCountAxial,
                wb.YieldCountX + 10 * wb.YieldCountY + 100 * wb.YieldCountTorsion + 1000 * wb.YieldCountAxial);
    }
  }
}

// Decided from the increment's stresses before they reach the totals, the update forms the
// next system in the soil movements' pass over G, and takes effect after the totals: the
// same system, yield state and stresses as the update decided after the totals, and the
// soil movements of the softened G the increment solved, each row summed in column order.
// 64 piles make N = 4,160, enough for the pass to split the rows into bands.
TEST(SoilSoftening, UpdateDecidedEarlyFormsTheSameSystemInTheSoilMovementsPass) {
  using Big = SystemOf<64>;
  auto a = std::make_unique<Big>(), b = std::make_unique<Big>();
  Workspace &wa = a->e.ws, &wb = b->e.ws;
  std::mt19937 rng(11);
  std::uniform_real_distribution<float> stress(-150.0f, 150.0f), limit(0.0f, 120.0f);
  Project& pr = a->e.project;
  pr.ElasticUnloading = 1;
  pr.Rs = pr.Rb = pr.Rl = pr.Rt = 0.8f;
  b->e.project = pr;
  const GroupLayout g = LayoutOf(a->e);
  std::vector<float> t(Big::N), reference(Big::N);
  for (int increment = 1; increment <= 2; ++increment) {
    SCOPED_TRACE(increment);
    for (RealVector* v : {&wa.StressAxial, &wa.StressX, &wa.StressY, &wa.StressTorsion, &wa.StressAxialInc,
                          &wa.StressXInc, &wa.StressYInc, &wa.StressTorsionInc, &wa.LimitAxial, &wa.LimitX,
                          &wa.LimitY, &wa.LimitTorsion})
      for (int r = 1; r <= v->size(); ++r) (*v)(r) = v == &wa.LimitAxial || v == &wa.LimitX ? limit(rng) : stress(rng);
    for (float& x : t) x = stress(rng);
    wb = wa;
    // The soil movements through the softened G, row by row in column order.
    for (int i = 1; i <= Big::N; ++i) {
      float sum = 0.0f;
      for (int j = 1; j <= Big::N; ++j) sum = sum + SoftenedSoilFlexibility(wa, i, j) * t[static_cast<std::size_t>(j - 1)];
      reference[static_cast<std::size_t>(i - 1)] = sum;
    }
    AddMovementsToTotals(g, increment, wa);
    UpdateSoilFlexibility(a->e, increment);

    SoilUpdate next;
    ASSERT_TRUE(DecideSoilUpdate(b->e, increment, false, next));
    SoftenedSoilMovements(wb, t.data(), wb.SoilDispInc.data(), &next);
    EXPECT_TRUE(next.formed);
    AddMovementsToTotals(g, increment, wb);
    UpdateSoilFlexibility(b->e, increment, &next);

    auto same = [](const auto& x, const auto& y) {
      return x.count() == y.count() && std::memcmp(x.data(), y.data(), x.count() * sizeof(*x.data())) == 0;
    };
    EXPECT_TRUE(std::memcmp(reference.data(), wb.SoilDispInc.data(), reference.size() * sizeof(float)) == 0);
    EXPECT_TRUE(same(wa.system.GD, wb.system.GD) && same(wa.Yielded, wb.Yielded));
    for (auto m : {&Workspace::StressAxial, &Workspace::StressX, &Workspace::StressY, &Workspace::SoftFactor})
      EXPECT_TRUE(std::memcmp((wa.*m).data(), (wb.*m).data(), static_cast<std::size_t>((wa.*m).size()) * sizeof(float)) == 0);
    EXPECT_EQ(std::vector<int>({wa.YieldCountAxial, wa.YieldCountX, wa.YieldCountY, wa.YieldCountTorsion}),
              std::vector<int>({wb.YieldCountAxial, wb.YieldCountX, wb.YieldCountY, wb.YieldCountTorsion}));
  }
}

}  // namespace
}  // namespace quellon
