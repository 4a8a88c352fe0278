// Exported setters of the load cases: named cap loads worked after the run's own
// increment, the path of their document, and the callback that receives each case.
#include <cmath>
#include <optional>
#include <string>

#include "engine/capi_guard.h"
#include "engine/file_units.h"
#include "engine/fixed_text.h"
#include "engine/log_echo.h"
#include "quellon.h"

using namespace quellon;

namespace {

bool AllFinite(std::initializer_list<float> values) {
  for (float v : values)
    if (!std::isfinite(v)) return false;
  return true;
}

}  // namespace

extern "C" {

int QuellonAddLoadCase(const char* name, int count, double fx, double fy, double fz, double mx, double my,
                       double mz, double x, double y) {
  return ModelSetter([&](Engine& e) {
    LoadCase c;
    c.name = std::string(HostTextPrefix(name, count));
    Actions& a = c.loads;
    a.NumberOfIncrements = 1;
    EchoName(e, "AddLoadCase...");
    EchoValues(e, "Name = " + c.name);
    StoreCapLoads(e, a, fx, fy, fz, mx, my, mz, x, y);
    // A number that is out of float range or not a number would spoil every result of
    // the case; it is refused here, where the host can still tell which case it was.
    if (!AllFinite({a.Fx, a.Fy, a.Fz, a.Mx, a.My, a.Mz, a.X, a.Y})) {
      SendError(e, "Load case '" + c.name + "' refused: a load or its point is not a finite number");
      return 0;
    }
    e.load_cases.cases.push_back(std::move(c));
    return static_cast<int>(e.load_cases.cases.size());
  });
}

int QuellonClearLoadCases(void) {
  return ModelSetter([](Engine& e) {
    EchoName(e, "ClearLoadCases...");
    std::vector<LoadCase>().swap(e.load_cases.cases);
    return 1;
  });
}

int QuellonGetNumberOfLoadCases(void) {
  return Guarded([] { return static_cast<int>(TheEngine().load_cases.cases.size()); });
}

int QuellonSetLoadCaseXMLFile(const char* path) {
  return ModelSetter([&](Engine& e) {
    const std::optional<std::string> p = PathWithinWidth(e, path);
    if (!p) return 0;
    EchoName(e, "SetLoadCaseXMLFile...");
    EchoValues(e, "Path = " + *p);
    e.load_cases.xml_path = *p;
    return 1;
  });
}

int QuellonSetLoadCaseCallback(QuellonLoadCaseFn fn) {
  return Guarded([&] {
    Engine& e = TheEngine();
    e.load_cases.callback = fn;
    if (fn != nullptr) {
      SendInfo(e, "LoadCase callback established");
    } else {
      SendError(e, "LoadCase callback not set");
    }
    return 1;
  });
}

}  // extern "C"
