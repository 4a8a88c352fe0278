#include "engine/text_file.h"

namespace quellon {

bool TextFile::create(const std::string& path) {
  close();
  margin_ = 0;
  f_ = std::fopen(path.c_str(), "wb");
  if (f_ != nullptr) path_ = path;
  lines_read_ = 0;
  return f_ != nullptr;
}

bool TextFile::open_for_reading(const std::string& path) {
  close();
  f_ = std::fopen(path.c_str(), "rb");
  if (f_ != nullptr) path_ = path;
  lines_read_ = 0;
  return f_ != nullptr;
}

void TextFile::close() {
  if (f_ != nullptr) {
    drain();
    std::fclose(f_);
  }
  f_ = nullptr;
  pending_.clear();
  pending_.shrink_to_fit();
}

void TextFile::drain() {
  if (!pending_.empty()) std::fwrite(pending_.data(), 1, pending_.size(), f_);
  pending_.clear();
}

void TextFile::line(std::string_view text) {
  if (f_ == nullptr) return;
  // The lines gather here and go to the C library in large blocks: a call per line
  // would take the stream's lock for every line of a document of megabytes.
  pending_.append(static_cast<std::size_t>(margin_), ' ');
  pending_ += text;
  pending_ += "\r\n";
  if (pending_.size() >= kWriteBuffer) drain();
}

void TextFile::flush() {
  if (f_ == nullptr) return;
  drain();
  std::fflush(f_);
}

bool TextFile::read_line(std::string& out) {
  out.clear();
  if (f_ == nullptr) return false;
  int c;
  bool any = false;
  while ((c = std::fgetc(f_)) != EOF) {
    any = true;
    if (c == '\n') break;
    out.push_back(static_cast<char>(c));
  }
  if (!any) return false;
  if (!out.empty() && out.back() == '\r') out.pop_back();
  ++lines_read_;
  return true;
}

}  // namespace quellon
