#include "engine/engine.h"

namespace quellon {

Engine& TheEngine() {
  // Zero bits at load: every record field starts at 0, the reset values are not yet in
  // force.
  static Engine engine;
  return engine;
}

}  // namespace quellon
