// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a phone goes through, in a loop, so that there is something to see. It ends as it began.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "clients/device.h"

namespace norvik::qel::monitor {

struct DeviceStep {
  std::chrono::milliseconds pause_before;
  std::function<void()> act;
};
using DeviceSteps = std::vector<DeviceStep>;

DeviceSteps StepsOf(BatteryDriver& phone);
DeviceSteps StepsOf(SensorDriver& phone);
DeviceSteps StepsOf(ThermalDriver& phone);

}  // namespace norvik::qel::monitor
