// The fuzz target's seeds and regression cases, replayed in every build as the target
// replays them (read, TMK written back, a small model run, a larger one checked), so
// that the sanitizer build goes over them too and a change of outcome shows. An input
// that the fuzzer once made fail goes into fuzz/regressions/ and into the table below.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
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

// The outcome of each file. A small model runs to its end (1), the capacity stop
// included; a larger one passes the model checks.
const std::map<std::string, Expected>& Outcomes() {
  static const std::map<std::string, Expected> table = {
      // Examples and sound variants.
      {"group_3x3_combined.tmw", {1, -1, 1}},
      {"nonlinear_layered_failure.tmw", {1, -1, 1}},
      {"raked_group_torque.tmw", {1, -1, 1}},
      {"single_bored_pile_clay.tmw", {1, -1, 1}},
      {"nonlinear_custom_nq_direct.tmw", {1, -1, 1}},
      {"line_feeds_only.tmw", {1, -1, 1}},
      {"number_forms.tmw", {1, -1, 1}},
      {"values_over_lines.tmw", {1, -1, 1}},
      {"version_oldest.tmw", {1, -1, 1}},
      {"small_single_pile.tmw", {1, 1, -1}},
      {"small_nonlinear_group.tmw", {1, 1, -1}},
      {"small_raked_torque.tmw", {1, 1, -1}},
      {"small_nonlinear_custom_nq_direct.tmw", {1, 1, -1}},
      {"small_group_3x3_row.tmw", {1, 1, -1}},
      {"small_unloading_pile.tmw", {1, 1, -1}},
      // Broken files the reader refuses.
      {"broken_binary_junk.tmw", {0, -1, -1}},
      {"broken_comments_only.tmw", {0, -1, -1}},
      {"broken_empty.tmw", {0, -1, -1}},
      {"broken_ground_type.tmw", {0, -1, -1}},
      {"broken_huge_counts.tmw", {0, -1, -1}},
      {"broken_hyperbolic_factor.tmw", {0, -1, -1}},
      {"broken_letter_in_number.tmw", {0, -1, -1}},
      {"broken_negative_count.tmw", {0, -1, -1}},
      {"broken_poisson_above_half.tmw", {0, -1, -1}},
      {"broken_truncated_in_grounds.tmw", {0, -1, -1}},
      {"broken_truncated_in_pile.tmw", {0, -1, -1}},
      {"broken_version_too_new.tmw", {0, -1, -1}},
      {"broken_zero_elements.tmw", {0, -1, -1}},
  };
  return table;
}

TEST(TMWRegressions, SeedsAndRegressionCasesReplayAsExpected) {
  testing::TempFile tmk(".tmk"), xml(".xml"), txt(".txt");
  std::size_t replayed = 0;
  for (const char* folder : {"corpus", "regressions"}) {
    for (const fs::directory_entry& entry : fs::directory_iterator(kFuzzDir / folder)) {
      const std::string name = entry.path().filename().string();
      if (!entry.is_regular_file() || name == "README.md") continue;
      SCOPED_TRACE(std::string(folder) + "/" + name);
      const auto expected = Outcomes().find(name);
      if (expected == Outcomes().end()) {
        ADD_FAILURE() << "no expected outcome for this input: add it to the table";
        continue;
      }
      ::testing::internal::CaptureStdout();  // the reader's refusals, the run's increments
      const ReplayOutcome got =
          fuzzing::ReplayModelFile({entry.path().string(), tmk.path(), xml.path(), txt.path()});
      ::testing::internal::GetCapturedStdout();
      EXPECT_EQ(got.read, expected->second.read);
      EXPECT_TRUE(got.tables_match);
      EXPECT_EQ(got.ran, expected->second.ran);
      EXPECT_EQ(got.checked, expected->second.checked);
      ++replayed;
    }
  }
  EXPECT_EQ(replayed, Outcomes().size());
}

}  // namespace
}  // namespace quellon
