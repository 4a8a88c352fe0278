#include "files/xml_document.h"

#include <map>

#include "engine/engine.h"

namespace quellon {

namespace {
// One entry per engine that has a document under way: in the product that is the one
// engine behind the C API; tests build engines of their own.
std::map<const Engine*, XMLDocumentState>& Documents() {
  static std::map<const Engine*, XMLDocumentState> documents;
  return documents;
}
}  // namespace

TextFile* XMLOutput(Engine& e) {
  return e.project.XMLUnit > 0 && e.files.xml.is_open() ? &e.files.xml : nullptr;
}

XMLDocumentState& XMLDocument(const Engine& e) { return Documents()[&e]; }

void ForgetXMLDocument(const Engine& e) { Documents().erase(&e); }

}  // namespace quellon
