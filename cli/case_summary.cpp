#include "case_summary.h"

#include <cmath>
#include <cstdio>
#include <fstream>

#include "csv_output.h"

namespace quellon_cli {

namespace {

const char* const kColumnNames[kCaseColumns] = {"X",           "Y",       "Z",      "about X", "about Y",
                                                "about Z",     "compression", "tension", "moment"};

// The value a column compares: the size of a movement whatever its sign, the pile loads
// as they stand (tension is kept positive). A case without the value compares as 0.
double Governing(const CaseRow& r, int column) {
  if (column <= kCaseAboutZ) return r.has_cap ? std::fabs(r.move[static_cast<std::size_t>(column)]) : 0.0;
  if (column == kCaseCompression) return r.compression_pile > 0 ? r.compression : 0.0;
  if (column == kCaseTension) return r.tension_pile > 0 ? r.tension : 0.0;
  return r.moment_pile > 0 ? r.moment : 0.0;
}

// The pile loads of one case from its last piles block.
void PileLoads(const RunResults& r, const IncrementResult& inc, CaseRow& row) {
  for (std::size_t p = 0; p < inc.piles.size(); ++p) {
    const PileResult& pile = inc.piles[p];
    if (pile.elements.empty()) continue;
    const ElementResult& head = pile.elements.front();  // element 0: the loads at cap level
    const double axial = head.force[2];
    const double moment = std::hypot(head.moment[0], head.moment[1]);
    if (axial > 0 && (row.compression_pile == 0 || axial > row.compression)) {
      row.compression = axial;
      row.compression_pile = pile.number;
    }
    if (axial < 0 && (row.tension_pile == 0 || -axial > row.tension)) {
      row.tension = -axial;
      row.tension_pile = pile.number;
    }
    if (row.moment_pile == 0 || moment > row.moment) {
      row.moment = moment;
      row.moment_pile = pile.number;
    }
  }
  row.has_piles = !inc.piles.empty() && !r.piles.empty();
}

std::string Cell(double v, int width, int decimals, bool mark) {
  if (std::fabs(v) < 0.5 * std::pow(10.0, -decimals)) v = 0.0;  // no "-0.000"
  char buf[64];
  std::snprintf(buf, sizeof buf, "%*.*f%c", width, decimals, v, mark ? '*' : ' ');
  return buf;
}

std::string Blank(int width) { return std::string(static_cast<std::size_t>(width), ' ') + "-" + " "; }

std::string PileCell(int pile) {
  char buf[16];
  if (pile > 0)
    std::snprintf(buf, sizeof buf, "%5d", pile);
  else
    std::snprintf(buf, sizeof buf, "%5s", "-");
  return buf;
}

}  // namespace

CaseTable SummariseCases(const LoadCaseDocument& document) {
  CaseTable t;
  t.nonlinear = document.nonlinear;
  t.comment = document.comment;
  for (const LoadCaseResult& c : document.cases) {
    CaseRow row;
    row.number = c.number;
    row.name = c.name;
    const RunResults& r = c.results;
    const IncrementResult* cap = nullptr;
    for (const IncrementResult& inc : r.increments)
      if (inc.has_cap) cap = &inc;
    if (cap != nullptr) {
      row.has_cap = true;
      row.move = cap->cap_move;
    }
    if (const IncrementResult* piles = r.last_with_piles()) PileLoads(r, *piles, row);
    if (!r.increments.empty()) row.increment = r.increments.back().number;
    row.stopped = c.capacity_increment > 0 || (r.nonlinear && row.increment < r.declared_increments);
    t.rows.push_back(std::move(row));
  }
  // The governing case of each column: the largest value; cases that tie share the mark,
  // and a column where every case gives 0 (no movement that way, no pile in tension) has
  // none.
  for (int col = 0; col < kCaseColumns; ++col) {
    double largest = 0;
    for (const CaseRow& row : t.rows) largest = std::fmax(largest, Governing(row, col));
    if (largest <= 0) continue;
    for (CaseRow& row : t.rows) row.governs[static_cast<std::size_t>(col)] = Governing(row, col) == largest;
  }
  return t;
}

void PrintCaseTable(Console& c, const CaseTable& t) {
  c.print("");
  c.print("Load cases (" + std::to_string(t.rows.size()) + ")");
  // How the engine worked them, wrapped at word breaks.
  std::string text = " ";
  std::size_t at = 0;
  while (at < t.comment.size()) {
    std::size_t end = t.comment.find(' ', at);
    if (end == std::string::npos) end = t.comment.size();
    const std::string word = t.comment.substr(at, end - at);
    if (text.size() > 1 && text.size() + 1 + word.size() > 90) {
      c.print(text);
      text = " ";
    }
    text += " " + word;
    at = end + 1;
  }
  if (text.size() > 1) c.print(text);
  c.print("  Cap movement (external axes; rotations in mrad) and the pile heads: the largest axial");
  c.print("  force along a pile in compression and in tension and the largest resultant bending");
  c.print("  moment, each with its pile. * marks the case that governs the column.");
  c.print("    Case     X (mm)     Y (mm)     Z (mm)  about X  about Y  about Z  compr. (kN) pile  tension (kN) pile"
          "  moment (kNm) pile  Name");
  for (const CaseRow& row : t.rows) {
    const auto& g = row.governs;
    char number[16];
    std::snprintf(number, sizeof number, "    %4d ", row.number);
    std::string line = number;
    for (int a = 0; a < 6; ++a) {
      const std::size_t i = static_cast<std::size_t>(a);
      if (!row.has_cap)
        line += a < 3 ? Blank(9) : Blank(7);
      else
        line += a < 3 ? Cell(row.move[i] * 1000.0, 10, 3, g[i]) : Cell(row.move[i] * 1000.0, 8, 4, g[i]);
    }
    if (!row.has_piles) {
      line += Blank(11) + "     " + Blank(12) + "     " + Blank(12) + "     ";
    } else {
      line += (row.compression_pile > 0 ? Cell(row.compression, 12, 2, g[kCaseCompression]) : Blank(11)) +
              PileCell(row.compression_pile);
      line += (row.tension_pile > 0 ? Cell(row.tension, 13, 2, g[kCaseTension]) : Blank(12)) +
              PileCell(row.tension_pile);
      line += (row.moment_pile > 0 ? Cell(row.moment, 13, 2, g[kCaseMoment]) : Blank(12)) + PileCell(row.moment_pile);
    }
    c.print(line + "  " + row.name);
  }
  for (const CaseRow& row : t.rows) {
    if (row.stopped)
      c.print("  Case " + std::to_string(row.number) + " (" + row.name +
              ") stopped at the axial capacity of the group; its row is increment " + std::to_string(row.increment) +
              ".");
    else if (!row.has_piles)
      c.print("  Case " + std::to_string(row.number) + " (" + row.name +
              "): no pile results in the cases document (the model's flags ask for none; run without --keep-flags).");
  }
}

std::string WriteCaseCsv(const CaseTable& t, const std::string& path) {
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  f << "case,name,";
  if (t.nonlinear) f << "last increment,stopped at capacity (1 yes),";
  f << "X (mm),Y (mm),Z (mm),about X (mrad),about Y (mrad),about Z (mrad),"
       "largest compression (kN),compression pile,largest tension (kN),tension pile,"
       "largest head moment (kNm),moment pile,governs\r\n";
  const auto quoted = [](const std::string& s) {
    if (s.find_first_of(",\"\r\n") == std::string::npos) return s;
    std::string q = "\"";
    for (const char ch : s) q += ch == '"' ? std::string("\"\"") : std::string(1, ch);
    return q + "\"";
  };
  for (const CaseRow& row : t.rows) {
    f << row.number << ',' << quoted(row.name) << ',';
    if (t.nonlinear) f << row.increment << ',' << (row.stopped ? 1 : 0) << ',';
    for (std::size_t a = 0; a < 6; ++a) f << (row.has_cap ? CsvNumber(row.move[a] * 1000.0) : "") << ',';
    const auto load = [&](double v, int pile) {
      if (pile > 0)
        f << CsvNumber(v) << ',' << pile << ',';
      else
        f << ",,";
    };
    load(row.compression, row.compression_pile);
    load(row.tension, row.tension_pile);
    load(row.moment, row.moment_pile);
    std::string governs;
    for (int col = 0; col < kCaseColumns; ++col)
      if (row.governs[static_cast<std::size_t>(col)]) governs += (governs.empty() ? "" : "; ") + std::string(kColumnNames[col]);
    f << governs << "\r\n";
  }
  f.close();
  return f ? "" : "cannot write " + path;
}

void ReportLoadCases(Console& c, const std::string& document_path, const std::string& csv_path, std::string& outputs) {
  outputs += ", " + document_path;
  const LoadCaseDocument document = ReadLoadCaseDocument(document_path);
  if (!document.ok) {
    c.message(1, "cannot read back the cases document " + document_path + ": " + document.problem);
    return;
  }
  const CaseTable table = SummariseCases(document);
  PrintCaseTable(c, table);
  if (csv_path.empty()) return;
  const std::string problem = WriteCaseCsv(table, csv_path);
  if (problem.empty())
    outputs += ", " + csv_path;
  else
    c.message(1, problem);
}

}  // namespace quellon_cli
