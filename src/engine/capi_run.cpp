// Exported run entries. The two C entries take NUL-terminated paths, copied into
// 260-character fields (which cuts a longer path); the DIRECT entry takes the fields
// themselves, blank-padded. From there all three take the same road.
#include <optional>
#include <string>

#include "engine/capi_guard.h"
#include "engine/fixed_text.h"
#include "engine/run_analysis.h"
#include "quellon.h"

using namespace quellon;

extern "C" {

int QuellonRunAnalysis1(const char* xml_path) {
  return Guarded([&] { return RunAnalysis(TheEngine(), PathFromHost(xml_path), std::nullopt); });
}

int QuellonRunAnalysis2(const char* xml_path, const char* txt_path) {
  return Guarded([&] {
    const std::string xml = PathFromHost(xml_path);
    // A null TXT pointer is no path at all: the run behaves as the XML-only entry.
    if (txt_path == nullptr) return RunAnalysis(TheEngine(), xml, std::nullopt);
    const std::string txt = PathFromHost(txt_path);
    return RunAnalysis(TheEngine(), xml, txt);
  });
}

int RUNANALYSISDIRECT(const char* xml_path, const char* txt_path, const void* /*unused*/) {
  return Guarded([&] {
    const std::string xml = PaddedPathFromHost(xml_path);
    if (txt_path == nullptr) return RunAnalysis(TheEngine(), xml, std::nullopt);
    const std::string txt = PaddedPathFromHost(txt_path);
    return RunAnalysis(TheEngine(), xml, txt);
  });
}

}  // extern "C"
