// Refusal of a model whose soil matrices would divide by zero.
//
// Within one pile the singular terms of an element on itself are integrated in closed
// form, but between two piles every element is a point load, and a field point that is
// exactly a load point makes Mindlin's direct terms infinite. Rather than let an
// infinity or a NaN spread through G and the solve, the model is refused before
// assembly with a message that names the piles and elements.
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/notify.h"
#include "soil/soil.h"
#include "soil/soil_matrices.h"

namespace quellon {

namespace {

std::string ElementName(int element, int n, int pile) {
  if (element == n + 1) return "the base of pile " + std::to_string(pile);
  return "element " + std::to_string(element) + " of pile " + std::to_string(pile);
}

}  // namespace

int CheckCoincidentMidpoints(Engine& e) {
  const int n = e.foundation.NumberOfElements;
  const int piles = e.foundation.NumberOfPiles;
  if (n < 1 || piles < 1) return 1;
  const SoilGround g = GroundOf(e);
  const InteractionRule rule = InteractionRuleOf(e);

  for (int p = 1; p <= piles; ++p) {
    const int k = RigidLayerMeetsPile(g, e.foundation.Piles(p), e.foundation.Frame(p));
    if (k != 0) {
      SendError(e, "Error - the rigid layer passes through the load point of " + ElementName(k, n, p) +
                       "; the soil flexibility is undefined there: place the rigid layer below the pile tips");
      return 0;
    }
  }
  if (piles == 1) return 1;

  // Only the positions matter here, not the ground at them.
  std::vector<PileAxis> axes;
  axes.reserve(static_cast<std::size_t>(piles));
  for (int q = 1; q <= piles; ++q)
    axes.push_back(MakePileAxis(g, e.foundation.Piles(q), e.foundation.Frame(q), q, false));

  for (int p = 1; p <= piles; ++p) {
    for (int q = 1; q <= piles; ++q) {
      if (q == p) continue;
      int i = 0, j = 0;
      const int kind = FindCoincidentPoints(g, rule, axes[static_cast<std::size_t>(p - 1)],
                                            axes[static_cast<std::size_t>(q - 1)], &i, &j);
      if (kind == kMidpointsMeet) {
        SendError(e, "Error - piles " + std::to_string(p) + " and " + std::to_string(q) +
                         " have coincident element mid-points: " + ElementName(i, n, p) + " and " +
                         ElementName(j, n, q) + " lie at the same point");
        return 0;
      }
      if (kind == kRingMeetsAxis) {
        SendError(e, "Error - piles " + std::to_string(p) + " and " + std::to_string(q) +
                         " overlap: the shaft of " + ElementName(j, n, q) + " passes through the axis at " +
                         ElementName(i, n, p));
        return 0;
      }
      if (kind == kRigidLayerMeets) {
        SendError(e, "Error - the rigid layer below the soil entry point of pile " + std::to_string(p) +
                         " passes through the load point of " + ElementName(j, n, q));
        return 0;
      }
    }
  }
  return 1;
}

}  // namespace quellon
