#include "engine/model_tables.h"

#include <new>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"

namespace quellon {

int CreateLayers(Engine& e, int n) {
  Borehole& b = e.borehole;
  const int rows = n > 0 ? n : 0;
  if (b.LayersCreated) {
    LogLine(e, "Error creating layers!");
    return 0;
  }
  try {
    b.LayerTable.assign(static_cast<std::size_t>(rows), Layer{});
  } catch (const std::bad_alloc&) {
    LogLine(e, "Error creating layers!");
    return 0;
  }
  b.LayersCreated = true;
  b.NumberOfLayers = rows;
  LogLine(e, "Created " + std::to_string(rows) + " layers");
  return 1;
}

int CreatePiles(Engine& e, int n) {
  Foundation& f = e.foundation;
  const int rows = n > 0 ? n : 0;
  auto fail = [&e] {
    LogLine(e, "Error creating piles!");
    SendError(e, "Error creating piles!");
    return 0;
  };
  if (f.PilesCreated) return fail();
  try {
    f.PileTable.assign(static_cast<std::size_t>(rows), Pile{});
  } catch (const std::bad_alloc&) {
    return fail();
  }
  for (int i = 1; i <= rows; ++i) f.Piles(i).Number = i;
  f.PilesCreated = true;
  f.NumberOfPiles = rows;
  LogLine(e, "Created " + std::to_string(rows) + " piles");
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
  f.PilesCreated = false;
  f.NumberOfPiles = 0;
  f.NumberOfElements = 0;
  f.CentreOfRotationX = 0;
  f.CentreOfRotationY = 0;
  f.FreeStandingLength = 0;
  f.CapStiffness = 0;
}

}  // namespace quellon
