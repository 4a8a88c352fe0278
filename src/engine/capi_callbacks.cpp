// Exported registration of the host's functions. Each stores the pointer first, null
// included, and then tells the host: an info message when a function was set, an error
// message when the entry was cleared. The message entry's own registration therefore
// reports through the function it has just stored.
#include "engine/capi_guard.h"
#include "quellon.h"

using namespace quellon;

namespace {

template <class Fn>
int Register(Fn& entry, Fn fn, const char* established, const char* not_set) {
  return Guarded([&] {
    entry = fn;
    Engine& e = TheEngine();
    if (fn != nullptr) {
      SendInfo(e, established);
    } else {
      SendError(e, not_set);
    }
    return 1;
  });
}

}  // namespace

extern "C" {

int QuellonSetProjectCounterCallback(QuellonCounterFn fn) {
  return Register(TheEngine().project.CounterCallback, fn, "Counter callback established",
                  "Counter callback not set");
}

int QuellonSetProjectMessageCallback(QuellonMessageFn fn) {
  return Register(TheEngine().project.MessageCallback, fn, "Message callback established",
                  "Message callback not set");
}

int QuellonSetCreateIncrementCallback(QuellonCreateIncrementFn fn) {
  return Register(TheEngine().callbacks.CreateIncrement, fn, "CreateIncrement callback established",
                  "CreateIncrement callback not set");
}

int QuellonSetPileCapLoadsCallback(QuellonPileCapLoadsFn fn) {
  return Register(TheEngine().callbacks.SendPileCapLoads, fn, "SendPileCapLoads callback established",
                  "SendPileCapLoads callback not set");
}

int QuellonSetPileCapDisplacementsCallback(QuellonPileCapDisplacementsFn fn) {
  return Register(TheEngine().callbacks.SendPileCapDisplacements, fn,
                  "SendPileCapDisplacements callback established", "SendPileCapDisplacements callback not set");
}

int QuellonSetForceDisplacementStiffnessesCallback(QuellonForceDisplacementStiffnessesFn fn) {
  return Register(TheEngine().callbacks.SendForceDisplacementStiffnesses, fn,
                  "SendForceDisplacementStiffnesses callback established",
                  "SendForceDisplacementStiffnesses callback not set");
}

int QuellonSetStiffnessMatrixCallback(QuellonStiffnessMatrixFn fn) {
  return Register(TheEngine().callbacks.SendStiffnessMatrix, fn, "SendStiffnessMatrix callback established",
                  "SendStiffnessMatrix callback not set");
}

int QuellonSetPileCapCentreOfRotationCallback(QuellonCentreOfRotationFn fn) {
  return Register(TheEngine().foundation.CentreOfRotationCallback, fn,
                  "PileCap.CentreOfRotation callback established", "PileCap.CentreOfRotation callback not set");
}

int QuellonCloseAllCallbacks(void) {
  return Guarded([] {
    Engine& e = TheEngine();
    // Without a message function nobody could be told, so nothing is cleared and only
    // the LOG hears of it.
    if (e.project.MessageCallback == nullptr) {
      LogLine(e, "[Error] Callbacks not cleared");
      return 1;
    }
    SendInfo(e, "Clearing all callbacks...");
    e.project.CounterCallback = nullptr;
    e.project.MessageCallback = nullptr;
    return 1;
  });
}

int QuellonSetWindowMessageObserver(QuellonWindowMessageFn fn) {
  return Guarded([&] {
    TheEngine().window_observer = fn;
    return 1;
  });
}

}  // extern "C"
