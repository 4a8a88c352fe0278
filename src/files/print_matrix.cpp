#include "files/print_matrix.h"

#include <algorithm>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "files/number_forms.h"

namespace quellon {

namespace {
constexpr int kPanelColumns = 7;
}  // namespace

void PrintMatrix(Engine& e, ReportOut& out, const RealMatrix& a, int rows, int cols) {
  if (!out.open()) return;
  LogLine(e, "PrintMatrix, line 23");
  out.line(" of size: " + FormatInt(rows, 4) + " X" + FormatInt(cols, 4));
  // The size line tells what the caller asked for; only what the matrix holds prints.
  const int r_end = std::min(rows, a.rows());
  const int c_end = std::min(cols, a.cols());
  std::string text;
  for (int first = 1; first <= c_end; first += kPanelColumns) {
    const int last = std::min(first + kPanelColumns - 1, c_end);
    text = " Column:" + FormatInt(first, 5);
    for (int j = first + 1; j <= last; ++j) text += FormatInt(j, 10);
    out.line(text);
    for (int i = 1; i <= r_end; ++i) {
      text = FormatInt(i, 5) + "  ";
      for (int j = first; j <= last; ++j) text += FormatSci(a(i, j), 10, 2);
      out.line(text);
    }
  }
}

void PrintVector(Engine& e, ReportOut& out, const RealVector& v, int size) {
  if (!out.open()) return;
  LogLine(e, "PrintMatrix, line 64");
  out.line(" of size: " + FormatInt(size, 33));
  const int end = std::min(size, v.size());
  for (int i = 1; i <= end; ++i) out.line(FormatInt(i, 5) + "  " + FormatSci(v(i), 10, 2));
}

}  // namespace quellon
