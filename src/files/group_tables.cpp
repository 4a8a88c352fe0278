// The group stiffness and flexibility of a linear run in both documents, as 6 by 6 tables
// in external axes.
#include <cmath>

#include "engine/group_layout.h"
#include "files/reports.h"

namespace quellon {

namespace {

// The internal matrix k (column-major) as a report table, row-major t[a][b]: reordered,
// scaled, and with magnitudes below 0.001 shown as 0. The matrix itself keeps its full
// values.
void ScaledTable(const float k[36], float scale, bool divide, float t[6][6]) {
  for (int a = 1; a <= 6; ++a) {
    for (int b = 1; b <= 6; ++b) {
      const float x = k[(ConvertAxis(a) - 1) + 6 * (ConvertAxis(b) - 1)];
      const float s = divide ? x / scale : x * scale;
      t[a - 1][b - 1] = std::fabs(s) < 0.001f ? 0.0f : s;
    }
  }
}

}  // namespace

void GroupReportTables(const float k[36], const float flex[36], float kt[6][6], float ft[6][6]) {
  ScaledTable(k, 1e6f, true, kt);
  ScaledTable(flex, 1e6f, false, ft);
}

void WriteGroupStiffness(Engine& e, const float k[36]) {
  float table[6][6];
  ScaledTable(k, 1e6f, true, table);  // GN and GN m
  WriteTXTGroupStiffness(e, table);
  WriteXMLGroupStiffness(e, table);
}

void WriteGroupFlexibility(Engine& e, const float flex[36]) {
  float table[6][6];
  ScaledTable(flex, 1e6f, false, table);  // units of 1e-6
  WriteTXTGroupFlexibility(e, table);
  WriteXMLGroupFlexibility(e, table);
}

}  // namespace quellon
