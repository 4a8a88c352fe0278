/* A host as a Windows application writes one: it loads the engine at run time
 * (LoadLibrary, GetProcAddress), receives the progress window messages in a hidden
 * top-level window, and runs two analyses, one entered through the setters and one read
 * from a text model file through the fixed-length entries. The same source builds on
 * Linux (dlopen, dlsym, the window message observer), so that one script can compare
 * the documents of the two builds byte for byte.
 *
 *   dll_host <library> <model.tmw> <output folder>
 *
 * Paths are passed as they stand to the engine. The output folder must exist. Prints
 * what it received and exits with 0 only if every check held. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "quellon.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

static int failures = 0;

static void check(int ok, const char* what) {
  if (!ok) {
    ++failures;
    fprintf(stderr, "FAILED: %s\n", what);
  }
}

/* ---- The library --------------------------------------------------------------- */

#if defined(_WIN32)
static HMODULE library;
static int load_library(const char* path) { return (library = LoadLibraryA(path)) != NULL; }
static void* symbol(const char* name) {
  FARPROC f = GetProcAddress(library, name);
  void* p;
  memcpy(&p, &f, sizeof p);
  return p;
}
#else
static void* library;
static int load_library(const char* path) { return (library = dlopen(path, RTLD_NOW)) != NULL; }
static void* symbol(const char* name) { return dlsym(library, name); }
#endif

/* The exports this host calls, each as a pointer typed as quellon.h declares it. */
#define EXPORTS(X) \
  X(QuellonCreateLOGFile) X(QuellonCloseAllFiles) X(QuellonSetProjectCounterCallback) \
  X(QuellonSetWindowMessageObserver) X(QuellonSetProjectFlags) X(QuellonSetBoreholeNumberOfLayers) \
  X(QuellonSetBoreholeLayerAveraging) X(QuellonSetBoreholeLayerDepth) X(QuellonSetBoreholeLayerStiffness) \
  X(QuellonSetGroundType) X(QuellonSetGroundWeightDensity) X(QuellonSetSoilUndrainedShearStrength) \
  X(QuellonSetSoilUndrainedInterfaceParameter) X(QuellonSetNumberOfPiles) X(QuellonSetNumberOfPileElements) \
  X(QuellonSetPileInteractionFlag) X(QuellonSetPileCoordinates) X(QuellonSetPileRake) \
  X(QuellonSetPileDimensions) X(QuellonSetPileReinforcedSectionProperties) \
  X(QuellonSetPileUnreinforcedSectionProperties) X(QuellonSetPileFreeStandingLength) \
  X(QuellonSetProjectHyperbolicFactors) X(QuellonSetNumberOfLoadIncrements) X(QuellonSetActions) \
  X(QuellonRunAnalysis2) X(READTMWFILEDIRECT) X(RUNANALYSISDIRECT)
#define IMPORT(f) static __typeof__(&f) p_##f;
EXPORTS(IMPORT)

