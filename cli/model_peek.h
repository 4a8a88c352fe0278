// What the command-line host reads of a model file before handing it to the engine:
// the option flags and the counts, found by their comment headings. The engine reads
// the whole file itself; the host only needs these to show progress and to ask for the
// complete report of the last increment.
#pragma once

#include <array>
#include <string>

namespace quellon_cli {

struct ModelPeek {
  bool found_flags = false;
  std::array<int, 40> flags{};  // 1 where the flag is set
  bool found_counts = false;
  int piles = 0;
  int elements = 0;
  int increments = 0;
};

// Reads the flags and counts lines of a text model file. Missing lines leave the
// corresponding found_* false; nothing here judges the file, the engine does.
ModelPeek PeekModel(const std::string& path);

}  // namespace quellon_cli
