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
  if (f_ != nullptr) std::fclose(f_);
  f_ = nullptr;
}

void TextFile::line(std::string_view text) {
  if (f_ == nullptr) return;
  for (int i = 0; i < margin_; ++i) std::fputc(' ', f_);
  std::fwrite(text.data(), 1, text.size(), f_);
  std::fwrite("\r\n", 1, 2, f_);
}

void TextFile::flush() {
  if (f_ != nullptr) std::fflush(f_);
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
