/* A host as small as it can be: one pile in one layer, one increment, and the vertical
 * stiffness it hands back. Exits 0 when the engine answered with a sensible number. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "quellon.h"

static float vertical_stiffness = 0.0f;

static void on_stiffness(const float* grmat) { vertical_stiffness = grmat[2 + 6 * 2]; }

int main(int argc, char** argv) {
  const char* xml = argc > 1 ? argv[1] : "tiny_host.xml";
  const int flags[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  if (QuellonGetVersion() != 803) return 1;
  QuellonSetStiffnessMatrixCallback(on_stiffness);
  QuellonSetProjectFlags(flags, 16);
  QuellonSetNumberOfLoadIncrements(1);
  QuellonSetBoreholeNumberOfLayers(1);
  QuellonSetBoreholeLayerAveraging(1);
  QuellonSetBoreholeLayerDepth(1, 0.0);
  QuellonSetBoreholeLayerStiffness(1, 20000.0, 0.0, 20000.0, 0.0, 0.3);
  QuellonSetNumberOfPiles(1);
  QuellonSetNumberOfPileElements(5);
  QuellonSetPileDimensions(1, 10.0, 0.5, 0.0, 0.5);
  QuellonSetPileReinforcedSectionProperties(1, 10.0, 5000.0, 100.0, 100.0, 80.0);
  QuellonSetPileUnreinforcedSectionProperties(1, 5000.0, 100.0, 100.0, 80.0);
  QuellonSetActions(0.0, 0.0, 500.0, 0.0, 0.0, 0.0, 0.0, 0.0);
  if (QuellonRunAnalysis1(xml) != 1) return 2;
  QuellonCloseAllFiles();
  printf("vertical stiffness %.1f kN/m\n", vertical_stiffness);
  /* A 10 m pile of 0.5 m in soil of 20 MPa: of the order of 10^5 kN/m. */
  return (isfinite(vertical_stiffness) && vertical_stiffness > 1.0e4f && vertical_stiffness < 1.0e6f) ? 0 : 3;
}
