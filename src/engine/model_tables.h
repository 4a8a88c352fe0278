// Creation, release and reset of the model records.
#pragma once

namespace quellon {

struct Engine;

// Creates the layer (pile) table with n rows, a count below 1 giving an empty table, and
// sets the count to n as given; 1, or 0 when the table exists already or memory runs
// out (the table and its count then stay as they were).
int CreateLayers(Engine& e, int n);
int CreatePiles(Engine& e, int n);
// The reset values of the project and the loads. The callbacks, the five file units and
// the last error code survive a reset.
void ResetProject(Engine& e);
void ResetActions(Engine& e);
// Free the table, zero its count and put the other fields at their reset values.
void ReleaseBorehole(Engine& e);
void ReleaseFoundation(Engine& e);

}  // namespace quellon
