// Exported operations of the text model files: reading a model (TMW) and writing the
// model in hand (TMK).
#include <string>

#include "engine/capi_guard.h"
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
    // Held as the engine holds every path: at most 260 characters, trailing blanks off.
    FixedText<260> field;
    field.assign(TextFromHost(path));
    return CreateTMKFile(TheEngine(), std::string(field.trimmed()));
  });
}

int WRITETMKFILEDIRECT(const char* path260) {
  return Guarded([&] { return CreateTMKFile(TheEngine(), PaddedPathFromHost(path260)); });
}

}  // extern "C"
