#include "engine/window_messages.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace quellon {

void PlatformPostBroadcast(QuellonWindowMessageFn observer, const char* name, long wparam, long lparam) {
#if defined(_WIN32)
  // The real message, to every top-level window. The observer stands in for it only
  // where there are no window messages: a host that registered one here would see each
  // post twice.
  (void)observer;
  const UINT message = RegisterWindowMessageA(name);
  if (message != 0) {
    PostMessageA(HWND_BROADCAST, message, static_cast<WPARAM>(wparam), static_cast<LPARAM>(lparam));
  }
#else
  // Posting doesn't wait for anyone; the observer is called and returns.
  if (observer != nullptr) observer(name, wparam, lparam);
#endif
}

}  // namespace quellon
