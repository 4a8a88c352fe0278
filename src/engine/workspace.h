// The arrays of one run. They exist from CreateWorkspace to ReleaseWorkspace and are
// zero-filled at creation. Symbols: P piles, n elements per pile, M = 4n + 1 unknowns of
// one pile, N = M P unknowns of the group, I increments. The tables of the six unit cap
// movements are six columns wide whichever solver runs: nothing is ever written to or
// read from a seventh.
//
// Memory is set by the N by N matrices, and the workspace holds only those a run needs.
// A linear run holds one: the assembly writes G, and the solve forms the system G + D in
// G's own storage and factorises it there; the soil movements after the solve take G's
// blocks from those the assembly kept or from the kernels again. A non-linear run holds
// two: G, which stays elastic, and the system GD, formed anew by every softening from G,
// D and the softening's decisions (the softened G is never stored: it is G with scaled
// and released columns). The pile flexibility D, which has nothing between piles, is
// kept as its P diagonal blocks.
#pragma once

#include <initializer_list>
#include <string_view>

#include "engine/arrays.h"

namespace quellon {

struct Engine;

// The system matrix GD = G + D of the group and what it holds between increments. The
// solve and the softening change what it holds only through the steps below, so that its
// states stay those the two sides expect of each other.
class GroupSystem {
 public:
  RealMatrix GD;  // N by N: the matrix, or after a solve its factors (in a linear run,
                  // G's storage taken over when the system is formed)

  bool HoldsFactors() const { return factorised_; }  // a solve has overwritten GD
  bool Solved() const { return solved_; }            // ... and succeeded: Tractions solve it
  bool Unchanged() const { return unchanged_; }      // the next system is the one solved
  bool Planned() const { return planned_; }          // the softening's decisions are kept
  // The kept decisions are the next system's, but GD still holds the last factors: after
  // the last increment nothing needs the next system.
  bool Deferred() const { return deferred_; }

  // The softening: GD is a matrix again (planned: formed from the kept decisions), or
  // the next system equals the one whose factors GD holds.
  void MatrixFormed(bool planned) { *this = State{false, false, false, planned}; }
  void MatrixDeferred() {
    *this = State{true, false, false, true};
    deferred_ = true;
  }
  void MarkUnchanged() { unchanged_ = true; }
  // The solve: whether the tractions in hand already solve the next system (the mark
  // is used up either way); then the factorisation, and its success.
  bool TakeUnchanged() {
    const bool keep = unchanged_ && solved_;
    unchanged_ = false;
    return keep;
  }
  void Factorising() {
    factorised_ = true;
    solved_ = false;
    failure_ = 0;
  }
  void MarkSolved() { solved_ = true; }
  // How the factorisation failed (the solver's code), 0 when it did not.
  void MarkFailed(int code) { failure_ = code; }
  int Failure() const { return failure_; }
  // The assembly: whether G's blocks between piles hold what the system holds there
  // (each entry plus 0), so that forming the system in G's storage adds only D.
  void MarkPairBlocksAsSystem(bool yes) { pair_blocks_as_system_ = yes; }
  bool PairBlocksAsSystem() const { return pair_blocks_as_system_; }
  void Reset() {
    *this = State{};
    pair_blocks_as_system_ = false;
  }

 private:
  struct State {
    bool factorised = false, solved = false, unchanged = false, planned = false;
  };
  GroupSystem& operator=(const State& s) {
    factorised_ = s.factorised;
    solved_ = s.solved;
    unchanged_ = s.unchanged;
    planned_ = s.planned;
    failure_ = 0;
    deferred_ = false;
    return *this;
  }
  bool factorised_ = false, solved_ = false, unchanged_ = false, planned_ = false, deferred_ = false;
  int failure_ = 0;
  bool pair_blocks_as_system_ = false;
};

// Grouped by what they hold over a run.
struct Workspace {
  // ---- The ground and the piles: made before the increments, read by every one.
  RealMatrix G;       // N by N, the elastic soil flexibility; empty once a linear run's
                      // system has taken its storage
  RealMatrix D;       // M by N: the diagonal blocks of the group's D, see PileFlexibility
  GroupSystem system;  // GD and what it holds
  RealMatrix soil_K, pair_K, pile_D;                        // M by M, one pile or pair at a time
  RealMatrix SectionEA, SectionEIx, SectionEIy, SectionGJ;  // n + 1 by P
  RealMatrix YamashitaEsv;  // n + 5 by P, created by the layer averaging during a run
  RealMatrix UBCV;          // N by 6
  // What the assembly found of each M by M block of G, field pile p (row) and source
  // pile q (column): kBlockUnchecked, kBlockFinite or kBlockNotFinite. The check of G's
  // rows searches only the blocks not known to be finite, instead of N^2 entries again.
  LogicalMatrix SoilBlockState;  // P by P
  // G's blocks for the soil movements of a linear run, whose G becomes its system: for
  // field pile p and source pile q != p, the group of pairs that share their block (from
  // 0): its place in SoilPairBlocks, in M columns, when those are kept; for q = p, the
  // pile whose own block pile p took (SoilOwnBlocks holds it at that pile's place when
  // kept). Without the pair blocks, the torsion blocks of the groups, the heaviest part,
  // may still be kept: SoilTorsionSlot gives a group's place in SoilTorsionBlocks, in n
  // columns, or -1. The assembly makes the block tables when they are small beside G.
  IntegerMatrix SoilBlockIndex;             // P by P
  RealMatrix SoilPairBlocks, SoilOwnBlocks;  // M by M times the kept blocks
  RealMatrix SoilTorsionBlocks;             // n by n times the kept torsion blocks
  IntegerVector SoilTorsionSlot;            // one per group of pairs, with SoilTorsionBlocks
  RealVector LimitAxial, LimitX, LimitY, LimitTorsion;  // N, non-linear runs

