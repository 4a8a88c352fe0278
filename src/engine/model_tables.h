// Creation, release and reset of the model records.
#pragma once

namespace quellon {

struct Engine;

// Creates the layer (pile) table with n rows, a count below 1 giving an empty table, and
// sets the count; 1, or 0 when the table exists already or memory runs out.
int CreateLayers(Engine& e, int n);
int CreatePiles(Engine& e, int n);
void ResetProject(Engine& e);
void ResetActions(Engine& e);
void ReleaseBorehole(Engine& e);
void ReleaseFoundation(Engine& e);

}  // namespace quellon
