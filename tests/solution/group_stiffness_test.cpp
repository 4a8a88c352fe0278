
#include "solution/group_stiffness.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

TEST(InvertMatrix, KnownInverseAndSingular) {
  // tridiag(-1, 2, -1) of order 6 has the inverse min(i, j) (7 - max(i, j)) / 7.
  float k[36] = {};
  for (int i = 1; i <= 6; ++i) {
    k[(i - 1) * 7] = 2.0f;
    if (i < 6) k[i + 6 * (i - 1)] = k[(i - 1) + 6 * i] = -1.0f;
  }
  ASSERT_EQ(InvertMatrix(k, 6, 6), 1);
  for (int j = 1; j <= 6; ++j)
    for (int i = 1; i <= 6; ++i) EXPECT_NEAR(k[(i - 1) + 6 * (j - 1)], std::min(i, j) * (7 - std::max(i, j)) / 7.0, 2e-6);

  float singular[36] = {};
  for (int i = 1; i <= 5; ++i) singular[(i - 1) * 7] = static_cast<float>(i);  // last row and column zero
  EXPECT_EQ(InvertMatrix(singular, 6, 6), 0);
}

}  // namespace
}  // namespace quellon
