// quellon's choice of mechanics: a corrected run says so in its summary and its XML, and
// drops the warning of the flaw it corrects; an unknown mode is a usage error.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "cli_process.h"

namespace {

using namespace quellon_cli_test;

TEST(MechanicsOption, ACorrectedRunSaysSoAndAnUnknownModeIsRefused) {
  const std::filesystem::path dir = Scratch("mechanics");
  const std::string model = Example("raked_group_torque.tmw").string();
  for (const bool corrected : {false, true}) {
    const auto o = RunCli("run '" + model + "' --out-dir '" + dir.string() + "'" +
                          (corrected ? " --mechanics corrected" : " --mechanics as-defined"));
    ASSERT_EQ(o.status, 0) << o.output;
    EXPECT_EQ(o.output.find("mechanics: corrected") != std::string::npos, corrected) << o.output;
    EXPECT_EQ(o.output.find("[cap-torque]") == std::string::npos, corrected) << o.output;
    const std::string xml = ReadBytes(dir / "raked_group_torque.xml");
    EXPECT_EQ(xml.find("<Tolmark version=\"3.23\" mechanics=\"corrected\"") != std::string::npos, corrected);
  }
  EXPECT_EQ(RunCli("run '" + model + "' --out-dir '" + dir.string() + "' --mechanics exact").status, 2);
  std::filesystem::remove_all(dir);
}

}  // namespace
