// A model kept as a text model file through the C exports and read back gives the same
// analysis as the model it came from: the same XML document byte for byte and the same
// numbers, bit for bit, in the host's callbacks. Runs on the engine behind the C API, as
// a host would, and leaves it as it found it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quellon.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

using testing::Sent;
using testing::sent;

class TextModelAnalysis : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(TheEngine().foundation.NumberOfPiles, 0) << "another test left a model behind";
    testing::SetHostCallbacks(true);
  }
  void TearDown() override {
    QuellonCloseAllFiles();
    testing::SetHostCallbacks(false);
    Engine& e = TheEngine();
    ReleaseFoundation(e), ReleaseBorehole(e), ResetActions(e), ResetProject(e);
  }
  // One run of the model in hand; its XML document and what the host was sent.
  std::pair<std::string, Sent> Run(const std::string& xml) {
    sent = Sent{};
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(QuellonRunAnalysis1(xml.c_str()), 1);
    ::testing::internal::GetCapturedStdout();
    QuellonCloseAllFiles();
    return {testing::ReadBytes(xml), sent};
  }
};

TEST_F(TextModelAnalysis, ModelReadBackFromItsFileGivesTheSameAnalysis) {
  testing::TempFile tmk(".tmk"), direct_path(".direct.xml"), read_path(".read.xml");
  for (int increments : {1, 3}) {
    SCOPED_TRACE("increments " + std::to_string(increments));
    testing::FillSampleModel(TheEngine(), increments);
    // The file holds stiffnesses in MN: 57.7 MNm^2 comes back as 57.7f * 1000, not as
    // 57700.f. Values whose thousandths are exact in a float keep the two runs equal.
    Foundation& f = TheEngine().foundation;
    for (int p = 1; p <= 3; ++p) f.Piles(p).GJ = f.Piles(p).UnreinforcedGJ = 57500.0f;
    f.Piles(1).UnreinforcedGJ = 27500.0f;
    f.CapStiffness = 0;
    ASSERT_EQ(QuellonCreateTMKFile(tmk.path().c_str()), 1);
    QuellonCloseTMKFile();
    const auto [direct_xml, direct] = Run(direct_path.path());

    // The run consumed the model; the file brings it back, through a host's padded field.
    ASSERT_EQ(TheEngine().foundation.NumberOfPiles, 0);
    const std::string field = tmk.path() + std::string(260 - tmk.path().size(), ' ');
    ::testing::internal::CaptureStdout();
    ASSERT_EQ(READTMWFILEDIRECT(field.c_str()), 1);
    ::testing::internal::GetCapturedStdout();
    const auto [read_xml, read] = Run(read_path.path());

    const std::size_t n = static_cast<std::size_t>(increments);
    ASSERT_TRUE(direct.increments.size() == n && direct.loads.size() == n);
    EXPECT_TRUE(read == direct) << "the callbacks received other numbers";
    EXPECT_FALSE(direct_xml.empty());
    EXPECT_TRUE(read_xml == direct_xml) << "the XML documents differ";
  }
}

}  // namespace
}  // namespace quellon
