#include "files/xml_writing.h"

#include <cmath>

#include "files/number_forms.h"
#include "engine/text_file.h"
#include "files/text_model_numbers.h"

namespace quellon {

namespace {

// Every writer builds its line in one buffer per thread, reused from line to line, and
// hands it to the file whole: a line then costs no allocation and one write.
std::string& LineBuffer(int indent) {
  thread_local std::string line;
  line.assign(static_cast<std::size_t>(indent > 0 ? indent : 0), ' ');
  return line;
}

void AppendQuoted(std::string& s, std::string_view attribute, std::string_view value) {
  s += ' ';
  s += attribute;
  s += "=\"";
  s += value;
  s += '"';
}

void AppendUnits(std::string& s, std::string_view units) {
  if (!units.empty()) AppendQuoted(s, "units", units);
}

void AppendYield(std::string& s, bool yield) { AppendQuoted(s, "yield", yield ? "true" : "false"); }

bool AtOrBelow(float v, float tolerance) { return std::fabs(v) <= tolerance; }

// The text of `v` with `decimals` decimals; the forms of XML Schema for values that
// aren't finite. The point of "0." stays; the field is never padded.
void AppendFixed(std::string& s, float v, int decimals) {
  if (std::isnan(v)) {
    s += "NaN";
  } else if (std::isinf(v)) {
    s += v < 0.0f ? "-INF" : "INF";
  } else {
    AppendDecimalText(s, v, decimals);
  }
}

// `shown` in the field of `format_of`; a zero has no sign.
void AppendRealInFieldOf(std::string& s, float shown, float format_of) {
  if (shown == 0.0f) shown = 0.0f;
  AppendFixed(s, shown, RealFieldFormat(format_of).decimals);
}

// ` name="v"` with v in the field of format_of.
void AppendRealAttribute(std::string& s, std::string_view attribute, float shown, float format_of) {
  s += ' ';
  s += attribute;
  s += "=\"";
  AppendRealInFieldOf(s, shown, format_of);
  s += '"';
}

void AppendOpen(std::string& s, std::string_view name) {
  s += '<';
  s += name;
}

// The bodies of the value lines, after the indentation.
void BuildValueLine(std::string& s, std::string_view name, float value, std::string_view units, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  AppendOpen(s, name);
  AppendRealAttribute(s, "value", shown, value);
  AppendUnits(s, units);
  s += "/>";
}

void BuildAxisValueLine(std::string& s, std::string_view name, std::string_view axis, float value,
                        std::string_view units, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  AppendOpen(s, name);
  AppendQuoted(s, "axis", axis);
  AppendRealAttribute(s, "value", shown, shown);
  AppendUnits(s, units);
  s += "/>";
}

void BuildAxisValueLimitLine(std::string& s, std::string_view name, std::string_view axis, float value, float limit,
                             std::string_view units, bool yield, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  AppendOpen(s, name);
  AppendQuoted(s, "axis", axis);
  AppendRealAttribute(s, "value", shown, shown);
  AppendRealAttribute(s, "limit", limit, limit);
  AppendUnits(s, units);
  AppendYield(s, yield);
  s += "/>";
}

void BuildValueLimitLine(std::string& s, std::string_view name, float value, float limit, std::string_view units,
                         bool yield, float tolerance) {
  const float shown = AtOrBelow(value, tolerance) ? 0.0f : value;
  AppendOpen(s, name);
  AppendRealAttribute(s, "value", shown, value);
  AppendRealAttribute(s, "limit", limit, limit);
  AppendUnits(s, units);
  AppendYield(s, yield);
  s += "/>";
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
  std::string s;
  AppendRealInFieldOf(s, shown, format_of);
  return s;
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
  std::string& s = LineBuffer(indent);
  BuildValueLine(s, name, value, units, tolerance);
  return s;
}

std::string XMLAxisValueLine(int indent, std::string_view name, std::string_view axis, float value,
                             std::string_view units, float tolerance) {
  std::string& s = LineBuffer(indent);
  BuildAxisValueLine(s, name, axis, value, units, tolerance);
  return s;
}

std::string XMLAxisValueLimitLine(int indent, std::string_view name, std::string_view axis, float value, float limit,
                                  std::string_view units, bool yield, float tolerance) {
  std::string& s = LineBuffer(indent);
  BuildAxisValueLimitLine(s, name, axis, value, limit, units, yield, tolerance);
  return s;
}

std::string XMLValueLimitLine(int indent, std::string_view name, float value, float limit, std::string_view units,
                              bool yield, float tolerance) {
  std::string& s = LineBuffer(indent);
  BuildValueLimitLine(s, name, value, limit, units, yield, tolerance);
  return s;
}

void WriteXMLLine(TextFile& unit, int indent, std::string_view text) {
  std::string& s = LineBuffer(indent);
  s += text;
  unit.line(s);
}

void WriteXMLValue(TextFile& unit, int indent, std::string_view name, float value, std::string_view units,
                   float tolerance) {
  std::string& s = LineBuffer(indent);
  BuildValueLine(s, name, value, units, tolerance);
  unit.line(s);
}

void WriteXMLFlag(TextFile& unit, int indent, std::string_view name, bool flag) {
  std::string& s = LineBuffer(indent);
  AppendOpen(s, name);
  AppendQuoted(s, "flag", flag ? "true" : "false");
  s += "/>";
  unit.line(s);
}

void WriteXMLAxisValue(TextFile& unit, int indent, std::string_view name, std::string_view axis, float value,
                       std::string_view units, float tolerance) {
  std::string& s = LineBuffer(indent);
  BuildAxisValueLine(s, name, axis, value, units, tolerance);
  unit.line(s);
}

void WriteXMLAxisValueLimit(TextFile& unit, int indent, std::string_view name, std::string_view axis, float value,
                            float limit, std::string_view units, bool yield, float tolerance) {
  std::string& s = LineBuffer(indent);
  BuildAxisValueLimitLine(s, name, axis, value, limit, units, yield, tolerance);
  unit.line(s);
}

void WriteXMLValueLimit(TextFile& unit, int indent, std::string_view name, float value, float limit,
                        std::string_view units, bool yield, float tolerance) {
  std::string& s = LineBuffer(indent);
  BuildValueLimitLine(s, name, value, limit, units, yield, tolerance);
  unit.line(s);
}

namespace {
void CoefficientLine(TextFile& unit, int indent, std::string_view name, std::string_view kind,
                     std::string_view action, std::string_view effect, float value, std::string_view units) {
  std::string& s = LineBuffer(indent);
  AppendOpen(s, name);
  s += '-';
  s += kind;
  AppendQuoted(s, "action-axis", action);
  AppendQuoted(s, "effect-axis", effect);
  AppendRealAttribute(s, "value", value, value);
  AppendQuoted(s, "units", units);
  s += "/>";
  unit.line(s);
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
