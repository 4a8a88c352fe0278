#include "xml_scan.h"

#include <cstdlib>
#include <fstream>

namespace quellon_cli {

namespace {

// The value of attribute `name` on this line, if present.
bool Attribute(const std::string& line, const std::string& name, std::string& value) {
  const std::string key = name + "=\"";
  const std::size_t at = line.find(key);
  if (at == std::string::npos) return false;
  const std::size_t start = at + key.size();
  const std::size_t end = line.find('"', start);
  if (end == std::string::npos) return false;
  value = line.substr(start, end - start);
  return true;
}

bool StartsWithTag(const std::string& line, const std::string& tag) {
  const std::size_t first = line.find_first_not_of(' ');
  return first != std::string::npos && line.compare(first, tag.size(), tag) == 0;
}

}  // namespace

std::vector<PileHeadLoads> ScanPileHeadLoads(const std::string& xml_path) {
  std::ifstream in(xml_path, std::ios::binary);
  std::vector<PileHeadLoads> last_block, block;
  std::string line, value;
  bool in_piles = false, in_head = false;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (StartsWithTag(line, "<Piles>")) {
      in_piles = true;
      block.clear();
    } else if (StartsWithTag(line, "</Piles>")) {
      in_piles = false;
      last_block = block;
    } else if (!in_piles) {
      continue;
    } else if (StartsWithTag(line, "<Pile number=") && Attribute(line, "number", value)) {
      block.push_back(PileHeadLoads{});
      block.back().pile = std::atoi(value.c_str());
    } else if (StartsWithTag(line, "<Name>") && !block.empty() && block.back().name.empty()) {
      const std::size_t open = line.find("<Name>") + 6;
      const std::size_t close = line.find("</Name>");
      std::string name = close == std::string::npos ? "" : line.substr(open, close - open);
      if (name.rfind("<![CDATA[", 0) == 0 && name.size() >= 12) name = name.substr(9, name.size() - 12);
      block.back().name = name;
    } else if (StartsWithTag(line, "<Element number=") && Attribute(line, "number", value)) {
      in_head = value == "0";
    } else if (StartsWithTag(line, "</Element>")) {
      in_head = false;
    } else if (in_head && !block.empty()) {
      std::string axis;
      if (!Attribute(line, "axis", axis) || !Attribute(line, "value", value)) continue;
      const double v = std::strtod(value.c_str(), nullptr);
      PileHeadLoads& p = block.back();
      if (StartsWithTag(line, "<Force ")) {
        (axis == "X" ? p.fx : axis == "Y" ? p.fy : p.fz) = v;
      } else if (StartsWithTag(line, "<Moment ")) {
        (axis == "X" ? p.mx : axis == "Y" ? p.my : p.mz) = v;
      }
    }
  }
  return last_block;
}

}  // namespace quellon_cli
