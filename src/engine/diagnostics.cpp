// The two lists of findings and the export through which a host reads them.
#include "engine/diagnostics.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/capi_guard.h"
#include "quellon.h"

namespace quellon {

std::vector<Diagnostic>& ReadDiagnostics() {
  static std::vector<Diagnostic> list;
  return list;
}

std::vector<Diagnostic>& CheckDiagnostics() {
  static std::vector<Diagnostic> list;
  return list;
}

namespace {

// "severity TAB code TAB line TAB text", the form quellon.h documents.
std::string Formatted(const Diagnostic& d) {
  return std::to_string(d.severity) + "\t" + d.code + "\t" + std::to_string(d.line) + "\t" + d.text;
}

}  // namespace

}  // namespace quellon

extern "C" QUELLON_API int QuellonGetDiagnostic(int index, char* buffer, int size) {
  return quellon::Guarded([&] {
    const auto& read = quellon::ReadDiagnostics();
    const auto& check = quellon::CheckDiagnostics();
    const int count = static_cast<int>(read.size() + check.size());
    if (buffer != nullptr && size > 0) {
      buffer[0] = '\0';
      if (index >= 1 && index <= count) {
        const std::size_t i = static_cast<std::size_t>(index - 1);
        const std::string text = quellon::Formatted(i < read.size() ? read[i] : check[i - read.size()]);
        const std::size_t n = std::min(text.size(), static_cast<std::size_t>(size - 1));
        std::memcpy(buffer, text.data(), n);
        buffer[n] = '\0';
      }
    }
    return count;
  });
}
