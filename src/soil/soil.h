// Entry points of the soil flexibility subsystem used by the analysis driver.
#pragma once

namespace quellon {

struct Engine;

// Fills the table of vertical moduli down every pile (YamashitaEsv). 1, or 0 when the
// table cannot be created (the error has been reported; the run must not read it).
int YamashitaVerticalStiffnessAverageAllPiles(Engine& e);

// Refuses a model in which a point where the soil matrices want a displacement is exactly
// a point where they place a load, since Mindlin's solution is infinite there: element
// mid-points or bases of two interacting piles at one point, a point of the torsion ring
// of a near pile on the axis of another, or the rigid layer level below a pile's soil
// entry point passing exactly through a load point (a vertical pile whose tip stands on
// the rigid layer, for one). The error names the piles and elements through the host's
// message function and the LOG. 1 when the model is clear, 0 when it is refused. Needs the
// soil entry points; run it before the first AssembleSoilFlexibility.
int CheckCoincidentMidpoints(Engine& e);

// Writes pile p's own block of G (1-based p); the turn of pile 1 also writes the blocks
// between every two piles, in parallel. Called for piles 1 to P in order, it leaves G
// complete, the same whatever the number of threads.
void AssembleSoilFlexibility(Engine& e, int p);

// out = G t for the G that the assembly wrote (N entries each), once G itself is gone (a
// linear run forms its system in G's storage): each block is taken from those the
// assembly kept or computed again by the kernels, and every row sums its terms in the
// order of G's columns, so the result is the product with G bit for bit. False when the
// assembly has not run on this workspace.
bool SoilFlexibilityTimes(Engine& e, const float* t, float* out);

}  // namespace quellon
