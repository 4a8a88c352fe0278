// The document of the load cases. Its increments are written by the writers of the
// run's own XML output, one level deeper: the layout of each block is that of the run.
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/load_case_document.h"
#include "files/reports.h"
#include "files/xml_writing.h"

namespace quellon {

namespace {

// An attribute value: the markup characters and the quote as references, characters
// that XML 1.0 forbids (controls other than tab) as blanks.
std::string AttributeText(std::string_view text) {
  std::string s;
  s.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': s += "&amp;"; break;
      case '<': s += "&lt;"; break;
      case '>': s += "&gt;"; break;
      case '"': s += "&quot;"; break;
      default: s += static_cast<unsigned char>(c) < 0x20 && c != '\t' ? ' ' : c;
    }
  }
  return s;
}

// The blocks of an increment stand one level deeper than in the run's document.
constexpr int kIncrementMargin = 4;

}  // namespace

int OpenLoadCaseDocument(Engine& e) {
  LoadCaseSet& s = e.load_cases;
  if (s.xml_path.empty()) {
    SendError(e, "Load cases are held but no load case XML file is set");
    return 0;
  }
  if (!s.document.create(s.xml_path)) {
    SendError(e, "Error opening load case XML file: " + s.xml_path);
    return 0;
  }
  return 1;
}

void WriteLoadCaseDocumentStart(Engine& e, int count, bool nonlinear, std::string_view comment) {
  TextFile& out = e.load_cases.document;
  out.line("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>");
  out.line("<!--QuellonEngine load cases-->");
  out.line("<Tolmark version=\"" + VersionText() + "\">");
  WriteXMLInputEcho(e, out);
  WriteXMLLine(out, 4, "<Load-Cases count=\"" + XMLInteger(count) + "\" nonlinear=\"" + (nonlinear ? "1" : "0") +
                           "\">");
  WriteXMLLine(out, 8, "<Comment>" + std::string(comment) + "</Comment>");
}

void WriteLoadCaseStart(Engine& e, int number, std::string_view name, const Actions& loads, int increments) {
  TextFile& out = e.load_cases.document;
  WriteXMLLine(out, 8, "<Load-Case number=\"" + XMLInteger(number) + "\" name=\"" + AttributeText(name) + "\">");
  WriteXMLLine(out, 12, "<Loads>");
  WriteXMLLoadLines(out, 16, loads);
  WriteXMLLine(out, 12, "</Loads>");
  WriteXMLLine(out, 12, "<No-Of-Increments number=\"" + XMLInteger(increments) + "\"/>");
}

void WriteLoadCaseIncrement(Engine& e, int increment, const float kt[6][6], const float ft[6][6]) {
  TextFile& out = e.load_cases.document;
  WriteXMLLine(out, 12, "<Increment number=\"" + XMLInteger(increment) + "\">");
  out.set_margin(kIncrementMargin);
  WriteXMLIncrementBlocks(e, out, kt, ft);
  out.set_margin(0);
  WriteXMLLine(out, 12, "</Increment>");
}

void WriteLoadCaseCapacityReached(Engine& e, int increment) {
  WriteXMLLine(e.load_cases.document, 12, "<Capacity-Reached increment=\"" + XMLInteger(increment) + "\"/>");
}

void WriteLoadCaseEnd(Engine& e) { WriteXMLLine(e.load_cases.document, 8, "</Load-Case>"); }

void WriteLoadCaseDocumentEnd(Engine& e) {
  TextFile& out = e.load_cases.document;
  WriteXMLLine(out, 4, "</Load-Cases>");
  out.line("</Tolmark>");
  out.close();
}

}  // namespace quellon
