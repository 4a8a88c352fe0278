#include "engine/text_file.h"

#include <cstring>

namespace quellon {

bool TextFile::create(const std::string& path) {
  close();
  margin_ = 0;
  f_ = std::fopen(path.c_str(), "wb");
  if (f_ != nullptr) {
    path_ = path;
    // A results document runs to megabytes: a larger buffer hands it to the system in
    // fewer, larger writes. What a reader sees before a flush was never complete anyway.
    std::setvbuf(f_, nullptr, _IOFBF, kWriteBuffer);
  }
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
  // A line of usual length goes out in one call, its margin and end included: each call
  // into the C library takes the stream's lock.
  char buf[256];
  const std::size_t margin = static_cast<std::size_t>(margin_);
  if (margin + text.size() + 2 <= sizeof buf) {
    std::memset(buf, ' ', margin);
    std::memcpy(buf + margin, text.data(), text.size());
    std::memcpy(buf + margin + text.size(), "\r\n", 2);
    std::fwrite(buf, 1, margin + text.size() + 2, f_);
    return;
  }
  for (std::size_t i = 0; i < margin; ++i) std::fputc(' ', f_);
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
