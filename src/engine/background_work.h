// Work of a run that the host need not wait for, done on a thread the engine owns.
//
// Giving back the hundreds of megabytes of a large run costs the system a pass over the
// page tables and the freeing of every page: tens of milliseconds at the end of the run,
// for which the host would wait although nothing it receives depends on it. The run's
// matrices are therefore handed to a thread that frees them while the host goes on.
//
// The thread is never detached: it is joined before a new workspace is created (whose
// arrays are sized against the memory still available), before the memory probe is
// asked anything else, and when the engine is destroyed, which is also when a library
// that holds one is unloaded. So the memory is back wherever the engine next needs it,
// and nothing outlives the engine that owns it.
#pragma once

#include <cstddef>
#include <exception>
#include <thread>
#include <utility>
#include <vector>

#include "engine/arrays.h"

namespace quellon {

// One piece of work on a thread of its own, joined by Wait() and on destruction.
class BackgroundTask {
 public:
  BackgroundTask() = default;
  ~BackgroundTask() { Wait(); }
  BackgroundTask(const BackgroundTask&) = delete;
  BackgroundTask& operator=(const BackgroundTask&) = delete;

  // Finishes the work in hand, then starts f; false when no thread could be started
  // (f, with whatever it owns, is then destroyed unrun).
  template <class F>
  bool Start(F&& f) {
    Wait();
    try {
      worker_ = std::thread(std::forward<F>(f));
    } catch (const std::exception&) {  // no thread to be had, or no memory for its start
      return false;
    }
    return true;
  }

  // Returns once the work started last is done.
  void Wait() {
    if (worker_.joinable()) worker_.join();
  }

  // Whether work was started and not yet joined.
  bool Pending() const { return worker_.joinable(); }

 private:
  std::thread worker_;
};

// Whether a run's arrays are freed on a thread. Not on Windows: a library unloaded there
// runs its destructors under the loader's lock, which a thread still ending would need,
// so that joining it could hang the unload.
#if defined(_WIN32)
inline constexpr bool kReleaseInBackground = false;
#else
inline constexpr bool kReleaseInBackground = true;
#endif

// The release of a finished run's matrices.
class BackgroundRelease {
 public:
  // Takes the storage of the arrays (they are left empty) and frees it: on the thread
  // when there are at least threshold bytes, here and now otherwise, on Windows, or when
  // no thread can be started. A release still under way is finished first.
  void Take(std::vector<RealMatrix>&& real, std::vector<IntegerMatrix>&& integer);

  void Wait() { task_.Wait(); }
  bool Pending() const { return task_.Pending(); }

  // Below this many bytes a thread costs more than the freeing it saves.
  std::size_t threshold = std::size_t{16} << 20;

 private:
  BackgroundTask task_;
};

}  // namespace quellon
