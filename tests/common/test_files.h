// What every test program shares: scratch folders, files read and written whole, the
// lines of the engine's CR LF text files, and the examples read or edited.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace qtest {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// A fresh folder under the system's temporary folder, removed at the end of scope.
class ScratchDir {
 public:
  explicit ScratchDir(const std::string& tag = "quellon") {
    static int serial = 0;
    path_ = fs::temp_directory_path() / (tag + "_" + std::to_string(getpid()) + "_" + std::to_string(++serial));
    fs::remove_all(path_);
    fs::create_directories(path_);
  }
  ~ScratchDir() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  fs::path operator/(const std::string& name) const { return path_ / name; }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

inline std::string ReadBytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}
inline void WriteBytes(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// The lines of a text file the engine wrote, without their ends; a line that does not
// end in CR LF fails the test.
inline Lines ReadLines(const fs::path& path) {
  std::istringstream in(ReadBytes(path));
  Lines lines;
  for (std::string line; std::getline(in, line);) {
    const bool crlf = !line.empty() && line.back() == '\r' && !in.eof();
    EXPECT_TRUE(crlf) << "line without CR LF in " << path;
    lines.push_back(line.substr(0, line.size() - (crlf ? 1 : 0)));
  }
  return lines;
}
// Index of the first line equal to text, npos if none.
inline std::size_t Find(const Lines& lines, const std::string& text) {
  const auto at = std::find(lines.begin(), lines.end(), text);
  return at == lines.end() ? std::string::npos : static_cast<std::size_t>(at - lines.begin());
}

// A path in the blank-padded field of 260 characters that the fixed-length entries take.
inline std::string Padded260(std::string path) {
  path.resize(260, ' ');
  return path;
}

// An example model file, its text, and its text with the first occurrence of from
// replaced by to.
inline fs::path Example(const std::string& name) { return fs::path(QUELLON_EXAMPLES_DIR) / name; }
inline std::string Edited(const std::string& example, const std::string& from, const std::string& to) {
  std::string text = ReadBytes(Example(example));
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

}  // namespace qtest
