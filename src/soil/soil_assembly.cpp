// Assembly of the group's soil flexibility matrix G.
//
// A pile's own block goes through soil_K, which is kept from one pile to the next and
// rebuilt only when the pile differs in shape from the pile handled before it. The
// blocks between two piles depend on nothing that changes from one pile to the next, so
// the turn of the first pile writes them all. Pairs of piles alike in every respect the
// kernels read, at the same offset in plan, have the same block: the ordered pairs are
// grouped so, and each group's block is computed once, by one thread in a fixed order
// into that thread's own scratch matrix, and copied to every pair of the group. So G
// does not depend on the number of threads, and one pass costs one start of the
// threads, not one per pile. The torsion blocks between near piles depend on nothing
// else in a pair's block and take far longer than the rest of it, so they run as a
// second parallel loop of their own, over the groups that have one: the threads share
// that work evenly, and the phase timer sees it apart.
//
// A linear run forms its system in G's own storage, so G is gone when the soil
// movements want G t: the assembly keeps the distinct blocks for them where they are few
// beside G, and SoilFlexibilityTimes takes them from there or from the kernels again.
#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <omp.h>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/notify.h"
#include "engine/phase_timer.h"
#include "engine/result_checks.h"
#include "engine/utilities.h"
#include "soil/soil.h"
#include "soil/soil_matrices.h"

