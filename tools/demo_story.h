// The library's story, told on a device whose battery can be told what to do.
#pragma once

#include "tools/device.h"
#include "tools/session.h"

namespace norvik::qel::tool {

// Checks itself: every value that it announces has to arrive. Returns the exit code.
int TellStory(Session& session, BatteryDriver& driver);

}  // namespace norvik::qel::tool
