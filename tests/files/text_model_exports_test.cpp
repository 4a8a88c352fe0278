// The three C exports of the text model file, on the engine behind the C API.
#include <gtest/gtest.h>

#include <cstring>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "quellon.h"
#include "text_model_test_support.h"

namespace quellon {
namespace {

std::string Padded(const std::string& path) {
  std::string field = path;
  field.resize(260, ' ');
  return field;
}

TEST(TextModelExports, WriteThenReadThroughTheCApi) {
  Engine& e = TheEngine();
  ASSERT_EQ(e.foundation.NumberOfPiles, 0) << "another test left a model behind";
  test::FillSampleModel(e, 3);

  const std::string first = test::ScratchPath("exported.tmk");
  const std::string second = test::ScratchPath("direct.tmk");
  ASSERT_EQ(QuellonCreateTMKFile(first.c_str()), 1);
  EXPECT_EQ(e.project.TMKUnit, kTMKUnit);
  ASSERT_EQ(WRITETMKFILEDIRECT(Padded(second).c_str()), 1);  // closes the first
  EXPECT_EQ(QuellonCreateTMKFile(nullptr), 0);
  EXPECT_EQ(e.project.TMKUnit, 0);

  // A new model: the tables of the old one go first, as a run would release them.
  ReleaseFoundation(e);
  ReleaseBorehole(e);
  ASSERT_EQ(READTMWFILEDIRECT(Padded(second).c_str()), 1);
  EXPECT_EQ(e.project.TMWUnit, kTMWUnit);
  EXPECT_FALSE(e.files.tmw.is_open());
  EXPECT_EQ(e.foundation.NumberOfPiles, 3);
  EXPECT_EQ(test::ReadBytes(first), test::ReadBytes(second));

  // A second read finds the tables there: the pile table can't be created twice.
  EXPECT_EQ(READTMWFILEDIRECT(Padded(second).c_str()), 0);
  EXPECT_TRUE(e.files.tmw.is_open());

  e.files.tmw.close();
  e.project.TMWUnit = 0;
  ReleaseFoundation(e);
  ReleaseBorehole(e);
  ResetActions(e);
  ResetProject(e);
}

}  // namespace
}  // namespace quellon