namespace quellon {

namespace {

// Kernel calls of the blocks between piles above which they are shared out: some tenths
// of a millisecond of work, well above the cost of starting the threads. (The torsion
// loop, of far heavier pairs, shares out above kParallelKernelCalls.)
constexpr long long kParallelPairCalls = 2048;

// Copies an M by M block into G at the rows of field pile p and the columns of source pile q.
// With plus_zero, every entry is written as x + 0, as the system G + D takes it off the
// piles' own rows (a -0 turned into +0), so that forming the system in G's storage has
// nothing left to do in these blocks.
void CopyBlock(const RealMatrix& block, const GroupLayout& layout, int p, int q, RealMatrix& G,
               bool plus_zero = false) {
  const int M = layout.M;
  const std::size_t bytes = static_cast<std::size_t>(M) * sizeof(float);
  for (int v = 1; v <= M; ++v) {
    float* to = &G(layout.PileStart(p) + 1, layout.PileStart(q) + v);
    const float* from = block.col(v);
    if (plus_zero) {
      for (int i = 0; i < M; ++i) to[i] = from[i] + 0.0f;
    } else {
      std::memcpy(to, from, bytes);
    }
  }
}

void CopyBlockOut(const RealMatrix& G, const GroupLayout& layout, int p, int q, RealMatrix& block) {
  const int M = layout.M;
  const std::size_t bytes = static_cast<std::size_t>(M) * sizeof(float);
  for (int v = 1; v <= M; ++v) {
    std::memcpy(block.col(v), &G(layout.PileStart(p) + 1, layout.PileStart(q) + v), bytes);
  }
}

// What a block holds as the check of G's rows reads it; the state matrix is left alone
// when the workspace has none of this model's shape.
bool HasBlockStates(const Workspace& w, int piles) {
  return w.SoilBlockState.rows() == piles && w.SoilBlockState.cols() == piles;
}
std::int32_t StateOf(const RealMatrix& block) {
  return FirstNonFinite(block.data(), block.count()) == block.count() ? kBlockFinite : kBlockNotFinite;
}
bool TorsionBlockFinite(const RealMatrix& block, int n) {
  for (int v = 3 * n + 2; v <= block.rows(); ++v)
    if (FirstNonFinite(block.col(v) + 3 * n + 1, static_cast<std::size_t>(n)) != static_cast<std::size_t>(n))
      return false;
  return true;
}

// A pile without rake has one transverse block for both directions.
bool Straight(const Pile& pile) { return IsZero(pile.RakeX) && IsZero(pile.RakeY); }

// The own block of pile p: transverse blocks (the first of which clears soil_K), axial
// and base block with its rigid layer correction, and torsion.
void BuildOwnSoilBlock(const SoilGround& g, const Pile& pile, const PileFrame& frame, int p, PhaseTimer* timer,
                       RealMatrix& soil_K) {
  if (Straight(pile)) {
    BuildTransverseSoilFlexibilityMatrices(g, pile, frame, soil_K);
  } else {
    // A rake of either direction: each block with its own rake. (A rake of exactly 1e-20
    // counts as a rake here; both ways give the same values.)
    BuildTransverseXSoilFlexibilityMatrix(g, pile, frame, soil_K);
    BuildTransverseYSoilFlexibilityMatrix(g, pile, frame, soil_K);
  }
  BuildAxialSoilFlexibilityMatrix(g, pile, frame, p, soil_K);
  if (IsNonZero(g.borehole->DepthToRigidLayer)) RigidLayerAxialCorrection(g, pile, frame, p, soil_K);
  PhaseScope torsion(timer, Phase::kTorsion);
  BuildTorsionalSoilFlexibilityMatrix(g, pile, frame, p, soil_K);
}

// Copies the torsion block (rows and columns 3n + 2..4n + 1) of an M by M block into G
// at the place of field pile p and source pile q.
void CopyTorsionBlock(const RealMatrix& block, const GroupLayout& layout, int p, int q, RealMatrix& G,
                      bool plus_zero = false) {
  const int n = layout.n;
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(float);
  for (int v = layout.TorsionInPile(1); v <= layout.M; ++v) {
    float* to = &G(layout.TorsionUnknown(p, 1), layout.PileStart(q) + v);
    const float* from = block.col(v) + 3 * n + 1;
    if (plus_zero) {
      for (int i = 0; i < n; ++i) to[i] = from[i] + 0.0f;
    } else {
      std::memcpy(to, from, bytes);
    }
  }
}

}  // namespace

bool SameSoilBlock(const Pile& pile, const Pile& before) {
  return Same(pile.Length, before.Length) && Same(pile.ShaftDiameter, before.ShaftDiameter) &&
         Same(pile.InternalDiameter, before.InternalDiameter) &&
         Same(pile.BaseDiameter, before.BaseDiameter) && Same(pile.RakeX, before.RakeX) &&
         Same(pile.RakeY, before.RakeY);
}

SoilGround GroundOf(const Engine& e) {
  SoilGround g;
  g.borehole = &e.borehole;
  g.yamashita_esv = &e.ws.YamashitaEsv;
  g.n = e.foundation.NumberOfElements;
  g.z0 = e.foundation.NumberOfPiles >= 1 ? e.foundation.Piles(1).SoilEntryZ : 0.0f;
  return g;
}

InteractionRule InteractionRuleOf(const Engine& e) {
  InteractionRule rule;
  rule.flag = e.project.InteractionFlag;
  rule.distance = e.project.InteractionDistance;
  rule.Mz = e.actions.Mz;
  rule.torsion_always = e.corrected_mechanics;
  return rule;
}

namespace {

// Two piles whose blocks are the same wherever the other pile stands: the same shape,
// rakes and soil entry level, and the same table of smoothed moduli, bit for bit. A pair
// block depends on nothing else of its two piles but their offset in plan.
bool SameBlocks(const Engine& e, const Pile& a, int ia, const Pile& b, int ib) {
  auto same = [](float x, float y) { return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y); };
  if (!(same(a.Length, b.Length) && same(a.ShaftDiameter, b.ShaftDiameter) &&
        same(a.InternalDiameter, b.InternalDiameter) && same(a.BaseDiameter, b.BaseDiameter) &&
        same(a.RakeX, b.RakeX) && same(a.RakeY, b.RakeY) && same(a.SoilEntryZ, b.SoilEntryZ)))
    return false;
  const RealMatrix& esv = e.ws.YamashitaEsv;
  if (esv.cols() < std::max(ia, ib)) return true;
  const std::size_t bytes = static_cast<std::size_t>(esv.rows()) * sizeof(float);
  return std::memcmp(esv.col(ia), esv.col(ib), bytes) == 0;
}

// The class of every pile (from 0): piles of one class have the same blocks.
std::vector<int> PileClasses(const Engine& e) {
  const int piles = e.foundation.NumberOfPiles;
  std::vector<int> cls(static_cast<std::size_t>(piles));
  std::vector<int> first;  // the first pile of each class
  for (int p = 1; p <= piles; ++p) {
    int c = 0;
    const int classes = static_cast<int>(first.size());
    while (c < classes && !SameBlocks(e, e.foundation.Piles(p), p, e.foundation.Piles(first[static_cast<std::size_t>(c)]),
                                      first[static_cast<std::size_t>(c)]))
      ++c;
    if (c == classes) first.push_back(p);
    cls[static_cast<std::size_t>(p - 1)] = c;
  }
  return cls;
}

// The pairs (field p, source q) that have the same block: the same classes and the same
// offset in plan, as the kernels compute it. Each group's block is computed once.
struct PairGroup {
  int p = 0, q = 0;  // the pair whose block is computed
  bool twisted = false;
  std::vector<std::pair<int, int>> members;
};

std::vector<PairGroup> GroupPairs(const Engine& e, const InteractionRule& rule) {
  const int piles = e.foundation.NumberOfPiles;
  const std::vector<int> cls = PileClasses(e);
  struct Key {
    long long classes;
    std::uint64_t offset;
    bool operator==(const Key& o) const { return classes == o.classes && offset == o.offset; }
  };
  struct Hash {
    std::size_t operator()(const Key& k) const {
      return std::hash<std::uint64_t>()(k.offset * 0x9E3779B97F4A7C15ull ^ static_cast<std::uint64_t>(k.classes));
    }
  };
  std::unordered_map<Key, int, Hash> index;
  std::vector<PairGroup> groups;
  for (int p = 1; p <= piles; ++p) {
    for (int q = 1; q <= piles; ++q) {
      if (q == p) continue;
      const Pile& field = e.foundation.Piles(p);
      const Pile& source = e.foundation.Piles(q);
      const PairSpacing d = SpacingOf(field, source);
      const Key key{static_cast<long long>(cls[static_cast<std::size_t>(p - 1)]) * piles + cls[static_cast<std::size_t>(q - 1)],
                    (static_cast<std::uint64_t>(std::bit_cast<std::uint32_t>(d.Dx)) << 32) |
                        std::bit_cast<std::uint32_t>(d.Dy)};
      auto [it, fresh] = index.try_emplace(key, static_cast<int>(groups.size()));
      if (fresh) {
        PairGroup g;
        g.p = p;
        g.q = q;
        g.twisted = TorsionBetweenPilesApplies(rule, d, source);
        groups.push_back(std::move(g));
      }
      groups[static_cast<std::size_t>(it->second)].members.emplace_back(p, q);
    }
  }
  return groups;
}

// Kept blocks may take at most these shares of the floats of one N by N matrix: the
// blocks between piles (a regular grid of 50 piles has some 0.07 N^2 of distinct ones,
// of 100 piles 0.04, of 250 piles 0.015), the piles' own blocks (N^2 / P when all
// differ), the torsion blocks alone.
constexpr double kKeptPairShare = 0.10;
constexpr double kKeptOwnShare = 0.05;
constexpr double kKeptTorsionShare = 0.05;

// Whether k blocks of m by m may be kept beside a matrix of order N.
bool MayKeep(long long k, int m, long long N, double share) {
  return static_cast<double>(k) * m * m <= share * static_cast<double>(N) * static_cast<double>(N);
}

// A matrix that may not be had is simply not kept: G t then recomputes its blocks.
bool TryCreate(RealMatrix& m, int rows, long long cols) {
  if (cols > INT32_MAX) return false;
  try {
    m.resize(rows, static_cast<int>(cols));
  } catch (const std::bad_alloc&) {
    m.release();
    return false;
  }
  return true;
}

void CopyTorsionPart(const RealMatrix& block, int n, float* to) {
  const int M = block.rows();
  for (int v = 3 * n + 2; v <= M; ++v) {
    std::memcpy(to + static_cast<std::size_t>(v - 1) * M + 3 * n + 1, block.col(v) + 3 * n + 1,
                static_cast<std::size_t>(n) * sizeof(float));
  }
}

// Keeps the torsion block of group k, the t-th group with torsion, for G t after the solve.
void KeepTorsionBlock(const RealMatrix& block, int n, int t, int k, Workspace& w) {
  w.SoilTorsionSlot(k + 1) = t;
  for (int v = 1; v <= n; ++v)
    std::memcpy(w.SoilTorsionBlocks.col(t * n + v), block.col(3 * n + 1 + v) + 3 * n + 1,
                static_cast<std::size_t>(n) * sizeof(float));
}

// The pile axes of the group, with the ground at every point.
std::vector<PileAxis> AxesOf(const Engine& e, const SoilGround& g) {
  std::vector<PileAxis> axes;
  axes.reserve(static_cast<std::size_t>(e.foundation.NumberOfPiles));
  for (int q = 1; q <= e.foundation.NumberOfPiles; ++q)
    axes.push_back(MakePileAxis(g, e.foundation.Piles(q), e.foundation.Frame(q), q));
  return axes;
}

// The whole block of q on p, torsion included, as the assembly writes it into G.
void PairBlock(const SoilGround& g, const InteractionRule& rule, bool rigid, const PileAxis& p, const PileAxis& q,
               RealMatrix& pair_K) {
  BuildPileInteractionMatrix(g, rule, p, q, pair_K, false);
  if (rigid) RigidLayerInteractionCorrection(g, rule, p, q, pair_K);
  BuildPileTorsionInteraction(g, rule, p, q, pair_K);
}

// Every block of one pile on another: the blocks without torsion, then the torsion
// blocks of the pairs that have one, each computed once for every group of pairs that
// share it and copied to all of them. A linear run keeps the distinct blocks, when they
// are few beside G, for the soil movements after the solve.
void AssemblePairBlocks(Engine& e, const SoilGround& g) {
  const int n = g.n;
  const int piles = e.foundation.NumberOfPiles;
  const GroupLayout layout(n, piles);
  const int M = layout.M;
  const long long N = static_cast<long long>(M) * piles;
  Workspace& w = e.ws;
  RealMatrix& G = w.G;
  PhaseScope pairs(e.timer, Phase::kPairBlocks);
  const InteractionRule rule = InteractionRuleOf(e);
  const bool rigid = IsNonZero(e.borehole.DepthToRigidLayer);
  const std::vector<PileAxis> axes = AxesOf(e, g);
  auto axis = [&axes](int q) -> const PileAxis& { return axes[static_cast<std::size_t>(q - 1)]; };

  // One scratch block per thread, made before the parallel loops so that nothing inside
  // them allocates.
  const int threads = omp_get_max_threads();
  std::vector<RealMatrix> scratch(static_cast<std::size_t>(threads));
  for (RealMatrix& m : scratch) m.resize(M, M);

  const std::vector<PairGroup> groups = GroupPairs(e, rule);
  const int count = static_cast<int>(groups.size());
  std::vector<int> twisted;
  for (int k = 0; k < count; ++k)
    if (groups[static_cast<std::size_t>(k)].twisted) twisted.push_back(k);

  const bool index = w.SoilBlockIndex.rows() == piles && w.SoilBlockIndex.cols() == piles;
  const bool linear = index && e.project.NonLinear == 0;
  // A linear run forms its system in G's storage: the blocks between piles go in as the
  // system holds them, unless G is to be printed as it is (flag 8).
  const bool plus_zero = linear && !e.project.Flag(8);
  const bool fits = MayKeep(count, M, N, kKeptPairShare);
  const bool keep = linear && fits && TryCreate(w.SoilPairBlocks, M, static_cast<long long>(count) * M);
  const long long twists_count = static_cast<long long>(twisted.size());
  bool keep_torsion = linear && !keep && twists_count > 0 && MayKeep(twists_count, n, N, kKeptTorsionShare) &&
                      TryCreate(w.SoilTorsionBlocks, n, twists_count * n);
  if (keep_torsion) {
    try {
      w.SoilTorsionSlot.resize(count);
      w.SoilTorsionSlot.fill(-1);
    } catch (const std::bad_alloc&) {
      w.SoilTorsionBlocks.release();
      keep_torsion = false;
    }
  }
  if (index)
    for (int k = 0; k < count; ++k)
      for (const auto& [p, q] : groups[static_cast<std::size_t>(k)].members) w.SoilBlockIndex(p, q) = k;

  // A rough count of the kernel calls of each loop decides whether to share it out.
  const long long calls = static_cast<long long>(count) * (n + 1) * (n + 1);
  const long long torsion_calls = 256LL * n * n * static_cast<long long>(twisted.size());

  // Each block is checked for values that are not finite while it is at hand, so that
  // the check of G's rows need not read them again.
  const bool states = HasBlockStates(w, piles);
  LogicalMatrix& state = w.SoilBlockState;

  // When the distinct blocks fit beside G, they are made first (staged) and G is then
  // written one source pile's panel of columns at a time, each column from top to
  // bottom: every page of G is touched once, in order, by one thread. Copied straight
  // from each group, a column's few hundred floats would land on a fresh page at every
  // write; that is what becomes of groups whose distinct blocks don't fit.
  RealMatrix staging;
  const bool staged = keep || (fits && TryCreate(staging, M, static_cast<long long>(count) * M));
  RealMatrix& store = keep ? w.SoilPairBlocks : staging;
  auto stored = [&store, M](int k) { return store.col(k * M + 1); };

#pragma omp parallel for schedule(dynamic, 1) num_threads(threads) if (calls >= kParallelPairCalls)
  for (int k = 0; k < count; ++k) {
    const PairGroup& group = groups[static_cast<std::size_t>(k)];
    RealMatrix& pair_K = scratch[static_cast<std::size_t>(omp_get_thread_num())];
    BuildPileInteractionMatrix(g, rule, axis(group.p), axis(group.q), pair_K, false);
    if (rigid) RigidLayerInteractionCorrection(g, rule, axis(group.p), axis(group.q), pair_K);
    if (staged) std::memcpy(stored(k), pair_K.data(), pair_K.count() * sizeof(float));
    const std::int32_t found = states ? StateOf(pair_K) : kBlockUnchecked;
    for (const auto& [p, q] : group.members) {
      if (!staged) CopyBlock(pair_K, layout, p, q, G, plus_zero);
      if (states) state(p, q) = found;
    }
  }
  w.system.MarkPairBlocksAsSystem(plus_zero);

  if (!twisted.empty()) {
    PhaseScope torsion(e.timer, Phase::kTorsion);
    const int twists = static_cast<int>(twisted.size());
#pragma omp parallel for schedule(dynamic) num_threads(threads) if (torsion_calls >= kParallelKernelCalls)
    for (int t = 0; t < twists; ++t) {
      const int k = twisted[static_cast<std::size_t>(t)];
      const PairGroup& group = groups[static_cast<std::size_t>(k)];
      RealMatrix& pair_K = scratch[static_cast<std::size_t>(omp_get_thread_num())];
      if (!BuildPileTorsionInteraction(g, rule, axis(group.p), axis(group.q), pair_K)) continue;
      if (staged) CopyTorsionPart(pair_K, n, stored(k));
      if (keep_torsion) KeepTorsionBlock(pair_K, n, t, k, w);
      const bool finite = !states || TorsionBlockFinite(pair_K, n);
      for (const auto& [p, q] : group.members) {
        if (!staged) CopyTorsionBlock(pair_K, layout, p, q, G, plus_zero);
        if (!finite) state(p, q) = kBlockNotFinite;
      }
    }
  }
  if (!staged) return;

  std::vector<int> group_of(static_cast<std::size_t>(piles) * static_cast<std::size_t>(piles), -1);
  for (int k = 0; k < count; ++k)
    for (const auto& [p, q] : groups[static_cast<std::size_t>(k)].members)
      group_of[static_cast<std::size_t>(q - 1) * static_cast<std::size_t>(piles) + static_cast<std::size_t>(p - 1)] = k;
#pragma omp parallel for schedule(static) num_threads(threads) if (calls >= kParallelPairCalls)
  for (int q = 1; q <= piles; ++q) {
    PopulateForWriting(G.col(layout.PileStart(q) + 1), static_cast<std::size_t>(M) * G.rows());
    const int* of_q = group_of.data() + static_cast<std::size_t>(q - 1) * static_cast<std::size_t>(piles);
    for (int v = 1; v <= M; ++v) {
      float* column = &G(1, layout.PileStart(q) + v);
      for (int p = 1; p <= piles; ++p) {
        if (p == q) continue;
        const float* from = stored(of_q[p - 1]) + static_cast<std::size_t>(v - 1) * M;
        float* to = column + layout.PileStart(p);
        if (plus_zero) {
          for (int i = 0; i < M; ++i) to[i] = from[i] + 0.0f;
        } else {
          std::memcpy(to, from, static_cast<std::size_t>(M) * sizeof(float));
        }
      }
    }
  }
}

// The pile whose build of the own block pile p took; in a linear run within the share
// of kept blocks, the block itself.
void KeepOwnBlock(Engine& e, int p, bool reuse) {
  Workspace& w = e.ws;
  const int piles = e.foundation.NumberOfPiles;
  const int M = w.soil_K.rows();
  if (w.SoilBlockIndex.rows() != piles || w.SoilBlockIndex.cols() != piles) return;
  const int source = reuse && p > 1 && w.SoilBlockIndex(p - 1, p - 1) >= 1 ? w.SoilBlockIndex(p - 1, p - 1) : p;
  w.SoilBlockIndex(p, p) = source;
  if (e.project.NonLinear != 0) return;
  const long long N = static_cast<long long>(M) * piles;
  if (p == 1 && MayKeep(piles, M, N, kKeptOwnShare)) TryCreate(w.SoilOwnBlocks, M, static_cast<long long>(piles) * M);
  if (source == p && w.SoilOwnBlocks.cols() == piles * M)
    std::memcpy(w.SoilOwnBlocks.col(LayoutOf(e).PileStart(p) + 1), w.soil_K.data(), w.soil_K.count() * sizeof(float));
}

}  // namespace

