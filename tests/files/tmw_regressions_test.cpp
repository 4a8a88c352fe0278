// The fuzz target's seeds and regression cases, replayed in every build as the target
// replays them (read, TMK written back, a small model run, a larger one checked), so
// that the sanitizer build goes over them too and a change of outcome shows. An input
// that the fuzzer once made fail goes into fuzz/regressions/, named for its outcome.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "../../fuzz/model_replay.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

namespace fs = std::filesystem;
using fuzzing::ReplayOutcome;

const fs::path kFuzzDir = fs::path(QUELLON_TEST_DATA_DIR) / ".." / ".." / "fuzz";

struct Expected {
  int read;
  int ran;      // -1: too large to run in the replay
  int checked;  // -1: run instead
};

// The outcome of each file, told by its name: a broken_ file is refused by the reader; a
// small_ model runs to its end (1), the capacity stop included; any other is a larger
// sound model, which passes the model checks.
Expected Outcome(const std::string& name) {
  if (name.rfind("broken_", 0) == 0) return {0, -1, -1};
  if (name.rfind("small_", 0) == 0) return {1, 1, -1};
  return {1, -1, 1};
}

TEST(TMWRegressions, SeedsAndRegressionCasesReplayAsExpected) {
  testing::TempFile tmk(".tmk"), xml(".xml"), txt(".txt");
  std::size_t replayed = 0;
  for (const char* folder : {"corpus", "regressions"}) {
    for (const fs::directory_entry& entry : fs::directory_iterator(kFuzzDir / folder)) {
      const std::string name = entry.path().filename().string();
      if (!entry.is_regular_file() || name == "README.md") continue;
      SCOPED_TRACE(std::string(folder) + "/" + name);
      const Expected expected = Outcome(name);
      ::testing::internal::CaptureStdout();  // the reader's refusals, the run's increments
      const ReplayOutcome got =
          fuzzing::ReplayModelFile({entry.path().string(), tmk.path(), xml.path(), txt.path()});
      ::testing::internal::GetCapturedStdout();
      EXPECT_EQ(got.read, expected.read);
      EXPECT_TRUE(got.tables_match);
      EXPECT_EQ(got.ran, expected.ran);
      EXPECT_EQ(got.checked, expected.checked);
      ++replayed;
    }
  }
  EXPECT_GE(replayed, 28u);  // the seeds of the corpus, none of them lost
}

}  // namespace
}  // namespace quellon
