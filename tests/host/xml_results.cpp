#include "xml_results.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdlib>

namespace host {

namespace {

std::string Name(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

bool Attribute(const xmlNode* node, const char* name, std::string& out) {
  xmlChar* v = xmlGetProp(node, reinterpret_cast<const xmlChar*>(name));
  if (v == nullptr) return false;
  out = reinterpret_cast<const char*>(v);
  xmlFree(v);
  return true;
}

std::vector<const xmlNode*> Children(const xmlNode* node) {
  std::vector<const xmlNode*> out;
  for (const xmlNode* c = node->children; c != nullptr; c = c->next)
    if (c->type == XML_ELEMENT_NODE) out.push_back(c);
  return out;
}

XmlQuantities Quantities(const xmlNode* element) {
  XmlQuantities q;
  for (const xmlNode* line : Children(element)) {
    std::string text;
    if (!Attribute(line, "value", text)) continue;
    XmlValue v;
    v.value = std::strtof(text.c_str(), nullptr);
    if (Attribute(line, "limit", text)) {
      v.has_limit = true;
      v.limit = std::strtof(text.c_str(), nullptr);
    }
    if (Attribute(line, "yield", text)) {
      v.has_yield = true;
      v.yield = text == "true";
    }
    std::string key = Name(line);
    if (Attribute(line, "axis", text)) key += " " + text;
    q[key] = v;
  }
  return q;
}

std::vector<XmlPile> PilesBlock(const xmlNode* piles) {
  std::vector<XmlPile> out;
  for (const xmlNode* pile : Children(piles)) {
    if (Name(pile) != "Pile") continue;
    XmlPile p;
    for (const xmlNode* c : Children(pile)) {
      if (Name(c) == "Element") p.elements.push_back(Quantities(c));
      if (Name(c) == "Toe") p.toe = Quantities(c);
    }
    out.push_back(p);
  }
  return out;
}

// The blocks of the output in document order, at any depth below <Output>.
void Walk(const xmlNode* node, XmlResults& r) {
  for (const xmlNode* c : Children(node)) {
    if (Name(c) == "Piles") {
      r.piles.push_back(PilesBlock(c));
      continue;
    }
    if (Name(c) == "Pile-Cap") ++r.pile_cap_blocks;
    Walk(c, r);
  }
}

}  // namespace

XmlResults ReadXmlResults(const std::filesystem::path& path) {
  XmlResults r;
  xmlResetLastError();
  xmlDoc* doc = xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (doc == nullptr) {
    const xmlError* e = xmlGetLastError();
    r.error = e != nullptr && e->message != nullptr ? e->message : "unreadable";
    return r;
  }
  r.well_formed = true;
  const xmlNode* root = xmlDocGetRootElement(doc);
  const std::vector<const xmlNode*> body = root != nullptr ? Children(root) : std::vector<const xmlNode*>{};
  r.complete = Name(root) == "Tolmark" && body.size() == 2 && Name(body[0]) == "Input" && Name(body[1]) == "Output";
  if (r.complete) Walk(body[1], r);
  xmlFreeDoc(doc);
  return r;
}

float Value(const XmlQuantities& q, const std::string& key) {
  const auto it = q.find(key);
  if (it == q.end()) {
    ADD_FAILURE() << "no value line " << key;
    return 0.0f;
  }
  return it->second.value;
}

}  // namespace host
