#include "files/tmw_scanner.h"

#include <charconv>
#include <cstddef>

#include "engine/text_file.h"
#include "files/tmw_diagnostics.h"

namespace quellon {

namespace {

bool IsSeparator(char c) { return c == ' ' || c == '\t' || c == ',' || c == '\r' || c == '\f' || c == '\v'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The characters of a numeric field with its blanks removed.
std::string Squeezed(std::string_view line, int first, int width) {
  std::string s;
  for (int c = first; c < first + width; ++c) {
    const std::size_t at = static_cast<std::size_t>(c - 1);
    if (at < line.size() && line[at] != ' ') s.push_back(line[at]);
  }
  return s;
}

}  // namespace

int TMWScanner::Skip() {
  std::string ignored;
  const int status = Line(ignored);
  if (status == 0 && notes_ != nullptr) NoteValuesInHeading(*notes_, file_.lines_read(), ignored);  // side finding
  return status;
}

int TMWScanner::Text(std::string& out) {
  const int status = Line(out);
  if (status == 0 && out.size() > kTextColumns) out.resize(kTextColumns);
  return status;
}

int TMWScanner::Line(std::string& out) {
  NoteDropped();  // side finding
  pos_ = line_.size();  // whatever the last free-form read left is dropped
  read_failed_ = false;
  if (!file_.read_line(out)) {
    stop_line_ = file_.lines_read();
    read_failed_ = true;
    bad_token_.clear();
    return kEndOfFile;
  }
  stop_line_ = file_.lines_read();
  return 0;
}

int TMWScanner::NextToken(std::string_view& token) {
  for (;;) {
    while (pos_ < line_.size() && IsSeparator(line_[pos_])) ++pos_;
    if (pos_ < line_.size()) break;
    if (!file_.read_line(line_)) {
      line_.clear();
      pos_ = 0;
      stop_line_ = file_.lines_read();
      read_failed_ = true;
      bad_token_.clear();
      return kEndOfFile;
    }
    pos_ = 0;
    line_number_ = file_.lines_read();
    if (notes_ != nullptr) NoteDecimalCommas(*notes_, line_number_, line_);  // side finding
  }
  const std::size_t start = pos_;
  while (pos_ < line_.size() && !IsSeparator(line_[pos_])) ++pos_;
  token = std::string_view(line_).substr(start, pos_ - start);
  return 0;
}

int TMWScanner::Values(std::initializer_list<Slot> slots) {
  // A free-form read starts on a fresh line: what stood behind the values of the read
  // before is not looked at.
  NoteDropped();  // side finding
  pos_ = line_.size();
  read_failed_ = false;
  for (const Slot& slot : slots) {
    std::string_view token;
    const int status = NextToken(token);
    if (status != 0) return status;
    stop_line_ = line_number_;
    const bool ok = slot.integer != nullptr ? ParseInteger(token, *slot.integer) : ParseReal(token, *slot.real);
    if (!ok) {
      bad_token_.assign(token);
      read_failed_ = true;
      return kBadValue;
    }
  }
  behind_pending_ = true;
  behind_what_ = reading_;
  return 0;
}

void TMWScanner::TakeBehind(int count) {
  for (int i = 0; i < count; ++i) {
    while (pos_ < line_.size() && IsSeparator(line_[pos_])) ++pos_;
    while (pos_ < line_.size() && !IsSeparator(line_[pos_])) ++pos_;
  }
}

void TMWScanner::NoteDropped() {
  if (behind_pending_ && notes_ != nullptr && pos_ < line_.size())
    NoteValuesDropped(*notes_, line_number_, std::string_view(line_).substr(pos_), behind_what_);
  behind_pending_ = false;
}

bool TMWScanner::ParseInteger(std::string_view token, std::int32_t& out) {
  if (!token.empty() && token.front() == '+') token.remove_prefix(1);
  if (token.empty()) return false;
  std::int32_t value = 0;
  const auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), value);
  if (ec != std::errc() || end != token.data() + token.size()) return false;
  out = value;
  return true;
}

bool TMWScanner::ParseReal(std::string_view token, float& out) {
  // Checked by hand first: from_chars would also take "inf", "nan" and hex forms.
  std::string text;
  std::size_t i = 0;
  if (i < token.size() && (token[i] == '+' || token[i] == '-')) {
    if (token[i] == '-') text.push_back('-');
    ++i;
  }
  std::size_t digits = 0;
  while (i < token.size() && IsDigit(token[i])) text.push_back(token[i++]), ++digits;
  if (i < token.size() && token[i] == '.') {
    text.push_back(token[i++]);
    while (i < token.size() && IsDigit(token[i])) text.push_back(token[i++]), ++digits;
  }
  if (digits == 0) return false;
  if (i < token.size() && (token[i] == 'e' || token[i] == 'E' || token[i] == 'd' || token[i] == 'D')) {
    text.push_back('e');
    ++i;
    if (i < token.size() && (token[i] == '+' || token[i] == '-')) text.push_back(token[i++]);
    std::size_t exponent_digits = 0;
    while (i < token.size() && IsDigit(token[i])) text.push_back(token[i++]), ++exponent_digits;
    if (exponent_digits == 0) return false;
  }
  if (i != token.size()) return false;
  float value = 0.0f;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size()) return false;
  out = value;
  return true;
}

std::string_view TMWScanner::FirstToken(std::string_view s) {
  std::size_t start = 0;
  while (start < s.size() && IsSeparator(s[start])) ++start;
  std::size_t end = start;
  while (end < s.size() && !IsSeparator(s[end])) ++end;
  return s.substr(start, end - start);
}

int TMWScanner::HexField(std::string_view line, int first, int width, int& out) {
  const std::string s = Squeezed(line, first, width);
  int value = 0;
  for (char c : s) {
    int digit;
    if (c >= '0' && c <= '9') {
      digit = c - '0';
    } else if (c >= 'A' && c <= 'F') {
      digit = c - 'A' + 10;
    } else if (c >= 'a' && c <= 'f') {
      digit = c - 'a' + 10;
    } else {
      return kBadValue;
    }
    value = value * 16 + digit;
  }
  out = value;
  return 0;
}

int TMWScanner::IntField(std::string_view line, int first, int width, int& out) {
  const std::string s = Squeezed(line, first, width);
  if (s.empty()) {
    out = 0;
    return 0;
  }
  std::int32_t value = 0;
  if (!ParseInteger(s, value)) return kBadValue;
  out = value;
  return 0;
}

}  // namespace quellon
