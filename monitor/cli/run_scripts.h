// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Runs the scripts of a device while its events are shown.
#pragma once

#include <initializer_list>

#include "cli/session.h"
#include "scenario/device_script.h"

namespace norvik::qel::monitor {

// Until the user stops it or the time is over, if there is an end. A script may be null.
void RunScripts(Session& session, std::initializer_list<DeviceScript*> scripts,
                Session::Clock::time_point end);

// The time after which a command ends by itself, if there is one.
Session::Clock::time_point EndOf(const Options& options);

}  // namespace norvik::qel::monitor
