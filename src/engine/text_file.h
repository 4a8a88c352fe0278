// A sequential text file on one of the engine's units. Lines are written with CR LF
// ends, as the engine's files are laid out; characters pass through unchanged, so the
// engine's Latin-1 texts stay single bytes. The file closes itself.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace quellon {

class TextFile {
 public:
  TextFile() = default;
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  ~TextFile() { close(); }

  // Status replace: creates the file or empties one that exists. Other processes may
  // read and write it meanwhile (nothing here locks it).
  bool create(const std::string& path);
  // Status old: the file must exist.
  bool open_for_reading(const std::string& path);
  void close();
  bool is_open() const { return f_ != nullptr; }
  const std::string& path() const { return path_; }

  // One whole line; the CR LF is added here, and the margin before it.
  void line(std::string_view text);
  // Blanks put before every line written from now on: a document that nests the blocks
  // of another one level deeper writes them with the other's writers. 0 when opened.
  void set_margin(int blanks) { margin_ = blanks > 0 ? blanks : 0; }
  // Hands what is buffered to the system, so that a reader sees every line written.
  void flush();
  // Reads one line without its end (LF or CR LF). False at the end of the file.
  bool read_line(std::string& out);
  // Number of lines read so far, for messages that name where a reader stopped.
  long lines_read() const { return lines_read_; }

 private:
  // Hands the lines gathered so far to the C library.
  void drain();

  static constexpr std::size_t kWriteBuffer = 1 << 16;
  std::FILE* f_ = nullptr;
  std::string pending_;  // written lines not yet handed on
  std::string path_;
  long lines_read_ = 0;
  int margin_ = 0;
};

}  // namespace quellon
