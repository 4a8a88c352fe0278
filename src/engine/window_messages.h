// The platform's broadcast window messages. On Windows this registers the message name
// and posts it to every top-level window; elsewhere there are no window messages, and
// the post goes to the observer that a host may register instead.
#pragma once

#include "quellon.h"

namespace quellon {

void PlatformPostBroadcast(QuellonWindowMessageFn observer, const char* name, long wparam, long lparam);

}  // namespace quellon
