#include "engine/workspace.h"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <climits>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "engine/engine.h"
#include "engine/notify.h"

namespace quellon {

namespace {

// Allocator statuses. 0 is success; 41 stands for insufficient virtual memory, the one
// failure the engine tells apart. Exhausted memory is any of: a size that no index of
// the engine can address (above 2^31 - 1 rows or columns), a request above what the
// memory probe says the process can still be given, or the allocator itself failing.
constexpr int kStatusOk = 0;
constexpr int kStatusNoMemory = 41;

using Size = std::int64_t;

Size Clamp(Size n) { return n > 0 ? n : 0; }

// a * b for non-negative a and b, saturating instead of overflowing.
Size Product(Size a, Size b) {
  if (a == 0 || b == 0) return 0;
  return a > INT64_MAX / b ? INT64_MAX : a * b;
}

template <class Array>
int Allocate(Engine& e, Array& a, std::size_t element_bytes, Size rows, Size cols) {
  rows = Clamp(rows);
  cols = Clamp(cols);
  if (rows > INT_MAX || cols > INT_MAX) return kStatusNoMemory;
  const std::uint64_t count = static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(cols);
  if (count > UINT64_MAX / element_bytes) return kStatusNoMemory;
  const std::uint64_t bytes = count * element_bytes;
  if (bytes > 0 && e.memory_probe != nullptr && bytes > e.memory_probe()) return kStatusNoMemory;
  try {
    if constexpr (requires { a.resize(1, 1); }) {
      a.resize(static_cast<int>(rows), static_cast<int>(cols));
    } else {
      a.resize(static_cast<int>(rows));
    }
  } catch (const std::bad_alloc&) {
    a.release();
    return kStatusNoMemory;
  } catch (const std::length_error&) {
    a.release();
    return kStatusNoMemory;
  }
  return kStatusOk;
}

#if defined(QUELLON_HUGE_PAGES) && defined(__linux__)
// Asks the system for huge pages under the pages of an N by N matrix that the system of
// equations is factorised in: fewer misses of the address translation in the block
// updates. Only the whole 2 MiB pages inside the matrix are advised.
void AdviseHugePages(RealMatrix& m) {
  constexpr std::uintptr_t kHuge = std::uintptr_t{2} << 20;
  const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(m.data());
  const std::uintptr_t end = begin + m.count() * sizeof(float);
  const std::uintptr_t first = (begin + kHuge - 1) & ~(kHuge - 1), last = end & ~(kHuge - 1);
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}
#else
void AdviseHugePages(RealMatrix&) {}
#endif

int Report(Engine& e, int status, const char* routine, const char* memory_text) {
  if (status == kStatusOk) return 1;
  LogLine(e, std::string(routine) + " returned status = " + std::to_string(status));
  if (status == kStatusNoMemory) {
    SendError(e, memory_text);
    LogLine(e, memory_text);
  }
  return 0;
}

// The creation routines with sizes wide enough for the workspace's products, which may
// exceed what an int holds before they are refused.
int CreateReal1D(Engine& e, RealVector& a, Size n) {
  return Report(e, Allocate(e, a, sizeof(float), n, 1), "Create1DRealMatrix",
                "Insufficient virtual memory to proceed (creating 1D real matrix)");
}

int CreateReal2D(Engine& e, RealMatrix& a, Size rows, Size cols) {
  return Report(e, Allocate(e, a, sizeof(float), rows, cols), "Create2DRealMatrix",
                "Insufficient virtual memory to proceed (creating 2D real matrix)");
}

int CreateLogical2D(Engine& e, LogicalMatrix& a, Size rows, Size cols) {
  return Report(e, Allocate(e, a, sizeof(std::int32_t), rows, cols), "Create2DLogicalMatrix",
                "Insufficient virtual memory to proceed (creating 2D logical matrix)");
}

}  // namespace

void PopulateForWriting(float* first, std::size_t count) {
#if defined(__linux__)
  // The advice is newer than some C libraries' headers; its number is fixed.
  constexpr int kPopulateWrite = 23;
  static const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(first);
  const std::uintptr_t end = begin + count * sizeof(float);
  const std::uintptr_t from = (begin + page - 1) & ~(page - 1), to = end & ~(page - 1);
  if (to > from) madvise(reinterpret_cast<void*>(from), to - from, kPopulateWrite);
#else
  (void)first;
  (void)count;
#endif
}

int Create1DRealMatrix(Engine& e, RealVector& a, int n) { return CreateReal1D(e, a, n); }

int Create2DRealMatrix(Engine& e, RealMatrix& a, int rows, int cols) { return CreateReal2D(e, a, rows, cols); }

int Create1DLogicalMatrix(Engine& e, LogicalVector& a, int n) {
  return Report(e, Allocate(e, a, sizeof(std::int32_t), n, 1), "Create1DLogicalMatrix",
                "Insufficient virtual memory to proceed (creating 1D logical matrix)");
}

int Create2DLogicalMatrix(Engine& e, LogicalMatrix& a, int rows, int cols) {
  return CreateLogical2D(e, a, rows, cols);
}

int Create1DIntegerMatrix(Engine& e, IntegerVector& a, int n) {
  return Allocate(e, a, sizeof(std::int32_t), n, 1) == kStatusOk ? 1 : 0;
}

int CreateWorkspace(Engine& e) {
  Workspace& w = e.ws;
  // The shapes in 64 bits: a model far too large must be refused, not overflow.
  const Size n = Clamp(e.foundation.NumberOfElements);
  const Size P = Clamp(e.foundation.NumberOfPiles);
  const Size M = 4 * n + 1;
  const Size N = Product(M, P);
  const Size I = Clamp(e.actions.NumberOfIncrements);
  const Size K = 6;
  const bool nonlinear = e.project.NonLinear != 0;
  const Size N_nonlinear = nonlinear ? N : 0;
  // The last run's arrays must be back before this one's are sized against what is left.
  e.released_arrays.Wait();
  w.system.Reset();

  RealVector* const vectorsN[] = {
      &w.SoilDispInc,  &w.DispAxialInc,  &w.DispXInc,       &w.DispYInc,          &w.TwistInc,
      &w.DispAxial,    &w.DispX,         &w.DispY,          &w.Twist,             &w.StressAxialInc,
      &w.StressXInc,   &w.LoadAxialInc,  &w.ShearXInc,      &w.MomentXZInc,       &w.StressYInc,
      &w.ShearYInc,    &w.MomentYZInc,   &w.StressTorsionInc, &w.TorqueInc,       &w.LimitAxial,
      &w.LimitX,       &w.LimitY,        &w.LimitTorsion,   &w.StressAxial,       &w.StressX,
      &w.StressY,      &w.StressTorsion, &w.LoadAxial,      &w.ShearX,            &w.MomentXZ,
      &w.ShearY,       &w.MomentYZ,      &w.Torque};
  RealVector* const vectorsP[] = {&w.HeadDispAxial,    &w.HeadDispX,    &w.HeadDispY,        &w.HeadTwist,
                                  &w.HeadDispAxialInc, &w.HeadDispXInc, &w.HeadDispYInc,     &w.HeadTwistInc,
                                  &w.PileHeadAxial,    &w.PileHeadX,    &w.PileHeadMomentXZ, &w.PileHeadY,
                                  &w.PileHeadMomentYZ, &w.PileHeadTorque};
  RealVector* const vectors6[] = {&w.CapDispInc, &w.CapDispTotal, &w.CapLoadInc, &w.CapLoadTotal};

  bool ok = true;
  for (RealVector* v : vectorsN) ok = ok && CreateReal1D(e, *v, N);
  for (RealVector* v : vectorsP) ok = ok && CreateReal1D(e, *v, P);
  for (RealVector* v : vectors6) ok = ok && CreateReal1D(e, *v, 6);
  ok = ok && CreateReal1D(e, w.SoftFactor, N_nonlinear);
  ok = ok && Create1DIntegerMatrix(e, w.SoftReleasedAt, static_cast<int>(N_nonlinear)) == 1;
  ok = ok && Create1DIntegerMatrix(e, w.SoftChangedAt, static_cast<int>(N_nonlinear)) == 1;
  if (!ok) {
    // What was made goes at once, so that a failed creation never holds memory; the
    // driver's own release afterwards finds nothing left, which does no harm.
    const char* text = "Error - insufficient memory/address space to create 1D matrices";
    LogLine(e, text);
    SendError(e, text);
    ReleaseWorkspace(e);
    return 0;
  }

  struct Shape {
    RealMatrix* m;
    Size rows, cols;
  };
  const Shape square[] = {{&w.system.GD, N_nonlinear, N_nonlinear}, {&w.G, N, N}, {&w.D, M, N}};
  const Shape rest[] = {
      {&w.soil_K, M, M},            {&w.pair_K, M, M},          {&w.pile_D, M, M},
      {&w.HeadAxial, P, K},         {&w.HeadX, P, K},           {&w.HeadMomentXZ, P, K},
      {&w.HeadY, P, K},             {&w.HeadMomentYZ, P, K},    {&w.HeadTorque, P, K},
      {&w.UnitStressAxial, N, K},   {&w.UnitStressX, N, K},     {&w.UnitStressY, N, K},
      {&w.UnitStressTorsion, N, K}, {&w.UBCV, N, K},            {&w.Tractions, N, K},
      {&w.HistoryDisp, I, K},       {&w.HistoryLoad, I, K},     {&w.HistoryDispInc, I, K},
      {&w.SectionEA, n + 1, P},     {&w.SectionEIx, n + 1, P},  {&w.SectionEIy, n + 1, P},
      {&w.SectionGJ, n + 1, P}};
  for (const Shape& s : square) ok = ok && CreateReal2D(e, *s.m, s.rows, s.cols);
  if (ok) AdviseHugePages(nonlinear ? w.system.GD : w.G);  // the matrix that will be factorised
  ok = ok && CreateLogical2D(e, w.Yielded, 4, N);
  for (const Shape& s : rest) ok = ok && CreateReal2D(e, *s.m, s.rows, s.cols);
  ok = ok && CreateLogical2D(e, w.SoilBlockState, P, P);
  ok = ok && CreateLogical2D(e, w.SoilBlockIndex, P, P);
  if (!ok) {
    const char* text = "Error - insufficient memory/address space to create 2D matrices";
    LogLine(e, text);
    SendError(e, text);
    ReleaseWorkspace(e);
    return 0;
  }
  return 1;
}

void ReleaseWorkspace(Engine& e) {
  // Every array goes, matrices first, whether or not it was made; the yield counters are
  // plain integers beside the arrays and are zeroed by their own routine, not here.
  ForEachArray(e.ws, [](auto& a) { a.release(); });
  e.ws.system.Reset();
}

void ReleaseWorkspaceAfterRun(Engine& e) {
  try {
    std::vector<RealMatrix> real;
    std::vector<IntegerMatrix> integer;
    ForEachArray(e.ws, [&](auto& a) {
      using Array = std::remove_reference_t<decltype(a)>;
      if constexpr (std::is_same_v<Array, RealMatrix>) {
        if (!a.empty()) real.push_back(std::move(a));
      } else if constexpr (std::is_same_v<Array, IntegerMatrix>) {
        if (!a.empty()) integer.push_back(std::move(a));
      }
    });
    e.released_arrays.Take(std::move(real), std::move(integer));
  } catch (const std::bad_alloc&) {
    // No room for the lists: what they took is freed as they go, the rest below.
  }
  ReleaseWorkspace(e);  // the vectors, small beside the matrices, and the system's state
}

}  // namespace quellon
