#include "engine/notify.h"

#include <string>

#include "engine/engine.h"
#include "engine/fixed_text.h"
#include "engine/group_layout.h"
#include "engine/window_messages.h"
#include "files/number_forms.h"

namespace quellon {

bool LogOpen(const Engine& e) { return e.project.LOGUnit > 0 && e.files.log.is_open(); }

void LogLine(Engine& e, std::string_view text) {
  if (LogOpen(e)) e.files.log.line(text);
}

void SendMessage(Engine& e, int severity, std::string_view text) {
  static constexpr std::string_view kPrefix[] = {"[Info] ", "[Warning] ", "[Error] ", "[Critical] "};
  // A message raised by a call that the host's message function makes into the engine
  // goes to the LOG alone: delivering it would call the function again from inside
  // itself, and without end for a function that answers a message with such a call.
  if (e.project.MessageCallback != nullptr && !e.delivering_message) {
    // The host gets its own NUL-terminated copy, valid for the call only.
    const std::string buffer(TrimRight(text));
    const int sev = severity;
    struct Delivering {
      bool& flag;
      explicit Delivering(bool& f) : flag(f) { flag = true; }
      ~Delivering() { flag = false; }
    } delivering(e.delivering_message);
    e.project.MessageCallback(&sev, buffer.c_str());
  }
  if (LogOpen(e) && severity >= 0 && severity <= 3) {
    std::string line(kPrefix[severity]);
    line += text;
    e.files.log.line(line);
  }
}

void SendCounter(Engine& e, int increment) {
  if (e.project.CounterCallback != nullptr) {
    const int i = increment;
    e.project.CounterCallback(&i);
  }
  LogLine(e, "Increment " + FormatInt(increment));
}

void PostWindowMessage(Engine& e, int id) {
  PlatformPostBroadcast(e.window_observer, "Tolmark2Message", 0, id - 256);
}

void NotifyCreateIncrement(Engine& e, int increment) {
  if (e.callbacks.CreateIncrement == nullptr) return;
  const int i = increment;
  e.callbacks.CreateIncrement(&i);
  LogLine(e, "RunAnalysis, line 292");
  LogLine(e, "CreateIncrement: " + FormatInt(increment));
}

void NotifyStiffnesses(Engine& e, int increment, const float* grmat) {
  auto at = [grmat](int a, int b) { return grmat[(a - 1) + 6 * (b - 1)]; };
  if (e.callbacks.SendForceDisplacementStiffnesses != nullptr) {
    SendInfo(e, "Sending force vs displacement stiffnesses...");
    for (int a = 1; a <= 3; ++a) {
      LogLine(e, "GRMAT(GRMAT(ConvertAxis(" + std::to_string(a) + "), ConvertAxis(" + std::to_string(a) +
                     ")) = " + FormatFix(at(a, a) / 1e6f, 0, 6));
    }
    float k[9];
    for (int a = 1; a <= 3; ++a)
      for (int b = 1; b <= 3; ++b) k[(a - 1) * 3 + (b - 1)] = at(a, b);
    // The host's message function may have cleared or replaced the entry meanwhile.
    if (const auto send = e.callbacks.SendForceDisplacementStiffnesses)
      send(&k[0], &k[1], &k[2], &k[3], &k[4], &k[5], &k[6], &k[7], &k[8]);
    LogLine(e, "CalcStiffnessDisplsStressesLoads, line 192");
    std::string line = "SendForceDisplacementStiffnesses (GN/m): [" + FormatInt(increment) + "]";
    for (int a = 1; a <= 3; ++a)
      for (int b = 1; b <= 3; ++b) line += "  " + FormatFix(at(a, b) / 1e6f, 9, 3);
    LogLine(e, line);
  }
  if (e.callbacks.SendStiffnessMatrix != nullptr) {
    SendInfo(e, "Sending stiffness matrix...");
    float copy[36];
    for (int i = 0; i < 36; ++i) copy[i] = grmat[i];
    if (const auto send = e.callbacks.SendStiffnessMatrix) send(copy);
  }
}

void NotifyCentreOfRotation(Engine& e) {
  if (e.foundation.CentreOfRotationCallback == nullptr) return;
  const float x = e.foundation.CentreOfRotationX;
  const float y = e.foundation.CentreOfRotationY;
  e.foundation.CentreOfRotationCallback(&x, &y);
}

namespace {
// A cap vector held in the internal order, in the external one.
void ExternalOrder(const RealVector& cap, float out[6]) {
  for (int i = 0; i < 6; ++i) out[i] = cap.size() >= 6 ? cap(kInternalAxis[i]) : 0.0f;
}
}  // namespace

void NotifyPileCapLoads(Engine& e, int increment) {
  if (e.callbacks.SendPileCapLoads == nullptr) return;
  SendInfo(e, "Sending pile cap loads...");
  float v[6];
  ExternalOrder(e.ws.CapLoadTotal, v);
  if (const auto send = e.callbacks.SendPileCapLoads) send(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5]);
  LogLine(e, "Update, line 234");
  std::string line = "SendPileCapLoads (kN/kNm): " + FormatInt(increment);
  ExternalOrder(e.ws.CapLoadTotal, v);
  for (float x : v) line += "  " + FormatFix(x, 9, 1);
  LogLine(e, line);
}

void NotifyPileCapDisplacements(Engine& e, int increment) {
  if (e.callbacks.SendPileCapDisplacements == nullptr) return;
  SendInfo(e, "Sending pile cap displacements...");
  float v[6];
  ExternalOrder(e.ws.CapDispTotal, v);
  if (const auto send = e.callbacks.SendPileCapDisplacements) send(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5]);
  LogLine(e, "Update, line 273");
  std::string line = "SendPileCapDisplacements (mm/mrad): " + FormatInt(increment);
  ExternalOrder(e.ws.CapDispTotal, v);
  for (float x : v) line += "  " + FormatFix(x * 1000.0f, 9, 3);
  LogLine(e, line);
}

void NotifyPileCap(Engine& e, int increment) {
  NotifyCentreOfRotation(e);
  NotifyPileCapLoads(e, increment);
  NotifyPileCapDisplacements(e, increment);
}

}  // namespace quellon
