// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the devices of a host have in common.
#pragma once

#include "clients/device.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::monitor {

std::unique_ptr<Device> MakeSimulatedDevice(DeviceObserver observer);
std::unique_ptr<Device> MakeLinuxDevice(DeviceObserver observer);

// What the library expects of the program that it runs in.
void BecomeHostProcess(const DeviceSetup& setup);

// The seam between the two kinds of events: services report in the platform's types, which the core
// of the monitor does not know; `observer` receives the same as DeviceEvents.
services::ServiceObserver ToServiceObserver(DeviceObserver observer);

}  // namespace norvik::qel::monitor
