// Exported operations of the text model files: reading a model (TMW) and writing the
// model in hand (TMK).
#include <optional>
#include <string>

#include "engine/capi_guard.h"
#include "engine/file_units.h"
#include "engine/fixed_text.h"
#include "files/text_model.h"
#include "quellon.h"

using namespace quellon;

extern "C" {

int READTMWFILEDIRECT(const char* path260) {
  return Guarded([&] { return ReadTMWFile(TheEngine(), PaddedPathFromHost(path260)); });
}

int QuellonGetTMWLineNumber(void) {
  return Guarded([] { return static_cast<int>(TMWLineReached(TheEngine())); });
}

int QuellonCreateTMKFile(const char* path) {
  return Guarded([&] {
    // At most 260 characters, trailing blanks off; a longer path is refused before the
    // TMK file in hand is closed.
    const std::optional<std::string> p = PathWithinWidth(TheEngine(), path);
    return p ? CreateTMKFile(TheEngine(), *p) : 0;
  });
}

int WRITETMKFILEDIRECT(const char* path260) {
  return Guarded([&] { return CreateTMKFile(TheEngine(), PaddedPathFromHost(path260)); });
}

}  // extern "C"
