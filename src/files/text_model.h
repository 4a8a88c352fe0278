// The text model file: the whole analysis model as lines of text, written as a TMK file
// and read as a TMW file (the C exports QuellonCreateTMKFile, WRITETMKFILEDIRECT and
// READTMWFILEDIRECT go through these routines on the engine behind the C API).
#pragma once

#include <string>

namespace quellon {

struct Engine;

// Writes the model to the file open on `unit`; 0 at once if the unit is below 1 or holds
// no open file, else 1.
int WriteTMKUnit(Engine& e, int unit);

// Reads a model from the file open on `unit` into the records, checking it as it goes.
// 1 on success, with the file closed (the unit field keeps its number); 0 on any
// failure, with the file left open for the caller to close and the values read so far
// left in the records.
int ReadTMWUnit(Engine& e, int unit);

// The opening steps of the exports, on any engine: close an open TMK file, create the
// path on the TMK unit and write the model; or open the path on the TMW unit, take it as
// the project's file name and read the model. 1 or 0.
int CreateTMKFile(Engine& e, const std::string& path);
int ReadTMWFile(Engine& e, const std::string& path);

// The number of lines of the latest TMW file that the reader had taken when it
// stopped: on a failure, the line at which the file was found wanting (or the last line
// when it ended early). Lets a host name the place of a broken file.
long TMWLineReached(const Engine& e);

}  // namespace quellon
