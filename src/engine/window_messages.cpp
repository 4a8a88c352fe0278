#include "engine/window_messages.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace quellon {

void PlatformPostBroadcast(QuellonWindowMessageFn observer, const char* name, long wparam, long lparam) {
#if defined(_WIN32)
  const UINT message = RegisterWindowMessageA(name);
  PostMessageA(HWND_BROADCAST, message, static_cast<WPARAM>(wparam), static_cast<LPARAM>(lparam));
#endif
  // Posting doesn't wait for anyone; the observer is called and returns.
  if (observer != nullptr) observer(name, wparam, lparam);
}

}  // namespace quellon