  // ---- The six unit cap movements, solved anew at every increment.
  RealMatrix Tractions;                                                     // N by 6
  RealMatrix UnitStressAxial, UnitStressX, UnitStressY, UnitStressTorsion;  // N by 6
  RealMatrix HeadAxial, HeadX, HeadMomentXZ, HeadY, HeadMomentYZ, HeadTorque;  // P by 6

  // ---- The increment in hand.
  RealVector CapDispInc, CapLoadInc;  // 6, internal order: vertical, X, XZ, Y, YZ, twist
  RealVector SoilDispInc;             // N
  RealVector DispAxialInc, DispXInc, DispYInc, TwistInc;
  RealVector StressAxialInc, StressXInc, StressYInc, StressTorsionInc;
  RealVector LoadAxialInc, ShearXInc, MomentXZInc, ShearYInc, MomentYZInc, TorqueInc;
  RealVector HeadDispAxialInc, HeadDispXInc, HeadDispYInc, HeadTwistInc;  // P

  // ---- Running totals of the increments so far, and their history.
  RealVector CapDispTotal, CapLoadTotal;  // 6
  RealVector DispAxial, DispX, DispY, Twist;
  RealVector StressAxial, StressX, StressY, StressTorsion;
  RealVector LoadAxial, ShearX, MomentXZ, ShearY, MomentYZ, Torque;
  RealVector HeadDispAxial, HeadDispX, HeadDispY, HeadTwist;  // P
  RealVector PileHeadAxial, PileHeadX, PileHeadMomentXZ, PileHeadY, PileHeadMomentYZ, PileHeadTorque;  // P
  RealMatrix HistoryDisp, HistoryLoad, HistoryDispInc;  // I by 6

