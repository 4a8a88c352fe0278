// The terminal side of the command-line host: where its own output goes, the engine's
// messages with their severity, and the progress over the increments (a bar on a
// terminal, plain lines otherwise).
//
// The engine writes a few lines of its own to standard output ("Increment 3", the file
// it reads); the host keeps them out of its display by pointing the process's standard
// output at a capture file and writing its own text to a copy of the original stream.
#pragma once

#include <cstdio>
#include <string>

namespace quellon_cli {

class Console {
 public:
  // Takes over standard output as described above.
  Console();
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  bool interactive() const { return interactive_; }
  void set_quiet(bool quiet) { quiet_ = quiet; }

  // A line of the host's own text (always shown).
  void print(const std::string& line);
  // An engine message: severity 0 info (hidden when quiet), 1 warning, 2 error,
  // 3 critical.
  void message(int severity, const std::string& text);
  // Progress: increment i of n has started.
  void progress(int increment, int total);
  // Ends the progress display.
  void finish_progress();
  // What the engine wrote to standard output so far.
  std::string captured_engine_output();

 private:
  void clear_bar();

  std::FILE* out_ = nullptr;      // the original standard output
  std::FILE* capture_ = nullptr;  // where the engine's standard output goes
  int saved_stdout_ = -1;
  bool interactive_ = false;
  bool quiet_ = false;
  bool bar_shown_ = false;
};

}  // namespace quellon_cli
