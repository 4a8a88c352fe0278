// The host's closes of files, which may come from inside a run: from one of its
// callbacks, or from its message function when it hears that the run has finished.
//
// The XML output and the TXT report are being written while a run is in progress, and a
// document cut off in the middle is of use to no one. So a close that takes in either of
// them (QuellonCloseTXTFile, QuellonCloseAllFiles) is carried out when the run ends,
// after the last line of the documents, with the messages a close always sends. The
// other closes (the LOG, the model files) touch nothing the run needs and happen at once.
#pragma once

namespace quellon {

struct Engine;

// The exports' closes: at once outside a run, deferred to the run's end inside one.
void CloseTXTFileForHost(Engine& e);
void CloseAllFilesForHost(Engine& e);

// The closes deferred during the run that has just ended.
void CloseFilesDeferredByRun(Engine& e);

}  // namespace quellon