void AssembleSoilFlexibility(Engine& e, int p) {
  const GroupLayout layout = LayoutOf(e);
  const int n = layout.n;
  const int piles = layout.P;
  const int M = layout.M;
  Require(n >= 1 && p >= 1 && p <= piles, "AssembleSoilFlexibility: no such pile");
  PhaseScope own(e.timer, Phase::kOwnBlocks);
  const SoilGround g = GroundOf(e);
  RealMatrix& G = e.ws.G;
  Require(G.rows() == M * piles && G.cols() == M * piles && e.ws.soil_K.rows() == M && e.ws.pair_K.rows() == M,
          "AssembleSoilFlexibility: workspace of another model");
  if (!g.poulos() && (e.ws.YamashitaEsv.rows() != n + 5 || e.ws.YamashitaEsv.cols() != piles)) {
    // The smoothed moduli are missing: the table failed earlier and has been reported.
    SendError(e, "Soil flexibility not assembled for pile " + std::to_string(p) +
                     ": the table of vertical moduli (YamashitaEsv) is missing");
    return;
  }

  // The pile's own block, reused when the pile handled before has the same shape.
  const Pile& pile = e.foundation.Piles(p);
  const int before = e.project.ReferencePile;
  const bool reuse = p != 1 && before >= 1 && before <= piles && SameSoilBlock(pile, e.foundation.Piles(before));
  if (!reuse) {
    if (!Straight(pile)) {
      // The LOG's trace of the two transverse blocks of a raked pile.
      LogLine(e, "BuildTransverseXSoilFlexibilityMatrix, line 27");
      LogLine(e, "BuildTransverseYSoilFlexibilityMatrix, line 26");
    }
    BuildOwnSoilBlock(g, pile, e.foundation.Frame(p), p, e.timer, e.ws.soil_K);
  }
  CopyBlock(e.ws.soil_K, layout, p, p, G);
  if (HasBlockStates(e.ws, piles)) e.ws.SoilBlockState(p, p) = StateOf(e.ws.soil_K);
  KeepOwnBlock(e, p, reuse);
  if (piles == 1) return;

  // The blocks between piles depend on nothing that changes from one pile to the next,
  // so the first pile's turn writes them all, in one pass shared among the threads.
  if (p == 1) AssemblePairBlocks(e, g);

  // pair_K is left holding the last pair, as a serial pass would leave it.
  CopyBlockOut(G, layout, p, p == piles ? piles - 1 : piles, e.ws.pair_K);
}

