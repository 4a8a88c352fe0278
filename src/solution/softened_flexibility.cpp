// A softening's decisions become matrices here. Entry (i, j) of GD depends on the later
// of the last operation on unknown i and on unknown j: untouched, it is the softened G
// plus D; last restored, the elastic G plus D; last released, 1 on the diagonal and 0
// elsewhere. That is what applying the releases and restores one after the other in
// their order leaves, so one pass applies them all, however many there are.
//
// Every loop keeps the floats of the entry it forms: g / f, then + d (or + 0, which
// turns a -0 into +0 as the full sum would), and the soil movements add the products of a
// row in rising column order. The threads split the rows into bands for the product (so
// each row's sum stays in one thread, in order) and the columns for a rebuild alone.
#include "solution/softened_flexibility.h"

#include <omp.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "engine/streaming_stores.h"
#include "engine/workspace.h"

// Function clones for AVX-512, AVX2 and the baseline, the one the processor runs chosen
// when the library is loaded; only where the system can make that choice (ELF on x86-64).
#if defined(__x86_64__) && defined(__ELF__) && defined(__GNUC__)
#define QUELLON_WIDEST_VECTORS __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define QUELLON_WIDEST_VECTORS
#endif

namespace quellon {

namespace {

// Entry (i, j) of GD once all operations are applied, from the elastic g0, the pile's d
// and the softened g_soft of that entry (unknowns from 1).
inline float SystemEntry(const SofteningDecisions& p, int i, int j, float g0, float d, float g_soft) {
  const int rel_i = p.released_at[i - 1], rel_j = p.released_at[j - 1];
  const int last = std::max(p.last_op_at[i - 1], p.last_op_at[j - 1]);
  if (last == 0) return g_soft + d;
  if (last == rel_i || last == rel_j) return i == j ? 1.0f : 0.0f;
  return g0 + d;
}

// One column of the matrices in a pass: its elastic G, its entries of D (rows r0 to
// r0 + M - 1, from 0) and its column of GD.
struct Column {
  int j;
  const float* g0;
  const float* d;
  int r0, M;
  float* gd;
};

Column ColumnOf(Workspace& w, int j) {
  const int M = w.D.rows();
  return {j, w.G.col(j), w.D.col(j), PileBlockStart(M, j), M, w.system.GD.col(j)};
}

// Rows i0 to i1 - 1 (from 0) of a column of GD under the decisions p, into rows[0] to
// rows[i1 - i0 - 1]. touched to touched_end: the touched unknowns among those rows.
//
// A row without an operation takes the column's state: an untouched column is softened
// and summed; a column last released is 0 there; a column last restored is the elastic
// G + D. Only the rows of touched unknowns depend on the order of two operations, and
// are worked out entry by entry; every other row is one of three fills the compiler
// runs four or more rows at a time.
[[gnu::always_inline]] inline void SystemRows(const SofteningDecisions& p, const Column& c, int i0, int i1,
                                              const int* touched, const int* touched_end, float* rows) {
  const float* g0 = c.g0;
  const float f = p.factor[c.j - 1];
  auto d = [&c](int i) { return i >= c.r0 && i < c.r0 + c.M ? c.d[i - c.r0] : 0.0f; };
  const int a = std::clamp(c.r0, i0, i1), b = std::clamp(c.r0 + c.M, i0, i1);
  const int last_j = p.last_op_at[c.j - 1];
  if (last_j == 0) {
    for (int i = i0; i < a; ++i) rows[i - i0] = g0[i] / f + 0.0f;
    for (int i = a; i < b; ++i) rows[i - i0] = g0[i] / f + c.d[i - c.r0];
    for (int i = b; i < i1; ++i) rows[i - i0] = g0[i] / f + 0.0f;
  } else if (p.released_at[c.j - 1] == last_j) {
    std::fill(rows, rows + (i1 - i0), 0.0f);
  } else {
    for (int i = i0; i < a; ++i) rows[i - i0] = g0[i] + 0.0f;
    for (int i = a; i < b; ++i) rows[i - i0] = g0[i] + c.d[i - c.r0];
    for (int i = b; i < i1; ++i) rows[i - i0] = g0[i] + 0.0f;
  }
  for (const int* t = touched; t != touched_end; ++t) {
    const int i = *t - 1;
    rows[i - i0] = SystemEntry(p, i + 1, c.j, g0[i], d(i), g0[i] / f);
  }
}

// The touched unknowns among rows i0 to i1 - 1 (from 0).
std::pair<const int*, const int*> TouchedRows(const SofteningDecisions& p, int i0, int i1) {
  const int* end = p.touched + p.touched_count;
  return {std::lower_bound(p.touched, end, i0 + 1), std::lower_bound(p.touched, end, i1 + 1)};
}

// How the product reads the softened G of the system last solved.
struct SolvedSoftening {
  bool softened;  // false: the elastic G
  // Per row: all bits set for a row that takes part, none for a released one, whose
  // entries are +0. Masking the quotient after the division keeps the row loop free of
  // conditions, so that the compiler runs it as wide as the processor goes; a division
  // under a condition stays one row at a time.
  std::vector<std::uint32_t> keep;
  const float* factor;
  explicit SolvedSoftening(const Workspace& w) : softened(w.system.Planned()), factor(w.SoftFactor.data()) {
    if (!softened) return;
    const int N = w.G.rows();
    keep.resize(static_cast<std::size_t>(N));
    for (int i = 0; i < N; ++i) keep[static_cast<std::size_t>(i)] = w.SoftReleasedAt(i + 1) != 0 ? 0u : ~0u;
  }
};

// out[i0..i1) += (softened G)(i, j) t_j for column j.
[[gnu::always_inline]] inline void AddColumnProduct(const SolvedSoftening& s, int j, const float* gj, float tj,
                                                    float* out, int i0, int i1) {
  if (!s.softened) {
    for (int i = i0; i < i1; ++i) out[i] = out[i] + gj[i] * tj;
    return;
  }
  if (s.keep[static_cast<std::size_t>(j - 1)] == 0u) {
    // A released column: every row adds 0 t_j but the diagonal's, which adds 1 t_j.
    const int diagonal = j - 1;
    const bool here = diagonal >= i0 && diagonal < i1;
    const float before = here ? out[diagonal] : 0.0f;
    const float zero_t = 0.0f * tj;
    for (int i = i0; i < i1; ++i) out[i] = out[i] + zero_t;
    if (here) out[diagonal] = before + 1.0f * tj;
    return;
  }
  // Released rows add (+0) t_j; the others G(i, j) / f t_j.
  const float f = s.factor[j - 1];
  const std::uint32_t* keep = s.keep.data();
  for (int i = i0; i < i1; ++i) {
    const float kept = std::bit_cast<float>(std::bit_cast<std::uint32_t>(gj[i] / f) & keep[i]);
    out[i] = out[i] + kept * tj;
  }
}

// One band of rows, i0 to i1 - 1, through every column: its soil movements into out and,
// with next, its rows of the next system (rows: a buffer of i1 - i0 floats). Compiled
// for the widest vectors the processor has, where the system can choose at load time;
// every width forms the same floats, operation by operation (no contraction).
QUELLON_WIDEST_VECTORS void BandPass(Workspace& w, const SolvedSoftening& solved, const float* t, float* out,
                                     int i0, int i1, const SofteningDecisions* next, float* rows) {
  const int N = w.G.rows();
  for (int i = i0; i < i1; ++i) out[i] = 0.0f;
  std::pair<const int*, const int*> touched{nullptr, nullptr};
  if (next != nullptr) touched = TouchedRows(*next, i0, i1);
  for (int j = 1; j <= N; ++j) {
    const Column c = ColumnOf(w, j);
    AddColumnProduct(solved, j, c.g0, t[j - 1], out, i0, i1);
    // The rows of G just read are in the cache: the next system's rows of the column
    // come from them without a second read of G. GD is written once here and next read
    // by the factorisation.
    if (next == nullptr) continue;
    SystemRows(*next, c, i0, i1, touched.first, touched.second, rows);
    StreamOut(c.gd + i0, rows, i1 - i0);
  }
  StreamFence();
}

}  // namespace

void RebuildSystem(Workspace& w, const SofteningDecisions& p) {
  const int N = w.G.rows();
  const std::pair<const int*, const int*> rows = TouchedRows(p, 0, N);
  const int* touched = rows.first;
  const int* touched_end = rows.second;
#pragma omp parallel for schedule(static) if (N >= 2048)
  for (int j = 1; j <= N; ++j) {
    const Column c = ColumnOf(w, j);
    SystemRows(p, c, 0, N, touched, touched_end, c.gd);
  }
}

void RebuildKeptSystem(Workspace& w) {
  // The workspace keeps each unknown's last operation; the touched ones are read off it.
  const int N = w.G.rows();
  std::vector<int> touched;
  for (int c = 1; c <= N; ++c)
    if (w.SoftChangedAt(c) != 0) touched.push_back(c);
  RebuildSystem(w, {w.SoftFactor.data(), w.SoftReleasedAt.data(), w.SoftChangedAt.data(), touched.data(),
                    static_cast<int>(touched.size())});
}

void SoftenedFlexibilityTimes(Workspace& w, const float* t, float* out, const SofteningDecisions* next) {
  const int N = w.G.rows();
  const SolvedSoftening solved(w);
  // Bands of at most kBand rows, as many as a whole number of rounds of the threads takes,
  // so that no thread is left with one band more than the others. A band's sums stay in
  // the fastest caches while the pass runs through the columns.
  constexpr int kBand = 2048;
  const int threads = omp_get_max_threads();
  const int rounds = std::max(1, (N + threads * kBand - 1) / (threads * kBand));
  const int bands = threads * rounds;
  const int band = ((N + bands - 1) / bands + 15) / 16 * 16;
#pragma omp parallel for schedule(dynamic, 1) if (N >= 2 * kBand)
  for (int b = 0; b < bands; ++b) {
    const int i0 = std::min(N, b * band), i1 = std::min(N, i0 + band);
    std::vector<float> rows(next != nullptr ? static_cast<std::size_t>(i1 - i0) : 0);
    BandPass(w, solved, t, out, i0, i1, next, rows.data());
  }
}

}  // namespace quellon
