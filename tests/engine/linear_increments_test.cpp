// A linear run of several increments forms its system once, in the storage of G: every
// later increment must find the same system solved, by either route.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "engine/run_analysis.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

using namespace testing;

std::vector<std::vector<float>> stiffnesses;
void Receive(const float* k) { stiffnesses.emplace_back(k, k + 36); }

TEST(LinearIncrements, EveryIncrementSolvesTheSystemOfTheFirst) {
  for (const int lapack : {1, 0}) {
    SCOPED_TRACE(lapack ? "LAPACK" : "LU");
    ScratchDir dir;
    Engine e;
    FillSmallModel(e, 3, 4, 3);
    e.project.NonLinear = 0;
    e.project.DynamicModel = e.project.Flags(16) = lapack;
    e.actions.Fx = 30.0f;
    e.callbacks.SendStiffnessMatrix = &Receive;
    stiffnesses.clear();
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(RunAnalysis(e, (dir / "linear.xml").string(), std::nullopt), 1);
    ::testing::internal::GetCapturedStdout();
    ASSERT_EQ(stiffnesses.size(), 3u);
    EXPECT_NE(stiffnesses[0][0], 0.0f);
    EXPECT_EQ(stiffnesses[1], stiffnesses[0]);
    EXPECT_EQ(stiffnesses[2], stiffnesses[0]);
  }
}

}  // namespace
}  // namespace quellon
