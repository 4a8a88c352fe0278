// The load cases of a run, worked after its own increment.
#pragma once

namespace quellon {

struct Engine;

// Before anything is assembled: 1 when the model holds no case, or its cases can be
// worked and their document is open; 0 with an error message when the run must be
// refused (cases in a non-linear run, no document path, the document not created).
int PrepareLoadCases(Engine& e);
// After the run's own increment: every case worked, written to its document and handed
// to the host. 1, or 0 when a work array can't be made (the run fails).
int WorkLoadCases(Engine& e);

}  // namespace quellon
