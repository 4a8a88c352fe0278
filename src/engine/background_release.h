// Work of a run that the host need not wait for, done on a thread the engine owns.
//
// Two costs of a large run are the system's, not the engine's: the first write to each
// fresh page of G (a trap, a clearing and an accounting per page, some 0.1 s for 400 MB)
// and the return of hundreds of megabytes at the end (a pass over the page tables and
// the freeing of every page: tens of milliseconds, for which the host would wait
// although nothing it receives depends on it). The first is started on a thread of its
// own as soon as G exists, while the run goes through the serial work before the
// assembly (the model's checks, the tables, the input reports) on the other core; the
// second is handed to a thread when the run ends.
//
// The threads are never detached: each is joined where what it works on must be done
// (G's pages before G is freed; the last run's memory before a new workspace is sized
// against what is left, before the memory probe is asked anything else) and when the
// engine is destroyed, which is also when a library that holds one is unloaded.
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

// The release of a finished run's matrices.
class BackgroundRelease {
 public:
  // Takes the storage of the arrays (they are left empty) and frees it: on the thread
  // when there are at least threshold bytes, here and now otherwise or when no thread
  // can be started. A release still under way is finished first.
  void Take(std::vector<RealMatrix>&& real, std::vector<IntegerMatrix>&& integer);

  void Wait() { task_.Wait(); }
  bool Pending() const { return task_.Pending(); }

  // Below this many bytes a thread costs more than the freeing it saves.
  std::size_t threshold = std::size_t{16} << 20;

 private:
  BackgroundTask task_;
};

}  // namespace quellon
