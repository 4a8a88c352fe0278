// Line-by-line reads of a text model file, in the two kinds the file uses.
//
// Fixed reads take one line by columns: a text field of the first 80 columns, or
// numeric fields at given columns (blanks inside a numeric field are ignored and an
// all-blank field reads as 0; a line shorter than a field is blank-padded).
//
// Free-form reads take whitespace- or comma-separated numbers, starting on a fresh
// line and running on over further lines (blank lines included) until every value is
// found; whatever stands behind the last value on its line is dropped. Reals may be
// written with or without a point and with an exponent (E or D); integers must be whole.
//
// Every read gives a status: 0 when it succeeded, kEndOfFile when the file ended first,
// kBadValue when a field or token is not a number of the kind asked for. A failed read
// leaves the values that were not reached as they were.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quellon {

class TextFile;
struct Diagnostic;

class TMWScanner {
 public:
  static constexpr int kEndOfFile = -1;
  static constexpr int kBadValue = 1;
  static constexpr std::size_t kTextColumns = 80;

  // One destination of a free-form read: an integer or a real.
  struct Slot {
    std::int32_t* integer = nullptr;
    float* real = nullptr;
    Slot(std::int32_t& i) : integer(&i) {}  // NOLINT: implicit on purpose
    Slot(float& r) : real(&r) {}            // NOLINT
  };

  explicit TMWScanner(TextFile& file) : file_(file) {}

  // A line read and dropped unseen (a comment).
  int Skip();
  // A text field: the first 80 columns of the line.
  int Text(std::string& out);
  // The whole next line, for the column reads below.
  int Line(std::string& out);
  // Free-form values, in order.
  int Values(std::initializer_list<Slot> slots);
  // The text behind the last value of the latest free-form read, on its line.
  std::string_view Rest() const { return std::string_view(line_).substr(pos_); }

  // ---- Findings on the side; they change nothing that the reads give. ----
  // Where to put them (none while null): numbers written with a comma between digits,
  // values behind the last one a free-form read takes on its line, a line read as a
  // heading that holds values.
  void set_notes(std::vector<Diagnostic>* notes) { notes_ = notes; }
  // What the next free-form reads take, as the findings name it ("the loads").
  void Reading(std::string what) { reading_ = std::move(what); }
  // The reader takes count values behind the latest free-form read itself (the cap
  // stiffness on the counts line, a custom Nq behind its flag): they are not dropped.
  void TakeBehind(int count);
  // Reports what the latest free-form read left behind; called when reading ends.
  void Finish() { NoteDropped(); }
  // Where the latest read stopped: the line, and the token that was not a number of the
  // kind asked for (empty when the file ended).
  long stop_line() const { return stop_line_; }
  // Whether the latest read failed (the file ended, or a token was not a number), as
  // opposed to a value read well that the reader then refused.
  bool read_failed() const { return read_failed_; }
  const std::string& bad_token() const { return bad_token_; }

  // Column reads on a line that Line() gave: columns from 1, blank-padded.
  static int HexField(std::string_view line, int first, int width, int& out);
  static int IntField(std::string_view line, int first, int width, int& out);

  // Token parsers, exposed for the reader's own use of Rest().
  static bool ParseInteger(std::string_view token, std::int32_t& out);
  static bool ParseReal(std::string_view token, float& out);
  // The first whitespace- or comma-separated token of s (empty if none).
  static std::string_view FirstToken(std::string_view s);

 private:
  // Next token of the current line, reading further lines as needed.
  int NextToken(std::string_view& token);

  void NoteDropped();

  TextFile& file_;
  std::string line_;
  std::size_t pos_ = 0;
  // Side findings: see set_notes.
  std::vector<Diagnostic>* notes_ = nullptr;
  long line_number_ = 0;       // the file line that line_ holds
  bool behind_pending_ = false;  // a free-form read completed on line_
  std::string reading_;          // see Reading
  std::string behind_what_;      // what the completed read took
  long stop_line_ = 0;
  bool read_failed_ = false;
  std::string bad_token_;
};

}  // namespace quellon
