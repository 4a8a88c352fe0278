// Not written yet: the soil subsystem replaces this file.
#include "soil/soil.h"

namespace quellon {

int YamashitaVerticalStiffnessAverageAllPiles(Engine&) { return 1; }
void AssembleSoilFlexibility(Engine&, int) {}

}  // namespace quellon
