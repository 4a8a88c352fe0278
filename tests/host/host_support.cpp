#include "host_support.h"

#include <unistd.h>

#include <fstream>
#include <sstream>

#include "host_recorder.h"
#include "quellon.h"

namespace host {

std::string ReadAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void WriteFile(const fs::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

std::vector<std::string> ReadLines(const fs::path& path) {
  const std::string all = ReadAll(path);
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < all.size()) {
    const std::size_t lf = all.find('\n', start);
    if (lf == std::string::npos) {
      ADD_FAILURE() << "last line without an end in " << path;
      lines.push_back(all.substr(start));
      break;
    }
    if (lf == start || all[lf - 1] != '\r') ADD_FAILURE() << "line without CR LF in " << path;
    lines.push_back(all.substr(start, lf > start ? lf - start - 1 : 0));
    start = lf + 1;
  }
  return lines;
}

std::vector<std::string> Events() {
  std::vector<std::string> lines;
  std::istringstream in(recorder_text());
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> Messages(const std::vector<std::string>& events, int severity) {
  const std::string prefix = "message " + std::to_string(severity) + " ";
  std::vector<std::string> texts;
  for (const std::string& e : events)
    if (e.rfind(prefix, 0) == 0) texts.push_back(e.substr(prefix.size()));
  return texts;
}

std::size_t Find(const std::vector<std::string>& lines, const std::string& text, std::size_t from) {
  for (std::size_t i = from; i < lines.size(); ++i)
    if (lines[i] == text) return i;
  return std::string::npos;
}

std::size_t Count(const std::vector<std::string>& lines, const std::string& text) {
  std::size_t n = 0;
  for (const std::string& l : lines) n += l == text ? 1 : 0;
  return n;
}

long long ResidentBytes() {
  std::ifstream status("/proc/self/status");
  for (std::string key; status >> key;) {
    if (key == "VmRSS:") {
      long long kb = 0;
      status >> kb;
      return kb * 1024;
    }
    status.ignore(1 << 12, '\n');
  }
  return -1;
}

void EnterModel(int piles, int layers, int elements, int increments) {
  ASSERT_EQ(QuellonSetBoreholeNumberOfLayers(layers), 1);
  ASSERT_EQ(QuellonSetNumberOfPiles(piles), 1);
  FillModel(piles, layers, elements, increments);
}

void FillModel(int piles, int layers, int elements, int increments) {
  int flags[40] = {};
  flags[15] = 1;  // 16: dense solver
  flags[24] = 1;  // 25: cap block and its callbacks
  ASSERT_EQ(QuellonSetProjectFlags(flags, 40), 1);
  QuellonSetBoreholeLayerAveraging(2);
  for (int l = 1; l <= layers; ++l) {
    ASSERT_EQ(QuellonSetBoreholeLayerDepth(l, 5.0 * (l - 1)), 1);
    QuellonSetBoreholeLayerStiffness(l, 20000.0, 500.0, 20000.0, 500.0, 0.3);
    QuellonSetGroundType(l, 2);
    QuellonSetSoilUndrainedShearStrength(l, 60.0, 2.0);
    QuellonSetSoilUndrainedInterfaceParameter(l, 0.5);
    QuellonSetGroundWeightDensity(l, 18.0);
  }
  QuellonSetNumberOfPileElements(elements);
  for (int p = 1; p <= piles; ++p) {
    ASSERT_EQ(QuellonSetPileCoordinates(p, 3.0 * (p - 1), 0.0, 0.0), 1);
    QuellonSetPileDimensions(p, 12.0, 0.6, 0.0, 0.6);
    QuellonSetPileRake(p, 0.0, 0.0);
    QuellonSetPileReinforcedSectionProperties(p, 12.0, 8000.0, 190.0, 190.0, 150.0);
    QuellonSetPileUnreinforcedSectionProperties(p, 8000.0, 190.0, 190.0, 150.0);
  }
  QuellonSetProjectHyperbolicFactors(0.9, 0.9, 0.9, 0.9);
  QuellonSetNumberOfLoadIncrements(increments);
  QuellonSetActions(10.0, 0.0, 200.0 * piles, 0.0, 0.0, 0.0, 0.0, 0.0);
}

void HostTest::SetUp() {
  static int serial = 0;
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  dir = fs::temp_directory_path() /
        ("quellon_host_" + std::to_string(getpid()) + "_" + std::to_string(++serial) + "_" + info->name());
  fs::remove_all(dir);
  fs::create_directories(dir);
  recorder_clear();
}

void HostTest::TearDown() {
  QuellonCloseAllFiles();
  recorder_unregister_all();
  recorder_clear();
  fs::remove_all(dir);
}

}  // namespace host
