#include "host_recorder.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "quellon.h"

static char buffer[1 << 22];
static size_t used = 0;

// Appends one line: the formatted text, then count reals. A line that can't be stored is
// dropped, which the test then notices.
static void record(int count, const float* v, const char* format, ...) {
  char line[1024];
  va_list args;
  va_start(args, format);
  int n = vsnprintf(line, sizeof line, format, args);
  va_end(args);
  for (int i = 0; i < count && n > 0 && n < (int)sizeof line; ++i)
    n += snprintf(line + n, sizeof line - (size_t)n, " %.9g", (double)v[i]);
  if (n < 0 || n >= (int)sizeof line - 1 || used + (size_t)n + 2 > sizeof buffer) return;
  line[n++] = '\n';
  memcpy(buffer + used, line, (size_t)n);
  used += (size_t)n;
  buffer[used] = '\0';
}

void recorder_message(const int* severity, const char* text) { record(0, NULL, "message %d %s", *severity, text); }
static void on_message(const int* severity, const char* text) { recorder_message(severity, text); }
static void on_counter(const int* i) { record(0, NULL, "counter %d", *i); }
static void on_create(const int* i) { record(0, NULL, "create %d", *i); }
static void on_window(const char* name, long w, long l) { record(0, NULL, "window %s %ld %ld", name, w, l); }
static void on_matrix(const float* grmat) { record(36, grmat, "matrix"); }
static void on_centre(const float* x, const float* y) { const float v[2] = {*x, *y}; record(2, v, "centre"); }
static void on_loads(const float* a, const float* b, const float* c, const float* d, const float* e,
                     const float* f) {
  const float v[6] = {*a, *b, *c, *d, *e, *f};
  record(6, v, "loads");
}
static void on_displacements(const float* a, const float* b, const float* c, const float* d,
                             const float* e, const float* f) {
  const float v[6] = {*a, *b, *c, *d, *e, *f};
  record(6, v, "displacements");
}
static void on_stiffnesses(const float* a, const float* b, const float* c, const float* d, const float* e,
                           const float* f, const float* g, const float* h, const float* i) {
  const float v[9] = {*a, *b, *c, *d, *e, *f, *g, *h, *i};
  record(9, v, "stiffnesses");
}

void recorder_register_all(int on) {
  QuellonSetProjectMessageCallback(on ? on_message : NULL);
  QuellonSetProjectCounterCallback(on ? on_counter : NULL);
  QuellonSetCreateIncrementCallback(on ? on_create : NULL);
  QuellonSetPileCapLoadsCallback(on ? on_loads : NULL);
  QuellonSetPileCapDisplacementsCallback(on ? on_displacements : NULL);
  QuellonSetForceDisplacementStiffnessesCallback(on ? on_stiffnesses : NULL);
  QuellonSetStiffnessMatrixCallback(on ? on_matrix : NULL);
  QuellonSetPileCapCentreOfRotationCallback(on ? on_centre : NULL);
  QuellonSetWindowMessageObserver(on ? on_window : NULL);
}

void recorder_clear(void) { buffer[used = 0] = '\0'; }

const char* recorder_text(void) { return buffer; }
