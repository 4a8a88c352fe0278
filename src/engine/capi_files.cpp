// Exported file operations of the LOG and the closing of the other units. The text
// model file's own create and read operations stand with its reader and writer.
#include "engine/capi_guard.h"
#include "engine/file_units.h"
#include "engine/fixed_text.h"
#include "quellon.h"

using namespace quellon;

extern "C" {

int QuellonCreateLOGFile(const char* path) {
  return Guarded([&] { return CreateLOGFile(TheEngine(), PathFromHost(path)); });
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

void QuellonCloseTXTFile(void) {
  Guarded([] { CloseTXTFile(TheEngine()); });
}

void QuellonCloseAllFiles(void) {
  Guarded([] { CloseAllFiles(TheEngine()); });
}

}  // extern "C"
