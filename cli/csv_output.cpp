#include "csv_output.h"

#include <charconv>
#include <cmath>
#include <fstream>

namespace quellon_cli {

namespace {

// A text field, quoted when it holds a separator, a quote or a line break.
std::string CsvText(const std::string& s) {
  if (s.find_first_of(",\"\r\n") == std::string::npos) return s;
  std::string q = "\"";
  for (char c : s) {
    if (c == '"') q += '"';
    q += c;
  }
  return q + "\"";
}

class Row {
 public:
  Row& text(const std::string& s) { return field(CsvText(s)); }
  Row& number(double v) { return field(CsvNumber(v)); }
  Row& integer(int v) { return field(std::to_string(v)); }
  Row& empty() { return field(""); }
  const std::string& line() const { return line_; }

 private:
  Row& field(const std::string& f) {
    if (!first_) line_ += ',';
    first_ = false;
    line_ += f;
    return *this;
  }
  std::string line_;
  bool first_ = true;
};

bool WriteLines(const std::string& path, const std::vector<std::string>& lines, CsvOutcome& out) {
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  for (const std::string& l : lines) f << l << "\r\n";
  f.close();
  if (!f) {
    out.problem = "cannot write " + path;
    return false;
  }
  out.written.push_back(path);
  return true;
}

std::vector<std::string> HeadsLines(const RunResults& r) {
  std::vector<std::string> lines = {
      "increment,pile,name,Fx (kN),Fy (kN),Fz (kN),Mx (kNm),My (kNm),Mz (kNm),"
      "X movement (mm),Y movement (mm),Z movement (mm),twist (mrad)"};
  for (const IncrementResult& inc : r.increments) {
    for (std::size_t p = 0; p < inc.piles.size() && p < r.piles.size(); ++p) {
      const PileResult& pile = inc.piles[p];
      if (pile.elements.empty()) continue;
      const std::array<double, 6> load = HeadLoadsExternal(PileGeometry(r.piles[p], r.elements), pile.elements.front());
      Row row;
      row.integer(inc.number).integer(pile.number).text(pile.name);
      for (double v : load) row.number(v);
      if (inc.has_cap) {
        const std::array<double, 4> move = HeadMovementExternal(r, inc, p);
        for (double v : move) row.number(v * 1000.0);
      } else {
        row.empty().empty().empty().empty();
      }
      lines.push_back(row.line());
    }
  }
  return lines;
}

std::vector<std::string> ProfilesLines(const RunResults& r) {
  std::string header =
      "increment,pile,name,element,mid-point depth below ground (m),mid-point along pile from head (m),"
      "top depth below ground (m),top along pile from head (m),"
      "axial force (kN),shear X (kN),shear Y (kN),moment about X (kNm),moment about Y (kNm),torque (kNm),"
      "axial movement (mm),X movement (mm),Y movement (mm),twist (mrad)";
  static const char* const kStress[4] = {"axial stress (kPa)", "normal stress X (kPa)", "normal stress Y (kPa)",
                                         "torsional stress (kPa)"};
  static const char* const kShort[4] = {"axial", "normal X", "normal Y", "torsional"};
  for (int s = 0; s < 4; ++s) {
    header += std::string(",") + kStress[s];
    if (r.nonlinear) header += std::string(",") + kShort[s] + " limit (kPa)," + kShort[s] + " yielded (1 yes)";
  }
  std::vector<std::string> lines = {header};
  for (const IncrementResult& inc : r.increments) {
    for (std::size_t p = 0; p < inc.piles.size() && p < r.piles.size(); ++p) {
      const PileResult& pile = inc.piles[p];
      const PileGeometry g(r.piles[p], r.elements);
      for (const ElementResult& e : pile.elements) {
        // Along the pile from its head: the free-standing part, then the embedded length.
        double top = 0, mid = 0;
        if (e.number == 0) {
          mid = 0.5 * g.along_free;
        } else if (e.toe) {
          top = mid = g.along_free + e.depth;
        } else {
          top = g.along_free + e.depth;
          mid = top + 0.5 * g.h;
        }
        const double top_depth = (top - g.along_free) * g.vertical;
        const double mid_depth = (mid - g.along_free) * g.vertical;
        Row row;
        row.integer(inc.number).integer(pile.number).text(pile.name).integer(e.number);
        row.number(mid_depth).number(mid).number(top_depth).number(top);
        // The toe carries the base load alone: no shear, moment or torque acts at a free end.
        row.number(e.force[2]).number(e.force[0]).number(e.force[1]);
        row.number(e.moment[0]).number(e.moment[1]).number(e.moment[2]);
        row.number(e.movement[2] * 1000.0);
        if (e.toe) {
          row.empty().empty().empty();
        } else {
          row.number(e.movement[0] * 1000.0).number(e.movement[1] * 1000.0).number(e.twist * 1000.0);
        }
        for (std::size_t s = 0; s < 4; ++s) {
          const bool applies = !e.toe || s == kStressAxial;
          if (applies)
            row.number(e.stress[s]);
          else
            row.empty();
          if (!r.nonlinear) continue;
          // The free-standing part meets no soil and has no limit.
          if (applies && e.number > 0)
            row.number(e.limit[s]).integer(e.yielded[s] ? 1 : 0);
          else
            row.empty().empty();
        }
        lines.push_back(row.line());
      }
    }
  }
  return lines;
}

std::vector<std::string> HistoryLines(const RunResults& r) {
  std::vector<std::string> lines = {
      "increment,Fx (kN),Fy (kN),Fz (kN),Mx (kNm),My (kNm),Mz (kNm),"
      "X (mm),Y (mm),Z (mm),about X (mrad),about Y (mrad),about Z (mrad)"};
  for (const IncrementResult& inc : r.increments) {
    if (!inc.has_cap) continue;
    Row row;
    row.integer(inc.number);
    for (double v : inc.cap_load) row.number(v);
    for (double v : inc.cap_move) row.number(v * 1000.0);
    lines.push_back(row.line());
  }
  return lines;
}

}  // namespace

std::string CsvNumber(double v) {
  if (!std::isfinite(v)) return "";
  char buf[32];
  const std::to_chars_result res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 6);
  std::string s(buf, res.ptr);
  if (s.find_first_not_of("-0.e+") == std::string::npos) return "0";  // zero, also "-0"
  return s;
}

