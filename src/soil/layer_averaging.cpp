#include "soil/layer_averaging.h"

#include <cmath>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "soil/soil.h"

namespace quellon {

namespace {

// Value at depth z of a property that is V at the top of a layer and grows by dV per
// metre below it. The last layer is tested first and extends without limit; the others
// hold the depths from their top (included) to the top of the next (excluded).
template <class Value, class Gradient>
float LayeredValueAt(const Borehole& b, float z, Value value, Gradient gradient) {
  const int count = b.NumberOfLayers;
  if (count < 1 || static_cast<int>(b.LayerTable.size()) < count) return 0.0f;
  float result = 0.0f;
  const Layer& last = b.Layers(count);
  if (z >= last.DepthToTop) result = (z - last.DepthToTop) * gradient(last) + value(last);
  for (int i = 1; i <= count - 1; ++i) {
    const Layer& layer = b.Layers(i);
    if (z >= layer.DepthToTop && z < b.Layers(i + 1).DepthToTop) {
      result = (z - layer.DepthToTop) * gradient(layer) + value(layer);
    }
  }
  return result;
}

}  // namespace

float VerticalModulusAt(const Borehole& b, float z) {
  return LayeredValueAt(
      b, z, [](const Layer& l) { return l.Ev; }, [](const Layer& l) { return l.dEv; });
}

float HorizontalModulusAt(const Borehole& b, float z) {
  return LayeredValueAt(
      b, z, [](const Layer& l) { return l.Eh; }, [](const Layer& l) { return l.dEh; });
}

float PoissonRatioAt(const Borehole& b, float z) {
  // No gradient: the value of the layer that holds z.
  const int count = b.NumberOfLayers;
  if (count < 1 || static_cast<int>(b.LayerTable.size()) < count) return 0.0f;
  float result = 0.0f;
  if (z >= b.Layers(count).DepthToTop) result = b.Layers(count).Poisson;
  for (int i = 1; i <= count - 1; ++i) {
    if (z >= b.Layers(i).DepthToTop && z < b.Layers(i + 1).DepthToTop) result = b.Layers(i).Poisson;
  }
  return result;
}

float PoissonRatioAverage(const Borehole& b, float z1, float z2) {
  return (PoissonRatioAt(b, z1) + PoissonRatioAt(b, z2)) * 0.5f;
}

float PoulosVerticalStiffnessAverage(const Borehole& b, float z1, float z2) {
  return (VerticalModulusAt(b, z1) + VerticalModulusAt(b, z2)) * 0.5f;
}

float HorizontalStiffnessAverage(const Borehole& b, float z1, float z2) {
  return (HorizontalModulusAt(b, z1) + HorizontalModulusAt(b, z2)) * 0.5f;
}

float YamashitaVerticalStiffnessAverage(const RealMatrix& yamashita_esv, int p, int k) {
  float sum = yamashita_esv(k, p);
  float weights = 1.0f;
  float w = 1.0f;
  for (int d = 1; d <= 4; ++d) {
    w *= 0.5f;
    sum += w * yamashita_esv(k + d, p);
    weights += w;
    if (k - d >= 1) {
      sum += w * yamashita_esv(k - d, p);
      weights += w;
    }
  }
  return sum / weights;
}

void FillYamashitaColumn(const Borehole& b, const PileFrame& frame, int n, float z0, int p, float* depths,
                         RealMatrix& yamashita_esv) {
  const float vertical = frame.vertical;  // vertical projection
  const float dz = vertical / static_cast<float>(n);
  SteppedCentres centre(z0, dz);
  for (int k = 1; k <= n; ++k) depths[k - 1] = centre();
  depths[n] = z0 + vertical;  // the tip, half an element below the last mid-point
  for (int d = 1; d <= 4; ++d) depths[n + d] = depths[n - 1] + static_cast<float>(d) * dz;
  for (int k = 1; k <= n + 5; ++k) yamashita_esv(k, p) = VerticalModulusAt(b, depths[k - 1]);
}

LocalSoil SoilAtPoint(const SoilGround& g, float z, int pile, int element) {
  LocalSoil s;
  s.nu = PoissonRatioAt(*g.borehole, z);
  s.Eh = HorizontalModulusAt(*g.borehole, z);
  if (g.poulos()) {
    s.Ev = VerticalModulusAt(*g.borehole, z);
  } else {
    s.Ym = YamashitaVerticalStiffnessAverage(*g.yamashita_esv, pile, element);
  }
  return s;
}

SoilValues BaseOnItselfSoilValues(const SoilGround& g, float zf, float zs, int p) {
  const Borehole& b = *g.borehole;
  SoilValues v;
  v.nu = PoissonRatioAverage(b, zf, zs);
  const float c0 = MindlinCoefficient(v.nu);
  const float modulus = g.poulos() ? PoulosVerticalStiffnessAverage(b, zf, zs)
                                   : YamashitaVerticalStiffnessAverage(*g.yamashita_esv, p, g.n + 1);
  v.Av = c0 / modulus;
  v.Ah = c0 / HorizontalStiffnessAverage(b, zf, zs);
  return v;
}

int YamashitaVerticalStiffnessAverageAllPiles(Engine& e) {
  const int n = e.foundation.NumberOfElements;
  const int piles = e.foundation.NumberOfPiles;
  if (Create2DRealMatrix(e, e.ws.YamashitaEsv, n + 5, piles) == 0) {
    const char* text = "Failed to create YamashitaEsv matrix in subroutine YamashitaVerticalStiffnessAverageAllPiles";
    SendError(e, text);
    LogLine(e, text);
    return 0;
  }
  RealMatrix depths;
  if (Create2DRealMatrix(e, depths, n + 5, piles) == 0) {
    const char* text = "Failed to create matrix in subroutine YamashitaVerticalStiffnessAverageAllPiles";
    SendError(e, text);
    LogLine(e, text);
    return 0;
  }
  if (n < 1 || piles < 1) return 1;  // nothing to fill
  const float z0 = e.foundation.Piles(1).SoilEntryZ;
  for (int p = 1; p <= piles; ++p) {
    FillYamashitaColumn(e.borehole, e.foundation.Frame(p), n, z0, p, depths.col(p), e.ws.YamashitaEsv);
  }
  return 1;
}

}  // namespace quellon
