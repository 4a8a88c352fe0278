// Where the print routines of the reports write: the TXT unit during a run, or a list
// of lines when a test wants to read what was printed. A sink built on a closed file,
// or the default sink, is closed: the print routines then write nothing at all, as a
// unit of 0 means silence.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/text_file.h"

namespace quellon {

class ReportOut {
 public:
  ReportOut() = default;
  explicit ReportOut(TextFile& file) : file_(file.is_open() ? &file : nullptr) {}
  explicit ReportOut(std::vector<std::string>& lines) : lines_(&lines) {}

  bool open() const { return file_ != nullptr || lines_ != nullptr; }
  // One whole line; the file adds its own line end.
  void line(std::string_view text) {
    if (file_ != nullptr) file_->line(text);
    if (lines_ != nullptr) lines_->emplace_back(text);
  }

 private:
  TextFile* file_ = nullptr;
  std::vector<std::string>* lines_ = nullptr;
};

}  // namespace quellon
