// The host's choice of mechanics: the method as it is defined (0, the default) or with
// its known flaws corrected (1). The choice lives beside the callbacks in the engine, not
// in the model's records, so the reset at the end of a run leaves it as it was.
#include "engine/capi_guard.h"
#include "engine/log_echo.h"
#include "quellon.h"

using namespace quellon;

extern "C" {

int QuellonSetMechanics(int mode) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetMechanics...");
    if (mode != 0 && mode != 1) {
      SendError(e, "Mechanics must be 0 (as defined) or 1 (corrected). Value = " + Int(mode));
      return 0;
    }
    e.corrected_mechanics = mode == 1;
    EchoValues(e, std::string("Mechanics = ") + (e.corrected_mechanics ? "corrected" : "as defined"));
    return 1;
  });
}

int QuellonGetMechanics(void) {
  return Guarded([] { return TheEngine().corrected_mechanics ? 1 : 0; });
}

}  // extern "C"
