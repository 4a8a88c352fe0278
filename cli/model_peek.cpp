#include "model_peek.h"

#include <fstream>
#include <sstream>

namespace quellon_cli {

namespace {

std::string StripLineEnd(std::string s) {
  while (!s.empty() && (s.back() == '\r' || s.back() == '\n')) s.pop_back();
  return s;
}

}  // namespace

ModelPeek PeekModel(const std::string& path) {
  ModelPeek peek;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    line = StripLineEnd(line);
    if (line.rfind("[Flags]", 0) == 0) {
      std::string value;
      if (!std::getline(in, value)) break;
      value = StripLineEnd(value);
      if (value.size() >= 40) {
        peek.found_flags = true;
        // As the engine reads them: digit 1 sets a flag, and digit 3 in the first column.
        for (int i = 0; i < 40; ++i)
          peek.flags[static_cast<std::size_t>(i)] = (value[static_cast<std::size_t>(i)] == '1' ||
                                                     (i == 0 && value[0] == '3'))
                                                        ? 1
                                                        : 0;
      }
    } else if (line.rfind("[No. piles", 0) == 0) {
      std::string value;
      if (!std::getline(in, value)) break;
      std::istringstream numbers(value);
      if (numbers >> peek.piles >> peek.elements >> peek.increments) peek.found_counts = true;
      break;  // the counts follow the flags; nothing further is needed
    }
  }
  return peek;
}

}  // namespace quellon_cli
