// Assembly of the group's soil flexibility matrix G.
//
// A pile's own block goes through soil_K, which is kept from one pile to the next and
// rebuilt only when the pile differs in shape from the pile handled before it. The
// blocks between two piles depend on nothing that changes from one pile to the next, so
// the turn of the first pile writes them all, in one pass over every ordered pair shared
// among the threads: each block is computed by one thread in a fixed order into that
// thread's own scratch matrix, so G does not depend on the number of threads, and one
// pass costs one start of the threads, not one per pile. The torsion blocks between near
// piles depend on nothing else in a pair's block and take far longer than the rest of
// it, so they run as a second parallel loop of their own, over the pairs that have one:
// the threads share that work evenly, and the phase timer sees it apart.
#include <cmath>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <omp.h>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/notify.h"
#include "engine/phase_timer.h"
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
void CopyBlock(const RealMatrix& block, int p, int q, RealMatrix& G) {
  const int M = block.rows();
  const std::size_t bytes = static_cast<std::size_t>(M) * sizeof(float);
  for (int v = 1; v <= M; ++v) {
    std::memcpy(&G(M * (p - 1) + 1, M * (q - 1) + v), block.col(v), bytes);
  }
}

void CopyBlockOut(const RealMatrix& G, int p, int q, RealMatrix& block) {
  const int M = block.rows();
  const std::size_t bytes = static_cast<std::size_t>(M) * sizeof(float);
  for (int v = 1; v <= M; ++v) {
    std::memcpy(block.col(v), &G(M * (p - 1) + 1, M * (q - 1) + v), bytes);
  }
}

// A pile without rake has one transverse block for both directions.
bool Straight(const Pile& pile) { return IsZero(pile.RakeX) && IsZero(pile.RakeY); }

// The own block of pile p: transverse blocks (the first of which clears soil_K), axial
// and base block with its rigid layer correction, and torsion.
void BuildOwnSoilBlock(const SoilGround& g, const Pile& pile, int p, PhaseTimer* timer, RealMatrix& soil_K) {
  if (Straight(pile)) {
    BuildTransverseSoilFlexibilityMatrices(g, pile, soil_K);
  } else {
    // A rake of either direction: each block with its own rake. (A rake of exactly 1e-20
    // counts as a rake here; both ways give the same values.)
    BuildTransverseXSoilFlexibilityMatrix(g, pile, soil_K);
    BuildTransverseYSoilFlexibilityMatrix(g, pile, soil_K);
  }
  BuildAxialSoilFlexibilityMatrix(g, pile, p, soil_K);
  if (IsNonZero(g.borehole->DepthToRigidLayer)) RigidLayerAxialCorrection(g, pile, p, soil_K);
  PhaseScope torsion(timer, Phase::kTorsion);
  BuildTorsionalSoilFlexibilityMatrix(g, pile, p, soil_K);
}

// Copies the torsion block (rows and columns 3n + 2..4n + 1) of an M by M block into G
// at the place of field pile p and source pile q.
void CopyTorsionBlock(const RealMatrix& block, int n, int p, int q, RealMatrix& G) {
  const int M = block.rows();
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(float);
  for (int v = 3 * n + 2; v <= M; ++v) {
    std::memcpy(&G(M * (p - 1) + 3 * n + 2, M * (q - 1) + v), block.col(v) + 3 * n + 1, bytes);
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

// Every block of one pile on another: the blocks without torsion over all ordered pairs,
// then the torsion blocks of the pairs that have one.
void AssemblePairBlocks(Engine& e, const SoilGround& g) {
  const int n = g.n;
  const int piles = e.foundation.NumberOfPiles;
  const int M = 4 * n + 1;
  RealMatrix& G = e.ws.G;
  PhaseScope pairs(e.timer, Phase::kPairBlocks);
  const InteractionRule rule = InteractionRuleOf(e);
  const bool rigid = IsNonZero(e.borehole.DepthToRigidLayer);
  std::vector<PileAxis> axes;
  axes.reserve(static_cast<std::size_t>(piles));
  for (int q = 1; q <= piles; ++q) axes.push_back(MakePileAxis(g, e.foundation.Piles(q), q));
  auto axis = [&axes](int q) -> const PileAxis& { return axes[static_cast<std::size_t>(q - 1)]; };

  // One scratch block per thread, made before the parallel loops so that nothing inside
  // them allocates.
  const int threads = omp_get_max_threads();
  std::vector<RealMatrix> scratch(static_cast<std::size_t>(threads));
  for (RealMatrix& m : scratch) m.resize(M, M);

  // The ordered pairs (field p, source q), and those with a torsion block.
  std::vector<std::pair<int, int>> all, twisted;
  all.reserve(static_cast<std::size_t>(piles) * static_cast<std::size_t>(piles - 1));
  for (int p = 1; p <= piles; ++p) {
    for (int q = 1; q <= piles; ++q) {
      if (q == p) continue;
      all.emplace_back(p, q);
      const Pile& source = e.foundation.Piles(q);
      if (TorsionBetweenPilesApplies(rule, SpacingOf(e.foundation.Piles(p), source), source)) twisted.emplace_back(p, q);
    }
  }
  // A rough count of the kernel calls of each loop decides whether to share it out.
  const long long calls = static_cast<long long>(all.size()) * (n + 1) * (n + 1);
  const long long torsion_calls = 256LL * n * n * static_cast<long long>(twisted.size());

  const int count = static_cast<int>(all.size());
#pragma omp parallel for schedule(dynamic, 4) num_threads(threads) if (calls >= kParallelPairCalls)
  for (int k = 0; k < count; ++k) {
    const auto [p, q] = all[static_cast<std::size_t>(k)];
    RealMatrix& pair_K = scratch[static_cast<std::size_t>(omp_get_thread_num())];
    BuildPileInteractionMatrix(g, rule, axis(p), axis(q), pair_K, false);
    if (rigid) RigidLayerInteractionCorrection(g, rule, axis(p), axis(q), pair_K);
    CopyBlock(pair_K, p, q, G);
  }

  if (twisted.empty()) return;
  PhaseScope torsion(e.timer, Phase::kTorsion);
  const int twists = static_cast<int>(twisted.size());
#pragma omp parallel for schedule(dynamic) num_threads(threads) if (torsion_calls >= kParallelKernelCalls)
  for (int k = 0; k < twists; ++k) {
    const auto [p, q] = twisted[static_cast<std::size_t>(k)];
    RealMatrix& pair_K = scratch[static_cast<std::size_t>(omp_get_thread_num())];
    if (BuildPileTorsionInteraction(g, rule, axis(p), axis(q), pair_K)) CopyTorsionBlock(pair_K, n, p, q, G);
  }
}

}  // namespace

void AssembleSoilFlexibility(Engine& e, int p) {
  const int n = e.foundation.NumberOfElements;
  const int piles = e.foundation.NumberOfPiles;
  const int M = 4 * n + 1;
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
    BuildOwnSoilBlock(g, pile, p, e.timer, e.ws.soil_K);
  }
  CopyBlock(e.ws.soil_K, p, p, G);
  if (piles == 1) return;

  // The blocks between piles depend on nothing that changes from one pile to the next,
  // so the first pile's turn writes them all, in one pass shared among the threads.
  if (p == 1) AssemblePairBlocks(e, g);

  // pair_K is left holding the last pair, as a serial pass would leave it.
  CopyBlockOut(G, p, p == piles ? piles - 1 : piles, e.ws.pair_K);
}

}  // namespace quellon
