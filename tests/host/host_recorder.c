#include "host_recorder.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "quellon.h"

static char* buffer = NULL;
static size_t used = 0;
static size_t capacity = 0;

static void record(const char* format, ...) {
  char line[1024];
  va_list args;
  va_start(args, format);
  int n = vsnprintf(line, sizeof line - 1, format, args);
  va_end(args);
  if (n < 0) return;
  if ((size_t)n > sizeof line - 2) n = (int)(sizeof line - 2);
  line[n++] = '\n';
  line[n] = '\0';
  if (used + (size_t)n + 1 > capacity) {
    size_t wanted = capacity == 0 ? 4096 : capacity * 2;
    while (wanted < used + (size_t)n + 1) wanted *= 2;
    char* grown = (char*)realloc(buffer, wanted);
    if (grown == NULL) return;
    buffer = grown;
    capacity = wanted;
  }
  memcpy(buffer + used, line, (size_t)n + 1);
  used += (size_t)n;
}

void recorder_message(const int* severity, const char* text) { record("message %d %s", *severity, text); }
static void on_message(const int* severity, const char* text) { recorder_message(severity, text); }
static void on_counter(const int* i) { record("counter %d", *i); }
static void on_create_increment(const int* i) { record("create %d", *i); }

static void on_loads(const float* fx, const float* fy, const float* fz, const float* mx, const float* my,
                     const float* mz) {
  record("loads %g %g %g %g %g %g", *fx, *fy, *fz, *mx, *my, *mz);
}

static void on_displacements(const float* dx, const float* dy, const float* dz, const float* rx, const float* ry,
                             const float* rz) {
  record("displacements %g %g %g %g %g %g", *dx, *dy, *dz, *rx, *ry, *rz);
}

static void on_stiffnesses(const float* k11, const float* k12, const float* k13, const float* k21, const float* k22,
                           const float* k23, const float* k31, const float* k32, const float* k33) {
  record("stiffnesses %g %g %g %g %g %g %g %g %g", *k11, *k12, *k13, *k21, *k22, *k23, *k31, *k32, *k33);
}

static void on_matrix(const float* grmat) { record("matrix %g %g", grmat[0], grmat[35]); }
static void on_centre(const float* x, const float* y) { record("centre %g %g", *x, *y); }

static void on_window(const char* name, long wparam, long lparam) {
  record("window %s %ld %ld", name, wparam, lparam);
}

void recorder_register_all(void) {
  QuellonSetProjectMessageCallback(on_message);
  QuellonSetProjectCounterCallback(on_counter);
  QuellonSetCreateIncrementCallback(on_create_increment);
  QuellonSetPileCapLoadsCallback(on_loads);
  QuellonSetPileCapDisplacementsCallback(on_displacements);
  QuellonSetForceDisplacementStiffnessesCallback(on_stiffnesses);
  QuellonSetStiffnessMatrixCallback(on_matrix);
  QuellonSetPileCapCentreOfRotationCallback(on_centre);
  QuellonSetWindowMessageObserver(on_window);
}

void recorder_unregister_all(void) {
  QuellonSetProjectMessageCallback(NULL);
  QuellonSetProjectCounterCallback(NULL);
  QuellonSetCreateIncrementCallback(NULL);
  QuellonSetPileCapLoadsCallback(NULL);
  QuellonSetPileCapDisplacementsCallback(NULL);
  QuellonSetForceDisplacementStiffnessesCallback(NULL);
  QuellonSetStiffnessMatrixCallback(NULL);
  QuellonSetPileCapCentreOfRotationCallback(NULL);
  QuellonSetWindowMessageObserver(NULL);
}

void recorder_clear(void) {
  used = 0;
  if (buffer != NULL) buffer[0] = '\0';
}

const char* recorder_text(void) { return buffer != NULL ? buffer : ""; }
