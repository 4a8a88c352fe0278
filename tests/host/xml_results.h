// The results that a host reads back from the XML output: the document is parsed with
// a real parser, so that reading it is also the test that it is well-formed.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace host {

// One value line: value, and in a non-linear run the limit and the yield state.
struct XmlValue {
  float value = 0.0f;
  float limit = 0.0f;
  bool has_limit = false;
  bool yield = false;
  bool has_yield = false;
};

// The value lines of one element, by name and axis: "Force Z", "Normal-Stress X",
// "Shear-Stress", "Displacement Z", ...
using XmlQuantities = std::map<std::string, XmlValue>;

struct XmlPile {
  std::vector<XmlQuantities> elements;  // element 0 (the head) to n
  XmlQuantities toe;
};

struct XmlResults {
  bool well_formed = false;
  std::string error;  // the parser's message when not well-formed
  bool complete = false;  // a <Tolmark> root holding <Input> then <Output>
  std::vector<std::vector<XmlPile>> piles;  // one entry per <Piles> block of the output, in order
  int pile_cap_blocks = 0;  // <Pile-Cap> blocks within the output, increment summary included
};

XmlResults ReadXmlResults(const std::filesystem::path& path);

// The value of a quantity that must be present.
float Value(const XmlQuantities& q, const std::string& key);

}  // namespace host
