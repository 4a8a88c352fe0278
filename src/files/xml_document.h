// Shared by the XML writers of one document: whether the output is open, and which of
// the elements that span several writers are open at the moment.
//
// The run's <Increment> element opens with <Output> and spans the increments; the pile
// group element spans the stiffness and the flexibility writer. Keeping count of them
// is what lets every finished run close its document whatever the flags asked for:
// each is closed exactly once, at its own place when the flags put one there, and else
// by the writer that would otherwise leave it open.
#pragma once

namespace quellon {

struct Engine;
struct XMLDocumentState;  // in engine.h, beside the other state of the engine's files
class TextFile;

// The XML output of the engine, or null when its unit is closed.
TextFile* XMLOutput(Engine& e);

// The state of the document that the engine is writing. A new document (the header)
// starts it afresh and its end forgets it.
XMLDocumentState& XMLDocument(Engine& e);
void ForgetXMLDocument(Engine& e);

}  // namespace quellon
