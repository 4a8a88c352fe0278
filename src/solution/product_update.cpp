#include "solution/product_update.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "engine/internal_error.h"

namespace quellon {

namespace {

// A register tile is MR rows by NR columns: two vectors of rows per column. The kernel
// reads A packed as MR-row slivers (A_s[k * MR + r]) and B packed as NR-column slivers
// (B_t[k * NR + x]), and updates the tile of a in place, column x at c + x * ldc.
using KernelFn = void (*)(int depth, const float* Ap, const float* Bp, float* c, std::size_t ldc);

struct Kernel {
  int mr, nr;
  KernelFn fn;
};

template <class V, int NR>
__attribute__((always_inline)) inline void TileUpdate(int depth, const float* Ap, const float* Bp, float* c,
                                                       std::size_t ldc) {
  constexpr int L = static_cast<int>(sizeof(V) / sizeof(float));
  constexpr int MR = 2 * L;
  V lo[NR], hi[NR];
#pragma GCC unroll 16
  for (int x = 0; x < NR; ++x) {
    std::memcpy(&lo[x], c + static_cast<std::size_t>(x) * ldc, sizeof(V));
    std::memcpy(&hi[x], c + static_cast<std::size_t>(x) * ldc + L, sizeof(V));
  }
  for (int k = 0; k < depth; ++k) {
    V a0, a1;
    std::memcpy(&a0, Ap + static_cast<std::size_t>(k) * MR, sizeof(V));
    std::memcpy(&a1, Ap + static_cast<std::size_t>(k) * MR + L, sizeof(V));
    const float* b = Bp + static_cast<std::size_t>(k) * NR;
#pragma GCC unroll 16
    for (int x = 0; x < NR; ++x) {
      // The scalar is spread over the lanes; multiply, round, subtract, round.
      lo[x] = lo[x] - a0 * b[x];
      hi[x] = hi[x] - a1 * b[x];
    }
  }
#pragma GCC unroll 16
  for (int x = 0; x < NR; ++x) {
    std::memcpy(c + static_cast<std::size_t>(x) * ldc, &lo[x], sizeof(V));
    std::memcpy(c + static_cast<std::size_t>(x) * ldc + L, &hi[x], sizeof(V));
  }
}

typedef float Float16 __attribute__((vector_size(64)));
typedef float Float8 __attribute__((vector_size(32)));
typedef float Float4 __attribute__((vector_size(16)));

__attribute__((target("avx512f"))) void Tile512(int depth, const float* Ap, const float* Bp, float* c,
                                                std::size_t ldc) {
  TileUpdate<Float16, 12>(depth, Ap, Bp, c, ldc);
}
__attribute__((target("avx2"))) void Tile256(int depth, const float* Ap, const float* Bp, float* c,
                                             std::size_t ldc) {
  TileUpdate<Float8, 6>(depth, Ap, Bp, c, ldc);
}
void Tile128(int depth, const float* Ap, const float* Bp, float* c, std::size_t ldc) {
  TileUpdate<Float4, 4>(depth, Ap, Bp, c, ldc);
}

const Kernel& TheKernel() {
  static const Kernel k = [] {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f")) return Kernel{32, 12, &Tile512};
    if (__builtin_cpu_supports("avx2")) return Kernel{16, 6, &Tile256};
    return Kernel{8, 4, &Tile128};
  }();
  return k;
}

constexpr int kRowSliversPerTile = 8;   // 256 rows of A with the widest kernel, kept near
constexpr int kColSliversPerTile = 16;  // 192 columns of B, kept in the second-level cache
constexpr double kParallelWork = 3.0e7;  // updates below which one thread does it all (a few ms)

int Slivers(int n, int width) { return (n + width - 1) / width; }

}  // namespace

bool ProductUpdate::Reserve(int rows, int cols, int depth) {
  const Kernel& K = TheKernel();
  try {
    packed_a_.assign(static_cast<std::size_t>(Slivers(rows, K.mr)) * K.mr * static_cast<std::size_t>(depth), 0.0f);
    packed_b_.assign(static_cast<std::size_t>(Slivers(cols, K.nr)) * K.nr * static_cast<std::size_t>(depth), 0.0f);
  } catch (const std::bad_alloc&) {
    std::vector<float>().swap(packed_a_);
    std::vector<float>().swap(packed_b_);
    rows_ = cols_ = depth_ = 0;
    return false;
  }
  rows_ = rows;
  cols_ = cols;
  depth_ = depth;
  return true;
}

void ProductUpdate::Apply(float* a, std::size_t lda, int i0, int i1, int c0, int c1, int k0, int k1) {
  const int rows = i1 - i0, cols = c1 - c0, depth = k1 - k0;
  if (rows <= 0 || cols <= 0 || depth <= 0) return;
  // A block beyond the reserved panels would be left without its update.
  Require(rows <= rows_ && cols <= cols_ && depth <= depth_, "ProductUpdate::Apply: block beyond the reserve");
  const Kernel& K = TheKernel();
  const int mr = K.mr, nr = K.nr;
  const int row_slivers = Slivers(rows, mr), col_slivers = Slivers(cols, nr);
  const int row_tiles = Slivers(row_slivers, kRowSliversPerTile);
  const int col_tiles = Slivers(col_slivers, kColSliversPerTile);
  const std::size_t a_sliver = static_cast<std::size_t>(mr) * depth;
  const std::size_t b_sliver = static_cast<std::size_t>(nr) * depth;
  float* const Ap = packed_a_.data();
  float* const Bp = packed_b_.data();
  auto at = [a, lda](int i, int j) { return a + static_cast<std::size_t>(i) + static_cast<std::size_t>(j) * lda; };
  const bool parallel = static_cast<double>(rows) * cols * depth >= kParallelWork;

#pragma omp parallel if (parallel)
  {
    // A by slivers of mr rows, k-major; rows past the end are zeros and never stored.
    // The tiles wait for both packings at the end of the second.
#pragma omp for schedule(static) nowait
    for (int s = 0; s < row_slivers; ++s) {
      float* dst = Ap + static_cast<std::size_t>(s) * a_sliver;
      const int r0 = i0 + s * mr;
      const int live = std::min(mr, i1 - r0);
      for (int k = 0; k < depth; ++k) {
        const float* src = at(r0, k0 + k);
        float* d = dst + static_cast<std::size_t>(k) * mr;
        for (int r = 0; r < live; ++r) d[r] = src[r];
        for (int r = live; r < mr; ++r) d[r] = 0.0f;
      }
    }
    // B by slivers of nr columns, k-major.
#pragma omp for schedule(static)
    for (int t = 0; t < col_slivers; ++t) {
      float* dst = Bp + static_cast<std::size_t>(t) * b_sliver;
      const int q0 = c0 + t * nr;
      const int live = std::min(nr, c1 - q0);
      for (int x = 0; x < nr; ++x) {
        if (x < live) {
          const float* src = at(k0, q0 + x);
          for (int k = 0; k < depth; ++k) dst[static_cast<std::size_t>(k) * nr + x] = src[k];
        } else {
          for (int k = 0; k < depth; ++k) dst[static_cast<std::size_t>(k) * nr + x] = 0.0f;
        }
      }
    }
    // The tiles; a tile at the ragged edge goes through a full-size copy.
    float edge[32 * 16];
#pragma omp for schedule(dynamic) collapse(2)
    for (int tc = 0; tc < col_tiles; ++tc) {
      for (int tr = 0; tr < row_tiles; ++tr) {
        const int s_end = std::min(row_slivers, (tr + 1) * kRowSliversPerTile);
        const int t_end = std::min(col_slivers, (tc + 1) * kColSliversPerTile);
        for (int s = tr * kRowSliversPerTile; s < s_end; ++s) {
          const int r0 = i0 + s * mr;
          const int live_r = std::min(mr, i1 - r0);
          for (int t = tc * kColSliversPerTile; t < t_end; ++t) {
            const int q0 = c0 + t * nr;
            const int live_c = std::min(nr, c1 - q0);
            const float* as = Ap + static_cast<std::size_t>(s) * a_sliver;
            const float* bs = Bp + static_cast<std::size_t>(t) * b_sliver;
            if (live_r == mr && live_c == nr) {
              K.fn(depth, as, bs, at(r0, q0), lda);
              continue;
            }
            for (int x = 0; x < nr; ++x)
              for (int r = 0; r < mr; ++r) edge[x * mr + r] = (x < live_c && r < live_r) ? *at(r0 + r, q0 + x) : 0.0f;
            K.fn(depth, as, bs, edge, static_cast<std::size_t>(mr));
            for (int x = 0; x < live_c; ++x)
              for (int r = 0; r < live_r; ++r) *at(r0 + r, q0 + x) = edge[x * mr + r];
          }
        }
      }
    }
  }
}

}  // namespace quellon
