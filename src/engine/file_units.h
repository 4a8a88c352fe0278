// The engine's five files on their fixed units: the TMW model file read (7), the TMK
// model file written (8), the XML output (9), the TXT report (10) and the LOG (11).
//
// A unit field of Project holds the unit number while its file is open and 0 otherwise,
// and every writer tests it first, so a closed file means silence, never a failure.
// Opening and closing happen here only; the readers and writers of the files use the
// open TextFile of Engine::files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quellon {

struct Engine;

// Closing. Each does nothing at all while its unit field is 0 or below; otherwise it
// closes the file (keeping it), sets the field to 0 and sends its info message:
// "Closed TMW file", "Closed TMK file", "Closed XML output file", "Closed TXT output
// file". The TMW reader may already have closed its file with the field left at 7; the
// close then finds nothing to close and still clears the field and sends the message.
void CloseTMWFile(Engine& e);
void CloseTMKFile(Engine& e);
void CloseXMLFile(Engine& e);
void CloseTXTFile(Engine& e);
// With a LOG open: an empty line and "LOG file closed at dd/mm/yyyy hh:mm:ss", the
// file closed, LOGUnit 0, then "Closed LOG file" to the host.
void CloseLOGFile(Engine& e);
// "Closing all files ...", then TMW, TMK, XML, TXT and last the LOG.
void CloseAllFiles(Engine& e);

// The run's outputs on units 9 and 10, with their LOG lines ("Writing results to XML
// output file: " or "Error opening XML output file: " and the path, likewise for TXT).
// Neither closes what its unit held: the driver does that first. 1 or 0.
int OpenXMLOutput(Engine& e, std::string_view path);
int OpenTXTReport(Engine& e, std::string_view path);

// Creates the LOG at path, sends "Creating LOG file...", sets LOGUnit 11 and writes the
// head: "QuellonEngine v3.23", the two ownership lines, "LOG file created on dd/mm/yyyy
// at hh:mm:ss" and an empty line. A LOG open before is replaced without its closing
// lines; CreateLOGFile closes it properly first. 1, or 0 with nothing written or sent.
int StartLOGFile(Engine& e, std::string_view path);
int CreateLOGFile(Engine& e, std::string_view path);

// A NUL-terminated path from the host, as the C entries that open a file take it: the
// text without its trailing blanks, or nothing if that is longer than the 260 characters
// of a path field. A cut path would open a file other than the one the host named (and
// the XML, TXT and LOG paths of a run, cut alike, would all open the same file), so such
// a path is refused with the error message "Path too long (N characters, at most 260): "
// and the path, which goes to the LOG too while one is open. A null path is empty.
std::optional<std::string> PathWithinWidth(Engine& e, const char* path);

// The local clock as the LOG shows it: "dd/mm/yyyy" and "hh:mm:ss".
struct ClockText {
  std::string date;
  std::string time;
};
ClockText LocalClockText();

}  // namespace quellon
