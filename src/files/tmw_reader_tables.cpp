// The three tables of a text model file: the piles, the layers and, in a non-linear
// model, the strength of the ground in each layer.
#include <string>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/notify.h"
#include "files/tmw_reader.h"

namespace quellon {

std::string_view ReadErrorText(int code) {
  switch (code) {
    case 279: return "Error reading layer";
    case 280: return "Error reading non-linear layer";
    case 281: return "Error reading pile";
    case 282: return "Error reading version";
    case 295: return "Input error: zero pile length";
    case 296: return "Input error: zero pile shaft diameter";
    case 297: return "Input error: zero pile base diameter";
    case 298: return "Input error: zero pile axial stiffness EA";
    case 299: return "Input error: zero pile flexural stiffness EIx";
    case 300: return "Input error: zero pile flexural stiffness EIy";
    case 301: return "Input error: zero pile torsional stiffness GJ";
    case 305: return "Input error: zero vertical soil stiffness";
    case 306: return "Input error: zero horizontal soil stiffness";
    case 307: return "Input error: soil Poissons ratio > 0.5";
    case 308: return "Input error: layer type flag is not 1, 2, 3 or 4";
    case 309: return "Input error: invalid strength specified for undrained soil layer";
    case 310: return "Input error: invalid alpha value specified for undrained soil layer";
    case 311: return "Input error: invalid weight density specified for layer";
    case 312: return "Input error: invalid angle of shearing resistance specified for drained soil layer";
    case 313: return "Input error: invalid delta specified for drained soil layer";
    case 315: return "Input error: invalid Ks specified for drained soil layer";
    case 316: return "Input error: invalid UCS specified for rock layer";
    case 317: return "Input error: invalid parameter specified for rock layer";
    case 318: return "Input error: invalid custom skin friction specified for ground layer";
    case 319: return "Input error: invalid maximum skin friction specified for ground layer";
    case 320: return "Input error: invalid custom end bearing specified for ground layer";
    case 321: return "Input error: invalid maximum end bearing specified for ground layer";
    case 328: return "Input error: reinforced length is < 0 or > pile length";
    default: return {};
  }
}

// A failed read and a failed check both name the row by its position. A failed check
// adds the reason from the message table as a plain LOG line, since the row's own text
// doesn't tell a bad value from a broken line.
bool TMWReader::FailPile(int pile, int code, bool check) {
  e_.project.ErrorCode = code;
  FailAloud("Error reading data for pile: " + std::to_string(pile));
  if (check) LogLine(e_, ReadErrorText(code));
  return false;
}

bool TMWReader::FailLayer(int layer, int code, bool check) {
  e_.project.ErrorCode = code;
  Fail("Error reading data for layer: " + std::to_string(layer));
  if (check) LogLine(e_, ReadErrorText(code));
  return false;
}

bool TMWReader::FailGround(int layer, int code, bool check) {
  e_.project.ErrorCode = code;
  FailAloud("Error reading data for soil: " + std::to_string(layer));
  if (check) LogLine(e_, ReadErrorText(code));
  return false;
}

bool TMWReader::Piles() {
  if (SkipComments(2) != 0) return FailPile(1, 281, false);
  if (!CreatePiles(e_, piles_)) return false;  // CreatePiles has told why
  std::string name;
  for (int i = 1; i <= piles_; ++i) {
    Pile& p = e_.foundation.Piles(i);
    if (in_.Text(name) != 0) return FailPile(i, 281, false);
    p.Name.assign(name);
    in_.Reading("the values of pile " + std::to_string(i));  // names the read in side findings
    const int status = in_.Values({p.Number, p.Length, p.ShaftDiameter, p.InternalDiameter, p.BaseDiameter, p.RakeX,
                                   p.RakeY, p.X, p.Y, p.Z, p.EA, p.EIx, p.EIy, p.GJ, p.ReinforcedLength,
                                   p.UnreinforcedEA, p.UnreinforcedEIx, p.UnreinforcedEIy, p.UnreinforcedGJ});
    if (status != 0) return FailPile(i, 281, false);
    if (!CheckPile(i)) return false;
  }
  return true;
}

bool TMWReader::CheckPile(int i) {
  Pile& p = e_.foundation.Piles(i);
  // The file holds MN and MNm^2, the records kN and kNm^2. An unreinforced stiffness of
  // 0 or below means "as the reinforced section".
  p.EA *= 1000.0f;
  p.EIx *= 1000.0f;
  p.EIy *= 1000.0f;
  p.GJ *= 1000.0f;
  auto below = [](float& unreinforced, float partner) {
    if (unreinforced > 0.0f) {
      unreinforced *= 1000.0f;
    } else {
      unreinforced = partner;
    }
  };
  below(p.UnreinforcedEA, p.EA);
  below(p.UnreinforcedEIx, p.EIx);
  below(p.UnreinforcedEIy, p.EIy);
  below(p.UnreinforcedGJ, p.GJ);

  int code = 0;
  if (p.Length <= 0.0f) {
    code = 295;
  } else if (p.ShaftDiameter <= 0.0f) {
    code = 296;
  } else if (p.BaseDiameter <= 0.0f) {
    code = 297;
  } else if (p.EA <= 0.0f && p.UnreinforcedEA <= 0.0f) {
    code = 298;
  } else if (p.EIx <= 0.0f && p.UnreinforcedEIx <= 0.0f) {
    code = 299;
  } else if (p.EIy <= 0.0f && p.UnreinforcedEIy <= 0.0f) {
    code = 300;
  } else if (p.GJ <= 0.0f && p.UnreinforcedGJ <= 0.0f) {
    code = 301;
  } else if (p.ReinforcedLength < 0.0f || p.ReinforcedLength > p.Length) {
    code = 328;
  }
  return code == 0 || FailPile(i, code, true);
}

bool TMWReader::Layers() {
  if (SkipComments(2) != 0) return FailLayer(1, 279, false);
  if (!CreateLayers(e_, layers_)) return false;  // CreateLayers has told why
  std::string name;
  for (int i = 1; i <= layers_; ++i) {
    Layer& l = e_.borehole.Layers(i);
    if (in_.Text(name) != 0) return FailLayer(i, 279, false);
    l.Name.assign(name);
    in_.Reading("the values of layer " + std::to_string(i));  // names the read in side findings
    if (in_.Values({l.DepthToTop, l.Ev, l.dEv, l.Eh, l.dEh, l.Poisson}) != 0) return FailLayer(i, 279, false);
    if (l.Ev <= 0.0f && l.dEv <= 0.0f) return FailLayer(i, 305, true);
    if (l.Eh <= 0.0f && l.dEh <= 0.0f) return FailLayer(i, 306, true);
    if (l.Poisson > 0.5f) return FailLayer(i, 307, true);
  }
  return true;
}

bool TMWReader::Grounds() {
  // Five headings, one for each kind of ground.
  if (SkipComments(5) != 0) return FailGround(1, 280, false);
  std::string name;
  for (int i = 1; i <= layers_; ++i) {
    Layer& l = e_.borehole.Layers(i);
    if (in_.Text(name) != 0) return FailGround(i, 280, false);
    l.GroundName.assign(name);
    float v[6] = {};
    in_.Reading("the ground values of layer " + std::to_string(i));  // names the read in side findings
    if (in_.Values({l.GroundType, l.WeightDensity, l.MaxSkinFriction, l.MaxBearingPressure, v[0], v[1], v[2], v[3],
                    v[4], v[5]}) != 0) {
      return FailGround(i, 280, false);
    }
    if (!CheckGround(i, v)) return false;
  }
  return true;
}

bool TMWReader::CheckGround(int i, const float v[6]) {
  Layer& l = e_.borehole.Layers(i);
  // The six further values mean what the ground type says; the rest of the row is
  // padding.
  switch (l.GroundType) {
    case kCoarseSoil:
      l.phi = v[0];
      l.delta = v[1];
      l.Ks = v[2];
      break;
    case kFineSoil:
      l.cu = v[0];
      l.dcu = v[1];
      l.alpha = v[2];
      break;
    case kRock:
      l.qu = v[0];
      l.k1 = v[1];
      l.k2 = v[2];
      l.k3 = v[3];
      l.k4 = v[4];
      l.k5 = v[5];
      break;
    case kDirectValues:
      l.DirectSkinFriction = v[0];
      l.DirectEndBearing = v[1];
      // A lateral capacity of 0 or below means that none is given.
      l.HasDirectLateral = v[2] > 0.0f ? 1 : 0;
      if (l.HasDirectLateral) l.DirectLateral = v[2];
      break;
    default:
      return FailGround(i, 308, true);
  }
  int code = 0;
  if (l.WeightDensity <= 0.0f) {
    code = 311;
  } else if (l.MaxSkinFriction < 0.0f) {
    code = 319;
  } else if (l.MaxBearingPressure < 0.0f) {
    code = 321;
  } else if (l.GroundType == kCoarseSoil) {
    if (l.phi <= 0.0f) code = 312;
    else if (l.delta <= 0.0f) code = 313;
    else if (l.Ks <= 0.0f) code = 315;
  } else if (l.GroundType == kFineSoil) {
    if (l.cu <= 0.0f && l.dcu <= 0.0f) code = 309;
    else if (l.alpha <= 0.0f) code = 310;
  } else if (l.GroundType == kRock) {
    if (l.qu <= 0.0f) code = 316;
    else if (l.k1 <= 0.0f || l.k2 <= 0.0f || l.k3 <= 0.0f || l.k4 <= 0.0f || l.k5 <= 0.0f) code = 317;
  } else if (l.GroundType == kDirectValues) {
    if (l.DirectSkinFriction <= 0.0f) code = 318;
    else if (l.DirectEndBearing <= 0.0f) code = 320;
  }
  return code == 0 || FailGround(i, code, true);
}

}  // namespace quellon
