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

}  // namespace quellon