  // ---- The state of the non-linear soil, carried from one softening to the next.
  LogicalMatrix Yielded;  // 4 by N
  // The decisions of the last softening (N each, empty in a linear run): the factor each
  // unknown's column of G was divided by, and the order of its last release and of its
  // last release or restore (0 for none). The softened G and GD are functions of G, D and these,
  // which lets the softening form GD again, or find that the next system is the one
  // whose factors GD holds.
  RealVector SoftFactor;
  IntegerVector SoftReleasedAt, SoftChangedAt;
  // Yield counters: how many times an element became yielded in each direction.
  int YieldCountAxial = 0, YieldCountX = 0, YieldCountY = 0, YieldCountTorsion = 0;
};

enum SoilBlockCheck : std::int32_t { kBlockUnchecked = 0, kBlockFinite = 1, kBlockNotFinite = 2 };

// Entry (i, j) of the group's pile flexibility D, N by N, from the blocks the workspace
// keeps: column j of D has its M entries in the rows of j's own pile, and zeros in every
// other row, since a pile moves only under the stresses on itself.
inline int PileBlockStart(int M, int j) { return ((j - 1) / M) * M; }  // rows before j's pile
inline float PileFlexibility(const RealMatrix& D, int i, int j) {
  if (D.rows() < 1) return 0.0f;
  const int r0 = PileBlockStart(D.rows(), j);
  return i > r0 && i <= r0 + D.rows() ? D(i - r0, j) : 0.0f;
}

// Entry (i, j) of the soil flexibility that the next soil movements use: the elastic G,
// or once a softening has decided (a non-linear run), G with column j divided by its
// softening factor and the rows and columns of released unknowns cleared, 1 on the
// diagonal. G must be there (any run but a linear one after its solve).
inline float SoftenedSoilFlexibility(const Workspace& w, int i, int j) {
  if (!w.system.Planned()) return w.G(i, j);
  if (w.SoftReleasedAt(i) != 0 || w.SoftReleasedAt(j) != 0) return i == j ? 1.0f : 0.0f;
  return w.G(i, j) / w.SoftFactor(j);
}

// Calls f on every array of the workspace, YamashitaEsv included: the matrices first,
// then the vectors. The release of a run and the checks that nothing is left both go
// through here, so an array added to the workspace must be added here too.
template <class F>
void ForEachArray(Workspace& w, F&& f) {
  for (RealMatrix* m : {&w.system.GD, &w.G, &w.D, &w.SoilPairBlocks, &w.SoilOwnBlocks, &w.SoilTorsionBlocks, &w.soil_K, &w.pair_K, &w.pile_D, &w.HeadAxial, &w.HeadX,
                        &w.HeadMomentXZ, &w.HeadY, &w.HeadMomentYZ, &w.HeadTorque, &w.UnitStressAxial,
                        &w.UnitStressX, &w.UnitStressY, &w.UnitStressTorsion, &w.UBCV, &w.Tractions,
                        &w.HistoryDisp, &w.HistoryLoad, &w.HistoryDispInc, &w.SectionEA, &w.SectionEIx,
                        &w.SectionEIy, &w.SectionGJ, &w.YamashitaEsv})
    f(*m);
  f(w.Yielded);
  f(w.SoilBlockState);
  f(w.SoilBlockIndex);
  for (RealVector* v :
       {&w.SoilDispInc,     &w.DispAxialInc,     &w.DispXInc,      &w.DispYInc,       &w.TwistInc,
        &w.DispAxial,       &w.DispX,            &w.DispY,         &w.Twist,          &w.StressAxialInc,
        &w.StressXInc,      &w.LoadAxialInc,     &w.ShearXInc,     &w.MomentXZInc,    &w.StressYInc,
        &w.ShearYInc,       &w.MomentYZInc,      &w.StressTorsionInc, &w.TorqueInc,   &w.LimitAxial,
        &w.LimitX,          &w.LimitY,           &w.LimitTorsion,  &w.StressAxial,    &w.StressX,
        &w.StressY,         &w.StressTorsion,    &w.LoadAxial,     &w.ShearX,         &w.MomentXZ,
        &w.ShearY,          &w.MomentYZ,         &w.Torque,        &w.HeadDispAxial,  &w.HeadDispX,
        &w.HeadDispY,       &w.HeadTwist,        &w.HeadDispAxialInc, &w.HeadDispXInc, &w.HeadDispYInc,
        &w.HeadTwistInc,    &w.PileHeadAxial,    &w.PileHeadX,     &w.PileHeadMomentXZ, &w.PileHeadY,
        &w.PileHeadMomentYZ, &w.PileHeadTorque,  &w.CapDispInc,    &w.CapDispTotal,   &w.CapLoadInc,
        &w.CapLoadTotal,    &w.SoftFactor})
    f(*v);
  f(w.SoftReleasedAt);
  f(w.SoftChangedAt);
  f(w.SoilTorsionSlot);
}

// Creation routines: a size below 1 gives an empty array. On success every element is 0
// and the result is 1; on failure the LOG gets the status line and, for exhausted memory
// (status 41), the host gets the error text; the result is 0 and the array is empty.
int Create1DRealMatrix(Engine& e, RealVector& a, int n);
int Create2DRealMatrix(Engine& e, RealMatrix& a, int rows, int cols);
int Create1DLogicalMatrix(Engine& e, LogicalVector& a, int n);
int Create2DLogicalMatrix(Engine& e, LogicalMatrix& a, int rows, int cols);
int Create1DIntegerMatrix(Engine& e, IntegerVector& a, int n);

inline void Release1DRealMatrix(RealVector& a) { a.release(); }
inline void Release2DRealMatrix(RealMatrix& a) { a.release(); }
inline void Release1DLogicalMatrix(LogicalVector& a) { a.release(); }
inline void Release2DLogicalMatrix(LogicalMatrix& a) { a.release(); }
inline void Release1DIntegerMatrix(IntegerVector& a) { a.release(); }

// Has the system give the pages under count floats from first, which are about to be
// written for the first time, in one call instead of one fault per page: a fresh page
// costs a trap, a clearing and an accounting at its first write, and the trap is most of
// it. Only whole pages are asked for; where the system can't (an older kernel, another
// system), nothing happens and the writes fault the pages in as before.
void PopulateForWriting(float* first, std::size_t count);

// All arrays of the run, in the order of creation; 1 or 0. Reads the counts of the model,
// DynamicModel no more, and NonLinear, which decides on GD and the softening's vectors.
int CreateWorkspace(Engine& e);
// Every array, matrices first, and the state of the system; safe after a partial
// creation and when called twice.
void ReleaseWorkspace(Engine& e);
// The same at the end of a run: the matrices' storage goes to the engine's background
// release, so that the host need not wait for hundreds of megabytes to be unmapped. The
// workspace is left as empty as ReleaseWorkspace leaves it.
void ReleaseWorkspaceAfterRun(Engine& e);

}  // namespace quellon
