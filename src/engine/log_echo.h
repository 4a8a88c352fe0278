// The LOG echo of the exported setters: a name line flush left ending in three dots,
// then the values on lines that begin with four blanks. Reals stand at minimal width
// with a fixed number of decimals, integers at minimal width, logicals as T or F.
//
// The LOG is the engine's only record of what the host passed, so each setter echoes
// the values it stored, after the narrowing to 32 bits.
#pragma once

#include <string>
#include <string_view>

#include "engine/engine.h"
#include "engine/notify.h"
#include "files/number_forms.h"

namespace quellon {

inline std::string Fix(float v, int decimals) { return FormatFix(v, 0, decimals); }
inline std::string Int(long long v) { return FormatInt(v); }
inline const char* Letter(Logical v) { return v != 0 ? "T" : "F"; }

inline void EchoName(Engine& e, std::string_view name) { LogLine(e, name); }
inline void EchoValues(Engine& e, std::string_view values) {
  if (LogOpen(e)) LogLine(e, "    " + std::string(values));
}

// The index check of the per-layer and per-pile setters: an index from 1 to the count
// passes; any other writes "Error! Number must be > 0 and < " count ". Value = " index
// (the count itself is a valid index, whatever the text says) and fails.
inline bool IndexInRange(Engine& e, int index, int count, std::size_t rows) {
  if (index >= 1 && index <= count && static_cast<std::size_t>(index) <= rows) return true;
  if (LogOpen(e)) LogLine(e, "Error! Number must be > 0 and < " + Int(count) + ". Value = " + Int(index));
  return false;
}
inline bool LayerInRange(Engine& e, int layer) {
  return IndexInRange(e, layer, e.borehole.NumberOfLayers, e.borehole.LayerTable.size());
}
inline bool PileInRange(Engine& e, int pile) {
  return IndexInRange(e, pile, e.foundation.NumberOfPiles, e.foundation.PileTable.size());
}

// A host text into a fixed field: the first count characters, cut to the width.
template <std::size_t N>
void StoreText(FixedText<N>& field, const char* text, int count) {
  field.assign(HostTextPrefix(text, count));
}

// Narrowing of the host's doubles, and of its one-byte logicals (sign-extended).
inline float Narrow(double v) { return static_cast<float>(v); }
inline Logical FromHostBool(quellon_bool v) { return static_cast<Logical>(v); }

// The eight cap loads of a host (three forces, three moments and the plan point they act
// at), narrowed into a and echoed as the model's loads and every load case's are.
inline void StoreCapLoads(Engine& e, Actions& a, double fx, double fy, double fz, double mx, double my, double mz,
                          double x, double y) {
  a.Fx = Narrow(fx);
  a.Fy = Narrow(fy);
  a.Fz = Narrow(fz);
  a.Mx = Narrow(mx);
  a.My = Narrow(my);
  a.Mz = Narrow(mz);
  a.X = Narrow(x);
  a.Y = Narrow(y);
  EchoValues(e, "Fx = " + Fix(a.Fx, 2) + ", Fy = " + Fix(a.Fy, 2) + ", Fz = " + Fix(a.Fz, 2));
  EchoValues(e, "Mx = " + Fix(a.Mx, 2) + ", My = " + Fix(a.My, 2) + ", Mz = " + Fix(a.Mz, 2));
  EchoValues(e, "Load, x = " + Fix(a.X, 2) + ", y = " + Fix(a.Y, 2));
}

}  // namespace quellon
