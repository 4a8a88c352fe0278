// The document of the load cases: the run's input echo, then every case with its loads
// and its increments in the layout of the run's own increment block.
#pragma once

#include <string_view>

namespace quellon {

struct Engine;
struct Actions;

// Creates the document at the model's path: 1, or 0 with an error message.
int OpenLoadCaseDocument(Engine& e);
// Prolog, root, the run's <Input> echo and the start of <Load-Cases>.
void WriteLoadCaseDocumentStart(Engine& e, int count, bool nonlinear, std::string_view comment);
// <Load-Case> with its loads and the number of its increments.
void WriteLoadCaseStart(Engine& e, int number, std::string_view name, const Actions& loads, int increments);
// One increment of the case from the workspace's totals; kt, ft: the group tables of
// the reports (a linear run).
void WriteLoadCaseIncrement(Engine& e, int increment, const float kt[6][6], const float ft[6][6]);
// After the last increment of a case whose path used up the axial capacity of the group.
void WriteLoadCaseCapacityReached(Engine& e, int increment);
void WriteLoadCaseEnd(Engine& e);
// Closes <Load-Cases> and the root, and the file.
void WriteLoadCaseDocumentEnd(Engine& e);

}  // namespace quellon
