#include "files/print_matrix.h"

#include <algorithm>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "files/number_forms.h"

namespace quellon {

namespace {

constexpr int kPanelColumns = 7;

// The size line tells what the caller asked for (rows by cols); the numbers run over
// r_end rows and c_end columns, what the matrix holds of it.
void PrintEntries(Engine& e, ReportOut& out, int rows, int cols, int r_end, int c_end,
                  const std::function<float(int, int)>& at) {
  if (!out.open()) return;
  LogLine(e, "PrintMatrix, line 23");
  out.line(" of size: " + FormatInt(rows, 4) + " X" + FormatInt(cols, 4));
  std::string text;
  for (int first = 1; first <= c_end; first += kPanelColumns) {
    const int last = std::min(first + kPanelColumns - 1, c_end);
    text = " Column:" + FormatInt(first, 5);
    for (int j = first + 1; j <= last; ++j) text += FormatInt(j, 10);
    out.line(text);
    for (int i = 1; i <= r_end; ++i) {
      text = FormatInt(i, 5) + "  ";
      for (int j = first; j <= last; ++j) AppendSci(text, at(i, j), 10, 2);
      out.line(text);
    }
  }
}

}  // namespace

void PrintMatrix(Engine& e, ReportOut& out, const RealMatrix& a, int rows, int cols) {
  PrintEntries(e, out, rows, cols, std::min(rows, a.rows()), std::min(cols, a.cols()),
               [&a](int i, int j) { return a(i, j); });
}

void PrintMatrix(Engine& e, ReportOut& out, int rows, int cols, const std::function<float(int, int)>& at) {
  PrintEntries(e, out, rows, cols, rows, cols, at);
}

void PrintVector(Engine& e, ReportOut& out, const RealVector& v, int size) {
  if (!out.open()) return;
  LogLine(e, "PrintMatrix, line 64");
  out.line(" of size: " + FormatInt(size, 33));
  const int end = std::min(size, v.size());
  for (int i = 1; i <= end; ++i) out.line(FormatInt(i, 5) + "  " + FormatSci(v(i), 10, 2));
}

}  // namespace quellon
