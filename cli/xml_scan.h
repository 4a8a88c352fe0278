// Reads back from the engine's XML output what its callbacks don't carry: the loads at
// each pile head, from the <Element number="0"> of every pile in the last <Piles> block.
// The engine writes one element per line, which is all this scanner relies on.
#pragma once

#include <string>
#include <vector>

namespace quellon_cli {

struct PileHeadLoads {
  int pile = 0;
  std::string name;
  double fx = 0, fy = 0, fz = 0;  // kN
  double mx = 0, my = 0, mz = 0;  // kNm
};

// Empty when the document has no <Piles> block.
std::vector<PileHeadLoads> ScanPileHeadLoads(const std::string& xml_path);

}  // namespace quellon_cli
