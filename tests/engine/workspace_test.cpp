#include "engine/workspace.h"

#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "engine/engine.h"
#include "engine/file_units.h"
#include "engine/run_analysis.h"
#include "engine_test_support.h"

namespace quellon {
namespace {

using namespace testing_support;

using Dims = std::pair<int, int>;
template <class M>
Dims ShapeOf(const M& m) {
  return {m.rows(), m.cols()};
}

void SetShape(Engine& e, int piles, int elements, int increments, bool dynamic) {
  e.foundation.NumberOfPiles = piles;
  e.foundation.NumberOfElements = elements;
  e.actions.NumberOfIncrements = increments;
  e.project.DynamicModel = dynamic ? 1 : 0;
}

TEST(Workspace, ShapesFollowTheModel) {
  Engine e;
  SetShape(e, 3, 2, 4, true);  // M = 9, N = 27
  ASSERT_EQ(CreateWorkspace(e), 1);
  Workspace& w = e.ws;
  EXPECT_EQ(w.Torque.size(), 27);
  EXPECT_EQ(w.PileHeadTorque.size(), 3);
  EXPECT_EQ(ShapeOf(w.Yielded), Dims(4, 27));
  EXPECT_EQ(ShapeOf(w.pile_D), Dims(9, 9));
  EXPECT_EQ(ShapeOf(w.GD), Dims(27, 27));
  EXPECT_EQ(ShapeOf(w.D), Dims(9, 27));  // the piles' diagonal blocks side by side
  EXPECT_TRUE(w.G0.empty());             // a linear run: no elastic copy
  EXPECT_TRUE(w.SoftFactor.empty());
  EXPECT_EQ(ShapeOf(w.HeadTorque), Dims(3, 6));  // six columns whatever the solver
  EXPECT_EQ(ShapeOf(w.Tractions), Dims(27, 6));
  EXPECT_EQ(ShapeOf(w.HistoryDispInc), Dims(4, 6));
  EXPECT_EQ(ShapeOf(w.SectionGJ), Dims(3, 3));
  EXPECT_TRUE(w.YamashitaEsv.empty());  // made by the layer averaging during a run
  // 33 + 14 vectors of N and P, 4 of 6; 2 N by N and D, Yielded, 3 M by M, 6 P by 6,
  // 6 N by 6, 3 I by 6, 4 (n + 1) by P.
  const std::size_t linear = 33 * 27 + 14 * 3 + 4 * 6 + 2 * 27 * 27 + 9 * 27 + 4 * 27 + 3 * 81 + 6 * 3 * 6 +
                             6 * 27 * 6 + 3 * 4 * 6 + 4 * 3 * 3;
  EXPECT_EQ(WorkspaceElements(w), linear);
  bool all_zero = true;
  ForEachArray(w, [&all_zero](auto& a) {
    if constexpr (requires { a.rows(); }) {
      for (std::size_t i = 0; i < a.count(); ++i) all_zero = all_zero && a.data()[i] == 0;
    } else {
      for (int i = 1; i <= a.size(); ++i) all_zero = all_zero && a(i) == 0;
    }
  });
  EXPECT_TRUE(all_zero);
  ReleaseWorkspace(e);
  EXPECT_EQ(WorkspaceElements(w), 0u);
  ReleaseWorkspace(e);  // twice does no harm

  // A non-linear run adds the elastic copy and the softening's decisions, three of N.
  e.project.NonLinear = 1;
  ASSERT_EQ(CreateWorkspace(e), 1);
  EXPECT_EQ(ShapeOf(w.G0), Dims(27, 27));
  EXPECT_EQ(WorkspaceElements(w), linear + 27 * 27 + 3 * 27);
}

TEST(Workspace, NoElementsAndNoIncrementsStillCreate) {
  Engine e;
  SetShape(e, 2, 0, 0, true);  // M = 1, N = 2, I = 0
  ASSERT_EQ(CreateWorkspace(e), 1);
  EXPECT_EQ(e.ws.soil_K.rows(), 1);
  EXPECT_EQ(e.ws.G.rows(), 2);
  EXPECT_EQ(e.ws.SectionEA.rows(), 1);
  EXPECT_EQ(e.ws.HistoryDisp.rows(), 0);
  EXPECT_TRUE(e.ws.HistoryDisp.empty());
}

TEST(Workspace, VisitorReachesEveryArray) {
  // If an array is added to the workspace but not to ForEachArray, it would survive the
  // release of a run; the visited objects must make up the whole record but for the
  // four yield counters.
  Workspace w;
  std::size_t bytes = 0;
  int visited = 0;
  ForEachArray(w, [&](auto& a) {
    bytes += sizeof(a);
    ++visited;
  });
  EXPECT_EQ(visited, 52 + 27 + 1 + 2);
  const std::size_t members = bytes + 4 * sizeof(int) + sizeof(Workspace::SystemState);
  const std::size_t align = alignof(Workspace);
  EXPECT_EQ((members + align - 1) / align * align, sizeof(Workspace));
}

// A memory probe that refuses the k-th request it is asked about.
int probe_calls = 0;
int probe_refuses_at = 0;
std::uint64_t RefuseOneRequest() { return ++probe_calls == probe_refuses_at ? 0 : UINT64_MAX; }

TEST(Workspace, ExhaustedMemoryAtAnyArrayLeavesNothingAndSaysWhich) {
  Engine counting;
  SetShape(counting, 2, 1, 2, true);
  probe_calls = 0;
  probe_refuses_at = 0;
  counting.memory_probe = &RefuseOneRequest;
  ASSERT_EQ(CreateWorkspace(counting), 1);
  const int requests = probe_calls;
  // Every array but YamashitaEsv and the four of a non-linear run, which are empty here.
  ASSERT_EQ(requests, 51 + 27 + 1 - 1 - 1);

  ScratchDir dir;
  for (int k = 1; k <= requests; ++k) {
    SCOPED_TRACE("refused request " + std::to_string(k));
    Engine e;
    SetShape(e, 2, 1, 2, true);
    e.memory_probe = &RefuseOneRequest;
    e.project.MessageCallback = &RecordMessage;
    Received().clear();
    const fs::path log = dir / ("ws" + std::to_string(k) + ".log");
    ASSERT_EQ(StartLOGFile(e, log.string()), 1);
    probe_calls = 0;
    probe_refuses_at = k;
    Received().clear();
    EXPECT_EQ(CreateWorkspace(e), 0);
    EXPECT_EQ(WorkspaceElements(e.ws), 0u);
    CloseLOGFile(e);

    // Vectors come first (51), then GD, G and D, then Yielded.
    const bool vector = k <= 51;
    const bool logical = k == 55;
    const std::string routine = vector ? "Create1DRealMatrix" : logical ? "Create2DLogicalMatrix" : "Create2DRealMatrix";
    const std::string memory = std::string("Insufficient virtual memory to proceed (creating ") +
                               (vector ? "1D real" : logical ? "2D logical" : "2D real") + " matrix)";
    const std::string summary =
        std::string("Error - insufficient memory/address space to create ") + (vector ? "1D" : "2D") + " matrices";
    EXPECT_EQ(Received(), (std::vector<std::string>{"2 " + memory, "2 " + summary, "0 Closed LOG file"}));
    const std::vector<std::string> lines = ReadLines(log);
    const std::size_t at = Find(lines, routine + " returned status = 41");
    ASSERT_NE(at, std::string::npos);
    ASSERT_LT(at + 4, lines.size());
    EXPECT_EQ(lines[at + 1], "[Error] " + memory);
    EXPECT_EQ(lines[at + 2], memory);
    EXPECT_EQ(lines[at + 3], summary);
    EXPECT_EQ(lines[at + 4], "[Error] " + summary);
  }
}

TEST(Workspace, SizesBeyondAnyIndexAreExhaustedMemoryNotOverflow) {
  Engine e;
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  SetShape(e, INT_MAX / 8, 50, 1, true);  // N = 201 P far beyond 2^31
  EXPECT_EQ(CreateWorkspace(e), 0);
  EXPECT_EQ(WorkspaceElements(e.ws), 0u);
  ASSERT_EQ(Received().size(), 2u);
  EXPECT_EQ(Received()[0], "2 Insufficient virtual memory to proceed (creating 1D real matrix)");

}

// Under an address-space limit (ulimit -v) a model too large must fail in order, both
// when the probe sees the limit and when only the allocator does, and the engine must
// serve a complete run of a small model at once, under the same limit. Run in a child
// process, since the limit can't be taken back.
int RunUnderAddressSpaceLimit(bool use_probe) {
  std::ifstream statm("/proc/self/statm");
  unsigned long long pages = 0;
  statm >> pages;
  const rlim_t in_use = static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
  // Generous headroom: thread stacks and malloc arenas of the maths libraries take
  // address space of their own, unpredictably, under the same limit.
  const rlimit limit{in_use + (512u << 20), in_use + (512u << 20)};
  if (setrlimit(RLIMIT_AS, &limit) != 0) return 2;
  ScratchDir dir;
  Engine e;
  if (!use_probe) e.memory_probe = nullptr;
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  SetShape(e, 40000, 50, 1, false);  // vectors of 32 MB, 33 of them: beyond 512 MB
  if (RunAnalysis(e, (dir / "large.xml").string(), std::nullopt) != 0) return 3;
  if (WorkspaceElements(e.ws) != 0) return 4;
  const std::vector<std::string> failed = {
      "0 Running the boundary element analysis...",
      "2 Insufficient virtual memory to proceed (creating 1D real matrix)",
      "2 Error - insufficient memory/address space to create 1D matrices", "0 Releasing memory ...",
      "0 Finished running the boundary element analysis (failed)"};
  if (Received() != failed) return 5;
  // The next run, of a model that fits, goes through.
  Received().clear();
  FillSmallModel(e, 2, 4, 2);
  if (RunAnalysis(e, (dir / "small.xml").string(), std::nullopt) != 1) return 6;
  if (Received().back() != "0 Finished running the boundary element analysis (success)") return 7;
  return WorkspaceElements(e.ws) == 0 ? 0 : 8;
}

TEST(WorkspaceDeathTest, AddressSpaceLimitSeenByTheProbe) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(RunUnderAddressSpaceLimit(true)), ::testing::ExitedWithCode(0), "");
}

TEST(WorkspaceDeathTest, AddressSpaceLimitSeenByTheAllocatorOnly) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer's own allocator aborts the process when the address-space limit refuses it "
                  "memory, before the engine can see the failure";
#endif
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(RunUnderAddressSpaceLimit(false)), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace quellon
