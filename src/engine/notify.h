// How the engine tells the host and the LOG what it is doing: the message routines, the
// counter, the window message, and the callbacks that carry results during a run.
#pragma once

#include <string_view>

namespace quellon {

struct Engine;

enum Severity : int { kInfo = 0, kWarning = 1, kError = 2, kCritical = 3 };

// A plain LOG line, written only while the LOG is open.
void LogLine(Engine& e, std::string_view text);
bool LogOpen(const Engine& e);

// The message callback gets the text without trailing blanks; then the LOG gets the
// severity prefix and the text. Each step happens without the other when only one of
// callback and LOG is there.
void SendMessage(Engine& e, int severity, std::string_view text);
inline void SendInfo(Engine& e, std::string_view t) { SendMessage(e, kInfo, t); }
inline void SendWarning(Engine& e, std::string_view t) { SendMessage(e, kWarning, t); }
inline void SendError(Engine& e, std::string_view t) { SendMessage(e, kError, t); }
inline void SendCritical(Engine& e, std::string_view t) { SendMessage(e, kCritical, t); }

// Counter callback, then "Increment " and the number to the LOG.
void SendCounter(Engine& e, int increment);

// Broadcast progress message "Tolmark2Message" with parameters 0 and id - 256.
void PostWindowMessage(Engine& e, int id);

// Result callbacks of a run. Each is called only if set; the caller checks any further
// condition (XML output open, flag 25). The host receives copies, valid for the call.
void NotifyCreateIncrement(Engine& e, int increment);
// grmat: the 6 by 6 group stiffness in external axes, column order (a + 6(b - 1)).
void NotifyStiffnesses(Engine& e, int increment, const float* grmat);
void NotifyCentreOfRotation(Engine& e);
void NotifyPileCapLoads(Engine& e, int increment);
void NotifyPileCapDisplacements(Engine& e, int increment);
// The three above in that order: the cap block of an increment, once it is in the XML.
void NotifyPileCap(Engine& e, int increment);

}  // namespace quellon
