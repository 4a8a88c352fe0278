#include "engine/internal_error.h"
#include "engine/run_analysis.h"
#include "solution/solve.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

TEST(Update, AxialCapacityOfThePileOrTheGroupEndsTheRun) {
  for (int piles : {1, 2}) {
    const int n = 4, all = (n + 1) * piles;
    auto e = testing::MakeGroup(std::vector<testing::PileSpec>(static_cast<std::size_t>(piles)), n, 5);
    const GroupLayout g = LayoutOf(*e);
    e->ws.YieldCountAxial = all - 1;  // one axial unknown short: go on
    EXPECT_FALSE(AxialCapacityUsedUp(g, e->ws));
    e->ws.YieldCountAxial = all;
    e->ws.CapLoadInc(1) = 10.0f;
    AddMovementsToTotals(g, 2, e->ws);
    EXPECT_TRUE(AxialCapacityUsedUp(g, e->ws));
    StopAtCapacity(*e, 2);
    EXPECT_EQ(e->project.ErrorCode, piles == 1 ? 259 : 260);
    EXPECT_EQ(e->ws.HistoryLoad(2, 1), 10.0f);  // the last increment is complete
  }
}

}  // namespace
}  // namespace quellon

namespace quellon {
namespace {

// A workspace made for another model is a fault of the engine: the routines that would
// otherwise leave wrong numbers behind throw, and the run ends as an internal error.
TEST(InternalError, AWorkspaceOfAnotherShapeIsRefused) {
  auto e = testing::MakeGroup({{}, {3.0f, 0.0f}}, 4, 3);
  e->foundation.NumberOfElements = 5;
  EXPECT_THROW(UpdateSoilFlexibility(*e, 1), InternalError);
  EXPECT_THROW(AssemblePileFlexibility(*e, 1), InternalError);
  e->ws.D.release();
  EXPECT_THROW(FormSystemMatrix(e->ws), InternalError);
}

}  // namespace
}  // namespace quellon
