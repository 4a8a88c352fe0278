// The check of the model in hand without a run: everything a run refuses before it
// assembles anything, and the warnings about places where the method misleads. The
// model, the LOG and the host's message function are left as they were; what the check
// finds goes to the check's list of findings (QuellonGetDiagnostic).
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/capi_guard.h"
#include "engine/diagnostics.h"
#include "engine/engine.h"
#include "engine/model_checks.h"
#include "engine/model_lint.h"
#include "quellon.h"
#include "soil/soil.h"
#include "solution/solution.h"

namespace quellon {

namespace {

std::vector<std::string>& Refusals() {
  static std::vector<std::string> texts;
  return texts;
}

void TakeRefusal(const int* severity, const char* text) {
  if (*severity >= kError && text != nullptr) Refusals().emplace_back(text);
}

// What the checks write into the records and the workspace besides their verdict: the
// soil entry points, the centre of rotation, the loads of one increment and the error
// code. Saved on entry and put back on leaving, however the check ends; meanwhile the
// messages of the checks go to TakeRefusal instead of the host and the LOG.
class CheckScope {
 public:
  explicit CheckScope(Engine& e)
      : e_(e),
        callback_(e.project.MessageCallback),
        log_unit_(e.project.LOGUnit),
        delivering_(e.delivering_message),
        error_code_(e.project.ErrorCode),
        centre_{e.foundation.CentreOfRotationX, e.foundation.CentreOfRotationY} {
    // What may throw comes first, before anything of the engine's is taken over.
    for (const Pile& p : e.foundation.PileTable) entries_.push_back({p.SoilEntryX, p.SoilEntryY, p.SoilEntryZ});
    RealVector loads;
    loads.resize(6);
    Refusals().clear();
    std::swap(cap_load_inc_, e.ws.CapLoadInc);
    std::swap(e.ws.CapLoadInc, loads);
    e.project.MessageCallback = &TakeRefusal;
    e.project.LOGUnit = 0;
    e.delivering_message = false;
  }
  ~CheckScope() {
    e_.project.MessageCallback = callback_;
    e_.project.LOGUnit = log_unit_;
    e_.delivering_message = delivering_;
    e_.project.ErrorCode = error_code_;
    e_.foundation.CentreOfRotationX = centre_[0];
    e_.foundation.CentreOfRotationY = centre_[1];
    e_.ws.CapLoadInc = std::move(cap_load_inc_);
    std::size_t i = 0;
    for (Pile& p : e_.foundation.PileTable) {
      if (i >= entries_.size()) break;
      p.SoilEntryX = entries_[i][0];
      p.SoilEntryY = entries_[i][1];
      p.SoilEntryZ = entries_[i][2];
      ++i;
    }
  }
  CheckScope(const CheckScope&) = delete;
  CheckScope& operator=(const CheckScope&) = delete;

 private:
  Engine& e_;
  QuellonMessageFn callback_;
  std::int32_t log_unit_;
  bool delivering_;
  std::int32_t error_code_;
  float centre_[2];
  RealVector cap_load_inc_;
  std::vector<std::array<float, 3>> entries_;
};

int CheckModelInHand(Engine& e) {
  std::vector<Diagnostic>& found = CheckDiagnostics();
  found.clear();
  int ok = 0;
  {
    CheckScope scope(e);
    PrepareGroupGeometry(e);
    ok = CheckModel(e) != 0 && CheckCoincidentMidpoints(e) != 0 ? 1 : 0;
    if (ok == 1) LintModel(e, found);
  }
  std::vector<Diagnostic> refused;
  for (const std::string& text : Refusals()) {
    std::string_view t = text;
    if (t.rfind("Error - ", 0) == 0) t.remove_prefix(8);
    refused.push_back(Diagnostic{2, "refused", 0, std::string(t)});
  }
  found.insert(found.begin(), refused.begin(), refused.end());
  Refusals().clear();
  return ok;
}

}  // namespace

}  // namespace quellon

extern "C" QUELLON_API int QuellonCheckModel(void) {
  return quellon::Guarded([] {
    quellon::Engine& e = quellon::TheEngine();
    if (e.running) {
      quellon::SendError(e, quellon::kBusyText);
      return 0;
    }
    return quellon::CheckModelInHand(e);
  });
}
