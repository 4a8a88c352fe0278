// A test host written in C: compiling it as C proves that quellon.h is a C header. It
// registers every callback and the window message observer and records each call as a
// line, in order of arrival, reals at full single precision (%.9g):
//   "message <severity> <text>"  "counter <i>"  "create <i>"  "window <name> <w> <l>"
//   "stiffnesses <9 values>"  "matrix <36 values>"  "centre <x> <y>"
//   "loads <Fx..Mz>"  "displacements <X..rotation about Z>"
#ifndef HOST_RECORDER_H
#define HOST_RECORDER_H
#ifdef __cplusplus
extern "C" {
#endif
// on = 0 clears every registration. The message callback goes first either way, so that
// the registrations' own messages are heard and the "not set" errors reach no one.
void recorder_register_all(int on);
// Records a message as the registered message function does, for a test's own host
// function that passes its messages on.
void recorder_message(const int* severity, const char* text);
void recorder_clear(void);
const char* recorder_text(void);
#ifdef __cplusplus
}
#endif
#endif
