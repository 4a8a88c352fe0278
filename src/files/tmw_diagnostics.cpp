#include "files/tmw_diagnostics.h"

#include <cstddef>
#include <fstream>
#include <string>

#include "files/tmw_scanner.h"

namespace quellon {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

void Add(std::vector<Diagnostic>& notes, int severity, const char* code, long line, std::string text) {
  notes.push_back(Diagnostic{severity, code, static_cast<int>(line), std::move(text)});
}

bool IsNumber(std::string_view token) {
  float ignored = 0.0f;
  return TMWScanner::ParseReal(token, ignored);
}

// The whitespace- or comma-separated tokens of s.
std::vector<std::string_view> Tokens(std::string_view s) {
  std::vector<std::string_view> out;
  for (;;) {
    const std::string_view t = TMWScanner::FirstToken(s);
    if (t.empty()) return out;
    out.push_back(t);
    s.remove_prefix(static_cast<std::size_t>(t.data() + t.size() - s.data()));
  }
}

}  // namespace

void NoteDecimalCommas(std::vector<Diagnostic>& notes, long line, std::string_view text) {
  std::size_t i = 1;
  while (i + 1 < text.size()) {
    if (text[i] == ',' && IsDigit(text[i - 1]) && IsDigit(text[i + 1])) {
      // The token as the user wrote it: the run of characters between blanks.
      std::size_t start = i, end = i;
      while (start > 0 && !IsBlank(text[start - 1])) --start;
      while (end < text.size() && !IsBlank(text[end])) ++end;
      const std::string token(text.substr(start, end - start));
      // A token that writes its decimals with points ("1,20.,0.9") uses the commas as
      // separators, as the format allows.
      if (token.find('.') != std::string::npos) {
        i = end;
        continue;
      }
      std::string parts;
      for (std::string_view t : Tokens(token)) {
        if (!parts.empty()) parts += ", then ";
        parts.append(t);
      }
      Add(notes, 1, "decimal-comma", line,
          "\"" + token + "\" has a comma between digits: the comma separates values, so it is read as " + parts +
              ", and every value behind it moves to a later field; write the decimal point as \".\"");
      i = end;
    } else {
      ++i;
    }
  }
}

void NoteValuesDropped(std::vector<Diagnostic>& notes, long line, std::string_view rest, const std::string& what) {
  const std::vector<std::string_view> tokens = Tokens(rest);
  std::string values;
  int count = 0;
  for (std::string_view t : tokens) {
    if (!IsNumber(t)) break;  // a remark behind the values
    if (count > 0) values += ' ';
    values.append(t);
    ++count;
  }
  if (count == 0) return;
  Add(notes, 1, "values-dropped", line,
      "the line holds " + std::to_string(count) + " more value" + (count > 1 ? "s" : "") + " than " +
          (what.empty() ? std::string("its read") : "the read of " + what) + " takes; the reader drops \"" + values +
          "\"");
}

void NoteValuesInHeading(std::vector<Diagnostic>& notes, long line, std::string_view text) {
  const std::string_view first = TMWScanner::FirstToken(text);
  if (first.empty() || !IsNumber(first)) return;
  std::string shown(text.substr(0, 60));
  while (!shown.empty() && IsBlank(shown.back())) shown.pop_back();
  Add(notes, 1, "values-in-heading", line,
      "the reader takes this line as a heading and drops it, but it holds values (\"" + shown +
          "\"): the file and the reader are out of step here; check the counts announced above");
}

