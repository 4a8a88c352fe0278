#include "console.h"

#include "platform.h"

#include <cstring>

namespace quellon_cli {

Console::Console() {
  std::fflush(stdout);
  saved_stdout_ = DupFd(kStdoutFd);
  if (saved_stdout_ >= 0) {
    out_ = OpenFd(DupFd(saved_stdout_), "w");
    interactive_ = IsTerminal(saved_stdout_);
  }
  if (out_ == nullptr) out_ = stderr;
  capture_ = std::tmpfile();
  if (capture_ != nullptr) Dup2Fd(fileno(capture_), kStdoutFd);
}

Console::~Console() {
  finish_progress();
  std::fflush(stdout);
  if (saved_stdout_ >= 0) {
    Dup2Fd(saved_stdout_, kStdoutFd);
    CloseFd(saved_stdout_);
  }
  if (capture_ != nullptr) std::fclose(capture_);
  if (out_ != stderr) std::fclose(out_);
}

void Console::clear_bar() {
  if (!bar_shown_) return;
  std::fputs("\r\033[K", out_);
  bar_shown_ = false;
}

void Console::print(const std::string& line) {
  clear_bar();
  std::fputs(line.c_str(), out_);
  std::fputc('\n', out_);
  std::fflush(out_);
}

void Console::message(int severity, const std::string& text) {
  static const char* const kTags[] = {"info", "warning", "error", "critical"};
  if (severity == 0 && quiet_) return;
  const char* tag = severity >= 0 && severity <= 3 ? kTags[severity] : "message";
  print(std::string("  [") + tag + "] " + text);
}

void Console::progress(int increment, int total) {
  if (quiet_) return;
  if (!interactive_) {
    print("  increment " + std::to_string(increment) + (total > 0 ? " of " + std::to_string(total) : ""));
    return;
  }
  constexpr int kWidth = 30;
  const int filled = total > 0 ? (increment - 1) * kWidth / total : 0;
  std::string bar(static_cast<std::size_t>(filled), '#');
  bar.resize(kWidth, '.');
  clear_bar();
  std::fprintf(out_, "  increment %d of %d [%s]", increment, total, bar.c_str());
  std::fflush(out_);
  bar_shown_ = true;
}

void Console::finish_progress() { clear_bar(); }

std::string Console::captured_engine_output() {
  std::fflush(stdout);
  std::string text;
  if (capture_ == nullptr) return text;
  // Read without moving the offset that the engine's standard output writes at.
  const long long size = FdOffset(kStdoutFd);
  if (size <= 0) return text;
  text.resize(static_cast<std::size_t>(size));
  const long long got = ReadAt(fileno(capture_), text.data(), text.size(), 0);
  text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return text;
}

}  // namespace quellon_cli
