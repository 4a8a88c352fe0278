// The release of a finished run's large arrays, off the run's path.
//
// Giving back hundreds of megabytes costs the system a pass over the page tables and
// the freeing of every page: tens of milliseconds at the end of a large run, for which
// the host would wait although nothing it receives depends on it. The engine hands such
// arrays to a thread of its own that frees them while the host goes on.
//
// The thread is never detached: the engine joins it before a new workspace is created
// (whose size is decided against the memory still available), before the memory probe
// is asked anything else, and when the engine is destroyed, which is also when a library
// that holds one is unloaded. So the memory is back wherever the engine next needs it,
// and nothing outlives the engine that owns it.
#pragma once

#include <cstddef>
#include <thread>
#include <vector>

#include "engine/arrays.h"

namespace quellon {

class BackgroundRelease {
 public:
  BackgroundRelease() = default;
  ~BackgroundRelease() { Wait(); }
  BackgroundRelease(const BackgroundRelease&) = delete;
  BackgroundRelease& operator=(const BackgroundRelease&) = delete;

  // Takes the storage of the arrays (they are left empty) and frees it: on a thread of
  // its own when there are at least threshold bytes, here and now otherwise or when no
  // thread can be started. A release still under way is finished first.
  void Take(std::vector<RealMatrix>&& real, std::vector<IntegerMatrix>&& integer);

  // Returns once every array handed over has been freed.
  void Wait();

  // Whether a release is running or finished but not yet joined.
  bool Pending() const { return worker_.joinable(); }

  // Below this many bytes a thread costs more than the freeing it saves.
  std::size_t threshold = std::size_t{16} << 20;

 private:
  std::thread worker_;
};

}  // namespace quellon
