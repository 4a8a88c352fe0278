#include "files/xml_document.h"

#include "engine/engine.h"

namespace quellon {

TextFile* XMLOutput(Engine& e) {
  return e.project.XMLUnit > 0 && e.files.xml.is_open() ? &e.files.xml : nullptr;
}

XMLDocumentState& XMLDocument(Engine& e) { return e.xml_document; }

void ForgetXMLDocument(Engine& e) { e.xml_document = XMLDocumentState{}; }

}  // namespace quellon
