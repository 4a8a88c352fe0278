// Wall time by phase of a run, for whoever wants to know where a run spends its time (the
// benchmarks). The engine holds a pointer to a timer, null by default; the driver and the
// assembly open a PhaseScope around each phase, which does nothing at all without a
// timer. The library itself never prints or reads the figures.
//
// Scopes nest: the time goes to the innermost phase open, and an outer phase resumes
// when the inner scope closes, so the phases add up to the time of the run.
#pragma once

#include <chrono>

namespace quellon {

enum class Phase {
  kOther,        // whatever no scope claims
  kWorkspace,    // creating the arrays
  kGeometry,     // soil entry points, coincidence check, section and modulus tables, limits
  kOwnBlocks,    // each pile's own block of G, torsion apart
  kPairBlocks,   // the blocks between piles, torsion apart
  kTorsion,      // torsion: of a pile's own block and between near piles
  kPileAndBCV,   // the pile blocks of D and the boundary condition vectors
  kSolve,        // the solve of an increment, factorisation included
  kFactorise,    // the factorisation alone, inside a solve
  kResults,      // unit responses, group stiffness, increments and totals
  kSoftening,    // softening, yield and the system matrix of the next increment
  kReports,      // TXT and XML writing and the debugging dumps
  kCount
};

class PhaseTimer {
 public:
  using Clock = std::chrono::steady_clock;

  PhaseTimer() : since_(Clock::now()) {}

  // Charges the time since the last switch to the phase in hand, then makes p the phase
  // in hand; gives the phase that was in hand.
  Phase Enter(Phase p) {
    const Clock::time_point now = Clock::now();
    seconds_[static_cast<int>(current_)] += std::chrono::duration<double>(now - since_).count();
    since_ = now;
    const Phase before = current_;
    current_ = p;
    return before;
  }

  // Seconds charged to p so far; the phase in hand counts up to its last switch.
  double Seconds(Phase p) const { return seconds_[static_cast<int>(p)]; }

 private:
  double seconds_[static_cast<int>(Phase::kCount)] = {};
  Phase current_ = Phase::kOther;
  Clock::time_point since_;
};

// Makes p the phase in hand from here on: for a sequence of phases in one routine, where
// a scope for each would only add braces. Without a timer it does nothing.
inline void SwitchPhase(PhaseTimer* timer, Phase p) {
  if (timer != nullptr) timer->Enter(p);
}

// Charges its lifetime to a phase, then gives the time back to the phase that was in hand
// before; without a timer it is empty.
class PhaseScope {
 public:
  PhaseScope(PhaseTimer* timer, Phase p) : timer_(timer) {
    if (timer_ != nullptr) before_ = timer_->Enter(p);
  }
  ~PhaseScope() {
    if (timer_ != nullptr) timer_->Enter(before_);
  }
  PhaseScope(const PhaseScope&) = delete;
  PhaseScope& operator=(const PhaseScope&) = delete;

 private:
  PhaseTimer* timer_;
  Phase before_ = Phase::kOther;
};

}  // namespace quellon
