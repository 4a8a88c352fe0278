// Entry points of the soil flexibility subsystem used by the analysis driver.
#pragma once

namespace quellon {

struct Engine;

// Fills the table of vertical moduli down every pile (YamashitaEsv). 1, or 0 when the
// table cannot be created (the error has been reported; the run must not read it).
int YamashitaVerticalStiffnessAverageAllPiles(Engine& e);

// Writes the rows of G that belong to pile p (1-based): its own block and its blocks
// with every other pile.
void AssembleSoilFlexibility(Engine& e, int p);

}  // namespace quellon
