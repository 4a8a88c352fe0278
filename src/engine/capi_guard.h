// The one way across the C boundary: every export runs its body through Guarded(),
// which turns any exception (running out of memory above all) into the engine's failure
// result and an error message, so nothing ever unwinds into the host.
#pragma once

#include <new>
#include <type_traits>

#include "engine/engine.h"
#include "engine/notify.h"

namespace quellon {

template <class F>
auto Guarded(F&& body) noexcept -> decltype(body()) {
  using Result = decltype(body());
  try {
    return body();
  } catch (const std::bad_alloc&) {
    try {
      SendError(TheEngine(), "Insufficient virtual memory to proceed");
    } catch (...) {
    }
  } catch (...) {
    try {
      SendError(TheEngine(), "Internal error");
    } catch (...) {
    }
  }
  if constexpr (std::is_void_v<Result>) {
    return;
  } else {
    return Result{};
  }
}

// The body of a model setter, run through Guarded() on the engine behind the C API.
// While a run is in progress (a host calling back into the engine from one of its
// callbacks) the model is in use: a change could alter the shapes that the run's arrays
// were made for, so the call is refused with 0 and an error message
// (kBusyText).
template <class F>
int ModelSetter(F&& body) noexcept {
  return Guarded([&]() -> int {
    Engine& e = TheEngine();
    if (e.running) {
      SendError(e, kBusyText);
      return 0;
    }
    return body(e);
  });
}

}  // namespace quellon
