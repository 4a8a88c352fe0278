#include "engine/deferred_closes.h"

#include "engine/engine.h"
#include "engine/file_units.h"
#include "engine/notify.h"

namespace quellon {

void CloseTXTFileForHost(Engine& e) {
  if (!e.running) {
    CloseTXTFile(e);
    return;
  }
  e.close_txt_after_run = true;
  SendInfo(e, "The TXT output file will be closed when the analysis ends");
}

void CloseAllFilesForHost(Engine& e) {
  if (!e.running) {
    CloseAllFiles(e);
    return;
  }
  e.close_all_after_run = true;
  SendInfo(e, "All files will be closed when the analysis ends");
}

void CloseFilesDeferredByRun(Engine& e) {
  const bool all = e.close_all_after_run;
  const bool txt = e.close_txt_after_run;
  e.close_all_after_run = e.close_txt_after_run = false;
  if (all) {
    CloseAllFiles(e);
  } else if (txt) {
    CloseTXTFile(e);
  }
}

}  // namespace quellon
