// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the sensors read, without the first words of their callbacks.
#pragma once

#include "cli/session.h"
#include "clients/sensor_client.h"

namespace norvik::qel::monitor {

// Waits until the client has heard what its sensors read. It is first told what the library has
// stored, which is 0 until the sensor has reported: a sensor that has only said 0 gets a second
// more. kTime: not every sensor has been heard until then.
Session::Wake WaitForReadings(Session& session, const SensorClient& client,
                              Session::Clock::time_point until);

}  // namespace norvik::qel::monitor
