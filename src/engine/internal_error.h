// Impossible states inside the engine: a shape or an index that the caller was bound to
// give right. Such a state is a fault of the engine, not of the model, and a quiet return
// would look like success with wrong numbers; it throws instead, and the run (or the
// export's guard) ends as a failure with the message "Internal error".
#pragma once

#include <stdexcept>

namespace quellon {

class InternalError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

// Throws InternalError(what) unless condition holds.
inline void Require(bool condition, const char* what) {
  if (!condition) throw InternalError(what);
}

}  // namespace quellon
