// Paths longer than the engine's 260 characters: each entry that takes a NUL-terminated
// path refuses one with 0 and an error naming it, before it opens, closes or resets
// anything. Cut to 260, the XML, TXT and LOG paths of a run would all name one file.
#include <functional>
#include <string>
#include <vector>

#include "host_recorder.h"
#include "host_support.h"
#include "quellon.h"

namespace host {
namespace {

using LongPath = HostTest;

TEST_F(LongPath, EveryCEntryRefusesAPathItCannotHold) {
  recorder_register_all(1);
  ASSERT_EQ(QuellonCreateLOGFile(Path("kept.log").c_str()), 1);
  // A file name that makes the path `length` characters long; cut to 260 it still names a
  // file in the test's folder, which must not appear.
  const auto long_path = [&](std::size_t length, const std::string& ext) {
    std::string p = Path("");
    p += std::string(length - p.size() - ext.size(), 'q') + ext;
    return p;
  };
  const std::string xml300 = long_path(300, ".xml"), txt261 = long_path(261, ".txt");
  const std::string xml = Path("good.xml");
  const struct {
    std::function<int()> call;
    std::string refused;  // the path the error names
  } table[] = {
      {[&] { return QuellonRunAnalysis1(xml300.c_str()); }, xml300},
      {[&] { return QuellonRunAnalysis2(xml.c_str(), txt261.c_str()); }, txt261},
      {[&] { return QuellonCreateLOGFile(long_path(300, ".log").c_str()); }, long_path(300, ".log")},
      {[&] { return QuellonCreateTMKFile(long_path(270, ".tmk").c_str()); }, long_path(270, ".tmk")},
  };
  Enter(Row(1, 2, 1, 100.0));
  Lines errors;
  for (const auto& row : table) {
    recorder_clear();
    EXPECT_EQ(row.call(), 0) << row.refused;
    errors.push_back("Path too long (" + std::to_string(row.refused.size()) + " characters, at most 260): " +
                     row.refused);
    EXPECT_EQ(Messages(Events(), 2), Lines{errors.back()});
    // Nothing opened, closed or reset: no other file exists, and the model stays.
    EXPECT_EQ(QuellonGetBoreholeNumberOfLayers(), 1);
    std::vector<std::string> files;
    for (const auto& f : fs::directory_iterator(dir)) files.push_back(f.path().filename().string());
    EXPECT_EQ(files, std::vector<std::string>{"kept.log"});
  }
  // The model that stayed runs, which also leaves the engine empty for the next test.
  EXPECT_EQ(QuellonRunAnalysis1(xml.c_str()), 1);
  // The LOG in hand stayed open through all of it and holds every error.
  QuellonCloseLOGFile();
  const Lines log = ReadLines(Path("kept.log"));
  for (const std::string& error : errors) EXPECT_NE(Find(log, "[Error] " + error), std::string::npos) << error;
  // A path of exactly 260 characters is held whole.
  const std::string exact = long_path(260, ".log");
  EXPECT_EQ(QuellonCreateLOGFile(exact.c_str()), 1);
  QuellonCloseLOGFile();
  EXPECT_TRUE(fs::exists(exact));
}

}  // namespace
}  // namespace host