bool SoilFlexibilityTimes(Engine& e, const float* t, float* out) {
  Workspace& w = e.ws;
  const GroupLayout layout = LayoutOf(e);
  const int piles = layout.P;
  const int n = layout.n;
  const int M = layout.M;
  if (n < 1 || piles < 1 || w.SoilBlockIndex.rows() != piles || w.SoilBlockIndex.cols() != piles) return false;
  for (int p = 1; p <= piles; ++p)
    if (w.SoilBlockIndex(p, p) < 1) return false;  // the assembly did not run
  const SoilGround g = GroundOf(e);
  const InteractionRule rule = InteractionRuleOf(e);
  const bool rigid = IsNonZero(e.borehole.DepthToRigidLayer);
  const std::vector<PileAxis> axes = piles > 1 ? AxesOf(e, g) : std::vector<PileAxis>{};
  const bool own_kept = w.SoilOwnBlocks.cols() == piles * M;
  const bool pairs_kept = !w.SoilPairBlocks.empty();
  const bool torsion_kept = !w.SoilTorsionBlocks.empty() && !w.SoilTorsionSlot.empty();

  // Each field pile's rows by one thread, the columns in rising order: every row sums
  // its terms in the order of G's columns, as the product with G itself did.
#pragma omp parallel num_threads(omp_get_max_threads()) if (static_cast<long long>(M) * M * piles * piles >= 4000000LL)
  {
    RealMatrix block, own;
    block.resize(M, M);
    int own_source = 0;
    std::vector<float> sum(static_cast<std::size_t>(M));
#pragma omp for schedule(dynamic, 1)
    for (int p = 1; p <= piles; ++p) {
      std::fill(sum.begin(), sum.end(), 0.0f);
      for (int q = 1; q <= piles; ++q) {
        const float* B = nullptr;
        if (q == p) {
          const int source = w.SoilBlockIndex(p, p);
          if (own_kept) {
            B = w.SoilOwnBlocks.col(layout.PileStart(source) + 1);
          } else {
            if (own_source != source) {
              if (own.empty()) own.resize(M, M);
              BuildOwnSoilBlock(g, e.foundation.Piles(source), e.foundation.Frame(source), source, nullptr, own);
              own_source = source;
            }
            B = own.data();
          }
        } else {
          const int k = w.SoilBlockIndex(p, q);
          const PileAxis& a = axes[static_cast<std::size_t>(p - 1)];
          const PileAxis& b = axes[static_cast<std::size_t>(q - 1)];
          if (pairs_kept) {
            B = w.SoilPairBlocks.col(k * M + 1);
          } else if (torsion_kept) {
            BuildPileInteractionMatrix(g, rule, a, b, block, false);
            if (rigid) RigidLayerInteractionCorrection(g, rule, a, b, block);
            const int slot = w.SoilTorsionSlot(k + 1);
            for (int v = 1; slot >= 0 && v <= n; ++v)
              std::memcpy(block.col(3 * n + 1 + v) + 3 * n + 1, w.SoilTorsionBlocks.col(slot * n + v),
                          static_cast<std::size_t>(n) * sizeof(float));
            B = block.data();
          } else {
            PairBlock(g, rule, rigid, a, b, block);
            B = block.data();
          }
        }
        const float* tq = t + layout.PileStart(q);
        for (int v = 0; v < M; ++v) {
          const float tv = tq[v];
          const float* c = B + static_cast<std::size_t>(v) * M;
          for (int i = 0; i < M; ++i) sum[static_cast<std::size_t>(i)] = sum[static_cast<std::size_t>(i)] + c[i] * tv;
        }
      }
      std::copy(sum.begin(), sum.end(), out + layout.PileStart(p));
    }
  }
  return true;
}

}  // namespace quellon
