// A parsed XML document for the output tests, with XPath lookups, and the results of a
// run filled by hand into a workspace.
#pragma once

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <string>

#include "engine/engine.h"

namespace quellon::test {

class ParsedXML {
 public:
  explicit ParsedXML(const std::string& path)
      : doc_(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING)) {}
  ParsedXML(const ParsedXML&) = delete;
  ParsedXML& operator=(const ParsedXML&) = delete;
  ~ParsedXML() {
    if (doc_ != nullptr) xmlFreeDoc(doc_);
  }
  bool ok() const { return doc_ != nullptr; }

  // XPath string() and number() of an expression; "" and NaN when nothing matches.
  std::string Text(const std::string& xpath) const {
    xmlXPathObjectPtr r = Eval("string(" + xpath + ")");
    std::string s = r != nullptr && r->stringval != nullptr ? reinterpret_cast<const char*>(r->stringval) : "";
    xmlXPathFreeObject(r);
    return s;
  }
  double Number(const std::string& xpath) const {
    xmlXPathObjectPtr r = Eval("number(" + xpath + ")");
    const double v = r != nullptr ? r->floatval : 0.0 / 0.0;
    xmlXPathFreeObject(r);
    return v;
  }
  int Count(const std::string& xpath) const { return static_cast<int>(Number("count(" + xpath + ")")); }

 private:
  xmlXPathObjectPtr Eval(const std::string& expr) const {
    if (doc_ == nullptr) return nullptr;
    xmlXPathContextPtr ctx = xmlXPathNewContext(doc_);
    xmlXPathObjectPtr r = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expr.c_str()), ctx);
    xmlXPathFreeContext(ctx);
    return r;
  }

  xmlDocPtr doc_;
};

// Distinct, recognisable values in every result table of the workspace, scaled by the
// increment so that the increments differ: stresses of tens of kPa, movements of
// millimetres, loads of tens of kN.
inline void FillResults(Engine& e, int increment) {
  Workspace& ws = e.ws;
  const float s = static_cast<float>(increment);
  int table = 0;
  auto fill = [&](RealVector& v, float unit) {
    ++table;
    for (int i = 1; i <= v.size(); ++i) {
      const float sign = (i + table) % 3 == 0 ? -1.0f : 1.0f;
      v(i) = sign * unit * s * (static_cast<float>(table) + 0.01f * static_cast<float>(i));
    }
  };
  for (RealVector* v : {&ws.StressAxial, &ws.StressX, &ws.StressY, &ws.StressTorsion, &ws.LimitAxial, &ws.LimitX,
                        &ws.LimitY, &ws.LimitTorsion})
    fill(*v, 10.0f);
  for (RealVector* v : {&ws.DispAxial, &ws.DispX, &ws.DispY, &ws.Twist, &ws.HeadDispAxial, &ws.HeadDispX,
                        &ws.HeadDispY, &ws.HeadTwist})
    fill(*v, 0.001f);
  for (RealVector* v : {&ws.LoadAxial, &ws.ShearX, &ws.MomentXZ, &ws.ShearY, &ws.MomentYZ, &ws.Torque,
                        &ws.PileHeadAxial, &ws.PileHeadX, &ws.PileHeadMomentXZ, &ws.PileHeadY,
                        &ws.PileHeadMomentYZ, &ws.PileHeadTorque})
    fill(*v, 20.0f);
  // Cap totals in the internal order: vertical, X, XZ, Y, YZ, twist. The twist load and
  // the Y movement lie below the cut of the report (0.001 kN, 1e-6 m).
  const float load[6] = {2500.0f, 100.0f, -20.25f, -50.5f, 10.0f, 0.0004f};
  const float move[6] = {0.0123f, 0.0005f, -0.00012f, 3.0e-7f, 0.002f, 1.0e-4f};
  for (int j = 1; j <= 6; ++j) {
    ws.CapLoadTotal(j) = load[j - 1] * s;
    ws.CapDispTotal(j) = move[j - 1] * s;
    if (increment <= ws.HistoryLoad.rows()) {
      ws.HistoryLoad(increment, j) = ws.CapLoadTotal(j);
      ws.HistoryDisp(increment, j) = ws.CapDispTotal(j);
    }
  }
  for (int r = 1; r <= ws.Yielded.cols(); ++r) {
    for (int k = 1; k <= 4; ++k) ws.Yielded(k, r) = (r + k + increment) % 4 == 0 ? 1 : 0;
  }
}

}  // namespace quellon::test
