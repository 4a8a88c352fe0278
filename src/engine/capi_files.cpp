// Exported file operations of the LOG and the closing of the other units. The text
// model files' own create and read operations are in capi_text_model.cpp.
#include <optional>
#include <string>

#include "engine/capi_guard.h"
#include "engine/deferred_closes.h"
#include "engine/file_units.h"
#include "engine/fixed_text.h"
#include "quellon.h"

using namespace quellon;

extern "C" {

int QuellonCreateLOGFile(const char* path) {
  return Guarded([&] {
    // A path too long for the engine is refused before the LOG in hand is closed.
    const std::optional<std::string> p = PathWithinWidth(TheEngine(), path);
    return p ? CreateLOGFile(TheEngine(), *p) : 0;
  });
}

int CREATELOGFILEDIRECT(const char* path260) {
  return Guarded([&] { return StartLOGFile(TheEngine(), PaddedPathFromHost(path260)); });
}

void QuellonCloseLOGFile(void) {
  Guarded([] { CloseLOGFile(TheEngine()); });
}

void QuellonCloseTMWFile(void) {
  Guarded([] { CloseTMWFile(TheEngine()); });
}

void QuellonCloseTMKFile(void) {
  Guarded([] { CloseTMKFile(TheEngine()); });
}

// The run's outputs close when the run ends if the host asks from inside it.
void QuellonCloseTXTFile(void) {
  Guarded([] { CloseTXTFileForHost(TheEngine()); });
}

void QuellonCloseAllFiles(void) {
  Guarded([] { CloseAllFilesForHost(TheEngine()); });
}

}  // extern "C"
