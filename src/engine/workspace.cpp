#include "engine/workspace.h"

#include <cstdint>
#include <fstream>
#include <new>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"

namespace quellon {

namespace {

constexpr int kStatusOk = 0;
constexpr int kStatusNoMemory = 41;  // insufficient virtual memory

// The memory this process can still be given: the kernel's estimate of available
// memory. On a machine that overcommits, an allocation far beyond it would succeed and
// the process would be killed later while the zeros are written; asking first turns
// that into an orderly failure.
std::uint64_t AvailableMemoryBytes() {
  std::ifstream meminfo("/proc/meminfo");
  std::string key;
  std::uint64_t value = 0;
  std::string unit;
  while (meminfo >> key >> value >> unit) {
    if (key == "MemAvailable:") return value * 1024u;
  }
  return UINT64_MAX;
}

template <class Array, class... Sizes>
int Allocate(Array& a, std::uint64_t element_bytes, Sizes... sizes) {
  std::uint64_t count = 1;
  ((count *= static_cast<std::uint64_t>(sizes > 0 ? sizes : 0)), ...);
  if (count * element_bytes > AvailableMemoryBytes()) return kStatusNoMemory;
  try {
    a.resize(sizes...);
  } catch (const std::bad_alloc&) {
    a.release();
    return kStatusNoMemory;
  } catch (const std::length_error&) {
    a.release();
    return kStatusNoMemory;
  }
  return kStatusOk;
}

int Report(Engine& e, int status, const char* routine, const char* memory_text) {
  if (status == kStatusOk) return 1;
  LogLine(e, std::string(routine) + " returned status = " + std::to_string(status));
  if (status == kStatusNoMemory) {
    SendError(e, memory_text);
    LogLine(e, memory_text);
  }
  return 0;
}

}  // namespace

int Create1DRealMatrix(Engine& e, RealVector& a, int n) {
  return Report(e, Allocate(a, sizeof(float), n), "Create1DRealMatrix",
                "Insufficient virtual memory to proceed (creating 1D real matrix)");
}

int Create2DRealMatrix(Engine& e, RealMatrix& a, int rows, int cols) {
  return Report(e, Allocate(a, sizeof(float), rows, cols), "Create2DRealMatrix",
                "Insufficient virtual memory to proceed (creating 2D real matrix)");
}

int Create1DLogicalMatrix(Engine& e, LogicalVector& a, int n) {
  return Report(e, Allocate(a, sizeof(std::int32_t), n), "Create1DLogicalMatrix",
                "Insufficient virtual memory to proceed (creating 1D logical matrix)");
}

int Create2DLogicalMatrix(Engine& e, LogicalMatrix& a, int rows, int cols) {
  return Report(e, Allocate(a, sizeof(std::int32_t), rows, cols), "Create2DLogicalMatrix",
                "Insufficient virtual memory to proceed (creating 2D logical matrix)");
}

int Create1DIntegerMatrix(Engine&, IntegerVector& a, int n) {
  return Allocate(a, sizeof(std::int32_t), n) == kStatusOk ? 1 : 0;
}

int CreateWorkspace(Engine& e) {
  Workspace& w = e.ws;
  const int n = e.foundation.NumberOfElements;
  const int P = e.foundation.NumberOfPiles;
  const int M = 4 * n + 1;
  const int N = M * P;
  const int I = e.actions.NumberOfIncrements;
  const int K = e.project.DynamicModel ? 6 * P : 6;

  RealVector* vectorsN[] = {
      &w.SoilDispInc,   &w.DispAxialInc, &w.DispXInc,    &w.DispYInc,       &w.TwistInc,     &w.DispAxial,
      &w.DispX,         &w.DispY,        &w.Twist,       &w.StressAxialInc, &w.StressXInc,   &w.LoadAxialInc,
      &w.ShearXInc,     &w.MomentXZInc,  &w.StressYInc,  &w.ShearYInc,      &w.MomentYZInc,  &w.StressTorsionInc,
      &w.TorqueInc,     &w.LimitAxial,   &w.LimitX,      &w.LimitY,         &w.LimitTorsion, &w.StressAxial,
      &w.StressX,       &w.StressY,      &w.StressTorsion, &w.LoadAxial,    &w.ShearX,       &w.MomentXZ,
      &w.ShearY,        &w.MomentYZ,     &w.Torque};
  RealVector* vectorsP[] = {&w.HeadDispAxial,    &w.HeadDispX,    &w.HeadDispY,        &w.HeadTwist,
                            &w.HeadDispAxialInc, &w.HeadDispXInc, &w.HeadDispYInc,     &w.HeadTwistInc,
                            &w.PileHeadAxial,    &w.PileHeadX,    &w.PileHeadMomentXZ, &w.PileHeadY,
                            &w.PileHeadMomentYZ, &w.PileHeadTorque};
  RealVector* vectors6[] = {&w.CapDispInc, &w.CapDispTotal, &w.CapLoadInc, &w.CapLoadTotal};

  bool ok = true;
  for (RealVector* v : vectorsN) ok = ok && Create1DRealMatrix(e, *v, N);
  for (RealVector* v : vectorsP) ok = ok && Create1DRealMatrix(e, *v, P);
  for (RealVector* v : vectors6) ok = ok && Create1DRealMatrix(e, *v, 6);
  if (!ok) {
    const char* text = "Error - insufficient memory/address space to create 1D matrices";
    LogLine(e, text);
    SendError(e, text);
    return 0;
  }

  struct Shape {
    RealMatrix* m;
    int rows, cols;
  };
  const Shape before_yield[] = {{&w.GD, N, N}, {&w.G, N, N}, {&w.D, N, N}, {&w.G0, N, N}};
  const Shape after_yield[] = {
      {&w.soil_K, M, M},           {&w.pair_K, M, M},           {&w.pile_D, M, M},
      {&w.HeadAxial, P, K},        {&w.HeadX, P, K},            {&w.HeadMomentXZ, P, K},
      {&w.HeadY, P, K},            {&w.HeadMomentYZ, P, K},     {&w.HeadTorque, P, K},
      {&w.UnitStressAxial, N, K},  {&w.UnitStressX, N, K},      {&w.UnitStressY, N, K},
      {&w.UnitStressTorsion, N, K}, {&w.UBCV, N, K},            {&w.Tractions, N, K},
      {&w.HistoryDisp, I, K},      {&w.HistoryLoad, I, K},      {&w.HistoryDispInc, I, K},
      {&w.SectionEA, n + 1, P},    {&w.SectionEIx, n + 1, P},   {&w.SectionEIy, n + 1, P},
      {&w.SectionGJ, n + 1, P}};
  for (const Shape& s : before_yield) ok = ok && Create2DRealMatrix(e, *s.m, s.rows, s.cols);
  ok = ok && Create2DLogicalMatrix(e, w.Yielded, 4, N);
  for (const Shape& s : after_yield) ok = ok && Create2DRealMatrix(e, *s.m, s.rows, s.cols);
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
  // Releasing the workspace means dropping every array: a fresh object holds none.
  Workspace fresh;
  fresh.YieldCountAxial = e.ws.YieldCountAxial;
  fresh.YieldCountX = e.ws.YieldCountX;
  fresh.YieldCountY = e.ws.YieldCountY;
  fresh.YieldCountTorsion = e.ws.YieldCountTorsion;
  std::swap(e.ws, fresh);
}

}  // namespace quellon
