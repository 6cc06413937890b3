// Lets a device live while its events are shown.
#pragma once

#include <initializer_list>

#include "tools/life.h"
#include "tools/session.h"

namespace norvik::qel::tool {

// Until somebody stops it or the time is over, if there is an end. A life may be null.
void Live(Session& session, std::initializer_list<Life*> lives, Session::Clock::time_point end);

// The time after which a command ends by itself, if there is one.
Session::Clock::time_point EndOf(const Options& options);

}  // namespace norvik::qel::tool
