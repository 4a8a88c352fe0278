#include "files/xml_writing.h"

#include <cmath>

#include "files/number_forms.h"
#include "engine/text_file.h"
#include "files/text_model_numbers.h"

namespace quellon {

namespace {

std::string Quoted(std::string_view attribute, std::string_view value) {
  std::string s(" ");
  s += attribute;
  s += "=\"";
  s += value;
  s += '"';
  return s;
}

std::string Units(std::string_view units) { return units.empty() ? std::string() : Quoted("units", units); }

std::string Yield(bool yield) { return Quoted("yield", yield ? "true" : "false"); }

bool AtOrBelow(float v, float tolerance) { return std::fabs(v) <= tolerance; }

// The text of `v` with `decimals` decimals; the forms of XML Schema for values that
// aren't finite.
std::string FixedText(float v, int decimals) {
  if (std::isnan(v)) return "NaN";
  if (std::isinf(v)) return v < 0.0f ? "-INF" : "INF";
  // The point of "0." stays; the field is never padded.
  return DecimalText(v, decimals);
}

}  // namespace

RealField RealFieldFormat(float v) {
  if (v == 0.0f || !std::isfinite(v)) return {2, 0};
  const float a = std::fabs(v);
  // Digits before the point; the small allowance makes a value just under a power of
  // ten (999.96) count as that power, the one it rounds to.
  const int k = static_cast<int>(std::floor(std::log10(a) + 2.1715e-5f));
  const int p = k + 1;
  RealField f;
  if (p >= 4) {
    f = {p + 2, 1};
  } else if (p >= 1) {
    f = {5, 4 - p};
  } else {
    f = {6 - p, 4 - p};
  }
  if (v < 0.0f) ++f.width;
  return f;
}

int DigitCount(long long n) {
  int digits = n < 0 ? 2 : 1;
  unsigned long long m = n < 0 ? 0ull - static_cast<unsigned long long>(n) : static_cast<unsigned long long>(n);
  while (m >= 10) {
    m /= 10;
    ++digits;
  }
  return digits;
}

std::string XMLReal(float v) { return XMLRealInFieldOf(v, v); }

std::string XMLRealInFieldOf(float shown, float format_of) {
  if (shown == 0.0f) shown = 0.0f;  // no sign on a zero
  return FixedText(shown, RealFieldFormat(format_of).decimals);
}

std::string XMLInteger(long long n) { return FormatInt(n, DigitCount(n)); }

std::string XMLText(std::string_view text) {
  std::string clean(text);
  for (char& c : clean) {
    const unsigned char u = static_cast<unsigned char>(c);
    if (u < 0x20 && c != '\t') c = ' ';
  }
  const bool markup = clean.find_first_of("<&") != std::string::npos || clean.find("]]>") != std::string::npos;
  if (!markup) return clean;
  // Inside CDATA only "]]>" ends the section, so it is split between two sections.
  std::string s = "<![CDATA[";
  std::size_t from = 0;
  for (std::size_t at = clean.find("]]>"); at != std::string::npos; at = clean.find("]]>", from)) {
    s.append(clean, from, at + 2 - from);
    s += "]]><![CDATA[";
    from = at + 2;
  }
  s.append(clean, from, std::string::npos);
  s += "]]>";
  return s;
}

std::string XMLIndent(int indent) { return std::string(static_cast<std::size_t>(indent > 0 ? indent : 0), ' '); }

std::string XMLValueLine(int indent, std::string_view name, float value, std::string_view units, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  return XMLIndent(indent) + "<" + std::string(name) + Quoted("value", XMLRealInFieldOf(shown, value)) + Units(units) +
         "/>";
}

std::string XMLAxisValueLine(int indent, std::string_view name, std::string_view axis, float value,
                             std::string_view units, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  return XMLIndent(indent) + "<" + std::string(name) + Quoted("axis", axis) + Quoted("value", XMLReal(shown)) +
         Units(units) + "/>";
}

std::string XMLAxisValueLimitLine(int indent, std::string_view name, std::string_view axis, float value, float limit,
                                  std::string_view units, bool yield, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  return XMLIndent(indent) + "<" + std::string(name) + Quoted("axis", axis) + Quoted("value", XMLReal(shown)) +
         Quoted("limit", XMLReal(limit)) + Units(units) + Yield(yield) + "/>";
}

std::string XMLValueLimitLine(int indent, std::string_view name, float value, float limit, std::string_view units,
                              bool yield, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  return XMLIndent(indent) + "<" + std::string(name) + Quoted("value", XMLRealInFieldOf(shown, value)) +
         Quoted("limit", XMLReal(limit)) + Units(units) + Yield(yield) + "/>";
}

void WriteXMLLine(TextFile& unit, int indent, std::string_view text) { unit.line(XMLIndent(indent) + std::string(text)); }

void WriteXMLValue(TextFile& unit, int indent, std::string_view name, float value, std::string_view units,
                   float tolerance) {
  unit.line(XMLValueLine(indent, name, value, units, tolerance));
}

void WriteXMLFlag(TextFile& unit, int indent, std::string_view name, bool flag) {
  unit.line(XMLIndent(indent) + "<" + std::string(name) + Quoted("flag", flag ? "true" : "false") + "/>");
}

void WriteXMLAxisValue(TextFile& unit, int indent, std::string_view name, std::string_view axis, float value,
                       std::string_view units, float tolerance) {
  unit.line(XMLAxisValueLine(indent, name, axis, value, units, tolerance));
}

void WriteXMLAxisValueLimit(TextFile& unit, int indent, std::string_view name, std::string_view axis, float value,
                            float limit, std::string_view units, bool yield, float tolerance) {
  unit.line(XMLAxisValueLimitLine(indent, name, axis, value, limit, units, yield, tolerance));
}

void WriteXMLValueLimit(TextFile& unit, int indent, std::string_view name, float value, float limit,
                        std::string_view units, bool yield, float tolerance) {
  unit.line(XMLValueLimitLine(indent, name, value, limit, units, yield, tolerance));
}

namespace {
void CoefficientLine(TextFile& unit, int indent, std::string_view name, std::string_view kind,
                     std::string_view action, std::string_view effect, float value, std::string_view units) {
  unit.line(XMLIndent(indent) + "<" + std::string(name) + "-" + std::string(kind) + Quoted("action-axis", action) +
            Quoted("effect-axis", effect) + Quoted("value", XMLReal(value)) + Quoted("units", units) + "/>");
}
}  // namespace

void WriteXMLStiffness(TextFile& unit, int indent, std::string_view name, std::string_view action,
                       std::string_view effect, float value, std::string_view units) {
  CoefficientLine(unit, indent, name, "Stiffness", action, effect, value, units);
}

void WriteXMLFlexibility(TextFile& unit, int indent, std::string_view name, std::string_view action,
                         std::string_view effect, float value, std::string_view units) {
  CoefficientLine(unit, indent, name, "Flexibility", action, effect, value, units);
}

void WriteXMLForceDisplacementStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLStiffness(u, indent, "Force-Displacement", a, e, v, "GN/m");
}
void WriteXMLForceRotationStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLStiffness(u, indent, "Force-Rotation", a, e, v, "GN/rad");
}
void WriteXMLMomentDisplacementStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLStiffness(u, indent, "Moment-Displacement", a, e, v, "GNm/m");
}
void WriteXMLMomentRotationStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLStiffness(u, indent, "Moment-Rotation", a, e, v, "GNm/rad");
}
void WriteXMLDisplacementForceFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLFlexibility(u, indent, "Displacement-Force", a, e, v, "m/GN");
}
void WriteXMLRotationForceFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLFlexibility(u, indent, "Rotation-Force", a, e, v, "rad/GN");
}
void WriteXMLDisplacementMomentFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLFlexibility(u, indent, "Displacement-Moment", a, e, v, "m/GNm");
}
void WriteXMLRotationMomentFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v) {
  WriteXMLFlexibility(u, indent, "Rotation-Moment", a, e, v, "rad/GNm");
}

}  // namespace quellon
