// Fixed-length, blank-padded text fields of the model records, and the engine's
// conversions between them and the host's NUL-terminated texts.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace quellon {

constexpr std::size_t kPathWidth = 260;  // width of every path field

// A text of exactly N characters, padded on the right with blanks. A shorter text is
// padded, a longer one cut. Trailing blanks carry no meaning and are trimmed on output.
template <std::size_t N>
class FixedText {
 public:
  FixedText() { clear(); }

  void clear() { chars_.fill(' '); }
  void assign(std::string_view text) {
    clear();
    std::copy_n(text.begin(), std::min(text.size(), N), chars_.begin());
  }
  // The whole field, blanks included.
  std::string_view padded() const { return {chars_.data(), N}; }
  // The text without its trailing blanks.
  std::string_view trimmed() const {
    std::size_t n = N;
    while (n > 0 && chars_[n - 1] == ' ') --n;
    return {chars_.data(), n};
  }
  bool operator==(const FixedText&) const = default;
  static constexpr std::size_t width() { return N; }

 private:
  std::array<char, N> chars_;
};

// Trailing blanks removed.
inline std::string_view TrimRight(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// The characters of a host text before its NUL, measured anew on each call.
inline std::string TextFromHost(const char* text) { return text ? std::string(text) : std::string(); }

// The first `count` characters of a host text, a negative count taking none. The host
// must not pass a count beyond the text's length; if it does, the text stops at its NUL
// rather than reading past it. A null text gives nothing.
inline std::string_view HostTextPrefix(const char* text, int count) {
  if (text == nullptr || count <= 0) return {};
  std::size_t n = 0;
  const std::size_t limit = static_cast<std::size_t>(count);
  while (n < limit && text[n] != '\0') ++n;
  return {text, n};
}

// A fixed 260-character blank-padded path as the DIRECT entries pass it, trimmed. A NUL
// inside the 260 characters ends the text early, as a C host may pass a shorter buffer.
// The field holds what the host put in it: a path that fills all 260 characters is
// taken as it stands, since the engine cannot tell it from a longer one cut by the host.
// The NUL-terminated entries measure their paths (PathWithinWidth of file_units.h).
inline std::string PaddedPathFromHost(const char* path260) {
  if (path260 == nullptr) return {};
  std::size_t n = 0;
  while (n < kPathWidth && path260[n] != '\0') ++n;
  return std::string(TrimRight(std::string_view(path260, n)));
}

}  // namespace quellon
