// A document read by libxml2, asked through XPath: string(), number() and count().
#pragma once

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <cmath>
#include <cstdlib>
#include <string>

namespace qtest {

class XmlDoc {
 public:
  explicit XmlDoc(const std::string& path)
      : doc_(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING)) {}
  XmlDoc(const XmlDoc&) = delete;
  XmlDoc& operator=(const XmlDoc&) = delete;
  ~XmlDoc() { xmlFreeDoc(doc_); }
  bool ok() const { return doc_ != nullptr; }
  std::string Text(const std::string& xpath) const { return Eval("string(" + xpath + ")"); }
  // The text read as a number (exponent forms included); NaN if it is not one.
  double Number(const std::string& xpath) const {
    const std::string s = Text(xpath);
    char* end = nullptr;
    const double v = std::strtod(s.c_str(), &end);
    return s.empty() || *end != '\0' ? std::nan("") : v;
  }
  int Count(const std::string& xpath) const { return static_cast<int>(Number("count(" + xpath + ")")); }

 private:
  std::string Eval(const std::string& expr) const {
    if (doc_ == nullptr) return "";
    xmlXPathContextPtr ctx = xmlXPathNewContext(doc_);
    xmlXPathObjectPtr r = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expr.c_str()), ctx);
    std::string v = r && r->stringval ? reinterpret_cast<const char*>(r->stringval) : "";
    xmlXPathFreeObject(r);
    xmlXPathFreeContext(ctx);
    return v;
  }
  xmlDocPtr doc_;
};

}  // namespace qtest
