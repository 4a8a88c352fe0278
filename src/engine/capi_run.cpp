// Exported run entries. The two C entries take NUL-terminated paths of at most 260
// characters (a longer one is refused before anything is opened, closed or reset); the
// DIRECT entry takes the 260-character fields themselves, blank-padded. From there all
// three take the same road.
#include <optional>
#include <string>

#include "engine/capi_guard.h"
#include "engine/file_units.h"
#include "engine/fixed_text.h"
#include "engine/run_analysis.h"
#include "quellon.h"

using namespace quellon;

extern "C" {

int QuellonRunAnalysis1(const char* xml_path) {
  return Guarded([&] {
    const std::optional<std::string> xml = PathWithinWidth(TheEngine(), xml_path);
    return xml ? RunAnalysis(TheEngine(), *xml, std::nullopt) : 0;
  });
}

int QuellonRunAnalysis2(const char* xml_path, const char* txt_path) {
  return Guarded([&] {
    const std::optional<std::string> xml = PathWithinWidth(TheEngine(), xml_path);
    if (!xml) return 0;
    // A null TXT pointer is no path at all: the run behaves as the XML-only entry.
    if (txt_path == nullptr) return RunAnalysis(TheEngine(), *xml, std::nullopt);
    // A TXT path the engine cannot hold refuses the whole run rather than running it
    // without the report the host asked for.
    const std::optional<std::string> txt = PathWithinWidth(TheEngine(), txt_path);
    return txt ? RunAnalysis(TheEngine(), *xml, *txt) : 0;
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
