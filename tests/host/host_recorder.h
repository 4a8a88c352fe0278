/* A test host written in C: it registers a function for every callback of the engine and
 * for the window message observer, and records each call as one line of text, in the
 * order of arrival. Compiling this file as C proves that quellon.h is a C header. */
#ifndef HOST_RECORDER_H
#define HOST_RECORDER_H

#ifdef __cplusplus
extern "C" {
#endif

/* Registers every callback and the observer. The registrations' own messages are
 * recorded too. */
void recorder_register_all(void);
/* Clears every registration (message callback first, so the "not set" errors reach no
 * one) and the observer. */
void recorder_unregister_all(void);
/* Records a message as the registered message function does, for a host function of a
 * test's own that passes its messages on. */
void recorder_message(const int* severity, const char* text);
/* Forgets what was recorded. */
void recorder_clear(void);
/* All recorded lines, each ended by '\n'. Lines:
 *   "message <severity> <text>"
 *   "counter <i>"                  "create <i>"
 *   "stiffnesses <k11> ... <k33>"  "matrix <g11> <g66>"
 *   "centre <x> <y>"               "loads <fx> ... <mz>"     "displacements <dx> ... <rz>"
 *   "window <name> <wparam> <lparam>" */
const char* recorder_text(void);

#ifdef __cplusplus
}
#endif

#endif
