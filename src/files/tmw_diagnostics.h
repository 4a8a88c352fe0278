// What the text model reader notices on the side, for a host to show its user: the
// reader itself reads every number as it always has, and these notes only say where a
// file's text and the values read from it part ways.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/diagnostics.h"

namespace quellon {

// A comma between two digits ("0,4"): the reader takes the comma as a separator, so one
// number becomes two. line is a line that a free-form read took values from.
void NoteDecimalCommas(std::vector<Diagnostic>& notes, long line, std::string_view text);
// Values behind the last one a free-form read takes on its line: the reader drops them.
// rest is the text of the line behind that value; text that is not a number is a remark.
// what names the read ("the free-standing length"), or is empty.
void NoteValuesDropped(std::vector<Diagnostic>& notes, long line, std::string_view rest, const std::string& what);
// A line read as a heading (and dropped unseen) that starts with a number: the file and
// the reader are out of step there.
void NoteValuesInHeading(std::vector<Diagnostic>& notes, long line, std::string_view text);

// After a failed read: when a read itself failed (read_failed), what the reader expected
// where it stopped (from the text of its failure); and, from the headings of the file at
// path, any table whose rows do not match the count announced for it.
void ExplainStoppedRead(std::vector<Diagnostic>& notes, std::string_view failure, bool read_failed,
                        long stop_line, std::string_view bad_token, const std::string& path);

}  // namespace quellon