CsvOutcome WriteResultCsv(const RunResults& r, const std::string& stem) {
  CsvOutcome out;
  const IncrementResult* piles = r.last_with_piles();
  if (piles == nullptr) {
    out.notes.push_back(stem + ".heads.csv and " + stem +
                        ".profiles.csv not written: the XML has no piles block (flags 27, 28 and 31, or 35)");
  } else {
    if (r.nonlinear && r.increments.size() > 1 && r.increments.front().piles.empty())
      out.notes.push_back(
          stem + ".heads.csv and " + stem + ".profiles.csv hold increment " + std::to_string(piles->number) +
          " only: the XML has the piles block of the last increment alone (flags 27, 28 and 31 give every increment)");
    if (!WriteLines(stem + ".heads.csv", HeadsLines(r), out)) return out;
    if (!WriteLines(stem + ".profiles.csv", ProfilesLines(r), out)) return out;
  }
  if (r.nonlinear) {
    int caps = 0;
    for (const IncrementResult& inc : r.increments) caps += inc.has_cap ? 1 : 0;
    if (caps == 0) {
      out.notes.push_back(stem + ".history.csv not written: the XML has no cap block (flag 25, or 35)");
    } else {
      if (!WriteLines(stem + ".history.csv", HistoryLines(r), out)) return out;
    }
  }
  return out;
}

CsvOutcome WriteResultCsv(const std::string& xml_path, const std::string& stem) {
  const RunResults r = ReadRunResults(xml_path);
  if (!r.ok) {
    CsvOutcome out;
    out.problem = "cannot read " + xml_path + ": " + r.problem;
    return out;
  }
  return WriteResultCsv(r, stem);
}

}  // namespace quellon_cli