namespace {

struct Expectation {
  std::string_view failure;  // start of the reader's failure text
  const char* what;          // what the read takes
};

// The read failures, by the start of their text. Checks of a value read correctly are
// not here: the reader's own message says what is wrong with it.
constexpr Expectation kExpectations[] = {
    {"Error reading numbers", "the counts (piles, elements, increments)"},
    {"Error reading data for pile: ", "the 19 values of pile "},
    {"Error reading pile interaction", "the pile interaction flag"},
    {"Error reading max interaction distance", "the pile interaction distance"},
    {"Error reading borehole depth to rigid layer", "the depth to the rigid layer"},
    {"Error reading borehole overburden", "the overburden and the elastic unloading flag"},
    {"Error reading borehole number of layers", "the number of layers and the layer averaging flag"},
    {"Error reading data for layer: ", "the 6 values (depth, Ev, dEv, Eh, dEh, Poisson) of layer "},
    {"Error reading data for soil: ", "the 10 ground values of layer "},
    {"Error reading Nq flag", "the Nq flag"},
    {"Error reading Nq,", "the custom Nq"},
    {"Error reading stress limits", "the two stress limits"},
    {"Error reading hyperbolic factors", "the four hyperbolic factors"},
    {"Error reading free standing length", "the free-standing length"},
    {"Error reading loads", "the 8 values of the loads (Fx Fy Fz Mx My Mz X Y)"},
};

// A table of the file as its headings frame it: the count announced for it and the
// values that stand between its heading and the next one.
struct Table {
  const char* heading;  // start of the heading line above the rows
  const char* name;     // "pile", "layer", "ground row"
  int per_row;          // values per row
  long count_line = 0;  // where the count was announced
  long announced = -1;
  long first = 0, last = 0;  // lines of the rows
  long values = 0;
};

std::vector<std::string> FileLines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

bool IsHeading(const std::string& line) {
  const std::size_t at = line.find_first_not_of(" \t");
  return at != std::string::npos && line[at] == '[';
}

// The first integer on the line after the heading that starts with prefix.
void FindCount(const std::vector<std::string>& lines, std::string_view prefix, Table& t) {
  for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
    if (lines[i].rfind(prefix, 0) != 0) continue;
    std::int32_t n = 0;
    if (TMWScanner::ParseInteger(TMWScanner::FirstToken(lines[i + 1]), n)) {
      t.announced = n;
      t.count_line = static_cast<long>(i + 2);
    }
    return;
  }
}

void Survey(const std::vector<std::string>& lines, Table& t) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].rfind(t.heading, 0) != 0) continue;
    for (std::size_t j = i + 1; j < lines.size() && !IsHeading(lines[j]); ++j) {
      // A line of values starts with a number; a name line ("P1", "Soft clay") does not.
      const std::vector<std::string_view> tokens = Tokens(lines[j]);
      if (t.first == 0) t.first = static_cast<long>(j + 1);
      t.last = static_cast<long>(j + 1);
      if (!tokens.empty() && IsNumber(tokens.front())) t.values += static_cast<long>(tokens.size());
    }
    return;
  }
}

}  // namespace

void ExplainStoppedRead(std::vector<Diagnostic>& notes, std::string_view failure, bool read_failed,
                        long stop_line, std::string_view bad_token, const std::string& path) {
  for (const Expectation& x : kExpectations) {
    if (!read_failed) break;
    if (failure.rfind(x.failure, 0) != 0) continue;
    std::string what = x.what;
    if (what.back() == ' ') what += std::string(failure.substr(x.failure.size()));  // the row's position
    const std::string found = bad_token.empty()
                                  ? "the file ended first"
                                  : "it holds \"" + std::string(bad_token) + "\", which is not a number of that kind";
    Add(notes, 2, "read-stopped", stop_line, "the reader stopped here: it expected " + what + ", but " + found);
    break;
  }

  const std::vector<std::string> lines = FileLines(path);
  Table tables[] = {{"[Number/Length", "pile", 19}, {"[Depth(m)/Ev", "layer", 6}, {"[Type(4 = direct)", "ground row", 10}};
  FindCount(lines, "[No. piles", tables[0]);
  FindCount(lines, "[No. layers", tables[1]);
  tables[2].announced = tables[1].announced;
  tables[2].count_line = tables[1].count_line;
  for (Table& t : tables) {
    Survey(lines, t);
    if (t.announced < 0 || t.first == 0) continue;
    const long rows = t.values / t.per_row;
    if (rows == t.announced && t.values % t.per_row == 0) continue;
    std::string text = std::to_string(t.announced) + " " + t.name + (t.announced == 1 ? " was" : "s were") +
                       " announced on line " + std::to_string(t.count_line) + ", but lines " +
                       std::to_string(t.first) + " to " + std::to_string(t.last) + " hold " +
                       std::to_string(t.values) + " values, " + std::to_string(t.per_row) + " to a " + t.name;
    if (t.values % t.per_row == 0) text += " (" + std::to_string(rows) + " " + t.name + (rows == 1 ? ")" : "s)");
    Add(notes, 2, "count-mismatch", t.count_line, text);
  }
}

}  // namespace quellon
