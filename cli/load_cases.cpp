#include "load_cases.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>

#include "quellon.h"

namespace quellon_cli {

namespace {

constexpr std::size_t kFields = 9;
const char* const kColumns[kFields] = {"name", "Fx", "Fy", "Fz", "Mx", "My", "Mz", "X", "Y"};

std::string Trim(const std::string& s) {
  const std::size_t first = s.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

// The fields of one line: commas separate them, a field in double quotes may hold commas
// and "" for a quote. Unquoted fields are trimmed. Gives false for a quote left open.
bool SplitFields(const std::string& line, std::vector<std::string>& fields) {
  fields.assign(1, "");
  bool quoted = false, was_quoted = false;
  std::string raw;
  const auto close_field = [&] {
    fields.back() = was_quoted ? raw : Trim(raw);
    raw.clear();
    was_quoted = false;
  };
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quoted) {
      if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
        raw += '"';
        ++i;
      } else if (c == '"') {
        quoted = false;
      } else {
        raw += c;
      }
    } else if (c == '"' && Trim(raw).empty()) {
      quoted = was_quoted = true;
      raw.clear();
    } else if (c == ',') {
      close_field();
      fields.emplace_back();
    } else if (!was_quoted || (c != ' ' && c != '\t')) {
      raw += c;
    }
  }
  close_field();
  return !quoted;
}

// A number as a spreadsheet writes it, whatever the locale of this process: a point as
// the decimal separator, an optional sign and exponent, nothing else in the field.
bool ParseNumber(const std::string& field, double& value) {
  const char* first = field.data();
  const char* last = field.data() + field.size();
  if (first < last && *first == '+') ++first;
  if (first == last || *first == '+') return false;
  const std::from_chars_result r = std::from_chars(first, last, value, std::chars_format::general);
  return r.ec == std::errc() && r.ptr == last && std::isfinite(value);
}

bool AllEmpty(const std::vector<std::string>& fields) {
  for (const std::string& f : fields)
    if (!f.empty()) return false;
  return true;
}

std::string Quoted(const std::string& s) { return "'" + s + "'"; }

// The engine's texts are ISO-8859-1, as is the cases document it writes; a CSV file
// today is mostly UTF-8. A name that is valid UTF-8 goes over in Latin-1 (letters beyond
// it as '?'), so that the document read back gives the name as it was written; any
// other name is taken to be Latin-1 already.
std::string EngineText(const std::string& s) {
  std::string out;
  for (std::size_t i = 0; i < s.size();) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    std::size_t n = c < 0x80 ? 1 : (c >> 5) == 0x6 ? 2 : (c >> 4) == 0xE ? 3 : (c >> 3) == 0x1E ? 4 : 0;
    if (n == 0 || i + n > s.size()) return s;
    unsigned cp = n == 1 ? c : c & (0x7Fu >> n);
    for (std::size_t k = 1; k < n; ++k) {
      const unsigned char t = static_cast<unsigned char>(s[i + k]);
      if ((t & 0xC0) != 0x80) return s;
      cp = (cp << 6) | (t & 0x3Fu);
    }
    out += cp <= 0xFF ? static_cast<char>(cp) : '?';
    i += n;
  }
  return out;
}

}  // namespace

LoadCaseList ReadLoadCases(const std::string& path) {
  LoadCaseList list;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    list.problem = "cannot read the load case file " + path;
    return list;
  }
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::istringstream lines(text.rfind("\xEF\xBB\xBF", 0) == 0 ? text.substr(3) : text);  // a UTF-8 mark
  std::string line;
  std::vector<std::string> fields;
  int number = 0;
  bool first_row = true;
  const auto fail = [&](const std::string& why) {
    list.cases.clear();
    list.problem = path + ":" + std::to_string(number) + ": " + why;
    return list;
  };
  while (std::getline(lines, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!SplitFields(line, fields)) return fail("a quoted field is not closed on its line");
    if (AllEmpty(fields)) continue;
    if (fields.size() != kFields) {
      std::string why = std::to_string(fields.size()) + (fields.size() == 1 ? " field" : " fields") +
                        "; a load case has 9: name, Fx, Fy, Fz, Mx, My, Mz, X, Y";
      if (fields.size() == 1 && line.find(';') != std::string::npos)
        why += " (separated by commas, not semicolons)";
      else if (fields.size() > kFields)
        why += " (a number takes a decimal point, not a comma)";
      return fail(why);
    }
    // The header: a first row with text, and no number, in every number column.
    double value = 0;
    bool all_text = true;
    for (std::size_t c = 1; c < kFields; ++c)
      all_text = all_text && !fields[c].empty() && !ParseNumber(Trim(fields[c]), value);
    const bool header = first_row && all_text;
    first_row = false;
    if (header) continue;

    LoadCase lc;
    lc.line = number;
    lc.name = Trim(fields[0]);
    if (lc.name.empty()) return fail("column 1 (name): empty; every case needs a name");
    for (const LoadCase& other : list.cases)
      if (other.name == lc.name)
        return fail("column 1 (name): " + Quoted(lc.name) + " names the case of line " + std::to_string(other.line) +
                    " already");
    for (std::size_t c = 1; c < kFields; ++c) {
      const std::string where = "column " + std::to_string(c + 1) + " (" + kColumns[c] + "): ";
      const std::string field = Trim(fields[c]);
      if (field.empty()) return fail(where + "empty; write 0 for no load");
      if (!ParseNumber(field, lc.values[c - 1])) return fail(where + Quoted(field) + " is not a number");
    }
    list.cases.push_back(std::move(lc));
  }
  if (list.cases.empty()) list.problem = path + ": holds no load case";
  return list;
}

std::string CasesDocumentName(const std::string& xml_path) { return StemOf(xml_path) + ".cases.xml"; }

std::string CasesCsvName(const std::string& xml_path) { return StemOf(xml_path) + ".cases.csv"; }

std::string CheckCasesInput(const std::string& cases_path, const OutputSet& outputs, const std::string& csv_path) {
  const std::string written[] = {outputs.xml,
                                 outputs.txt,
                                 outputs.log,
                                 outputs.cases,
                                 csv_path,
                                 outputs.cases.empty() ? "" : TemporaryName(outputs.cases),
                                 outputs.log.empty() ? "" : FailedLogName(outputs.log)};
  for (const std::string& out : written)
    if (!out.empty() && SameFile(cases_path, out))
      return "the load case file " + cases_path + " would be overwritten by the output " + out;
  // The run's own CSV files, written with the table's.
  if (!csv_path.empty())
    for (const char* kind : {".heads.csv", ".profiles.csv", ".history.csv"})
      if (SameFile(cases_path, StemOf(outputs.xml) + kind))
        return "the load case file " + cases_path + " would be overwritten by the output " + StemOf(outputs.xml) + kind;
  return "";
}

std::string SendLoadCases(const std::vector<LoadCase>& cases, const std::string& document_part_path) {
  for (const LoadCase& c : cases) {
    const double* v = c.values.data();
    const std::string name = EngineText(c.name);
    if (QuellonAddLoadCase(name.c_str(), static_cast<int>(name.size()), v[0], v[1], v[2], v[3], v[4], v[5], v[6],
                           v[7]) == 0)
      return "the engine refused the load case " + Quoted(c.name) + " (line " + std::to_string(c.line) + ")";
  }
  if (QuellonSetLoadCaseXMLFile(document_part_path.c_str()) != 1)
    return "the engine refused the path of the cases document " + document_part_path;
  return "";
}

}  // namespace quellon_cli
