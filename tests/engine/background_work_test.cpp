#include "engine/background_work.h"

#include <cstdint>

#include "engine/run_analysis.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

using namespace testing;

// Runs one after the other in one engine, and the engine destroyed while the last run's
// arrays may still be going: a release thread left joinable would end the process, one
// that never ran would leak (the sanitizer build reports it), one still running when the
// next arrays are sized would make them look short of memory. With the threshold at 0
// every run's arrays go on the thread; at the maximum they go at once.
TEST(BackgroundRelease, RunsBackToBackAndAnEngineGoneRightAfterARunAreClean) {
  ScratchDir dir;
  for (const std::size_t threshold : {std::size_t{0}, SIZE_MAX}) {
    SCOPED_TRACE("threshold " + std::to_string(threshold));
    Engine e;
    e.released_arrays.threshold = threshold;
    ::testing::internal::CaptureStdout();
    for (const int increments : {1, 3}) {  // a linear run, then a non-linear one
      FillSmallModel(e, 2, 4, increments);
      // Asking for the model's tables waited for the previous run's arrays.
      EXPECT_FALSE(e.released_arrays.Pending());
      EXPECT_EQ(RunAnalysis(e, (dir / "run.xml").string(), std::nullopt), 1);
      EXPECT_EQ(WorkspaceElements(e.ws), 0u);
      EXPECT_EQ(e.released_arrays.Pending(), threshold == 0 && kReleaseInBackground);
    }
    ::testing::internal::GetCapturedStdout();
  }
}

}  // namespace
}  // namespace quellon
