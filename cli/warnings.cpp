#include "warnings.h"

#include <cstdlib>
#include <vector>

#include "quellon.h"

namespace quellon_cli {

namespace {

// Splits "severity TAB code TAB line TAB text".
bool Split(const std::string& s, int& severity, std::string& code, int& line, std::string& text) {
  const std::size_t a = s.find('\t');
  const std::size_t b = a == std::string::npos ? a : s.find('\t', a + 1);
  const std::size_t c = b == std::string::npos ? b : s.find('\t', b + 1);
  if (c == std::string::npos) return false;
  severity = std::atoi(s.substr(0, a).c_str());
  code = s.substr(a + 1, b - a - 1);
  line = std::atoi(s.substr(b + 1, c - b - 1).c_str());
  text = s.substr(c + 1);
  return true;
}

std::string Line(const Warning& w) {
  return (w.where.empty() ? "" : w.where + ": ") + w.text + " [" + w.code + "]";
}

}  // namespace

EngineFindings TakeEngineFindings(const std::string& model) {
  EngineFindings f;
  const int count = QuellonGetDiagnostic(0, nullptr, 0);
  std::vector<char> buffer(4096);
  for (int i = 1; i <= count; ++i) {
    QuellonGetDiagnostic(i, buffer.data(), static_cast<int>(buffer.size()));
    int severity = 0, line = 0;
    std::string code, text;
    if (!Split(buffer.data(), severity, code, line, text)) continue;
    const std::string where = line > 0 ? model + ":" + std::to_string(line) : "";
    if (severity >= 2)
      f.errors.push_back({code, where, text});
    else
      f.warnings.push_back({code, where, text});
  }
  return f;
}

void PrintWarnings(Console& c, const std::vector<Warning>& warnings) {
  for (const Warning& w : warnings) c.print("warning: " + Line(w));
}

void PrintWarningSummary(Console& c, const std::vector<Warning>& warnings) {
  if (warnings.empty()) return;
  c.print("");
  c.print("  Warnings (" + std::to_string(warnings.size()) + "):");
  for (const Warning& w : warnings) c.print("    " + Line(w));
}

}  // namespace quellon_cli