#define RESOLVE(f)                                              \
  do {                                                          \
    void* address = symbol(#f);                                 \
    check(address != NULL, "export " #f);                       \
    if (address == NULL) return 0;                              \
    memcpy(&p_##f, &address, sizeof address);                   \
  } while (0);

static int resolve_all(void) {
  EXPORTS(RESOLVE)
  return 1;
}

/* ---- Progress posts ------------------------------------------------------------ */

struct Post {
  long long wparam, lparam;
  int during_run;
};
static struct Post posts[8];
static int post_count = 0;
static int in_run = 0;

static void record(long long wparam, long long lparam) {
  if (post_count < 8) {
    posts[post_count].wparam = wparam;
    posts[post_count].lparam = lparam;
    posts[post_count].during_run = in_run;
  }
  ++post_count;
}

#if defined(_WIN32)
static UINT progress_message;
static HWND receiver;

static LRESULT CALLBACK receiver_proc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == progress_message && progress_message != 0) {
    record((long long)wparam, (long long)lparam);
    return 0;
  }
  return DefWindowProcA(window, message, wparam, lparam);
}

/* A broadcast reaches top-level windows only, so the receiver is one, never shown (a
 * message-only window would not get it). */
static int start_receiving(void) {
  WNDCLASSA c;
  memset(&c, 0, sizeof c);
  c.lpfnWndProc = receiver_proc;
  c.hInstance = GetModuleHandleA(NULL);
  c.lpszClassName = "QuellonProgressReceiver";
  if (RegisterClassA(&c) == 0) return 0;
  progress_message = RegisterWindowMessageA("Tolmark2Message");
  receiver = CreateWindowExA(0, c.lpszClassName, "", WS_OVERLAPPEDWINDOW, 0, 0, 10, 10, NULL, NULL,
                             c.hInstance, NULL);
  return progress_message != 0 && receiver != NULL;
}

static void pump(void) {
  MSG m;
  while (PeekMessageA(&m, NULL, 0, 0, PM_REMOVE)) {
    TranslateMessage(&m);
    DispatchMessageA(&m);
  }
}

/* The observer is the stand-in where there are no window messages; registered here, it
 * must never be called, or a host would see each post twice. */
static void observer(const char* name, long wparam, long lparam) {
  (void)name, (void)wparam, (void)lparam;
  check(0, "the observer is not called where real window messages are posted");
}
#else
static void observer(const char* name, long wparam, long lparam) {
  check(strcmp(name, "Tolmark2Message") == 0, "message name");
  record(wparam, lparam);
}
static int start_receiving(void) { return 1; }
static void pump(void) {}
#endif

/* The run is on this thread, so the posts wait in its queue until it pumps: here, at
 * the end of each increment, and once more after the run. */
static void counter(const int* increment) {
  (void)increment;
  pump();
}

static void check_posts(const char* run) {
  char what[128];
  pump();
  printf("%s: %d posts", run, post_count);
  for (int i = 0; i < post_count && i < 8; ++i)
    printf("  (%lld, %lld%s)", posts[i].wparam, posts[i].lparam, posts[i].during_run ? ", during the run" : "");
  printf("\n");
  snprintf(what, sizeof what, "%s: two posts, XML header then final increment", run);
  check(post_count == 2 && posts[0].wparam == 0 && posts[0].lparam == -247 && posts[1].wparam == 0 &&
            posts[1].lparam == -239,
        what);
  snprintf(what, sizeof what, "%s: the XML header post is received during the run", run);
  check(post_count >= 1 && posts[0].during_run, what);
  post_count = 0;
}

/* ---- The two runs -------------------------------------------------------------- */

static void path_in(char* out, size_t size, const char* folder, const char* name) {
  snprintf(out, size, "%s/%s", folder, name);
}

/* A fixed 260-character blank-padded text. */
static void padded(char out[260], const char* text) {
  size_t n = strlen(text);
  memset(out, ' ', 260);
  memcpy(out, text, n < 260 ? n : 260);
}

/* Three piles in a row under a vertical load and a moment, in one clay layer, in three
 * increments; flag 16 clear, so that the engine's own LU solves each increment. */
static int enter_model(void) {
  static const int set[] = {25, 27, 28, 29, 31};
  int flags[40] = {0};
  int ok = 1;
  for (size_t i = 0; i < sizeof set / sizeof set[0]; ++i) flags[set[i] - 1] = 1;
  ok &= p_QuellonSetBoreholeNumberOfLayers(1) & p_QuellonSetNumberOfPiles(3);
  ok &= p_QuellonSetProjectFlags(flags, 40) & p_QuellonSetBoreholeLayerAveraging(2);
  ok &= p_QuellonSetBoreholeLayerDepth(1, 0.0) & p_QuellonSetGroundType(1, 2) &
        p_QuellonSetBoreholeLayerStiffness(1, 20000.0, 1500.0, 20000.0, 1500.0, 0.3) &
        p_QuellonSetSoilUndrainedShearStrength(1, 50.0, 4.0) & p_QuellonSetSoilUndrainedInterfaceParameter(1, 0.5) &
        p_QuellonSetGroundWeightDensity(1, 18.0);
  ok &= p_QuellonSetNumberOfPileElements(6) & p_QuellonSetPileInteractionFlag(1);
  for (int p = 1; p <= 3; ++p) {
    ok &= p_QuellonSetPileCoordinates(p, 3.0 * p - 6.0, 0.0, 0.0) & p_QuellonSetPileRake(p, 0.0, 0.0) &
          p_QuellonSetPileDimensions(p, 12.0, 0.6, 0.0, 0.6) &
          p_QuellonSetPileReinforcedSectionProperties(p, 12.0, 8000.0, 190.0, 190.0, 150.0) &
          p_QuellonSetPileUnreinforcedSectionProperties(p, 8000.0, 190.0, 190.0, 150.0);
  }
  ok &= p_QuellonSetPileFreeStandingLength(0.0) & p_QuellonSetProjectHyperbolicFactors(0.5, 0.5, 0.5, 0.5) &
        p_QuellonSetNumberOfLoadIncrements(3) & p_QuellonSetActions(40.0, 0.0, 2400.0, 0.0, 300.0, 0.0, 0.0, 0.0);
  return ok;
}

int main(int argc, char** argv) {
  char xml[1024], txt[1024], log[1024];
  char xml260[260], txt260[260], model260[260];
  if (argc != 4) {
    fprintf(stderr, "usage: dll_host <library> <model.tmw> <output folder>\n");
    return 2;
  }
  if (!load_library(argv[1])) {
    fprintf(stderr, "FAILED: cannot load %s\n", argv[1]);
    return 1;
  }
  if (!resolve_all()) return 1;
#if defined(_WIN32)
  printf("ANSI code page %u\n", GetACP());
#endif
  check(start_receiving(), "receiver of the progress posts");
  check(p_QuellonSetWindowMessageObserver(observer) == 1, "observer registered");
  check(p_QuellonSetProjectCounterCallback(counter) == 1, "counter callback");

  path_in(log, sizeof log, argv[3], "setters.log");
  path_in(xml, sizeof xml, argv[3], "setters.xml");
  path_in(txt, sizeof txt, argv[3], "setters.txt");
  check(p_QuellonCreateLOGFile(log) == 1, "LOG in the output folder");
  check(enter_model() == 1, "every setter accepts its value");
  in_run = 1;
  check(p_QuellonRunAnalysis2(xml, txt) == 1, "run of the model entered through the setters");
  in_run = 0;
  check_posts("setters");

  path_in(xml, sizeof xml, argv[3], "model.xml");
  path_in(txt, sizeof txt, argv[3], "model.txt");
  padded(model260, argv[2]);
  padded(xml260, xml);
  padded(txt260, txt);
  check(p_READTMWFILEDIRECT(model260) == 1, "READTMWFILEDIRECT of the model file");
  in_run = 1;
  check(p_RUNANALYSISDIRECT(xml260, txt260, NULL) == 1, "RUNANALYSISDIRECT");
  in_run = 0;
  check_posts("model file");
  p_QuellonCloseAllFiles();

  printf("%s\n", failures == 0 ? "all checks held" : "some checks failed");
  return failures == 0 ? 0 : 1;
}
