#include "engine/workspace.h"

#include <sys/resource.h>

#include <climits>

#include "engine/file_units.h"
#include "engine/run_analysis.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

using namespace testing;

void SetShape(Engine& e, int piles, int elements, int increments, bool dynamic) {
  e.foundation.NumberOfPiles = piles;
  e.foundation.NumberOfElements = elements;
  e.actions.NumberOfIncrements = increments;
  e.project.DynamicModel = dynamic ? 1 : 0;
}

TEST(Workspace, VisitorReachesEveryArray) {
  // An array missing from ForEachArray would survive the release of a run: the visited
  // objects must make up the whole record but for the four yield counters and the state
  // of the system matrix.
  Workspace w;
  std::size_t bytes = 4 * sizeof(int) + (sizeof(GroupSystem) - sizeof(RealMatrix));
  ForEachArray(w, [&](auto& a) { bytes += sizeof(a); });
  EXPECT_EQ((bytes + alignof(Workspace) - 1) / alignof(Workspace) * alignof(Workspace), sizeof(Workspace));
}

// A memory probe that refuses the k-th request it is asked about.
int probe_calls = 0, probe_refuses_at = 0;
std::uint64_t RefuseOneRequest() { return ++probe_calls == probe_refuses_at ? 0 : UINT64_MAX; }

TEST(Workspace, ExhaustedMemoryAtAnyArrayLeavesNothingAndSaysWhich) {
  ScratchDir dir;
  // All 78 arrays of this linear model: vectors first (51), then G and D, then Yielded,
  // then the other matrices, then the two tables of G's blocks.
  for (int k = 1; k <= 78; ++k) {
    SCOPED_TRACE("refused request " + std::to_string(k));
    Engine e;
    SetShape(e, 2, 1, 2, true);
    e.memory_probe = &RefuseOneRequest;
    e.project.MessageCallback = &RecordMessage;
    ASSERT_EQ(StartLOGFile(e, (dir / "ws.log").string()), 1);
    probe_calls = 0, probe_refuses_at = k;
    Received().clear();
    EXPECT_EQ(CreateWorkspace(e), 0);
    EXPECT_EQ(WorkspaceElements(e.ws), 0u);
    CloseLOGFile(e);
    const bool vector = k <= 51, logical = k == 54 || k >= 77;
    const std::string memory = std::string("Insufficient virtual memory to proceed (creating ") +
                               (vector ? "1D real" : logical ? "2D logical" : "2D real") + " matrix)";
    const std::string summary =
        std::string("Error - insufficient memory/address space to create ") + (vector ? "1D" : "2D") + " matrices";
    EXPECT_EQ(Received(), (std::vector<std::string>{"2 " + memory, "2 " + summary, "0 Closed LOG file"}));
    const std::string routine = vector ? "Create1DRealMatrix" : logical ? "Create2DLogicalMatrix" : "Create2DRealMatrix";
    EXPECT_NE(Find(ReadLines(dir / "ws.log"), routine + " returned status = 41"), std::string::npos);
  }
  // Sizes beyond any index are exhausted memory, not an overflow.
  Engine huge;
  huge.project.MessageCallback = &RecordMessage;
  Received().clear();
  SetShape(huge, INT_MAX / 8, 50, 1, true);  // N = 201 P far beyond 2^31
  EXPECT_EQ(CreateWorkspace(huge), 0);
  EXPECT_EQ(WorkspaceElements(huge.ws), 0u);
  EXPECT_EQ(Received().at(0), "2 Insufficient virtual memory to proceed (creating 1D real matrix)");
  // The model's tables are refused the same way, and none is left half made.
  Engine tables;
  tables.memory_probe = [] { return std::uint64_t{4096}; };
  EXPECT_EQ(CreatePiles(tables, 1000) + CreateLayers(tables, 1000), 0);
  EXPECT_FALSE(tables.foundation.PilesCreated || tables.borehole.LayersCreated);
}

// Under an address-space limit (ulimit -v) a model too large fails in order, whether the
// probe or only the allocator sees the limit, and a small model then runs to the end
// under the same limit. In a child process, since the limit can't be taken back.
int RunUnderAddressSpaceLimit(bool use_probe) {
  unsigned long long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  // Generous headroom: the maths libraries' threads and arenas take address space too.
  const rlim_t cap = static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (512u << 20);
  if (const rlimit limit{cap, cap}; setrlimit(RLIMIT_AS, &limit) != 0) return 2;
  ScratchDir dir;
  Engine e;
  if (!use_probe) e.memory_probe = nullptr;
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  SetShape(e, 40000, 50, 1, false);  // vectors of 32 MB, 33 of them: beyond 512 MB
  if (RunAnalysis(e, (dir / "large.xml").string(), std::nullopt) != 0 || WorkspaceElements(e.ws) != 0) return 3;
  if (Received().size() != 5 || Received()[2] != "2 Error - insufficient memory/address space to create 1D matrices" ||
      Received()[4] != "0 Finished running the boundary element analysis (failed)")
    return 4;
  FillSmallModel(e, 2, 4, 2);
  if (RunAnalysis(e, (dir / "small.xml").string(), std::nullopt) != 1) return 5;
  if (Received().back() != "0 Finished running the boundary element analysis (success)") return 6;
  return WorkspaceElements(e.ws) == 0 ? 0 : 7;
}

TEST(WorkspaceDeathTest, AddressSpaceLimitFailsTheRunCleanlyAndTheNextRunWorks) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(RunUnderAddressSpaceLimit(true)), ::testing::ExitedWithCode(0), "") << "probe";
#if !defined(__SANITIZE_ADDRESS__)  // its allocator aborts when the limit refuses it memory
  EXPECT_EXIT(std::exit(RunUnderAddressSpaceLimit(false)), ::testing::ExitedWithCode(0), "") << "allocator only";
#endif
}

}  // namespace
}  // namespace quellon
