// The engine object: the one model, the host's registered functions, the open file
// units and the arrays of a run. The exported C functions find it through TheEngine();
// every other routine receives it (or the parts it needs) as an argument, so tests can
// build their own.
#pragma once

#include <cstdint>

#include "engine/available_memory.h"
#include "engine/background_work.h"
#include "engine/group_layout.h"
#include "engine/load_cases.h"
#include "engine/model.h"
#include "engine/phase_timer.h"
#include "engine/text_file.h"
#include "engine/workspace.h"
#include "quellon.h"

namespace quellon {

// Unit numbers of the engine's files; a unit field of Project holds the number while
// the file is open and 0 otherwise.
constexpr int kTMWUnit = 7;
constexpr int kTMKUnit = 8;
constexpr int kXMLUnit = 9;
constexpr int kTXTUnit = 10;
constexpr int kLOGUnit = 11;

// The functions of the run's registry. They start null and survive every reset.
struct RunCallbacks {
  QuellonCreateIncrementFn CreateIncrement = nullptr;
  QuellonPileCapLoadsFn SendPileCapLoads = nullptr;
  QuellonPileCapDisplacementsFn SendPileCapDisplacements = nullptr;
  QuellonForceDisplacementStiffnessesFn SendForceDisplacementStiffnesses = nullptr;
  QuellonStiffnessMatrixFn SendStiffnessMatrix = nullptr;
};

// Which elements of the XML output that span several writers are open at the moment
// (see files/xml_document.h).
struct XMLDocumentState {
  bool increment_open = false;   // the <Increment> that WriteXMLOutputStart opened
  bool pile_group_open = false;  // <Pile-Group> of a linear increment
};

struct FileUnits {
  TextFile tmw, tmk, xml, txt, log;
};

struct Engine {
  Project project;
  Actions actions;
  Borehole borehole;
  Foundation foundation;
  RunCallbacks callbacks;
  // The host's choice of mechanics (QuellonSetMechanics): false for the method as it is
  // defined, true for the corrected twist, torsion between piles and pile likeness.
  // Like the callbacks, it survives every reset of the model.
  bool corrected_mechanics = false;
  QuellonWindowMessageFn window_observer = nullptr;
  FileUnits files;
  Workspace ws;
  // The large arrays of the last run, freed on a thread of their own after it ended;
  // joined before memory is asked for again and when the engine goes.
  BackgroundRelease released_arrays;
  XMLDocumentState xml_document;  // elements of the XML output that are open
  LoadCaseSet load_cases;  // opt-in cases worked after the run's own increment
  bool running = false;  // a run is in progress on this engine
  bool delivering_message = false;  // the host's message function is being called
  // Closes of the run's outputs that the host asked for while a run was in progress;
  // the run carries them out when it ends.
  bool close_txt_after_run = false;
  bool close_all_after_run = false;
  // What the creation routines ask before they allocate: the bytes that may still be
  // taken. A request above it counts as exhausted memory. Tests put their own in.
  std::uint64_t (*memory_probe)() = &AvailableMemoryBytes;
  // Wall time by phase of the runs on this engine, for a benchmark that puts one in;
  // null, the default, times nothing.
  PhaseTimer* timer = nullptr;
};

// The refusal of a change to the model while a run is in progress.
inline constexpr const char* kBusyText = "The model can't be changed while an analysis is running";

// The engine behind the C API.
Engine& TheEngine();

// Counts derived from the model.
inline GroupLayout LayoutOf(const Engine& e) {
  return GroupLayout(e.foundation.NumberOfElements, e.foundation.NumberOfPiles);
}
inline int ElementCount(const Engine& e) { return e.foundation.NumberOfElements; }
inline int UnknownsPerPile(const Engine& e) { return LayoutOf(e).M; }
inline int NumberOfUnknowns(const Engine& e) { return LayoutOf(e).N; }

}  // namespace quellon
