// The reader of a text model file, step by step. Each step reads its comment line and
// its values, stores them in the records, checks them, and on a failure writes its text
// to the LOG (and, for the steps whose failures a console user must see, to standard
// output first) and gives false. The steps run in the order of the file.
#pragma once

#include <string>
#include <string_view>

#include "files/tmw_scanner.h"

namespace quellon {

struct Engine;

class TMWReader {
 public:
  TMWReader(Engine& e, TextFile& file) : e_(e), in_(file) {}

  bool Version();              // the version line, refused outside 2.21 .. 3.23
  bool ProjectTexts();         // name, description, date, file name
  bool Flags();
  bool Counts();               // piles, elements, increments
  bool Piles();
  bool InteractionAndBorehole();
  bool Layers();
  bool Grounds();              // non-linear runs only
  bool NonLinearSettings();    // Nq, stress limits, hyperbolic factors
  bool Loads();                // free-standing length, actions, rake check

  // For the side findings of a read: the scanner, and the text of the failure that
  // ended the read (empty while none).
  TMWScanner& scanner() { return in_; }
  const std::string& failure() const { return failure_; }

 private:
  bool Fail(std::string_view text);            // LOG only
  bool FailAloud(std::string_view text);       // standard output, then LOG
  bool FailStatus(std::string_view text, int status) { return Fail(std::string(text) + std::to_string(status)); }
  bool FailPile(int pile, int code, bool check);
  bool FailLayer(int layer, int code, bool check);
  bool FailGround(int layer, int code, bool check);
  bool CheckPile(int pile);
  bool CheckGround(int layer, const float v[6]);
  int SkipComments(int count);

  Engine& e_;
  TMWScanner in_;
  int piles_ = 0;
  int layers_ = 0;
  std::string failure_;
};

// The text of the message table for the codes a TMW read sets.
std::string_view ReadErrorText(int code);

}  // namespace quellon
