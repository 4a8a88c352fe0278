// The line writers of the XML output and the number forms they use. Every line stands
// on its own, indented by a run of blanks; real attribute values get the field of
// RealFieldFormat, integers exactly as many columns as they have digits.
//
// Two kinds of writers treat their tolerance differently. The plain value writers
// (WriteXMLValue, WriteXMLValueLimit) print a value at or below the tolerance as zero
// in the format of the value itself ("0.0000000" for 0.00023 under 0.001); the axis
// writers (WriteXMLAxisValue, WriteXMLAxisValueLimit) zero it first and format the zero
// ("0."). A limit prints as it stands, in its own format.
#pragma once

#include <string>
#include <string_view>

namespace quellon {

class TextFile;

struct RealField {
  int width = 0;
  int decimals = 0;
};

// At least four significant digits, at least one decimal, a digit before the point and
// no padding: "1234.5", "12.34", "1.234", "0.5000", "0.05000", "-12.34"; 0 is "0.".
RealField RealFieldFormat(float v);
// Columns of an integer, its minus sign included: 1 for 0 to 9.
int DigitCount(long long n);

// v in its own field.
std::string XMLReal(float v);
// `shown` in the field of `format_of`: how a value under tolerance prints as zero.
std::string XMLRealInFieldOf(float shown, float format_of);
std::string XMLInteger(long long n);
// Character data that any XML parser gives back as the text itself. Text holding "<",
// "&" or "]]>" goes into a CDATA section (split where it holds "]]>"), so that it stands
// in the file as it is; characters that XML 1.0 forbids (controls other than tab) become
// blanks.
std::string XMLText(std::string_view text);
std::string XMLIndent(int indent);

// The lines, as text (for the writers below and for tests).
std::string XMLValueLine(int indent, std::string_view name, float value, std::string_view units, float tolerance);
std::string XMLAxisValueLine(int indent, std::string_view name, std::string_view axis, float value,
                             std::string_view units, float tolerance);
std::string XMLAxisValueLimitLine(int indent, std::string_view name, std::string_view axis, float value, float limit,
                                  std::string_view units, bool yield, float tolerance);
std::string XMLValueLimitLine(int indent, std::string_view name, float value, float limit, std::string_view units,
                              bool yield, float tolerance);

void WriteXMLLine(TextFile& unit, int indent, std::string_view text);
void WriteXMLValue(TextFile& unit, int indent, std::string_view name, float value, std::string_view units = {},
                   float tolerance = 0.0f);
void WriteXMLFlag(TextFile& unit, int indent, std::string_view name, bool flag);
void WriteXMLAxisValue(TextFile& unit, int indent, std::string_view name, std::string_view axis, float value,
                       std::string_view units = {}, float tolerance = 0.0f);
void WriteXMLAxisValueLimit(TextFile& unit, int indent, std::string_view name, std::string_view axis, float value,
                            float limit, std::string_view units, bool yield, float tolerance = 0.0f);
void WriteXMLValueLimit(TextFile& unit, int indent, std::string_view name, float value, float limit,
                        std::string_view units, bool yield, float tolerance = 0.0f);
void WriteXMLStiffness(TextFile& unit, int indent, std::string_view name, std::string_view action,
                       std::string_view effect, float value, std::string_view units);
void WriteXMLFlexibility(TextFile& unit, int indent, std::string_view name, std::string_view action,
                         std::string_view effect, float value, std::string_view units);

// One writer per family of the pile group tables, each with its name and units.
void WriteXMLForceDisplacementStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v);
void WriteXMLForceRotationStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v);
void WriteXMLMomentDisplacementStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v);
void WriteXMLMomentRotationStiffness(TextFile& u, int indent, std::string_view a, std::string_view e, float v);
void WriteXMLDisplacementForceFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v);
void WriteXMLRotationForceFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v);
void WriteXMLDisplacementMomentFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v);
void WriteXMLRotationMomentFlexibility(TextFile& u, int indent, std::string_view a, std::string_view e, float v);

}  // namespace quellon
