#include "engine/model_tables.h"

#include <cstdint>
#include <exception>
#include <new>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"

namespace quellon {

namespace {

// A table is refused, like a workspace array, when the memory probe says that the
// process can't be given it: filling it would otherwise invite the kernel to kill the
// process for memory.
bool TableFits(Engine& e, std::size_t rows, std::size_t row_bytes) {
  if (rows == 0 || e.memory_probe == nullptr) return true;
  e.released_arrays.Wait();  // the last run's arrays count as available
  return rows <= e.memory_probe() / row_bytes;
}

}  // namespace

// The count is stored as given, so a negative count reads back as it was passed while
// the table stays empty; every loop over the rows then simply runs no step.
int CreateLayers(Engine& e, int n) {
  Borehole& b = e.borehole;
  const std::size_t rows = static_cast<std::size_t>(n > 0 ? n : 0);
  if (b.LayersCreated) {
    LogLine(e, "Error creating layers!");
    return 0;
  }
  try {
    if (!TableFits(e, rows, sizeof(Layer))) throw std::bad_alloc();
    b.LayerTable.assign(rows, Layer{});
  } catch (const std::exception&) {  // bad_alloc, or a length beyond the vector's reach
    b.LayerTable.clear();
    LogLine(e, "Error creating layers!");
    return 0;
  }
  b.LayersCreated = true;
  b.NumberOfLayers = n;
  LogLine(e, "Created " + std::to_string(n) + " layers");
  return 1;
}

int CreatePiles(Engine& e, int n) {
  Foundation& f = e.foundation;
  const std::size_t rows = static_cast<std::size_t>(n > 0 ? n : 0);
  auto fail = [&e] {
    LogLine(e, "Error creating piles!");
    SendError(e, "Error creating piles!");
    return 0;
  };
  if (f.PilesCreated) return fail();
  try {
    if (!TableFits(e, rows, sizeof(Pile))) throw std::bad_alloc();
    f.PileTable.assign(rows, Pile{});
  } catch (const std::exception&) {
    f.PileTable.clear();
    return fail();
  }
  for (std::size_t i = 0; i < rows; ++i) f.PileTable[i].Number = static_cast<std::int32_t>(i + 1);
  f.PilesCreated = true;
  f.NumberOfPiles = n;
  LogLine(e, "Created " + std::to_string(n) + " piles");
  return 1;
}

void ResetProject(Engine& e) {
  Project& p = e.project;
  Project fresh;
  // Kept across a reset: the two callbacks, the five units and the last error code.
  fresh.CounterCallback = p.CounterCallback;
  fresh.MessageCallback = p.MessageCallback;
  fresh.TMWUnit = p.TMWUnit;
  fresh.TMKUnit = p.TMKUnit;
  fresh.TXTUnit = p.TXTUnit;
  fresh.XMLUnit = p.XMLUnit;
  fresh.LOGUnit = p.LOGUnit;
  fresh.ErrorCode = p.ErrorCode;
  fresh.Year = 2000;
  fresh.Month = 1;
  fresh.Day = 1;
  fresh.AutoNq = 1;
  fresh.InteractionFlag = 1;
  fresh.ElasticUnloading = 1;
  fresh.DynamicModel = 1;
  p = fresh;
}

void ResetActions(Engine& e) {
  e.actions = Actions{};
  e.actions.NumberOfIncrements = 1;
}

void ReleaseBorehole(Engine& e) {
  Borehole& b = e.borehole;
  std::vector<Layer>().swap(b.LayerTable);
  b.LayersCreated = false;
  b.NumberOfLayers = 0;
  b.DepthToRigidLayer = 0;
  b.Overburden = 0;
  b.LayerAveraging = 2;
}

void ReleaseFoundation(Engine& e) {
  Foundation& f = e.foundation;
  std::vector<Pile>().swap(f.PileTable);
  std::vector<PileFrame>().swap(f.Frames);
  f.PilesCreated = false;
  f.NumberOfPiles = 0;
  f.NumberOfElements = 0;
  f.CentreOfRotationX = 0;
  f.CentreOfRotationY = 0;
  f.FreeStandingLength = 0;
  f.CapStiffness = 0;
}

}  // namespace quellon
